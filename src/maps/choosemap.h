#pragma once
// The region map for a station's position: the first region box, in a fixed order, that holds the
// position strictly inside all four of its borders; "World Map" for every other position.
#include <QString>

QString ChooseMap(double lat, double lon);
