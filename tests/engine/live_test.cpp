// The live search: passes of synthetic satellites seen from synthetic sites.

#include "engine/live.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "engine/orbit.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::Elements;
using testing::PolarLeo;

constexpr double kSecond = 1.0 / 86400.0;

struct LiveFixture : ::testing::Test {
    SiteRec site = testing::MakeSite(43.7064, 79.2442, 200.0);
    std::unique_ptr<SatRec> sun = testing::LoadSun(&site);

    // Runs the search at `secs` as the one-second tick does for a satellite in rotation.
    void Calculate(SatRec* rec, uint32_t secs, Bool32 mainFlag = 0) {
        sunCalcTask(secs, sun.get(), nullptr, &site);
        SatelliteCalculationsV(EpochTime(secs), kSatelliteSearchSpan, rec, &site, mainFlag, secs,
                               sun.get());
    }

    // The first moment at or after `from`, on a one-minute grid, when the
    // satellite is below the horizon and its next AOS lies ahead.
    uint32_t BeforeAPass(SatRec* rec, uint32_t from) {
        for (uint32_t s = from;; s += 60) {
            Calculate(rec, s);
            if (!rec->AOS && rec->secondsToAOS < kSecondsToAOSUnknown && rec->secondsToLOS > 0)
                return s;
        }
    }
};

TEST_F(LiveFixture, LeoPassHasOrderedEventsAndAFullShape) {
    auto rec = testing::LoadRecord("POLAR", PolarLeo(), &site);
    const uint32_t start = BeforeAPass(rec.get(), testing::Seconds(2026, 11, 21, 12));
    ASSERT_LT(rec->secondsToAOS, rec->secondsToMAXE);
    ASSERT_LT(rec->secondsToMAXE, rec->secondsToLOS);
    EXPECT_EQ(rec->AOSTime, start + rec->secondsToAOS);
    EXPECT_EQ(rec->LOSTime, start + rec->secondsToLOS);
    EXPECT_EQ(rec->passLength, rec->secondsToLOS - rec->secondsToAOS);
    EXPECT_GT(rec->passLength, 4u * 60u);
    EXPECT_LT(rec->passLength, 17u * 60u) << "a 700 km orbit is seen for a quarter hour at most";
    EXPECT_GT(rec->maxElevation, 0.0);
    EXPECT_LE(rec->maxElevation, 90.0);
    EXPECT_DOUBLE_EQ(rec->pathLoss, INFINITY) << "below the horizon";
    // One sample every twelve seconds of the pass, rising then falling.
    EXPECT_NEAR(rec->passElevCounter, static_cast<int>(rec->passLength / 12), 1);
    int peak = 0;
    for (int i = 1; i < rec->passElevCounter; ++i)
        if (rec->passElev[i] > rec->passElev[peak]) peak = i;
    for (int i = 1; i <= peak; ++i) EXPECT_GE(rec->passElev[i], rec->passElev[i - 1]);
    for (int i = peak + 1; i < rec->passElevCounter; ++i)
        EXPECT_LE(rec->passElev[i], rec->passElev[i - 1]);
    EXPECT_NEAR(rec->passElev[peak], rec->maxElevation, 1.0);

    // Stepping the clock through the pass: in view between AOS and LOS, the
    // elevation climbs to the maximum and falls after it, the satellite
    // approaches before the maximum and recedes after it.
    const uint32_t aos = rec->AOSTime, maxe = rec->MAXETime, los = rec->LOSTime;
    double previous = -90.0;
    for (uint32_t s = aos + 1; s < los - 1; s += 20) {
        Calculate(rec.get(), s);
        EXPECT_TRUE(rec->AOS) << s - aos;
        EXPECT_EQ(rec->secondsToAOS, 0u);
        EXPECT_EQ(rec->passLength, rec->secondsToLOS) << "in view at the start";
        EXPECT_NEAR(static_cast<double>(rec->LOSTime), static_cast<double>(los), 1.0);
        EXPECT_LT(rec->pathLoss, 200.0);
        if (s + 30 < maxe) {
            EXPECT_GT(rec->elevationDegs, previous);
            EXPECT_GT(rec->satVelocity, 0.0) << "approaching";
        }
        if (s > maxe + 30) {
            EXPECT_LT(rec->elevationDegs, previous);
            EXPECT_LT(rec->satVelocity, 0.0) << "receding";
        }
        previous = rec->elevationDegs;
    }
}

