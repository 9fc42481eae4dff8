#include "maps/choosemap.h"
#include "maps/mapposition.h"
#include "maps/mapselection.h"

#include <gtest/gtest.h>
#include <QLocale>
#include <cmath>
#include <limits>

namespace {

struct ChooseCase {
    double lat, lon;
    const char* map;
};

TEST(ChooseMapTest, RegionBoxesInOrderWithStrictBorders) {
    for (const ChooseCase& c : {
             ChooseCase{53.0, 5.0, "N-Nederland Map"},
             ChooseCase{53.0, 9.0, "Europe Map"},
             ChooseCase{53.0, 3.817, "Europe Map"},  // on the Netherlands' western border
             ChooseCase{53.0, 3.8171, "N-Nederland Map"},
             ChooseCase{52.18, 5.0, "Europe Map"},
             ChooseCase{53.72, 5.0, "Europe Map"},
             ChooseCase{53.0, 8.0, "Europe Map"},
             ChooseCase{35, 140, "Japan Map"},
             ChooseCase{50, 140, "Asia Map"},
             ChooseCase{30, 150, "World Map"},
             ChooseCase{45, 140, "Asia Map"},  // Japan's northern border
             ChooseCase{51.5, -0.1, "UK Map"},
             ChooseCase{48.85, 2.35, "Europe Map"},
             ChooseCase{49, -5, "Europe Map"},   // the UK's southern border
             ChooseCase{55, 3, "Europe Map"},    // the UK's eastern border
             ChooseCase{59.99, -11.99, "UK Map"},
             ChooseCase{-40, 179.5, "World Map"},
             ChooseCase{-40, 179, "World Map"},
             ChooseCase{-40, 174.8, "New Zealand Map"},
             ChooseCase{40, -95, "North America Map"},
             ChooseCase{55, -95, "World Map"},
             ChooseCase{9, -80, "World Map"},
             ChooseCase{40, -135, "World Map"},
             ChooseCase{40, -55, "World Map"},
             ChooseCase{-33.9, 151.2, "Australia Map"},
             ChooseCase{-10, 130, "Asia Map"},    // Australia's northern border, inside Asia's box
             ChooseCase{-26, 130, "Australia Map"},
             ChooseCase{62, 100, "World Map"},
             ChooseCase{29, 54, "World Map"},     // Europe's corner and Asia's western border
             ChooseCase{30, 54.001, "Asia Map"},
             ChooseCase{0, 0, "World Map"},
             ChooseCase{0, 180, "World Map"},
             ChooseCase{0, -180, "World Map"},
             ChooseCase{std::nan(""), 5, "World Map"},
         }) {
        EXPECT_EQ(ChooseMap(c.lat, c.lon), QString::fromLatin1(c.map)) << c.lat << " " << c.lon;
    }
}

struct PositionCase {
    const char* map;
    double lat, lon;
    int x, y;
};

// Expected pixels worked out apart from the program, from the published formulas.
TEST(MapPositionTest, PixelsOfEachMap) {
    for (const PositionCase& c : {
             PositionCase{"World Map", 0, 0, 1322, 706},
             PositionCase{"World Map", 51.5, -0.1, 1330, 267},
             PositionCase{"World Map", 12.3, 20, 1474, 602},
             PositionCase{"World Map", -12.3, 20, 1474, 819},  // fraction 3/5 south, 2/5 north
             PositionCase{"World Map", -33.9, 151.2, 2419, 1000},
             PositionCase{"World Map", 40, -175, 2631, 360},  // taken as 185 east
             PositionCase{"World Map", 40, 185, 2631, 360},
             PositionCase{"World Map", 89.5, 10, 1393, 11},
             PositionCase{"World Map", -89.9, -170, 608, 1387},
             PositionCase{"World Map", 64.1, -21.9, 1206, 162},
             PositionCase{"North America Map", 40, -95, 661, 471},
             PositionCase{"North America Map", 40, -140, -139, 239},  // correction 45
             PositionCase{"North America Map", 40.7, -74.0, 1048, 403},
             PositionCase{"North America Map", 49.3, -123.1, 208, 155},
             PositionCase{"North America Map", 47.6, -52.7, 1339, 92},
             PositionCase{"North America Map", 19.4, -99.1, 560, 990},
             PositionCase{"North America Map", 40, -104.5, 482, 459},  // d 9.5 rounds to 10: 3
             PositionCase{"North America Map", 40, -104.4, 484, 462},  // d 9: 0
             PositionCase{"North America Map", 40, -115.5, 278, 423},  // d 20.5 rounds to 20: 7
             PositionCase{"North America Map", 40, -115.6, 277, 420},  // d 21: 10
             PositionCase{"North America Map", 40, -130.5, 18, 317},   // d 35.5 rounds to 36: 36
             PositionCase{"North America Map", 40, -131, 9, 313},
             PositionCase{"North America Map", 54.9, -134.9, 92, -63},
             PositionCase{"Australia Map", -33.9, 151.2, 1213, 916},
             PositionCase{"Australia Map", -31.95, 115.86, 163, 835},
             PositionCase{"Australia Map", -12.46, 130.84, 606, 109},
             PositionCase{"New Zealand Map", -36.85, 174.76, 681, 292},
             PositionCase{"New Zealand Map", -45.87, 170.5, 345, 1248},
             PositionCase{"UK Map", 51.5, -0.1, 806, 946},
             PositionCase{"UK Map", 55.95, -3.19, 571, 434},
             PositionCase{"UK Map", 60, -1.2, 678, -44},
             PositionCase{"UK Map", 49.01, 2.99, 1062, 1216},
             PositionCase{"N-Nederland Map", 53.0, 5.0, 267, 269},
             PositionCase{"N-Nederland Map", 53.22, 6.57, 645, 184},
             PositionCase{"Europe Map", 48.85, 2.35, 420, 763},
             PositionCase{"Europe Map", 41.9, 12.5, 613, 1028},
             PositionCase{"Europe Map", 64.1, -21.9, 201, 134},
             PositionCase{"Europe Map", 29.01, -22.99, -431, 1110},
             PositionCase{"Japan Map", 35.68, 139.69, 657, 691},
             PositionCase{"Japan Map", 43.06, 141.35, 714, 274},
             PositionCase{"Asia Map", 28.6, 77.2, 640, 525},
             PositionCase{"Asia Map", -6.2, 106.8, 1046, 1014},
             PositionCase{"Asia Map", 0, 40, 130, 932},
             PositionCase{"Asia Map", 1.3, 103.8, 1005, 916},
         }) {
        const MapPlot p = MapPosition(QString::fromLatin1(c.map), c.lat, c.lon);
        EXPECT_EQ(p.outcome, MapPlot::Outcome::Placed) << c.map << " " << c.lat << " " << c.lon;
        EXPECT_EQ(p.x, c.x) << c.map << " " << c.lat << " " << c.lon;
        EXPECT_EQ(p.y, c.y) << c.map << " " << c.lat << " " << c.lon;
    }
}

TEST(MapPositionTest, ConicMapsKeepTheirCentre) {
    struct Centre {
        const char* map;
        float cx, cy;
    };
    for (const Centre& c : {Centre{"North America Map", 666, -1400}, Centre{"Australia Map", 648, 4500},
                            Centre{"UK Map", 483, -4100}, Centre{"Europe Map", 800, -850},
                            Centre{"New Zealand Map", 520, 7500}, Centre{"Japan Map", 520, -4000},
                            Centre{"Asia Map", 0, 0}, Centre{"World Map", 0, 0}}) {
        const MapPlot p = MapPosition(QString::fromLatin1(c.map), 10, 10);
        EXPECT_EQ(p.centreX, c.cx) << c.map;
        EXPECT_EQ(p.centreY, c.cy) << c.map;
    }
}

struct FailureCase {
    const char* what;
    const char* map;
    double lat, lon;
    MapPlot::Outcome outcome;
};

TEST(MapPositionTest, FailuresLeaveThePixelAsItWas) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const FailureCase& c : {
             FailureCase{"not one of the nine", "My Map", 50, 5, MapPlot::Outcome::NotAMap},
             FailureCase{"case differs", "europe Map", 50, 5, MapPlot::Outcome::NotAMap},
             FailureCase{"empty name", "", 50, 5, MapPlot::Outcome::NotAMap},
             FailureCase{"radius beyond 16 bits", "UK Map", -300, 0, MapPlot::Outcome::Overflow},
             FailureCase{"radius below 16 bits", "New Zealand Map", -450, 170, MapPlot::Outcome::Overflow},
             FailureCase{"correction beyond 16 bits", "North America Map", 40, 40000, MapPlot::Outcome::Overflow},
             FailureCase{"pixel beyond 32 bits", "Asia Map", 10, 1e9, MapPlot::Outcome::Overflow},
             FailureCase{"not a number", "Europe Map", nan, 5, MapPlot::Outcome::Overflow},
             FailureCase{"world pole", "World Map", 90, 5, MapPlot::Outcome::OutOfRange},
             FailureCase{"world south pole", "World Map", -90, 5, MapPlot::Outcome::OutOfRange},
             FailureCase{"world no latitude", "World Map", nan, 5, MapPlot::Outcome::OutOfRange},
         }) {
        const MapPlot p = MapPosition(QString::fromLatin1(c.map), c.lat, c.lon, 17, -23);
        EXPECT_EQ(p.outcome, c.outcome) << c.what;
        EXPECT_EQ(p.x, 17) << c.what;
        EXPECT_EQ(p.y, -23) << c.what;
    }
}

