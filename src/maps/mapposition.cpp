#include "maps/mapposition.h"

#include "common/vbtext.h"

#include <array>
#include <cmath>

namespace {

constexpr const char* kNames[] = {"North America Map", "Australia Map", "New Zealand Map",
                                  "UK Map",            "N-Nederland Map", "Europe Map",
                                  "Japan Map",         "Asia Map",      "World Map"};

double radians(double degrees) { return degrees / 180 * kMapPi; }

// A conic map: the angle and the radius from the position, about a fixed centre.
struct Cone {
    double theta;   // degrees
    double radius;  // pixels, before rounding
    double cx, cy;
};

// The radius formulas without North America's correction term, which the two rules treat apart.
Cone coneOf(MapId map, double lat, double lon, double naCorrection) {
    switch (map) {
        case MapId::NorthAmerica:
            return {(-lon - 65) * 0.578 + 72.82, (55 - lat) * 25.27 + (1492 - naCorrection), 666, -1400};
        case MapId::Australia: return {(lon - 110) * 0.467 + 259.72, (lat + 36) * 35.62 + 3553, 648, 4500};
        case MapId::UK: return {86.255 - lon * 0.827, (57 - lat) * 117 + 4412, 483, -4100};
        case MapId::Europe: return {105 - lon * 0.745, (60 - lat) * 33.12 + 1288, 800, -850};
        case MapId::NewZealand: return {(lon - 170) * 0.6757 + 268.06, (lat + 38) * 106 + 7088, 520, 7500};
        case MapId::Japan: return {90.37 - (lon - 136) * 0.555, (40 - lat) * 56.2 + 4450, 520, -4000};
        default: return {0, 0, 0, 0};
    }
}

bool isConic(MapId map) { return map != MapId::NNederland && map != MapId::Asia && map != MapId::World; }

double linearX(MapId map, double lon) {
    return map == MapId::NNederland ? (lon - 3.828) * 240.16 - 14 : (lon - 40) * 13.72 + 130;
}
double linearY(MapId map, double lat) {
    if (map == MapId::NNederland) return 595 - (lat - 52.184) * 386.36 - 11;
    const double s = lat >= 0 ? std::pow(lat, 1.3) : -std::pow(std::fabs(lat), 1.3);
    return 932 - lat * 11.5 - s;
}

// The Robinson table: latitude, relative parallel length, relative distance from the equator and
// the program's own horizontal nudge in pixels, every 5 degrees, in single precision.
struct RobinsonRow {
    float L, X, Y, D;
};
constexpr std::array<RobinsonRow, 19> kRobinson = {{
    {0, 1.0f, 0.0f, 0},         {5, 0.9986f, 0.062f, 0},    {10, 0.9954f, 0.124f, 0},
    {15, 0.99f, 0.186f, 1},     {20, 0.9822f, 0.248f, 2},   {25, 0.973f, 0.31f, 2},
    {30, 0.96f, 0.372f, 3},     {35, 0.9427f, 0.434f, 4},   {40, 0.9216f, 0.4958f, 5},
    {45, 0.8962f, 0.5571f, 7},  {50, 0.8679f, 0.6176f, 9},  {55, 0.835f, 0.6769f, 11},
    {60, 0.7986f, 0.7346f, 13}, {65, 0.7597f, 0.7903f, 16}, {70, 0.7186f, 0.8435f, 19},
    {75, 0.6732f, 0.8936f, 22}, {80, 0.6213f, 0.9394f, 26}, {85, 0.5722f, 0.9761f, 30},
    {90, 0.5322f, 1.0f, 35},
}};

// The row whose band holds |lat|, or -1 from 90 degrees on (and for a NaN).
int robinsonRow(double lat) {
    for (int n = 0; n < static_cast<int>(kRobinson.size()); ++n)
        if (std::fabs(lat) < kRobinson[n].L) return n - 1;
    return -1;
}

// The picture runs from 170 degrees west to 190 degrees east.
double worldLongitude(double lon) { return lon < -170 ? 180 - std::fabs(lon) + 180 : lon; }

struct WorldPoint {
    double x, y;
};
// f is the fraction of the way to the next row, nudge the horizontal nudge in pixels.
WorldPoint worldPoint(int i, double f, double nudge, double lat, double lon) {
    const RobinsonRow& a = kRobinson[i];
    const RobinsonRow& b = kRobinson[i + 1];
    const double yf = a.Y + f * (double(b.Y) - a.Y);
    const double xf = a.X - f * (double(a.X) - b.X);
    const double y = lat >= 0 ? 706 - 698 * yf : 706 + 698 * yf;
    const double x = lon >= 0 ? nudge + 1322 + (xf * 1453 / 190) * lon
                              : nudge + 1322 - (xf * 1300 / 170) * std::fabs(lon);
    return {x, y};
}

// North America's correction for the smooth rule: the step table with each step made a ramp one
// degree wide about its edge, and d itself from 36 degrees on.
double smoothNorthAmericaCorrection(double d) {
    struct Knot {
        double d, k;
    };
    static constexpr Knot kKnots[] = {{9, 0},   {10, 3},  {15, 3},  {16, 7},  {20, 7},
                                      {21, 10}, {25, 10}, {26, 15}, {35, 15}, {36, 36}};
    if (d <= kKnots[0].d) return 0;
    for (size_t n = 1; n < std::size(kKnots); ++n) {
        if (d <= kKnots[n].d) {
            const Knot& a = kKnots[n - 1];
            const Knot& b = kKnots[n];
            return a.k + (d - a.d) / (b.d - a.d) * (b.k - a.k);
        }
    }
    return d;
}

MapPlot placed(std::optional<int32_t> x, std::optional<int32_t> y, MapPlot plot) {
    if (!x || !y) {
        plot.outcome = MapPlot::Outcome::Overflow;
        return plot;
    }
    plot.outcome = MapPlot::Outcome::Placed;
    plot.x = *x;
    plot.y = *y;
    return plot;
}

}  // namespace

