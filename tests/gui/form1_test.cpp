// The main window loading against a prepared data folder and Pictaro folder, under a real X
// server where one is available.
#include "app/form1.h"
#include "app/settings.h"
#include "db/calldatabase.h"
#include "lookup/uclookup.h"
#include "ui/beep.h"
#include "ui/popupmenu.h"
#include "setup/form2.h"
#include "db/form26.h"
#include "lookup/callbookserver.h"

#include <QApplication>
#include <QClipboard>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTcpServer>
#include <QTest>
#include <QTimer>

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(bytes);
}

QByteArray appCfg(const QByteArray& call, const QByteArray& digit, int lines = 60) {
    QByteArray out;
    for (int i = 1; i <= lines; ++i) out += (i == 1 ? call : i == 59 ? digit : QByteArray("0")) + "\r\n";
    return out;
}

}  // namespace

class Form1Test : public QObject {
    Q_OBJECT

    QString root;
    QString data;     // the Norvane folder
    QString pictaro;  // Pictaro's install folder, with separator
    QStringList failures;
    std::unique_ptr<CallbookServer> server;
    QList<int> beeps;  // the frequencies of the tones, in order

    void useServer() {
        const char* services[] = {"eHam", "QRZ", "QRZCQ", "Callook", "HamCall"};
        const char* prefixes[] = {"/eham", "/qrz", "/qrzcq", "/callook", "/hamcall"};
        for (int i = 0; i < 5; ++i) settings::SaveSetting({"Hosts", services[i]}, server->url(prefixes[i]));
        settings::SaveSetting({"Hosts", "Pictures"}, server->url("/pictures"));
        settings::SaveSetting({"Hosts", "TimeoutMs"}, "2000");
    }
    void serverLogin(const char* services) {
        QNetworkAccessManager nam;
        QNetworkReply* r = nam.get(QNetworkRequest(QUrl(server->url("/_control/login?services=") + services)));
        QSignalSpy done(r, &QNetworkReply::finished);
        QVERIFY(done.wait(5000));
        delete r;
    }

    void prepare() {
        QDir(root).removeRecursively();
        QDir().mkpath(root);
        data = root + "/data/Norvane";
        pictaro = root + "/Pictaro/";
        QDir().mkpath(data + "/Maps");
        QDir().mkpath(data + "/images/qrzImages");
        QDir().mkpath(data + "/Languages");
        QFile::copy(PX_SOURCE_DIR "/data/Languages/Norvane_English.Language", data + "/Languages/Norvane_English.Language");
        QFile::copy(PX_SOURCE_DIR "/data/Languages/Norvane_Dutch.Language", data + "/Languages/Norvane_Dutch.Language");
        writeFile(data + "/Maps/World Map.jpg", "x");
        writeFile(data + "/Maps/world map.jpg", "x");
        writeFile(data + "/nicknames.txt", "PA3XYZ*Jan\r\nG4ABC*Ally\r\n");
        QFile::copy(PX_SOURCE_DIR "/data/Norvane-DB.db", data + "/Norvane-DB.db");
        QFile(data + "/Norvane-DB.db").setPermissions(QFile::ReadOwner | QFile::WriteOwner);
        writeFile(pictaro + "Pictaro.exe", "stand-in");
        writeFile(pictaro + "app.cfg", appCfg("PA3XYZ", "5"));
        QFile::remove(qEnvironmentVariable("XDG_CONFIG_HOME") + "/PX Callsigns.conf");
        settings::SaveSetting(settings::kPictaroInstall, pictaro);
        useServer();
        serverLogin("eham,qrz,hamcall");
        failures.clear();
        beeps.clear();
        sound::SetListener([this](int kind, int hz, int) {
            if (kind == 1) beeps << hz;
        });
    }

    // A main window that loaded, is shown and has finished the login check of its start; null
    // when any of that failed.
    std::unique_ptr<Form1> loadShown(ModuleValues& g) {
        bool ok = false;
        auto form = load(g, &ok);
        if (!ok) return nullptr;
        form->show();
        return settle(*form) ? std::move(form) : nullptr;
    }

