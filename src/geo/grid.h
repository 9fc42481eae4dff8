#pragma once
// The grid square (locator) of a position, six characters such as "JO62qm".
#include <QString>

// "" when the latitude lies beyond ±90. Positions exactly on a cell border fall into the upper
// cell (every value is nudged up by 0.0001), and west of Greenwich and south of the equator the
// minutes are mirrored, as the program has always done it.
QString GridSquare(double latitude, double longitude);
