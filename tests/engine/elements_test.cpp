// Element-set decoding and the derived orbit constants.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "engine/orbit.h"
#include "engine/satrec.h"
#include "engine/siterec.h"
#include "engine/timebase.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::Elements;
using testing::LineOne;
using testing::LineTwo;

std::unique_ptr<SatRec> Blank() {
    auto rec = std::make_unique<SatRec>();
    std::memset(rec.get(), 0x5A, sizeof(SatRec));  // stale bytes, as in a reused table entry
    InitSatRec(rec.get());
    return rec;
}

TEST(Reset, StartsBelowEveryHorizonWithNoPassKnown) {
    auto rec = Blank();
    EXPECT_EQ(rec->secondsToAOS, 172800u);
    EXPECT_EQ(rec->priority, 5);
    EXPECT_DOUBLE_EQ(rec->elevationRads, -kPi / 2.0);
    EXPECT_TRUE(rec->satActivePass);
    EXPECT_EQ(rec->enabled, 1);
    EXPECT_FALSE(rec->tracked);
    EXPECT_TRUE(rec->altitudeAscending);
    EXPECT_STREQ(rec->name, "");
    EXPECT_EQ(rec->passElevCounter, 0);
    EXPECT_EQ(rec->passElev[kMaxPassSamples - 1], 0);
    EXPECT_EQ(rec->numberOfActiveChannels, 0);
    EXPECT_DOUBLE_EQ(rec->satKep.epochMeanMotion, 0.0);
    EXPECT_FALSE(rec->satKep.isLEO);
    InitSatRec(nullptr);
}

TEST(Decoding, TakesEveryFieldFromItsColumns) {
    Elements e;
    e.catalog = 25544;
    e.epochYear = 26;
    e.epochDayOfYear = 320.12345678;
    e.decay = 0.00012345;
    e.inclination = 51.6390;
    e.raan = 245.7770;
    e.eccentricity = 0.0001234;
    e.argPerigee = 42.2150;
    e.meanAnomaly = 317.9220;
    e.meanMotion = 15.50123456;
    e.revolution = 49830;
    auto rec = Blank();
    EXPECT_EQ(DecodeLineOne(LineOne(e).c_str(), rec.get()), 1);
    EXPECT_EQ(DecodeLineTwo(LineTwo(e).c_str(), rec.get()), 1);
    const KepRec& k = rec->satKep;
    EXPECT_EQ(k.catalogNumber, 25544);
    EXPECT_EQ(k.EpochYear, 26);
    EXPECT_DOUBLE_EQ(k.kepsEpochDay, 320.12345678);
    EXPECT_DOUBLE_EQ(k.epochDay, GetEpochDay(26, 1, 320.12345678));
    EXPECT_DOUBLE_EQ(k.orbitalDecay, 0.00012345);
    EXPECT_EQ(k.elementSet, 999);
    EXPECT_DOUBLE_EQ(k.inclination, 51.6390);  // still degrees: the loader converts
    EXPECT_DOUBLE_EQ(k.epochRAAN, 245.7770);
    EXPECT_DOUBLE_EQ(k.eccentricity, 0.0001234);  // 0001234 with its implied decimal point
    EXPECT_DOUBLE_EQ(k.epochArgPerigee, 42.2150);
    EXPECT_DOUBLE_EQ(k.epochMeanAnomaly, 317.9220);
    EXPECT_DOUBLE_EQ(k.epochMeanMotion, 15.50123456);
    EXPECT_EQ(k.OrbitNum, 49830);
    EXPECT_EQ(k.checksum, LineTwo(e)[68] - '0');
}

TEST(Decoding, DecayIsAlwaysAMagnitude) {
    Elements e;
    e.decay = -0.00000120;
    auto rec = Blank();
    DecodeLineOne(LineOne(e).c_str(), rec.get());
    ASSERT_EQ(LineOne(e)[33], '-');
    EXPECT_DOUBLE_EQ(rec->satKep.orbitalDecay, 0.0000012);
}

TEST(Decoding, LinesOfTheWrongShapeAreIgnored) {
    Elements e;
    e.meanMotion = 14.2;
    const std::string one = LineOne(e), two = LineTwo(e);
    auto rec = Blank();
    const std::string bare = one.substr(0, 69);           // no line end
    const std::string crlf = one.substr(0, 69) + "\r\n";  // two-character line end
    EXPECT_EQ(DecodeLineOne(bare.c_str(), rec.get()), 0);
    EXPECT_EQ(DecodeLineOne(crlf.c_str(), rec.get()), 0);
    EXPECT_EQ(DecodeLineOne(two.c_str(), rec.get()), 0) << "line 2 handed to the line-1 decoder";
    EXPECT_EQ(DecodeLineTwo(one.c_str(), rec.get()), 0);
    EXPECT_EQ(DecodeLineTwo("", rec.get()), 0);
    EXPECT_EQ(DecodeLineTwo(nullptr, rec.get()), 0);
    EXPECT_EQ(rec->satKep.catalogNumber, 0);
    EXPECT_DOUBLE_EQ(rec->satKep.epochMeanMotion, 0.0);
    // Blank or unreadable fields become zero rather than failing the set.
    std::string garbled = two;
    for (int c = 52; c < 63; ++c) garbled[c] = ' ';
    EXPECT_EQ(DecodeLineTwo(garbled.c_str(), rec.get()), 1);
    EXPECT_DOUBLE_EQ(rec->satKep.epochMeanMotion, 0.0);
}

