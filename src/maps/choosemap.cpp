#include "maps/choosemap.h"

namespace {

struct RegionBox {
    const char* name;
    double lonMin, lonMax, latMin, latMax;
};

// Order matters: the UK and northern Netherlands boxes lie inside Europe's, Japan's inside Asia's.
constexpr RegionBox kRegions[] = {
    {"North America Map", -135, -55, 9, 55},
    {"Australia Map", 122, 155, -45, -10},
    {"New Zealand Map", 166, 179, -48, -33},
    {"UK Map", -12, 3, 49, 60},
    {"N-Nederland Map", 3.817, 8, 52.18, 53.72},
    {"Europe Map", -23, 54, 29, 60},
    {"Japan Map", 126, 148, 25, 45},
    {"Asia Map", 54, 148, -26, 62},
};

}  // namespace

QString ChooseMap(double lat, double lon) {
    for (const RegionBox& box : kRegions) {
        // A NaN fails every comparison and so falls through to the world map.
        if (box.lonMin < lon && lon < box.lonMax && box.latMin < lat && lat < box.latMax)
            return QString::fromLatin1(box.name);
    }
    return QStringLiteral("World Map");
}
