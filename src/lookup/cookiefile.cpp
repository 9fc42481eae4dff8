#include "lookup/cookiefile.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QNetworkCookie>
#include <QSaveFile>
#include <QUrl>

namespace {

constexpr qint64 kLargestFile = 1024 * 1024;  // a bigger file is no cookie file of ours

}  // namespace

CookieFile::CookieFile(QString path, QObject* parent) : QNetworkCookieJar(parent), path_(std::move(path)) {
    QFile file(path_);
    if (path_.isEmpty() || file.size() > kLargestFile || !file.open(QIODevice::ReadOnly)) return;
    setAllCookies(Parse(file.readAll()));
}

QByteArray CookieFile::Serialise(const QList<QNetworkCookie>& cookies) {
    QByteArray text;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QNetworkCookie& cookie : cookies) {
        if (cookie.isSessionCookie() || cookie.expirationDate() <= now) continue;
        text += cookie.toRawForm(QNetworkCookie::Full) + '\n';
    }
    return text;
}

QList<QNetworkCookie> CookieFile::Parse(const QByteArray& text) {
    QList<QNetworkCookie> cookies;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QByteArray& line : text.split('\n')) {
        if (line.trimmed().isEmpty()) continue;
        for (const QNetworkCookie& cookie : QNetworkCookie::parseCookies(line)) {
            // Only cookies bound to a site and still valid come back.
            if (cookie.name().isEmpty() || cookie.domain().isEmpty() || cookie.isSessionCookie()) continue;
            if (cookie.expirationDate() <= now) continue;
            cookies.append(cookie);
        }
    }
    return cookies;
}

bool CookieFile::save() const {
    if (path_.isEmpty()) return false;
    QSaveFile file(path_);
    if (!file.open(QIODevice::WriteOnly)) return false;
    // Owner-only before the first byte of a cookie is in it.
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write(Serialise(allCookies()));
    if (!file.commit()) return false;
    return QFile::setPermissions(path_, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

void CookieFile::put(const QNetworkCookie& cookie) {
    QNetworkCookie bound = cookie;
    if (bound.domain().isEmpty()) return;  // a cookie for no site cannot be matched to requests
    if (!insertCookie(bound)) updateCookie(bound);
    save();
}

void CookieFile::drop(const QNetworkCookie& cookie) {
    if (deleteCookie(cookie)) save();
}

bool CookieFile::setCookiesFromUrl(const QList<QNetworkCookie>& cookieList, const QUrl& url) {
    const bool any = QNetworkCookieJar::setCookiesFromUrl(cookieList, url);
    if (!any) return false;
    save();
    if (received) {
        for (QNetworkCookie cookie : cookieList) {
            cookie.normalize(url);
            received(cookie);
        }
    }
    return true;
}
