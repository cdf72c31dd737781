// The rotor drivers against the simulated controllers: every controller's
// commands understood as the position meant, a rotor that lags behind its
// commands, and a whole overhead pass flown over the top through the GS-232
// simulator.

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "engine/live.h"
#include "engine/sunmoon.h"
#include "engine/timebase.h"
#include "rotor/rotor.h"
#include "rotor/steering.h"
#include "serial/serial.h"
#include "sim/rotor_sim.h"
#include "tests/support/element_sets.h"

namespace veloran {
namespace {

using sim::RotorProtocol;

// A simulator serving from its own thread on a virtual clock, and the
// program's side of the line opened as a rotor port.
class SimulatedRotor {
  public:
    SimulatedRotor(RotorProtocol protocol, double degreesPerSecond) {
        rotor_.clock = [this] { return seconds_.load(); };
        if (!sim::OpenRotorSim(&rotor_, protocol, degreesPerSecond)) return;
        sim::StartRotorSimThread(&rotor_);
        fd_ = openSerialPort(rotor_.slavePath, 5, 0, false);
    }
    ~SimulatedRotor() {
        closeSerialPort(fd_, false);
        sim::CloseRotorSim(&rotor_);
    }
    int fd() const { return fd_; }
    void setSeconds(double s) { seconds_ = s; }
    sim::RotorSim* sim() { return &rotor_; }
    // Waits until `bytes` more bytes than `before` have arrived.
    bool heard(size_t before, size_t bytes) {
        return sim::WaitForRotorSimBytes(&rotor_, before + bytes, 30000);
    }

