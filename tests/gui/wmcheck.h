#pragma once
// Window tests that need a window manager (title bars, borders): they run under
// tools/with-wm.sh, which sets PX_EXPECT_WM, and are skipped on a bare X server.
#include <QGuiApplication>
#include <QScreen>
#include <QTest>
#include <QWidget>
#include <QWindow>

// True once a window manager frames a window; false at once where none is expected. A window
// shown while the manager is still starting may stay unframed: each try shows a new one.
inline bool windowManagerRuns() {
    if (QGuiApplication::platformName() != "xcb") return false;
    const int tries = qEnvironmentVariableIsSet("PX_EXPECT_WM") ? 15 : 1;
    for (int i = 0; i < tries; ++i) {
        QWidget probe;
        probe.resize(50, 50);
        probe.show();
        if (QTest::qWaitFor([&] { return !probe.windowHandle()->frameMargins().isNull(); }, 1000)) return true;
    }
    return false;
}

#define REQUIRE_WINDOW_MANAGER()                                                       \
    do {                                                                               \
        if (!windowManagerRuns()) {                                                    \
            if (qEnvironmentVariableIsSet("PX_EXPECT_WM")) QFAIL("no window manager"); \
            QSKIP("needs a window manager (tools/with-wm.sh)");                        \
        }                                                                              \
    } while (false)

// The window framed by the window manager (its frame known) and at rest.
inline bool framed(const QWidget* w) {
    return QTest::qWaitFor([w] { return w->isVisible() && w->windowHandle() && !w->windowHandle()->frameMargins().isNull(); },
                           10000);
}

// The frame lies wholly inside the available area of one screen.
inline bool whollyOnAScreen(const QRect& frame) {
    for (const QScreen* s : QGuiApplication::screens())
        if (s->availableGeometry().contains(frame)) return true;
    return false;
}
