// The call-sign file editor: what its buttons write to the file and the list shows after, the call
// box, the service box, lookups through the local call-book stand-in, nicknames handed back.
#include "app/settings.h"
#include "db/calllistmodel.h"
#include "db/editorrules.h"
#include "db/form26.h"
#include "db/listsearch.h"
#include "lookup/callbookserver.h"
#include "lookup/uclookup.h"
#include "ui/beep.h"
#include "ui/unimsgbox.h"
#include "fits.h"

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(bytes) == bytes.size());
}

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

// One record as the file holds it: the nine fields padded with blanks to their widths.
QByteArray rec(const QList<QByteArray>& fields) {
    static const int widths[] = {6, 25, 30, 30, 30, 15, 15, 12, 4};
    QByteArray out;
    for (int i = 0; i < 9; ++i) out += fields.value(i).leftJustified(widths[i], ' ', true);
    return out;
}

// DL1ABC as the stand-in's QRZ page gives it, in the file's Latin-1.
QByteArray hans(const char* lat, const char* lon, const char* name = "Hans M\xfcller") {
    return rec({"DL1ABC", name, "Musterstra\xdf" "e 12", "10115 Berlin", "Germany", lat, lon, "A", "1961"});
}
const QString kHans = QString::fromUtf8("Hans M\u00fcller"), kStreet = QString::fromUtf8("Musterstra\u00dfe 12");

// "AB000", "AB010", ... (count calls), each with a name, each once unless copies says otherwise.
QByteArray generated(int count, const QMap<QByteArray, int>& copies = {}) {
    QByteArray out;
    for (int i = 0; i < count; ++i) {
        const QByteArray call = "AB" + QByteArray::number(i * 10).rightJustified(3, '0');
        out += rec({call, "Op " + call, "1 Street", "Town", "Land", "10", "20", "A", "1970"}).repeated(copies.value(call, 1));
    }
    return out;
}

QStringList callsOf(const QByteArray& file) {
    QStringList out;
    for (qsizetype i = 0; i + 167 <= file.size(); i += 167) out << QString::fromLatin1(file.mid(i, 6).trimmed());
    return out;
}

// Names the table row a failed check in a loop belongs to.
struct Row {
    QString name;
    ~Row() { if (QTest::currentTestFailed()) qWarning("in row \"%s\"", qPrintable(name)); }
};

// The calls listed, the count under them, the selected and the first visible row; what they should be.
QString listState(const Form26& f) {
    return QString("row %1 | top %2 | %3 | %4").arg(f.listIndex()).arg(f.topIndex())
        .arg(f.lblEntries->text(), f.calls->calls().join(','));
}
QString listed(const QStringList& calls, int row, int top) {
    return QString("row %1 | top %2 | Number of callsigns in database = %3 | %4").arg(row).arg(top)
        .arg(calls.size()).arg(calls.join(','));
}

// The call, [its nickname], the selected row and the enabled ones of add, delete, lookup: "ADL", "-" if not.
QString state(const Form26& f) {
    const auto on = [](const QPushButton* b, char c) { return QChar(b->isEnabled() ? c : '-'); };
    return QString("%1 [%2] row %3 ").arg(f.txtCall->text(), f.txtNickName->text()).arg(f.listIndex()) +
           on(f.cmdAddNewSite, 'A') + on(f.cmdDeleteSite, 'D') + on(f.cmdLookup, 'L');
}

// The texts of the ten boxes, in the form's order (the order they are made in).
QStringList shown(const Form26& f) {
    QStringList out;
    for (const QLineEdit* box : f.findChildren<QLineEdit*>(Qt::FindDirectChildrenOnly)) out << box->text();
    return out;
}
QStringList captions(const Form26& f) {
    return {f.cmdAddNewSite->text(), f.cmdDeleteSite->text(), f.cmdLookup->text()};
}
bool pictureGone(const Form26& f) {
    return f.Image1->isHidden() && f.picture().isNull() && f.Image1->pos() == Form26::kPictureHome;
}

void click(QWidget* w) { QTest::mouseClick(w, Qt::LeftButton); }
void clickRow(Form26& form, int row) {
    form.setTopIndex(row);
    QTest::mouseClick(form.lstCall->viewport(), Qt::LeftButton, {},
                      form.lstCall->visualRect(form.calls->index(row)).center());
}
bool settle() { return QTest::qWaitFor([] { return !QApplication::overrideCursor(); }, 10000); }


}  // namespace

class Form26Test : public QObject {
    Q_OBJECT

