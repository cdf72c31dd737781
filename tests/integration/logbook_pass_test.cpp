// Contacts logged from the live station over two passes on virtual time: the
// frequencies are the mode's (with the operator's trims) to the hertz while an
// FT-847 that tunes in 10 Hz steps follows the Doppler behind the FM retune
// threshold, and a station worked again is a duplicate on the same pass only.

#include <gtest/gtest.h>

#include <cmath>

#include "logbook/livecontact.h"
#include "logbook/store.h"
#include "sim/radio_sim.h"
#include "station.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using testing::Station;

int64_t Hertz(double mhz) {
    return std::llround(mhz * 1e6);
}

TEST(LoggedPass, FrequenciesAreTheModesAndDuplicatesBelongToThePass) {
    const testing::Elements e = testing::Leo();
    uint32_t aos1 = 0, los1 = 0, aos2 = 0, los2 = 0;
    ASSERT_TRUE(testing::FindPass(e, testing::Seconds(2026, 11, 21, 0), 20.0, 90.0, &aos1, &los1));
    ASSERT_TRUE(testing::FindPass(e, los1 + 60, 5.0, 90.0, &aos2, &los2));
    ASSERT_GT(los1, aos1 + 300);
    ASSERT_GT(los2, aos2 + 120);
    Station station(testing::ElementSetText("PASSAT", e),
                    testing::ModeBlock("PASSAT", "Pass Sat", 5, 145.85, 436.795, "J_FM") +
                        testing::BetweenPassesBlock());
    sim::SimulatedRadio radio(sim::RadioModel::FT847);
    ASSERT_TRUE(radio.open());
    LogStore store;
    ASSERT_EQ(OpenLogStore(LogbookPath(station.dir.path()), &store), 1);

    testing::DeviceClock clock(std::vector<testing::DeviceClock::Device>{
        {radio.devicePath(), -1, [&] { radio.waitIdle(); }}});
    station.clock.now = aos1 - 120;
    station.startWithFt847(radio.devicePath(), [](SiteRec* s) {
        s->fullDopplerTuning = 1;
        s->fmRetuneHz = 500;
    });
    ASSERT_EQ(station.site().vfo_enabled, 1);
    station.app->uplinkClicked(0.0012);  // the operator's trims
    station.app->downlinkClicked(-0.0007);

    // Saves a contact with `call` now; what came of it, the contact in *saved.
    auto save = [&](const char* call, ContactRec* saved) {
        LiveContactState state;
        station.app->fillLiveContact(&state);
        ContactEntry entry{call, "59", "59", "FN03", "", "", ""};
        ContactRec earlier;
        return SaveLiveContact(&store, &state, &entry, nullptr, saved, &earlier);
    };

    int offNominal = 0;  // ticks the radio was not on the exact corrected frequencies
    int logged = 0;
    for (uint32_t t = aos1 - 5; t <= los1 + 5; ++t) {
        station.tickAt(t);
        if (!station.sat(0)->AOS) continue;
        const VFORec& vfo = station.app->vfo();
        const sim::RadioState r = radio.state();
        if (r.satTx.hertz != 0 && (r.satTx.hertz != static_cast<uint32_t>(Hertz(vfo.up)) ||
                                   r.satRx.hertz != static_cast<uint32_t>(Hertz(vfo.down))))
            ++offNominal;
        if ((t - aos1) % 30 != 15) continue;
        ContactRec c;
        ASSERT_NE(save(logged == 0 ? "DL1ABC" : "W1AW", &c), LiveSave::Failed) << store.error;
        ++logged;
        EXPECT_EQ(Hertz(c.uplinkMHz), 145851200) << t - aos1 << " s into the pass";
        EXPECT_EQ(Hertz(c.downlinkMHz), 436794300) << t - aos1 << " s into the pass";
        EXPECT_EQ(c.satellite, "PASSAT");
        EXPECT_EQ(c.mode, "FM");
    }
    ASSERT_GT(logged, 8);
    EXPECT_GT(offNominal, 0) << "the threshold and the 10 Hz steps were never in play";

    // The pass's AOS, during the pass and after it; the next pass has its own.
    ContactRec c;
    station.tickAt(aos1 + 200);
    EXPECT_NEAR(static_cast<double>(station.app->currentPassAOS()), aos1, 2.0);
    EXPECT_EQ(save("G4ABC", &c), LiveSave::Saved);
    EXPECT_EQ(save("g4abc/p", &c), LiveSave::Duplicate);
    station.tickAt(los1 + 600);  // logged after LOS: still that pass
    EXPECT_NEAR(static_cast<double>(station.app->currentPassAOS()), aos1, 2.0);
    EXPECT_EQ(save("G4ABC", &c), LiveSave::Duplicate);
    station.tickAt(aos2 + 60);
    EXPECT_NEAR(static_cast<double>(station.app->currentPassAOS()), aos2, 2.0);
    EXPECT_EQ(save("G4ABC", &c), LiveSave::Saved);
    EXPECT_EQ(save("DL1ABC", &c), LiveSave::Saved);
    EXPECT_EQ(save("G4ABC", &c), LiveSave::Duplicate);
    EXPECT_EQ(save("", &c), LiveSave::NoCall);
    CloseLogStore(&store);
}

}  // namespace
}  // namespace veloran
