// CI-V packing, frame builders and the bus exchange: byte-exact against the
// radios' command references, and against a simulated radio that echoes,
// stays silent or answers junk.

#include "radio/icom.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "radio/yaesu.h"
#include "sim/icom_sim.h"
#include "tests/support/hex.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using testing::Hex;
using testing::HexFrames;

// --- Packing ------------------------------------------------------------------

struct FrequencyCase {
    uint32_t hertz;
    const char* bytes;
};

class IcomBcdTest : public ::testing::TestWithParam<FrequencyCase> {};

TEST_P(IcomBcdTest, PacksLeastSignificantPairFirstAndUnpacksBack) {
    unsigned char out[5];
    IcomBCD(GetParam().hertz, out);
    EXPECT_EQ(Hex(out, 5), GetParam().bytes);
    EXPECT_EQ(UnpackIcom(out), GetParam().hertz);
}

INSTANTIATE_TEST_SUITE_P(
    Frequencies, IcomBcdTest,
    ::testing::Values(FrequencyCase{145900000, "00 00 90 45 01"},  // 2 m
                      FrequencyCase{435800000, "00 00 80 35 04"},  // 70 cm
                      FrequencyCase{129612345, "45 23 61 29 01"},  // 23 cm in tenths
                      FrequencyCase{14200010, "10 00 20 14 00"},   // 20 m, 10 Hz
                      FrequencyCase{0, "00 00 00 00 00"}));

TEST(IcomPacking, DuplexOffsetAndTonesUseTheRadiosLayouts) {
    unsigned char out[3];
    IcomBCD3(600000 / 100, out);  // the 2 m repeater shift, in 100 Hz
    EXPECT_EQ(Hex(out, 3), "00 60 00");
    IcomBCD3(5000000 / 100, out);  // 5 MHz, the 70 cm shift
    EXPECT_EQ(Hex(out, 3), "00 00 05");
    IcomToneBCD2(885, out);
    EXPECT_EQ(Hex(out, 2), "08 85");
    IcomToneBCD2(1000, out);
    EXPECT_EQ(Hex(out, 2), "10 00");
    EXPECT_EQ(BCD(99), 0x99);
    EXPECT_EQ(UnpackBCD(0x42), 42);
}

// --- Frame builders --------------------------------------------------------------

TEST(IcomFrames, EachBuilderFramesItsCommandForTheRadioAddress) {
    unsigned char frame[kCivMaxFrame];
    const unsigned char freq[5] = {0x00, 0x00, 0x80, 0x35, 0x04};
    const unsigned char tone[2] = {0x08, 0x85};

    int n = IcomCommandNoSubNoData(0x60, frame, kCivReadFrequency);
    EXPECT_EQ(Hex(frame, n), "FE FE 60 E0 03 FD");
    n = IcomCommandSubNoData(0x60, frame, kCivSelect, kCivSubBand);
    EXPECT_EQ(Hex(frame, n), "FE FE 60 E0 07 D1 FD");
    n = IcomCommandNoSubData(0x60, frame, kCivSetFrequency, freq, 5);
    EXPECT_EQ(Hex(frame, n), "FE FE 60 E0 05 00 00 80 35 04 FD");  // 435.8 MHz
    n = IcomCommandSubAndData(0x60, frame, kCivToneFrequency, 0x00, tone, 2);
    EXPECT_EQ(Hex(frame, n), "FE FE 60 E0 1B 00 08 85 FD");
    n = IcomCommandNoSubData(0x4C, frame, kCivSetMode, nullptr, 0);
    EXPECT_EQ(Hex(frame, n), "FE FE 4C E0 06 FD");
}

// --- The exchange on a line -----------------------------------------------------------

class IcomExchange : public ::testing::Test {
  protected:
    void SetUp() override {
        ResetIcomDriverState();
        SetCommandDelay(3.0f);  // must not slow or change the CI-V exchange
        ASSERT_TRUE(line_.attach(&radio_));
    }
    void TearDown() override {
        line_.detach();
        SetCommandDelay(0.0f);
    }
    int fd() const { return line_.fd(); }

