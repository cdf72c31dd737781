// The pass finder against the same engine stepped every second, on real
// element sets from a January 2018 catalogue, and its edge cases.

#include "engine/passfinder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "engine/observer.h"
#include "engine/orbit.h"
#include "engine/timebase.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using testing::LoadRecordLines;
using testing::LoadSun;
using testing::MakeSite;

constexpr double kDay = 86400.0;
constexpr double kRadiansToDegrees = 57.29577951308232;

// The catalogue's reference instant and site (2018-01-20T22:33:15Z; 43.7064 N,
// 79.2442 W, 200 m), as the catalogue's notes give them.
const SiteRec kSite = MakeSite(43.7064, 79.2442, 200.0);
const double kStartDay = EpochTime(testing::Seconds(2018, 1, 20, 22, 33, 15));

std::unique_ptr<SatRec> RealSet(const std::string& name) {
    std::ifstream file(std::string(VELORAN_TEST_DIR) + "/real_sets.txt");
    std::string line, one, two;
    while (std::getline(file, line)) {
        if (line != name) continue;
        std::getline(file, one);
        std::getline(file, two);
        return LoadRecordLines(name, one + "\n", two + "\n", &kSite);
    }
    ADD_FAILURE() << name << " is not in real_sets.txt";
    return LoadRecordLines(name, "", "", &kSite);
}

struct SteppedPass {
    long aos, los;  // whole seconds from the start: the first second up, the first second down
    double maxDegs;
};

// Elevation every whole second from the start, through the engine's own
// propagation and look angles.
std::vector<SteppedPass> StepEverySecond(SatRec* rec, const SiteRec& site, double startDay,
                                         long seconds) {
    double t0 = 0, theta0 = 0;
    GetSidereal(startDay, &t0, &theta0);
    KepRec* k = &rec->satKep;
    std::vector<SteppedPass> passes;
    bool up = false;
    for (long s = 0; s <= seconds; ++s) {
        const double t = startDay + s / kDay;
        double M, nu, r, X, Y, Z, VX, VY, VZ, sx, sy, sz, svx, svy, rot[3][3], az, el;
        SolveKeplerD(t, k, &M, &nu, &r);
        GetSatPosition(k->epochDay, k->epochRAAN, k->epochArgPerigee, k->semiMajorAxis,
                       k->inclination, k->eccentricity, rec->satRAANPrecession,
                       rec->perigeePrecession, t, nu, &r, &X, &Y, &Z, &VX, &VY, &VZ);
        GetSitePosition(site.siteLatRads, site.siteLongRads, site.siteAltitudeM / 1000.0, t, t0,
                        theta0, &sx, &sy, &sz, &svx, &svy, rot);
        GetNewBearings(rot, X, Y, Z, sx, sy, sz, &az, &el);
        const double degs = el * kRadiansToDegrees;
        if (degs >= 0 && !up) passes.push_back({s, -1, degs});
        if (degs >= 0) passes.back().maxDegs = std::max(passes.back().maxDegs, degs);
        if (degs < 0 && up) passes.back().los = s;
        up = degs >= 0;
    }
    return passes;
}

double SecondsFromStart(double day, double startDay) {
    return (day - startDay) * kDay;
}

// Every stepped pass reaching 0.5 degrees is found, and every pass found is
// a stepped one: rise and set within a second, the maximum within 0.05 degree.
void ExpectMatchesStepping(const std::string& name, double startDay, double endDay,
                           const SiteRec& site = kSite) {
    auto rec = RealSet(name);
    auto sun = LoadSun(&kSite);
    std::vector<PassRec> found(200);
    const int count =
        FindPasses(rec.get(), &site, sun.get(), startDay, endDay, 0.0, found.data(), 200);
    ASSERT_LE(count, 200);
    found.resize(count);
    double stepEnd = endDay;
    const KepRec& k = rec->satKep;
    if (k.orbitalDecay > 0)
        stepEnd = std::min(stepEnd,
                           k.epochDay + (16.666666 - k.epochMeanMotion) / (10.0 * k.orbitalDecay));
    const long seconds =
        stepEnd > startDay ? std::lround(std::floor((stepEnd - startDay) * kDay)) : -1;
    const std::vector<SteppedPass> stepped = StepEverySecond(rec.get(), site, startDay, seconds);

    const auto matches = [&](const PassRec& p, const SteppedPass& s) {
        const double aos = SecondsFromStart(p.aosDay, startDay);
        const double los = SecondsFromStart(p.losDay, startDay);
        const bool aosOk = s.aos == 0 ? p.upAtStart && aos == 0 : std::fabs(aos - s.aos) <= 1.0;
        const bool losOk = s.los < 0 ? p.upAtEnd != 0 : std::fabs(los - s.los) <= 1.0;
        return aosOk && losOk;
    };
    EXPECT_EQ(found.empty(), stepped.empty()) << name;
    for (const SteppedPass& s : stepped) {
        if (s.maxDegs < 0.5) continue;
        const PassRec* hit = nullptr;
        for (const PassRec& p : found)
            if (matches(p, s)) hit = &p;
        ASSERT_NE(hit, nullptr) << name << ": missed the pass rising " << s.aos << " s from start";
        EXPECT_NEAR(hit->maxElevationDegs, s.maxDegs, 0.05) << name << " at " << s.aos;
    }
    for (const PassRec& p : found) {
        if (p.maxElevationDegs < 0.5) continue;
        bool hit = false;
        for (const SteppedPass& s : stepped) hit = hit || matches(p, s);
        EXPECT_TRUE(hit) << name << ": no such pass rising " << SecondsFromStart(p.aosDay, startDay)
                         << " s from start";
        EXPECT_LE(p.aosDay, p.maxDay);
        EXPECT_LE(p.maxDay, p.losDay);
        EXPECT_LE(p.losDay, stepEnd);
    }
}

