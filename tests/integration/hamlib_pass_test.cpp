// Passes on virtual time through Hamlib: Hamlib's dummy radio behind a real
// rigctld follows the Doppler every second, with and without rigctld's
// --vfo; a rigctld that dies mid-pass is a lost radio, found again when
// switched on; the dummy rotator
// reaches what the steering asks; and the FM retune threshold on a built-in
// driver sends a handful of retunes over an FM pass but one a second over SSB.

#include <gtest/gtest.h>

#include <cmath>

#include "hamlib_daemon.h"
#include "radio/hamlibradio.h"
#include "radio/yaesu.h"
#include "rotor/hamlibrotor.h"
#include "sim/icom_sim.h"
#include "sim/sim_pty.h"
#include "station.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using testing::Station;

constexpr int kCTone = 13;  // an entry of the CTCSS table
constexpr int kIc910 = 7;
constexpr uint8_t kIc910Address = 0x60;

struct Pass {
    uint32_t aos = 0, los = 0;
};

Pass FindLeoPass() {
    Pass p;
    EXPECT_TRUE(testing::FindPass(testing::Leo(), testing::Seconds(2026, 11, 21, 0), 20.0, 70.0,
                                  &p.aos, &p.los));
    return p;
}

std::string ModesWithTone(const char* cmode) {
    std::string block = testing::ModeBlock("PASSAT", "Pass Sat", 5, 145.85, 436.795, cmode);
    const std::string plain = "CTone:   \t0";
    block.replace(block.find(plain), plain.size(), "CTone:   \t" + std::to_string(kCTone));
    return block;
}

freq_t Hertz(double mhz) {
    return std::trunc(mhz * 1000000.0);
}

// rigctld runs beside the tests on a busy machine: Hamlib waits ten seconds
// for each of its replies, so a slow answer is never taken for a lost radio.
// A rigctld that dies still fails at once (the connection closes).
class HamlibPass : public ::testing::TestWithParam<bool> {
  protected:
    void SetUp() override { SetHamlibReplyTimeout(10000); }
    void TearDown() override { SetHamlibReplyTimeout(500); }
};

TEST_P(HamlibPass, DummyRadioBehindRigctldFollowsTheDopplerUntilRigctldDies) {
    const bool vfoOption = GetParam();
    testing::HamlibDaemon rigctld(
        "rigctld", vfoOption ? std::vector<std::string>{"--vfo"} : std::vector<std::string>{});
    ASSERT_TRUE(rigctld.start());
    const Pass pass = FindLeoPass();
    Station station(testing::ElementSetText("PASSAT", testing::Leo()), ModesWithTone("J_FM"));
    station.clock.now = pass.aos - 30;
    station.app->awakeFromNib();
    const int port = station.app->addTypedPort(rigctld.address().c_str());
    station.setSite([&](SiteRec* s) {
        s->radio = kHamlibRadio;
        s->hamlibRadioModel = kHamlibNetModel;
        s->radioPort = port;
        s->fmRetuneHz = 0;  // every change goes out, so each second can be checked
    });
    // The test's own connections come first: rigctld may close a connection
    // it accepts while tearing down another (see ConnectNetworkDevice), and
    // the program's open ends with such a tear-down.
    testing::RigctldPeek peek(rigctld.address());
    ASSERT_TRUE(peek.open());
    station.app->openCloseRadio(true);
    ASSERT_EQ(station.site().vfo_enabled, 1);

    const uint32_t dies = pass.aos + 60;
    int tuned = 0;
    for (uint32_t t = pass.aos - 2; t < dies; ++t) {
        station.tickAt(t);
        if (!station.sat(0)->AOS) continue;
        const VFORec& vfo = station.app->vfo();
        ASSERT_NE(vfo.dopplerRX, 0.0);
        if (tuned++ == 0) {
            // The forced start set the operating modes and the uplink's tone.
            EXPECT_EQ(peek.mode(RIG_VFO_MAIN), RIG_MODE_FM);
            EXPECT_EQ(peek.mode(RIG_VFO_SUB), RIG_MODE_FM);
            EXPECT_EQ(peek.tone(RIG_VFO_SUB), static_cast<tone_t>(tableToToneTenths(kCTone)));
        }
        EXPECT_NEAR(peek.frequency(RIG_VFO_MAIN), Hertz(vfo.down), 1.0) << t - pass.aos << " s";
        EXPECT_NEAR(peek.frequency(RIG_VFO_SUB), Hertz(vfo.up), 1.0) << t - pass.aos << " s";
    }
    EXPECT_GE(tuned, 58);

    rigctld.stop();
    ::testing::internal::CaptureStderr();
    for (uint32_t t = dies; t < dies + 3; ++t) station.tickAt(t);
    const std::string said = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(station.site().vfo_enabled, 0);
    EXPECT_EQ(station.ui.beeps, 1);
    EXPECT_NE(said.find("radio Hamlib model 2: "), std::string::npos) << said;

    // Back again: switching the radio on reconnects and tunes at once.
    ASSERT_TRUE(rigctld.start());
    testing::RigctldPeek again(rigctld.address());
    ASSERT_TRUE(again.open());
    station.app->openCloseRadio(true);
    ASSERT_EQ(station.site().vfo_enabled, 1)
        << (station.ui.alerts.empty() ? "" : station.ui.alerts.back());
    station.tickAt(dies + 3);
    EXPECT_NEAR(again.frequency(RIG_VFO_MAIN), Hertz(station.app->vfo().down), 1.0);
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutVfoOption, HamlibPass, ::testing::Bool());