    std::unique_ptr<Form1> load(ModuleValues& g, bool* ok) {
        auto form = std::make_unique<Form1>(g);
        form->showFailure = [this](const QString& text, const QString& title) { failures << title + "|" + text; };
        *ok = form->Form_Load();
        return form;
    }

private slots:
    void initTestCase() {
        root = QDir(qEnvironmentVariable("XDG_DATA_HOME") + "/..").absolutePath();
        server = std::make_unique<CallbookServer>();
        QVERIFY(server->port() > 0);
    }
    void cleanupTestCase() { server.reset(); }
    void init() { prepare(); }

    void loadsEverything() {
        settings::SaveSetting(settings::kUnit, "0");
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        QCOMPARE(failures, QStringList());
        QCOMPARE(g.DataPath, qEnvironmentVariable("XDG_DATA_HOME") + "/Norvane");
        QCOMPARE(g.MyCall, QString("PA3XYZ"));
        QCOMPARE(g.Language, QString("Dutch"));
        QCOMPARE(g.DistUnit, int16_t(0));
        QCOMPARE(form->lstMap, QStringList{"World Map.jpg"});
        QCOMPARE(form->lstNicknames, (QStringList{"PA3XYZ*Jan", "G4ABC*Ally"}));
        // No saved position: the own call's record supplies it.
        QCOMPARE(g.MyLat, 52.0907);
        QCOMPARE(g.MyLon, 5.1214);
        QCOMPARE(form->cboDB->count(), 5);
        QCOMPARE(form->cboDB->itemText(3), QString("CALLOOK"));
        QCOMPARE(form->cboDB->currentText(), QString("QRZ"));
        QCOMPARE(g.ServiceName, QString("QRZ"));
        QCOMPARE(g.ServiceNo, int16_t(2));
        QCOMPARE(settings::GetSetting(settings::kServiceIndex, "unset"), QString("1"));
        // Dutch texts, in the menus and on the window.
        QCOMPARE(form->SetupMenuCaptions[2], g.Texts.MenuHelp);
        QCOMPARE(form->MapsMenuCaptions[4], g.Texts.MenuRegionMaps);
        QVERIFY(!g.Texts.MenuHelp.isEmpty());
        QCOMPARE(form->lblCall->text(), g.Texts.Ready);
        QCOMPARE(form->lblStatus->text(), QString());
        QCOMPARE(form->cmdUpdate->text(), QString(g.Texts.UpdateButton).replace("***", " QRZ"));
        QCOMPARE(form->width(), 5250 / g.TwipsPerPixelX);
        QCOMPARE(form->height(), 2700 / g.TwipsPerPixelY);
        QVERIFY(form->isHidden());
        QVERIFY(form->windowFlags() & Qt::WindowStaysOnTopHint);
    }

    void savedServiceAndPosition() {
        settings::SaveSetting(settings::kServiceIndex, "4");
        settings::SaveSetting(settings::kMyLatitude, "0");
        settings::SaveSetting(settings::kMyLongitude, "-3.5");
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        QCOMPARE(g.ServiceName, QString("HamCall"));
        QCOMPARE(g.ServiceNo, int16_t(5));
        QCOMPARE(g.MyLat, 0.0);
        QCOMPARE(g.MyLon, -3.5);
        QCOMPARE(g.DistUnit, int16_t(1));  // miles by default
    }

    void failurePaths_data() {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("continues");
        QTest::newRow("no Pictaro.exe, none running") << "noexe" << "PX RxOk|File not found\r\napp.cfg" << false;
        QTest::newRow("no app.cfg") << "nocfg" << "PX RxOk|File not found\r\n%P%app.cfg" << false;
        QTest::newRow("short app.cfg") << "short" << "PX RxOk|Input past end of file\r\n%P%app.cfg" << false;
        QTest::newRow("no nicknames.txt") << "nonick" << "PX RxOk|File not found\r\n%D%/nicknames.txt" << false;
        QTest::newRow("no language file") << "nolang"
                                          << "PX RxOk|Taalbestand ontbreekt of corrupt.\r\n%D%/Languages/Norvane_Dutch.Language"
                                          << true;
        QTest::newRow("unknown language") << "digit3" << "PX RxOk|%D%/Languages/" << true;
    }

