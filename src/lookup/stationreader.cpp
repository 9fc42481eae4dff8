#include "lookup/stationreader.h"

#include "common/vbtext.h"

#include <QRegularExpression>

namespace lookup {

StationReading ReadStation(CallbookFields& fields, const QString& call) {
    StationReading reading;
    // Listen in on the events of the name, passing each on as it comes.
    const auto forward = fields.onEvent;
    fields.onEvent = [&](FieldEvent event, const QString& ca) {
        if (!reading.refusal) reading.refusal = event;
        if (forward) forward(event, ca);
    };
    const QString name = fields.cName(call);
    fields.onEvent = forward;
    if (reading.refusal || name.isEmpty()) return reading;

    StationFields s;
    s.call = call;
    s.name = name;
    s.add1 = fields.Add1();
    s.add2 = fields.Add2();
    s.ctry = fields.ctry();
    s.lat = fields.Latitude();
    s.lon = fields.Longitude();
    s.licenceClass = vb::trim(fields.Class().trimmed());
    s.yearBorn = YearOf(fields.DateOfBirth());
    reading.station = s;
    return reading;
}

QString YearOf(const QString& dateOfBirth) {
    static const QRegularExpression year(QStringLiteral("(?<![0-9])[0-9]{4}(?![0-9])"));
    const QRegularExpressionMatch m = year.match(dateOfBirth);
    return m.hasMatch() ? m.captured(0) : vb::trim(dateOfBirth.trimmed());
}

}  // namespace lookup
