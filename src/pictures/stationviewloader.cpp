#include "pictures/stationviewloader.h"

#include "pictures/stationviewapi.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPluginLoader>
#include <QStringList>

namespace {

QPluginLoader* g_loader = nullptr;
StationViewFactory* g_factory = nullptr;

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
    for (const QString& path : Candidates()) {
        auto* loader = new QPluginLoader(path);
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
