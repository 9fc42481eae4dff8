#pragma once
// The stations drawn on a map picture, the one drawing the map window shows and the command line
// writes: the blue line, the two circles about the called station, the markers and the labels.
#include "maps/stationplot.h"

#include <QColor>
#include <QImage>

class QPainter;

inline const QColor kMapLineColour(0, 0, 255);
inline const QColor kMapForeground(0, 0, 0);
inline constexpr int kMapInnerCircle = 4;
inline constexpr int kMapOuterCircle = 25;

// Draws onto a painter over the whole picture of the given size.
void DrawStations(QPainter& painter, const StationPlot& plot, QSize picture);

// The map picture with the stations on it.
QImage PlotMapPicture(const QImage& map, const StationPlot& plot);