TEST(HamlibRadio, ASilentOrAbsentRigctldIsRefusedWithAReason) {
    // A hung daemon: the system takes the connection, nothing ever answers.
    const int silent = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    ASSERT_EQ(bind(silent, reinterpret_cast<sockaddr*>(&a), sizeof a), 0);
    ASSERT_EQ(listen(silent, 4), 0);
    ASSERT_EQ(getsockname(silent, reinterpret_cast<sockaddr*>(&a), &len), 0);
    struct Row {
        std::string address;
        const char* reason;
    } rows[] = {
        {"127.0.0.1:" + std::to_string(ntohs(a.sin_port)), "no answer"},
        {"127.0.0.1:" + std::to_string(testing::FreeLoopbackPort()), "Connection refused"},
        {"not-an-address", "not HOST:PORT"},
    };
    for (const Row& row : rows) {
        std::string why;
        EXPECT_EQ(OpenHamlibRadio(kHamlibNetModel, row.address.c_str(), 0, false, &why), -1);
        EXPECT_EQ(why, row.reason) << row.address;
    }
    close(silent);
}

TEST(HamlibRotor, DummyRotatorReachesTheTargetInProcessAndBehindRotctld) {
    testing::HamlibDaemon rotctld("rotctld", {});
    ASSERT_TRUE(rotctld.start());
    const struct {
        int model;
        std::string port;
    } rows[] = {{kHamlibDummyModel, ""}, {kHamlibNetModel, rotctld.address()}};
    for (const auto& row : rows) {
        std::string why;
        const int fd = OpenHamlibRotor(row.model, row.port.c_str(), 0, false, &why);
        ASSERT_NE(fd, -1) << why;
        ResetRotorSendState();
        // Near the dummy's rest position, so it gets there in a few seconds.
        EXPECT_EQ(SendAzEl(kHamlibRotor, fd, 12.4, 7.6, false), 1);
        double az = -1, el = -1;
        for (int i = 0; i < 400; ++i) {
            ASSERT_EQ(GetAzEl(kHamlibRotor, fd, &az, &el, false), 1);
            if (std::fabs(az - 12) < 0.5 && std::fabs(el - 8) < 0.5) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(25));
        }
        EXPECT_NEAR(az, 12.0, 0.5) << "model " << row.model;
        EXPECT_NEAR(el, 8.0, 0.5) << "model " << row.model;
        CloseHamlibRotor(fd);
    }
}

// Frequency-setting frames the simulated IC-910 received during a pass.
int RetunesOverAPass(const char* cmode) {
    const Pass pass = FindLeoPass();
    Station station(testing::ElementSetText("PASSAT", testing::Leo()), ModesWithTone(cmode));
    sim::IcomSimulator radio(sim::IcomModel::IC910, kIc910Address);
    sim::PtyServer line;
    if (!line.open()) return -1;
    line.start(&radio);
    // Reply time-outs pass only while the radio is idle.
    testing::DeviceClock clock({{line.path(), -1, [&] { line.waitIdle(); }}});
    station.clock.now = pass.aos - 30;
    station.app->awakeFromNib();
    const int port = station.app->addTypedPort(line.path().c_str());
    station.setSite([&](SiteRec* s) {
        s->radio = kIc910;
        s->icomAddress = kIc910Address;
        s->radioPort = port;
        s->radioBaud = 9;
        s->commandDelay = 0;
    });
    station.app->openCloseRadio(true);
    for (uint32_t t = pass.aos; t < pass.los; ++t) station.tickAt(t);
    line.waitIdle();
    int retunes = 0;
    constexpr uint8_t kCivSetFrequency = 0x05;
    for (const auto& frame : radio.frames()) retunes += frame[4] == kCivSetFrequency;
    line.stop();
    return retunes;
}

TEST(FmRetuneThreshold, FmPassSendsAHandfulOfRetunesAndSsbOneASecond) {
    const Pass pass = FindLeoPass();
    const int seconds = static_cast<int>(pass.los - pass.aos);
    // Two frequencies per retune on the IC-910 (sub band, then main band).
    const int fm = RetunesOverAPass("J_FM") / 2;
    const int ssb = RetunesOverAPass("JA_SSB") / 2;
    EXPECT_GT(fm, 3);
    EXPECT_LT(fm, seconds / 10);
    EXPECT_GE(ssb, seconds - 2);
}

}  // namespace
}  // namespace veloran
