#pragma once
// Where a latitude and longitude land on each of the nine region map pictures: pixel x to the
// right and y downwards from the picture's top left corner.
//
// The plotting rule (MapPosition) rounds halves to even, keeps the conic radius in 16 bits and has
// two step functions in it (the world map's whole-degree fraction, North America's longitude
// correction). The drawing rule (MapPointSmooth) is the same formula without the rounding and with
// those steps made continuous; the map pictures are drawn with it.
#include <QString>
#include <QStringView>
#include <cstdint>
#include <optional>

enum class MapId { NorthAmerica, Australia, NewZealand, UK, NNederland, Europe, Japan, Asia, World };

inline constexpr MapId kAllMaps[] = {MapId::NorthAmerica, MapId::Australia, MapId::NewZealand,
                                     MapId::UK,           MapId::NNederland, MapId::Europe,
                                     MapId::Japan,        MapId::Asia,       MapId::World};

// "Europe Map" and the like; the names are compared case-sensitively.
QString MapName(MapId map);
std::optional<MapId> MapIdFromName(QStringView name);

// The angle to radians factor of every map; its pi (3.14159625) is the one the map constants
// were fitted with.
inline constexpr double kMapPi = 3.14159625;

struct MapPlot {
    enum class Outcome {
        Placed,     // x and y hold the pixel
        NotAMap,    // the name is none of the nine: x and y are left as they were
        Overflow,   // the radius left 16 bits or a pixel left 32 bits
        OutOfRange  // world map: a latitude of 90 degrees or more in size has no table row
    };
    Outcome outcome = Outcome::NotAMap;
    int32_t x = 0;
    int32_t y = 0;
    // The centre of a conic map (single precision, as kept for the window); 0, 0 for the others.
    float centreX = 0;
    float centreY = 0;
};

// The plotting rule. x and y come in as the caller's previous values and go out unchanged unless
// the outcome is Placed.
MapPlot MapPosition(QStringView mapName, double lat, double lon, int32_t x = 0, int32_t y = 0);

// North America's step correction of the radius for d whole degrees from 95 west; from 36 on the
// table has no step and d itself is the correction.
int16_t NorthAmericaCorrection(int16_t d);

struct MapPointF {
    double x;
    double y;
};
// The drawing rule: continuous in lat and lon. nullopt at a latitude of 90 degrees or more in
// size on the world map, and for a NaN. unwrapped leaves out the world map's move of the
// longitudes west of 170 W to the east side, for drawing shapes that cross that meridian.
std::optional<MapPointF> MapPointSmooth(MapId map, double lat, double lon, bool unwrapped = false);
