// The own-station window: grid line, when its settings are written, fetching the position.
#include "app/settings.h"
#include "app/statustexts.h"
#include "lookup/callbookserver.h"
#include "lookup/uclookup.h"
#include "setup/form2.h"
#include "fits.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>

class Form2Test : public QObject {
    Q_OBJECT

    ModuleValues g;

    QString setting(settings::Key key) { return settings::GetSetting(key, "unset"); }

private slots:
    void init() {
        QFile::remove(qEnvironmentVariable("XDG_CONFIG_HOME") + "/PX Callsigns.conf");
        g = ModuleValues();
        QVERIFY(LoadLanguage("English", PX_SOURCE_DIR "/data", g.Texts).status == LanguageLoad::Ok);
        g.MyLat = 51.5072;
        g.MyLon = -0.1276;
        g.DistUnit = 1;
        g.ServiceNo = 2;
    }

    void loadsTheOwnStation() {
        settings::SaveSetting(settings::kMyCallsign, "PA3XYZ");
        Form2 form(g);
        QCOMPARE(form.txtCall->text() + ' ' + form.txtLat->text() + ' ' + form.txtLon->text(), QString("PA3XYZ 51.5072 -0.1276"));
        QVERIFY(form.optMi->isChecked());
        QCOMPARE(form.lblGrid->text(), QString("Grid square:   IO91wm"));
        QCOMPARE(form.lblCall->text() + form.Label1->text(), QString("Call sign: Latitude: "));
    }

    void gridLineFollowsTheTyping_data() {
        QTest::addColumn<QString>("lat");
        QTest::addColumn<QString>("lon");
        QTest::addColumn<QString>("grid");
        QTest::addColumn<double>("myLat");
        QTest::newRow("origin") << "0" << "0" << "Grid square:   JJ00aa" << 0.0;
        QTest::newRow("west of Greenwich") << "0" << "-0.5" << "Grid square:   IJ90ra" << 0.0;
        QTest::newRow("numbers then text") << "52.52N" << "13.405 E" << "Grid square:   JO62qm" << 52.52;
        QTest::newRow("not numbers") << "abc" << "x" << "Grid square:   JJ00aa" << 0.0;
        QTest::newRow("beyond the pole") << "90.5" << "0" << "" << 90.5;
        QTest::newRow("south") << "-33.8688" << "151.2093" << "Grid square:   QF56od" << -33.8688;
    }

    void gridLineFollowsTheTyping() {
        QFETCH(QString, lat);
        QFETCH(QString, lon);
        Form2 form(g);
        form.txtLat->setText(lat);
        form.txtLon->setText(lon);
        QTEST(form.lblGrid->text(), "grid");
        QTEST(g.MyLat, "myLat");
    }

    // The unit is written at once, the station only on close.
    void settingsAreWrittenAtTheirMoment() {
        auto* form = new Form2(g);
        form->txtCall->setText("DL1ABC");
        form->txtLat->setText("52.52");
        form->optKm->click();
        QCOMPARE(setting(settings::kUnit) + ' ' + setting(settings::kMyLatitude) + ' ' + setting(settings::kMyCallsign),
                 QString("0 unset unset"));
        QCOMPARE(g.DistUnit, int16_t(0));
        form->optMi->click();
        QCOMPARE(setting(settings::kUnit), QString("1"));
        form->close();  // deletes itself
        QCOMPARE(setting(settings::kMyCallsign) + ' ' + setting(settings::kMyLatitude) + ' ' + setting(settings::kMyLongitude),
                 QString("DL1ABC 52.52 -0.1276"));
        QCOMPARE(g.MyLat, 52.52);
    }

