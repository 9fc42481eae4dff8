#pragma once
// Finds and loads the station-view plugin the first time it is needed, so that the browser engine
// costs nothing until the station view opens.
#include <QString>

class StationViewFactory;

// The plugin's factory, loaded once and kept; nullptr (and why) when the plugin is missing or
// broken. Looked for in PX_STATIONVIEW_PLUGIN when set, next to the executable, then in
// ../lib/pxcallsigns beside it (an installed tree).
StationViewFactory* LoadStationView(QString* why);

// Whether the plugin is loaded (the start-up test checks that it is not).
bool StationViewLoaded();
