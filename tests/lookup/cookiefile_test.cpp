#include "lookup/cookiefile.h"

#include <QDateTime>
#include <QFile>
#include <QNetworkCookie>
#include <QTemporaryDir>
#include <QUrl>
#include <gtest/gtest.h>

namespace {

QNetworkCookie Cookie(const char* name, const char* value, const char* domain, qint64 lifeSeconds) {
    QNetworkCookie c(name, value);
    c.setDomain(QString::fromLatin1(domain));
    c.setPath(QStringLiteral("/"));
    if (lifeSeconds != 0) c.setExpirationDate(QDateTime::currentDateTimeUtc().addSecs(lifeSeconds));
    return c;
}

QStringList Names(const QList<QNetworkCookie>& cookies) {
    QStringList names;
    for (const QNetworkCookie& c : cookies) names << QString::fromLatin1(c.name() + '=' + c.value() + '@') + c.domain();
    names.sort();
    return names;
}

// Only lasting cookies bound to a site go to the file and come back from it.
TEST(CookieFile, KeepsLastingCookiesOnly) {
    struct Case {
        QNetworkCookie cookie;
        bool kept;
    };
    const Case cases[] = {
        {Cookie("qrz_session", "abc", "127.0.0.1", 3600), true},
        {Cookie("site", "1", ".qrz.com", 86400), true},
        {Cookie("session", "x", "127.0.0.1", 0), false},    // a session cookie: memory only
        {Cookie("old", "x", "127.0.0.1", -10), false},      // expired
        {Cookie("nowhere", "x", "", 3600), false},          // no site
    };
    for (const Case& c : cases) {
        const QList<QNetworkCookie> back = CookieFile::Parse(CookieFile::Serialise({c.cookie}));
        EXPECT_EQ(back.size(), c.kept ? 1 : 0) << c.cookie.name().constData();
        if (c.kept && !back.isEmpty()) {
            EXPECT_EQ(back.first().name(), c.cookie.name());
            EXPECT_EQ(back.first().value(), c.cookie.value());
            EXPECT_EQ(back.first().domain(), c.cookie.domain());
        }
    }
}

TEST(CookieFile, GarbageReadsAsNothing) {
    const QByteArray inputs[] = {QByteArray(), QByteArray("\n\n"), QByteArray("\x00\xff\xfe=;;;", 7),
                                 QByteArray("=novalue; domain=x; expires=Wed, 01 Jan 2100 00:00:00 GMT"),
                                 QByteArray(100000, 'a')};
    for (const QByteArray& input : inputs) EXPECT_TRUE(CookieFile::Parse(input).isEmpty());
}

// Written owner-only, read back by a new jar; dropping one rewrites the file.
TEST(CookieFile, FileRoundTripOwnerOnly) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("cookies"));
    {
        CookieFile jar(path);
        jar.put(Cookie("a", "1", "127.0.0.1", 3600));
        jar.put(Cookie("b", "2", "127.0.0.1", 3600));
        jar.put(Cookie("a", "3", "127.0.0.1", 3600));  // replaces
        jar.put(Cookie("s", "4", "127.0.0.1", 0));     // kept in memory only
        EXPECT_EQ(Names(jar.cookies()), (QStringList{"a=3@127.0.0.1", "b=2@127.0.0.1", "s=4@127.0.0.1"}));
    }
    const auto owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    const auto user = QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser;
    EXPECT_EQ(QFile::permissions(path) & ~user, owner);
    CookieFile again(path);
    EXPECT_EQ(Names(again.cookies()), (QStringList{"a=3@127.0.0.1", "b=2@127.0.0.1"}));
    again.drop(Cookie("a", "3", "127.0.0.1", 3600));
    EXPECT_EQ(Names(CookieFile(path).cookies()), (QStringList{"b=2@127.0.0.1"}));
    // Cookies a download receives are kept and handed on.
    QStringList handed;
    again.received = [&](const QNetworkCookie& c) { handed << QString::fromLatin1(c.name()) + u'@' + c.domain(); };
    again.setCookiesFromUrl({Cookie("c", "5", "", 3600)}, QUrl(QStringLiteral("http://127.0.0.1:8080/qrz/")));
    EXPECT_EQ(handed, QStringList{"c@127.0.0.1"});
    EXPECT_EQ(Names(CookieFile(path).cookies()), (QStringList{"b=2@127.0.0.1", "c=5@127.0.0.1"}));
}

TEST(CookieFile, MissingOrUnwritableFile) {
    CookieFile none(QStringLiteral("/nonexistent/folder/cookies"));
    EXPECT_TRUE(none.cookies().isEmpty());
    none.put(Cookie("a", "1", "127.0.0.1", 3600));
    EXPECT_FALSE(none.save());
    EXPECT_EQ(none.cookies().size(), 1);
}

}  // namespace
