// The call-sign file editor: what its buttons write to the file, what the list, the count and the
// scroll position show after, the rules of the call box, the service box, the lookups through the
// local call-book stand-in and the nicknames handed back on closing.
#include "app/settings.h"
#include "db/calldatabase.h"
#include "db/form26.h"
#include "lookup/callbookserver.h"
#include "lookup/uclookup.h"
#include "ui/beep.h"
#include "ui/unimsgbox.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QCOMPARE(f.write(bytes), bytes.size());
}

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

// One record as the file holds it: the nine fields padded with blanks to 6, 25, 30, 30, 30, 15,
// 15, 12 and 4 bytes.
QByteArray rec(const QList<QByteArray>& fields) {
    static const int widths[] = {6, 25, 30, 30, 30, 15, 15, 12, 4};
    QByteArray out;
    for (int i = 0; i < 9; ++i) out += fields.value(i).leftJustified(widths[i], ' ', true);
    return out;
}

// "AB000", "AB010", ... "AB390" (count records), each with a name.
QByteArray generated(int count, const QStringList& twice = {}) {
    QByteArray out;
    for (int i = 0; i < count; ++i) {
        const QByteArray call = "AB" + QByteArray::number(i * 10).rightJustified(3, '0');
        const QByteArray r = rec({call, "Op " + call, "1 Street", "Town", "Land", "10", "20", "A", "1970"});
        out += r;
        if (twice.contains(QString::fromLatin1(call))) out += r;
    }
    return out;
}

QByteArray without(const QByteArray& file, const QByteArray& call) {
    QByteArray out;
    for (qsizetype i = 0; i + 167 <= file.size(); i += 167)
        if (file.mid(i, 6).trimmed() != call) out += file.mid(i, 167);
    return out;
}

QStringList callsOf(const QByteArray& file) {
    QStringList out;
    for (qsizetype i = 0; i + 167 <= file.size(); i += 167) out << QString::fromLatin1(file.mid(i, 6).trimmed());
    return out;
}

}  // namespace

class Form26Test : public QObject {
    Q_OBJECT

    QString data;
    ModuleValues g;
    QStringList nicknames;
    QList<int> beeps;
    std::unique_ptr<CallbookServer> server;
    QByteArray shipped;  // the call-sign file the program ships
    QStringList boxes;   // message boxes shown: title, prompt, button; each closed with its button
    QTimer closer;

    QString callFile() const { return data + "/Norvane-DB.db"; }

    void pointHostsAt(const CallbookServer& at) {
        const char* services[] = {"eHam", "QRZ", "QRZCQ", "Callook", "HamCall"};
        const char* prefixes[] = {"/eham", "/qrz", "/qrzcq", "/callook", "/hamcall"};
        for (int i = 0; i < 5; ++i) settings::SaveSetting({"Hosts", services[i]}, at.url(prefixes[i]));
        settings::SaveSetting({"Hosts", "Pictures"}, at.url("/pictures"));
        settings::SaveSetting({"Hosts", "TimeoutMs"}, "3000");
    }
    void serverLogin(const CallbookServer& at, const char* services) {
        QNetworkAccessManager nam;
        QNetworkReply* r = nam.get(QNetworkRequest(QUrl(at.url("/_control/login?services=") + services)));
        QSignalSpy done(r, &QNetworkReply::finished);
        QVERIFY(done.wait(5000));
        delete r;
    }

    std::unique_ptr<Form26> open() {
        auto form = std::make_unique<Form26>(g, nicknames);
        form->Form_Load();
        form->move(20, 20);
        form->show();
        if (!QTest::qWaitForWindowExposed(form.get())) qWarning("editor not exposed");
        return form;
    }

    static int rowHeight(const Form26& form) { return form.lstCall->visualRect(form.calls->index(0)).height(); }

    static bool settle() {
        return QTest::qWaitFor([] { return !QApplication::overrideCursor(); }, 10000);
    }

    static void clickRow(Form26& form, int row) {
        form.setTopIndex(row);
        QTest::mouseClick(form.lstCall->viewport(), Qt::LeftButton, {},
                          form.lstCall->visualRect(form.calls->index(row)).center());
    }

    QStringList boxTexts(const Form26& f) const {
        return {f.txtName->text(), f.txtAdd1->text(), f.txtAdd2->text(), f.txtCtry->text(),
                f.txtLat->text(),  f.txtLon->text(),  f.txtClass->text(), f.txtYearBorn->text()};
    }

private slots:
    void initTestCase() {
        server = std::make_unique<CallbookServer>();
        QVERIFY(server->port() > 0);
        shipped = readFile(PX_SOURCE_DIR "/data/Norvane-DB.db");
        QCOMPARE(shipped.size(), 10 * 167);
        // The message box waits for its button: pressed here, after its texts are taken down.
        connect(&closer, &QTimer::timeout, this, [this] {
            for (QWidget* w : QApplication::topLevelWidgets()) {
                auto* box = qobject_cast<UniMsgBox*>(w);
                if (!box || !box->isVisible()) continue;
                boxes << box->windowTitle() << box->lblPrompt->text() << box->cmd1->text();
                box->cmd1->click();
            }
        });
        closer.start(50);
    }
    void cleanupTestCase() { server.reset(); }