    void failurePaths() {
        QFETCH(QString, setup);
        QFETCH(QString, expected);
        QFETCH(bool, continues);
        if (setup == "noexe") QFile::remove(pictaro + "Pictaro.exe");
        if (setup == "nocfg") QFile::remove(pictaro + "app.cfg");
        if (setup == "short") writeFile(pictaro + "app.cfg", appCfg("PA3XYZ", "5", 58));
        if (setup == "nonick") QFile::remove(data + "/nicknames.txt");
        if (setup == "nolang") QFile::remove(data + "/Languages/Norvane_Dutch.Language");
        if (setup == "digit3") writeFile(pictaro + "app.cfg", appCfg("PA3XYZ", "3"));
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QCOMPARE(ok, continues);
        expected.replace("%P%", pictaro).replace("%D%", data);
        QCOMPARE(failures, QStringList{expected});
        if (continues) QCOMPARE(g.Texts.FieldCall, QString("Call sign"));  // the built-in English stands in
    }

    // Damaged or odd files in the data folder and Pictaro's folder: the window loads as far as
    // the file allows, says what is wrong where something is, and never loses a record.
    void badDataFiles_data() {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<bool>("continues");
        QTest::addColumn<QString>("failure");  // "" for none; %P% Pictaro's folder, %D% the data folder
        QTest::addColumn<double>("myLat");     // own position found from the own record, else 0
        QTest::addColumn<QString>("ready");    // "nl": the Dutch Ready text on lblCall; "en": the English one
        QTest::addColumn<QStringList>("nicknames");
        QTest::addColumn<QStringList>("maps");
        const QStringList nick{"PA3XYZ*Jan", "G4ABC*Ally"};
        const QStringList maps{"World Map.jpg"};
        QTest::newRow("no call file") << "nodb" << true << "" << 0.0 << "nl" << nick << maps;
        QTest::newRow("empty call file") << "emptydb" << true << "" << 0.0 << "nl" << nick << maps;
        QTest::newRow("call file with a partial last record") << "partialdb" << true << "" << 52.0907 << "nl" << nick
                                                              << maps;
        QTest::newRow("language file cut short") << "shortlang" << true << "" << 52.0907 << "nl" << nick << maps;
        QTest::newRow("language line without =")
            << "noequals" << true << "Taalbestand ontbreekt of corrupt.\r\n%D%/Languages/Norvane_Dutch.Language"
            << 52.0907 << "nl" << nick << maps;
        QTest::newRow("nicknames with odd separators")
            << "oddnick" << true << "" << 52.0907 << "nl"
            << QStringList{"PA3XYZ*Jan", "G4ABC*Ally", "W1XYZ*Bob;Rob", "JA1XYZ*Ken, Jr"} << maps;
        QTest::newRow("empty nickname file") << "emptynick" << true << "" << 52.0907 << "nl" << QStringList() << maps;
        QTest::newRow("map names shorter than four characters")
            << "shortmaps" << true << "" << 52.0907 << "nl" << nick << QStringList{"Map.jpg", "World Map.jpg"};
        QTest::newRow("empty app.cfg") << "emptycfg" << false << "Input past end of file\r\n%P%app.cfg" << 0.0 << ""
                                       << nick << maps;
    }

