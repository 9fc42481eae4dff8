#include "geo/grid.h"
#include "testutil.h"

#include <gtest/gtest.h>

TEST(GridTest, Table) {
    struct Case { double lat, lon; const char* grid; };
    for (const Case& c : {
             Case{0, -0.5, "IJ90ra"},     // west: minutes mirrored, one letter below a plain division
             Case{-90, 0, "J@09ax"},      // the nudge pushes the south pole below the first field
             Case{10, 20, "KK00aa"},      // a cell border: the nudge keeps it in the upper cell
             Case{90.5, 0, ""},           Case{-90.0001, 0, ""},                 // beyond a pole
             Case{0, 0, "JJ00aa"},        Case{0, 0.5, "JJ00ga"},                Case{52.52, 13.405, "JO62qm"},
             Case{51.5072, -0.1276, "IO91wm"}, Case{-33.8688, 151.2093, "QF56od"}, Case{40.7128, -74.006, "FN20xr"},
             Case{-34.6037, -58.3816, "GF05tj"}, Case{90, 0, "JS00aa"},           Case{9.99999, 19.99999, "JJ99xx"},
             Case{35.6762, 139.6503, "PM95tq"},
         })
        EXPECT_EQ(GridSquare(c.lat, c.lon), c.grid) << c.lat << ", " << c.lon;
}