QString MapName(MapId map) { return QString::fromLatin1(kNames[static_cast<int>(map)]); }

std::optional<MapId> MapIdFromName(QStringView name) {
    for (MapId map : kAllMaps)
        if (name == QLatin1String(kNames[static_cast<int>(map)])) return map;
    return std::nullopt;
}

int16_t NorthAmericaCorrection(int16_t d) {
    if (d >= 0 && d <= 9) return 0;
    if (d >= 10 && d <= 15) return 3;
    if (d >= 16 && d <= 20) return 7;
    if (d >= 21 && d <= 25) return 10;
    if (d >= 26 && d <= 35) return 15;
    return d;
}

MapPlot MapPosition(QStringView mapName, double lat, double lon, int32_t x, int32_t y) {
    MapPlot plot;
    plot.x = x;
    plot.y = y;
    const std::optional<MapId> map = MapIdFromName(mapName);
    if (!map) return plot;
    plot.outcome = MapPlot::Outcome::Overflow;

    if (isConic(*map)) {
        double k = 0;
        if (*map == MapId::NorthAmerica) {
            const std::optional<int16_t> d = vb::toInt16(std::fabs(-95 - lon));
            if (!d) return plot;
            k = NorthAmericaCorrection(*d);
        }
        const Cone cone = coneOf(*map, lat, lon, k);
        const std::optional<int16_t> r = vb::toInt16(cone.radius);
        if (!r) return plot;
        plot.centreX = static_cast<float>(cone.cx);
        plot.centreY = static_cast<float>(cone.cy);
        const double angle = radians(cone.theta);
        return placed(vb::toInt32(*r * std::cos(angle) + cone.cx), vb::toInt32(*r * std::sin(angle) + cone.cy),
                      plot);
    }
    if (*map != MapId::World) return placed(vb::toInt32(linearX(*map, lon)), vb::toInt32(linearY(*map, lat)), plot);

    lon = worldLongitude(lon);
    const int i = robinsonRow(lat);
    if (i < 0) {
        plot.outcome = MapPlot::Outcome::OutOfRange;
        return plot;
    }
    // Only the whole-degree part counts, and floor comes before the absolute value: -12.3 gives
    // 13 mod 5 = 3 where 12.3 gives 2.
    const double f = std::fmod(std::fabs(std::floor(lat)), 5.0) / 5;
    const WorldPoint p = worldPoint(i, f, kRobinson[i].D, lat, lon);
    return placed(vb::toInt32(p.x), vb::toInt32(p.y), plot);
}

std::optional<MapPointF> MapPointSmooth(MapId map, double lat, double lon, bool unwrapped) {
    if (std::isnan(lat) || std::isnan(lon)) return std::nullopt;
    if (isConic(map)) {
        const double k = map == MapId::NorthAmerica ? smoothNorthAmericaCorrection(std::fabs(-95 - lon)) : 0;
        const Cone cone = coneOf(map, lat, lon, k);
        const double angle = radians(cone.theta);
        return MapPointF{cone.radius * std::cos(angle) + cone.cx, cone.radius * std::sin(angle) + cone.cy};
    }
    if (map != MapId::World) return MapPointF{linearX(map, lon), linearY(map, lat)};
    if (!unwrapped) lon = worldLongitude(lon);
    const int i = robinsonRow(lat);
    if (i < 0) return std::nullopt;
    const double f = (std::fabs(lat) - kRobinson[i].L) / 5;
    const double nudge = kRobinson[i].D + f * (double(kRobinson[i + 1].D) - kRobinson[i].D);
    const WorldPoint p = worldPoint(i, f, nudge, lat, lon);
    return MapPointF{p.x, p.y};
}
