// Where windows go on the screens: the clamping rule, the choice of screen, the place beside
// another window, and the top-most switch that must leave a window where it is.
#include "ui/windowhelpers.h"
#include "wmcheck.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

namespace {
const QRect kFirst{0, 0, 1280, 1024}, kSecond{1280, 0, 1920, 1080};
}  // namespace

class WindowHelpersTest : public QObject {
    Q_OBJECT

private slots:
    void clampToArea_data() {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QRect>("area");
        QTest::addColumn<QRect>("fitted");
        QTest::newRow("inside") << QRect(100, 100, 300, 200) << kFirst << QRect(100, 100, 300, 200);
        QTest::newRow("touching every edge") << kFirst << kFirst << kFirst;
        QTest::newRow("title bar above the top") << QRect(0, -24, 300, 200) << kFirst << QRect(0, 0, 300, 200);
        QTest::newRow("left and top out") << QRect(-50, -20, 300, 200) << kFirst << QRect(0, 0, 300, 200);
        QTest::newRow("right and bottom out") << QRect(1100, 900, 300, 200) << kFirst << QRect(980, 824, 300, 200);
        QTest::newRow("one pixel past the right") << QRect(981, 10, 300, 200) << kFirst << QRect(980, 10, 300, 200);
        QTest::newRow("wider than the area") << QRect(-10, 50, 1500, 200) << kFirst << QRect(0, 50, 1280, 200);
        QTest::newRow("higher than the area") << QRect(10, 900, 300, 2000) << kFirst << QRect(10, 0, 300, 1024);
        QTest::newRow("a panel along the top") << QRect(0, 0, 300, 200) << QRect(0, 30, 1280, 994) << QRect(0, 30, 300, 200);
        QTest::newRow("far out on the second screen") << QRect(5000, -300, 300, 200) << kSecond << QRect(2900, 0, 300, 200);
        QTest::newRow("no area") << QRect(-50, -20, 300, 200) << QRect() << QRect(-50, -20, 300, 200);
    }

    void clampToArea() {
        QFETCH(QRect, frame);
        QFETCH(QRect, area);
        QTEST(ClampToArea(frame, area), "fitted");
    }

    void screenItIsMostlyOn_data() {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QList<QRect>>("areas");
        QTest::addColumn<int>("index");
        QTest::addColumn<QRect>("fitted");
        const QList<QRect> two{kFirst, kSecond};
        QTest::newRow("mostly on the first") << QRect(1100, 100, 300, 200) << two << 0 << QRect(980, 100, 300, 200);
        QTest::newRow("mostly on the second") << QRect(1200, 100, 300, 200) << two << 1 << QRect(1280, 100, 300, 200);
        QTest::newRow("across both corners") << QRect(1200, 900, 300, 200) << two << 1 << QRect(1280, 880, 300, 200);
        QTest::newRow("half and half: the first") << QRect(1130, 100, 300, 200) << two << 0 << QRect(980, 100, 300, 200);
        QTest::newRow("right of both: the second") << QRect(5000, 100, 300, 200) << two << 1 << QRect(2900, 100, 300, 200);
        QTest::newRow("below the first: the first") << QRect(100, 2000, 300, 200) << two << 0 << QRect(100, 824, 300, 200);
        QTest::newRow("above and left: the first") << QRect(-900, -900, 100, 100) << two << 0 << QRect(0, 0, 100, 100);
        QTest::newRow("no screens") << QRect(-900, -900, 100, 100) << QList<QRect>() << -1 << QRect(-900, -900, 100, 100);
    }

    void screenItIsMostlyOn() {
        QFETCH(QRect, frame);
        QFETCH(QList<QRect>, areas);
        QTEST(AreaIndexFor(frame, areas), "index");
        QTEST(FitOnScreens(frame, areas), "fitted");
    }

    // A window of 400 x 300 beside the main window: below, above, right, left, else over it.
    void besideAnotherWindow_data() {
        QTest::addColumn<QRect>("owner");
        QTest::addColumn<QRect>("placed");
        QTest::newRow("below") << QRect(400, 300, 350, 205) << QRect(400, 505, 400, 300);
        QTest::newRow("below, moved in from the right") << QRect(1100, 100, 180, 100) << QRect(880, 200, 400, 300);
        QTest::newRow("no room below: above") << QRect(400, 800, 350, 205) << QRect(400, 500, 400, 300);
        QTest::newRow("full height at the left: right") << QRect(0, 0, 350, 1024) << QRect(350, 0, 400, 300);
        QTest::newRow("full height at the right: left") << QRect(930, 0, 350, 1024) << QRect(530, 0, 400, 300);
        QTest::newRow("no room anywhere: over it") << QRect(0, 0, 1280, 1024) << QRect(440, 362, 400, 300);
    }

    void besideAnotherWindow() {
        QFETCH(QRect, owner);
        QTEST(BesideRect(QSize(400, 300), owner, kFirst), "placed");
    }

    // Switching top-most re-creates the native window: a window nobody placed stays for the
    // window manager to place (placing it at its inner 0, 0 put its title bar above the screen);
    // a placed one keeps its frame's place and its size.
    void topMostLeavesTheWindowWhereItIs() {
        if (qEnvironmentVariableIsSet("PX_EXPECT_WM")) REQUIRE_WINDOW_MANAGER();  // under tools/with-wm.sh: framed
        QWidget unplaced;
        unplaced.resize(200, 100);
        SetTopMost(&unplaced, true);
        QVERIFY(unplaced.windowFlags() & Qt::WindowStaysOnTopHint);
        QVERIFY(!unplaced.testAttribute(Qt::WA_Moved));
        QCOMPARE(unplaced.size(), QSize(200, 100));

        QWidget placed;
        placed.resize(200, 100);
        placed.move(150, 120);
        placed.show();
        QVERIFY(QTest::qWaitForWindowExposed(&placed));
        const QRect frame = placed.frameGeometry();
        SetTopMost(&placed, true);
        QVERIFY(placed.isVisible());
        QTRY_COMPARE(placed.frameGeometry(), frame);
        SetTopMost(&placed, false);
        QVERIFY(!(placed.windowFlags() & Qt::WindowStaysOnTopHint));
        QTRY_COMPARE(placed.frameGeometry(), frame);
    }
};

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    WindowHelpersTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "windowhelpers_test.moc"
