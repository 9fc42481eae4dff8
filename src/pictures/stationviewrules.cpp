#include "pictures/stationviewrules.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace stationview {

Request SplitRequest(const QString& request) {
    const qsizetype star = request.indexOf(u'*');
    if (star < 0) return {request, QString()};
    return {request.left(star), request.mid(star + 1)};
}

QString Caption(const QString& call) { return QStringLiteral("Norvane   ") + call; }

QString MapRequest(const QString& link, const QString& captionText) { return link + u'*' + captionText; }

QString LinkNumber(double value) {
    if (!std::isfinite(value)) return QStringLiteral("0");
    // 15 significant digits, as fixed-point text without trailing zeros.
    const int whole = value == 0 ? 1 : std::max(1, static_cast<int>(std::floor(std::log10(std::fabs(value)))) + 1);
    const int decimals = std::clamp(15 - whole, 0, 15);
    QString text = QString::number(value, 'f', decimals);
    if (text.contains(u'.')) {
        while (text.endsWith(u'0')) text.chop(1);
        if (text.endsWith(u'.')) text.chop(1);
    }
    if (text == QLatin1String("-0")) text = QStringLiteral("0");
    return text.replace(u',', u'.');
}

namespace {

bool PositionKnown(double lat, double lon) {
    if (lat == 89.0 && lon == 89.0) return false;
    if (lat == 0 && lon == 0) return false;
    return std::isfinite(lat) && std::isfinite(lon);
}

QString AtPosition(double lat, double lon) {
    return QStringLiteral("/@") + LinkNumber(lat) + u',' + LinkNumber(lon) + QStringLiteral(",19z/data=!3m1!1e3");
}

QString Plussed(const QString& text) { return text.trimmed().replace(u' ', u'+'); }

}  // namespace

QString WebMapByAddress(const QString& host, const QString& add1, const QString& add2, const QString& ctry, double lat,
                        double lon) {
    if (!PositionKnown(lat, lon)) return QString();
    const QString place = QStringList{Plussed(add1), Plussed(add2), Plussed(ctry)}.join(u',');
    return host + QStringLiteral("/maps/place/") + place + AtPosition(lat, lon);
}

QString WebMapByPosition(const QString& host, double lat, double lon) {
    if (!PositionKnown(lat, lon)) return QString();
    return host + QStringLiteral("/maps/place/") + LinkNumber(lat) + u',' + LinkNumber(lon) + AtPosition(lat, lon);
}

RetryStep RetryStepFor(int attempt) {
    if (attempt == 1 || attempt == 2) return {false, false, true};
    if (attempt == 3 || attempt == 4) return {true, true, true};
    return {false, false, false};
}

QString RetryMessage(const QString& appTitle, const QString& text) {
    return appTitle + QStringLiteral("\r\n\r\n") + text + u' ';
}

QRect PageCrop(QSize picture, int frameWidth, int captionHeight, int menuBarHeight) {
    const int left = std::max(0, frameWidth);
    const int top = std::max(0, captionHeight) + std::max(0, menuBarHeight);
    const int width = picture.width() - left;
    const int height = picture.height() - top;
    if (width <= 0 || height <= 0) return QRect();
    return QRect(left, top, width, height);
}

QRect Placement(const QRect& monitor, int keptLeft, int keptWidth, int keptHeight) {
    QSize size(keptWidth, keptHeight);
    if (keptWidth < kSmallestSize.width() || keptHeight < kSmallestSize.height()) size = kDefaultSize;
    size = size.boundedTo(monitor.size());
    int left = monitor.left();
    if (keptLeft >= monitor.left() && keptLeft + size.width() <= monitor.left() + monitor.width()) left = keptLeft;
    return QRect(QPoint(left, monitor.top()), size);
}

}  // namespace stationview

namespace stationview {

bool AddressAllowed(const QString& address) {
    const QString lower = address.trimmed().toLower();
    const bool web = lower.startsWith(QLatin1String("http://")) || lower.startsWith(QLatin1String("https://"));
    return web && lower.size() > lower.indexOf(QLatin1String("//")) + 2;
}

}  // namespace stationview
