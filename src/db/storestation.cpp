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

RecordFields RecordFieldsOf(const StationFields& s) {
    return {s.call, s.name, s.add1, s.add2, s.ctry, CoordinateText(s.lat), CoordinateText(s.lon), s.licenceClass, s.yearBorn};
}

QString StoredCall(const QString& typed) {
    return vb::trim(vb::left(vb::trim(typed), CallRecord::kLayout[0].width));
}

StoreOutcome StoreRecord(CallDatabase& db, const RecordFields& f) {
    const QString key = StoredCall(f.call);
    const int32_t n = db.FindCallRecord(key);
    db.ClearRecord();
    CallRecord& r = db.CurrentRecord;
    r.setField(CallField::Call, key);
    r.setField(CallField::Name, f.name);
    r.setField(CallField::Add1, f.add1);
    r.setField(CallField::Add2, f.add2);
    r.setField(CallField::Ctry, f.ctry);
    r.setField(CallField::Lat, f.lat);
    r.setField(CallField::Lon, f.lon);
    r.setField(CallField::Class, f.licenceClass);
    r.setField(CallField::YearBorn, f.yearBorn);
    // A new call is appended and sorted in one write, so that the file is never left unsorted.
    if (n != 0) return {false, db.UpdateRecord(n)};
    return {true, db.AppendSorted()};
}

std::optional<KnownPosition> FindKnownPosition(CallDatabase& db, const QString& call) {
    if (db.FindCallRecord(call) == 0) return std::nullopt;
    const CallRecord& r = db.CurrentRecord;
    const KnownPosition known{vb::trim(r.Call()), vb::trim(r.Lat()), vb::trim(r.Lon())};
    if (vb::val(known.sLat) == 0 && vb::val(known.sLon) == 0) return std::nullopt;
    return known;
}
