// The message box's layout, sounds and results.
#include "ui/beep.h"
#include "ui/unimsgbox.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

class UniMsgBoxTest : public QObject {
    Q_OBJECT

    QList<QPair<int, int>> beeps;  // (kind, hz)

    static void setMessageFontSize(double points) {
        QFont f = QApplication::font();
        f.setPointSizeF(points);
        QApplication::setFont(f, "QMessageBox");
    }

private slots:
    void init() {
        beeps.clear();
        sound::SetListener([this](int kind, int hz, int) { beeps.append({kind, hz}); });
    }
    void cleanup() { sound::SetListener({}); }

    void layoutByFontSizeAndStyle_data() {
        QTest::addColumn<double>("points");
        QTest::addColumn<int>("buttons");
        QTest::addColumn<QString>("prompt");
        // expected: box size, label height, button top/width/height, and each button's left (-1 hidden)
        QTest::addColumn<QSize>("box");
        QTest::addColumn<int>("labelHeight");
        QTest::addColumn<QRect>("button");  // left of the right slot, top, width, height
        QTest::addColumn<QList<int>>("lefts");  // cmd1, cmd2, cmd3
        QTest::newRow("8 pt, one button, one line") << 8.0 << 64 << "Saved." << QSize(445, 181) << 21
                                                    << QRect(365, 30, 70, 30) << QList<int>{365, -1, -1};
        QTest::newRow("9 pt, two buttons, two lines") << 9.0 << 4 << "Delete?\r\nSure" << QSize(445, 202) << 42
                                                      << QRect(350, 25, 85, 32) << QList<int>{255, 350, -1};
        QTest::newRow("11.5 pt, style 5") << 11.5 << 5 << "a" << QSize(445, 181) << 21 << QRect(350, 25, 85, 32)
                                          << QList<int>{255, 350, -1};
        QTest::newRow("12 pt, three buttons, three lines") << 12.0 << 2 + 48 << "a\r\nb\r\nc" << QSize(445, 223) << 63
                                                           << QRect(335, 20, 100, 35) << QList<int>{225, 335, 115};
        QTest::newRow("style 3") << 14.0 << 3 << "a" << QSize(445, 181) << 21 << QRect(335, 20, 100, 35)
                                 << QList<int>{225, 335, 115};
    }

    void layoutByFontSizeAndStyle() {
        QFETCH(double, points);
        QFETCH(int, buttons);
        QFETCH(QString, prompt);
        QFETCH(QSize, box);
        QFETCH(int, labelHeight);
        QFETCH(QRect, button);
        QFETCH(QList<int>, lefts);
        setMessageFontSize(points);
        UniMsgBox m;
        m.Prepare(nullptr, prompt, buttons, "PX callsigns", "Yes", "No", "Cancel");
        QCOMPARE(m.size(), box);
        QCOMPARE(m.lblPrompt->geometry(), QRect(85, 30, UniMsgBox::kPromptWidth, labelHeight));
        QCOMPARE(m.pic1->geometry(), QRect(0, box.height() - 70, box.width(), 70));
        QCOMPARE(UniMsgBoxRightSlot(), button.left());
        const QList<QPushButton*> all{m.cmd1, m.cmd2, m.cmd3};
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(!all[i]->isHidden(), lefts[i] >= 0);
            if (lefts[i] >= 0) {
                QCOMPARE(all[i]->geometry(), QRect(lefts[i], button.top(), button.width(), button.height()));
            }
        }
        // The rightmost button ends 10 pixels from the strip's edge.
        QCOMPARE(m.cmd2->isHidden() ? m.cmd1->geometry().right() + 1 : m.cmd2->geometry().right() + 1, box.width() - 10);
        QCOMPARE(m.windowTitle(), QString("PX callsigns"));
        QCOMPARE(m.lblPrompt->text(), QString(prompt).replace("\r\n", "\n"));
    }

    void iconsAndSounds_data() {
        QTest::addColumn<int>("icon");
        QTest::addColumn<QString>("image");
        QTest::addColumn<QRect>("place");
        QTest::addColumn<int>("beep");  // 0: none
        QTest::newRow("critical") << 16 << "imgCritical" << QRect(15, 25, 48, 48) << 16;
        QTest::newRow("question") << 32 << "imgQuestion" << QRect(15, 25, 48, 48) << 0;
        QTest::newRow("exclamation") << 48 << "imgExclamation" << QRect(10, 10, 50, 50) << 48;
        QTest::newRow("information") << 64 << "imgInformation" << QRect(10, 30, 40, 40) << 64;
        QTest::newRow("none") << 0 << "" << QRect() << 0;
    }

    void iconsAndSounds() {
        QFETCH(int, icon);
        QFETCH(QString, image);
        QFETCH(QRect, place);
        QFETCH(int, beep);
        UniMsgBox m;
        m.Prepare(nullptr, "x", icon, "t", "OK");
        for (QLabel* l : {m.imgCritical, m.imgQuestion, m.imgExclamation, m.imgInformation}) {
            QCOMPARE(!l->isHidden(), l->objectName() == image);
            if (l->objectName() == image) {
                QCOMPARE(l->geometry(), place);
            }
        }
        const QList<QPair<int, int>> expected = beep ? QList<QPair<int, int>>{{0, beep}} : QList<QPair<int, int>>{};
        QCOMPARE(beeps, expected);
    }

    void resultsPerButton() {
        for (const auto& [index, expected] : QList<QPair<int, int>>{{0, 7}, {1, 6}, {2, 2}}) {
            UniMsgBox m;
            m.Prepare(nullptr, "x", 2, "t", "A", "B", "C");
            const QList<QPushButton*> all{m.cmd1, m.cmd2, m.cmd3};
            QTimer::singleShot(0, all[index], [b = all[index]] { b->click(); });
            m.exec();
            QCOMPARE(m.result(), expected);
        }
        // The whole call: an information box with one button answers 7.
        QTimer::singleShot(0, [] {
            for (QWidget* w : QApplication::topLevelWidgets())
                if (auto* box = qobject_cast<UniMsgBox*>(w)) box->cmd1->click();
        });
        QCOMPARE(ShowUniMsgBox(nullptr, "Saved", 64, "PX callsigns", "Ok"), 7);
        UniMsgBox closed;
        closed.Prepare(nullptr, "x", 0, "t", "OK");
        QTimer::singleShot(0, &closed, &QDialog::reject);
        closed.exec();
        QCOMPARE(closed.result(), 0);
    }

    void centredOverTheOwnerAndKeptOnScreen() {
        setMessageFontSize(8);
        const QRect desk = QGuiApplication::primaryScreen()->virtualGeometry();
        QWidget owner;
        struct Case {
            QRect owner;
            QPoint expected;
        };
        for (const Case& c : {Case{{100, 100, 645, 381}, {200, 200}},                    // centred
                              Case{{-500, -300, 100, 100}, {0, 0}},                      // negatives become 0
                              Case{{desk.right() - 50, desk.bottom() - 50, 100, 100},   // past the edges
                                   {desk.right() + 1 - 445, desk.bottom() + 1 - 181}}}) {
            owner.setGeometry(c.owner);
            UniMsgBox m;
            m.Prepare(&owner, "x", 0, "t", "OK");
            QCOMPARE(m.pos(), c.expected);
        }
        UniMsgBox placed;
        placed.Prepare(&owner, "x", 0, "t", "OK", "", "", "", 33, 44);
        QCOMPARE(placed.pos(), QPoint(33, 44));
    }
};

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    UniMsgBoxTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "unimsgbox_test.moc"
