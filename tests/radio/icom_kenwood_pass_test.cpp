// A whole pass of a synthetic low-orbit satellite, Doppler-tuned through the
// radio table onto a simulated IC-910 and a simulated TS-2000 at once: the
// radios must hold exactly the corrected frequencies at every tick.

#include <gtest/gtest.h>

#include <memory>

#include "engine/live.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "radio/drivers.h"
#include "radio/icom.h"
#include "radio/kenwood.h"
#include "radio/tuning.h"
#include "serial/serial.h"
#include "sim/icom_sim.h"
#include "sim/ts2000_sim.h"
#include "tests/radio/radio_pty.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

constexpr int kIc910 = 7;
constexpr int kTs2000 = 14;
constexpr int kAddress = 0x60;
constexpr double kLightKmPerSecond = 299792.5;
constexpr uint32_t kTickSeconds = 20;  // every twentieth main-timer tick, to keep the test short

testing::Elements PolarLeo() {
    testing::Elements e;
    e.inclination = 97.6;
    e.meanMotion = 14.8;
    e.eccentricity = 0.001;
    e.raan = 300.0;
    e.argPerigee = 130.0;
    e.meanAnomaly = 230.0;
    return e;
}

ModeRec InvertingSsb() {
    ModeRec m = {};
    m.commMode = 3;  // JA_SSB
    m.upFreq = 145.95;
    m.downFreq = 435.85;
    return m;
}

TEST(RadioPass, Ic910AndTs2000FollowTheDopplerFromAosToLos) {
    ResetIcomDriverState();
    ResetKenwoodDriverState();
    SetCommandDelay(0.0f);
    SiteRec site = testing::MakeSite(43.7064, 79.2442, 200.0);
    site.fullDopplerTuning = 1;
    std::unique_ptr<SatRec> sun = testing::LoadSun(&site);
    std::unique_ptr<SatRec> sat = testing::LoadRecord("POLAR", PolarLeo(), &site);
    auto calculate = [&](uint32_t secs) {
        sunCalcTask(secs, sun.get(), nullptr, &site);
        SatelliteCalculationsV(EpochTime(secs), kSatelliteSearchSpan, sat.get(), &site, 0, secs,
                               sun.get());
    };

    // The next pass after noon.
    uint32_t now = testing::Seconds(2026, 11, 21, 12);
    calculate(now);
    while (sat->AOS || sat->secondsToAOS >= kSecondsToAOSUnknown || sat->secondsToLOS == 0) {
        now += 60;
        calculate(now);
    }
    const uint32_t aos = sat->AOSTime;
    const uint32_t los = sat->LOSTime;
    ASSERT_GT(los, aos + 240);

    sim::IcomSimulator ic910(sim::IcomModel::IC910, kAddress);
    sim::Ts2000Simulator ts2000;
    testing::SimulatedLine icomLine, kenwoodLine;
    ASSERT_TRUE(icomLine.Attach(&ic910));
    ASSERT_TRUE(kenwoodLine.Attach(&ts2000));

    const ModeRec mode = InvertingSsb();
    VFORec vfo = {};
    uint32_t firstDown = 0, lastDown = 0;
    int ticks = 0;
    for (uint32_t t = aos + 30; t + 30 < los; t += kTickSeconds, ++ticks) {
        calculate(t);
        ASSERT_TRUE(sat->AOS) << t - aos << " s into the pass";
        vfo.dopplerTX = mode.upFreq * sat->satVelocity / kLightKmPerSecond;
        vfo.dopplerRX = mode.downFreq * sat->satVelocity / kLightKmPerSecond;
        calculateFrequencies(&vfo, &site, &mode);
        const bool force = ticks == 0;  // the port was just opened
        ASSERT_EQ(SetVFO(kIc910, icomLine.fd(), kAddress, vfo.up, vfo.down, mode.commMode, 0, 0,
                         force, false),
                  1);
        ASSERT_EQ(SetVFO(kTs2000, kenwoodLine.fd(), 0, vfo.up, vfo.down, mode.commMode, 0, 0, force,
                         false),
                  1);
        icomLine.Settle();
        kenwoodLine.Settle();

        const uint32_t up = RadioHertz(vfo.up);
        const uint32_t down = RadioHertz(vfo.down);
        const sim::IcomSimState icom = ic910.state();
        EXPECT_EQ(icom.main.vfo[icom.main.current].hertz, down);
        EXPECT_EQ(icom.sub.vfo[icom.sub.current].hertz, up);
        EXPECT_TRUE(icom.satelliteMode);
        const sim::Ts2000SimState kenwood = ts2000.state();
        EXPECT_EQ(kenwood.vfoA, down);
        EXPECT_EQ(kenwood.vfoB, up);
        if (ticks == 0) {
            firstDown = down;
            ic910.clearRecords();
            ts2000.clearRecords();
        }
        lastDown = down;
    }
    ASSERT_GT(ticks, 10);
    // Approaching at AOS the downlink is heard high, receding at LOS low: a
    // 7 km/s orbit gives up to about 10 kHz either way on 70 cm.
    EXPECT_GT(firstDown, 435850000u + 3000u);
    EXPECT_LT(lastDown, 435850000u - 3000u);
    EXPECT_LT(firstDown, 435850000u + 12000u);
    EXPECT_GT(lastDown, 435850000u - 12000u);
    // The set-up happened once; afterwards each tick retuned only the two
    // bands (4 frames) and the two VFOs (2 commands).
    EXPECT_EQ(ic910.frames().size(), 4u * (ticks - 1));
    EXPECT_EQ(ts2000.commands().size(), 2u * (ticks - 1));
    EXPECT_EQ(ic910.state().bandExchanges, 1);
    EXPECT_EQ(ts2000.state().modeA, '2');
    EXPECT_EQ(ts2000.state().modeB, '1');
}

}  // namespace
}  // namespace veloran
