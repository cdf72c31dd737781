// A radio unplugged in the middle of a pass: the controller beeps once,
// switches the radio off and unticks its box, and goes on tracking.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "data/settings.h"
#include "radio/drivers.h"
#include "sim/radio_sim.h"
#include "station.h"

namespace veloran {
namespace {

using testing::Station;

TEST(Unplugged, RadioLostMidPassIsSwitchedOffWhileTrackingGoesOn) {
    const testing::Elements e = testing::Leo();
    uint32_t aos = 0, los = 0;
    ASSERT_TRUE(testing::FindPass(e, testing::Seconds(2026, 11, 21, 0), 20.0, 90.0, &aos, &los));
    Station station(testing::ElementSetText("PASSAT", e),
                    testing::ModeBlock("PASSAT", "Pass Sat", 5));
    // Without trying the port again, as the radio was first driven.
    station.defaults.setBool(prefkeys::kReopenDevices, false);
    sim::SimulatedRadio radio(sim::RadioModel::FT847);
    ASSERT_TRUE(radio.open());

    station.clock.now = aos - 5;
    station.startWithFt847(radio.devicePath(), [](SiteRec* s) {
        s->fmRetuneHz = 0;  // every change goes out, so the lost radio is met at once
    });
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

class LostAndFound : public ::testing::TestWithParam<bool> {};

// The adapter is pulled mid-pass and plugged back a minute later, under the
// same path (a udev by-id link, here a link of our own). The loss is said
// once, with the device, the port and the reason; while the radio is wanted
// its path is tried again, and once it answers it is tuned with force and
// its box ticked, unless the reopening is switched off.
TEST_P(LostAndFound, VanishedRadioIsSaidOnceAndTakenBackWhenItReturns) {
    const bool reopen = GetParam();
    const testing::Elements e = testing::Leo();
    uint32_t aos = 0, los = 0;
    ASSERT_TRUE(testing::FindPass(e, testing::Seconds(2026, 11, 21, 0), 20.0, 90.0, &aos, &los));
    Station station(testing::ElementSetText("PASSAT", e),
                    testing::ModeBlock("PASSAT", "Pass Sat", 5));
    station.defaults.setBool(prefkeys::kReopenDevices, reopen);
    const std::string link = station.dir.file("radio-port");
    auto radio = std::make_unique<sim::SimulatedRadio>(sim::RadioModel::FT847);
    ASSERT_TRUE(radio->open());
    ASSERT_EQ(symlink(radio->devicePath().c_str(), link.c_str()), 0);

    station.clock.now = aos;
    station.startWithFt847(link, [](SiteRec*) {});
    ASSERT_EQ(station.site().vfo_enabled, 1);
    for (uint32_t t = aos; t < aos + 10; ++t) station.tickAt(t);

    radio->unplug();
    std::remove(link.c_str());
    for (uint32_t t = aos + 10; t < aos + 40; ++t) station.tickAt(t);
    const std::string name = "radio FT-847 on " + link;
    std::vector<std::string> said = {name + ": Input/output error, port closed"};
    if (reopen) said.push_back(name + ": No such file or directory");
    EXPECT_EQ(station.ui.deviceMessages, said);
    EXPECT_FALSE(station.ui.radioChecked);
    EXPECT_EQ(station.site().radioPortFileDescriptor, -1);
    EXPECT_TRUE(station.app->radioWanted());

    radio = std::make_unique<sim::SimulatedRadio>(sim::RadioModel::FT847);
    ASSERT_TRUE(radio->open());
    ASSERT_EQ(symlink(radio->devicePath().c_str(), link.c_str()), 0);
    for (uint32_t t = aos + 40; t < aos + 50; ++t) station.tickAt(t);
    EXPECT_EQ(station.site().vfo_enabled, reopen ? 1 : 0);
    EXPECT_EQ(station.ui.radioChecked, reopen);
    EXPECT_EQ(station.ui.deviceMessages.back(), reopen ? name + " is back" : said.back());
    // Forced: computer control and satellite mode before the frequencies.
    EXPECT_EQ(radio->waitForBytes(10, 2000), reopen);
    EXPECT_EQ(radio->state().catOn, reopen);
    EXPECT_TRUE(station.sat(0)->AOS);
    std::remove(link.c_str());
}

INSTANTIATE_TEST_SUITE_P(Reopen, LostAndFound, ::testing::Bool());

}  // namespace
}  // namespace veloran
