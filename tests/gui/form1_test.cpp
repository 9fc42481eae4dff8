// The main window loading against a prepared data folder and Pictaro folder, under a real X
// server where one is available.
#include "app/form1.h"
#include "app/settings.h"
#include "db/calldatabase.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

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
        failures.clear();
    }

    std::unique_ptr<Form1> load(ModuleValues& g, bool* ok) {
        auto form = std::make_unique<Form1>(g);
        form->showFailure = [this](const QString& text, const QString& title) { failures << title + "|" + text; };
        *ok = form->Form_Load();
        return form;
    }

private slots:
    void initTestCase() { root = QDir(qEnvironmentVariable("XDG_DATA_HOME") + "/..").absolutePath(); }
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

        form->txtCall->setText("<b>K9ZZZ</b>");
        QTest::keyClick(form->txtCall, Qt::Key_Return);
        QCOMPARE(form->lblCall->text(), g.Texts.NotFound + "<B>K9ZZZ</B>");
        QCOMPARE(form->lblCall->textFormat(), Qt::PlainText);
        QCOMPARE(form->lblName->text(), QString());
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