    void init() {
        data = qEnvironmentVariable("XDG_DATA_HOME") + "/Norvane";
        QDir(data).removeRecursively();
        QDir().mkpath(data + "/images/qrzImages");
        writeFile(callFile(), shipped);
        QFile::remove(qEnvironmentVariable("XDG_CONFIG_HOME") + "/PX Callsigns.conf");
        pointHostsAt(*server);
        serverLogin(*server, "eham,qrz,qrzcq,hamcall");
        g = ModuleValues();
        g.DataPath = data;
        QFile language(PX_SOURCE_DIR "/data/Languages/Norvane_English.Language");
        QVERIFY(language.open(QIODevice::ReadOnly));
        LoadLanguageText(language.readAll(), g.Texts);
        g.ServiceNo = 1;  // opens on the second entry, "QRZ"
        g.ServiceName = "eHam";
        nicknames = QStringList{"PA3XYZ*Jan", "G4ABC*Ally"};
        beeps.clear();
        boxes.clear();
        sound::SetListener([this](int kind, int hz, int) {
            if (kind == 1) beeps << hz;
        });
    }
    void cleanup() {
        QVERIFY(settle());
        QCOMPARE(boxes, QStringList());  // none but those a test expects (and empties)
        sound::SetListener({});
    }

    void opensOnTheFile() {
        auto form = open();
        QCOMPARE(form->calls->calls(), callsOf(shipped));
        QCOMPARE(form->calls->calls().first(), QString("DL1XYZ"));
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 10"));
        QCOMPARE(form->windowTitle(), QString("Call-sign database"));
        QCOMPARE(form->lblInfo->text(), QString("Type a call sign, look it up on the internet or fill in the fields "
                                                "yourself, then add it to the database."));
        const QList<QPair<QLabel*, QString>> captions{
            {form->lblCall, "Call sign: "},   {form->lblName, "Name: "},     {form->lblNickName, "Nickname: "},
            {form->lblAdd1, "Address 1: "},   {form->lblAdd2, "Address 2: "}, {form->lblCtry, "Country: "},
            {form->lblLat, "Latitude: "},     {form->lblLon, "Longitude: "}, {form->lblClass, "Class: "},
            {form->lblYearBorn, "Year born: "}};
        for (const auto& [label, text] : captions) {
            QCOMPARE(label->text(), text);
            QCOMPARE(label->textFormat(), Qt::PlainText);
        }
        for (QLabel* label : {form->lblEntries, form->lblInfo, form->Label4})
            QCOMPARE(label->textFormat(), Qt::PlainText);
        QCOMPARE(form->cmdAddNewSite->text(), QString("Add callsign to the database"));
        QCOMPARE(form->cmdDeleteSite->text(), QString("Delete callsign"));
        // Set with "callsign", then the click of the service box put in the (empty) call box.
        QCOMPARE(form->cmdLookup->text(), QString("Look up  on QRZ.com"));
        QCOMPARE(form->cmdClose->text(), QString("Close"));
        for (QPushButton* b : {form->cmdAddNewSite, form->cmdDeleteSite, form->cmdLookup}) QVERIFY(!b->isEnabled());
        QVERIFY(form->Label4->isHidden());
        QVERIFY(form->Image1->isHidden());
        QCOMPARE(form->listIndex(), -1);
        // Fifteen rows, each whole.
        QCOMPARE(form->lstCall->viewport()->height(), Form26::kVisibleRows * rowHeight(*form));
    }

    void serviceBoxOpensOneOnFromTheSavedNumber_data() {
        QTest::addColumn<int>("saved");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("name");
        QTest::newRow("0") << 0 << 0 << "eHam" << 1 << "eHam.net";
        QTest::newRow("1 eHam") << 1 << 1 << "QRZ" << 2 << "QRZ.com";
        QTest::newRow("2 QRZ") << 2 << 2 << "QRZCQ" << 3 << "QRZCQ.com";
        QTest::newRow("3 QRZCQ") << 3 << 3 << "CallLook" << 4 << "Callook.info";
        QTest::newRow("4 Callook") << 4 << 4 << "HamCall" << 5 << "HamCall.net";
        // Past the last entry: no selection, nothing changes.
        QTest::newRow("5 HamCall") << 5 << -1 << "" << 5 << "HamCall";
    }

