// A whole pass of a synthetic satellite through the controller on virtual
// time: the warnings before it, the rotor turned a minute early, AOS with the
// radio forced and the rotor pointed, the Doppler followed every second by a
// simulated IC-910 and a simulated GS-232 rotator, and LOS with the radio
// back on the between-passes mode. Then the tuning controller alone keeping
// a simulated IC-910 and a simulated TS-2000 on a polar orbiter's Doppler.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>

#include "radio/drivers.h"
#include "radio/icom.h"
#include "radio/kenwood.h"
#include "radio/tuning.h"
#include "sim/icom_sim.h"
#include "sim/rotor_sim.h"
#include "sim/sim_pty.h"
#include "sim/ts2000_sim.h"
#include "station.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using testing::Station;

constexpr int kIc910 = 7;
constexpr int kGs232 = 0;
constexpr uint8_t kIc910Address = 0x60;
constexpr double kParkAzimuth = 90.0;

int CountContaining(const std::vector<std::string>& said, const std::string& part) {
    return static_cast<int>(std::count_if(said.begin(), said.end(), [&](const std::string& s) {
        return s.find(part) != std::string::npos;
    }));
}

TEST(WholePass, WarnedTunedAndSteeredFromFourHoursBeforeAOSToLOS) {
    const testing::Elements e = testing::Leo();
    uint32_t aos = 0, los = 0;
    // A pass with more than four quiet hours before it, so that every warning
    // is about this one.
    ASSERT_TRUE(testing::FindPass(e, testing::Seconds(2026, 11, 21, 0), 20.0, 70.0, &aos, &los,
                                  14400 + 120));
    Station station(testing::ElementSetText("PASSAT", e),
                    testing::ModeBlock("PASSAT", "Pass Sat", 5, 145.95, 435.85, "JA_SSB") +
                        testing::BetweenPassesBlock());

    sim::IcomSimulator radio(sim::IcomModel::IC910, kIc910Address);
    sim::PtyServer radioLine;
    ASSERT_TRUE(radioLine.open());
    radioLine.start(&radio);
    std::atomic<double> rotorSeconds{0.0};
    sim::RotorSim rotor;
    rotor.clock = [&] { return rotorSeconds.load(); };
    ASSERT_TRUE(sim::OpenRotorSim(&rotor, sim::RotorProtocol::kGS232, 6.0));
    sim::StartRotorSimThread(&rotor);
    struct Closer {
        sim::RotorSim* r;
        ~Closer() { sim::CloseRotorSim(r); }
    } closeRotor{&rotor};

    // The CI-V pacing and the rotor's waits pass at once, and a reply is
    // never missed because the machine is busy.
    testing::DeviceClock clock({{radioLine.path(), -1, [&] { radioLine.waitIdle(); }},
                                {rotor.slavePath, -1, [&] { sim::WaitForRotorSimIdle(&rotor); }}});
    station.clock.now = aos - 14400 - 10;
    station.app->awakeFromNib();
    const int radioPort = station.app->addTypedPort(radioLine.path().c_str());
    const int rotorPort = station.app->addTypedPort(rotor.slavePath);
    station.setSite([&](SiteRec* s) {
        s->radio = kIc910;
        s->icomAddress = kIc910Address;
        s->radioPort = radioPort;
        s->radioBaud = 9;
        s->commandDelay = 0;
        s->rotor = kGs232;
        s->rotorPort = rotorPort;
        s->rotorBaud = 5;
        s->park = 1;
        s->siteParkAz = kParkAzimuth;
        s->siteParkEl = 0;
        s->deadSpotState = 0;
    });
    station.app->openCloseRadio(true);
    station.app->openCloseRotor(true);
    ASSERT_EQ(station.site().vfo_enabled, 1);
    ASSERT_EQ(station.site().rotor_enabled, 1);
    station.setSite([](SiteRec* s) {
        s->wants_speech = 1;
        s->wants_sounds = 1;
    });

    // The warnings: each interval is met over five ticks around it.
    for (uint32_t w : {14400u, 10800u, 7200u, 3600u, 1800u, 900u, 300u})
        for (int k = -2; k <= 2; ++k) station.tickAt(aos - w + k);
    ASSERT_TRUE(sim::WaitForRotorSimBytes(&rotor, 1, 30000));

    // Parked between passes; turned to the satellite one minute early.
    for (uint32_t t = aos - 70; t < aos - 60; ++t) station.tickAt(t);
    const size_t parkedCommands = sim::RotorSimSnapshot(&rotor).commands.size();
    ASSERT_GE(parkedCommands, 1u);
    EXPECT_NEAR(sim::RotorSimSnapshot(&rotor).commands.back().azimuth, kParkAzimuth, 1e-9);
    station.tickAt(aos - 60);
    const double satelliteAzimuth = station.sat(0)->azimuthDegs;
    std::vector<sim::RotorCommand> commands;
    sim::WaitForRotorSimIdle(&rotor);
    commands = sim::RotorSimSnapshot(&rotor).commands;
    ASSERT_EQ(commands.size(), parkedCommands + 1);
    EXPECT_NEAR(commands.back().azimuth, satelliteAzimuth, 1.0);

    // The pass, tick by tick.
    bool sawAOS = false;
    int tunedTicks = 0;
    uint8_t passMode = 0xFF;
    size_t firstPassCommand = 0;
    for (uint32_t t = aos - 59; t <= los + 3; ++t) {
        station.tickAt(t);
        rotorSeconds = t - aos;
        const auto sat = station.sat(0);
        if (!sat->AOS) continue;
        if (!sawAOS) {
            sawAOS = true;
            firstPassCommand = sim::RotorSimSnapshot(&rotor).commands.size();
        }
        // The driver reads the radio's acknowledgement of each frame, so the
        // radio has taken the frequencies when the tick returns.
        const VFORec& vfo = station.app->vfo();
        radioLine.waitIdle();
        const sim::IcomSimState s = radio.state();
        ASSERT_NE(vfo.dopplerRX, 0.0);
        EXPECT_EQ(s.main.vfo[s.main.current].hertz, RadioHertz(vfo.down))
            << t - aos << " s into the pass";
        EXPECT_EQ(s.sub.vfo[s.sub.current].hertz, RadioHertz(vfo.up))
            << t - aos << " s into the pass";
        passMode = s.main.vfo[s.main.current].mode;
        ++tunedTicks;
    }
    ASSERT_TRUE(sawAOS);
    EXPECT_GT(tunedTicks, 240);
    // After LOS: no shift, the plain downlink, the between-passes FM mode.
    EXPECT_FALSE(station.sat(0)->AOS);
    EXPECT_EQ(station.app->vfo().dopplerRX, 0.0);
    EXPECT_EQ(station.app->vfo().dopplerTX, 0.0);
    radioLine.waitIdle();
    const sim::IcomSimState after = radio.state();
    EXPECT_EQ(after.main.vfo[after.main.current].hertz, RadioHertz(435.85));
    EXPECT_EQ(after.main.vfo[after.main.current].mode, sim::kSimFM);
    EXPECT_NE(passMode, sim::kSimFM);

    // The rotor followed one degree at a time, then went back to park.
    sim::WaitForRotorSimIdle(&rotor);
    commands = sim::RotorSimSnapshot(&rotor).commands;
    EXPECT_EQ(commands.back().azimuth, kParkAzimuth);
    ASSERT_GT(commands.size(), firstPassCommand + 20);
    for (size_t i = firstPassCommand + 1; i + 1 < commands.size(); ++i) {
        const double daz = std::fabs(commands[i].azimuth - commands[i - 1].azimuth);
        const double del = std::fabs(commands[i].elevation - commands[i - 1].elevation);
        EXPECT_GE(daz + del, 1.0) << "command " << i << " repeats the one before";
        EXPECT_LE(std::min(daz, 360.0 - daz), 3.0) << "command " << i;
        EXPECT_LE(del, 1.0) << "command " << i;
    }

    station.drainAnnouncements();
    const std::vector<std::string> said = station.speech.said();
    ASSERT_FALSE(said.empty());
    EXPECT_EQ(said[0].rfind("Pass Sat will be visible in ", 0), 0u) << said[0];
    std::string all;
    for (const auto& s : said) all += s + "\n";
    EXPECT_EQ(CountContaining(said, ",, with a maximum elevation of "), 7) << all;
    EXPECT_EQ(std::count(said.begin(), said.end(), "Pass Sat is visible"), 1);
    EXPECT_EQ(std::count(said.begin(), said.end(), "Pass Sat is no longer visible"), 1);
    EXPECT_GE(
        CountContaining(said, " degrees, rising") + CountContaining(said, " degrees, descending"),
        1);
    const std::vector<int32_t> played = station.sounds.played();
    EXPECT_EQ(std::count(played.begin(), played.end(), Announcement::kRotor), 1);
    EXPECT_EQ(std::count(played.begin(), played.end(), Announcement::kAOS), 1);
    EXPECT_EQ(std::count(played.begin(), played.end(), Announcement::kLOS), 1);

    radioLine.stop();
}

