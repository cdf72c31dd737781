// A radio unplugged in the middle of a pass: the controller beeps once,
// switches the radio off and unticks its box, and goes on tracking.

#include <gtest/gtest.h>

#include "radio/drivers.h"
#include "sim/radio_sim.h"
#include "station.h"

namespace veloran {
namespace {

using testing::Station;

constexpr int kFt847 = 1;

TEST(Unplugged, RadioLostMidPassIsSwitchedOffWhileTrackingGoesOn) {
    const testing::Elements e = testing::Leo();
    uint32_t aos = 0, los = 0;
    ASSERT_TRUE(testing::FindPass(e, testing::Seconds(2026, 11, 21, 0), 20.0, 90.0, &aos, &los));
    Station station(testing::ElementSetText("PASSAT", e),
                    testing::ModeBlock("PASSAT", "Pass Sat", 5));
    sim::SimulatedRadio radio(sim::RadioModel::FT847);
    ASSERT_TRUE(radio.open());

    station.clock.now = aos - 5;
    station.app->awakeFromNib();
    const int port = station.app->addTypedPort(radio.devicePath().c_str());
    station.setSite([&](SiteRec* s) {
        s->radio = kFt847;
        s->radioPort = port;
        s->radioBaud = 5;
        s->commandDelay = 0;
        s->fmRetuneHz = 0;  // every change goes out, so the lost radio is met at once
    });
    station.app->openCloseRadio(true);
    ASSERT_EQ(station.site().vfo_enabled, 1);
    const int beepsBefore = station.ui.beeps;

    for (uint32_t t = aos - 5; t < aos + 20; ++t) station.tickAt(t);
    ASSERT_TRUE(station.sat(0)->AOS);
    ASSERT_TRUE(radio.waitForBytes(10, 2000));
    EXPECT_EQ(station.ui.beeps, beepsBefore);

    radio.unplug();
    std::vector<double> azimuths;
    for (uint32_t t = aos + 20; t < aos + 80; ++t) {
        station.tickAt(t);
        azimuths.push_back(station.sat(0)->azimuthDegs);
    }
    EXPECT_EQ(station.ui.beeps, beepsBefore + 1);
    EXPECT_FALSE(station.ui.radioChecked);
    EXPECT_EQ(station.site().vfo_enabled, 0);
    // Tracking goes on: the satellite moves and the shift is still worked out.
    EXPECT_TRUE(station.sat(0)->AOS);
    EXPECT_NE(azimuths.front(), azimuths.back());
    EXPECT_NE(station.app->vfo().dopplerRX, 0.0);
}

}  // namespace
}  // namespace veloran
