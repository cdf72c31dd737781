// When element sets count as stale: two weeks, one week below 400 km.

#include "data/elementage.h"

#include <gtest/gtest.h>

#include "tests/support/element_sets.h"

namespace veloran {
namespace {

struct AgeCase {
    double meanMotion;  // rev/day, circular orbit
    int daysAfterEpoch;
    bool warned;
};

// Semi-major axes from Kepler's third law with GM = 398600.4 km^3/s^2:
// 15.8 rev/day is about 330 km up, 14.2 rev/day about 825 km.
class ElementAge : public ::testing::TestWithParam<AgeCase> {};

TEST_P(ElementAge, WarnsPastTheLimitOfItsOrbit) {
    const AgeCase c = GetParam();
    testing::Elements e;  // epoch 2026 day 320.5: 16 November 12:00 UTC
    e.meanMotion = c.meanMotion;
    const SiteRec site = testing::MakeSite(43.7, 79.2, 200);
    const auto sat = testing::LoadRecord("AGED", e, &site);
    const uint32_t now = testing::Seconds(2026, 11, 16, 12) + c.daysAfterEpoch * 86400u;
    EXPECT_NEAR(ElementAgeDays(*sat, now), c.daysAfterEpoch, 1e-6);
    const std::string warning = ElementAgeWarning(*sat, now);
    EXPECT_EQ(!warning.empty(), c.warned) << warning;
    if (c.warned) {
        EXPECT_NE(warning.find("AGED is " + std::to_string(c.daysAfterEpoch) + ".0 days old"),
                  std::string::npos)
            << warning;
        EXPECT_NE(warning.find("epoch 2026-11-16"), std::string::npos) << warning;
    }
}

INSTANTIATE_TEST_SUITE_P(Limits, ElementAge,
                         ::testing::Values(AgeCase{15.8, 6, false}, AgeCase{15.8, 8, true},
                                           AgeCase{14.2, 8, false}, AgeCase{14.2, 13, false},
                                           AgeCase{14.2, 15, true}, AgeCase{14.2, -3, false}));

}  // namespace
}  // namespace veloran