// Every twentieth main-timer tick of a whole pass, tuned through the radio
// table onto both radios at once: each must hold exactly the corrected
// frequencies, and after the forced set-up only retune the two VFOs.
TEST(WholePass, Ic910AndTs2000FollowTheDopplerFromAosToLos) {
    constexpr int kTs2000 = 14;
    constexpr uint32_t kTickSeconds = 20;
    constexpr double kLightKmPerSecond = 299792.5;
    ResetIcomDriverState();
    ResetKenwoodDriverState();
    SetCommandDelay(0.0f);
    SiteRec site = testing::MakeSite(43.7064, 79.2442, 200.0);
    site.fullDopplerTuning = 1;
    std::unique_ptr<SatRec> sun = testing::LoadSun(&site);
    std::unique_ptr<SatRec> sat = testing::LoadRecord("POLAR", testing::PolarLeo(), &site);
    auto calculate = [&](uint32_t secs) {
        sunCalcTask(secs, sun.get(), nullptr, &site);
        SatelliteCalculationsV(EpochTime(secs), kSatelliteSearchSpan, sat.get(), &site, 0, secs,
                               sun.get());
    };
    uint32_t now = testing::Seconds(2026, 11, 21, 12);  // the next pass after noon
    calculate(now);
    while (sat->AOS || sat->secondsToAOS >= kSecondsToAOSUnknown || sat->secondsToLOS == 0) {
        now += 60;
        calculate(now);
    }
    const uint32_t aos = sat->AOSTime, los = sat->LOSTime;
    ASSERT_GT(los, aos + 240);

    sim::IcomSimulator ic910(sim::IcomModel::IC910, kIc910Address);
    sim::Ts2000Simulator ts2000;
    testing::PtyPeer icomLine, kenwoodLine;
    ASSERT_TRUE(icomLine.attach(&ic910));
    ASSERT_TRUE(kenwoodLine.attach(&ts2000));
    testing::DeviceClock clock{&icomLine, &kenwoodLine};
    ModeRec mode = {};
    mode.commMode = CommMode::JA_SSB;
    mode.upFreq = 145.95;
    mode.downFreq = 435.85;
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
        ASSERT_EQ(SetVFO(kIc910, icomLine.fd(), kIc910Address, vfo.up, vfo.down, mode.commMode, 0,
                         0, force, false),
                  1);
        ASSERT_EQ(SetVFO(kTs2000, kenwoodLine.fd(), 0, vfo.up, vfo.down, mode.commMode, 0, 0, force,
                         false),
                  1);
        icomLine.settle();
        kenwoodLine.settle();
        const uint32_t up = RadioHertz(vfo.up), down = RadioHertz(vfo.down);
        const sim::IcomSimState icom = ic910.state();
        EXPECT_EQ(icom.main.vfo[icom.main.current].hertz, down);
        EXPECT_EQ(icom.sub.vfo[icom.sub.current].hertz, up);
        EXPECT_TRUE(icom.satelliteMode);
        EXPECT_EQ(ts2000.state().vfoA, down);
        EXPECT_EQ(ts2000.state().vfoB, up);
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
    // Each tick after the set-up: the two bands (4 frames), the two VFOs (2 commands).
    EXPECT_EQ(ic910.frames().size(), 4u * (ticks - 1));
    EXPECT_EQ(ts2000.commands().size(), 2u * (ticks - 1));
    EXPECT_EQ(ic910.state().bandExchanges, 1);
    EXPECT_EQ(ts2000.state().modeA, '2');
    EXPECT_EQ(ts2000.state().modeB, '1');
}

}  // namespace
}  // namespace veloran