    sim::IcomSimulator radio_{sim::IcomModel::IC910, 0x60};
    testing::PtyPeer line_;
    testing::DeviceClock clock_{&line_};  // a reply is never missed on a busy machine
};

TEST_F(IcomExchange, EchoIsConsumedSoTheReplyIsWhatIsReadNext) {
    EXPECT_EQ(SetIcomBandVFO(fd(), 0x60, kCivSubBand, false), 1);
    EXPECT_TRUE(radio_.state().subSelected);
    EXPECT_EQ(SetIcomBandVFO(fd(), 0x60, kCivMainBand, false), 1);
    EXPECT_EQ(HexFrames(radio_.frames()),
              (std::vector<std::string>{"FE FE 60 E0 07 D1 FD", "FE FE 60 E0 07 D0 FD"}));
}

TEST_F(IcomExchange, DebugLogShowsTheCommandAndItsEcho) {
    ::testing::internal::CaptureStderr();
    SetIcomBandVFO(fd(), 0x60, kCivMainBand, true);
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("->07:FE FE 60 E0 07 D0 FD \n"), std::string::npos) << log;
    EXPECT_NE(log.find("<e07:FE FE 60 E0 07 D0 FD \n"), std::string::npos) << log;
    EXPECT_NE(log.find("<-06:FE FE E0 60 FB FD \n"), std::string::npos) << log;
}

TEST_F(IcomExchange, FrequencyReadBackUnpacksTheRadiosReply) {
    sim::IcomSimState s = radio_.state();
    s.main.vfo[0].hertz = 145912340;
    radio_.setState(s);
    EXPECT_EQ(GetIcomRadioDownLinkCycles(fd(), 0x60, false), 145912340u);
}

TEST_F(IcomExchange, RefusalSilenceAndJunkAreNotAcknowledgements) {
    radio_.setGarbage(true);
    EXPECT_EQ(SetIcomBandVFO(fd(), 0x60, kCivMainBand, false), 0);
    EXPECT_EQ(GetIcomRadioDownLinkCycles(fd(), 0x60, false), 0u);
    radio_.setGarbage(false);
    radio_.setSilent(true);  // radio off; the interface still echoes
    EXPECT_EQ(SetIcomBandVFO(fd(), 0x60, kCivMainBand, false), 0);
    EXPECT_EQ(GetIcomRadioDownLinkCycles(fd(), 0x60, false), 0u);
    radio_.setSilent(false);
    // A radio at another address ignores the frame; the IC-910 answers FA to
    // a selector it does not have.
    EXPECT_EQ(SetIcomBandVFO(fd(), 0x62, kCivMainBand, false), 0);
    EXPECT_EQ(SetIcomBandVFO(fd(), 0x60, 0x55, false), 0);
}

TEST_F(IcomExchange, ReplyCheckWantsTheWholeReplyFromTheRightRadio) {
    unsigned char frame[kCivMaxFrame];
    unsigned char reply[kCivFrequencyReplyLength + 1];
    // An acknowledgement where a frequency was wanted is too short.
    SendIcomRadioCommand(fd(), frame, IcomCommandSubNoData(0x60, frame, kCivSelect, kCivMainBand),
                         false);
    EXPECT_EQ(ReadAndCheckIcomFlag(fd(), 0x60, reply, kCivReadFrequency, kCivFrequencyReplyLength,
                                   10, false),
              0);
    EXPECT_EQ(reply[6], 0);  // zero-terminated after the 6 bytes that came
    // The right length from the right radio, but the wrong command.
    SendIcomRadioCommand(fd(), frame, IcomCommandNoSubNoData(0x60, frame, kCivReadFrequency),
                         false);
    EXPECT_EQ(ReadAndCheckIcomFlag(fd(), 0x60, reply, kCivSetFrequency, kCivFrequencyReplyLength,
                                   10, false),
              0);
    SendIcomRadioCommand(fd(), frame, IcomCommandNoSubNoData(0x60, frame, kCivReadFrequency),
                         false);
    EXPECT_EQ(ReadAndCheckIcomFlag(fd(), 0x61, reply, kCivReadFrequency, kCivFrequencyReplyLength,
                                   10, false),
              0);
}