// Low orbits of every inclination and some eccentricity, a Molniya, a
// geostationary satellite in view and one below the horizon, a slow
// eccentric orbit and one of e = 0.9, a set that decays two days in, and one
// that came down before the catalogue was made.
class AgainstStepping : public ::testing::TestWithParam<const char*> {};

TEST_P(AgainstStepping, ThreeDays) {
    ExpectMatchesStepping(GetParam(), kStartDay, kStartDay + 3.0);
}

INSTANTIATE_TEST_SUITE_P(RealSets, AgainstStepping,
                         ::testing::Values("ISSZARYA", "FLOCK2P-1", "JPSS-1", "LEMUR-2-J",
                                           "IRIDIUM19", "MOLNIYA53", "GOES16", "FENGYUN4A",
                                           "CLUSTERII", "MMS4", "FLOCK2E-2", "IRIDIUM6"));

std::vector<PassRec> Passes(const SatRec* rec, double startDay, double endDay, double minDegs) {
    std::vector<PassRec> out(200);
    out.resize(FindPasses(rec, &kSite, nullptr, startDay, endDay, minDegs, out.data(), 200));
    return out;
}

TEST(PassFinder, SpanCutsPassesInProgress) {
    auto iss = RealSet("ISSZARYA");
    const std::vector<PassRec> day = Passes(iss.get(), kStartDay, kStartDay + 1.0, 0.0);
    ASSERT_GE(day.size(), 3u);
    // From the middle of the first pass to the middle of the third.
    const double start = 0.5 * (day[0].aosDay + day[0].losDay);
    const double end = 0.5 * (day[2].aosDay + day[2].losDay);
    const std::vector<PassRec> cut = Passes(iss.get(), start, end, 0.0);
    ASSERT_EQ(cut.size(), 3u);
    EXPECT_TRUE(cut[0].upAtStart);
    EXPECT_EQ(cut[0].aosDay, start);
    EXPECT_NEAR(cut[0].losDay, day[0].losDay, 0.1 / kDay);
    EXPECT_FALSE(cut[1].upAtStart || cut[1].upAtEnd);
    EXPECT_TRUE(cut[2].upAtEnd);
    EXPECT_EQ(cut[2].losDay, end);
    ExpectMatchesStepping("ISSZARYA", start, end);
}

TEST(PassFinder, MinimumElevationKeepsOnlyHigherPasses) {
    auto iss = RealSet("ISSZARYA");
    const std::vector<PassRec> all = Passes(iss.get(), kStartDay, kStartDay + 3.0, 0.0);
    ASSERT_FALSE(all.empty());
    for (const PassRec& p : all) {
        const std::vector<PassRec> above =
            Passes(iss.get(), kStartDay, kStartDay + 3.0, p.maxElevationDegs + 0.01);
        for (const PassRec& q : above) {
            EXPECT_NE(q.aosDay, p.aosDay);
            EXPECT_GT(q.maxElevationDegs, p.maxElevationDegs);
        }
    }
}

