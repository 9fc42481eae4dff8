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
        auto id = [this](const char* n) { return [=, this](const QString& id) { events << n + (u'(' + id + u')'); }; };
        auto idIn = [this](const char* n) {
            return [=, this](const QString& id, bool in) { events << n + (u'(' + id + (in ? ",true)" : ",false)")); };
        };
        connect(&c, &ucLookUp::LoginChecked, this, idIn("LoginChecked"));
        connect(&c, &ucLookUp::SiteNotFound, this, id("SiteNotFound"));
        connect(&c, &ucLookUp::GotPage, this, idIn("GotPage"));
        connect(&c, &ucLookUp::PageNotFound, this, id("PageNotFound"));
        connect(&c, &ucLookUp::CallNotFound, this, id("CallNotFound"));
        connect(&c, &ucLookUp::PictureReady, this, id("PictureReady"));
        connect(&c, &ucLookUp::NoPic, this, id("NoPic"));
        connect(&c, &ucLookUp::LoginRequired, this, id("LoginRequired"));
        connect(&c, &ucLookUp::UpdateFound, this, [this] { events << "UpdateFound"; });
        connect(&c, &ucLookUp::UpdatesNotFound, this, [this] { events << "UpdatesNotFound"; });
    }
    // Runs the event loop until n events have come (or the time is up); with settleMs, on for
    // that long to show that nothing more comes.
    bool waitFor(qsizetype n, int settleMs = 0) {
        QElapsedTimer t;
        t.start();
        while (events.size() < n && t.elapsed() < 15000) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        for (t.start(); t.elapsed() < settleMs;) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return events.size() >= n;
    }
    // Makes one request and waits for its event.
    template <typename Request>
    bool next(Request request) {
        request();
        return waitFor(events.size() + 1);
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

QString failureText(const DownloadFailure& f) {
    const char* kinds[] = {"None", "Unreachable", "HttpError", "TimedOut", "TooLarge"};
    return QString::fromLatin1(kinds[f.kind]) + (f.httpStatus ? QString(" %1").arg(f.httpStatus) : QString());
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
        const char *call, *page, *login;
    };
    for (const Case& k : {Case{1, "G4ABC", "http://s1/callbook/G4ABC", "http://s1/"},
                          Case{2, "SM\u00d8ABC", "http://s2/db/SM0ABC", "http://s2/"},
                          Case{3, "dl1abc", "http://s3/call/dl1abc", "http://s3/"},
                          Case{4, "W1AW", "http://s4/W1AW", "http://s4/"},
                          Case{5, "K1 X&Y", "http://s5/call?callsign=K1%20X%26Y", "http://s5/call"},
                          Case{0, "G4ABC", "", ""}, Case{6, "G4ABC", "", ""}}) {
        c.setDatabase(k.db);
        EXPECT_EQ(c.PageUrl(QString::fromUtf8(k.call)), k.page) << k.db;
        EXPECT_EQ(c.LoginUrl(), k.login) << k.db;
    }
    EXPECT_EQ(c.PictureUrl("DL1ABC"), "http://pics/c/dl1abc/dl1abc.jpg");
    EXPECT_EQ(c.PictureUrl(QString::fromUtf8("SM\u00d8AB\u00d8")), QString::fromUtf8("http://pics/%C3%B8/sm0ab0/sm0ab0.jpg"))
        << "the last character is taken as passed, lower-cased";
}

TEST_F(LookupNetworkTest, PageArrivesWithItsNameAndTheSameNameAgainCancelsTheFirst) {
    control.setDatabase(2);
    control.GetPage(QString::fromUtf8("SM\u00d8ABC"));
    control.GetPage(QString::fromUtf8("SM\u00d8ABC"));
    // One answer, however long one waits: the first download was stopped, not merely overtaken.
    ASSERT_TRUE(rec.waitFor(1, 300));
    EXPECT_EQ(rec.events, QStringList{QString::fromUtf8("GotPage(SM\u00d8ABC,true)")});
    EXPECT_EQ(control.RequestKind, "GetPage");
}

TEST_F(LookupNetworkTest, LoginStatePerService) {
    login("qrz,eham,qrzcq,callook,hamcall");
    for (int16_t db = 1; db <= 5; ++db) {
        control.setDatabase(db);
        ASSERT_TRUE(rec.next([&] { control.IsLoggedIn("PA3XYZ"); }));
        // Callook has no login: never logged in.
        EXPECT_EQ(rec.events.last(), QString("LoginChecked(PA3XYZ,%1)").arg(db == 4 ? "false" : "true")) << db;
    }
}

