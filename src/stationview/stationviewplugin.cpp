// The plugin that the program loads when the station view is first opened: the one place that
// links the browser engine.
#include "stationview/stationviewplugin.h"

#include "stationview/frmstview.h"

#include <QCoreApplication>
#include <QtGlobal>
#include <unistd.h>

namespace {

// The engine reads its switches once, when the first profile is made. Its sandbox cannot start
// for root (the tests run as root under Xvfb).
void SetEngineSwitches() {
    static bool done = false;
    if (done) return;
    done = true;
    if (!qEnvironmentVariableIsEmpty("QTWEBENGINE_CHROMIUM_FLAGS")) return;
    QByteArray flags = "--disable-background-networking";
    // Without contexts shared from the start (the program does not share them: that alone would
    // load the graphics libraries at every start), the engine draws in software.
    bool software = qgetenv("QT_QPA_PLATFORM") == "offscreen" ||
                    !QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts);
#ifndef _WIN32
    if (geteuid() == 0) {
        flags += " --no-sandbox";
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
        // Root runs are the build machines' virtual displays, which have no graphics card either.
        software = true;
    }
#endif
    if (software) flags += " --disable-gpu";
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", flags);
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES")) qputenv("QT_LOGGING_RULES", "qt.webenginecontext.info=false");
}

}  // namespace

StationView* StationViewPlugin::create(const StationViewSetup& setup) {
    SetEngineSwitches();
    return new frmStView(setup);
}