  private:
    std::atomic<double> seconds_{0.0};
    sim::RotorSim rotor_;
    int fd_ = -1;
};

struct SimCase {
    const char* name;
    int rotor;
    RotorProtocol protocol;
    double azimuth, elevation;        // sent
    double simAzimuth, simElevation;  // understood
};

void PrintTo(const SimCase& c, std::ostream* os) {
    *os << c.name;
}

class AgainstSimulator : public ::testing::TestWithParam<SimCase> {};

TEST_P(AgainstSimulator, ControllerUnderstandsThePosition) {
    const SimCase& c = GetParam();
    SimulatedRotor rotor(c.protocol, 6.0);
    ASSERT_NE(rotor.fd(), -1);
    ResetRotorSendState();
    startRotorDriver(c.rotor, rotor.fd(), false);
    SendAzEl(c.rotor, rotor.fd(), c.azimuth, c.elevation, false);
    stopRotorDriver(c.rotor, rotor.fd(), false);
    // Every byte sent must have reached the simulator before it is asked.
    ASSERT_TRUE(WaitForRotorSimBytes(rotor.sim(), 2, 30000));
    sim::WaitForRotorSimIdle(rotor.sim());
    const sim::RotorSimState s = sim::RotorSimSnapshot(rotor.sim());
    ASSERT_EQ(s.commands.size(), 1u) << s.received;
    EXPECT_NEAR(s.commands[0].azimuth, c.simAzimuth, 1e-9);
    EXPECT_NEAR(s.commands[0].elevation, c.simElevation, 1e-9);
    EXPECT_EQ(s.badPackets, 0);
}

INSTANTIATE_TEST_SUITE_P(
    EveryController, AgainstSimulator,
    ::testing::Values(SimCase{"GS232", 0, RotorProtocol::kGS232, 120.4, 30.4, 120, 30},
                      SimCase{"GS232Translated", 1, RotorProtocol::kGS232, 90, 30, 240, 30},
                      SimCase{"AutoTracker", 2, RotorProtocol::kAutoTracker, 7, 89, 7, 89},
                      SimCase{"EasyComm", 4, RotorProtocol::kEasyComm, 120.44, 30.06, 120.4, 30.1},
                      SimCase{"KLM", 6, RotorProtocol::kKLM, 120, 30, 120, 30},
                      SimCase{"SARtek", 7, RotorProtocol::kSARtek, 180, 30, 127 * 360.0 / 255.0, 0},
                      SimCase{"SatEL", 8, RotorProtocol::kSatEL, 5, 7, 5, 7},
                      // The DCU-1 bearing field carries the elevation argument.
                      SimCase{"DCU1", 9, RotorProtocol::kDCU1, 123, 45, 45, 0},
                      SimCase{"Spid", 10, RotorProtocol::kSpid, 359, 90, 359, 90},
                      SimCase{"PT", 11, RotorProtocol::kPT, 200, 60, 200, 60}),
    [](const ::testing::TestParamInfo<SimCase>& p) { return std::string(p.param.name); });

TEST(SimulatedRotor, ReadBackShowsTheRotorLaggingBehindItsCommand) {
    SimulatedRotor rotor(RotorProtocol::kGS232, 2.0);  // two degrees a second
    ASSERT_NE(rotor.fd(), -1);
    ResetRotorSendState();
    SendAzEl(0, rotor.fd(), 100.0, 20.0, false);
    ASSERT_TRUE(rotor.heard(0, 9));
    rotor.setSeconds(10.0);
    double az = -1;
    double el = -1;
    ASSERT_EQ(GetAzEl(0, rotor.fd(), &az, &el, false), 1);
    EXPECT_EQ(az, 20.0);
    EXPECT_EQ(el, 20.0);
    rotor.setSeconds(60.0);
    ASSERT_EQ(GetAzEl(0, rotor.fd(), &az, &el, false), 1);
    EXPECT_EQ(az, 100.0);
    EXPECT_EQ(el, 20.0);
    EXPECT_EQ(sim::RotorSimSnapshot(rotor.sim()).sent, "+0020+0020\r\n+0100+0020\r\n");
}

TEST(SimulatedRotor, PTPacketWithAWrongCheckByteIsRefused) {
    SimulatedRotor rotor(RotorProtocol::kPT, 6.0);
    ASSERT_NE(rotor.fd(), -1);
    std::string packet =
        "$AZ123EL045UL0145.000000DL0432.000000\xA9\x6D\x81\x4C\x4C\x01\x01\x01\x01";
    packet += '\x42';  // the right check byte for this text
    packet += '#';
    std::string corrupted = packet;
    corrupted[4] = '9';  // azimuth 193, check byte unchanged
    sendRadioCommand(rotor.fd(), corrupted.data(), 48, false);
    sendRadioCommand(rotor.fd(), packet.data(), 48, false);
    ASSERT_TRUE(rotor.heard(0, 96));
    const sim::RotorSimState s = sim::RotorSimSnapshot(rotor.sim());
    EXPECT_EQ(s.badPackets, 1);
    ASSERT_EQ(s.commands.size(), 1u);
    EXPECT_EQ(s.commands[0].azimuth, 123.0);
}

// A whole pass over the top. The satellite crosses the meridian north of the
// station, where the GS-232 rotator has its end stop (0/360): followed
// directly, the azimuth would have to swing through the stop; flipped, the
// antenna works from the other side over the zenith.
class OverheadPass : public ::testing::Test {
  protected:
    SiteRec site = testing::MakeSite(43.7064, 79.2442, 200.0);
    std::unique_ptr<SatRec> sun = testing::LoadSun(&site);

    void Calculate(SatRec* rec, uint32_t secs) {
        sunCalcTask(secs, sun.get(), nullptr, &site);
        // As a satellite in rotation, so that the record keeps its own in-view
        // flag (the visibility check keeps the main satellite's).
        SatelliteCalculationsV(EpochTime(secs), kSatelliteSearchSpan, rec, &site, 0, secs,
                               sun.get());
    }

