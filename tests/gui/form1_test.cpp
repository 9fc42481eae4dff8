// The main window against prepared data and Pictaro folders, under a real X server where one is available.
#include "app/datafolder.h"
#include "app/form1.h"
#include "app/settings.h"
#include "db/calldatabase.h"
#include "db/form26.h"
#include "lookup/callbookserver.h"
#include "lookup/uclookup.h"
#include "setup/form2.h"
#include "ui/beep.h"
#include "ui/popupmenu.h"

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
#include <QSignalSpy>
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
        QVERIFY(form->cmdUpdate->isEnabled() || !inFile);
        QCOMPARE(readFile(g.callFilePath()), dbBefore);
    }

    // One window through a session: calls from the file and from the service, pictures, the setup and editor
    // windows, and the close.
    void lookupsAndWindows() {
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

        // The title bar's close only hides; Unload closes the other windows too.
        QWidget other;
        other.setObjectName("Form2");
        other.show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QVERIFY(!form->close());
        QVERIFY(!form->isVisible() || form->isMinimized());
        QVERIFY(QApplication::topLevelWidgets().contains(form.get()));
        form->Unload();
        QVERIFY(!other.isVisible());
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
        marked.hide();
        form->move(100, 100);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form.get()));
        QVERIFY(settle());
        QVERIFY(form->lblMaps->isHidden());  // none of its windows exists yet
        QCursor::setPos(form->lblSetup->mapToGlobal(QPoint(3, 3)));
        QTest::mouseClick(form->lblSetup, Qt::LeftButton, {}, QPoint(3, 3));
        QVERIFY(form->openMenu());
        QStringList captions;
        for (const MenuItem& item : form->openMenu()->items()) captions << item.caption;
        QCOMPARE(captions, (QStringList{g.Texts.MenuSetup, g.Texts.MenuDatabaseEditor, g.Texts.MenuHelp}));
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
        QString error;
        QVERIFY2(SeedDataFolder(PX_DEFAULT_DATA, data, &error), qPrintable(error));
        QVERIFY(QDir(data + "/images/qrzImages").isEmpty());
        QVERIFY(loadShown());
        pressF8(*form, "DL1ABC");
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        QCOMPARE(readFile(data + "/images/qrzImages/DL1ABC.jpg"), readFile(kPictures + "dl1abc.jpg"));
        QCOMPARE(form->Image1->pixmap().toImage(), QImage(kPictures + "dl1abc.jpg").convertToFormat(form->Image1->pixmap().toImage().format()));
        QVERIFY(CallDatabase(g.callFilePath()).FindCallRecord("DL1ABC") > 0);
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