    void badDataFiles() {
        QFETCH(QString, setup);
        QFETCH(bool, continues);
        QFETCH(QString, failure);
        QFETCH(double, myLat);
        QFETCH(QString, ready);
        QFETCH(QStringList, nicknames);
        QFETCH(QStringList, maps);
        const QString dbPath = data + "/Norvane-DB.db";
        const QString dutch = data + "/Languages/Norvane_Dutch.Language";
        QFile dutchFile(dutch);
        QVERIFY(dutchFile.open(QIODevice::ReadOnly));
        QList<QByteArray> dutchLines = dutchFile.readAll().split('\r');
        dutchFile.close();
        if (setup == "nodb") QVERIFY(QFile::remove(dbPath));
        if (setup == "emptydb") writeFile(dbPath, "");
        if (setup == "partialdb") {
            QFile db(dbPath);
            QVERIFY(db.open(QIODevice::Append));
            db.write(QByteArray(100, 'x'));  // more than half a record: the count rounds it up
        }
        if (setup == "shortlang") writeFile(dutch, dutchLines.mid(0, 134).join('\r'));  // up to MenuSetup
        if (setup == "noequals") {
            dutchLines[136].replace('=', ':');  // MenuDatabaseEditor
            writeFile(dutch, dutchLines.join('\r'));
        }
        if (setup == "oddnick")
            writeFile(data + "/nicknames.txt",
                      "\t\"PA3XYZ*Jan\" ;junk, ,G4ABC*Ally\t\r\r\n\n  W1XYZ*Bob;Rob  ,\"JA1XYZ*Ken, Jr\"");
        if (setup == "emptynick") writeFile(data + "/nicknames.txt", "");
        if (setup == "shortmaps")
            for (const char* name : {"Map", "ap", "M", "Map.jpg", ".jp"}) writeFile(data + "/Maps/" + name, "x");
        if (setup == "emptycfg") writeFile(pictaro + "app.cfg", "");
        QByteArray dbBefore;
        if (QFile db(dbPath); db.open(QIODevice::ReadOnly)) dbBefore = db.readAll();

        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QCOMPARE(ok, continues);
        failure.replace("%P%", pictaro).replace("%D%", data);
        QCOMPARE(failures, failure.isEmpty() ? QStringList() : QStringList{"PX RxOk|" + failure});
        QCOMPARE(form->lstNicknames, nicknames);
        QCOMPARE(form->lstMap, maps);
        if (!continues) return;
        QCOMPARE(g.MyLat, myLat);
        // Texts the file reached are Dutch, the others the built-in English ones.
        QCOMPARE(g.Texts.Ready, QString("Kopieer een roepnaam en druk op F8"));
        QCOMPARE(form->lblCall->text(), g.Texts.Ready);
        const bool wholeFile = setup != "shortlang" && setup != "noequals";
        QCOMPARE(g.Texts.MenuSetup, QString("Eigen station"));
        QCOMPARE(g.Texts.FieldCall == "Call sign", !wholeFile);

        // The call file: no record lost, a search still works, nothing written by the load
        // beyond the empty file a missing one becomes.
        QFile db(dbPath);
        QVERIFY(db.open(QIODevice::ReadOnly));
        QCOMPARE(db.readAll(), dbBefore);
        db.close();
        form->show();
        QVERIFY(settle(*form));
        form->txtCall->setText("G4ABC");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        if (dbBefore.size() >= 167) {
            QCOMPARE(form->lblCall->text(), "G4ABC  (" + g.Texts.SourceDatabase + ")");
            const QString suffix = nicknames.contains("G4ABC*Ally") ? "  (Ally)" : "";
            QCOMPARE(form->lblName->text(), "Alice Example" + suffix);
        } else {
            // Not in the file: the service is asked (the stand-in does not know G4ABC).
            QTRY_VERIFY_WITH_TIMEOUT(form->lblCall->text().startsWith(g.Texts.NotFound.trimmed()) &&
                                         form->lblCall->text().endsWith("G4ABC"),
                                     10000);
        }
        QVERIFY(settle(*form));
        QVERIFY(form->cmdUpdate->isEnabled() || dbBefore.size() < 167);
        QVERIFY(db.open(QIODevice::ReadOnly));
        QCOMPARE(db.readAll(), dbBefore);
    }

    void typedCallIsLookedUpInTheCallFile() {
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        form->show();
        QTest::keyClicks(form->txtCall, "g4abc");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lblCall->text(), "G4ABC  (" + g.Texts.SourceDatabase + ")");
        QCOMPARE(form->lblName->text(), QString("Alice Example  (Ally)"));
        QCOMPARE(form->lblCtry->text(), QString("England").leftJustified(30, ' '));
        QCOMPARE(g.CurrentCall, QString("G4ABC"));
        QCOMPARE(g.OtherLat, 51.5072);
        QVERIFY(form->cmdUpdate->isEnabled());