    // The first pass after `from` higher than 40 degrees whose track runs
    // through north (its azimuth wraps past 360).
    bool FindNorthernPass(SatRec* rec, uint32_t from, uint32_t* aos, uint32_t* los) {
        uint32_t s = from;
        for (int pass = 0; pass < 40; ++pass) {
            Calculate(rec, s);
            while (rec->AOS) Calculate(rec, s += 60);
            if (rec->secondsToAOS >= kSecondsToAOSUnknown) return false;
            const uint32_t start = rec->AOSTime;
            const uint32_t end = rec->LOSTime;
            s = end + 60;
            if (rec->maxElevation < 40.0 || rec->maxElevation > 89.0) continue;
            double previous = -1.0;
            bool wraps = false;
            for (uint32_t t = start + 10; t < end; t += 30) {
                Calculate(rec, t);
                if (previous >= 0.0 && std::fabs(rec->azimuthDegs - previous) > 180.0) wraps = true;
                previous = rec->azimuthDegs;
            }
            if (wraps) {
                *aos = start;
                *los = end;
                return true;
            }
        }
        return false;
    }
};

TEST_F(OverheadPass, FlippedPassNeverCrossesTheEndStopAndWorksPastTheZenith) {
    auto rec = testing::LoadRecord("POLAR", testing::PolarLeo(), &site);
    uint32_t aos = 0;
    uint32_t los = 0;
    ASSERT_TRUE(FindNorthernPass(rec.get(), testing::Seconds(2026, 11, 21, 0), &aos, &los));

    SimulatedRotor rotor(RotorProtocol::kGS232, 6.0);
    ASSERT_NE(rotor.fd(), -1);
    ResetRotorSendState();
    site.rotor = 0;
    site.rotor_enabled = 1;
    site.rotorPortFileDescriptor = rotor.fd();
    site.deadSpotState = 2;  // north is the dead spot
    site.deadSpotCrossed = 1;

    std::vector<double> satelliteAzimuths;
    for (uint32_t t = aos; t <= los; t += 5) {
        rotor.setSeconds(t - aos);
        Calculate(rec.get(), t);
        if (!rec->AOS) continue;
        satelliteAzimuths.push_back(rec->azimuthDegs);
        steerRotor(&site, rec.get(), false);
    }
    ASSERT_GT(satelliteAzimuths.size(), 60u);
    // The pass itself runs through north: unflipped, the rotor would cross its stop.
    bool satelliteWraps = false;
    for (size_t i = 1; i < satelliteAzimuths.size(); ++i)
        satelliteWraps |= std::fabs(satelliteAzimuths[i] - satelliteAzimuths[i - 1]) > 180.0;
    ASSERT_TRUE(satelliteWraps);

    // The read-back is answered only after every command before it was taken.
    double az = 0;
    double el = 0;
    ASSERT_EQ(GetAzEl(0, rotor.fd(), &az, &el, false), 1);
    const sim::RotorSimState s = sim::RotorSimSnapshot(rotor.sim());
    ASSERT_GT(s.commands.size(), 20u);
    double highest = 0.0;
    for (size_t i = 0; i < s.commands.size(); ++i) {
        EXPECT_GE(s.commands[i].azimuth, 0.0);
        EXPECT_LE(s.commands[i].azimuth, 360.0);
        if (i > 0) {
            EXPECT_LT(std::fabs(s.commands[i].azimuth - s.commands[i - 1].azimuth), 30.0)
                << "command " << i << " jumps across the end stop";
            EXPECT_LE(std::fabs(s.commands[i].elevation - s.commands[i - 1].elevation), 30.0);
        }
        highest = std::max(highest, s.commands[i].elevation);
        EXPECT_GE(s.commands[i].elevation, 90.0) << "flipped: the antenna works from over the top";
    }
    EXPECT_GT(highest, 170.0) << "near the horizon on the far side at AOS and LOS";
    EXPECT_TRUE(rotorFlipped(&site));
}

}  // namespace
}  // namespace veloran