    // Every caption shows whole in each of the eight languages, and so does each text a fetch
    // of the position can end with, without the window changing its size.
    void textsFitInEveryLanguage() {
        for (const char* language : {"English", "Spanish", "German", "French", "Dutch", "Polish", "Japanese", "Russian"}) {
            g.Texts = LanguageTexts();
            QVERIFY(LoadLanguage("English", PX_SOURCE_DIR "/data", g.Texts).status == LanguageLoad::Ok);
            QVERIFY2(LoadLanguage(language, PX_SOURCE_DIR "/data", g.Texts).status == LanguageLoad::Ok, language);
            g.MyLat = -33.8688;  // the longest grid line: a minus and every digit
            g.MyLon = -151.2093;
            Form2 form(g);
            form.show();
            QVERIFY(QTest::qWaitForWindowExposed(&form));
            QVERIFY2(clippedTexts(form).isEmpty(), qPrintable(language + (": " + clippedTexts(form).join(" | "))));
            const QSize size = form.size();
            const LanguageTexts& t = g.Texts;
            const QString call = "PA3XYZ/P";
            for (QString text : {t.SetupPositionFound, t.SetupPositionQrzcq, t.CallookStatus, t.LookupFailed,
                                 t.SetupNoPosition, t.NotFound + " " + call}) {
                form.Label3->setText("\n" + text.replace("***", "Callook.info").replace("???", call));
                QVERIFY2(clippedTexts(form).isEmpty(), qPrintable(language + (": " + clippedTexts(form).join(" | "))));
            }
            QCOMPARE(form.size(), size);
            QVERIFY(form.txtLat->width() >= 140);
        }
    }

    void coordinatesFromTheService() {
        CallbookServer server;
        QVERIFY(server.port() > 0);
        for (const char* service : {"QRZ", "QRZCQ"}) settings::SaveSetting({"Hosts", service}, server.url("/" + QString(service).toLower()));
        Form2 form(g);
        // A call with a blank or a "-" is refused without asking the service.
        form.txtCall->setText("DL1 ABC");
        form.cmdGetLatLon->click();
        QCOMPARE(form.lookUp->RequestKind, QString());
        QCOMPARE(form.Label3->text(), g.Texts.NotFound + " DL1 ABC");

        form.txtCall->setText("DL1ABC");
        form.cmdGetLatLon->click();
        QCOMPARE(g.MyCall, QString("DL1ABC"));
        QTRY_COMPARE_WITH_TIMEOUT(form.txtLat->text(), QString("52.52"), 10000);
        QCOMPARE(form.txtLon->text(), QString("13.405"));
        QCOMPARE(form.lblGrid->text(), QString("Grid square:   JO62qm"));
        QCOMPARE(form.Label3->text(), "\n" + QString(g.Texts.SetupPositionFound).replace("***", "DL1ABC"));
        QVERIFY(!QApplication::overrideCursor());

        g.ServiceNo = 3;  // QRZCQ has its own text
        form.txtLat->clear();
        form.cmdGetLatLon->click();
        QTRY_COMPARE_WITH_TIMEOUT(form.txtLat->text(), QString("52.52"), 10000);
        QCOMPARE(form.Label3->text(), "\n" + QString(g.Texts.SetupPositionQrzcq).replace("***", "DL1ABC"));
    }

    // The status texts that differ by service: QRZCQ and Callook have their own, the other
    // services the shared ones, and a number that names no service finds no position.
    void statusTextsFollowTheService() {
        LanguageTexts t;
        t.LoggedIn = "in";
        t.NotLoggedIn = "out";
        t.LoginNotNeededQrzcq = "qrzcq-free";
        t.LoginNotNeededCallook = "callook-free";
        t.LookupFailed = "failed";
        t.LookupFailedQrzcq = "qrzcq-failed";
        t.CallookStatus = "callook-note";
        t.SetupPositionFound = "found";
        t.SetupPositionQrzcq = "qrzcq-found";
        struct Case {
            int service;
            const char* expected;  // login (logged in, not), page without login, own position
        };
        for (const Case& c : {Case{0, "0 in out failed failed"}, Case{1, "1 in out failed found"},
                              Case{2, "2 in out failed found"},
                              Case{3, "3 qrzcq-free qrzcq-free qrzcq-failed qrzcq-found"},
                              Case{4, "4 callook-free callook-free callook-note callook-note"},
                              Case{5, "5 in out failed found"}, Case{6, "6 in out failed failed"}}) {
            const QString shown = QString::number(c.service) + ' ' + LoginStatus(t, c.service, true) + ' ' +
                                  LoginStatus(t, c.service, false) + ' ' + LoggedOutPageStatus(t, c.service) + ' ' +
                                  OwnPositionStatus(t, c.service);
            QCOMPARE(shown, QString(c.expected));
        }
    }