TEST(PassFinder, GrazingPassOfSixTenthsOfADegree) {
    // Moving the site north until one of the ISS's passes just clears the
    // horizon at 0.6 degree.
    auto iss = RealSet("ISSZARYA");
    SiteRec site = kSite;
    double grazing = 90;
    for (double lat = 43.7; lat < 65.0 && std::fabs(grazing - 0.6) > 0.05; lat += 0.01) {
        site = MakeSite(lat, 79.2442, 200.0);
        PassRec p[40];
        const int n = FindPasses(iss.get(), &site, nullptr, kStartDay, kStartDay + 1.0, 0.0, p, 40);
        for (int i = 0; i < n && i < 40; ++i)
            if (std::fabs(p[i].maxElevationDegs - 0.6) < std::fabs(grazing - 0.6))
                grazing = p[i].maxElevationDegs;
    }
    ASSERT_NEAR(grazing, 0.6, 0.05);
    ExpectMatchesStepping("ISSZARYA", kStartDay, kStartDay + 1.0, site);
}

TEST(PassFinder, TrackRunsFromAosThroughTheMaximumToLos) {
    auto iss = RealSet("ISSZARYA");
    const std::vector<PassRec> passes = Passes(iss.get(), kStartDay, kStartDay + 1.0, 10.0);
    ASSERT_FALSE(passes.empty());
    const PassRec& p = passes[0];
    double az[3], el[3];
    ASSERT_EQ(LookAnglesOver(iss.get(), &kSite, p.aosDay, p.losDay, 2, az, el), 2);
    ASSERT_EQ(LookAnglesOver(iss.get(), &kSite, p.maxDay, p.maxDay, 1, az + 2, el + 2), 1);
    EXPECT_NEAR(el[0], 0.0, 0.01);
    EXPECT_NEAR(el[1], 0.0, 0.01);
    EXPECT_NEAR(el[2], p.maxElevationDegs, 1e-5);
    EXPECT_NEAR(az[0], p.aosAzimuthDegs, 1e-5);
    EXPECT_NEAR(az[1], p.losAzimuthDegs, 1e-5);
    EXPECT_NEAR(az[2], p.maxAzimuthDegs, 1e-5);
}

TEST(PassFinder, UselessElementSetsGiveNoPasses) {
    struct Case {
        const char* what;
        void (*spoil)(SatRec*);
    };
    const Case cases[] = {
        {"zero mean motion", [](SatRec* r) { r->satKep.epochMeanMotion = 0; }},
        {"unreadable mean motion",
         [](SatRec* r) { r->satKep.epochMeanMotion = std::numeric_limits<double>::quiet_NaN(); }},
        {"hyperbolic", [](SatRec* r) { r->satKep.eccentricity = 1.2; }},
        {"perigee underground", [](SatRec* r) { r->satKep.eccentricity = 0.5; }},
        {"unreadable inclination",
         [](SatRec* r) { r->satKep.inclination = std::numeric_limits<double>::infinity(); }},
    };
    for (const Case& c : cases) {
        auto iss = RealSet("ISSZARYA");
        c.spoil(iss.get());
        PassRec p[4];
        EXPECT_EQ(FindPasses(iss.get(), &kSite, nullptr, kStartDay, kStartDay + 10.0, 0.0, p, 4), 0)
            << c.what;
    }
    auto iss = RealSet("ISSZARYA");
    PassRec p[4];
    EXPECT_EQ(FindPasses(iss.get(), &kSite, nullptr, kStartDay, kStartDay, 0.0, p, 4), 0)
        << "empty span";
    EXPECT_EQ(FindPasses(nullptr, &kSite, nullptr, kStartDay, kStartDay + 1, 0.0, p, 4), 0);
}

TEST(PassFinder, CountsBeyondTheRoomItIsGivenAndThreadsAgree) {
    auto iss = RealSet("ISSZARYA");
    auto sun = LoadSun(&kSite);
    PassRec two[2];
    const int total = FindPasses(iss.get(), &kSite, sun.get(), kStartDay, kStartDay + 2, 0, two, 2);
    EXPECT_GT(total, 2);
    std::vector<PassRec> a(total), b(total);
    std::thread other([&] {
        FindPasses(iss.get(), &kSite, sun.get(), kStartDay, kStartDay + 2, 0, b.data(), total);
    });
    FindPasses(iss.get(), &kSite, sun.get(), kStartDay, kStartDay + 2, 0, a.data(), total);
    other.join();
    for (int i = 0; i < total; ++i) {
        EXPECT_EQ(a[i].aosDay, b[i].aosDay);
        EXPECT_EQ(a[i].sunlitAtMax, b[i].sunlitAtMax);
    }
    EXPECT_EQ(a[0].aosDay, two[0].aosDay);
    EXPECT_EQ(a[1].losDay, two[1].losDay);
}

}  // namespace
}  // namespace veloran
