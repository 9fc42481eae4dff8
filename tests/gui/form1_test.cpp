// The main window against prepared data and Pictaro folders, under a real X server where one is available.
#include "app/datafolder.h"
#include "app/callflow.h"
#include "app/form1.h"
#include "pictures/stationviewloader.h"
#include "app/form13.h"
#include "app/settings.h"
#include "db/calldatabase.h"
#include "db/form26.h"
#include "lookup/callbookserver.h"
#include "lookup/uclookup.h"
#include "pictures/form21.h"
#include "setup/form2.h"
#include "ui/beep.h"
#include "ui/helpwindow.h"
#include "ui/popupmenu.h"
#include "ui/unimsgbox.h"
#include "standin.h"
#include "wmcheck.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QSystemTrayIcon>
#include <QTemporaryDir>
#include <QTcpServer>
#include <QTimer>
#include <QTest>

namespace {

const QByteArray kGone = "(removed)";
using Files = QList<QPair<QString, QByteArray>>;  // path, and bytes or kGone

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (bytes == kGone) QVERIFY(f.remove());
    else QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size());
}

// A missing file reads as a text no two paths share, unless the caller says otherwise.
QByteArray readFile(const QString& path, const QByteArray& ifMissing = {}) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : ifMissing.isNull() ? "<missing " + path.toUtf8() + ">" : ifMissing;
}

QByteArray appCfg(const QByteArray& call, const QByteArray& digit, int lines = 60) {
    QByteArray out;
    for (int i = 1; i <= lines; ++i) out += (i == 1 ? call : i == 59 ? digit : QByteArray("0")) + "\r\n";
    return out;
}

void enter(Form1& f, const QString& call) { f.txtCall->setText(call); QTest::keyClick(f.txtCall, Qt::Key_Return); }
void pressF8(Form1& f, const QString& text) { QGuiApplication::clipboard()->setText(text); QTest::keyClick(&f, Qt::Key_F8); }

QString fromFile(const ModuleValues& g, const QString& call) { return call + "  (" + g.Texts.SourceDatabase + ")"; }

const QString kPictures = PX_SOURCE_DIR "/tests/fixtures/pictures/";

// Waits until the busy pointer is gone (a failed download stays listed in PendingDownloads).
bool settle() { return QTest::qWaitFor([] { return !QApplication::overrideCursor(); }, 10000); }

}  // namespace

struct Start {
    QList<QPair<settings::Key, QString>> saved;
    QString service, index;  // index: the saved service index after the load
    int16_t serviceNo, unit;
    double lat, lon;
};

// Ready, MenuSetup and FieldCall: Dutch, Dutch from a file cut after MenuSetup, the built-in English.
const QStringList kDutch{"Kopieer een roepnaam en druk op F8", "Eigen station", "Roepnaam"};
const QStringList kDutchCut{kDutch[0], kDutch[1], "Call sign"};
const QStringList kEnglish{"Copy a call sign and press F8", "Own station", "Call sign"};

struct Damage {
    Files files{};           // written before the load; %P% Pictaro's folder, %D% the data folder
    bool continues = true;
    QString failure{};       // "" for none
    double myLat = 52.0907;  // from the own record; 0 when the call file has none
    QStringList texts = kDutch;
    QStringList nicknames{"PA3XYZ*Jan", "G4ABC*Ally"};
    QStringList maps{"World Map.jpg"};
};

struct Failed {
    QString call, loggedIn;
    QPair<QString, QString> host;  // a host setting pointed at an address that fails
    QString expected;              // lblCall at the end: %N not-found text, %L login text, %W from the service
    QString status;                // lblStatus at the end: %O the answer-received text
    bool stored = false;  // the station is kept in the call file
    int lastTone = 700;   // 0: none
};

// Text typed or copied that holds no usable call, or a call to be cut out of it.
struct Entered {
    bool f8;           // from the clipboard, else typed and Enter
    QByteArray text;   // UTF-8
    QString status;    // lblStatus: %0 the nothing-to-look-up text, %1 the not-a-call text for %2
    QString shown;
    QStringList requests;
    QString name{};    // %2
};
Q_DECLARE_METATYPE(Entered)
// The eight languages: app.cfg's digit and the file's name.
const QList<QPair<QByteArray, QString>> kLanguages{{"0", "English"}, {"8", "Spanish"}, {"2", "German"}, {"1", "French"},
                                                   {"5", "Dutch"},   {"7", "Polish"},  {"4", "Japanese"}, {"9", "Russian"}};

// A one-line text that shows whole in its label; "" when it does, else what is cut.
QString cut(const QLabel* label, const QString& text) {
    const int room = label->contentsRect().width(), needs = label->fontMetrics().horizontalAdvance(text);
    return needs <= room && label->fontMetrics().height() <= label->contentsRect().height()
               ? QString()
               : QString("%1 (%2 > %3 px)").arg(text).arg(needs).arg(room);
}

Q_DECLARE_METATYPE(Start)
Q_DECLARE_METATYPE(Damage)
Q_DECLARE_METATYPE(Failed)

class Form1Test : public QObject {
    Q_OBJECT

    const QString root = QDir(qEnvironmentVariable("XDG_DATA_HOME") + "/..").absolutePath();
    const QString data = root + "/data/Norvane";  // the Norvane folder
    const QString pictaro = root + "/Pictaro/";    // Pictaro's install folder, with separator
    QStringList failures;
    CallbookServer server;
    QList<int> beeps;  // the frequencies of the tones, in order
    ModuleValues g;
    std::unique_ptr<Form1> form;

    void serverLogin(const QByteArray& services) {
        QNetworkAccessManager nam;
        std::unique_ptr<QNetworkReply> r(nam.get(QNetworkRequest(QUrl(server.url("/_control/login?services=" + services)))));
        QVERIFY(QSignalSpy(r.get(), &QNetworkReply::finished).wait(5000));
    }

    QString at(QString path) const { return path.replace("%P%", pictaro).replace("%D%", data); }
    void writeFiles(const Files& files) { for (const auto& [path, bytes] : files) writeFile(at(path), bytes); }

    bool load() {
        form = std::make_unique<Form1>(g);
        form->showFailure = [this](const QString& text, const QString& title) { failures << title + "|" + text; };
        return form->Form_Load();
    }

    bool loadShown() { return load() && (form->show(), settle()); }  // and past the login check of its start

private slots:
    void initTestCase() {
        QVERIFY(server.port() > 0);
        sound::SetListener([this](int kind, int hz, int) { if (kind == 1) beeps << hz; });
    }
    void cleanup() { form.reset(); g = ModuleValues(); failures.clear(); beeps.clear(); }