TEST(MapPositionTest, NorthAmericaCorrectionSteps) {
    const int expected[] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  3,  3,  3,  3,  3,  3,  7,  7,  7,
                            7,  7,  10, 10, 10, 10, 10, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 36, 37};
    for (int d = 0; d < static_cast<int>(std::size(expected)); ++d)
        EXPECT_EQ(NorthAmericaCorrection(static_cast<int16_t>(d)), expected[d]) << d;
    EXPECT_EQ(NorthAmericaCorrection(-1), -1);
    EXPECT_EQ(NorthAmericaCorrection(32767), 32767);
}

// The drawing rule meets the plotting rule wherever the steps agree with the continuous version:
// within the rounding of the radius and of the pixel (1.21 at most) away from the steps.
TEST(MapPositionTest, SmoothRuleAgreesAwayFromTheSteps) {
    struct Near {
        MapId map;
        double lat, lon, maxDistance;
    };
    for (const Near& c : {
             Near{MapId::UK, 51.5, -0.1, 1.25}, Near{MapId::Europe, 48.85, 2.35, 1.25},
             Near{MapId::Australia, -33.9, 151.2, 1.25}, Near{MapId::NewZealand, -36.85, 174.76, 1.25},
             Near{MapId::Japan, 35.68, 139.69, 1.25}, Near{MapId::Asia, 28.6, 77.2, 1.25},
             Near{MapId::NNederland, 53.0, 5.0, 1.25}, Near{MapId::NorthAmerica, 40, -95, 1.25},
             Near{MapId::NorthAmerica, 40, -140, 1.25},
             Near{MapId::World, 10, 20, 1.25}, Near{MapId::World, -35, -60, 1.25},
             // Inside a 5-degree band the plotting rule moves in whole degrees only.
             Near{MapId::World, 12.9, 20, 8}, Near{MapId::World, -14.5, 20, 45},
         }) {
        const MapPlot p = MapPosition(MapName(c.map), c.lat, c.lon);
        const std::optional<MapPointF> s = MapPointSmooth(c.map, c.lat, c.lon);
        ASSERT_TRUE(s.has_value());
        const double distance = std::hypot(p.x - s->x, p.y - s->y);
        EXPECT_LE(distance, c.maxDistance) << MapName(c.map).toStdString() << " " << c.lat << " " << c.lon;
    }
    EXPECT_FALSE(MapPointSmooth(MapId::World, 90, 0).has_value());
    // The world map's southern step is real: -14.5 plots as -10.
    EXPECT_EQ(MapPosition(QStringLiteral("World Map"), -14.5, 20).y,
              MapPosition(QStringLiteral("World Map"), -10, 20).y);
}

