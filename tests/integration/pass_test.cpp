// A whole pass of a synthetic satellite through the controller on virtual
// time: the warnings before it, the rotor turned a minute early, AOS with the
// radio forced and the rotor pointed, the Doppler followed every second by a
// simulated IC-910 and a simulated GS-232 rotator, and LOS with the radio
// back on the between-passes mode.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>

#include "radio/drivers.h"
#include "sim/icom_sim.h"
#include "sim/rotor_sim.h"
#include "sim/sim_pty.h"
#include "station.h"

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

    testing::FastSerialClock fast;
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
    ASSERT_TRUE(sim::WaitForRotorSimBytes(&rotor, 1, 2000));

    // Parked between passes; turned to the satellite one minute early.
    for (uint32_t t = aos - 70; t < aos - 60; ++t) station.tickAt(t);
    const size_t parkedCommands = sim::RotorSimSnapshot(&rotor).commands.size();
    ASSERT_GE(parkedCommands, 1u);
    EXPECT_NEAR(sim::RotorSimSnapshot(&rotor).commands.back().azimuth, kParkAzimuth, 1e-9);
    station.tickAt(aos - 60);
    const double satelliteAzimuth = station.sat(0)->azimuthDegs;
    std::vector<sim::RotorCommand> commands;
    for (int i = 0;
         i < 400 && (commands = sim::RotorSimSnapshot(&rotor).commands).size() == parkedCommands;
         ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
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
        // radio has normally taken the frequencies when the tick returns; on
        // a loaded machine it is given a moment more.
        const VFORec& vfo = station.app->vfo();
        sim::IcomSimState s = radio.state();
        auto tuned = [&] {
            return s.main.vfo[s.main.current].hertz == RadioHertz(vfo.down) &&
                   s.sub.vfo[s.sub.current].hertz == RadioHertz(vfo.up);
        };
        for (int i = 0; i < 500 && !tuned(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            s = radio.state();
        }
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
    for (int i = 0;
         i < 400 && sim::RotorSimSnapshot(&rotor).commands.back().azimuth != kParkAzimuth; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
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

}  // namespace
}  // namespace veloran
