#include "db/editorrules.h"

#include "common/vbtext.h"
#include "db/calldatabase.h"

#include <algorithm>

QString ReplaceCall(const QString& text, const QString& call) {
    if (!call.isEmpty()) return QString(text).replace(QStringLiteral("???"), call);
    QString out = text;
    for (qsizetype at = out.indexOf(QStringLiteral("???")); at >= 0; at = out.indexOf(QStringLiteral("???"), at)) {
        if (at > 0 && out.at(at - 1) == u' ') out.remove(at - 1, 4), --at;
        else if (at + 3 < out.size() && out.at(at + 3) == u' ') out.remove(at, 4);
        else out.remove(at, 3);
    }
    return out;
}

QRect FitPicture(QSize natural) {
    if (natural.isEmpty()) return {};
    const QRect area = kEditorPictureArea;
    const qint64 w = natural.width(), h = natural.height();
    int width = 0, height = 0;
    if (w * area.height() >= h * area.width()) {
        // Wider than the area: as wide as the area.
        width = area.width();
        height = std::max<int>(1, static_cast<int>((h * area.width() + w / 2) / w));
    } else {
        // Taller: as high as the area.
        height = area.height();
        width = std::max<int>(1, static_cast<int>((w * area.height() + h / 2) / h));
    }
    const QPoint centre = kEditorPictureCentre;
    return {centre.x() - width / 2, centre.y() - height / 2, width, height};
}

QString StoredCall(const QString& typed) {
    return vb::trim(vb::left(vb::trim(typed), CallRecord::kLayout[0].width));
}

std::optional<KnownPosition> FindKnownPosition(CallDatabase& db, const QString& call) {
    if (db.FindCallRecord(call) == 0) return std::nullopt;
    const CallRecord& r = db.CurrentRecord;
    const KnownPosition known{vb::trim(r.Call()), vb::trim(r.Lat()), vb::trim(r.Lon())};
    if (vb::val(known.sLat) == 0 && vb::val(known.sLon) == 0) return std::nullopt;
    return known;
}

StoreOutcome StoreEditorRecord(CallDatabase& db, const QString& key, const EditorFields& fields) {
    const int32_t number = db.FindCallRecord(key);
    db.ClearRecord();
    CallRecord& r = db.CurrentRecord;
    r.setField(CallField::Call, key);
    r.setField(CallField::Name, fields.name);
    r.setField(CallField::Add1, fields.add1);
    r.setField(CallField::Add2, fields.add2);
    r.setField(CallField::Ctry, fields.ctry);
    r.setField(CallField::Lat, fields.lat);
    r.setField(CallField::Lon, fields.lon);
    r.setField(CallField::Class, fields.licenceClass);
    r.setField(CallField::YearBorn, fields.yearBorn);
    if (number != 0) return {false, db.UpdateRecord(number)};
    return {true, db.AppendSorted()};
}