    void serviceBoxOpensOneOnFromTheSavedNumber() {
        QFETCH(int, saved);
        QFETCH(int, index);
        QFETCH(QString, shown);
        QFETCH(int, number);
        QFETCH(QString, name);
        g.ServiceNo = static_cast<int16_t>(saved);
        g.ServiceName = "HamCall";
        auto form = open();
        QCOMPARE(form->cboDB->count(), 5);
        QCOMPARE(form->cboDB->itemText(3), QString("CallLook"));
        QCOMPARE(form->cboDB->currentIndex(), index);
        QCOMPARE(form->cboDB->currentText(), shown);
        QCOMPARE(int(g.ServiceNo), number);
        QCOMPARE(g.ServiceName, name);
        QTest::keyClicks(form->txtCall, "g4abc");
        QCOMPARE(form->cmdLookup->text(), "Look up G4ABC on " + name);
        // Without a service no lookup can be asked for, until one is chosen.
        QCOMPARE(form->cmdLookup->isEnabled(), index >= 0);
        form->cboDB->setCurrentIndex(2);
        QCOMPARE(int(g.ServiceNo), 3);
        QCOMPARE(g.ServiceName, QString("QRZCQ.com"));
        QCOMPARE(form->cmdLookup->text(), QString("Look up G4ABC on QRZCQ.com"));
        QVERIFY(form->cmdLookup->isEnabled());
    }

    void addsANewCallThenUpdatesIt() {
        auto form = open();
        QTest::keyClicks(form->txtCall, "dl1abc");
        QCOMPARE(form->txtCall->text(), QString("DL1ABC"));
        QVERIFY(!form->cmdAddNewSite->isEnabled());  // no name yet
        QTest::keyClicks(form->txtName, "Hans");
        form->txtName->setText(QString::fromUtf8("Hans M\u00fcller"));
        QVERIFY(form->cmdAddNewSite->isEnabled());
        QCOMPARE(form->cmdAddNewSite->text(), QString("Add DL1ABC to the database"));
        form->txtAdd1->setText(QString::fromUtf8("Musterstra\u00dfe 12"));
        form->txtAdd2->setText("10115 Berlin");
        form->txtCtry->setText("Germany");
        form->txtLat->setText("52.52");
        form->txtLon->setText("13.405");
        form->txtClass->setText("A");
        form->txtYearBorn->setText("1961");
        QTest::mouseClick(form->cmdAddNewSite, Qt::LeftButton);

        const QByteArray added = rec({"DL1ABC", "Hans M\xfcller", "Musterstra\xdf" "e 12", "10115 Berlin", "Germany",
                                      "52.52", "13.405", "A", "1961"});
        QCOMPARE(readFile(callFile()), added + shipped);  // sorts first
        QStringList expected = callsOf(shipped);
        expected.prepend("DL1ABC");
        QCOMPARE(form->calls->calls(), expected);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 11"));
        QCOMPARE(form->listIndex(), 0);
        QCOMPARE(form->topIndex(), 0);

        // The same call again: updated where it is.
        form->txtName->setText("Hans Mueller");
        form->txtYearBorn->setText("19610");  // cut to the field
        QTest::mouseClick(form->cmdAddNewSite, Qt::LeftButton);
        const QByteArray updated = rec({"DL1ABC", "Hans Mueller", "Musterstra\xdf" "e 12", "10115 Berlin", "Germany",
                                        "52.52", "13.405", "A", "1961"});
        QCOMPARE(readFile(callFile()), updated + shipped);
        QCOMPARE(form->calls->calls(), expected);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 11"));

        // A known call of the shipped file typed anew (the typing empties the other boxes) and
        // given a name: that record is rewritten as the form holds it, the others stay byte for byte.
        form->txtCall->clear();
        QTest::keyClicks(form->txtCall, "g4abc");
        QCOMPARE(form->txtAdd1->text(), QString());
        QTest::keyClicks(form->txtName, "Alice Changed");
        QTest::mouseClick(form->cmdAddNewSite, Qt::LeftButton);
        QByteArray after = updated + shipped;
        QCOMPARE(after.mid(3 * 167, 6), QByteArray("G4ABC "));
        after.replace(3 * 167, 167, rec({"G4ABC", "Alice Changed"}));
        QCOMPARE(readFile(callFile()), after);
        QCOMPARE(form->calls->calls(), expected);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 11"));
    }

    void aNewCallIsScrolledIntoView_data() {
        QTest::addColumn<QString>("call");
        QTest::addColumn<int>("scrolledBefore");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("top");
        QTest::newRow("second") << "AB005" << 0 << 1 << 0;
        QTest::newRow("index 14") << "AB135" << 0 << 14 << 0;
        QTest::newRow("index 15") << "AB145" << 0 << 15 << 1;
        QTest::newRow("index 26") << "AB255" << 0 << 26 << 12;
        QTest::newRow("last") << "AB395" << 0 << 40 << 26;
        QTest::newRow("first, list scrolled before") << "AA000" << 20 << 0 << 0;
        QTest::newRow("index 4, list scrolled before") << "AB035" << 20 << 4 << 0;
    }