        // The nickname list is searched by prefix: "W1XYZ" would match "W1XYZA*..." too.
        form->lstNicknames = QStringList{"W1XYZABC*Long", "W1XYZ*Not reached", "JA1XYZ*a*b"};
        form->txtCall->setText("W1XYZ");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lblName->text(), QString("John Q Example  (Long)"));
        form->txtCall->setText("JA1XYZ");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lblName->text(), QString("Taro Rei"));  // three parts: no nickname

        QCOMPARE(form->lblCall->textFormat(), Qt::PlainText);
    }

    // Waits until the busy pointer is gone (a failed download stays listed in PendingDownloads).
    static bool settle(Form1&) {
        return QTest::qWaitFor([] { return !QApplication::overrideCursor(); }, 10000);
    }

    void f8OnAKnownCallAsksNoService() {
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        form->show();
        QVERIFY(settle(*form));  // the login check of the start
        const QString kind = form->lookUp->RequestKind;
        QGuiApplication::clipboard()->setText("de g4abc rest");
        QTest::keyClick(form.get(), Qt::Key_F8);
        QCOMPARE(form->lblCall->text(), "G4ABC  (" + g.Texts.SourceDatabase + ")");
        QCOMPARE(form->lblName->text(), QString("Alice Example  (Ally)"));
        // From PA3XYZ (52.0907, 5.1214) to G4ABC (51.5072, -0.1276) in miles.
        QCOMPARE(form->lblDxAz->text(), QString::fromUtf8("228 mi 261\u00b0 "));
        QCOMPARE(form->lookUp->RequestKind, kind);
        QCOMPARE(form->lookUp->PendingDownloads, QString(QChar(0)));
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(beeps, QList<int>());
    }

    void f8OnANewCallFetchesStoresAndShowsThePicture() {
        ModuleValues g;
        auto form = loadShown(g);
        QVERIFY(form);
        QCOMPARE(form->lblStatus->text(), QString(g.Texts.LoggedIn).replace("***", "QRZ"));
        QGuiApplication::clipboard()->setText("dl1abc/p");
        QTest::keyClick(form.get(), Qt::Key_F8);
        QCOMPARE(form->lblCall->text(), QString(g.Texts.LookingUp).replace("???", "DL1ABC"));
        QCOMPARE(form->lblName->text(), QString(g.Texts.Searching).replace("***", "QRZ") + ". . .");
        QVERIFY(QApplication::overrideCursor());
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), "DL1ABC  (" + g.Texts.SourceWeb + "QRZ)", 10000);
        QCOMPARE(form->lblName->text(), QString::fromUtf8("Hans M\u00fcller"));
        QCOMPARE(form->lblAdd1->text(), QString::fromUtf8("Musterstra\u00dfe 12"));
        QCOMPARE(form->lblCtry->text(), QString("Germany"));
        QCOMPARE(form->lblDxAz->text(), QString::fromUtf8("351 mi 81\u00b0 "));
        QCOMPARE(form->lblStatus->text(), g.Texts.LookupOk);
        QTRY_COMPARE_WITH_TIMEOUT(form->lookUp->PendingDownloads, QString(QChar(0)), 10000);  // page and picture
        QVERIFY(settle(*form));
        // Kept in the call-sign file, exactly.
        CallDatabase db(g.callFilePath());
        QVERIFY(db.FindCallRecord("DL1ABC") > 0);
        const QByteArray rec(db.CurrentRecord.bytes().data(), 167);
        QCOMPARE(rec, QByteArray("DL1ABCHans M\xfcller              Musterstra\xdf" "e 12               "
                                 "10115 Berlin                  Germany                       "
                                 "52.52          13.405         A           1961"));
        // The picture: cached byte for byte and shown at the right of the frame.
        QFile fixture(PX_SOURCE_DIR "/tests/fixtures/pictures/dl1abc.jpg");
        QVERIFY(fixture.open(QIODevice::ReadOnly));
        const QByteArray picture = fixture.readAll();
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        QFile cached(data + "/images/qrzImages/DL1ABC.jpg");
        QVERIFY(cached.open(QIODevice::ReadOnly));
        QCOMPARE(cached.readAll(), picture);
        QCOMPARE(form->Image1->geometry(), QRect(350 - 52 - 20, 6, 52, 39));
        QCOMPARE(beeps, QList<int>());

        // From the file next time: the cached picture, 10 pixels from the right.
        form->txtCall->setText("DL1ABC");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lblCall->text(), "DL1ABC  (" + g.Texts.SourceDatabase + ")");
        QCOMPARE(form->Image1->geometry(), QRect(350 - 52 - 10, 6, 52, 39));

        // Another service looks the shown call up again.
        form->cboDB->setCurrentIndex(4);
        emit form->cboDB->activated(4);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), "DL1ABC  (" + g.Texts.SourceWeb + "HamCall)", 10000);
        QCOMPARE(settings::GetSetting(settings::kServiceIndex, ""), QString("4"));
        QVERIFY(settle(*form));
    }

    void stubPicturesAreFetchedAgain() {
        ModuleValues g;
        auto form = loadShown(g);
        QVERIFY(form);
        const QString cache = data + "/images/qrzImages/G4ABC.jpg";
        // 2000 bytes: the service's placeholder, fetched again and replaced by the picture.
        writeFile(cache, QByteArray(2000, 'x'));
        form->txtCall->setText("G4ABC");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lookUp->RequestKind, QString("GetPicture"));
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        QCOMPARE(QFileInfo(cache).size(), QFileInfo(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg").size());
        QCOMPARE(form->Image1->geometry(), QRect(350 - 57 - 20, 7, 57, 38));
        // 2001 bytes count as a picture: no request.
        writeFile(cache, QByteArray(2001, 'x'));
        form->lookUp->RequestKind.clear();
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lookUp->RequestKind, QString());
        QVERIFY(settle(*form));
    }

    void setupMenuClosesWhenTheMouseLeaves() {
        if (QGuiApplication::platformName() != "xcb") QSKIP("needs an X server for the pointer");
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        form->move(100, 100);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QVERIFY(settle(*form));
        QVERIFY(form->lblMaps->isHidden());  // none of its windows exists yet
        QCursor::setPos(form->lblSetup->mapToGlobal(QPoint(3, 3)));
        QTest::mouseClick(form->lblSetup, Qt::LeftButton, {}, QPoint(3, 3));
        QVERIFY(form->openMenu());
        QCOMPARE(form->openMenu()->items().size(), 3);
        QCOMPARE(form->openMenu()->items()[0].caption, g.Texts.MenuSetup);
        QCOMPARE(form->openMenu()->items()[1].caption, g.Texts.MenuDatabaseEditor);
        QCOMPARE(form->openMenu()->items()[2].caption, g.Texts.MenuHelp);
        QTest::qWait(400);
        QVERIFY(form->openMenu());  // the mouse is still over it
        QCursor::setPos(10, 700);
        QTRY_VERIFY_WITH_TIMEOUT(!form->openMenu(), 2000);
        QVERIFY(!form->tmrMenus->isActive());
    }

    void ownPositionChangeReachesTheDistanceLine() {
        ModuleValues g;
        auto form = loadShown(g);
        QVERIFY(form);
        form->txtCall->setText("G4ABC");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lblDxAz->text(), QString::fromUtf8("228 mi 261\u00b0 "));
        form->MnuSetupClick(0);
        auto* setup = form->findChild<Form2*>();
        QVERIFY(setup);
        form->MnuSetupClick(0);
        QCOMPARE(form->findChildren<Form2*>().size(), 1);  // one setup window at a time
        setup->txtLat->setText("52.52");
        setup->txtLon->setText("13.405");
        setup->optKm->click();
        setup->close();
        // From Berlin to G4ABC, now in kilometres.
        QCOMPARE(form->lblDxAz->text(), QString::fromUtf8("934 km 268\u00b0 "));
        QCOMPARE(settings::GetSetting(settings::kMyLatitude, ""), QString("52.52"));
    }

    void editorNicknamesReachTheirFile() {
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        QVERIFY(settle(*form));
        form->MnuSetupClick(1);
        auto* editor = form->findChild<Form26*>();
        QVERIFY(editor);
        editor->txtCall->setText("W1XYZ");
        editor->txtNickName->setText("Johnny");
        editor->close();
        QTRY_VERIFY(!form->findChild<Form26*>());
        QFile file(data + "/nicknames.txt");
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("PA3XYZ*Jan\r\nG4ABC*Ally\r\nW1XYZ*Johnny\r\n"));
    }

    void lookupFailures_data() {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("loggedIn");
        QTest::addColumn<QString>("expected");  // %N not-found text, %L login text
        QTest::newRow("not found") << "XX9XYZ" << "eham,qrz,hamcall" << "%N XX9XYZ";
        QTest::newRow("login required") << "DL1ABC" << "" << "%L";
        QTest::newRow("service error") << "ZZ500" << "qrz" << "%NZZ500";
        QTest::newRow("service hangs") << "ZZ1HNG" << "qrz" << "%NZZ1HNG";
    }

    void lookupFailures() {
        QFETCH(QString, call);
        QFETCH(QString, loggedIn);
        QFETCH(QString, expected);
        ModuleValues g;
        auto form = loadShown(g);
        QVERIFY(form);
        serverLogin(loggedIn.toLatin1().constData());
        QFile file(g.callFilePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytesBefore = file.readAll();
        file.close();
        form->txtCall->setText(call);
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        expected.replace("%N", g.Texts.NotFound).replace("%L", g.Texts.LoginRequired);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), expected, 10000);
        QVERIFY(settle(*form));
        QCOMPARE(beeps.value(beeps.size() - 1), 700);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), bytesBefore);  // nothing kept from a failed lookup
        QVERIFY(!form->Image1->isVisible());
    }

    // A service or picture host that cannot be reached: the lookup ends, the pointer is back
    // to normal and the window takes the next call.
    void unreachableHosts_data() {
        QTest::addColumn<QString>("host");      // the settings key pointed at a host that fails
        QTest::addColumn<QString>("expected");  // lblCall at the end; %N not-found text, %W from the service
        QTest::addColumn<bool>("stored");       // the station is kept in the call file
        QTest::newRow("unknown service host") << "QRZ" << "%NDL1ABC" << false;
        QTest::newRow("picture server down") << "Pictures" << "DL1ABC  (%WQRZ)" << true;
    }

    void unreachableHosts() {
        QFETCH(QString, host);
        QFETCH(QString, expected);
        QFETCH(bool, stored);
        if (host == "QRZ") {
            settings::SaveSetting({"Hosts", "QRZ"}, "http://no-such-host.invalid");
        } else {
            QTcpServer closed;  // a port nothing listens on
            QVERIFY(closed.listen(QHostAddress::LocalHost));
            const QString url = QString("http://127.0.0.1:%1").arg(closed.serverPort());
            closed.close();
            const QByteArray key = host.toLatin1();
            settings::SaveSetting({"Hosts", key.constData()}, url);
        }
        ModuleValues g;
        auto form = loadShown(g);
        QVERIFY(form);
        QFile file(g.callFilePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytesBefore = file.readAll();
        file.close();
        QGuiApplication::clipboard()->setText("dl1abc");
        QTest::keyClick(form.get(), Qt::Key_F8);
        expected.replace("%N", g.Texts.NotFound).replace("%W", g.Texts.SourceWeb);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), expected, 10000);
        QVERIFY(settle(*form));
        QVERIFY(!QApplication::overrideCursor());
        QVERIFY(!form->Image1->isVisible());
        CallDatabase db(g.callFilePath());
        QCOMPARE(db.FindCallRecord("DL1ABC") > 0, stored);
        if (!stored) {
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), bytesBefore);  // nothing kept from a failed lookup
            file.close();
        }
        // The window takes the next call: G4ABC from the file, the button enabled again.
        form->txtCall->setText("G4ABC");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lblCall->text(), "G4ABC  (" + g.Texts.SourceDatabase + ")");
        QVERIFY(form->cmdUpdate->isEnabled());
        QVERIFY(settle(*form));
    }

    void titleBarCloseHidesAndUnloadEnds() {
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        auto* other = new QWidget;
        other->setObjectName("Form2");
        other->show();
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QVERIFY(!form->close());  // the close is cancelled
        QVERIFY(!form->isVisible() || form->isMinimized());
        QCOMPARE(QApplication::topLevelWidgets().contains(form.get()), true);
        form->Unload();
        QVERIFY(!other->isVisible());
        delete other;
    }

    void placedAtTheVersionMarkWindow() {
        if (QGuiApplication::platformName() != "xcb") QSKIP("needs an X server");
        QWidget marked;
        marked.setWindowTitle("Pictaro Ver:07/OCT/2014 stand-in");
        marked.setGeometry(230, 140, 200, 100);
        marked.show();
        QVERIFY(QTest::qWaitForWindowExposed(&marked));
        QTest::qWait(100);
        ModuleValues g;
        bool ok = false;
        auto form = load(g, &ok);
        QVERIFY(ok);
        QCOMPARE(form->frameGeometry().topLeft(), marked.frameGeometry().topLeft());
    }
};

int main(int argc, char** argv) {
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    qputenv("XDG_DATA_HOME", (home.path() + "/case/data").toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    app.setQuitOnLastWindowClosed(false);
    Form1Test test;
    return QTest::qExec(&test, argc, argv);
}

#include "form1_test.moc"
