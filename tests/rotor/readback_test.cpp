// Reading the rotator's position back: good, short, garbled and missing
// replies, and the controllers that cannot report.

#include <gtest/gtest.h>

#include <string>

#include "rotor/rotor.h"
#include "tests/support/pty.h"

namespace veloran {
namespace {

using namespace std::string_literals;

struct ReplyCase {
    const char* name;
    int rotor;
    std::string reply;  // what the controller answers to "C2"
    int result;
    double azimuth, elevation;  // expected; -1/-1 means "left as they were"
};

void PrintTo(const ReplyCase& c, std::ostream* os) {
    *os << c.name;
}

class PositionReadBack : public ::testing::TestWithParam<ReplyCase> {};

TEST_P(PositionReadBack, ParsesOrLeavesTheOldValues) {
    const ReplyCase& c = GetParam();
    // The controller answers once a whole command is in.
    testing::PtyPeer line([&](std::string* pending) {
        return pending->find('\r') == std::string::npos ? std::string() : c.reply;
    });
    testing::DeviceClock clock{&line};
    ASSERT_NE(line.fd(), -1);
    double az = -1.0;
    double el = -1.0;
    EXPECT_EQ(GetAzEl(c.rotor, line.fd(), &az, &el, false), c.result);
    EXPECT_EQ(line.take(), "C2\r");
    EXPECT_EQ(az, c.azimuth);
    EXPECT_EQ(el, c.elevation);
}

INSTANTIATE_TEST_SUITE_P(
    Replies, PositionReadBack,
    ::testing::Values(
        ReplyCase{"GS232Good", 0, "+0123+0045\r\n", 1, 123.0, 45.0},
        ReplyCase{"TranslatedGS232Good", 1, "+0359+0000\r\n", 1, 359.0, 0.0},
        ReplyCase{"SpidGood", 10, "+0007+0180\r\n", 1, 7.0, 180.0},
        ReplyCase{"SignIsNotPartOfTheNumber", 0, "-0010-0005\r\n", 1, 10.0, 5.0},
        ReplyCase{"ExtraBytesAfterTwelveAreNotRead", 0, "+0123+0045\r\nXY", 1, 123.0, 45.0},
        ReplyCase{"Short", 0, "+0123+004", 0, -1.0, -1.0},
        ReplyCase{"Silent", 0, "", 0, -1.0, -1.0},
        ReplyCase{"GarbageOfTheRightLength", 0, "AZ=123 EL=45", 0, -1.0, -1.0},
        ReplyCase{"BinaryNoise", 10, "\xFF\x00\x13\x11\x0D\x0A\xFE\x01\x02\x03\x04\x05"s, 0, -1.0,
                  -1.0}),
    [](const ::testing::TestParamInfo<ReplyCase>& p) { return std::string(p.param.name); });

TEST(PositionReadBack, ControllersWithoutReadBackSendNothing) {
    testing::PtyPeer line;
    ASSERT_NE(line.fd(), -1);
    for (int rotor : {2, 3, 4, 5, 6, 7, 8, 9, 11, 12, -1}) {
        double az = 1.0;
        double el = 2.0;
        EXPECT_EQ(GetAzEl(rotor, line.fd(), &az, &el, false), 0) << rotor;
        EXPECT_EQ(az, 1.0);
        EXPECT_EQ(el, 2.0);
    }
    EXPECT_EQ(line.take(), "");
}

TEST(PositionReadBack, ClosedPortReadsNothing) {
    double az = 1.0;
    double el = 2.0;
    EXPECT_EQ(GetAzEl(0, -1, &az, &el, false), 0);
    EXPECT_EQ(az, 1.0);
    EXPECT_EQ(el, 2.0);
}

}  // namespace
}  // namespace veloran
