// Maidenhead locators against published values.

#include "data/grid.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <utility>

namespace veloran {
namespace {

std::string Locator(double lat, double lonEast) {
    char grid[7];
    LatLon_to_Grid(lat, -lonEast, grid);  // the conversion counts longitude west positive
    return grid;
}

TEST(LatLonToGrid, KnownPlaces) {
    EXPECT_EQ(Locator(0.0, 0.0), "JJ00aa");
    // ARRL headquarters station W1AW, Newington, Connecticut: FN31pr.
    EXPECT_EQ(Locator(41.7147, -72.7272), "FN31pr");
    // Royal Observatory, Greenwich: IO91xl.
    EXPECT_EQ(Locator(51.4769, -0.0005), "IO91xl");
    // Sydney Opera House: QF56od.
    EXPECT_EQ(Locator(-33.8568, 151.2153), "QF56od");
    // The program's default station, Toronto: FN03jq.
    EXPECT_EQ(Locator(43.7064, -79.2442), "FN03jq");
}

TEST(LatLonToGrid, EdgesOfTheRange) {
    EXPECT_EQ(Locator(90.0, 0.0)[1], 'S');  // one past 'R', as the formula gives
    EXPECT_EQ(Locator(-90.0, -180.0), "AA00aa");
    EXPECT_EQ(Locator(-90.0, 179.99), "RA90xa");
}

TEST(GridToLatLon, CornersCentresAndRefusals) {
    double lon = 0, lat = 0;
    ASSERT_EQ(Grid_toLatLon("JJ00", &lon, &lat, true), 1);
    EXPECT_DOUBLE_EQ(lon, 1.0);
    EXPECT_DOUBLE_EQ(lat, 0.5);
    ASSERT_EQ(Grid_toLatLon("FN31PR", &lon, &lat, false), 1);
    EXPECT_NEAR(lon, -72.75, 1e-9);
    EXPECT_NEAR(lat, 41.0 + 17.0 / 24.0, 1e-9);
    // The six-character centre offsets are 0.1 and 0.05 degree.
    ASSERT_EQ(Grid_toLatLon("FN31PR", &lon, &lat, true), 1);
    EXPECT_NEAR(lon, -72.65, 1e-9);
    EXPECT_NEAR(lat, 41.0 + 17.0 / 24.0 + 0.05, 1e-9);

    lon = 123.0;
    lat = 45.0;
    for (const char* bad : {"JJ00A", "JJ0", "J100", "JJA0", "", "JJ00AAB"}) {
        EXPECT_EQ(Grid_toLatLon(bad, &lon, &lat, true), 0) << bad;
        EXPECT_EQ(lon, 123.0);
        EXPECT_EQ(lat, 45.0);
    }
}

TEST(GridToLatLon, ACapitalisedLocatorComesBackToItsSquare) {
    // Sub-square letters are read as capitals; the forward conversion writes
    // small ones.
    for (const auto& [la, lo] :
         {std::pair{41.7147, -72.7272}, {-33.8568, 151.2153}, {64.1466, -21.9426}}) {
        std::string grid = Locator(la, lo);
        for (char& c : grid) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        double lon = 0, lat = 0;
        ASSERT_EQ(Grid_toLatLon(grid.c_str(), &lon, &lat, false), 1);
        EXPECT_LE(lon, lo);
        EXPECT_GT(lon + 2.0 / 24.0, lo);
        EXPECT_LE(lat, la);
        EXPECT_GT(lat + 1.0 / 24.0, la);
    }
}

}  // namespace
}  // namespace veloran