    void aNewCallIsScrolledIntoView() {
        QFETCH(QString, call);
        QFETCH(int, scrolledBefore);
        QFETCH(int, index);
        QFETCH(int, top);
        const QByteArray file = generated(40);
        writeFile(callFile(), file);
        auto form = open();
        form->setTopIndex(scrolledBefore);
        QCOMPARE(form->topIndex(), scrolledBefore);
        form->txtCall->setText(call);
        form->txtName->setText("New");
        QTest::mouseClick(form->cmdAddNewSite, Qt::LeftButton);

        QCOMPARE(form->calls->rowCount(), 41);
        QCOMPARE(form->calls->calls().at(index), call);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 41"));
        QCOMPARE(form->listIndex(), index);
        QCOMPARE(form->topIndex(), top);
        // Shown, and for a call from index 15 on as the last of the fifteen rows.
        const QRect row = form->lstCall->visualRect(form->calls->index(index));
        QVERIFY(form->lstCall->viewport()->rect().contains(row));
        if (index >= 15) QCOMPARE(row.top(), 14 * rowHeight(*form));
        // The file: the 40 records with the new one in its place.
        const QByteArray written = readFile(callFile());
        QCOMPARE(written.size(), 41 * 167);
        QCOMPARE(written.mid(index * 167, 167), rec({call.toLatin1(), "New"}));
        QCOMPARE(written.left(index * 167) + written.mid((index + 1) * 167), file);
    }

