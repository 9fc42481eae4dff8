#include "geo/distanceazimuth.h"

#include <gtest/gtest.h>
#include <cmath>

namespace {

struct Case { const char* what; double lat1, lon1, lat2, lon2; double km, miles, azimuth; };

TEST(DistanceAzimuthTest, Table) {
    for (const Case& c : {
             Case{"equal points", 0, 0, 0, 0, 0, 0, 0},
             // 1 - cos^2 d rounds below 0: the failed square root leaves the angle 0, not NaN.
             Case{"equal points off the origin", 60.0889, 20.3236, 60.0889, 20.3236, 0, 0, 0},
             Case{"due north", 0, 0, 10, 0, 1107, 688, 0},
             Case{"due east on the equator", 0, 0, 0, 10, 1113, 691, 90},
             Case{"same meridian, southwards", 51, 5, -20, 5, 7872, 4892, 180},
             Case{"antipodal", 10, 20, -10, -160, 20036, 12452, 270},
             Case{"pole to pole", 90, 0, -90, 0, 20003, 12431, 90},
             Case{"nearly antipodal", 0, 0, 0.5, -179.5, 19941, 12393, 314},
             Case{"near-antipodal on the equator comes out negative", 0, 0, 0, 179.9, -20048, -12460, 90},
             Case{"London to Sydney", 51.5072, -0.1276, -33.8688, 151.2093, 16990, 10559, 60},
             Case{"London to New York", 51.5072, -0.1276, 40.7128, -74.006, 5580, 3467, 288},
             Case{"short hop", 52.0907, 5.1214, 51.5072, -0.1276, 367, 228, 261},
             Case{"100 km is 62 miles", 0, 0, 0.903, 0, 100, 62, 0},
         }) {
        SCOPED_TRACE(c.what);
        double distance = -1, azimuth = -1;
        DistanceAzimuth(c.lat1, c.lon1, c.lat2, c.lon2, 0, distance, azimuth);
        EXPECT_EQ(distance, c.km);
        EXPECT_EQ(azimuth, c.azimuth);
        DistanceAzimuth(c.lat1, c.lon1, c.lat2, c.lon2, 1, distance, azimuth);
        EXPECT_EQ(distance, c.miles);
    }
}

TEST(DistanceAzimuthTest, Atan2FullQuadrants) {
    constexpr double pi = 3.14159265;  // not the library's full-precision pi
    EXPECT_DOUBLE_EQ(Atan2Full(0, 0), pi / 2);
    EXPECT_DOUBLE_EQ(Atan2Full(1, -1), pi - std::atan(1.0));
    EXPECT_DOUBLE_EQ(Atan2Full(-1, -1), -(pi - std::atan(1.0)));
    EXPECT_DOUBLE_EQ(Atan2Full(2, 0), pi / 2);
    EXPECT_DOUBLE_EQ(Atan2Full(0, -2), pi);
}

}  // namespace