TEST(MapPositionTest, NamesRoundTrip) {
    for (MapId map : kAllMaps) EXPECT_EQ(MapIdFromName(MapName(map)), map);
    EXPECT_FALSE(MapIdFromName(QStringLiteral("World Map.jpg")).has_value());
}

struct SelectCase {
    const char* what;
    QStringList catalogue;
    const char* chosen;
    int index;
    QStringList messages;
};

TEST(MapSelectionTest, ChosenMapThenWorldMapThenNothing) {
    const QString ukMissing = QStringLiteral("UK Map not found\r\nPlease install UK Map in Quillor]Maps folder");
    const QString worldMissing =
        QStringLiteral("World Map not found\r\nPlease install World Map in Quillor]Maps folder");
    for (const SelectCase& c : {
             SelectCase{"found", {"Europe Map.jpg", "UK Map.jpg"}, "UK Map", 1, {}},
             SelectCase{"first of two", {"Europe Map.jpg", "Europe Map.gif"}, "Europe Map", 0, {}},
             SelectCase{"substring", {"My UK Map.png", "UK Map.jpg"}, "UK Map", 0, {}},
             SelectCase{"case counts", {"uk map.jpg", "World Map.jpg"}, "UK Map", 1, {ukMissing}},
             SelectCase{"fallback", {"Europe Map.jpg", "World Map.jpg"}, "UK Map", 1, {ukMissing}},
             SelectCase{"neither", {"Europe Map.jpg"}, "UK Map", -1, {ukMissing, worldMissing}},
             SelectCase{"empty folder", {}, "UK Map", -1, {ukMissing, worldMissing}},
             SelectCase{"world missing", {}, "World Map", -1, {worldMissing, worldMissing}},
         }) {
        const MapSelection s = SelectMap(c.catalogue, QString::fromLatin1(c.chosen));
        EXPECT_EQ(s.index, c.index) << c.what;
        EXPECT_EQ(s.messages, c.messages) << c.what;
    }
}