    // No station, no position or no answer: the typed position stays, and the window says why.
    void typedPositionStaysWithoutAStationPosition_data() {
        QTest::addColumn<int>("service");
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("status");  // %P the no-position text for the call and service
        QTest::newRow("unknown call") << 2 << "XX9XYZ" << "%P";
        QTest::newRow("unknown call right after a station (HamCall)") << 5 << "XX9XYZ" << "%P";
        QTest::newRow("unknown call on Callook") << 4 << "XX9XYZ" << "%P";
        QTest::newRow("station without a position") << 2 << "LA1ABC" << "%P";
        QTest::newRow("login required") << 2 << "DL1ABC" << "%P";
        QTest::newRow("service error") << 2 << "ZZ500" << "QRZ answered with error 500";
    }

    void typedPositionStaysWithoutAStationPosition() {
        QFETCH(int, service);
        QFETCH(QString, call);
        QFETCH(QString, status);
        QTemporaryDir pages;  // QRZ gives LA1ABC a page without a position
        for (const char* s : {"qrz", "hamcall", "callook"})
            QVERIFY(QFile::link(PX_SOURCE_DIR "/tests/fixtures/pages/" + QString(s), pages.path() + "/" + s));
        QFile routes(pages.path() + "/routes.json");
        QVERIFY(routes.open(QIODevice::WriteOnly));
        routes.write(R"({"qrz": {"LA1ABC": "noposition.html"}, "hamcall": {"DL1ABC": "found.html"}})");
        routes.close();
        CallbookServer server({"--pages", pages.path()});
        QVERIFY(server.port() > 0);
        for (const char* s : {"QRZ", "HamCall", "Callook"}) settings::SaveSetting({"Hosts", s}, server.url("/" + QString(s).toLower()));
        g.ServiceNo = static_cast<int16_t>(service);
        g.ServiceName = QStringList{"", "eHam", "QRZ", "QRZCQ", "CALLOOK", "HamCall"}[service];
        auto* form = new Form2(g);  // deletes itself on close
        if (service == 5) {  // a station first: its page leaves the fields' cursor behind
            form->txtCall->setText("DL1ABC");
            form->cmdGetLatLon->click();
            QTRY_COMPARE_WITH_TIMEOUT(form->txtLat->text(), QString("52.52"), 10000);
        }
        if (QTest::currentDataTag() == QByteArray("login required")) {
            QNetworkAccessManager nam;  // logged out of QRZ: every lookup answers with its login page
            std::unique_ptr<QNetworkReply> r(nam.get(QNetworkRequest(QUrl(server.url("/_control/login?services=")))));
            QTRY_VERIFY(r->isFinished());
        }
        form->txtLat->setText("51.25");
        form->txtLon->setText("-1.5");
        form->txtCall->setText(call);
        form->Label3->clear();
        form->cmdGetLatLon->click();
        QTRY_VERIFY_WITH_TIMEOUT(!form->Label3->text().isEmpty(), 10000);
        QVERIFY(!QApplication::overrideCursor());
        status.replace("%P", QString(g.Texts.SetupNoPosition).replace("???", call).replace("***", g.ServiceName));
        QCOMPARE(form->Label3->text(), "\n" + status);
        QCOMPARE(form->txtLat->text() + ' ' + form->txtLon->text(), QString("51.25 -1.5"));
        QCOMPARE(g.MyLat, 51.25);
        form->close();
        QCOMPARE(setting(settings::kMyLatitude) + ' ' + setting(settings::kMyLongitude), QString("51.25 -1.5"));
    }
};

int main(int argc, char** argv) {
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    qputenv("XDG_DATA_HOME", (home.path() + "/data").toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Form2Test test;
    return QTest::qExec(&test, argc, argv);
}

#include "form2_test.moc"
