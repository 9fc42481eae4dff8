#include "pictures/stationviewloader.h"

#include "pictures/stationviewapi.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPluginLoader>
#include <QStringList>

#include <cstring>

namespace {

QPluginLoader* g_loader = nullptr;
StationViewFactory* g_factory = nullptr;
QtMessageHandler g_nextHandler = nullptr;

// The browser engine, loaded late on purpose, warns that it should have been set up before the
// application (the plugin does that set-up itself), and lists its graphics set-up when its first
// view is made. Neither says anything to whoever reads the program's log; all else passes on.
void DropEngineSetUpNotes(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    const bool setUpNote = (type == QtWarningMsg && (text.startsWith(QLatin1String("Qt WebEngine seems to be initialized")) ||
                                                     text.startsWith(QLatin1String("Attribute Qt::AA_ShareOpenGLContexts")))) ||
                           (type == QtInfoMsg && context.category && std::strcmp(context.category, "qt.webenginecontext") == 0);
    if (setUpNote) return;
    if (g_nextHandler) g_nextHandler(type, context, text);
}

QStringList Candidates() {
    const QString name = QStringLiteral("pxstationview");
    QStringList paths;
    if (const QString fromEnv = qEnvironmentVariable("PX_STATIONVIEW_PLUGIN"); !fromEnv.isEmpty()) paths << fromEnv;
    const QString dir = QCoreApplication::applicationDirPath();
    paths << dir + u'/' + name << dir + QStringLiteral("/../lib/pxcallsigns/") + name;
    return paths;
}

}  // namespace

StationViewFactory* LoadStationView(QString* why) {
    if (g_factory) return g_factory;
    QString reasons;
    if (!g_nextHandler) g_nextHandler = qInstallMessageHandler(DropEngineSetUpNotes);
    for (const QString& path : Candidates()) {
        auto* loader = new QPluginLoader(path);
        // Every symbol bound at loading: a browser engine that lacks one the plugin needs makes the
        // loading fail with its reason, not the program end when the symbol is first called.
        loader->setLoadHints(loader->loadHints() | QLibrary::ResolveAllSymbolsHint);
        if (QObject* instance = loader->instance()) {
            if (auto* factory = qobject_cast<StationViewFactory*>(instance)) {
                g_loader = loader;
                g_factory = factory;
                return factory;
            }
            reasons += path + QStringLiteral(": not the station-view plugin\n");
        } else {
            reasons += loader->errorString() + u'\n';
        }
        delete loader;
    }
    if (why) *why = QStringLiteral("The station view cannot be opened:\n") + reasons.trimmed();
    return nullptr;
}

bool StationViewLoaded() { return g_factory != nullptr; }
