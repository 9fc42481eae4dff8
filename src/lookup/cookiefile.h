#pragma once
// The cookies of the one browser session that the lookups and the station view share, kept in a
// file that only the user can read. Session cookies (no expiry) live as long as the program;
// lasting ones are written to the file as they change and read back at start.
#include <QNetworkCookieJar>
#include <QString>
#include <functional>

class CookieFile : public QNetworkCookieJar {
public:
    // Reads path when it exists; an unreadable or garbled file is an empty jar.
    explicit CookieFile(QString path, QObject* parent = nullptr);

    QList<QNetworkCookie> cookies() const { return allCookies(); }
    // Adds or replaces one (from the browser) and writes the file.
    void put(const QNetworkCookie& cookie);
    // Drops one (the browser dropped it) and writes the file.
    void drop(const QNetworkCookie& cookie);
    // Cookies the lookups receive; each also goes to received.
    bool setCookiesFromUrl(const QList<QNetworkCookie>& cookieList, const QUrl& url) override;
    // Writes the lasting cookies, owner-only; false when the file cannot be written.
    bool save() const;

    std::function<void(const QNetworkCookie&)> received;

    // The file's text for a set of cookies, and back (the lasting ones only; bad lines skipped).
    static QByteArray Serialise(const QList<QNetworkCookie>& cookies);
    static QList<QNetworkCookie> Parse(const QByteArray& text);

private:
    QString path_;
};
