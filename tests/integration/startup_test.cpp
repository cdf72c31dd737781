// Start-up with the radio switched on in the settings and another satellite
// chosen on the command line: the chosen one is the first and only one
// tuned and announced.

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "sim/radio_sim.h"
#include "station.h"

namespace veloran {
namespace {

using testing::Station;

TEST(StartUp, TheChosenSatelliteIsTunedAndAnnouncedOnce) {
    testing::Elements saved = testing::Leo();
    testing::Elements chosen = testing::Leo();
    chosen.catalog = 99002;
    chosen.raan += 90.0;
    Station station(
        testing::ElementSetText("SAVED", saved) + testing::ElementSetText("CHOSEN", chosen),
        testing::ModeBlock("SAVED", "Saved Sat", 5, 145.85, 436.795) +
            testing::ModeBlock("CHOSEN", "Chosen Sat", 5, 145.90, 145.90));
    sim::SimulatedRadio radio(sim::RadioModel::FT847);
    ASSERT_TRUE(radio.open());

    station.clock.now = testing::Seconds(2026, 11, 21, 6);
    // The radio switched on as the settings do at start.
    station.startWithFt847(radio.devicePath(), [](SiteRec* s) { s->wants_speech = 1; });
    station.app->chooseSatelliteAtStart(1);
    station.app->mainTimerTasks();
    station.drainAnnouncements();
    ASSERT_TRUE(radio.waitForBytes(10, 30000));

    const std::vector<std::string> said = station.speech.said();
    ASSERT_EQ(said.size(), 1u);
    EXPECT_EQ(said[0].rfind("Chosen Sat ", 0), 0u) << said[0];
    // 145.9 MHz within any Doppler shift, never SAVED's 436.795, once the
    // simulator's thread has decoded all it was sent.
    radio.waitIdle();
    EXPECT_NEAR(radio.state().satRx.hertz, 145'900'000.0, 5'000.0);
}

}  // namespace
}  // namespace veloran