TEST_F(IcomExchange, WithoutARadioOnTheBusTheFrameStillGoesOutWhole) {
    radio_.setEcho(false);
    radio_.setSilent(true);
    ::testing::internal::CaptureStderr();
    unsigned char frame[kCivMaxFrame];
    const int n = IcomCommandNoSubNoData(0x60, frame, kCivReadFrequency);
    EXPECT_EQ(SendIcomRadioCommand(fd(), frame, n, true), n);
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("->06:FE FE 60 E0 03 FD \n"), std::string::npos) << log;
    EXPECT_NE(log.find("<e06:\n"), std::string::npos) << log;  // the echo line is empty
    line_.settle();
    EXPECT_EQ(Hex(radio_.received()), "FE FE 60 E0 03 FD");  // still sent whole
}

TEST_F(IcomExchange, RepliesCutShortAreNotAcknowledgements) {
    radio_.setShortReplies(true);
    EXPECT_EQ(SetIcomBandVFO(fd(), 0x60, kCivMainBand, false), 0);
    EXPECT_EQ(GetIcomRadioDownLinkCycles(fd(), 0x60, false), 0u);
    EXPECT_EQ(Set910VFO(fd(), 0x60, 145.9, 435.8, 3, 0, 0, true, false), 0);
}

// An adapter pulled out mid-pass: every write and read fails with EIO.
TEST(IcomUnpluggedAdapter, FailingLineEndsTheUpdateWithoutHanging) {
    ResetIcomDriverState();
    SerialSystem unplugged = *RealSerialSystem();
    unplugged.writePort = [](int, const void*, size_t) -> ssize_t {
        errno = EIO;
        return -1;
    };
    unplugged.readPort = [](int, void*, size_t) -> ssize_t {
        errno = EIO;
        return -1;
    };
    SetSerialSystem(&unplugged);
    constexpr int kGoneFd = 42;  // never reaches the system: the seam answers
    EXPECT_EQ(Set910VFO(kGoneFd, 0x60, 145.9, 435.8, 3, 0, 0, true, false), 0);
    EXPECT_EQ(Set910VFO(kGoneFd, 0x60, 145.91, 435.81, 3, 0, 0, false, false), 1);
    EXPECT_EQ(Set821HVFO(kGoneFd, 0x4C, 145.9, 435.8, 1, 0, 0, true, false), 1);
    int32_t change = 0;
    EXPECT_EQ(DownLinkChanged910(kGoneFd, 0x60, &change, false), 0);
    SetSerialSystem(nullptr);
}

TEST(IcomClosedPort, ExchangesDoNothingAndReportFailure) {
    ResetIcomDriverState();
    unsigned char frame[kCivMaxFrame];
    const int n = IcomCommandNoSubNoData(0x60, frame, kCivReadFrequency);
    EXPECT_EQ(SendIcomRadioCommand(-1, frame, n, false), 0);
    EXPECT_EQ(SetIcomBandVFO(-1, 0x60, kCivMainBand, false), 0);
    EXPECT_EQ(GetIcomRadioDownLinkCycles(-1, 0x60, false), 0u);
    EXPECT_EQ(Set910VFO(-1, 0x60, 145.9, 435.8, 3, 0, 0, true, false), 0);
    EXPECT_EQ(Set821HVFO(-1, 0x4C, 145.9, 435.8, 3, 0, 0, true, false), 0);
    EXPECT_EQ(Set706VFO(-1, 0x48, 145.9, 435.8, 3, 0, 0, true, false), 0);
    int32_t change = 0;
    EXPECT_EQ(DownLinkChanged910(-1, 0x60, &change, false), 0);
}

}  // namespace
}  // namespace veloran
