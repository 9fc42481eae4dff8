#include "app/callflow.h"

#include "common/callchars.h"
#include "common/vbtext.h"
#include "geo/distanceazimuth.h"

#include <QLocale>
#include <cmath>

QString CallFromClipboardText(const QString& text) {
    QString call = text.toUpper();
    call.replace(u'0', QChar(kSlashedO));
    if (call.startsWith(QLatin1String("DE "))) call = call.mid(3);
    qsizetype end = 0;
    while (end < call.size()) {
        const char16_t c = call[end].unicode();
        if ((c < u'0' || c > u'z') && c != kSlashedO) break;
        ++end;
    }
    return call.left(end);
}

QString FormatDxAz(double distance, double azimuth, int unit) {
    // Both numbers in the user's locale: the distance always grouped (even where the locale
    // leaves grouping out), the azimuth as a plain number with the locale's decimal separator.
    QLocale grouped;
    grouped.setNumberOptions(grouped.numberOptions() & ~QLocale::OmitGroupSeparator);
    QLocale plain;
    plain.setNumberOptions(plain.numberOptions() | QLocale::OmitGroupSeparator);
    const QString number = grouped.toString(static_cast<qlonglong>(std::round(distance)));
    return number + u' ' + (unit == 1 ? QStringLiteral("mi") : QStringLiteral("km")) + u' ' +
           plain.toString(azimuth, 'g', 15) + QStringLiteral("\u00b0 ");
}

QString NicknameSuffix(const QStringList& nicknames, const QString& call) {
    for (const QString& entry : nicknames) {
        if (!entry.startsWith(call, Qt::CaseInsensitive)) continue;
        const QStringList parts = entry.split(u'*');
        return parts.size() == 2 ? QStringLiteral("  (") + parts[1] + u')' : QString();
    }
    return {};
}

QString DxAzLine(double myLat, double myLon, double lat, double lon, int unit) {
    double distance = 0, azimuth = 0;
    DistanceAzimuth(myLat, myLon, lat, lon, unit, distance, azimuth);
    return FormatDxAz(distance, azimuth, unit);
}

std::optional<QString> WebMapLink(int item, double lat, double lon, const QString& add1, const QString& add2,
                                  const QString& ctry) {
    if ((lat == 89.0 && lon == 89.0) || (lat == 0 && lon == 0)) return std::nullopt;
    // Plain decimals with "." whatever the user's locale writes.
    const QString la = QString::number(lat, 'g', 15).replace(u',', u'.');
    const QString lo = QString::number(lon, 'g', 15).replace(u',', u'.');
    const QString at = QStringLiteral("/@") + la + u',' + lo + QStringLiteral(",19z/data=!3m1!1e3");
    QString place;
    if (item == 1) {
        QStringList parts;
        for (const QString& p : {add1, add2, ctry}) parts << vb::trim(p).replace(u' ', u'+');
        place = parts.join(u',');
    } else {
        place = la + u',' + lo;
    }
    return QStringLiteral("https://www.google.com/maps/place/") + place + at;
}

QRect PicturePlacement(QSize natural, int innerWidth, int margin) {
    if (natural.width() <= 0 || natural.height() <= 0) return {};
    const double w = natural.width(), h = natural.height();
    double width = 0, height = 0;
    if (h / w < 0.75) {
        width = 57;
        height = 57 * h / w;
    } else {
        height = 39;
        width = 39 * w / h;
    }
    const int iw = static_cast<int>(std::nearbyint(width));
    const int ih = static_cast<int>(std::nearbyint(height));
    return QRect(innerWidth - iw - margin, static_cast<int>(std::nearbyint(26 - height / 2)), iw, ih);
}
