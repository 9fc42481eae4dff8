// The station view through its plugin, against the local call-book stand-in: the capture, the
// retries, what the page may not do, and the login it shares with the lookups.
#include "lookup/cookiefile.h"
#include "lookup/uclookup.h"
#include "pictures/stationviewapi.h"
#include "pictures/stationviewloader.h"
#include "pictures/stationviewrules.h"

#include "app/pictaropaste.h"
#include "gui/standin.h"
#include "lookup/callbookserver.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QLabel>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineView>
#include <csignal>

namespace {

constexpr int kWaitMs = 60000;

// One view and what it reported.
struct Opened {
    StationView* view = nullptr;
    QPointer<QWidget> window;
    QList<int> attempts;
    QStringList told;
    int done = -1;  // -1 not yet, 0 failed for good, 1 shown
    QList<QPair<QNetworkCookie, bool>> cookies;

    ~Opened() { delete window.data(); }
};

std::unique_ptr<Opened> Open(const QString& request, QSize page = {400, 300}, QList<QNetworkCookie> cookies = {}) {
    auto opened = std::make_unique<Opened>();
    StationViewFactory* factory = LoadStationView(nullptr);
    if (!factory) return opened;
    Opened* o = opened.get();
    StationViewSetup setup;
    setup.request = request;
    setup.copyCaption = QStringLiteral("Copy image");
    setup.retryMessage = QStringLiteral("PX Callsigns\r\n\r\nAgain. ");
    setup.monitor = QRect(0, 0, 1280, 1024);
    setup.keptLeft = 10;
    setup.keptWidth = page.width();
    setup.keptHeight = page.height() + kStationViewMenuBarHeight;
    setup.cookies = std::move(cookies);
    setup.retried = [o](int attempt) { o->attempts.append(attempt); };
    setup.tell = [o](const QString& text) { o->told.append(text); };
    setup.pageDone = [o](bool shown) { o->done = shown ? 1 : 0; };
    // The program's own paste (as the main window connects it).
    setup.paste = [](const QImage& picture) { PasteToPictaro(picture, SessionDesktop(QGuiApplication::clipboard())); };
    setup.cookieChanged = [o](const QNetworkCookie& c, bool added) { o->cookies.append({c, added}); };
    o->view = factory->create(setup);
    o->window = o->view->window();
    return opened;
}

QWebEnginePage* PageOf(const Opened& o) {
    auto* browser = o.window ? o.window->findChild<QWebEngineView*>() : nullptr;
    return browser ? browser->page() : nullptr;
}

}  // namespace

class StationViewTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY2(LoadStationView(nullptr), "the station-view plugin loads");
        QVERIFY(server_.port() > 0);
    }

    // The page's four coloured corners are the picture's corners: nothing of the frame, the
    // caption or the menu bar is in it; the clipboard holds the same picture.
    void capturesExactlyThePage() {
        auto o = Open(server_.url(QStringLiteral("/blocks")) + QStringLiteral("*G4ABC"));
        QVERIFY(o->view);
        QCOMPARE(o->window->windowTitle(), QStringLiteral("Norvane   G4ABC"));
        const WId shown = o->window->winId();
        QTRY_VERIFY_WITH_TIMEOUT(o->done != -1, kWaitMs);
        QCOMPARE(o->done, 1);
        // The window the user saw at once is the one that shows the page (not made again, which
        // the desktop shows as a flash).
        QCOMPARE(o->window->winId(), shown);
        const QImage picture = o->view->CaptureView();
        QCOMPARE(picture.size(), QSize(400, 300));
        struct Corner {
            QPoint at;
            QRgb colour;
        };
        const Corner corners[] = {{{0, 0}, qRgb(255, 0, 0)},
                                  {{399, 0}, qRgb(0, 255, 0)},
                                  {{0, 299}, qRgb(0, 0, 255)},
                                  {{399, 299}, qRgb(255, 255, 0)},
                                  {{199, 149}, qRgb(255, 0, 0)},
                                  {{200, 150}, qRgb(255, 255, 0)}};
        for (const Corner& c : corners) QCOMPARE(picture.pixel(c.at), c.colour);
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), picture);
        QVERIFY(o->attempts.isEmpty());
    }

    // The paste label: the captured page arrives in the stand-in Pictaro pixel for pixel.
    void pasteArrivesInPictaro() {
        QTemporaryDir dir;
        Standin pictaro(dir.path(), QStringLiteral("Pictaro"));
        QVERIFY(pictaro.ready());
        auto o = Open(server_.url(QStringLiteral("/blocks")) + QStringLiteral("*G4ABC"), QSize(320, 240));
        QTRY_VERIFY_WITH_TIMEOUT(o->done != -1, kWaitMs);
        QCOMPARE(o->done, 1);
        QLabel* paste = nullptr;
        for (QLabel* label : o->window->findChildren<QLabel*>())
            if (label->text() == QStringLiteral("Paste to Pictaro TX")) paste = label;
        QVERIFY(paste);
        QTest::mouseClick(paste, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(pictaro.log(), QStringLiteral("F7 320x240\n"), 10000);
        const QImage received = pictaro.received().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(received, o->view->CaptureView());
        QCOMPARE(received.pixel(0, 0), qRgb(255, 0, 0));
        QCOMPARE(received.pixel(319, 239), qRgb(255, 255, 0));
    }

    // A window shrunk to nothing still captures (nothing) and stays usable; a capture while the
    // page loads gives whatever is on the screen.
    void shrunkAndEarlyCaptures() {
        auto o = Open(server_.url(QStringLiteral("/delay/600/blocks")) + QStringLiteral("*K1AB"));
        QVERIFY(o->view);
        const QImage early = o->view->CaptureView();
        QCOMPARE(early.size(), QSize(400, 300));
        o->window->resize(1, 1);
        QTest::qWait(50);
        o->view->CaptureView();
        QTRY_VERIFY_WITH_TIMEOUT(o->done != -1, kWaitMs);
        QCOMPARE(o->done, 1);
        o->window->resize(300, 200 + kStationViewMenuBarHeight);
        QTRY_COMPARE_WITH_TIMEOUT(o->view->CaptureView().size(), QSize(300, 200), 5000);
    }

    // Each failure of the page retries: 1 and 2 quietly, 3 and 4 after the message, then no more.
    void retriesThenGivesUp_data() {
        QTest::addColumn<QString>("path");
        QTest::newRow("unreachable") << QString();
        QTest::newRow("404") << QStringLiteral("/qrz/db/ZZ404");
        QTest::newRow("500") << QStringLiteral("/qrz/db/ZZ500");
        QTest::newRow("never answers") << QStringLiteral("/qrz/db/ZZ1HNG");
    }
    void retriesThenGivesUp() {
        QFETCH(QString, path);
        const QString address = path.isEmpty() ? QStringLiteral("http://127.0.0.1:1/") : server_.url(path);
        auto o = Open(address + QStringLiteral("*ZZ0ZZ"));
        QVERIFY(o->view);
        QTRY_VERIFY_WITH_TIMEOUT(o->done != -1, kWaitMs);
        QCOMPARE(o->done, 0);
        QCOMPARE(o->attempts, (QList<int>{1, 2, 3, 4, 5}));
        QCOMPARE(o->told, (QStringList{QStringLiteral("PX Callsigns\r\n\r\nAgain. "), QStringLiteral("PX Callsigns\r\n\r\nAgain. ")}));
        QVERIFY(o->window && o->window->isVisible());
        QCOMPARE(o->view->CaptureView().size(), QSize(400, 300));
    }

    // The renderer process of our own page dying is a failure like the others.
    void rendererDeathRetries() {
        auto o = Open(server_.url(QStringLiteral("/blocks")) + QStringLiteral("*ZZ0ZZ"));
        QTRY_VERIFY_WITH_TIMEOUT(o->done != -1, kWaitMs);
        QWebEnginePage* page = PageOf(*o);
        QVERIFY(page);
        const qint64 pid = page->renderProcessPid();
        QVERIFY(pid > 0);
        // Opened again after the failure: the page is not done any more until it is.
        o->done = -1;
        ::kill(static_cast<pid_t>(pid), SIGKILL);
        QTRY_COMPARE_WITH_TIMEOUT(o->attempts, QList<int>{1}, kWaitMs);
    }

    // A local file typed into a link, a pop-up and a download the page asks for: all refused.
    void refusesFilesPopUpsAndDownloads() {
        auto file = Open(QStringLiteral("file:///etc/hostname*X"));
        QTRY_VERIFY_WITH_TIMEOUT(file->done != -1, kWaitMs);
        QCOMPARE(file->done, 0);
        QVERIFY(file->attempts.isEmpty());

        auto o = Open(server_.url(QStringLiteral("/blocks")) + QStringLiteral("*X"));
        QTRY_VERIFY_WITH_TIMEOUT(o->done != -1, kWaitMs);
        QWebEnginePage* page = PageOf(*o);
        const int windows = QApplication::topLevelWidgets().size();
        page->runJavaScript(QStringLiteral("window.open('%1'); location.href = 'file:///etc/hostname';")
                                .arg(server_.url(QStringLiteral("/blocks"))));
        QTest::qWait(1500);
        QCOMPARE(QApplication::topLevelWidgets().size(), windows);
        QCOMPARE(page->url().toString(), server_.url(QStringLiteral("/blocks")));
    }

    // Logging in to QRZ in the station view logs the lookups in: the browser's session cookie
    // reaches the shared cookie file (owner-only), and a lookup control reading that file is
    // logged in and gets the station's page.
    void loginCarriesOverToLookups() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("cookies"));
        auto* jar = new CookieFile(path);
        auto o = Open(server_.url(QStringLiteral("/qrz/login")) + QStringLiteral("*QRZ"));
        QTRY_VERIFY_WITH_TIMEOUT(o->done != -1, kWaitMs);
        QCOMPARE(o->done, 1);
        PageOf(*o)->runJavaScript(QStringLiteral(
            "document.getElementById('username').value='TEST1';"
            "document.getElementById('password').value='secret';document.forms[0].submit();"));
        QTRY_VERIFY_WITH_TIMEOUT(!o->cookies.isEmpty(), kWaitMs);
        for (const auto& [cookie, added] : o->cookies) added ? jar->put(cookie) : jar->drop(cookie);
        QCOMPARE(o->cookies.first().first.name(), QByteArray("qrz_session"));
        // Owner-only: no group or other bits (the "user" bits repeat the owner's for its owner).
        const auto user = QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser;
        QCOMPARE(QFile::permissions(path) & ~user, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        delete jar;

        QByteArray buffer;
        LookupHosts hosts;
        hosts.services[1] = server_.url(QStringLiteral("/qrz"));
        ucLookUp lookup(buffer, hosts);
        lookup.setCookieJar(new CookieFile(path));
        lookup.setDatabase(2);
        QSignalSpy checked(&lookup, &ucLookUp::LoginChecked);
        lookup.IsLoggedIn(QStringLiteral("TEST1"));
        QTRY_COMPARE_WITH_TIMEOUT(checked.size(), 1, kWaitMs);
        QCOMPARE(checked.first().at(1).toBool(), true);
        QSignalSpy got(&lookup, &ucLookUp::GotPage);
        lookup.GetPage(QStringLiteral("DL1ABC"));
        QTRY_COMPARE_WITH_TIMEOUT(got.size(), 1, kWaitMs);
        QCOMPARE(got.first().at(1).toBool(), true);
        QVERIFY(!lookup.cName(QStringLiteral("DL1ABC")).isEmpty());

        // Without the cookie the same stand-in says logged out.
        ucLookUp stranger(buffer, hosts);
        stranger.setDatabase(2);
        QSignalSpy strangerChecked(&stranger, &ucLookUp::LoginChecked);
        stranger.IsLoggedIn(QStringLiteral("TEST1"));
        QTRY_COMPARE_WITH_TIMEOUT(strangerChecked.size(), 1, kWaitMs);
        QCOMPARE(strangerChecked.first().at(1).toBool(), false);
    }

private:
    CallbookServer server_{QStringList{QStringLiteral("--logged-out")}};
};

int main(int argc, char** argv) {
    qputenv("PX_STATIONVIEW_TIMEOUT_MS", "1500");
    // Xvfb has no graphics card to offer; the engine draws in software from the start.
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--disable-gpu --no-sandbox --disable-background-networking");
    qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    qputenv("QT_LOGGING_RULES", "qt.webenginecontext.info=false");
    QApplication app(argc, argv);
    StationViewTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "stationview_test.moc"
