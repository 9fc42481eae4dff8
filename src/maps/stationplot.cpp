#include "maps/stationplot.h"

#include "geo/distanceazimuth.h"
#include "maps/mapposition.h"
#include "maps/mapselection.h"

#include <algorithm>

namespace {

QString overflowText(const QString& mapName, const MapPlot& plot) {
    if (plot.outcome == MapPlot::Outcome::Overflow) return QStringLiteral("Overflow: the position is off ") + mapName;
    if (plot.outcome == MapPlot::Outcome::OutOfRange) return QStringLiteral("The position is off ") + mapName;
    return {};
}

}  // namespace

StationPlot PlanStations(const QString& mapName, double& myLat, double myLon, double otherLat, double otherLon,
                         const QString& call, int unit) {
    StationPlot s;
    if (myLat > 89) myLat = 89;
    if (myLat < -89) myLat = -89;
    if (myLat != 0 && myLon != 0) {
        const MapPlot own = MapPosition(mapName, myLat, myLon);
        s.ownPlaced = own.outcome == MapPlot::Outcome::Placed;
        s.ownX = own.x;
        s.ownY = own.y;
        s.error = overflowText(mapName, own);
    }
    const MapPlot called = MapPosition(mapName, otherLat, otherLon);
    s.calledPlaced = called.outcome == MapPlot::Outcome::Placed;
    s.calledX = called.x;
    s.calledY = called.y;
    if (s.error.isEmpty()) s.error = overflowText(mapName, called);
    s.line = s.ownPlaced && s.calledPlaced;
    double distance = 0, azimuth = 0;
    DistanceAzimuth(myLat, myLon, otherLat, otherLon, static_cast<int16_t>(unit), distance, azimuth);
    s.callCaption = CalledStationCaption(call, distance, unit, azimuth, s.line);
    return s;
}
