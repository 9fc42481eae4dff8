// The plugin that the program loads when the station view is first opened: the one place that
// links the browser engine.
#include "stationview/stationviewplugin.h"

#include "stationview/frmstview.h"

#include <QOpenGLContext>
#include <QtGlobal>
#ifndef _WIN32
#include <unistd.h>
#endif

// The engine's own set-up of the graphics context that its views share with Qt. It runs by
// itself only when the engine is linked into the program, before the application exists. Loaded
// later from this plugin, it must be called before the first view: without it the engine reads a
// shared context that is not there, and crashes. Exported by the engine's library, but not
// declared in its public headers.
namespace QtWebEngineCore {
Q_DECL_IMPORT void initialize();
}

namespace {

// The engine reads its switches once, when the first profile is made. Its sandbox cannot start
// for root (the tests run as root under Xvfb).
void SetUpEngine() {
    QtWebEngineCore::initialize();
    if (!qEnvironmentVariableIsEmpty("QTWEBENGINE_CHROMIUM_FLAGS")) return;
    QByteArray flags = "--disable-background-networking";
    // Without a shared context (no OpenGL on this display, or none offscreen) it draws in software.
    const QOpenGLContext* shared = QOpenGLContext::globalShareContext();
    bool software = qgetenv("QT_QPA_PLATFORM") == "offscreen" || !shared || !shared->isValid();
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
}

}  // namespace

// Made once, when the program loads the plugin: the engine is set up before any view.
StationViewPlugin::StationViewPlugin() { SetUpEngine(); }

StationView* StationViewPlugin::create(const StationViewSetup& setup) { return new frmStView(setup); }
