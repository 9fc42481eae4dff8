#include "cli/climaps.h"
#include "cli/clioutput.h"

#include "common/vbtext.h"
#include "maps/choosemap.h"
#include "maps/mapposition.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <cstdio>

namespace {

// The position from two operands starting at first; false after the message.
bool position(const CliArgs& p, qsizetype first, double& lat, double& lon) {
    for (qsizetype i = first; i < first + 2; ++i) {
        if (!vb::parseNumber(p.positional[i])) {
            CliUsageError(QStringLiteral("not a number: ") + p.positional[i]);
            return false;
        }
    }
    lat = *vb::parseNumber(p.positional[first]);
    lon = *vb::parseNumber(p.positional[first + 1]);
    return true;
}

int runChoose(const CliArgs& p) {
    if (!p.options().isEmpty()) return CliUsageError(QStringLiteral("map choose does not take ") + p.options().first());
    if (p.positional.size() != 4) return CliUsageError(QStringLiteral("map choose needs LAT LON"));
    double lat = 0, lon = 0;
    if (!position(p, 2, lat, lon)) return 2;
    CliOut() << ChooseMap(lat, lon) << "\n";
    return 0;
}

int runPosition(const CliArgs& p) {
    for (const QString& option : p.options())
        if (option != QLatin1String("--json")) return CliUsageError(QStringLiteral("map position does not take ") + option);
    if (p.positional.size() != 5) return CliUsageError(QStringLiteral("map position needs NAME LAT LON"));
    const QString name = p.positional[2];
    double lat = 0, lon = 0;
    if (!position(p, 3, lat, lon)) return 2;
    const MapPlot plot = MapPosition(name, lat, lon);
    switch (plot.outcome) {
        case MapPlot::Outcome::NotAMap: return CliFailure(QStringLiteral("not one of the nine maps: ") + name);
        case MapPlot::Outcome::Overflow: return CliFailure(QStringLiteral("overflow: the position is too far off ") + name);
        case MapPlot::Outcome::OutOfRange:
            return CliFailure(QStringLiteral("the world map has no row for latitude ") + p.positional[3]);
        case MapPlot::Outcome::Placed: break;
    }
    if (p.flags.contains(QStringLiteral("--json")))
        CliOut() << QJsonDocument(QJsonObject{{"map", name}, {"x", plot.x}, {"y", plot.y}}).toJson(QJsonDocument::Compact)
              << "\n";
    else
        CliOut() << plot.x << " " << plot.y << "\n";
    return 0;
}

}  // namespace

int RunMapCommand(const CliArgs& p) {
    const QString verb = p.positional.value(1);
    int status = 0;
    if (verb == QLatin1String("choose"))
        status = runChoose(p);
    else if (verb == QLatin1String("position"))
        status = runPosition(p);
    else if (verb == QLatin1String("plot"))
        status = CliFailure(QStringLiteral("map plot is not in this build (it has no drawing)"));
    else
        status = CliUsageError(verb.isEmpty() ? QStringLiteral("map needs a command") : QStringLiteral("unknown map command ") + verb);
    CliOut().flush();
    CliErr().flush();
    return status;
}
