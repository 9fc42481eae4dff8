// The message box's layout, icons, sounds and results.
#include "ui/beep.h"
#include "ui/language.h"
#include "ui/unimsgbox.h"
#include "fits.h"
#include "wmcheck.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

using Tones = QList<QPair<int, int>>;  // (kind, hz)

struct Box {
    double points; int style; QString prompt;   // style: the buttons plus the icon
    QSize size; int labelHeight; QRect button;  // button: the right slot's left, and every button's top and size
    QList<int> lefts;                           // cmd1, cmd2, cmd3; -1 hidden
    QString image; QRect place; Tones tones;    // the icon label shown ("" none), where, and the tones
};
Q_DECLARE_METATYPE(Box)

class UniMsgBoxTest : public QObject {
    Q_OBJECT

    Tones beeps;

    static void setFontSize(double points) { QFont f; f.setPointSizeF(points); QApplication::setFont(f, "QMessageBox"); }

private slots:
    void init() { sound::SetListener([this](int kind, int hz, int) { beeps.append({kind, hz}); }); }
    void cleanup() { sound::SetListener({}); beeps.clear(); }

    void layoutIconAndSound_data() {
        QTest::addColumn<Box>("c");
        const QRect small{365, 30, 70, 30}, mid{350, 25, 85, 32}, large{335, 20, 100, 35};
        const QList<int> one{365, -1, -1}, two{255, 350, -1}, three{225, 335, 115};
        QTest::newRow("8 pt, information")
            << Box{8, 64, "Saved.", {445, 181}, 21, small, one, "imgInformation", {10, 30, 40, 40}, {{0, 64}}};
        QTest::newRow("critical") << Box{8, 16, "x", {445, 181}, 21, small, one, "imgCritical", {15, 25, 48, 48}, {{0, 16}}};
        QTest::newRow("question") << Box{8, 32, "x", {445, 181}, 21, small, one, "imgQuestion", {15, 25, 48, 48}, {}};
        QTest::newRow("no icon") << Box{8, 0, "x", {445, 181}, 21, small, one, "", {}, {}};
        QTest::newRow("9 pt, two buttons, two lines") << Box{9, 4, "Delete?\r\nSure", {445, 202}, 42, mid, two, "", {}, {}};
        QTest::newRow("11.5 pt, style 5") << Box{11.5, 5, "a", {445, 181}, 21, mid, two, "", {}, {}};
        QTest::newRow("12 pt, three buttons, three lines, exclamation")
            << Box{12, 2 + 48, "a\r\nb\r\nc", {445, 223}, 63, large, three, "imgExclamation", {10, 10, 50, 50}, {{0, 48}}};
        QTest::newRow("14 pt, style 3") << Box{14, 3, "a", {445, 181}, 21, large, three, "", {}, {}};
    }

    void layoutIconAndSound() {
        QFETCH(Box, c);
        setFontSize(c.points);
        UniMsgBox m;
        m.Prepare(nullptr, c.prompt, c.style, "PX callsigns", "Yes", "No", "Cancel");
        QCOMPARE(m.size(), c.size);
        QCOMPARE(m.windowTitle(), QString("PX callsigns"));
        QCOMPARE(m.lblPrompt->text(), QString(c.prompt).replace("\r\n", "\n"));
        QCOMPARE(m.lblPrompt->geometry(), QRect(85, 30, UniMsgBox::kPromptWidth, c.labelHeight));
        QCOMPARE(m.pic1->geometry(), QRect(0, c.size.height() - 70, c.size.width(), 70));
        QCOMPARE(UniMsgBoxRightSlot(), c.button.left());
        QList<QRect> shown, expected;  // an empty rectangle for a hidden button
        for (QPushButton* b : {m.cmd1, m.cmd2, m.cmd3}) shown << (b->isHidden() ? QRect() : b->geometry());
        for (int left : c.lefts) expected << (left < 0 ? QRect() : c.button.translated(left - c.button.left(), 0));
        QCOMPARE(shown, expected);
        for (QLabel* l : {m.imgCritical, m.imgQuestion, m.imgExclamation, m.imgInformation}) {
            QCOMPARE(!l->isHidden(), l->objectName() == c.image);
            if (l->objectName() == c.image) QCOMPARE(l->geometry(), c.place);
        }
        QCOMPARE(beeps, c.tones);
    }