    void init() {
        QDir(root).removeRecursively();
        QDir().mkpath(data + "/images/qrzImages");
        for (const QString name : {"Languages/Norvane_English.Language", "Languages/Norvane_Dutch.Language", "Norvane-DB.db"})
            writeFile(data + "/" + name, readFile(PX_SOURCE_DIR "/data/" + name));
        writeFiles({{"%D%/Maps/World Map.jpg", "x"}, {"%D%/Maps/world map.jpg", "x"}, {"%P%Pictaro.exe", "stand-in"},
                    {"%D%/nicknames.txt", "PA3XYZ*Jan\r\nG4ABC*Ally\r\n"}, {"%P%app.cfg", appCfg("PA3XYZ", "5")}});
        QFile::remove(qEnvironmentVariable("XDG_CONFIG_HOME") + "/PX Callsigns.conf");
        settings::SaveSetting(settings::kPictaroInstall, pictaro);
        for (const char* host : {"eHam", "QRZ", "QRZCQ", "Callook", "HamCall", "Pictures"})
            settings::SaveSetting({"Hosts", host}, server.url("/" + QString(host).toLower()));
        settings::SaveSetting({"Hosts", "TimeoutMs"}, "2000");
        serverLogin("eham,qrz,hamcall");
    }

    void loads_data() {
        QTest::addColumn<Start>("c");
        QTest::newRow("kilometres, position from the own record")
            << Start{{{settings::kUnit, "0"}}, "QRZ", "1", 2, 0, 52.0907, 5.1214};
        QTest::newRow("saved service and position, miles by default")
            << Start{{{settings::kServiceIndex, "4"}, {settings::kMyLatitude, "0"}, {settings::kMyLongitude, "-3.5"}},
                     "HamCall", "4", 5, 1, 0, -3.5};
    }

    void loads() {
        QFETCH(Start, c);
        for (const auto& [key, value] : c.saved) settings::SaveSetting(key, value);
        QVERIFY(load());
        QCOMPARE(g.MyCall, QString("PA3XYZ"));
        QCOMPARE(g.DistUnit, c.unit);
        QCOMPARE(g.MyLat, c.lat);
        QCOMPARE(g.MyLon, c.lon);
        QCOMPARE(form->cboDB->count(), 5);
        QCOMPARE(form->cboDB->itemText(3), QString("CALLOOK"));
        QCOMPARE(form->cboDB->currentText(), c.service);
        QCOMPARE(g.ServiceName, c.service);
        QCOMPARE(g.ServiceNo, c.serviceNo);
        QCOMPARE(settings::GetSetting(settings::kServiceIndex, "unset"), c.index);
        QCOMPARE(form->SetupMenuCaptions[2], QString("Help"));
        QCOMPARE(form->SetupMenuCaptions[3], QString("Afsluiten"));
        QCOMPARE(form->MapsMenuCaptions[4], QString("Regiokaarten"));
        QCOMPARE(form->lblStatus->text(), QString());
        QCOMPARE(form->cmdUpdate->text(), QString(g.Texts.UpdateButton).replace("***", " " + c.service));
        QCOMPARE(form->size(), QSize(5250 / g.TwipsPerPixelX, 2700 / g.TwipsPerPixelY));
        QVERIFY(form->isHidden());
        QVERIFY(form->windowFlags() & Qt::WindowStaysOnTopHint);
    }

    // The window loads as far as the files allow, says what is wrong where something is, and
    // never loses a record.
    void damagedOrMissingFiles_data() {
        QTest::addColumn<Damage>("c");
        const QString cfg = "%P%app.cfg", nick = "%D%/nicknames.txt", db = "%D%/Norvane-DB.db", map = "%D%/Maps/";
        const QString nl = "%D%/Languages/Norvane_Dutch.Language", noLanguage = "Taalbestand ontbreekt of corrupt.\r\n" + nl;
        const QString notFound = "File not found\r\n", pastEnd = "Input past end of file\r\n" + cfg;
        QList<QByteArray> lines = readFile(PX_SOURCE_DIR "/data/Languages/Norvane_Dutch.Language").split('\r');
        const QByteArray cut = lines.mid(0, 134).join('\r');  // up to MenuSetup
        lines[136].replace('=', ':');                           // MenuDatabaseEditor
        QTest::newRow("no Pictaro.exe, none running") << Damage{{{"%P%Pictaro.exe", kGone}}, false, notFound + "app.cfg"};
        QTest::newRow("no app.cfg") << Damage{{{cfg, kGone}}, false, notFound + cfg};
        QTest::newRow("short app.cfg") << Damage{{{cfg, appCfg("PA3XYZ", "5", 58)}}, false, pastEnd};
        QTest::newRow("empty app.cfg") << Damage{{{cfg, ""}}, false, pastEnd};
        QTest::newRow("no nicknames.txt") << Damage{{{nick, kGone}}, false, notFound + nick, 0, kDutch, {}};
        QTest::newRow("no language file") << Damage{{{nl, kGone}}, true, noLanguage, 52.0907, kEnglish};
        QTest::newRow("unknown language") << Damage{{{cfg, appCfg("PA3XYZ", "3")}}, true, "%D%/Languages/", 52.0907, kEnglish};
        QTest::newRow("language file cut short") << Damage{.files = {{nl, cut}}, .texts = kDutchCut};
        QTest::newRow("language line without =") << Damage{{{nl, lines.join('\r')}}, true, noLanguage, 52.0907, kDutchCut};
        QTest::newRow("no call file") << Damage{.files = {{db, kGone}}, .myLat = 0};
        QTest::newRow("empty call file") << Damage{.files = {{db, ""}}, .myLat = 0};
        // More than half a record: the record count rounds it up.
        QTest::newRow("call file with a partial last record")
            << Damage{.files = {{db, readFile(PX_SOURCE_DIR "/data/Norvane-DB.db") + QByteArray(100, 'x')}}};
        QTest::newRow("nicknames with odd separators")
            << Damage{.files = {{nick, "\t\"PA3XYZ*Jan\" ;junk, ,G4ABC*Ally\t\r\r\n\n  W1XYZ*Bob;Rob  ,\"JA1XYZ*Ken, Jr\""}},
                      .nicknames = {"PA3XYZ*Jan", "G4ABC*Ally", "W1XYZ*Bob;Rob", "JA1XYZ*Ken, Jr"}};
        QTest::newRow("empty nickname file") << Damage{.files = {{nick, ""}}, .nicknames = {}};
        Files shortNames;
        for (const char* name : {"Map", "ap", "M", "Map.jpg", ".jp"}) shortNames.append({map + name, "x"});
        QTest::newRow("map names under four characters") << Damage{.files = shortNames, .maps = {"Map.jpg", "World Map.jpg"}};
    }

