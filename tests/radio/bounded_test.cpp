// A CI-V radio that stops answering costs one reply time-out per call, and
// the call fails; an interface with its echo switched off still works.
// Time here is the serial layer's virtual clock, so the test counts the
// time-outs a call sat through rather than timing it.

#include <gtest/gtest.h>

#include "radio/icom.h"
#include "radio/tuning.h"
#include "serial/serial.h"
#include "sim/icom_sim.h"
#include "tests/radio/radio_pty.h"

namespace veloran {
namespace {

constexpr int kIc910 = 7;
constexpr uint8_t kAddress = 0x60;
constexpr int kJ_FM = 2;

// Every pause moves the virtual clock on by its whole length and lets the
// simulated radio run for a real 0.1 ms.
double gVirtualMicroseconds = 0;
SerialSystem VirtualClock() {
    SerialSystem sys = *RealSerialSystem();
    sys.microseconds = [] { return gVirtualMicroseconds; };
    sys.idle = [](double us) {
        RealSerialSystem()->idle(100.0);
        gVirtualMicroseconds += us;
    };
    return sys;
}

struct SilenceCase {
    const char* name;
    bool silent;  // the radio is off
    bool echo;    // the interface echoes the bus
    int result;   // of each SetVFO
};

class CivSilence : public ::testing::TestWithParam<SilenceCase> {};

TEST_P(CivSilence, EachCallWaitsOneTimeOutAtMost) {
    const SilenceCase& c = GetParam();
    ResetIcomDriverState();
    sim::IcomSimulator radio(sim::IcomModel::IC910, kAddress);
    radio.setSilent(c.silent);
    radio.setEcho(c.echo);
    testing::SimulatedLine line;
    ASSERT_TRUE(line.Attach(&radio));
    const SerialSystem sys = VirtualClock();
    SetSerialSystem(&sys);

    // A forced set-up (some twenty frames), then an ordinary retune.
    const double frequencies[2][2] = {{145.9, 435.8}, {145.91, 435.79}};
    for (int call = 0; call < 2; ++call) {
        const double before = gVirtualMicroseconds;
        EXPECT_EQ(SetVFO(kIc910, line.fd(), kAddress, frequencies[call][0], frequencies[call][1],
                         kJ_FM, 0, 0, call == 0, false),
                  c.result)
            << c.name << " call " << call;
        // The echo of the first frame on a fresh line, one reply time-out
        // (30 ticks each) and the bus pacing; never a time-out per command.
        const double ticks = (gVirtualMicroseconds - before) * 60.0 / 1e6;
        EXPECT_LT(ticks, 2 * kCivReplyTicks + 30) << c.name << " call " << call;
    }
    SetSerialSystem(nullptr);
    if (c.result == 1) {
        EXPECT_EQ(radio.state().main.vfo[0].hertz, 435790000u) << c.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Lines, CivSilence,
                         ::testing::Values(SilenceCase{"answering", false, true, 1},
                                           SilenceCase{"echo switched off", false, false, 1},
                                           SilenceCase{"radio off", true, true, 0},
                                           SilenceCase{"nothing on the line", true, false, 0}));

}  // namespace
}  // namespace veloran
