#pragma once
// Distance and initial azimuth between two stations on the ellipsoid the program has always
// used (radii 6378 and 6356 km), in whole kilometres or miles and whole degrees.
#include <cstdint>

// Angle of the point (x, y), from -pi to pi; pi/2 for the origin.
double Atan2Full(double y, double x);
// Atan2Full(f * sin(angle), cos(angle)).
double ScaledAngle(double angle, double f);

// From (lat1, lon1) to (lat2, lon2), degrees, north and east positive. units 1 gives miles,
// anything else kilometres. A step that fails (a division by zero or the square root of a
// negative number at a degenerate position) leaves its result as it was and the routine goes
// on, so distance and azimuth keep the values they came in with where no step set them.
void DistanceAzimuth(double lat1, double lon1, double lat2, double lon2, int16_t units, double& distance,
                     double& azimuth);