    void deleteRemovesEveryCopyAndKeepsTheTopRow() {
        const QByteArray file = generated(40, {"AB200"});
        writeFile(callFile(), file);
        writeFile(data + "/images/qrzImages/AB200.jpg", readFile(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg"));
        auto form = open();
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 41"));
        clickRow(*form, 20);
        form->setTopIndex(10);
        QCOMPARE(form->txtCall->text(), QString("AB200"));
        QVERIFY(form->Image1->isVisible());
        QVERIFY(form->cmdDeleteSite->isEnabled());
        QCOMPARE(form->cmdDeleteSite->text(), QString("Delete AB200"));
        QTest::mouseClick(form->cmdDeleteSite, Qt::LeftButton);

        const QByteArray left = without(file, "AB200");
        QCOMPARE(left.size(), 39 * 167);
        QCOMPARE(readFile(callFile()), left);
        QCOMPARE(form->calls->calls(), callsOf(left));
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 39"));
        QCOMPARE(form->topIndex(), 10);
        QCOMPARE(form->listIndex(), -1);
        for (QLineEdit* box : {form->txtCall, form->txtName, form->txtNickName, form->txtAdd1, form->txtAdd2,
                               form->txtCtry, form->txtLat, form->txtLon, form->txtClass, form->txtYearBorn})
            QCOMPARE(box->text(), QString());
        QVERIFY(form->Image1->isHidden());
        QVERIFY(form->picture().isNull());
        QCOMPARE(form->Image1->pos(), Form26::kPictureHome);
        QVERIFY(!form->cmdDeleteSite->isEnabled());

        // From the last screen: the list keeps as near to it as it still reaches.
        form->setTopIndex(24);
        QCOMPARE(form->topIndex(), 24);
        QTest::keyClicks(form->txtCall, "ab390");
        QCOMPARE(form->listIndex(), 38);
        QTest::mouseClick(form->cmdDeleteSite, Qt::LeftButton);
        QCOMPARE(readFile(callFile()), without(left, "AB390"));
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 38"));
        QCOMPARE(form->topIndex(), 23);
    }

    void withoutAFileTheFirstAddMakesIt() {
        QVERIFY(QFile::remove(callFile()));
        auto form = open();
        QCOMPARE(form->calls->rowCount(), 0);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 0"));
        QTest::keyClicks(form->txtCall, "k0xyz");
        QTest::keyClicks(form->txtName, "Mary");
        QTest::mouseClick(form->cmdAddNewSite, Qt::LeftButton);
        QCOMPARE(readFile(callFile()), rec({"K0XYZ", "Mary"}));
        QCOMPARE(form->calls->calls(), QStringList{"K0XYZ"});
        QCOMPARE(form->listIndex(), 0);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 1"));
    }

    void aFileThatCannotBeWrittenStaysAsItWasAndSaysSo() {
        // The new contents go to "temp.db" first: a folder of that name stops every write.
        QVERIFY(QDir().mkpath(data + "/temp.db"));
        auto form = open();
        QTest::keyClicks(form->txtCall, "dl1abc");
        QTest::keyClicks(form->txtName, "Hans");
        QTest::mouseClick(form->cmdAddNewSite, Qt::LeftButton);
        QCOMPARE(readFile(callFile()), shipped);
        QCOMPARE(form->calls->calls(), callsOf(shipped));
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 10"));
        QVERIFY(form->Label4->isVisible());
        QVERIFY(!form->Label4->text().isEmpty());
        QCOMPARE(form->txtName->text(), QString("Hans"));  // the form is still there to try again

        form->txtCall->clear();
        QTest::keyClicks(form->txtCall, "g4abc");
        QVERIFY(form->Label4->isHidden());
        QTest::mouseClick(form->cmdDeleteSite, Qt::LeftButton);
        QCOMPARE(readFile(callFile()), shipped);
        QCOMPARE(form->calls->calls(), callsOf(shipped));
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 10"));
        QVERIFY(form->Label4->isVisible());
    }

    void clickingACallShowsItsRecordAndPicture() {
        writeFile(data + "/images/qrzImages/G4ABC.jpg", readFile(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg"));
        auto form = open();
        clickRow(*form, 2);
        QCOMPARE(form->txtCall->text(), QString("G4ABC"));
        QCOMPARE(boxTexts(*form), (QStringList{"Alice Example", "1 Sample Lane", "Exampleton EX1 2AB", "England",
                                               "51.5072", "-0.1276", "Full", "1970"}));
        QCOMPARE(form->txtNickName->text(), QString("Ally"));
        QCOMPARE(form->LookupCall, QString("G4ABC"));
        QCOMPARE(form->cmdDeleteSite->text(), QString("Delete G4ABC"));
        QCOMPARE(form->cmdAddNewSite->text(), QString("Add G4ABC to the database"));
        QCOMPARE(form->cmdLookup->text(), QString("Look up G4ABC on QRZ.com"));
        for (QPushButton* b : {form->cmdAddNewSite, form->cmdDeleteSite, form->cmdLookup}) QVERIFY(b->isEnabled());
        // 240 x 160: as high as the area, centred on 356, 147.
        QVERIFY(form->Image1->isVisible());
        QCOMPARE(form->Image1->geometry(), QRect(173, 25, 366, 244));
        QCOMPARE(form->picture().size(), QSize(240, 160));

        // The row already selected, clicked again: the record is read again.
        form->txtName->setText("edited");
        clickRow(*form, 2);
        QCOMPARE(form->txtName->text(), QString("Alice Example"));
        // The arrow keys move through the list as clicks do.
        QTest::keyClick(form->lstCall, Qt::Key_Down);
        QCOMPARE(form->txtCall->text(), QString("JA1XYZ"));
        QCOMPARE(form->txtName->text(), QString("Taro Rei"));

        // Another call without a picture: the old one goes.
        clickRow(*form, 0);
        QCOMPARE(form->txtCall->text(), QString("DL1XYZ"));
        QCOMPARE(form->txtNickName->text(), QString());
        QVERIFY(form->Image1->isHidden());
        QCOMPARE(form->Image1->pos(), Form26::kPictureHome);

        // Back to the picture; the left button shows it at its natural size.
        clickRow(*form, 2);
        QVERIFY(form->Image1->isVisible());
        QTest::mouseClick(form->Image1, Qt::LeftButton, {}, QPoint(5, 5));
        QWidget* enlarged = nullptr;
        for (QWidget* w : QApplication::topLevelWidgets())
            if (w->objectName() == "Form13" && w->isVisible()) enlarged = w;
        QVERIFY(enlarged);
        QCOMPARE(enlarged->size(), QSize(240, 160));
        enlarged->close();
    }

    void theCallBoxRules() {
        writeFile(data + "/images/qrzImages/G4ABC.jpg", readFile(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg"));
        nicknames = QStringList{"W1XYZABC*Long", "W1XYZ*Short", "ZZ9ABC*Zed", "g4abc*Ally"};
        auto form = open();
        clickRow(*form, 2);
        form->txtLat->setText("51.5*");  // a notice up
        QVERIFY(form->Label4->isVisible());
        QVERIFY(form->Image1->isVisible());
        QVERIFY(!form->editing);
        form->txtCall->setFocus();
        form->txtCall->end(false);

        // Any key: the eight record boxes, the notice and the picture are emptied.
        QTest::keyClick(form->txtCall, Qt::Key_X);
        QCOMPARE(form->txtCall->text(), QString("G4ABCX"));
        QVERIFY(form->editing);
        QCOMPARE(boxTexts(*form), QStringList(8, QString()));
        QCOMPARE(form->Label4->text(), QString());
        QVERIFY(form->Label4->isHidden());
        QVERIFY(form->Image1->isHidden());
        QVERIFY(form->picture().isNull());
        QCOMPARE(form->Image1->pos(), Form26::kPictureHome);
        QCOMPARE(form->listIndex(), -1);
        QVERIFY(!form->cmdDeleteSite->isEnabled());
        QCOMPARE(form->txtNickName->text(), QString());

        // Backspace is a key too; the exact search finds G4ABC again, and its nickname (the
        // nickname search goes without regard to case as well).
        form->txtName->setText("kept?");
        QTest::keyClick(form->txtCall, Qt::Key_Backspace);
        QCOMPARE(form->txtCall->text(), QString("G4ABC"));
        QCOMPARE(form->txtName->text(), QString());
        QCOMPARE(form->listIndex(), 2);
        QVERIFY(form->cmdDeleteSite->isEnabled());
        QCOMPARE(form->txtNickName->text(), QString("Ally"));
        QVERIFY(!form->cmdAddNewSite->isEnabled());  // no name
        QVERIFY(form->cmdLookup->isEnabled());
        QCOMPARE(form->cmdAddNewSite->text(), QString("Add G4ABC to the database"));
        QCOMPARE(form->cmdLookup->text(), QString("Look up G4ABC on QRZ.com"));
        QCOMPARE(form->cmdDeleteSite->text(), QString("Delete G4ABC"));
        QTest::keyClicks(form->txtName, "A");
        QVERIFY(form->cmdAddNewSite->isEnabled());

        // Lower case typed comes out upper case; digits and signs as typed.
        form->txtCall->clear();
        QTest::keyClicks(form->txtCall, "w1x/yz");
        QCOMPARE(form->txtCall->text(), QString("W1X/YZ"));
        QCOMPARE(form->listIndex(), -1);
        QVERIFY(!form->cmdAddNewSite->isEnabled());

        // Pasted text is not upper-cased, and the exact search ignores case.
        form->txtCall->setText("w1xyz");
        QCOMPARE(form->listIndex(), 8);
        // By prefix: the first entry that begins with the call, even a longer call's.
        QCOMPARE(form->txtNickName->text(), QString("Long"));

        // No selection, no nickname.
        form->txtCall->setText("ZZ9");
        QCOMPARE(form->listIndex(), -1);
        QCOMPARE(form->txtNickName->text(), QString());
        QVERIFY(!form->cmdDeleteSite->isEnabled());
        form->txtCall->setText("");
        QVERIFY(!form->cmdLookup->isEnabled());
        QCOMPARE(form->cmdLookup->text(), QString("Look up  on QRZ.com"));
    }

    void movingTheMouseOverTheListGivesItTheFocus() {
        auto form = open();
        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form.get()));
        form->txtCall->setFocus();
        QTRY_VERIFY(form->txtCall->hasFocus());
        QTest::mouseMove(form->lstCall->viewport(), QPoint(10, 10));
        QTRY_VERIFY(form->lstCall->hasFocus());
    }

    void coordinateNotice_data() {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("shown");
        QTest::newRow("latitude") << "txtLat" << "52.5*" << true;
        QTest::newRow("longitude") << "txtLon" << "13.4 *" << true;
        QTest::newRow("only a star") << "txtLat" << "*" << true;
        QTest::newRow("no star") << "txtLat" << "52.5" << false;
        QTest::newRow("star inside") << "txtLon" << "1*3" << false;
        QTest::newRow("other box") << "txtClass" << "A*" << false;
    }

    void coordinateNotice() {
        QFETCH(QString, box);
        QFETCH(QString, text);
        QFETCH(bool, shown);
        g.ServiceNo = 3;  // the fourth entry: "CallLook", named Callook.info
        auto form = open();
        form->findChild<QLineEdit*>(box)->setText(text);
        QCOMPARE(form->Label4->isVisible(), shown);
        QCOMPARE(form->Label4->text(),
                 shown ? QString("* Coordinates not available from Callook.info\n    Derived from address or zipcode.")
                       : QString());
    }

    void lookupFindsStoresAndShowsThePicture() {
        auto form = open();
        QTest::keyClicks(form->txtCall, "dl1abc");
        QVERIFY(form->cmdLookup->isEnabled());
        QTest::mouseClick(form->cmdLookup, Qt::LeftButton);
        QVERIFY(QApplication::overrideCursor());
        QTRY_COMPARE_WITH_TIMEOUT(form->txtName->text(), QString::fromUtf8("Hans M\u00fcller"), 10000);
        QCOMPARE(form->txtCall->text(), QString("DL1ABC"));
        QCOMPARE(boxTexts(*form), (QStringList{QString::fromUtf8("Hans M\u00fcller"),
                                               QString::fromUtf8("Musterstra\u00dfe 12"), "10115 Berlin", "Germany",
                                               "52.52", "13.405", "A", "1961"}));
        QCOMPARE(g.OtherLat, 52.52);
        QCOMPARE(g.OtherLon, 13.405);
        // Kept: sorted in first, listed, selected and counted.
        QCOMPARE(readFile(callFile()), rec({"DL1ABC", "Hans M\xfcller", "Musterstra\xdf" "e 12", "10115 Berlin",
                                            "Germany", "52.52", "13.405", "A", "1961"}) + shipped);
        QCOMPARE(form->calls->calls().first(), QString("DL1ABC"));
        QCOMPARE(form->listIndex(), 0);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 11"));
        // The picture follows: cached byte for byte, 200 x 150 fitted to 325 x 244 around 356, 147.
        QTRY_VERIFY_WITH_TIMEOUT(form->Image1->isVisible(), 10000);
        QCOMPARE(readFile(data + "/images/qrzImages/DL1ABC.jpg"),
                 readFile(PX_SOURCE_DIR "/tests/fixtures/pictures/dl1abc.jpg"));
        QCOMPARE(form->Image1->geometry(), QRect(194, 25, 325, 244));
        QCOMPARE(form->pictureCall(), QString("DL1ABC"));
        QVERIFY(form->Label4->isHidden());
        QVERIFY(settle());
        QCOMPARE(beeps, QList<int>());

        // Looked up again: the record is updated in place, nothing is added.
        QTest::mouseClick(form->cmdLookup, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!QApplication::overrideCursor() && form->lookUp->RequestKind == "GetPicture", 10000);
        QTRY_COMPARE_WITH_TIMEOUT(form->lookUp->PendingDownloads, QString(QChar(0)), 10000);
        QCOMPARE(readFile(callFile()).size(), 11 * 167);
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 11"));
    }

    void lookupFailures_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("loggedIn");
        QTest::addColumn<QString>("notice");
        QTest::newRow("not found") << "XX9XYZ" << "qrz" << "XX9XYZ not found on QRZ.com";
        QTest::newRow("login required") << "DL1ABC" << "" << "DL1ABC not found on QRZ.com";
        QTest::newRow("no call sign in it") << "ABC" << "qrz" << "ABC not found on QRZ.com";
    }

    void lookupFailures() {
        QFETCH(QString, typed);
        QFETCH(QString, loggedIn);
        QFETCH(QString, notice);
        serverLogin(*server, loggedIn.toLatin1().constData());
        auto form = open();
        form->txtCall->setText(typed);
        form->txtName->setText("Someone");
        QVERIFY(form->cmdAddNewSite->isEnabled());
        QTest::mouseClick(form->cmdLookup, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(form->Label4->text(), notice, 10000);
        QVERIFY(form->Label4->isVisible());
        QVERIFY(!form->cmdAddNewSite->isEnabled());
        QVERIFY(!form->cmdDeleteSite->isEnabled());
        QVERIFY(settle());
        QCOMPARE(beeps, QList<int>{700});
        QCOMPARE(readFile(callFile()), shipped);
    }

    void unreachableServiceSaysSoInTheMessageBox_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("host");
        QTest::newRow("server error") << "ZZ500" << "";
        QTest::newRow("nobody listening") << "DL1ABC" << "http://127.0.0.1:9";
    }

    void unreachableServiceSaysSoInTheMessageBox() {
        QFETCH(QString, typed);
        QFETCH(QString, host);
        if (!host.isEmpty()) settings::SaveSetting({"Hosts", "QRZ"}, host);
        auto form = open();
        form->txtCall->setText(typed);
        QTest::mouseClick(form->cmdLookup, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!boxes.isEmpty(), 10000);
        QCOMPARE(boxes, (QStringList{"PX callsigns", "QRZ cannot be reached. Check your internet connection.", "Ok"}));
        boxes.clear();
        QVERIFY(!QApplication::overrideCursor());
        QVERIFY(form->Label4->isHidden());
        QCOMPARE(readFile(callFile()), shipped);
    }

    void aServiceWithoutPositionLeavesAKnownOne() {
        // A stand-in whose QRZ page for DL1ABC has no position.
        QTemporaryDir pages;
        QVERIFY(QDir().mkpath(pages.path() + "/qrz"));
        for (const QString& file : QDir(PX_SOURCE_DIR "/tests/fixtures/pages/qrz").entryList(QDir::Files))
            QVERIFY(QFile::copy(PX_SOURCE_DIR "/tests/fixtures/pages/qrz/" + file, pages.path() + "/qrz/" + file));
        writeFile(pages.path() + "/routes.json", R"({"qrz": {"DL1ABC": "noposition.html"}})");
        CallbookServer noPosition({"--pages", pages.path()});
        QVERIFY(noPosition.port() > 0);
        pointHostsAt(noPosition);

        struct Case {
            QByteArray fileBefore;
            QStringList position;  // shown
            QByteArray fileAfter;
        };
        const QByteArray old = rec({"DL1ABC", "Old Name", "", "", "", "50.1", "8.6", "", ""});
        const QByteArray noPos = rec({"DL1ABC", "Old Name", "", "", "", "0", "0", "", ""});
        const QByteArray newRec = rec({"DL1ABC", "Hans M\xfcller", "Musterstra\xdf" "e 12", "10115 Berlin", "Germany",
                                       "50.1", "8.6", "A", "1961"});
        const QByteArray zero = rec({"DL1ABC", "Hans M\xfcller", "Musterstra\xdf" "e 12", "10115 Berlin", "Germany",
                                     "0", "0", "A", "1961"});
        for (const Case& c : {Case{old + shipped, {"50.1", "8.6"}, newRec + shipped},     // known: kept
                              Case{noPos + shipped, {"0", "0"}, zero + shipped},         // stored as 0, 0: none
                              Case{shipped, {"0", "0"}, zero + shipped}}) {              // not in the file
            writeFile(callFile(), c.fileBefore);
            g.ServiceNo = 1;  // each opening moves it on by one
            auto form = open();
            form->txtCall->setText("DL1ABC");
            QTest::mouseClick(form->cmdLookup, Qt::LeftButton);
            QTRY_COMPARE_WITH_TIMEOUT(form->txtName->text(), QString::fromUtf8("Hans M\u00fcller"), 10000);
            QCOMPARE((QStringList{form->txtLat->text(), form->txtLon->text()}), c.position);
            QCOMPARE(g.OtherLat, 0.0);
            QCOMPARE(readFile(callFile()), c.fileAfter);
            QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 11"));
            QVERIFY(settle());
            QTRY_COMPARE_WITH_TIMEOUT(form->lookUp->PendingDownloads, QString(QChar(0)), 10000);
        }
    }

    void nicknamesHandedBackOnClosing_data() {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QString>("call");      // typed
        QTest::addColumn<QString>("shown");     // the nickname the box then shows
        QTest::addColumn<QString>("nickname");  // what the user leaves in it ("-": untouched)
        QTest::addColumn<QStringList>("after");
        QTest::addColumn<bool>("changed");
        const QStringList two{"G4ABC*Ally", "PA3XYZ*Jan"};
        QTest::newRow("new entry") << QStringList{"PA3XYZ*Jan"} << "G4ABC" << "" << "Ally"
                                   << QStringList{"PA3XYZ*Jan", "G4ABC*Ally"} << true;
        QTest::newRow("changed, goes last") << two << "G4ABC" << "Ally" << "Alice"
                                            << QStringList{"PA3XYZ*Jan", "G4ABC*Alice"} << true;
        QTest::newRow("emptied") << two << "G4ABC" << "Ally" << "" << QStringList{"PA3XYZ*Jan", "G4ABC*"} << true;
        QTest::newRow("untouched stays in place") << two << "G4ABC" << "Ally" << "-" << two << false;
        QTest::newRow("none and none given") << two << "K0XYZ" << "" << "-" << two << false;
        QTest::newRow("a call not in the file") << two << "ZZ1ZZ" << "" << "Zed"
                                                << QStringList{"G4ABC*Ally", "PA3XYZ*Jan", "ZZ1ZZ*Zed"} << true;
        // By prefix: the shorter call takes over the longer call's entry.
        QTest::newRow("prefix") << QStringList{"W1XYZABC*Long", "K1*x"} << "W1XYZ" << "Long" << "-"
                                << QStringList{"K1*x", "W1XYZ*Long"} << true;
        QTest::newRow("no call") << two << "" << "" << "Lost" << two << false;
    }

    void nicknamesHandedBackOnClosing() {
        QFETCH(QStringList, before);
        QFETCH(QString, call);
        QFETCH(QString, shown);
        QFETCH(QString, nickname);
        QFETCH(QStringList, after);
        QFETCH(bool, changed);
        nicknames = before;
        auto form = open();
        QSignalSpy unloaded(form.get(), &Form26::Unloaded);
        QTest::keyClicks(form->txtCall, call);
        QCOMPARE(form->txtNickName->text(), shown);
        if (nickname != "-") form->txtNickName->setText(nickname);
        QCOMPARE(nicknames, before);  // nothing until the window closes
        QTest::mouseClick(form->cmdClose, Qt::LeftButton);
        QVERIFY(!form->isVisible());
        QCOMPARE(nicknames, after);
        QCOMPARE(unloaded.size(), 1);
        QCOMPARE(unloaded.at(0).at(0).toBool(), changed);
        form->close();  // once only
        QCOMPARE(unloaded.size(), 1);
        QCOMPARE(nicknames, after);
    }

    void pictureFit_data() {
        QTest::addColumn<QSize>("natural");
        QTest::addColumn<QRect>("placed");
        QTest::newRow("4:3") << QSize(200, 150) << QRect(194, 25, 325, 244);
        QTest::newRow("tall") << QSize(120, 200) << QRect(283, 25, 146, 244);
        QTest::newRow("wide") << QSize(880, 200) << QRect(136, 97, 440, 100);
        QTest::newRow("the area's own shape") << QSize(220, 122) << QRect(136, 25, 440, 244);
        QTest::newRow("small, enlarged") << QSize(44, 24) << QRect(136, 27, 440, 240);
        QTest::newRow("a line") << QSize(4000, 1) << QRect(136, 147, 440, 1);
        QTest::newRow("empty") << QSize(0, 0) << QRect();
    }

    void pictureFit() {
        QFETCH(QSize, natural);
        QFETCH(QRect, placed);
        QCOMPARE(FitPicture(natural), placed);
    }

    void listSearches() {
        const QStringList list{"DL1XYZ", "G4ABC", "g4abc", "W1XYZ", "W1XYZA"};
        struct Case {
            const char* text;
            int exact;
            int prefix;
        };
        for (const Case& c : {Case{"G4ABC", 1, 1}, Case{"g4abc", 1, 1}, Case{"W1XYZ", 3, 3}, Case{"w1xyza", 4, 4},
                              Case{"W1", -1, 3}, Case{"D", -1, 0}, Case{"", -1, -1}, Case{"W1XYZAB", -1, -1}}) {
            QCOMPARE(FindStringExact(list, c.text), c.exact);
            QCOMPARE(FindString(list, c.text), c.prefix);
        }
    }
};

int main(int argc, char** argv) {
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    qputenv("XDG_DATA_HOME", (home.path() + "/data").toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    app.setQuitOnLastWindowClosed(false);
    Form26Test test;
    return QTest::qExec(&test, argc, argv);
}

#include "form26_test.moc"
