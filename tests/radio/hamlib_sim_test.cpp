// Hamlib's own IC-910 and FT-847 backends driven by our Hamlib row against
// the simulated radios on pseudo-terminals: a forced two-band set-up must
// leave the radio in satellite mode with the downlink on its receive VFO and
// the uplink on its transmit VFO.

#include <gtest/gtest.h>

#include <cmath>

#include "radio/hamlibradio.h"
#include "sim/icom_sim.h"
#include "sim/radio_sim.h"
#include "sim/sim_pty.h"

namespace veloran {
namespace {

constexpr int kHamlibIc910 = 3044;
constexpr int kHamlibFt847 = 1001;
constexpr uint8_t kIc910Address = 0x60;  // the radio's and Hamlib's default
constexpr double kUpMHz = 145.91234;     // an inverting linear transponder, Doppler-corrected
constexpr double kDownMHz = 435.86789;

// Hamlib reads the simulated radios' replies on real time: on a busy
// machine their threads are given ten seconds (none of them stays silent).
struct PatientReplies {
    PatientReplies() { SetHamlibReplyTimeout(10000); }
    ~PatientReplies() { SetHamlibReplyTimeout(500); }
};

int SetBoth(int fd) {
    return HamlibRadioDriver()->setFrequencies(fd, 0, kUpMHz, kDownMHz, CommMode::JA_SSB, 0, 0,
                                               true, false);
}

TEST(HamlibBackends, Ic910EndsInSatelliteModeDownlinkOnMainUplinkOnSub) {
    PatientReplies patient;
    sim::IcomSimulator radio(sim::IcomModel::IC910, kIc910Address);
    sim::PtyServer line;
    ASSERT_TRUE(line.open());
    line.start(&radio);
    std::string why;
    const int fd = OpenHamlibRadio(kHamlibIc910, line.path().c_str(), 9600, false, &why);
    ASSERT_NE(fd, -1) << why;
    EXPECT_EQ(SetBoth(fd), 1) << HamlibRadioError(fd);
    line.waitIdle();
    const sim::IcomSimState s = radio.state();
    EXPECT_TRUE(s.satelliteMode);
    // The IC-910 receives on its main band and transmits on its sub band.
    EXPECT_EQ(s.main.vfo[s.main.current].hertz, 435867890u);
    EXPECT_EQ(s.sub.vfo[s.sub.current].hertz, 145912340u);
    EXPECT_EQ(s.main.vfo[s.main.current].mode, sim::kSimUSB);
    EXPECT_EQ(s.sub.vfo[s.sub.current].mode, sim::kSimLSB);
    CloseHamlibRadio(fd);
    line.stop();
}

TEST(HamlibBackends, Ft847EndsInSatelliteModeDownlinkOnSatRxUplinkOnSatTx) {
    PatientReplies patient;
    sim::SimulatedRadio radio(sim::RadioModel::FT847);
    ASSERT_TRUE(radio.open());
    std::string why;
    const int fd = OpenHamlibRadio(kHamlibFt847, radio.devicePath().c_str(), 57600, false, &why);
    ASSERT_NE(fd, -1) << why;
    EXPECT_EQ(SetBoth(fd), 1) << HamlibRadioError(fd);
    radio.waitIdle();  // the simulator decodes on its own thread
    const sim::RadioState s = radio.state();
    EXPECT_TRUE(s.satelliteMode);
    // The FT-847 keeps frequencies to 10 Hz.
    EXPECT_EQ(s.satRx.hertz, 435867890u);
    EXPECT_EQ(s.satTx.hertz, 145912340u);
    CloseHamlibRadio(fd);
    radio.close();
}

}  // namespace
}  // namespace veloran
