#include "db/storestation.h"

#include "common/vbtext.h"


QString CoordinateText(double value) {
    // Fifteen significant digits at most, never an exponent and never a decimal comma.
    QString text = QString::number(value, 'f', 10);
    if (text.contains(u'.')) {
        while (text.endsWith(u'0')) text.chop(1);
        if (text.endsWith(u'.')) text.chop(1);
    }
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

bool StoreStation(CallDatabase& db, const StationFields& s) {
    const int32_t n = db.FindCallRecord(s.call);
    db.ClearRecord();
    CallRecord& r = db.CurrentRecord;
    r.setField(CallField::Call, s.call);
    r.setField(CallField::Name, s.name);
    r.setField(CallField::Add1, s.add1);
    r.setField(CallField::Add2, s.add2);
    r.setField(CallField::Ctry, s.ctry);
    r.setField(CallField::Lat, CoordinateText(s.lat));
    r.setField(CallField::Lon, CoordinateText(s.lon));
    r.setField(CallField::Class, s.licenceClass);
    r.setField(CallField::YearBorn, s.yearBorn);
    // A new call is appended and sorted in one write, so that the file is never left unsorted.
    return n == 0 ? db.AppendSorted() : db.UpdateRecord(n);
}
