#include "lookup/uclookup.h"
#include "../core/testutil.h"
#include "callbookserver.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTcpServer>
#include <gtest/gtest.h>

namespace {

// Every signal of the control, recorded in the order raised as "Name(args)".
class Recorder : public QObject {
public:
    QStringList events;
    explicit Recorder(ucLookUp& c) {
        auto add = [this](const QString& e) { events << e; };
        connect(&c, &ucLookUp::LoginChecked, this, [=](const QString& id, bool in) { add("LoginChecked(" + id + "," + (in ? "true" : "false") + ")"); });
        connect(&c, &ucLookUp::SiteNotFound, this, [=](const QString& id) { add("SiteNotFound(" + id + ")"); });
        connect(&c, &ucLookUp::GotPage, this, [=](const QString& id, bool in) { add("GotPage(" + id + "," + (in ? "true" : "false") + ")"); });
        connect(&c, &ucLookUp::PageNotFound, this, [=](const QString& id) { add("PageNotFound(" + id + ")"); });
        connect(&c, &ucLookUp::CallNotFound, this, [=](const QString& id) { add("CallNotFound(" + id + ")"); });
        connect(&c, &ucLookUp::PictureReady, this, [=](const QString& id) { add("PictureReady(" + id + ")"); });
        connect(&c, &ucLookUp::NoPic, this, [=](const QString& id) { add("NoPic(" + id + ")"); });
        connect(&c, &ucLookUp::LoginRequired, this, [=](const QString& id) { add("LoginRequired(" + id + ")"); });
        connect(&c, &ucLookUp::UpdateFound, this, [=](const QString&) { add("UpdateFound"); });
        connect(&c, &ucLookUp::UpdatesNotFound, this, [=] { add("UpdatesNotFound"); });
    }
    // Runs the event loop until n events have come (or the time is up).
    bool waitFor(int n, int ms = 15000) {
        QElapsedTimer t;
        t.start();
        while (events.size() < n && t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return events.size() >= n;
    }
    // Lets the loop run a little longer to show that nothing more comes.
    void settle(int ms = 300) {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
};

LookupHosts hostsAt(const CallbookServer& s) {
    LookupHosts h;
    const char* prefixes[] = {"/eham", "/qrz", "/qrzcq", "/callook", "/hamcall"};
    for (int i = 0; i < 5; ++i) h.services[i] = s.url(prefixes[i]);
    h.pictures = s.url("/pictures");
    h.updates = s.url("/updates");
    h.timeoutMs = 1500;
    h.maxBytes = 2 * 1024 * 1024;
    return h;
}

class LookupNetworkTest : public testing::Test {
protected:
    CallbookServer server;
    QByteArray buffer;
    ucLookUp control{buffer, hostsAt(server)};
    Recorder rec{control};
    void SetUp() override { ASSERT_GT(server.port(), 0) << "the call-book stand-in did not start"; }
    void login(const char* services) {
        QNetworkAccessManager nam;
        QNetworkReply* r = nam.get(QNetworkRequest(QUrl(server.url("/_control/login?services=") + services)));
        QSignalSpy done(r, &QNetworkReply::finished);
        ASSERT_TRUE(done.wait(5000));
        delete r;
    }
};

TEST(LookupUrlTest, RequestUrls) {
    QByteArray buffer;
    LookupHosts h;
    for (int i = 0; i < 5; ++i) h.services[i] = QString("http://s%1").arg(i + 1);
    h.pictures = "http://pics";
    ucLookUp c(buffer, h);
    struct Case {
        int16_t db;
        const char* call;
        const char* page;
        const char* login;
    };
    for (const Case& k : {Case{1, "G4ABC", "http://s1/callbook/G4ABC", "http://s1/"},
                          Case{2, "SM\u00d8ABC", "http://s2/db/SM0ABC", "http://s2/"},
                          Case{3, "dl1abc", "http://s3/call/dl1abc", "http://s3/"},
                          Case{4, "W1AW", "http://s4/W1AW", "http://s4/"},
                          Case{5, "K1 X&Y", "http://s5/call?callsign=K1%20X%26Y", "http://s5/call"},
                          Case{0, "G4ABC", "", ""}, Case{6, "G4ABC", "", ""}}) {
        c.setDatabase(k.db);
        EXPECT_EQ(c.PageUrl(QString::fromUtf8(k.call)), k.page);
        EXPECT_EQ(c.LoginUrl(), k.login);
    }
    EXPECT_EQ(c.PictureUrl("DL1ABC"), "http://pics/c/dl1abc/dl1abc.jpg");
    EXPECT_EQ(c.PictureUrl(QString::fromUtf8("SM\u00d8AB\u00d8")), QString::fromUtf8("http://pics/%C3%B8/sm0ab0/sm0ab0.jpg"))
        << "the last character is taken as passed, lower-cased";
}

TEST_F(LookupNetworkTest, PageArrivesWithItsName) {
    control.setDatabase(2);
    control.GetPage(QString::fromUtf8("SM\u00d8ABC"));
    ASSERT_EQ(control.PendingDownloads, QString::fromUtf8("\0SM\u00d8ABC\0", 9));
    ASSERT_TRUE(rec.waitFor(1));
    EXPECT_EQ(rec.events, QStringList{QString::fromUtf8("GotPage(SM\u00d8ABC,true)")});
    EXPECT_EQ(control.PendingDownloads, QString(QChar(0)));
    EXPECT_EQ(control.RequestKind, "GetPage");
}

TEST_F(LookupNetworkTest, LoginStatePerService) {
    login("qrz,eham,qrzcq,callook,hamcall");
    for (int16_t db = 1; db <= 5; ++db) {
        control.setDatabase(db);
        control.IsLoggedIn("PA3XYZ");
        ASSERT_TRUE(rec.waitFor(db));
        // Callook has no login: never logged in.
        EXPECT_EQ(rec.events.last(), QString("LoginChecked(PA3XYZ,%1)").arg(db == 4 ? "false" : "true")) << db;
    }
    login("");
    rec.events.clear();
    control.setDatabase(2);
    control.IsLoggedIn("PA3XYZ");
    ASSERT_TRUE(rec.waitFor(1));
    EXPECT_EQ(rec.events, QStringList{"LoginChecked(PA3XYZ,false)"});
}

TEST_F(LookupNetworkTest, FieldsOfTheArrivedPageAndTheirEvents) {
    control.setDatabase(2);
    control.GetPage("DL1ABC");
    ASSERT_TRUE(rec.waitFor(1));
    EXPECT_EQ(control.cName("DL1ABC"), QString::fromUtf8("Hans M\u00fcller"));
    EXPECT_EQ(control.Add1(), QString::fromUtf8("Musterstra\u00dfe 12"));
    EXPECT_DOUBLE_EQ(control.Latitude(), 52.52);

    control.GetPage("XX9XYZ");  // unknown to the service
    ASSERT_TRUE(rec.waitFor(2));
    EXPECT_EQ(control.cName("XX9XYZ"), "");

    login("");  // QRZ wants a login for the details
    control.GetPage("DL1ABC");
    ASSERT_TRUE(rec.waitFor(4));
    EXPECT_EQ(control.cName("DL1ABC"), "");
    EXPECT_EQ(rec.events, (QStringList{"GotPage(DL1ABC,true)", "GotPage(XX9XYZ,true)", "CallNotFound(XX9XYZ)",
                                       "GotPage(DL1ABC,false)", "LoginRequired(DL1ABC)"}));
}

TEST_F(LookupNetworkTest, SameNameTwiceCancelsTheFirst) {
    control.setDatabase(1);
    control.GetPage("G4ABC");
    control.GetPage("G4ABC");
    ASSERT_TRUE(rec.waitFor(1));
    rec.settle();
    EXPECT_EQ(rec.events, QStringList{"GotPage(G4ABC,true)"});
    EXPECT_EQ(control.PendingDownloads, QString(QChar(0)));
}

TEST_F(LookupNetworkTest, PictureRightAfterPageMakesBothPictures) {
    control.setDatabase(1);
    control.GetPage("W1XYZ");
    control.GetPicture("G4ABC");
    ASSERT_TRUE(rec.waitFor(2));
    rec.events.sort();
    EXPECT_EQ(rec.events, (QStringList{"PictureReady(G4ABC)", "PictureReady(W1XYZ)"}));
    EXPECT_EQ(control.PageText, "");
}

TEST_F(LookupNetworkTest, PictureBytesInTheBuffer) {
    control.GetPicture("G4ABC");
    ASSERT_TRUE(rec.waitFor(1));
    EXPECT_EQ(rec.events, QStringList{"PictureReady(G4ABC)"});
    QFile f(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg");
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(buffer, f.readAll());
}

TEST_F(LookupNetworkTest, UpdateProbeKeepsItsRegistrationName) {
    control.CheckUpdates();
    ASSERT_TRUE(rec.waitFor(1));
    EXPECT_EQ(rec.events, QStringList{"UpdateFound"});
    EXPECT_TRUE(control.PageText.contains("Latest version: 0.2.0")) << control.PageText.toStdString();
    // Registered as "Updates", downloaded as "Updates3": the registration stays behind.
    EXPECT_EQ(control.PendingDownloads, QString::fromLatin1("\0Updates\0", 9));
    control.CheckUpdates();
    ASSERT_TRUE(rec.waitFor(2));
    EXPECT_EQ(rec.events.last(), QString("UpdateFound"));
}

TEST_F(LookupNetworkTest, FailuresByKind) {
    // Nothing listens on the port of a closed server.
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const int port = closed.serverPort();
    closed.close();
    QByteArray buffer2 = "kept";
    LookupHosts h;
    for (auto& s : h.services) s = QString("http://127.0.0.1:%1").arg(port);
    h.pictures = h.updates = h.services[0];
    ucLookUp down(buffer2, h);
    Recorder r(down);
    down.setDatabase(2);
    down.IsLoggedIn("PA3XYZ");
    ASSERT_TRUE(r.waitFor(1));
    down.GetPage("G4ABC");
    ASSERT_TRUE(r.waitFor(2));
    down.GetPicture("W1XYZ");
    ASSERT_TRUE(r.waitFor(3));
    down.CheckUpdates();
    ASSERT_TRUE(r.waitFor(4));
    EXPECT_EQ(r.events, (QStringList{"SiteNotFound(PA3XYZ)", "PageNotFound(G4ABC)", "NoPic(W1XYZ)", "UpdatesNotFound"}));
    // Failed names stay listed; the buffer is untouched.
    EXPECT_EQ(down.PendingDownloads, QString::fromLatin1("\0PA3XYZ\0G4ABC\0W1XYZ\0Updates\0", 28));
    EXPECT_EQ(buffer2, "kept");
}

TEST_F(LookupNetworkTest, UnknownHostFailsLikeAClosedOne) {
    // ".invalid" is never resolved: the name lookup fails at once, and each request ends in its
    // failure event with the buffer untouched.
    QByteArray buffer2 = "kept";
    LookupHosts h;
    for (auto& s : h.services) s = QStringLiteral("http://no-such-host.invalid");
    h.pictures = h.updates = h.services[0];
    ucLookUp nowhere(buffer2, h);
    Recorder r(nowhere);
    nowhere.setDatabase(2);
    nowhere.IsLoggedIn("PA3XYZ");
    ASSERT_TRUE(r.waitFor(1));
    nowhere.GetPage("G4ABC");
    ASSERT_TRUE(r.waitFor(2));
    nowhere.GetPicture("W1XYZ");
    ASSERT_TRUE(r.waitFor(3));
    EXPECT_EQ(r.events, (QStringList{"SiteNotFound(PA3XYZ)", "PageNotFound(G4ABC)", "NoPic(W1XYZ)"}));
    EXPECT_EQ(buffer2, "kept");
}

TEST_F(LookupNetworkTest, ServerFaults) {
    struct Case {
        const char* call;
        const char* event;
    };
    control.setDatabase(1);
    for (const Case& c : {Case{"ZZ404", "PageNotFound(ZZ404)"}, Case{"ZZ500", "PageNotFound(ZZ500)"},
                          Case{"ZZ1HNG", "PageNotFound(ZZ1HNG)"}, Case{"ZZ1TRN", "PageNotFound(ZZ1TRN)"},
                          Case{"ZZ1BIG", "PageNotFound(ZZ1BIG)"}, Case{"ZZ1LP", "PageNotFound(ZZ1LP)"},
                          Case{"ZZ1JNK", "GotPage(ZZ1JNK,false)"}}) {
        rec.events.clear();
        control.GetPage(c.call);
        ASSERT_TRUE(rec.waitFor(1)) << c.call;
        EXPECT_EQ(rec.events, QStringList{c.event});
    }
}

TEST_F(LookupNetworkTest, RedirectsAreFollowed) {
    LookupHosts h = hostsAt(server);
    h.services[0] = server.url("/redirect/eham");
    QByteArray b;
    ucLookUp moved(b, h);
    Recorder r(moved);
    moved.setDatabase(1);
    moved.GetPage("G4ABC");
    ASSERT_TRUE(r.waitFor(1));
    EXPECT_EQ(r.events, QStringList{"GotPage(G4ABC,true)"});
    EXPECT_EQ(moved.cName("G4ABC"), "Peter Smith");
}

}  // namespace