    QString data;
    ModuleValues g;
    QStringList nicknames;
    QList<int> beeps;
    std::unique_ptr<CallbookServer> server;
    QByteArray shipped;    // the call-sign file the program ships
    QStringList msgBoxes;  // message boxes shown: title, prompt, button; each closed with its button
    QTimer closer;

    QString callFile() const { return data + "/Norvane-DB.db"; }
    // What the file holds and the list shows; and what they should be.
    std::pair<QString, QByteArray> saved(const Form26& f) const { return {listState(f), readFile(callFile())}; }
    static std::pair<QString, QByteArray> expect(const QByteArray& file, int row, int top) {
        return {listed(callsOf(file), row, top), file};
    }
    void pointHostsAt(const CallbookServer& at) {
        for (const char* host : {"eHam", "QRZ", "QRZCQ", "Callook", "HamCall", "Pictures"})
            settings::SaveSetting({"Hosts", host}, at.url("/" + QString(host).toLower()));
        settings::SaveSetting({"Hosts", "TimeoutMs"}, "3000");
    }
    void serverLogin(const QString& services) {
        QNetworkAccessManager nam;
        std::unique_ptr<QNetworkReply> r(nam.get(QNetworkRequest(server->url("/_control/login?services=" + services))));
        QVERIFY(QSignalSpy(r.get(), &QNetworkReply::finished).wait(5000));
    }
    void cachePicture(const QString& call) {
        writeFile(data + "/images/qrzImages/" + call + ".jpg", readFile(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg"));
    }
    std::unique_ptr<Form26> open(const QString& call = {}) {
        auto form = std::make_unique<Form26>(g, nicknames);
        form->Form_Load();
        form->move(20, 20);
        form->show();
        if (!QTest::qWaitForWindowExposed(form.get())) qWarning("editor not exposed");
        form->txtCall->setText(call);
        return form;
    }

public:
    static void initMain() {
        static QTemporaryDir home;
        qputenv("HOME", home.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
        qputenv("XDG_DATA_HOME", (home.path() + "/data").toLocal8Bit());
        if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    }

private slots:
    void initTestCase() {
        qApp->setQuitOnLastWindowClosed(false);
        server = std::make_unique<CallbookServer>();
        QVERIFY(server->port() > 0);
        shipped = readFile(PX_SOURCE_DIR "/data/Norvane-DB.db");
        QCOMPARE(shipped.size(), 10 * 167);
        // The message box waits for its button: pressed here, after its texts are taken down.
        connect(&closer, &QTimer::timeout, this, [this] {
            for (QWidget* w : QApplication::topLevelWidgets()) {
                auto* box = qobject_cast<UniMsgBox*>(w);
                if (!box || !box->isVisible()) continue;
                msgBoxes << box->windowTitle() << box->lblPrompt->text() << box->cmd1->text();
                box->cmd1->click();
            }
        });
        closer.start(50);
    }

    void init() {
        data = qEnvironmentVariable("XDG_DATA_HOME") + "/Norvane";
        QDir(data).removeRecursively();
        QDir().mkpath(data + "/images/qrzImages");
        writeFile(callFile(), shipped);
        QFile::remove(qEnvironmentVariable("XDG_CONFIG_HOME") + "/PX Callsigns.conf");
        pointHostsAt(*server);
        serverLogin("eham,qrz,qrzcq,hamcall");
        g = ModuleValues();
        g.DataPath = data;
        LoadLanguageText(readFile(PX_SOURCE_DIR "/data/Languages/Norvane_English.Language"), g.Texts);
        g.ServiceNo = 1;  // opens on the second entry, "QRZ"
        g.ServiceName = "eHam";
        nicknames = QStringList{"PA3XYZ*Jan", "G4ABC*Ally"};
        beeps.clear();
        msgBoxes.clear();
        sound::SetListener([this](int kind, int hz, int) { if (kind == 1) beeps << hz; });
    }
    void cleanup() {
        QVERIFY(settle());
        QCOMPARE(msgBoxes, QStringList());  // none but those a test expects (and empties)
        sound::SetListener({});
    }

    void opensOnTheFile() {
        auto form = open();
        QCOMPARE(listState(*form), listed(callsOf(shipped), -1, 0));
        // Every text on the window, labels (all plain text) then buttons, in the order they are made.
        // The lookup caption is set with "callsign", then the service box's click puts in the (empty)
        // call: without a call, no doubled blank is left where it would be.
        QStringList texts{form->windowTitle()};
        for (QLabel* label : form->findChildren<QLabel*>()) {
            QCOMPARE(label->textFormat(), Qt::PlainText);
            texts << label->text();
        }
        for (QPushButton* button : form->findChildren<QPushButton*>()) texts << button->text();
        QCOMPARE(texts, (QStringList{"Call-sign database", "Call sign: ", "Name: ", "Nickname: ", "Address 1: ",
                                     "Address 2: ", "Country: ", "Latitude: ", "Longitude: ", "Class: ", "Year born: ",
                                     "Number of callsigns in database = 10",
                                     "Type a call sign, look it up on the internet or fill in the fields yourself, "
                                     "then add it to the database.",
                                     "", "", "Look up on QRZ.com", "Add callsign to the database", "Delete callsign",
                                     "Close"}));
        QCOMPARE(state(*form), QString(" [] row -1 ---"));
        QVERIFY(form->Label4->isHidden() && form->Image1->isHidden());
        QCOMPARE(form->lstCall->viewport()->height(),
                 Form26::kVisibleRows * form->lstCall->visualRect(form->calls->index(0)).height());
    }

    void serviceBoxOpensOneOnFromTheSavedNumber() {
        // Entry `saved` is shown, or none past the last entry (and then nothing changes).
        struct Case { int saved; QString shown, service; };
        for (const Case& c : {Case{0, "eHam", "1 eHam.net"}, Case{1, "QRZ", "2 QRZ.com"}, Case{2, "QRZCQ", "3 QRZCQ.com"},
                              Case{3, "CallLook", "4 Callook.info"}, Case{4, "HamCall", "5 HamCall.net"},
                              Case{5, "", "5 HamCall"}}) {
            const Row row{QString::number(c.saved)};
            g.ServiceNo = static_cast<int16_t>(c.saved);
            g.ServiceName = "HamCall";
            auto form = open();
            QCOMPARE(form->cboDB->count(), 5);
            QCOMPARE(form->cboDB->currentText(), c.shown);
            QCOMPARE(QString::number(g.ServiceNo) + " " + g.ServiceName, c.service);
            QTest::keyClicks(form->txtCall, "g4abc");
            QCOMPARE(form->cmdLookup->text(), "Look up G4ABC on " + c.service.section(' ', 1));
            // Without a service no lookup can be asked for, until one is chosen.
            QCOMPARE(form->cmdLookup->isEnabled(), !c.shown.isEmpty());
            form->cboDB->setCurrentIndex(2);
            QCOMPARE(QString::number(g.ServiceNo) + " " + g.ServiceName, QString("3 QRZCQ.com"));
            QCOMPARE(form->cmdLookup->text(), QString("Look up G4ABC on QRZCQ.com"));
            QVERIFY(form->cmdLookup->isEnabled());
        }
    }

    void addsANewCallThenUpdatesIt() {
        auto form = open();
        QTest::keyClicks(form->txtCall, "dl1abc");
        QCOMPARE(state(*form), QString("DL1ABC [] row -1 --L"));  // no name yet
        const QStringList fields{"DL1ABC", kHans, "", kStreet, "10115 Berlin", "Germany", "52.52", "13.405", "A", "1961"};
        for (int i = 1; i < 10; ++i) form->findChildren<QLineEdit*>(Qt::FindDirectChildrenOnly).at(i)->setText(fields.at(i));
        QCOMPARE(state(*form), QString("DL1ABC [] row -1 A-L"));
        click(form->cmdAddNewSite);
        QCOMPARE(saved(*form), expect(hans("52.52", "13.405") + shipped, 0, 0));  // sorts first
        // Selected as if clicked: the record as stored, every button on and naming the call.
        QCOMPARE(state(*form), QString("DL1ABC [] row 0 ADL"));
        QCOMPARE(captions(*form), (QStringList{"Add DL1ABC to the database", "Delete DL1ABC", "Look up DL1ABC on QRZ.com"}));
        QCOMPARE(shown(*form), fields);

        // The same call again: updated where it is, the year cut to the field.
        form->txtName->setText("Hans Mueller");
        form->txtYearBorn->setText("19610");
        click(form->cmdAddNewSite);
        QByteArray after = hans("52.52", "13.405", "Hans Mueller") + shipped;
        QCOMPARE(readFile(callFile()), after);

        // A call of the shipped file typed anew and given a name: rewritten as the form holds it.
        form->txtCall->clear();
        QTest::keyClicks(form->txtCall, "g4abc");
        QTest::keyClicks(form->txtName, "Alice Changed");
        click(form->cmdAddNewSite);
        QCOMPARE(saved(*form), expect(after.replace(3 * 167, 167, rec({"G4ABC", "Alice Changed"})), 3, 0));
    }

    void aNewCallIsScrolledIntoView() {
        // records -1: no file at all, which the first add makes.
        struct Case { int records; QString call; int scrolledBefore, index, top; };
        for (const Case& c : {Case{40, "AB005", 0, 1, 0}, Case{40, "AB135", 0, 14, 0}, Case{40, "AB145", 0, 15, 1},
                              Case{40, "AB255", 0, 26, 12}, Case{40, "AB395", 0, 40, 26}, Case{40, "AA000", 20, 0, 0},
                              Case{40, "AB035", 20, 4, 0}, Case{-1, "K0XYZ", 0, 0, 0}}) {
            const Row row{c.call};
            QByteArray file = generated(c.records);
            if (c.records < 0) QVERIFY(QFile::remove(callFile()));
            else writeFile(callFile(), file);
            auto form = open();
            form->setTopIndex(c.scrolledBefore);
            QCOMPARE(listState(*form), listed(callsOf(file), -1, c.scrolledBefore));
            form->txtCall->setText(c.call);
            form->txtName->setText("New");
            click(form->cmdAddNewSite);
            QCOMPARE(saved(*form), expect(file.insert(c.index * 167, rec({c.call.toLatin1(), "New"})), c.index, c.top));
        }
    }

    void deleteRemovesEveryCopyAndKeepsTheTopRow() {
        writeFile(callFile(), generated(40, {{"AB200", 2}}));
        cachePicture("AB200");
        auto form = open();
        QCOMPARE(form->lblEntries->text(), QString("Number of callsigns in database = 41"));
        clickRow(*form, 20);
        form->setTopIndex(10);
        QCOMPARE(state(*form), QString("AB200 [] row 20 ADL"));
        QVERIFY(form->Image1->isVisible());
        click(form->cmdDeleteSite);
        QCOMPARE(saved(*form), expect(generated(40, {{"AB200", 0}}), -1, 10));
        QCOMPARE(shown(*form), QStringList(10, QString()));
        QCOMPARE(state(*form), QString(" [] row -1 ---"));
        QVERIFY(pictureGone(*form));

        // From the last screen: the list keeps as near to it as it still reaches.
        form->setTopIndex(24);
        QCOMPARE(form->topIndex(), 24);
        QTest::keyClicks(form->txtCall, "ab390");
        QCOMPARE(form->listIndex(), 38);
        click(form->cmdDeleteSite);
        QCOMPARE(saved(*form), expect(generated(40, {{"AB200", 0}, {"AB390", 0}}), -1, 23));
    }

    void aFileThatCannotBeWrittenStaysAsItWasAndSaysSo() {
        // The new contents go to "temp.db" first: a folder of that name stops every write.
        QVERIFY(QDir().mkpath(data + "/temp.db"));
        auto form = open();
        QTest::keyClicks(form->txtCall, "dl1abc");
        QTest::keyClicks(form->txtName, "Hans");
        click(form->cmdAddNewSite);
        QCOMPARE(saved(*form), expect(shipped, -1, 0));
        QVERIFY(form->Label4->isVisible() && !form->Label4->text().isEmpty());
        QCOMPARE(form->txtName->text(), QString("Hans"));  // the form is still there to try again

        form->txtCall->clear();
        QTest::keyClicks(form->txtCall, "g4abc");
        QVERIFY(form->Label4->isHidden());
        click(form->cmdDeleteSite);
        QCOMPARE(saved(*form), expect(shipped, -1, 0));
        QVERIFY(form->Label4->isVisible() && !form->Label4->text().isEmpty());
    }

    void clickingACallShowsItsRecordThenTheCallBoxAndMouseRules() {
        cachePicture("G4ABC");
        nicknames = QStringList{"W1XYZABC*Long", "W1XYZ*Short", "ZZ9ABC*Zed", "g4abc*Ally"};
        auto form = open();
        clickRow(*form, 2);
        QCOMPARE(shown(*form), (QStringList{"G4ABC", "Alice Example", "Ally", "1 Sample Lane", "Exampleton EX1 2AB",
                                            "England", "51.5072", "-0.1276", "Full", "1970"}));
        QCOMPARE(form->LookupCall, QString("G4ABC"));
        const QStringList g4abcCaptions{"Add G4ABC to the database", "Delete G4ABC", "Look up G4ABC on QRZ.com"};
        QCOMPARE(captions(*form), g4abcCaptions);
        QCOMPARE(state(*form), QString("G4ABC [Ally] row 2 ADL"));
        // 240 x 160: as wide as the area, centred on 356, 147.
        QVERIFY(form->Image1->isVisible());
        QCOMPARE(form->Image1->geometry(), QRect(193, 39, 326, 217));
        QCOMPARE(form->picture().size(), QSize(240, 160));

        // The row already selected, clicked again: the record is read again.
        form->txtName->setText("edited");
        clickRow(*form, 2);
        QCOMPARE(form->txtName->text(), QString("Alice Example"));
        QTest::keyClick(form->lstCall, Qt::Key_Down);
        QCOMPARE(form->txtCall->text() + " " + form->txtName->text(), QString("JA1XYZ Taro Rei"));
        // Another call without a picture: the old one goes.
        clickRow(*form, 0);
        QCOMPARE(state(*form), QString("DL1XYZ [] row 0 ADL"));
        QVERIFY(pictureGone(*form));

        // Back to the picture; the left button shows it at its natural size.
        clickRow(*form, 2);
        QVERIFY(form->Image1->isVisible());
        QTest::mouseClick(form->Image1, Qt::LeftButton, {}, QPoint(5, 5));
        auto* enlarged = form->findChild<QWidget*>("Form13");
        QVERIFY(enlarged && enlarged->isVisible());
        QCOMPARE(enlarged->size(), QSize(240, 160));
        enlarged->close();

        // Any key in the call box: the eight record boxes, the notice and the picture are emptied.
        form->txtLat->setText("51.5*");  // a notice up
        QVERIFY(form->Label4->isVisible() && form->Image1->isVisible() && !form->editing);
        QTest::keyClick(form->txtCall, Qt::Key_X);
        QVERIFY(form->editing);
        QCOMPARE(shown(*form), QStringList{"G4ABCX"} + QStringList(9, QString()));
        QCOMPARE(state(*form), QString("G4ABCX [] row -1 --L"));
        QVERIFY(form->Label4->text().isEmpty() && form->Label4->isHidden() && pictureGone(*form));

        // Backspace is a key too; G4ABC found again, and its nickname whatever its case.
        form->txtName->setText("kept?");
        QTest::keyClick(form->txtCall, Qt::Key_Backspace);
        QCOMPARE(form->txtName->text(), QString());
        QCOMPARE(state(*form), QString("G4ABC [Ally] row 2 -DL"));  // no name
        QCOMPARE(captions(*form), g4abcCaptions);
        QTest::keyClicks(form->txtName, "A");
        QCOMPARE(state(*form), QString("G4ABC [Ally] row 2 ADL"));

        // Lower case typed comes out upper case; digits and signs as typed.
        form->txtCall->clear();
        QTest::keyClicks(form->txtCall, "w1x/yz");
        QCOMPARE(state(*form), QString("W1X/YZ [] row -1 --L"));
        // Pasted text is not upper-cased, and the exact search ignores case. The nickname goes by
        // prefix: the first entry that begins with the call, even a longer call's.
        form->txtCall->setText("w1xyz");
        QCOMPARE(state(*form), QString("w1xyz [Long] row 8 -DL"));
        form->txtCall->setText("ZZ9");  // no selection, no nickname
        QCOMPARE(state(*form), QString("ZZ9 [] row -1 --L"));
        form->txtCall->setText("");
        QCOMPARE(state(*form), QString(" [] row -1 ---"));

        // Moving the mouse over the list gives it the focus (for the wheel).
        form->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(form.get()));
        form->txtCall->setFocus();
        QTRY_VERIFY(form->txtCall->hasFocus());
        QTest::mouseMove(form->lstCall->viewport(), QPoint(10, 10));
        QTRY_VERIFY(form->lstCall->hasFocus());
    }

    void coordinateNotice() {
        struct Case { const char* box; QString text; bool shown; };
        for (const Case& c : {Case{"txtLat", "52.5*", true}, Case{"txtLon", "13.4 *", true}, Case{"txtLat", "*", true},
                              Case{"txtLat", "52.5", false}, Case{"txtLon", "1*3", false},
                              Case{"txtClass", "A*", false}}) {
            const Row row{c.box + (" " + c.text)};
            g.ServiceNo = 3;  // the fourth entry: "CallLook", named Callook.info
            auto form = open();
            form->findChild<QLineEdit*>(c.box)->setText(c.text);
            QCOMPARE(form->Label4->isVisible(), c.shown);
            QCOMPARE(form->Label4->text(), c.shown ? QString("* Coordinates not available from Callook.info\n"
                                                             "    Derived from address or zipcode.") : QString());
        }
    }

    void lookupStoresTheStationAndShowsItsPicture() {
        // A second stand-in, whose QRZ page for DL1ABC has no position.
        QTemporaryDir pages;
        QVERIFY(QFile::link(PX_SOURCE_DIR "/tests/fixtures/pages/qrz", pages.path() + "/qrz"));
        writeFile(pages.path() + "/routes.json", R"({"qrz": {"DL1ABC": "noposition.html"}})");
        CallbookServer noPosition({"--pages", pages.path()});
        QVERIFY(noPosition.port() > 0);

        // Without a position from the service, a position the file knows for the call is kept.
        struct Case { const char* name; bool position; QByteArray before, after; QString lat, lon; };
        const QByteArray zero = hans("0", "0") + shipped;
        for (const Case& c : {Case{"found", true, shipped, hans("52.52", "13.405") + shipped, "52.52", "13.405"},
                              Case{"known: kept", false, rec({"DL1ABC", "Old Name", "", "", "", "50.1", "8.6"}) + shipped,
                                   hans("50.1", "8.6") + shipped, "50.1", "8.6"},
                              Case{"stored as 0, 0: none", false, rec({"DL1ABC", "Old Name", "", "", "", "0", "0"}) + shipped,
                                   zero, "0", "0"},
                              Case{"not in the file", false, shipped, zero, "0", "0"}}) {
            const Row row{c.name};
            pointHostsAt(c.position ? *server : noPosition);
            writeFile(callFile(), c.before);
            g.ServiceNo = 1;  // each opening moves it on by one
            g.OtherLat = 12.5;  // the main window's station
            g.OtherLon = -3.25;
            auto form = open("DL1ABC");
            click(form->cmdLookup);
            QVERIFY(QApplication::overrideCursor());
            QTRY_COMPARE_WITH_TIMEOUT(form->txtName->text(), kHans, 10000);
            QCOMPARE(shown(*form), (QStringList{"DL1ABC", kHans, "", kStreet, "10115 Berlin", "Germany", c.lat, c.lon,
                                                "A", "1961"}));
            // The position the service gave, not the one kept; the editor's own, so the main
            // window's station keeps its place.
            QCOMPARE(form->OtherLat, c.position ? 52.52 : 0.0);
            QCOMPARE(form->OtherLon, c.position ? 13.405 : 0.0);
            QCOMPARE(g.OtherLat, 12.5);
            QCOMPARE(g.OtherLon, -3.25);
            QCOMPARE(saved(*form), expect(c.after, 0, 0));
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
            click(form->cmdLookup);
            QTRY_VERIFY_WITH_TIMEOUT(!QApplication::overrideCursor() && form->lookUp->RequestKind == "GetPicture", 10000);
            QTRY_COMPARE_WITH_TIMEOUT(form->lookUp->PendingDownloads, QString(QChar(0)), 10000);
            QCOMPARE(readFile(callFile()), c.after);
        }
    }

    void lookupFailures() {
        // No station, a login wanted or nothing like a call in it: said under the picture, with a beep.
        // A server error or nobody listening: said in a message box.
        const QStringList box{"", "PX callsigns", "QRZ cannot be reached. Check your internet connection.", "Ok"};
        struct Case { QString call, loggedIn, qrzHost; QStringList said; QString enabled; QList<int> beeps; };
        for (const Case& c : {Case{"XX9XYZ", "qrz", "", {"XX9XYZ not found on QRZ.com"}, "--L", {700}},
                              Case{"DL1ABC", "", "", {"DL1ABC not found on QRZ.com"}, "--L", {700}},
                              Case{"ABC", "qrz", "", {"ABC not found on QRZ.com"}, "--L", {700}},
                              Case{"ZZ500", "qrz", "", box, "A-L", {}},
                              Case{"DL1ABC", "qrz", "http://127.0.0.1:9", box, "A-L", {}}}) {
            const Row row{c.call + " " + c.loggedIn + " " + c.qrzHost};
            serverLogin(c.loggedIn);
            if (!c.qrzHost.isEmpty()) settings::SaveSetting({"Hosts", "QRZ"}, c.qrzHost);
            beeps.clear();
            g.ServiceNo = 1;  // each opening moves it on by one
            auto form = open(c.call);
            form->txtName->setText("Someone");
            click(form->cmdLookup);
            QTRY_VERIFY_WITH_TIMEOUT(form->Label4->isVisible() || !msgBoxes.isEmpty(), 10000);
            QVERIFY(settle());
            QCOMPARE(QStringList{form->Label4->text()} + msgBoxes, c.said);
            QCOMPARE(form->Label4->isVisible(), !c.said.first().isEmpty());
            msgBoxes.clear();
            QCOMPARE(state(*form), c.call + " [] row -1 " + c.enabled);
            QCOMPARE(beeps, c.beeps);
            QCOMPARE(readFile(callFile()), shipped);
        }
    }

    // The typed call is cleaned before a service is asked, and a text with no call in it asks
    // none. A page without a station leaves the form and the file as they were, even right after
    // a page that held one; an answer for a call the user has left changes nothing.
    void lookupsAskOnlyForCallsAndKeepOnlyStations() {
        struct Case { int service; QString first, typed; QStringList requests; QString notice; };
        const QString hamcall = "/hamcall/call?callsign=";
        for (const Case& c : {
                 Case{1, "", "HELLO", {}, "HELLO not found on QRZ.com"},
                 Case{1, "", "dl1abcde", {}, "dl1abcde not found on QRZ.com"},
                 Case{1, "", "cq de", {}, "cq de not found on QRZ.com"},
                 Case{1, "", "ea8/dl1abc/p", {"/qrz/db/DL1ABC", "/pictures/c/dl1abc/dl1abc.jpg"}, ""},
                 Case{4, "DL1ABC", "XX9XYZ", {hamcall + "XX9XYZ"}, "XX9XYZ not found on HamCall.net"},
                 Case{3, "W1XYZ", "XX9XYZ", {"/callook/XX9XYZ"}, "XX9XYZ not found on Callook.info"}}) {
            const Row row{c.typed};
            g.ServiceNo = static_cast<int16_t>(c.service);  // the box shows the one after it
            auto form = open(c.first);
            if (!c.first.isEmpty()) {
                click(form->cmdLookup);
                QTRY_VERIFY_WITH_TIMEOUT(!form->txtName->text().isEmpty(), 10000);
                QVERIFY(settle());
            }
            const QByteArray before = readFile(callFile());
            server->takeRequests();
            form->txtCall->setText(c.typed);
            const QStringList boxes = shown(*form);
            click(form->cmdLookup);
            QTRY_VERIFY_WITH_TIMEOUT(form->Label4->isVisible() || shown(*form) != boxes, 10000);
            QVERIFY(settle());
            QStringList requests;
            QTRY_COMPARE_WITH_TIMEOUT(requests += server->takeRequests(), c.requests, 5000);
            QCOMPARE(form->Label4->text(), c.notice);
            if (c.notice.isEmpty()) continue;
            QCOMPARE(readFile(callFile()), before);
            QCOMPARE(shown(*form), boxes);
        }

        // Asked about ZZ1HNG, which never answers, then a click on a call in the list.
        g.ServiceNo = 1;
        serverLogin("qrz");
        auto form = open("ZZ1HNG");
        click(form->cmdLookup);
        clickRow(*form, 2);
        const QStringList g4abc = shown(*form);
        QTest::qWait(3500);  // past the timeout of 3 s
        QCOMPARE(shown(*form), g4abc);
        QVERIFY(form->Label4->isHidden());
        QCOMPARE(msgBoxes, QStringList());
    }

    void nicknamesHandedBackOnClosing() {
        // The box shows `shown` for the typed call; the user leaves `nickname` in it ("-": untouched).
        struct Case { const char* name; QStringList before; QString call, shown, nickname; QStringList after; bool changed; };
        const QStringList two{"G4ABC*Ally", "PA3XYZ*Jan"};
        for (const Case& c : {
                 Case{"new entry", {"PA3XYZ*Jan"}, "G4ABC", "", "Ally", {"PA3XYZ*Jan", "G4ABC*Ally"}, true},
                 Case{"changed, goes last", two, "G4ABC", "Ally", "Alice", {"PA3XYZ*Jan", "G4ABC*Alice"}, true},
                 Case{"emptied", two, "G4ABC", "Ally", "", {"PA3XYZ*Jan", "G4ABC*"}, true},
                 Case{"untouched stays in place", two, "G4ABC", "Ally", "-", two, false},
                 Case{"none and none given", two, "K0XYZ", "", "-", two, false},
                 Case{"a call not in the file", two, "ZZ1ZZ", "", "Zed", two + QStringList{"ZZ1ZZ*Zed"}, true},
                 // By prefix: the shorter call takes over the longer call's entry.
                 Case{"prefix", {"W1XYZABC*Long", "K1*x"}, "W1XYZ", "Long", "-", {"K1*x", "W1XYZ*Long"}, true},
                 Case{"no call", two, "", "", "Lost", two, false}}) {
            const Row row{c.name};
            nicknames = c.before;
            auto form = open();
            QSignalSpy unloaded(form.get(), &Form26::Unloaded);
            QTest::keyClicks(form->txtCall, c.call);
            QCOMPARE(form->txtNickName->text(), c.shown);
            if (c.nickname != "-") form->txtNickName->setText(c.nickname);
            QCOMPARE(nicknames, c.before);  // nothing until the window closes
            click(form->cmdClose);
            QVERIFY(!form->isVisible());
            form->close();  // once only
            QCOMPARE(nicknames, c.after);
            QCOMPARE(unloaded.size(), 1);
            QCOMPARE(unloaded.at(0).at(0).toBool(), c.changed);
        }
    }

    void captionsWithoutACall() {
        struct Case { const char* text; QString call, caption; };
        for (const Case& c : {Case{"Look up ??? on ***", "", "Look up on ***"},
                              Case{"Look up ??? on ***", "G4ABC", "Look up G4ABC on ***"},
                              Case{"??? bei *** nachschlagen", "", "bei *** nachschlagen"},
                              Case{"*** \u3067 ??? \u3092\u691c\u7d22", "", "*** \u3067 \u3092\u691c\u7d22"},
                              Case{"Delete ???", "", "Delete"}, Case{"???", "", ""}, Case{"x???y", "", "xy"},
                              Case{"a ??? b ??? c", "", "a b c"}, Case{"Look up ??? on", " ", "Look up   on"}}) {
            const Row row{c.text};
            QCOMPARE(ReplaceCall(QString::fromUtf8(c.text), c.call), c.caption);
        }
    }

    // Every caption and text shows whole in each of the eight languages, in the window as it
    // opens, with a call typed on each service, and with a call clicked; the picture box stays
    // where the picture is centred.
    void textsFitInEveryLanguage() {
        for (const char* language : {"English", "Spanish", "German", "French", "Dutch", "Polish", "Japanese", "Russian"}) {
            const Row row{language};
            g.Texts = LanguageTexts();
            LoadLanguageText(readFile(PX_SOURCE_DIR "/data/Languages/Norvane_English.Language"), g.Texts);
            QCOMPARE(LoadLanguageText(readFile(PX_SOURCE_DIR "/data/Languages/Norvane_" + QString(language) + ".Language"),
                                      g.Texts).status, LanguageLoad::Ok);
            g.ServiceNo = 1;
            auto form = open();
            QCOMPARE(form->picArea->geometry(), Form26::kPictureArea);
            QCOMPARE(Form26::kPictureArea.center() + QPoint(1, 1), Form26::kPictureCentre);
            QCOMPARE(form->lstCall->geometry().right() + 8 + 1, Form26::kPictureArea.left());
            QCOMPARE(clippedTexts(*form), QStringList());
            const QSize size = form->size();
            QTest::keyClicks(form->txtCall, "dl1abc");
            for (int service = 0; service < 5; ++service) {
                form->cboDB->setCurrentIndex(service);
                QCOMPARE(clippedTexts(*form), QStringList());
            }
            clickRow(*form, 2);
            form->txtLat->setText("51.5*");
            QVERIFY(form->Label4->isVisible());
            QCOMPARE(clippedTexts(*form), QStringList());
            QCOMPARE(form->size(), size);  // the window kept its size throughout
        }
    }

    void pictureFitAndListSearches() {
        struct Fit { const char* name; QSize natural; QRect placed; };
        // 4:3 and 3:2 pictures are placed by the lookup and click tests.
        for (const Fit& c : {Fit{"tall", {120, 200}, {283, 25, 146, 244}}, Fit{"wide", {880, 200}, {193, 110, 326, 74}},
                             Fit{"the area's own shape", {326, 244}, {193, 25, 326, 244}},
                             Fit{"small, enlarged", {44, 24}, {193, 58, 326, 178}},
                             Fit{"a line", {4000, 1}, {193, 147, 326, 1}}, Fit{"empty", {0, 0}, {}}}) {
            const Row row{c.name};
            QCOMPARE(FitPicture(c.natural), c.placed);
        }
        const QStringList list{"DL1XYZ", "G4ABC", "g4abc", "W1XYZ", "W1XYZA"};
        struct Search { const char* text; int exact, prefix; };
        for (const Search& c : {Search{"G4ABC", 1, 1}, Search{"g4abc", 1, 1}, Search{"W1XYZ", 3, 3},
                                Search{"w1xyza", 4, 4}, Search{"W1", -1, 3}, Search{"D", -1, 0}, Search{"", -1, -1},
                                Search{"W1XYZAB", -1, -1}}) {
            const Row row{c.text};
            QCOMPARE(FindStringExact(list, c.text), c.exact);
            QCOMPARE(FindString(list, c.text), c.prefix);
        }
    }
};

QTEST_MAIN(Form26Test)
#include "form26_test.moc"
