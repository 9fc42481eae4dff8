#pragma once
// What the map window marks on a map picture: where the own and the called station land, whether
// the line between them is drawn, and the called station's label.
#include <QString>
#include <cstdint>

struct StationPlot {
    bool ownPlaced = false;  // false: on the equator or the prime meridian, or off the map's range
    int32_t ownX = 0, ownY = 0;
    bool calledPlaced = false;
    int32_t calledX = 0, calledY = 0;
    bool line = false;     // from the own station to the called one
    QString callCaption;   // the called station's label, see CalledStationCaption
    QString error;         // why a station could not be placed (an overflow), "" otherwise
};

// The own latitude is held within 89 degrees of the equator (in myLat itself, as the program keeps
// it until it ends). A map that is not one of the nine places neither station. unit 1: miles.
StationPlot PlanStations(const QString& mapName, double& myLat, double myLon, double otherLat, double otherLon,
                         const QString& call, int unit);