    // The box's outer size is the rule's: with a frame, the inside is smaller by it, and the strip
    // and its buttons follow the inside.
    void insideIsTheOuterSizeLessTheFrame() {
        setFontSize(8);
        struct Case { QMargins frame; QSize inside; int slot; };
        for (const Case& c : {Case{{}, {445, 181}, 365}, Case{{1, 24, 1, 5}, {443, 152}, 363},
                              Case{{4, 30, 4, 4}, {437, 147}, 357}}) {
            UniMsgBox m;
            m.Prepare(nullptr, "x", 1, "t", "Yes", "No");
            QCOMPARE(m.outerSize(), QSize(445, 181));
            m.fitFrame(c.frame);
            QCOMPARE(m.size(), c.inside);
            QCOMPARE(m.pic1->geometry(), QRect(0, c.inside.height() - 70, c.inside.width(), 70));
            QCOMPARE(UniMsgBoxRightSlot(), c.slot);
            QCOMPARE(m.cmd2->geometry(), QRect(c.slot, 30, 70, 30));
            QCOMPARE(m.cmd1->geometry(), QRect(c.slot - 80, 30, 70, 30));
        }
    }

    // Under a window manager the frame the box opens with has the rule's size.
    void framedBoxHasTheOuterSize() {
        REQUIRE_WINDOW_MANAGER();
        setFontSize(9);
        UniMsgBox m;
        m.Prepare(nullptr, "Delete?\r\nSure", 4, "PX callsigns", "Yes", "No");
        m.show();
        QVERIFY(framed(&m));
        QTRY_COMPARE(m.frameGeometry().size(), QSize(445, 202));
        QVERIFY(m.size().width() < 445 && m.size().height() < 202);
        QCOMPARE(m.cmd2->geometry().right(), m.width() - 1 - 10);  // 10 pixels from the strip's right edge
        QVERIFY(whollyOnAScreen(m.frameGeometry()));
    }

    // A prompt longer than the label's designed width widens the box; in every language the
    // editor's message and its button show whole.
    void promptsFitInEveryLanguage() {
        setFontSize(9);
        for (const char* language : {"English", "Spanish", "German", "French", "Dutch", "Polish", "Japanese", "Russian"}) {
            LanguageTexts t;
            QVERIFY2(LoadLanguage(language, PX_SOURCE_DIR "/data", t).status == LanguageLoad::Ok, language);
            UniMsgBox m;
            const QString prompt = "CallLook " + t.ServiceUnreachable;
            m.Prepare(nullptr, prompt, 64, "PX callsigns", "Ok");
            QVERIFY2(clippedTexts(m).isEmpty(), qPrintable(language + (": " + clippedTexts(m).join(" | "))));
            const int needs = m.lblPrompt->fontMetrics().horizontalAdvance(prompt);
            QVERIFY(m.lblPrompt->width() >= needs && m.lblPrompt->width() <= std::max(needs + 4, UniMsgBox::kPromptWidth));
            QCOMPARE(m.outerSize(), QSize(m.lblPrompt->width() + 145, 21 + 160));
        }
    }

    void resultsPerButton() {
        for (const auto& [index, expected] : QList<QPair<int, int>>{{0, 7}, {1, 6}, {2, 2}, {-1, 0}}) {  // -1: closed
            UniMsgBox m;
            m.Prepare(nullptr, "x", 2, "t", "A", "B", "C");
            QTimer::singleShot(0, &m, [&m, i = index] { i < 0 ? m.reject() : QList{m.cmd1, m.cmd2, m.cmd3}[i]->click(); });
            m.exec();
            QCOMPARE(m.result(), expected);
        }
        QTimer::singleShot(0, [] { qobject_cast<UniMsgBox*>(QApplication::activeModalWidget())->cmd1->click(); });
        QCOMPARE(ShowUniMsgBox(nullptr, "Saved", 64, "PX callsigns", "Ok"), 7);  // the whole call
    }

    void centredOverTheOwnerAndKeptOnScreen() {
        setFontSize(8);
        const QRect desk = QGuiApplication::primaryScreen()->virtualGeometry();
        QWidget owner;
        for (const auto& [place, at, expected] : QList<std::tuple<QRect, QPoint, QPoint>>{
                 {{100, 100, 645, 381}, {}, {200, 200}},  // centred
                 {{-500, -300, 100, 100}, {}, {0, 0}},    // negatives become 0
                 {{desk.right() - 50, desk.bottom() - 50, 100, 100}, {}, {desk.right() + 1 - 445, desk.bottom() + 1 - 181}},
                 {{100, 100, 645, 381}, {33, 44}, {33, 44}}}) {  // placed by the caller
            owner.setGeometry(place);
            UniMsgBox m;
            m.Prepare(&owner, "x", 0, "t", "OK", "", "", "", at.x(), at.y());
            QCOMPARE(m.pos(), expected);
        }
    }
};

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    UniMsgBoxTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "unimsgbox_test.moc"