TEST_F(LiveFixture, RangeAtTheHorizonIsTheGeometricHorizonDistance) {
    Elements e;
    e.inclination = 60.0;
    e.meanMotion = 1440.0 / std::pow((6378.16 + 500.0) / 331.25, 1.5);  // circular, 500 km
    auto rec = testing::LoadRecord("CIRC", e, &site);
    const uint32_t start = BeforeAPass(rec.get(), testing::Seconds(2026, 11, 21));
    Calculate(rec.get(), rec->AOSTime);
    EXPECT_NEAR(rec->elevationDegs, 0.0, 0.1);
    // sqrt((R + h)^2 - R^2) for a site near 6368 km from the centre.
    const double expected =
        std::sqrt(std::pow(6378.16 + 500.0, 2) - std::pow(site.siteAltitudeGEOC, 2));
    EXPECT_NEAR(rec->satRange, expected, 40.0);
    EXPECT_NEAR(rec->satAltitude, 500.0, 25.0) << "height over 6378.16 km at a geocentric latitude";
    (void)start;
}

TEST_F(LiveFixture, GeostationaryLooksTheSameAllDay) {
    Elements e;
    e.meanMotion = 1.00273791;
    e.inclination = 0.01;
    e.meanAnomaly = 150.0;
    auto rec = testing::LoadRecord("GEO", e, &site);
    Calculate(rec.get(), testing::Seconds(2026, 11, 21, 0));
    const double az = rec->azimuthDegs, el = rec->elevationDegs;
    ASSERT_GT(el, 0.0) << "pick a slot visible from the site";
    for (int hour = 3; hour < 24; hour += 3) {
        Calculate(rec.get(), testing::Seconds(2026, 11, 21, hour));
        EXPECT_NEAR(rec->azimuthDegs, az, 0.1);
        EXPECT_NEAR(rec->elevationDegs, el, 0.1);
        EXPECT_NEAR(rec->satVelocity, 0.0, 0.005) << "km/s";
        EXPECT_TRUE(rec->AOS);
        EXPECT_EQ(rec->secondsToAOS, 0u);
        EXPECT_EQ(rec->secondsToLOS, 0u) << "never sets";
        EXPECT_EQ(rec->passLength, 0u);
        EXPECT_FALSE(rec->satKep.isLEO);
    }
}

TEST_F(LiveFixture, NeverInViewKeepsTheUnknownMarkers) {
    SiteRec arctic = testing::MakeSite(85.0, 0.0, 0.0);
    Elements e;
    e.inclination = 0.0;
    e.meanMotion = 15.0;
    auto rec = testing::LoadRecord("EQUATOR", e, &arctic);
    const uint32_t now = testing::Seconds(2026, 11, 21);
    SatelliteCalculationsV(EpochTime(now), kSatelliteSearchSpan, rec.get(), &arctic, 0, now,
                           sun.get());
    EXPECT_EQ(rec->secondsToAOS, kSecondsToAOSUnknown);
    EXPECT_DOUBLE_EQ(rec->maxElevation, -90.0);
    EXPECT_FALSE(rec->satActivePass);
    EXPECT_FALSE(rec->AOS);
    EXPECT_EQ(rec->secondsToLOS, 0u);
    EXPECT_EQ(rec->passElevCounter, 0);
    EXPECT_TRUE(rec->satKep.isLEO);
}

TEST_F(LiveFixture, LongHighPassFillsTheShapeArraysAndStops) {
    // A Molniya orbit with apogee over the northern hemisphere: seen for
    // many hours from 60 degrees north.
    SiteRec north = testing::MakeSite(60.0, -30.0, 0.0);
    Elements e;
    e.inclination = 63.4;
    e.eccentricity = 0.72;
    e.meanMotion = 2.006;
    e.argPerigee = 270.0;
    e.meanAnomaly = 150.0;
    e.raan = 0.0;
    auto rec = testing::LoadRecord("MOLNIYA", e, &north);
    bool sawLongPass = false;
    for (uint32_t s = testing::Seconds(2026, 11, 16, 12); s < testing::Seconds(2026, 11, 17, 12);
         s += 3600) {
        SatelliteCalculationsV(EpochTime(s), kSatelliteSearchSpan, rec.get(), &north, 0, s,
                               sun.get());
        if (rec->secondsToLOS > rec->secondsToAOS + 4 * 3600 + 60) {
            sawLongPass = true;
            EXPECT_EQ(rec->passElevCounter, kMaxPassSamples);
            EXPECT_FALSE(rec->satKep.isLEO);
            break;
        }
    }
    EXPECT_TRUE(sawLongPass);
}