TEST(MapSelectionTest, FindsAmongAThousandEntries) {
    QStringList catalogue;
    for (int i = 0; i < 1000; ++i) catalogue << QStringLiteral("Region %1 Map.jpg").arg(i);
    catalogue << QStringLiteral("World Map.jpg");
    EXPECT_EQ(FindMapEntry(catalogue, QStringLiteral("World Map")), 1000);
    EXPECT_EQ(FindMapEntry(catalogue, QStringLiteral("Region 999 Map")), 999);
}

TEST(MapSelectionTest, Texts) {
    struct Text {
        QString got, expected;
    };
    for (const Text& t : {
             Text{MapMenuCaption("Europe Map.jpg"), "  Europe  "},
             Text{MapMenuCaption("Europe Map.gif"), "  Europe  "},
             Text{MapMenuCaption("My Map.png"), "  My Map.png  "},
             Text{MapMenuCaption("A Map.jpg B Map.jpg"), "  A B  "},
             Text{MapMenuCaption("Europe map.jpg"), "  Europe map.jpg  "},
             Text{MapWindowCaption("UK Map.jpg"), "Map   UK Map   (Hold down left button to move map)"},
             Text{MapEntryName("N-Nederland Map.jpg"), "N-Nederland Map"},
             Text{MapEntryName("abc"), ""},
             Text{FormatMapDistance(0), "0"},
             Text{FormatMapDistance(999), "999"},
             Text{FormatMapDistance(12345.6), "12,346"},
             Text{FormatMapDistance(1234567), "1,234,567"},
             Text{CalledStationCaption("PA3XYZ", 12345, 0, 45, true), " To PA3XYZ  Dx 12,345 km  Az 45\u00b0 "},
             Text{CalledStationCaption("PA3XYZ", 712, 1, 271, false), "PA3XYZ\r\n  Dx 712 mi  Az 271\u00b0 "},
             Text{CalledStationCaption("K1ABC", 7, 2, 0, false), "K1ABC\r\n  Dx 7 km  Az 0\u00b0 "},
             Text{CallFromCaption(" To PA3XYZ  Dx 12,345 km  Az 45\u00b0 "), "PA3XYZ"},
             Text{CallFromCaption("PA3XYZ\r\n  Dx 712 mi  Az 271\u00b0 "), "PA3XYZ"},
             Text{CallFromCaption("Call"), "Call"},
         }) {
        EXPECT_EQ(t.got, t.expected);
    }
}

TEST(MapSelectionTest, DistanceTakesTheLocaleSeparators) {
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(FormatMapDistance(12345), QStringLiteral("12.345"));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
}

}  // namespace
