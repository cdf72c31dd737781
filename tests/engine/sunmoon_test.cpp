// The Sun and Moon pseudo-satellites, the astronomical Sun position against
// published solstices and equinoxes, and the terminator table.

#include "engine/sunmoon.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/live.h"
#include "engine/orbit.h"
#include "engine/timebase.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::Seconds;

struct SunCase {
    const char* what;
    uint32_t when;
    double declination;  // degrees
};

// Instants from the published almanac (US Naval Observatory seasons tables).
TEST(SunPosition, SolsticesAndEquinoxes) {
    const SunCase cases[] = {
        {"J2000.0", Seconds(2000, 1, 1, 12), -23.03},
        {"March equinox 2024", Seconds(2024, 3, 20, 3, 6), 0.0},
        {"June solstice 2024", Seconds(2024, 6, 20, 20, 51), 23.44},
        {"September equinox 2024", Seconds(2024, 9, 22, 12, 44), 0.0},
        {"December solstice 2026", Seconds(2026, 12, 21, 20, 50), -23.44},
    };
    for (const SunCase& c : cases) {
        double ra, dec, rv, lon;
        sunpos(FractionalJulianDate(c.when), true, &ra, &dec, &rv, &lon);
        EXPECT_NEAR(dec, c.declination, 0.1) << c.what;
        EXPECT_GE(ra, 0.0);
        EXPECT_LT(ra, 360.0);
    }
    double ra, dec, rv, lon;
    // Perihelion early January, aphelion early July.
    sunpos(FractionalJulianDate(Seconds(2026, 1, 3)), false, &ra, &dec, &rv, &lon);
    EXPECT_NEAR(rv, 0.9833, 0.0005);
    sunpos(FractionalJulianDate(Seconds(2026, 7, 6)), false, &ra, &dec, &rv, &lon);
    EXPECT_NEAR(rv, 1.0167, 0.0005);
    // At the March equinox the ecliptic longitude is 0 (mod 360).
    sunpos(FractionalJulianDate(Seconds(2024, 3, 20, 3, 6)), true, &ra, &dec, &rv, &lon);
    EXPECT_NEAR(std::remainder(lon, 360.0), 0.0, 0.02);
}

TEST(SunPseudoSatellite, ReturnsToItsMeanAnomalyAfterOneRevolution) {
    const SiteRec site = testing::MakeSite(0, 0, 0);
    auto sun = testing::LoadSun(&site);
    const double year = 1.0 / 0.002737778522;  // days per revolution of the pseudo-orbit
    const double t = EpochTime(Seconds(2026, 3, 1));
    double m1 = 0, m2 = 0;
    SolveKeplerD(t, &sun->satKep, &m1, nullptr, nullptr);
    SolveKeplerD(t + year, &sun->satKep, &m2, nullptr, nullptr);
    EXPECT_NEAR(std::remainder(m2 - m1, kTwoPi), 0.0, 1e-9);
}

TEST(SunPseudoSatellite, PointsWhereTheAlmanacSunIs) {
    const SiteRec site = testing::MakeSite(0, 0, 0);
    auto sun = testing::LoadSun(&site);
    for (uint32_t when :
         {Seconds(2024, 3, 20, 3, 6), Seconds(2026, 8, 10, 6), Seconds(2030, 12, 1)}) {
        sunCalcTask(when, sun.get(), nullptr, const_cast<SiteRec*>(&site));
        double ra, dec, rv, lon;
        sunpos(FractionalJulianDate(when), false, &ra, &dec, &rv, &lon);
        const double r =
            std::sqrt(sun->SatX * sun->SatX + sun->SatY * sun->SatY + sun->SatZ * sun->SatZ);
        const double decPseudo = std::asin(sun->SatZ / r) / kDegreesToRadians;
        const double raPseudo = std::atan2(sun->SatY, sun->SatX) / kDegreesToRadians;
        // The built-in elements date from 1990 and drift from the almanac
        // by a few hundredths of a degree a year: good enough for shadows.
        EXPECT_NEAR(decPseudo, dec, 0.5);
        EXPECT_NEAR(std::remainder(raPseudo - ra, 360.0), 0.0, 1.0);
    }
}

TEST(SunPseudoSatellite, NeverGetsAnEclipseTime) {
    SiteRec site = testing::MakeSite(43.7, 79.2, 200);
    auto sun = testing::LoadSun(&site);
    auto moon = testing::LoadSun(&site);
    LoadMoonKeps(&moon->satKep, 11);
    CalcKepVals(moon.get(), &site);
    moon->db_index = 1021;
    for (uint32_t when = Seconds(2026, 11, 21); when < Seconds(2026, 11, 23); when += 3 * 3600) {
        sunCalcTask(when, sun.get(), moon.get(), &site);
        EXPECT_EQ(sun->secondsToECL, 0u);
        EXPECT_FALSE(sun->eclipsed);
    }
}

TEST(MoonElements, OneSetPerMonthAndTheLastForAnythingElse) {
    KepRec a{}, b{}, c{};
    LoadMoonKeps(&a, 12);
    LoadMoonKeps(&b, 0);
    LoadMoonKeps(&c, 13);
    EXPECT_DOUBLE_EQ(b.inclination, a.inclination);
    EXPECT_DOUBLE_EQ(c.epochMeanAnomaly, a.epochMeanAnomaly);
    EXPECT_EQ(b.checksum, 0);
    EXPECT_EQ(c.checksum, 13);
    KepRec first{};
    first.OrbitNum = 77;
    LoadMoonKeps(&first, 1);
    EXPECT_EQ(first.OrbitNum, 0);
    EXPECT_DOUBLE_EQ(first.epochMeanMotion, 0.036600996);
    // Set 1's epoch 3364.38944783191 is day 364.389... of 2003.
    EXPECT_NEAR(first.epochDay, GetEpochDay(3, 12, 30.38944783191), 1e-9);
}

TEST(Terminator, EquinoxAndSolsticeTables) {
    const int W = 1024, H = 512;
    std::vector<int16_t> table(H);
    for (double dec : {0.0, 23.44, -23.44, 10.0, -5.0}) {
        projillum(table.data(), W, H, dec);
        for (int i = 0; i < H; ++i) {
            EXPECT_NE(table[i], 0) << "dec " << dec << " row " << i;
            EXPECT_LE(table[i], W / 2) << "dec " << dec << " row " << i;
        }
    }
    // June: the rows at one polar end are filled from the middle column
    // outward to the edge; the terminator's own rows are not.
    projillum(table.data(), W, H, 23.44);
    EXPECT_EQ(table[0], W / 2);
    EXPECT_EQ(table[10], W / 2);
    EXPECT_NE(table[H / 2], -1);
    projillum(table.data(), W, H, -23.44);
    EXPECT_EQ(table[H - 1], W / 2);
    EXPECT_EQ(table[H - 10], W / 2);
    // At the equinox the terminator runs along the meridians 90 degrees from
    // the sub-solar point: a quarter of the map width from the origin.
    projillum(table.data(), W, H, 0.0);
    for (int row = H / 4; row < 3 * H / 4; ++row) EXPECT_NEAR(table[row], W / 4, 1) << row;
    projillum(nullptr, W, H, 0.0);
}

}  // namespace
}  // namespace veloran