    void damagedOrMissingFiles() {
        QFETCH(Damage, c);
        writeFiles(c.files);
        const QByteArray dbBefore = readFile(data + "/Norvane-DB.db", "");

        QCOMPARE(load(), c.continues);
        QCOMPARE(failures, c.failure.isEmpty() ? QStringList() : QStringList{"PX RxOk|" + at(c.failure)});
        QCOMPARE(form->lstNicknames, c.nicknames);
        QCOMPARE(form->lstMap, c.maps);
        if (!c.continues) return;
        QCOMPARE(g.MyLat, c.myLat);
        QCOMPARE((QStringList{g.Texts.Ready, g.Texts.MenuSetup, g.Texts.FieldCall}), c.texts);
        QCOMPARE(form->lblCall->text(), g.Texts.Ready);

        // A search still works, and nothing is written beyond the empty file a missing one becomes.
        form->show();
        QVERIFY(settle());
        enter(*form, "G4ABC");
        const bool inFile = dbBefore.size() >= 167;
        if (inFile) {
            QCOMPARE(form->lblCall->text(), fromFile(g, "G4ABC"));
            QCOMPARE(form->lblName->text(), "Alice Example" + QString(c.nicknames.contains("G4ABC*Ally") ? "  (Ally)" : ""));
        } else {  // the service is asked, and the stand-in does not know G4ABC
            QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), g.Texts.NotFound + " G4ABC", 10000);
        }
        QVERIFY(settle());
        QCOMPARE(form->cmdUpdate->isEnabled(), inFile);  // nothing shown: nothing to update
        QCOMPARE(readFile(g.callFilePath()), dbBefore);
    }

    // Calls from the file and from the service: what is shown, kept and asked for.
    void callsFromTheFileAndTheService() {
        QVERIFY(loadShown());
        QCOMPARE(form->lblStatus->text(), QString(g.Texts.LoggedIn).replace("***", "QRZ"));
        // F8 on a call in the file asks no service, not even for a picture none is cached of.
        const QString kind = form->lookUp->RequestKind;
        pressF8(*form, "de g4abc rest");
        QCOMPARE(form->lblCall->text(), fromFile(g, "G4ABC"));
        QCOMPARE(form->lblCall->textFormat(), Qt::PlainText);
        QCOMPARE(form->lblCtry->text(), QString("England").leftJustified(30, ' '));
        QCOMPARE(form->lblDxAz->text(), QString::fromUtf8("228 mi 261\u00b0 "));  // from PA3XYZ, in miles
        QCOMPARE(g.CurrentCall, QString("G4ABC"));
        QCOMPARE(g.OtherLat, 51.5072);
        QVERIFY(form->cmdUpdate->isEnabled());
        QCOMPARE(form->lookUp->RequestKind, kind);
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(beeps, QList<int>());

        // A new call: fetched, kept in the file and shown with its picture.
        pressF8(*form, "dl1abc/p");
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
        QVERIFY(settle());
        CallDatabase db(g.callFilePath());
        QVERIFY(db.FindCallRecord("DL1ABC") > 0);
        QCOMPARE(QByteArray(db.CurrentRecord.bytes().data(), 167),
                 QByteArray("DL1ABCHans M\xfcller              Musterstra\xdf" "e 12               "
                            "10115 Berlin                  Germany                       "
                            "52.52          13.405         A           1961"));
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        QCOMPARE(readFile(data + "/images/qrzImages/DL1ABC.jpg"), readFile(kPictures + "dl1abc.jpg"));
        QCOMPARE(form->Image1->geometry(), QRect(350 - 52 - 20, 6, 52, 39));
        QCOMPARE(beeps, QList<int>());

        // From the file next time: the cached picture, 10 pixels from the right.
        enter(*form, "DL1ABC");
        QCOMPARE(form->lblCall->text(), fromFile(g, "DL1ABC"));
        QCOMPARE(form->Image1->geometry(), QRect(350 - 52 - 10, 6, 52, 39));

        form->cboDB->setCurrentIndex(4);
        emit form->cboDB->activated(4);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), "DL1ABC  (" + g.Texts.SourceWeb + "HamCall)", 10000);
        QCOMPARE(settings::GetSetting(settings::kServiceIndex, ""), QString("4"));
        QVERIFY(settle());
    }

    // A cached picture of fewer than 2001 bytes is the service's placeholder: fetched again.
    // The maps items' requests for the station view: the web maps by address and by position,
    // the shown station's page on the chosen service, the service's login page.
    void mapsItemsHandTheStationViewItsRequest() {
        QVERIFY(loadShown());
        // The browser engine is not loaded until the station view first opens.
        QVERIFY(!StationViewLoaded());
        QFile maps("/proc/self/maps");
        if (maps.open(QIODevice::ReadOnly)) QVERIFY(!maps.readAll().contains("WebEngine"));
        pressF8(*form, "G4ABC");
        QCOMPARE(g.CurrentCall, QString("G4ABC"));
        form->lblAdd1->setText(" 1 Long Lane ");
        form->lblAdd2->setText("London");
        form->lblCtry->setText("England");
        g.OtherLat = 51.5072;
        g.OtherLon = -0.1276;
        const QString qrz = server.url("/qrz");
        struct Case {
            int item;
            QString request;
        };
        const Case cases[] = {
            {1, "https://www.google.com/maps/place/1+Long+Lane,London,England/@51.5072,-0.1276,19z/data=!3m1!1e3*G4ABC"},
            {2, "https://www.google.com/maps/place/51.5072,-0.1276/@51.5072,-0.1276,19z/data=!3m1!1e3*G4ABC"},
            {3, qrz + "/db/G4ABC*G4ABC"},
            {Form1::kMenuLogIn, qrz + "/login*QRZ"},
            {0, ""},
            {4, ""},
        };
        for (const Case& c : cases) QCOMPARE(form->mapsRequest(c.item), c.request);
        for (const auto& [lat, lon] : {std::pair{89.0, 89.0}, std::pair{0.0, 0.0}}) {
            g.OtherLat = lat;
            g.OtherLon = lon;
            QCOMPARE(form->mapsRequest(1), QString());
            QCOMPARE(form->mapsRequest(2), QString());
        }
        // The login item names the chosen service.
        QCOMPARE(QString(g.Texts.MenuLogIn).replace("***", g.ServiceName), QString("Inloggen bij QRZ"));  // Dutch here
        // The web map host from the settings (the demo's stand-in), its closing slashes dropped.
        g.OtherLat = 51.5072;
        g.OtherLon = -0.1276;
        settings::SaveSetting({"Hosts", "WebMaps"}, server.url("/webmaps//"));
        QCOMPARE(form->mapsRequest(2), server.url("/webmaps/maps/place/51.5072,-0.1276/@51.5072,-0.1276,19z/data=!3m1!1e3*G4ABC"));
        settings::SaveSetting({"Hosts", "WebMaps"}, "https://www.google.com");
    }

    void placeholderPicturesAreFetchedAgain() {
        QVERIFY(loadShown());
        const QString cache = data + "/images/qrzImages/G4ABC.jpg";
        // 2000 bytes: the service's placeholder, fetched again and replaced by the picture.
        writeFile(cache, QByteArray(2000, 'x'));
        enter(*form, "G4ABC");
        QCOMPARE(form->lookUp->RequestKind, QString("GetPicture"));
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        QCOMPARE(readFile(cache), readFile(kPictures + "g4abc.jpg"));
        QCOMPARE(form->Image1->geometry(), QRect(350 - 57 - 20, 7, 57, 38));
        // 2001 bytes count as a picture: no request.
        writeFile(cache, QByteArray(2001, 'x'));
        form->lookUp->RequestKind.clear();
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lookUp->RequestKind, QString());
    }

    // The setup window's position and the editor's nicknames reach the main window.
    void theOtherWindowsReachTheMainWindow() {
        QVERIFY(loadShown());
        enter(*form, "G4ABC");
        // A new own position reaches the distance line.
        form->MnuSetupClick(0);
        form->MnuSetupClick(0);
        QCOMPARE(form->findChildren<Form2*>().size(), 1);  // one setup window at a time
        auto* setup = form->findChild<Form2*>();
        setup->txtLat->setText("52.52");
        setup->txtLon->setText("13.405");
        setup->optKm->click();
        setup->close();
        QCOMPARE(form->lblDxAz->text(), QString::fromUtf8("934 km 268\u00b0 "));  // from Berlin, in kilometres
        QCOMPARE(settings::GetSetting(settings::kMyLatitude, ""), QString("52.52"));

        // A nickname from the editor goes back to its file.
        form->MnuSetupClick(1);
        auto* editor = form->findChild<Form26*>();
        QVERIFY(editor);
        editor->txtCall->setText("W1XYZ");
        editor->txtNickName->setText("Johnny");
        editor->close();
        QTRY_VERIFY(!form->findChild<Form26*>());
        QCOMPARE(readFile(data + "/nicknames.txt"), QByteArray("PA3XYZ*Jan\r\nG4ABC*Ally\r\nW1XYZ*Johnny\r\n"));

        // Typed calls. The nickname list is searched by prefix: "W1XYZ" matches "W1XYZABC*..." too.
        form->lstNicknames = QStringList{"W1XYZABC*Long", "W1XYZ*Not reached", "JA1XYZ*a*b"};
        enter(*form, "w1xyz");
        QCOMPARE(form->lblName->text(), QString("John Q Example  (Long)"));
        enter(*form, "JA1XYZ");
        QCOMPARE(form->lblName->text(), QString("Taro Rei"));  // three parts: no nickname
    }

    void closeHidesAndQuitEnds() {
        QVERIFY(loadShown());
        // The title bar's close only hides; the setup menu's last item, Quit, unloads the window
        // and closes the others too.
        QWidget other;
        other.setObjectName("Form2");
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QVERIFY(!form->close());
        // Into the tray where one is shown, else onto the task bar.
        if (form->trayIcon()) QVERIFY(form->isHidden());
        else QVERIFY(form->isVisible() && form->isMinimized());
        QVERIFY(QApplication::topLevelWidgets().contains(form.get()));
        form->MnuSetupClick(3);
        QVERIFY(!other.isVisible());
        QVERIFY(form->isHidden());
        QVERIFY(!form->tmrTray->isActive());
    }

    // Placed at the window carrying the version mark; the setup menu closes once the pointer leaves.
    void versionMarkAndSetupMenu() {
        if (QGuiApplication::platformName() != "xcb") QSKIP("needs an X server for the windows and the pointer");
        QWidget marked;
        marked.setWindowTitle("Pictaro Ver:07/OCT/2014 stand-in");
        marked.setGeometry(230, 140, 200, 100);
        marked.show();
        QVERIFY(QTest::qWaitForWindowExposed(&marked));
        QTest::qWait(100);
        QVERIFY(load());
        QCOMPARE(form->frameGeometry().topLeft(), marked.frameGeometry().topLeft());
        // Where the version mark puts it is not remembered as the user's place.
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QTRY_VERIFY(!form->tmrPosition->isActive());
        QCOMPARE(settings::GetSetting(settings::kForm1Left, "unset"), QString("unset"));
        marked.hide();
        form->move(100, 100);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QVERIFY(settle());
        QVERIFY(!form->lblMaps->isHidden());
        QCursor::setPos(form->lblMaps->mapToGlobal(QPoint(3, 3)));
        QTest::mouseClick(form->lblMaps, Qt::LeftButton, {}, QPoint(3, 3));
        QVERIFY(form->openMenu());
        QStringList mapItems;
        for (const MenuItem& item : form->openMenu()->items()) mapItems << item.caption;
        QCOMPARE(mapItems, (QStringList{g.Texts.MenuMapOfStation, g.Texts.MenuWebMapAddress, g.Texts.MenuWebMapPosition,
                                        g.Texts.MenuStationView, g.Texts.MenuRegionMaps,
                                        QString(g.Texts.MenuLogIn).replace("***", g.ServiceName)}));
        form->openMenu()->close();
        QTRY_VERIFY(!form->openMenu());
        QCursor::setPos(form->lblSetup->mapToGlobal(QPoint(3, 3)));
        QTest::mouseClick(form->lblSetup, Qt::LeftButton, {}, QPoint(3, 3));
        QVERIFY(form->openMenu());
        QStringList captions;
        for (const MenuItem& item : form->openMenu()->items()) captions << item.caption;
        QCOMPARE(captions, (QStringList{g.Texts.MenuSetup, g.Texts.MenuDatabaseEditor, g.Texts.MenuHelp, g.Texts.MenuQuit}));
        QCOMPARE(captions.last(), QString("Afsluiten"));
        QTest::qWait(400);
        QVERIFY(form->openMenu());  // the mouse is still over it
        QCursor::setPos(10, 700);
        QTRY_VERIFY_WITH_TIMEOUT(!form->openMenu(), 2000);
        QVERIFY(!form->tmrMenus->isActive());
    }

    // A first run: the data folder seeded from the one the build makes, then a station from the
    // service, whose picture lands in the (empty) cache and on screen.
    void firstRunEndsWithTheStationPicture() {
        QVERIFY(QDir(data).removeRecursively());
        const Status seeded = SeedDataFolder(PX_DEFAULT_DATA, data);
        QVERIFY2(seeded, qPrintable(seeded.message()));
        QVERIFY(QDir(data + "/images/qrzImages").isEmpty());
        QVERIFY(loadShown());
        pressF8(*form, "DL1ABC");
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        QCOMPARE(readFile(data + "/images/qrzImages/DL1ABC.jpg"), readFile(kPictures + "dl1abc.jpg"));
        QCOMPARE(form->Image1->pixmap().toImage(), QImage(kPictures + "dl1abc.jpg").convertToFormat(form->Image1->pixmap().toImage().format()));
        QVERIFY(CallDatabase(g.callFilePath()).FindCallRecord("DL1ABC") > 0);
    }

    // The right button over the station picture opens the picture menu at the cursor; its paste
    // item hands the station's picture to Pictaro (the stand-in, minimised where a window
    // manager runs) and its bitmap item writes it on the desktop.
    void pictureMenuHandsThePictureOn() {
        QVERIFY(loadShown());
        pressF8(*form, "DL1ABC");
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        const QPoint click = form->Image1->rect().center();
        QCursor::setPos(form->Image1->mapToGlobal(click) + QPoint(8, 8));  // then over the menu, which stays open
        QTest::mouseClick(form->Image1, Qt::RightButton, {}, click);
        QVERIFY(form->openMenu());
        QStringList captions;
        for (const MenuItem& item : form->openMenu()->items()) captions << item.caption;
        QCOMPARE(captions, (QStringList{"Afbeelding kopiëren", "Opslaan als bitmap op het bureaublad", "Plakken in Pictaro TX",
                                        "Opslaan als JPEG...", g.Texts.PrintTitle}));
        QCOMPARE(form->openMenu()->pos(), form->Image1->mapToGlobal(click));
        if (!qEnvironmentVariable("PX_SCREENSHOTS").isEmpty()) {
            const QRect shot = form->frameGeometry().united(form->openMenu()->geometry()).adjusted(-10, -10, 10, 10);
            QTest::qWait(300);
            form->screen()->grabWindow(0, shot.x(), shot.y(), shot.width(), shot.height())
                .save(qEnvironmentVariable("PX_SCREENSHOTS") + "/picture_menu.png");
        }

        QTemporaryDir dir;
        Standin pictaro(dir.path(), QStringLiteral("Pictaro"), windowManagerRuns());
        QVERIFY(pictaro.ready());
        form->MnuPopupImageClick(2);
        QVERIFY(!form->openMenu());
        QTRY_COMPARE(pictaro.log(), QStringLiteral("F7 200x150\n"));
        const QImage station = QImage(kPictures + "dl1abc.jpg").convertToFormat(QImage::Format_RGB32);
        QCOMPARE(pictaro.received().convertToFormat(QImage::Format_RGB32), station);
        QCOMPARE(form->lblStatus->text(), QString());

        const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
        QVERIFY(QDir().mkpath(desktop));
        QFile::remove(desktop + "/PX Callsigns_1.bmp");
        form->MnuPopupImageClick(1);
        QCOMPARE(QImage(desktop + "/PX Callsigns_1.bmp").convertToFormat(QImage::Format_RGB32), station);
        QCOMPARE(form->lblStatus->text(), QStringLiteral("Afbeelding op het bureaublad opgeslagen als PX Callsigns_1.bmp"));  // Dutch: app.cfg says 5
        QFile::remove(desktop + "/PX Callsigns_1.bmp");

        // While the editor is open, the menu opens over its picture too and takes that picture.
        form->MnuSetupClick(1);
        auto* editor = form->findChild<Form26*>();
        QVERIFY(editor);
        const QImage other = QImage(kPictures + "g4abc.jpg").convertToFormat(QImage::Format_RGB32);
        editor->Image1->setPixmap(QPixmap::fromImage(other));
        editor->Image1->setGeometry(10, 10, 60, 40);
        editor->Image1->show();
        QTest::mouseClick(editor->Image1, Qt::RightButton, {}, QPoint(5, 5));
        QVERIFY(form->openMenu());
        form->MnuPopupImageClick(0);
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), other);
        editor->close();
        QTRY_VERIFY(!form->findChild<Form26*>());
        form->MnuPopupImageClick(0);
        QCOMPARE(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), station);

        form->MnuPopupImageClick(4);  // the print window, with the station's picture
        auto* print = form->findChild<Form21*>();
        QVERIFY(print);
        QTRY_VERIFY(print->isVisible());
        print->close();
    }

    // A page that says the call is unknown keeps nothing and shows nothing of itself, even right
    // after a page that held a station (whose fields left their cursor behind), and even when the
    // service is changed with a station on show: that station's record stays as it was.
    void unknownCallsKeepNothing_data() {
        QTest::addColumn<int>("service");
        QTest::addColumn<QString>("found");
        QTest::addColumn<int>("switchTo");  // a service that does not know `found`
        QTest::newRow("eHam") << 0 << "LA1ABC" << 4;
        QTest::newRow("QRZ") << 1 << "DL1ABC" << 0;
        QTest::newRow("QRZCQ") << 2 << "F5ABC" << 0;
        QTest::newRow("Callook") << 3 << "KP4ABC" << 0;
        QTest::newRow("HamCall") << 4 << "EA4ABC" << 0;
    }

    void unknownCallsKeepNothing() {
        QFETCH(int, service);
        QFETCH(QString, found);
        QFETCH(int, switchTo);
        settings::SaveSetting(settings::kServiceIndex, QString::number(service));
        QVERIFY(loadShown());
        const QString web = found + "  (" + g.Texts.SourceWeb + form->cboDB->currentText() + ")";
        enter(*form, found);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), web, 10000);
        QVERIFY(settle());
        const QByteArray kept = readFile(g.callFilePath());
        QVERIFY(CallDatabase(g.callFilePath()).FindCallRecord(found) > 0);

        enter(*form, "XX9XYZ");
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), g.Texts.NotFound + " XX9XYZ", 10000);
        QVERIFY(settle());
        QCOMPARE(readFile(g.callFilePath()), kept);
        QCOMPARE(form->lblName->text() + form->lblAdd1->text() + form->lblAdd2->text() + form->lblCtry->text() +
                     form->lblDxAz->text(), QString());

        enter(*form, found);  // from the file now
        QCOMPARE(form->lblCall->text(), fromFile(g, found));
        const QString address = form->lblAdd1->text();
        form->cboDB->setCurrentIndex(switchTo);
        emit form->cboDB->activated(switchTo);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), g.Texts.NotFound + " " + found, 10000);
        QVERIFY(settle());
        QCOMPARE(readFile(g.callFilePath()), kept);
        QCOMPARE(form->lblAdd1->text(), address);  // the labels it does not overwrite
        QCOMPARE(g.CurrentCall, found);
        QVERIFY(form->cmdUpdate->isEnabled());
    }

    // A page that shows no login on QRZCQ or Callook: they show their stations without one, so
    // each says so in its own words, and no failure tone sounds.
    void pagesWithoutALogin_data() {
        QTest::addColumn<int>("service");
        QTest::addColumn<QString>("call");
        QTest::addColumn<bool>("callook");  // Callook's own status, else QRZCQ's failure text
        QTest::newRow("QRZCQ") << 2 << "F5ABC" << false;
        QTest::newRow("Callook") << 3 << "KP4ABC" << true;
    }

    void pagesWithoutALogin() {
        QFETCH(int, service);
        QFETCH(QString, call);
        QFETCH(bool, callook);
        settings::SaveSetting(settings::kServiceIndex, QString::number(service));
        QVERIFY(loadShown());
        beeps.clear();
        const QString status = callook ? g.Texts.CallookStatus : g.Texts.LookupFailedQrzcq;
        enter(*form, call);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblStatus->text(), status, 10000);
        QVERIFY(settle());
        QCOMPARE(form->lblStatus->text(), status);
        QCOMPARE(form->lblCall->text(), call + "  (" + g.Texts.SourceWeb + form->cboDB->currentText() + ")");
        QCOMPARE(beeps, QList<int>());
    }

    // Typed calls are cleaned ("EA8/DL1ABC/P" is DL1ABC); F8 keeps its clipboard rule. A text that
    // holds no call asks no service, and the status line says so.
    void textWithoutACall_data() {
        QTest::addColumn<Entered>("c");
        const QString fromFile = "G4ABC  (%D)";
        const QStringList noRequest;
        QTest::newRow("typed word") << Entered{false, "HELLO", "%1", fromFile, noRequest, "HELLO"};
        QTest::newRow("typed nothing") << Entered{false, "", "%0", fromFile, noRequest};
        QTest::newRow("typed blanks") << Entered{false, "   ", "%0", fromFile, noRequest};
        QTest::newRow("typed call too long") << Entered{false, "DL1ABCDE", "%1", fromFile, noRequest, "DL1ABCDE"};
        QTest::newRow("typed with prefix and suffix")
            << Entered{false, "ea8/dl1abc/p", "", "DL1ABC  (%WQRZ)", {"/qrz/db/DL1ABC", "/pictures/c/dl1abc/dl1abc.jpg"}};
        QTest::newRow("F8 with prefix: cut at the slash") << Entered{true, "EA8/DL1ABC", "", "%N EA8", {"/qrz/db/EA8"}};
        QTest::newRow("F8 cq de") << Entered{true, "cq de dl1abc", "%1", "", noRequest, "CQ"};
        QTest::newRow("F8 empty clipboard") << Entered{true, "", "%0", "", noRequest};
        QTest::newRow("F8 binary junk") << Entered{true, "L\x01\x02\xff\xfe", "%1", "", noRequest, "L"};
        QTest::newRow("F8 5000 letters")
            << Entered{true, QByteArray(5000, 'A'), "%1", "", noRequest, QString(20, 'A') + "..."};
    }

    void textWithoutACall() {
        QFETCH(Entered, c);
        QVERIFY(loadShown());
        enter(*form, "G4ABC");
        const QByteArray before = readFile(g.callFilePath());
        server.takeRequests();
        if (c.f8) pressF8(*form, QString::fromUtf8(c.text));
        else enter(*form, QString::fromUtf8(c.text));
        QVERIFY(settle());
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), QString(c.shown).replace("%D", g.Texts.SourceDatabase)
                                      .replace("%W", g.Texts.SourceWeb).replace("%N", g.Texts.NotFound), 10000);
        QStringList requests;
        QTRY_COMPARE_WITH_TIMEOUT(requests += server.takeRequests(), c.requests, 5000);
        QTest::qWait(200);
        QCOMPARE(requests += server.takeRequests(), c.requests);
        QCOMPARE(form->lblStatus->text(), c.status.isEmpty() ? form->lblStatus->text()
                 : QString(c.status).replace("%0", g.Texts.StatusNoCall)
                       .replace("%1", QString(g.Texts.StatusNotACall).replace("???", c.name)));
        if (c.requests.isEmpty()) QCOMPARE(readFile(g.callFilePath()), before);
        QVERIFY(form->cmdUpdate->isEnabled());  // G4ABC is still the station to update
    }

    // Update right after a page arrived, while the station's picture is still on its way: the
    // picture's answer comes under the same name and must not be taken for the page.
    void updateWhileThePictureIsOnItsWay() {
        // The page takes longer than the picture, so the first picture lands while Update's
        // page is awaited.
        settings::SaveSetting({"Hosts", "QRZ"}, server.url("/delay/1000/qrz"));
        settings::SaveSetting({"Hosts", "Pictures"}, server.url("/delay/300/pictures"));
        QVERIFY(loadShown());
        bool updated = false;
        connect(form->lookUp, &ucLookUp::GotPage, form.get(), [&] {
            if (!updated) QTimer::singleShot(0, form.get(), [&] { updated = true; form->cmdUpdate_Click(); });
        }, Qt::QueuedConnection);
        enter(*form, "DL1ABC");
        QTRY_VERIFY_WITH_TIMEOUT(updated, 10000);
        QVERIFY(settle());
        QTest::qWait(1000);
        QCOMPARE(form->lblName->text(), QString::fromUtf8("Hans M\u00fcller"));
        QCOMPARE(form->lblCall->text(), "DL1ABC  (" + g.Texts.SourceWeb + "QRZ)");
        QCOMPARE(beeps, QList<int>());
    }

    // An answer that comes after the user moved on changes nothing on screen.
    void lateAnswerChangesNothing() {
        QVERIFY(loadShown());
        serverLogin("qrz");
        enter(*form, "ZZ1HNG");  // never answers; would fail after the 2 s timeout
        QVERIFY(QApplication::overrideCursor());
        enter(*form, "G4ABC");
        QCOMPARE(form->lblCall->text(), fromFile(g, "G4ABC"));
        QVERIFY(!QApplication::overrideCursor());
        QTest::qWait(3000);
        QCOMPARE(form->lblCall->text(), fromFile(g, "G4ABC"));
        QCOMPARE(form->lblStatus->text(), QString());
        QCOMPARE(beeps, QList<int>());
        QCOMPARE(g.CurrentCall, QString("G4ABC"));
    }

    // Where the user put the window is saved once it rests, and the next start puts it back
    // there, back on the screen when that place is off it now. Without a frame here, the frame
    // is the window (1280 x 1024 screen).
    void placeIsRemembered_data() {
        QTest::addColumn<QStringList>("saved");  // Left, Top; "-" not saved
        QTest::addColumn<QPoint>("opens");       // (-1, -1): where the window manager likes
        QTest::newRow("nothing saved") << QStringList{"-", "-"} << QPoint(-1, -1);
        QTest::newRow("on the screen") << QStringList{"300", "200"} << QPoint(300, 200);
        QTest::newRow("above and left of it") << QStringList{"-300", "-200"} << QPoint(0, 0);
        QTest::newRow("a monitor that has gone") << QStringList{"3000", "1500"} << QPoint(1280 - 350, 1024 - 180);
        QTest::newRow("half off the right edge") << QStringList{"1100", "10"} << QPoint(1280 - 350, 10);
        QTest::newRow("not numbers") << QStringList{"left", "10"} << QPoint(-1, -1);
        QTest::newRow("top missing") << QStringList{"300", "-"} << QPoint(-1, -1);
    }

    void placeIsRemembered() {
        QFETCH(QStringList, saved);
        QFETCH(QPoint, opens);
        if (QGuiApplication::primaryScreen()->availableGeometry() != QRect(0, 0, 1280, 1024)) QSKIP("needs the 1280 x 1024 screen");
        if (saved[0] != "-") settings::SaveSetting(settings::kForm1Left, saved[0]);
        if (saved[1] != "-") settings::SaveSetting(settings::kForm1Top, saved[1]);
        QVERIFY(load());
        QCOMPARE(form->testAttribute(Qt::WA_Moved), opens != QPoint(-1, -1));
        if (opens != QPoint(-1, -1)) QCOMPARE(form->pos(), opens);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        // Moved: written once it rests, and read by the next start.
        form->move(410, 320);
        QTRY_COMPARE(settings::GetSetting(settings::kForm1Left, "") + "," + settings::GetSetting(settings::kForm1Top, ""),
                     QString("410,320"));
        form.reset();
        QVERIFY(load());
        QCOMPARE(form->pos(), QPoint(410, 320));
    }

    // Closing from the title bar hides the window in the tray while a tray icon is shown, and
    // minimises it where none is; a tray that goes away gives back a window hidden in it.
    void trayComesAndGoes() {
        QVERIFY(loadShown());
        bool tray = false;
        form->trayAvailable = [&tray] { return tray; };
        struct Step { bool tray; const char* then; QString shown; };  // shown: "hidden", "minimised" or "normal"
        const auto state = [this] {
            return QString(form->trayIcon() ? "icon, " : "no icon, ") +
                   (form->isHidden() ? "hidden" : form->isMinimized() ? "minimised" : "normal");
        };
        for (const Step& step : {Step{false, "close", "no icon, minimised"}, Step{true, "tray", "icon, minimised"},
                                 Step{true, "show", "icon, normal"}, Step{true, "close", "icon, hidden"},
                                 Step{false, "tray", "no icon, minimised"}, Step{true, "tray", "icon, minimised"},
                                 Step{true, "show", "icon, normal"},
                                 // gone before the timer noticed: the close asks again
                                 Step{false, "close", "no icon, minimised"}}) {
            tray = step.tray;
            if (QByteArray(step.then) == "close") QVERIFY(!form->close());
            if (QByteArray(step.then) == "tray") form->UpdateTray();
            if (QByteArray(step.then) == "show") form->showNormal();
            QCOMPARE(state(), step.shown);
        }
        QVERIFY(form->tmrTray->isActive());
        QVERIFY(QApplication::topLevelWidgets().contains(form.get()));
    }

    // Help: the desktop's viewer when it has one; else the text in a window of the program.
    void helpWithoutADesktopViewer_data() {
        QTest::addColumn<QByteArray>("file");  // kGone: no file; "/": a folder in its place
        QTest::addColumn<bool>("viewer");
        QTest::addColumn<QString>("shown");    // the help window's text, "" for no window; %F the file
        QTest::newRow("a viewer") << QByteArray("Help\r\n") << true << "";
        QTest::newRow("no viewer") << QByteArray("PX Callsigns\r\nF8 takes the call.\r\n") << false
                                   << "PX Callsigns\nF8 takes the call.\n";
        QTest::newRow("Windows-1252") << QByteArray("Stra\xdf" "e \x80 5\r\n") << false << QString::fromUtf8("Stra\u00dfe \u20ac 5\n");
        QTest::newRow("UTF-8") << QByteArray("Stra\xc3\x9f" "e\r\n") << false << QString::fromUtf8("Stra\u00dfe\n");
        QTest::newRow("missing, viewer or not") << kGone << true << "The help file was not found:\n%F";
        QTest::newRow("a folder in its place") << QByteArray("/") << true << "The help file could not be read:\n%F\nit is a folder";
        QTest::newRow("too large") << QByteArray(kHelpMaxBytes + 1, 'x') << false << "The help file is too large to show:\n%F";
    }

    void helpWithoutADesktopViewer() {
        QFETCH(QByteArray, file);
        QFETCH(bool, viewer);
        QFETCH(QString, shown);
        QVERIFY(loadShown());
        form->helpFile = root + "/Help.txt";
        if (file == "/") QVERIFY(QDir().mkpath(form->helpFile));
        else if (file != kGone) writeFile(form->helpFile, file);
        QList<QUrl> asked;
        form->openWithDesktop = [&](const QUrl& url) { asked << url; return viewer; };
        form->MnuSetupClick(2);
        form->MnuSetupClick(2);  // once more: still one window
        const bool isFile = file != kGone && file != "/";
        QCOMPARE(asked, isFile ? QList<QUrl>(2, QUrl::fromLocalFile(form->helpFile)) : QList<QUrl>());
        const auto windows = form->findChildren<HelpWindow*>();
        QCOMPARE(windows.size(), shown.isEmpty() ? 0 : 1);
        if (shown.isEmpty()) return;
        HelpWindow* help = windows.first();
        QVERIFY(help->isVisible() && help->isWindow() && help->isReadOnly());
        QCOMPARE(help->windowTitle(), g.Texts.MenuHelp);
        QCOMPARE(help->toPlainText(), QString(shown).replace("%F", form->helpFile));
        help->close();
        QTRY_VERIFY(form->findChildren<HelpWindow*>().isEmpty());
    }

    // Every text the strip shows in a language fits where it is shown, and the first three
    // lines leave the picture's corner free while a picture is shown.
    void textsFitInEveryLanguage_data() {
        QTest::addColumn<QByteArray>("digit");
        QTest::addColumn<QString>("language");
        for (const auto& [digit, language] : kLanguages) QTest::newRow(qPrintable(language)) << digit << language;
    }

    void textsFitInEveryLanguage() {
        QFETCH(QByteArray, digit);
        QFETCH(QString, language);
        const QString name = "Languages/Norvane_" + language + ".Language";
        writeFile(data + "/" + name, readFile(PX_SOURCE_DIR "/data/" + name));
        writeFile(pictaro + "app.cfg", appCfg("PA3XYZ", digit));
        QVERIFY(loadShown());
        QCOMPARE(failures, QStringList());
        QVERIFY(form->width() >= 350 && form->height() >= 180);
        const LanguageTexts& t = g.Texts;
        QStringList clipped;
        // The update button, whichever service is chosen: the window does not change its size.
        const QSize size = form->size();
        for (int service = 0; service < 5; ++service) {
            form->cboDB->setCurrentIndex(service);
            emit form->cboDB->activated(service);
            QVERIFY(settle());
            QCOMPARE(form->cmdUpdate->text(), QString(t.UpdateButton).replace("***", " " + form->cboDB->currentText()));
            if (form->cmdUpdate->sizeHint().width() > form->cmdUpdate->width()) clipped << form->cmdUpdate->text();
        }
        QCOMPARE(form->size(), size);
        for (QWidget* w : std::initializer_list<QWidget*>{form->cboDB, form->lblSetup})
            if (w->sizeHint().width() > w->width()) clipped << w->objectName();
        // The call line's texts, the name line's, and the status line's (two lines at most).
        const QString call = "DL1ABC";
        for (const QString& text : {t.Ready, QString(t.LookingUp).replace("???", call), t.LoginRequired,
                                    QString(t.Contacting).replace("***", "CALLOOK") + ". . .", t.NotFound + " " + call,
                                    call + "  (" + t.SourceWeb + "HamCall)", call + "  (" + t.SourceDatabase + ")"}) {
            form->lblCall->setText(text);
            clipped << cut(form->lblCall, text);
        }
        clipped << cut(form->lblName, QString(t.Searching).replace("***", "CALLOOK") + ". . .");
        for (QString text : {t.LoggedIn, t.NotLoggedIn, t.LoginNotNeededQrzcq, t.LoginNotNeededCallook, t.LookupOk,
                             t.LookupFailed, t.LookupFailedQrzcq, t.CallookStatus, t.StatusNoCall, t.StatusHttpError}) {
            form->lblStatus->setText(text.replace("***", "CALLOOK").replace("###", "503"));
            if (form->lblStatus->heightForWidth(form->lblStatus->width()) > form->lblStatus->height()) clipped << text;
        }
        clipped.removeAll(QString());
        QCOMPARE(clipped, QStringList());

        // A picture as wide as any (57) at the larger margin: the first three lines end before it,
        // the others start below it, and the call line still shows a call from the service.
        form->Image1->setPixmap(QPixmap(kPictures + "g4abc.jpg"));
        form->Image1->setGeometry(PicturePlacement(QSize(400, 200), form->width(), 20));
        form->Image1->show();
        QTRY_VERIFY(form->lblCall->geometry().right() < form->Image1->geometry().left());
        for (QLabel* l : {form->lblName, form->lblAdd1})
            QVERIFY2(l->geometry().right() < form->Image1->geometry().left(), qPrintable(l->objectName()));
        QVERIFY(form->lblAdd2->geometry().top() > form->Image1->geometry().bottom());
        QCOMPARE(cut(form->lblCall, "WW0WWW  (" + t.SourceWeb + "QRZCQ)"), QString());
        form->Image1->hide();
        QTRY_COMPARE(form->lblCall->width(), form->lblStatus->width());  // the whole width again
    }

    // Under a window manager every window opens with its frame wholly on the screen: the main
    // window wherever it was saved, the setup window and the editor beside it, the help text,
    // the enlarged picture at the pointer and a message box.
    void windowsOpenWhollyOnTheScreen_data() {
        QTest::addColumn<QStringList>("saved");
        QTest::newRow("nothing saved") << QStringList{};
        QTest::newRow("at 0, 0") << QStringList{"0", "0"};
        QTest::newRow("above and left of the screen") << QStringList{"-300", "-200"};
        QTest::newRow("on a monitor that has gone") << QStringList{"3000", "2000"};
    }

    void windowsOpenWhollyOnTheScreen() {
        QFETCH(QStringList, saved);
        REQUIRE_WINDOW_MANAGER();
        if (!saved.isEmpty()) {
            settings::SaveSetting(settings::kForm1Left, saved[0]);
            settings::SaveSetting(settings::kForm1Top, saved[1]);
        }
        QVERIFY(loadShown());
        QVERIFY(framed(form.get()));
        QTRY_VERIFY(whollyOnAScreen(form->frameGeometry()));
        const QRect area = form->screen()->availableGeometry(), frame = form->frameGeometry();
        QVERIFY(frame.height() > form->height());  // a title bar at least
        if (saved == QStringList{"0", "0"} || saved.value(0).startsWith('-')) QCOMPARE(frame.topLeft(), area.topLeft());
        if (saved.value(0) == "3000") QCOMPARE(frame.bottomRight(), area.bottomRight());

        QList<QWidget*> windows;
        form->MnuSetupClick(0);
        windows << form->findChild<Form2*>();
        form->MnuSetupClick(1);
        windows << form->findChild<Form26*>();
        form->openWithDesktop = [](const QUrl&) { return false; };
        form->MnuSetupClick(2);
        windows << form->findChild<HelpWindow*>();
        QCursor::setPos(area.bottomRight());
        auto* picture = new Form13(QPixmap(kPictures + "g4abc.jpg"), form.get());
        picture->ShowCentredOn(area.bottomRight());
        windows << picture;
        auto* box = new UniMsgBox(form.get());
        box->Prepare(form.get(), "x", 0, "PX callsigns", "OK", "", "", "", -5, -5);
        box->show();
        windows << box;
        for (QWidget* w : windows) {
            QVERIFY(w);
            QVERIFY2(framed(w), qPrintable(w->objectName()));
            QTRY_VERIFY2(whollyOnAScreen(w->frameGeometry()), qPrintable(w->objectName()));
        }
        // The setup window and the editor cover none of the main window where there is room.
        for (QWidget* w : windows.mid(0, 2)) {
            const int height = w->frameGeometry().height();
            if (area.bottom() - frame.bottom() >= height || frame.top() - area.top() >= height)
                QVERIFY2(!w->frameGeometry().intersects(frame), qPrintable(w->objectName()));
        }
        QCOMPARE(box->frameGeometry().size(), box->outerSize());
        QCOMPARE(picture->frameGeometry().bottomRight(), area.bottomRight());
        box->close();
    }

    // A lookup that fails ends with the pointer back to normal, keeps nothing, says in the status
    // line what happened (in the user's language, Dutch here), and leaves the window ready for
    // the next call. F8 and a typed call share everything past the call text.
    void failedLookups_data() {
        QTest::addColumn<Failed>("c");
        const QString all = "eham,qrz,hamcall";
        QTcpServer closed;  // its port is one nothing listens on once it closes
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const QString down = QString("http://127.0.0.1:%1").arg(closed.serverPort());
        QTest::newRow("not found") << Failed{"XX9XYZ", all, {}, "%N XX9XYZ", "%O"};
        QTest::newRow("login required") << Failed{"DL1ABC", "", {}, "%L", "Opzoeken mislukt"};
        QTest::newRow("service error") << Failed{"ZZ500", "qrz", {}, "%NZZ500", "QRZ antwoordde met fout 500"};
        QTest::newRow("page gone") << Failed{"ZZ404", "qrz", {}, "%NZZ404", "QRZ antwoordde met fout 404"};
        QTest::newRow("service hangs") << Failed{"ZZ1HNG", "qrz", {}, "%NZZ1HNG", "QRZ antwoordde niet op tijd"};
        QTest::newRow("page too large") << Failed{"ZZ1BIG", "qrz", {}, "%NZZ1BIG", "Het antwoord van QRZ was te groot"};
        QTest::newRow("unknown service host")
            << Failed{"DL1ABC", all, {"QRZ", "http://no-such-host.invalid"}, "%NDL1ABC", "QRZ is niet bereikbaar"};
        QTest::newRow("service down") << Failed{"DL1ABC", all, {"QRZ", down}, "%NDL1ABC", "QRZ is niet bereikbaar"};
        QTest::newRow("picture server down") << Failed{"DL1ABC", all, {"Pictures", down}, "DL1ABC  (%WQRZ)", "%O", true, 0};
        // A page where a picture should be: nothing cached, and the pointer back to normal.
        QTest::newRow("picture server answers with a page")
            << Failed{"DL1ABC", all, {"Pictures", "%S/qrz/db"}, "DL1ABC  (%WQRZ)", "%O", true, 0};
    }

    void failedLookups() {
        QFETCH(Failed, c);
        if (!c.host.first.isEmpty())
            settings::SaveSetting({"Hosts", qPrintable(c.host.first)}, QString(c.host.second).replace("%S", server.url()));
        QVERIFY(loadShown());
        serverLogin(c.loggedIn.toLatin1());
        const QByteArray before = readFile(g.callFilePath());
        QSignalSpy pictureReady(form->lookUp, &ucLookUp::PictureReady), noPicture(form->lookUp, &ucLookUp::NoPic);
        enter(*form, c.call);
        c.expected.replace("%N", g.Texts.NotFound).replace("%L", g.Texts.LoginRequired).replace("%W", g.Texts.SourceWeb);
        QTRY_COMPARE_WITH_TIMEOUT(form->lblCall->text(), c.expected, 10000);
        QVERIFY(settle());
        // The page's own completion counts as a picture too (the picture request came while it was
        // handled); then the picture's answer.
        if (c.stored) { QTRY_COMPARE_WITH_TIMEOUT(pictureReady.count() + noPicture.count(), 2, 10000); }
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(form->lblStatus->text(), QString(c.status).replace("%O", g.Texts.LookupOk));
        QCOMPARE(beeps.value(beeps.size() - 1), c.lastTone);
        QVERIFY(!form->Image1->isVisible());
        QVERIFY(!QFile::exists(data + "/images/qrzImages/DL1ABC.jpg"));
        if (c.stored) QVERIFY(CallDatabase(g.callFilePath()).FindCallRecord("DL1ABC") > 0);
        else QCOMPARE(readFile(g.callFilePath()), before);
        enter(*form, "G4ABC");
        QCOMPARE(form->lblCall->text(), fromFile(g, "G4ABC"));
        QVERIFY(form->cmdUpdate->isEnabled());
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