TEST_F(LiveFixture, TrackedHoursAndMinimumElevationDecideTheActivePass) {
    auto rec = testing::LoadRecord("POLAR", PolarLeo(), &site);
    BeforeAPass(rec.get(), testing::Seconds(2026, 11, 21, 12));
    const uint32_t now = rec->AOSTime - rec->secondsToAOS;
    EXPECT_TRUE(rec->satActivePass);
    std::memset(rec->trackHours, '0', 24);
    Calculate(rec.get(), now);
    EXPECT_FALSE(rec->satActivePass) << "no hour enabled";
    std::memset(rec->trackHours, '1', 24);
    site.siteMinElevDegs = rec->maxElevation + 1.0;
    Calculate(rec.get(), now);
    EXPECT_FALSE(rec->satActivePass) << "the pass does not rise high enough";
}

TEST_F(LiveFixture, MainSatelliteKeepsItsAosFlagAndOldPoint) {
    auto rec = testing::LoadRecord("POLAR", PolarLeo(), &site);
    const uint32_t start = BeforeAPass(rec.get(), testing::Seconds(2026, 11, 21, 12));
    Calculate(rec.get(), rec->AOSTime + 60, 1);
    EXPECT_FALSE(rec->AOS) << "the visibility check owns the main satellite's flag";
    EXPECT_GE(rec->elevationDegs, 0.0);
    // Ten minutes earlier the sub-satellite point was about 40 degrees of arc back.
    const double dLat = rec->subSatPtLatitudeRads - rec->oldSubSatPtLatitudeRads;
    const double dLon =
        std::remainder(rec->subSatPtLongitudeRads - rec->oldSubSatPtLongitudeRads, kTwoPi);
    const double arc =
        std::sqrt(dLat * dLat + std::pow(dLon * std::cos(rec->subSatPtLatitudeRads), 2));
    EXPECT_NEAR(arc / kDegreesToRadians, 360.0 / (1440.0 / 14.8) * 10.0, 4.0);
    // The site position is refreshed for the views.
    EXPECT_NEAR(
        std::sqrt(site.SiteX * site.SiteX + site.SiteY * site.SiteY + site.SiteZ * site.SiteZ),
        site.siteAltitudeGEOC, 1.0);
    (void)start;
}

TEST_F(LiveFixture, EclipseChangeIsFoundAhead) {
    // The search stops at LOS, so take a satellite that never rises here and
    // whose low inclined orbit passes through the shadow every revolution.
    site = testing::MakeSite(85.0, 0.0, 0.0);
    Elements e;
    e.inclination = 10.0;
    e.meanMotion = 15.0;
    auto rec = testing::LoadRecord("LOW", e, &site);
    const uint32_t now = testing::Seconds(2026, 11, 21, 12);
    Calculate(rec.get(), now);
    ASSERT_GT(rec->secondsToECL, 0u) << "a LEO crosses the shadow's edge within the search";
    EXPECT_EQ(rec->ECLTime, now + rec->secondsToECL);
    const bool before = rec->eclipsed;
    Calculate(rec.get(), rec->ECLTime + 60);
    EXPECT_NE(static_cast<bool>(rec->eclipsed), before);
}

TEST_F(LiveFixture, GarbledElementsNeitherHangNorCrash) {
    auto rec = testing::LoadRecord("ZERO", Elements{}, &site);
    rec->satKep.epochMeanMotion = 0.0;  // a blank mean-motion field
    CalcKepVals(rec.get(), &site);
    Calculate(rec.get(), testing::Seconds(2026, 11, 21));
    rec->satKep.epochMeanMotion = std::nan("");
    Calculate(rec.get(), testing::Seconds(2026, 11, 21));
    SatelliteCalculationsV(0.0, 0.75, nullptr, &site, 0, 0, nullptr);
    SUCCEED();
}

}  // namespace
}  // namespace veloran