TEST_F(LookupNetworkTest, FieldsOfTheArrivedPageAndTheirEvents) {
    control.setDatabase(2);
    ASSERT_TRUE(rec.next([&] { control.GetPage("DL1ABC"); }));
    EXPECT_EQ(control.cName("DL1ABC"), QString::fromUtf8("Hans M\u00fcller"));
    ASSERT_TRUE(rec.next([&] { control.GetPage("XX9XYZ"); }));  // unknown to the service
    EXPECT_EQ(control.cName("XX9XYZ"), "");
    login("");  // QRZ wants a login for the details
    ASSERT_TRUE(rec.next([&] { control.GetPage("DL1ABC"); }));
    EXPECT_EQ(control.cName("DL1ABC"), "");
    EXPECT_EQ(rec.events, (QStringList{"GotPage(DL1ABC,true)", "GotPage(XX9XYZ,true)", "CallNotFound(XX9XYZ)",
                                       "GotPage(DL1ABC,false)", "LoginRequired(DL1ABC)"}));
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
    ASSERT_TRUE(rec.next([&] { control.GetPicture("G4ABC"); }));
    EXPECT_EQ(rec.events, QStringList{"PictureReady(G4ABC)"});
    EXPECT_EQ(buffer, testutil::readFile(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg"));
}

TEST_F(LookupNetworkTest, UpdateProbeKeepsItsRegistrationName) {
    ASSERT_TRUE(rec.next([&] { control.CheckUpdates(); }));
    EXPECT_TRUE(control.PageText.contains("Latest version: 0.2.0")) << control.PageText.toStdString();
    // Registered as "Updates", downloaded as "Updates3": the registration stays behind, and the
    // next probe still runs and answers.
    ASSERT_TRUE(rec.next([&] { control.CheckUpdates(); }));
    EXPECT_EQ(rec.events, (QStringList{"UpdateFound", "UpdateFound"}));
}

TEST_F(LookupNetworkTest, FailuresByKind) {
    // Nothing listens on the port of a closed server; ".invalid" is never resolved.
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const QString closedHost = QString("http://127.0.0.1:%1").arg(closed.serverPort());
    closed.close();
    for (const QString& host : {closedHost, QStringLiteral("http://no-such-host.invalid")}) {
        SCOPED_TRACE(host.toStdString());
        QByteArray kept = "kept";
        LookupHosts h;
        h.services.fill(host);
        h.pictures = h.updates = host;
        ucLookUp down(kept, h);
        Recorder r(down);
        down.setDatabase(2);
        ASSERT_TRUE(r.next([&] { down.IsLoggedIn("PA3XYZ"); }));
        ASSERT_TRUE(r.next([&] { down.GetPage("G4ABC"); }));
        ASSERT_TRUE(r.next([&] { down.GetPicture("W1XYZ"); }));
        ASSERT_TRUE(r.next([&] { down.CheckUpdates(); }));
        EXPECT_EQ(r.events, (QStringList{"SiteNotFound(PA3XYZ)", "PageNotFound(G4ABC)", "NoPic(W1XYZ)", "UpdatesNotFound"}));
        // The buffer is untouched by a failure.
        EXPECT_EQ(kept, "kept");
        EXPECT_EQ(failureText(down.LastFailure), "Unreachable");
    }
}

TEST_F(LookupNetworkTest, ServerFaults) {
    control.setDatabase(1);
    const char* const cases[][3] = {{"ZZ404", "PageNotFound(ZZ404)", "HttpError 404"},
                                    {"ZZ500", "PageNotFound(ZZ500)", "HttpError 500"},
                                    {"ZZ1HNG", "PageNotFound(ZZ1HNG)", "TimedOut"},
                                    {"ZZ1TRN", "PageNotFound(ZZ1TRN)", "Unreachable"},
                                    {"ZZ1BIG", "PageNotFound(ZZ1BIG)", "TooLarge"},
                                    {"ZZ1LP", "PageNotFound(ZZ1LP)", "Unreachable"},
                                    {"ZZ1JNK", "GotPage(ZZ1JNK,false)", "None"}};
    for (const auto& c : cases) {
        rec.events.clear();
        ASSERT_TRUE(rec.next([&] { control.GetPage(c[0]); })) << c[0];
        EXPECT_EQ(rec.events, QStringList{c[1]}) << c[0];
        EXPECT_EQ(failureText(control.LastFailure), c[2]) << c[0];
    }
}

TEST_F(LookupNetworkTest, CancelledDownloadsRaiseNothing) {
    control.setDatabase(2);
    control.GetPicture("G4ABC");
    control.GetPage("ZZ1HNG");  // would fail after the timeout
    control.CancelDownload("ZZ1HNG");
    control.CancelDownload("W1XYZ");  // nothing of that name runs
    ASSERT_TRUE(rec.waitFor(1, 2500));
    // Only the other name comes in (as a page: the latest request was one).
    EXPECT_EQ(rec.events, QStringList{"GotPage(G4ABC,false)"}) << "nothing from ZZ1HNG, though its timeout has passed";
}

TEST_F(LookupNetworkTest, RedirectsAreFollowed) {
    LookupHosts h = hostsAt(server);
    h.services[0] = server.url("/redirect/eham");
    QByteArray b;
    ucLookUp moved(b, h);
    Recorder r(moved);
    moved.setDatabase(1);
    ASSERT_TRUE(r.next([&] { moved.GetPage("G4ABC"); }));
    EXPECT_EQ(r.events, QStringList{"GotPage(G4ABC,true)"});
    EXPECT_EQ(moved.cName("G4ABC"), "Peter Smith");
}

}  // namespace