TEST(DerivedConstants, SemiMajorAxisPrecessionAndDecay) {
    const SiteRec site = testing::MakeSite(43.7064, 79.2442, 200);
    Elements e;
    e.meanMotion = 15.5;
    e.inclination = 51.6;
    e.decay = 0.0001;
    auto rec = testing::LoadRecord("ISS", e, &site);
    const KepRec& k = rec->satKep;
    // 331.25 km * (1440 / 15.5)^(2/3)
    EXPECT_NEAR(k.semiMajorAxis, 6794.8, 0.1);
    // A 51.6 degree orbit at about 420 km regresses about 5 degrees a day and
    // its perigee advances about 3.7 (the ISS's well-known rates).
    EXPECT_NEAR(rec->satRAANPrecession / kDegreesToRadians, 4.95, 0.05);
    EXPECT_NEAR(rec->perigeePrecession / kDegreesToRadians, 3.70, 0.05);
    // Mean motion reaches 16.666666 rev/day after (16.666666 - 15.5) / (10 * 0.0001) days.
    EXPECT_NEAR(k.decayDate - k.epochDay, 1166.666, 0.001);
    EXPECT_NEAR(k.referenceOrbit, 1000.0, 1e-12);
    EXPECT_FALSE(k.geostationary);
    EXPECT_FALSE(k.everVisible) << "only the apogee coverage counts (see EverVisible below)";

    e.meanAnomaly = 180.0;
    EXPECT_NEAR(testing::LoadRecord("X", e, &site)->satKep.referenceOrbit, 1000.5, 1e-12);
}

TEST(DerivedConstants, NodeRateCarriesNoEccentricityTerm) {
    double circular = 0, circularPerigee = 0, eccentric = 0, eccentricPerigee = 0;
    GetPrecession(26600.0, 0.0, 63.4 * kDegreesToRadians, &circular, &circularPerigee);
    GetPrecession(26600.0, 0.72, 63.4 * kDegreesToRadians, &eccentric, &eccentricPerigee);
    EXPECT_DOUBLE_EQ(circular, eccentric);
    EXPECT_GT(circular, 0.0) << "positive: the propagator subtracts it";
    // At the critical inclination the perigee stands still (Molniya orbits).
    EXPECT_NEAR(eccentricPerigee, 0.0, 1e-5);
}

TEST(DerivedConstants, StationaryAndUndecayingOrbits) {
    const SiteRec site = testing::MakeSite(0, 0, 0);
    Elements e;
    e.meanMotion = 0.0001;
    EXPECT_TRUE(testing::LoadRecord("GEOISH", e, &site)->satKep.geostationary);
    e.meanMotion = 1.0027;
    auto geo = testing::LoadRecord("GEO", e, &site);
    EXPECT_FALSE(geo->satKep.geostationary) << "only a near-zero mean motion counts";
    EXPECT_NEAR(geo->satKep.semiMajorAxis, 42164.0, 5.0);
    EXPECT_TRUE(std::isinf(geo->satKep.decayDate)) << "no decay, no decay date";
}

TEST(DerivedConstants, EverVisibleDependsOnTheApogeeCoverageOnly) {
    // The inclination is scaled by the degree factor a second time, so a low
    // polar orbit counts as never visible from 80 degrees north, while a high
    // orbit's coverage reaches the site.
    const SiteRec arctic = testing::MakeSite(80, 0, 0);
    Elements polar;
    polar.inclination = 98.0;
    polar.meanMotion = 15.0;
    EXPECT_FALSE(testing::LoadRecord("POLAR", polar, &arctic)->satKep.everVisible);
    Elements high = polar;
    high.meanMotion = 1.0;
    EXPECT_TRUE(testing::LoadRecord("HIGH", high, &arctic)->satKep.everVisible);
    const SiteRec tropics = testing::MakeSite(10, 0, 0);
    EXPECT_TRUE(testing::LoadRecord("POLAR", polar, &tropics)->satKep.everVisible);
}

}  // namespace
}  // namespace veloran
