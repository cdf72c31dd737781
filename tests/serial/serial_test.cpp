// The serial line: attributes as the port is opened and closed, pacing and
// time-outs on a virtual clock, system-call failures, the traffic log, the
// hex/ASCII helpers and the gateway board's two operations.

#include "serial/serial.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "serial/gateway.h"
#include "tests/radio/wire.h"

namespace veloran {
namespace {

using testing::Bytes;
using testing::Hex;

// --- a pseudo-terminal with the kernel's default line settings ---------------

struct Pty {
    int master = -1, slave = -1;
    char name[256] = {0};
    Pty() { EXPECT_EQ(openpty(&master, &slave, name, nullptr, nullptr), 0); }
    ~Pty() {
        if (slave != -1) close(slave);
        if (master != -1) close(master);
    }
    std::vector<uint8_t> drain() {
        std::vector<uint8_t> out;
        fcntl(master, F_SETFL, O_NONBLOCK);
        uint8_t buf[512];
        ssize_t n;
        while ((n = read(master, buf, sizeof buf)) > 0) out.insert(out.end(), buf, buf + n);
        return out;
    }
};

struct OpenCase {
    int baudIndex;
    speed_t speed;  // expected; B0: the port's own speed kept
    bool twoStopBits;
};

class OpenSerialPort : public ::testing::TestWithParam<OpenCase> {};

TEST_P(OpenSerialPort, SetsSpeedStopBitsAndRawEightBitLine) {
    const OpenCase& c = GetParam();
    Pty pty;
    struct termios before;
    ASSERT_EQ(tcgetattr(pty.slave, &before), 0);
    const int fd = openSerialPort(pty.name, c.baudIndex, 1, false);
    ASSERT_NE(fd, -1);
    struct termios t;
    ASSERT_EQ(tcgetattr(fd, &t), 0);
    EXPECT_EQ(cfgetospeed(&t), c.speed == B0 ? cfgetospeed(&before) : c.speed);
    EXPECT_EQ(cfgetispeed(&t), c.speed == B0 ? cfgetispeed(&before) : c.speed);
    EXPECT_EQ((t.c_cflag & CSTOPB) != 0, c.twoStopBits);
    EXPECT_EQ(t.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
    EXPECT_TRUE(t.c_cflag & CREAD);
    EXPECT_TRUE(t.c_cflag & CLOCAL);
    EXPECT_FALSE(t.c_cflag & (PARENB | CRTSCTS | HUPCL));
    EXPECT_FALSE(t.c_lflag & (ICANON | ISIG | ECHO | ECHOE));
    EXPECT_FALSE(t.c_oflag & OPOST);
    // Binary CAT replies must pass untouched: no stripping, no XON/XOFF, no CR/LF games.
    EXPECT_FALSE(t.c_iflag & (ISTRIP | IXON | IXOFF | ICRNL | INLCR | IGNCR));
    EXPECT_EQ(t.c_cc[VMIN], 0);
    EXPECT_EQ(t.c_cc[VTIME], 0);
    // Blocking again after the non-blocking open.
    EXPECT_FALSE(fcntl(fd, F_GETFL) & O_NONBLOCK);
    closeSerialPort(fd, false);
}

INSTANTIATE_TEST_SUITE_P(BaudTable, OpenSerialPort,
                         ::testing::Values(OpenCase{0, B300, false}, OpenCase{3, B2400, false},
                                           OpenCase{4, B4800,
                                                    true},  // two stop bits, tied to the speed
                                           OpenCase{5, B9600, false}, OpenCase{11, B115200, false},
                                           OpenCase{12, B230400, false},
                                           OpenCase{6, B0, false},   // 14400: no such speed here
                                           OpenCase{13, B0, false},  // not in the table
                                           OpenCase{-1, B0, false}));

TEST(SerialPort, BinaryRepliesArriveUnaltered) {
    Pty pty;
    const int fd = openSerialPort(pty.name, 5, 1, false);
    ASSERT_NE(fd, -1);
    // 0x13 would be taken as XOFF and 0x0D turned into 0x0A by a cooked line.
    const std::vector<uint8_t> reply = Bytes("14 59 13 0D 11");
    ASSERT_EQ(write(pty.master, reply.data(), reply.size()), 5);
    unsigned char buffer[8];
    EXPECT_EQ(readRadioResponse(fd, buffer, 5, 30, false), 5);
    EXPECT_EQ(Hex(std::vector<uint8_t>(buffer, buffer + 5)), Hex(reply));
    closeSerialPort(fd, false);
}

TEST(SerialPort, OneSharedSlotRestoresTheLastOpenedPortsAttributes) {
    Pty first, second;
    struct termios t;
    tcgetattr(first.slave, &t);
    cfsetospeed(&t, B1200);
    cfsetispeed(&t, B1200);
    tcsetattr(first.slave, TCSANOW, &t);
    tcgetattr(second.slave, &t);
    cfsetospeed(&t, B2400);
    cfsetispeed(&t, B2400);
    tcsetattr(second.slave, TCSANOW, &t);

    const int a = openSerialPort(first.name, 5, 0, false);
    const int b = openSerialPort(second.name, 5, 0, false);
    ASSERT_NE(a, -1);
    ASSERT_NE(b, -1);
    closeSerialPort(a, false);
    // The first port now carries the second port's original speed, as the
    // single slot dictates.
    tcgetattr(first.slave, &t);
    EXPECT_EQ(cfgetospeed(&t), static_cast<speed_t>(B2400));
    closeSerialPort(b, false);
}

TEST(SerialPort, MissingDeviceIsReportedAsMinusOne) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(openSerialPort("/dev/veloran-no-such-port", 5, 0, true), -1);
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("Error opening serial port /dev/veloran-no-such-port - "), std::string::npos)
        << log;
    EXPECT_EQ(openSerialPort(nullptr, 5, 0, false), -1);
}

// --- a fake line on a virtual clock -----------------------------------------

struct FakeLine {
    double now = 0;                                  // microseconds
    double clockStep = 10;                           // each reading of the clock advances it
    std::vector<std::pair<double, uint8_t>> writes;  // time of each byte written
    int reads = 0;
    std::function<ssize_t(int call)> writeResult;                // default: 1
    std::function<ssize_t(int call, void*, size_t)> readResult;  // default: 0 (nothing waiting)
    int writeCalls = 0;
};
FakeLine* gLine = nullptr;

const SerialSystem kFake = {
    [](const char*, int) { return 3; },
    [](int, int) { return 0; },
    [](int, struct termios* t) {
        std::memset(t, 0, sizeof *t);
        return 0;
    },
    [](int, int, const struct termios*) { return 0; },
    [](int) { return 0; },
    [](int) { return 0; },
    [](int, const void* bytes, size_t) -> ssize_t {
        const int call = gLine->writeCalls++;
        const ssize_t r = gLine->writeResult ? gLine->writeResult(call) : 1;
        if (r == 1) gLine->writes.push_back({gLine->now, *static_cast<const uint8_t*>(bytes)});
        return r;
    },
    [](int, void* bytes, size_t count) -> ssize_t {
        const int call = gLine->reads++;
        return gLine->readResult ? gLine->readResult(call, bytes, count) : 0;
    },
    [] { return gLine->now += gLine->clockStep; },
    [](double us) { gLine->now += us; },
    nullptr,
    nullptr,
};

class FakeSerial : public ::testing::Test {
  protected:
    void SetUp() override {
        gLine = &line;
        SetSerialSystem(&kFake);
        SetCommandDelay(0);
    }
    void TearDown() override {
        SetSerialSystem(nullptr);
        SetCommandDelay(0);
        gLine = nullptr;
    }
    FakeLine line;
};

struct PacingCase {
    int bytes;
    float delayMs;
};

class CommandPacing : public FakeSerial, public ::testing::WithParamInterface<PacingCase> {};

TEST_P(CommandPacing, EachByteWaitsTheDelayAndTheCommandTwoMore) {
    const PacingCase& c = GetParam();
    SetCommandDelay(c.delayMs);
    const std::vector<uint8_t> command(static_cast<size_t>(c.bytes), 0x5A);
    const double start = line.now;
    EXPECT_EQ(sendRadioCommand(3, command.data(), c.bytes, false), c.bytes);
    const double took = line.now - start;
    ASSERT_EQ(line.writes.size(), static_cast<size_t>(c.bytes));
    const double delayUs = c.delayMs * 1000.0;
    for (size_t i = 1; i < line.writes.size(); ++i) {
        EXPECT_GE(line.writes[i].first - line.writes[i - 1].first, delayUs) << "byte " << i;
    }
    // (n + 2) x d milliseconds at least; a 5-byte command at 2 ms takes 14 ms.
    EXPECT_GE(took, (c.bytes + 2) * delayUs);
    // ... and not much more: a few clock readings per wait.
    EXPECT_LT(took, (c.bytes + 2) * delayUs + 100 * line.clockStep);
}

INSTANTIATE_TEST_SUITE_P(Delays, CommandPacing,
                         ::testing::Values(PacingCase{5, 2.0f}, PacingCase{1, 3.0f},
                                           PacingCase{12, 0.5f}, PacingCase{5, 0.0f},
                                           PacingCase{11, 3.0f}));

TEST_F(FakeSerial, InterruptedWriteIsRetriedAndAFailedLineStopsTheCommand) {
    line.writeResult = [](int call) -> ssize_t {
        if (call == 1) {
            errno = EINTR;
            return -1;
        }
        return 1;
    };
    const std::vector<uint8_t> command = Bytes("43 58 00 00 01");
    EXPECT_EQ(sendRadioCommand(3, command.data(), 5, false), 5);
    EXPECT_EQ(line.writes.size(), 5u);

    line.writes.clear();
    line.writeCalls = 0;
    line.writeResult = [](int call) -> ssize_t {
        if (call >= 2) {
            errno = EIO;
            return -1;
        }
        return 1;
    };
    EXPECT_EQ(sendRadioCommand(3, command.data(), 5, false), 2);
    EXPECT_EQ(line.writeCalls, 3);  // nothing more is tried once the device has gone
}

TEST_F(FakeSerial, TimeoutZeroMakesExactlyOneRead) {
    unsigned char buffer[256];
    buffer[0] = 0x55;
    EXPECT_EQ(readRadioResponse(3, buffer, 255, 0, false), 0);
    EXPECT_EQ(line.reads, 1);
    EXPECT_EQ(buffer[0], 0);
}

TEST_F(FakeSerial, SilentRadioCostsTheTimeoutAndNoMore) {
    unsigned char buffer[8];
    const double start = line.now;
    EXPECT_EQ(readRadioResponse(3, buffer, 5, 30, false), 0);
    const double ticks = (line.now - start) * 60.0 / 1e6;
    EXPECT_GE(ticks, 29.0);  // the tick count is whole: up to one tick is lost at the start
    EXPECT_LE(ticks, 31.0);
    EXPECT_EQ(buffer[0], 0);
}

TEST_F(FakeSerial, ReplyArrivingInPiecesIsGatheredAndTerminated) {
    line.readResult = [](int call, void* bytes, size_t count) -> ssize_t {
        const std::vector<uint8_t> parts[] = {Bytes("43 58"), {}, Bytes("00 00 01")};
        if (call >= 3) return 0;
        const size_t n = std::min(count, parts[call].size());
        if (n > 0) std::memcpy(bytes, parts[call].data(), n);
        return static_cast<ssize_t>(n);
    };
    unsigned char buffer[6];
    std::memset(buffer, 0xEE, sizeof buffer);
    EXPECT_EQ(readRadioResponse(3, buffer, 5, 30, false), 5);
    EXPECT_EQ(Hex(std::vector<uint8_t>(buffer, buffer + 5)), "43 58 00 00 01");
    EXPECT_EQ(buffer[5], 0);
}

TEST_F(FakeSerial, ReadErrorEndsTheWaitWithWhatCame) {
    line.readResult = [](int call, void* bytes, size_t) -> ssize_t {
        if (call == 0) {
            *static_cast<uint8_t*>(bytes) = 0x42;
            return 1;
        }
        errno = EIO;
        return -1;
    };
    unsigned char buffer[8];
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(readRadioResponse(3, buffer, 5, 600, true), 1);
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(line.reads, 2);
    EXPECT_EQ(buffer[1], 0);
    EXPECT_NE(log.find(" Error reading from Serial Port - "), std::string::npos) << log;
}

TEST_F(FakeSerial, ClosedPortIsALoggedNoOp) {
    unsigned char buffer[4] = {9, 9, 9, 9};
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(sendRadioCommand(-1, buffer, 4, true), 0);
    EXPECT_EQ(readRadioResponse(-1, buffer, 3, 30, true), 0);
    const std::string log = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(line.writeCalls, 0);
    EXPECT_EQ(line.reads, 0);
    EXPECT_TRUE(::testing::internal::RE::PartialMatch(
        log,
        "^[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} Serial Port port closed\\.\n"
        "[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} Serial Port port closed\\.\n$"))
        << log;
}

// --- the traffic log ----------------------------------------------------------

struct LogCase {
    std::vector<uint8_t> bytes;
    std::string expectedTail;  // after the date stamp
};

void PrintTo(const LogCase& c, std::ostream* os) {
    *os << Hex(c.bytes);
}

class TrafficLog : public FakeSerial, public ::testing::WithParamInterface<LogCase> {};

TEST_P(TrafficLog, SentAndReadLinesShowCountAndRendering) {
    const LogCase& c = GetParam();
    ::testing::internal::CaptureStderr();
    sendRadioCommand(3, c.bytes.data(), static_cast<int>(c.bytes.size()), true);
    const std::string sent = ::testing::internal::GetCapturedStderr();
    // 19 characters of "yyyy/mm/dd hh:mm:ss", then the arrow.
    ASSERT_GE(sent.size(), 19u);
    EXPECT_TRUE(::testing::internal::RE::FullMatch(
        sent.substr(0, 19), "[0-9]{4}/[0-9]{2}/[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}"));
    EXPECT_EQ(sent.substr(19), "->" + c.expectedTail + "\n");

    const std::vector<uint8_t> reply = c.bytes;
    line.readResult = [&reply](int call, void* bytes, size_t count) -> ssize_t {
        if (call > 0) return 0;
        const size_t n = std::min(count, reply.size());
        std::memcpy(bytes, reply.data(), n);
        return static_cast<ssize_t>(n);
    };
    unsigned char buffer[64];
    ::testing::internal::CaptureStderr();
    readRadioResponse(3, buffer, static_cast<int>(reply.size()), 30, true);
    const std::string read = ::testing::internal::GetCapturedStderr();
    ASSERT_GE(read.size(), 19u);
    EXPECT_EQ(read.substr(19), "<-" + c.expectedTail + "\n");
}

std::vector<uint8_t> Text(const std::string& s) {
    return std::vector<uint8_t>(s.begin(), s.end());
}

INSTANTIATE_TEST_SUITE_P(
    Renderings, TrafficLog,
    ::testing::Values(LogCase{Text("FA145900000"), "11:FA145900000"},  // printable: as text
                      LogCase{Text("RPA1\r"), "05:RPA1<0D>"},          // CR allowed, shown in hex
                      LogCase{Bytes("43 58 00 00 01"), "05:43 58 00 00 01 "},  // binary: hex pairs
                      LogCase{Bytes("41 42 07"), "03:41 42 07 "}));  // one stray byte: all hex

TEST_F(FakeSerial, NothingReadLogsNothing) {
    unsigned char buffer[4];
    ::testing::internal::CaptureStderr();
    readRadioResponse(3, buffer, 3, 0, true);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

// --- helpers -------------------------------------------------------------------

TEST(HexHelpers, RenderParseAndRejectQuietly) {
    const std::vector<uint8_t> bytes = Bytes("00 0A 7F FE");
    char text[64];
    hexString(bytes.data(), text, 4);
    EXPECT_STREQ(text, "00 0A 7F FE ");
    const std::vector<uint8_t> mixed = Text("OK\r\n");
    asciiString(mixed.data(), text, 4);
    EXPECT_STREQ(text, "OK<0D><0A>");
    EXPECT_EQ(isPrintString(mixed.data(), 4), 1);
    EXPECT_EQ(isPrintString(bytes.data(), 4), 0);
    EXPECT_EQ(isPrintString(nullptr, 4), 0);
    hexString(nullptr, text, 4);  // null pointers: nothing, no crash
    asciiString(bytes.data(), nullptr, 4);

    EXPECT_EQ(Hex2CharsToNum("1f"), 31);
    EXPECT_EQ(Hex2CharsToNum("FD"), 253);
    EXPECT_EQ(Hex2CharsToNum("FDFE"), 253);  // exactly two characters are taken
    EXPECT_EQ(Hex2CharsToNum("zz"), 0);
    NumToHex(255, text, 4);
    EXPECT_STREQ(text, "00FF");
    NumToHex(0xE0, text, 2);
    EXPECT_STREQ(text, "E0");
    unsigned long value = 0;
    HexToNum("0000BEEF", &value);
    EXPECT_EQ(value, 0xBEEFul);
    HexToNum("123456789", &value);  // at most 8 digits
    EXPECT_EQ(value, 0x12345678ul);
    HexToNum(nullptr, &value);
    HexToNum("12", nullptr);
}

// --- the gateway board --------------------------------------------------------

TEST(Gateway, PushToTalkConfiguresPortAThenResetsOrSetsTheLine) {
    Pty pty;
    const int fd = openSerialPort(pty.name, 5, 0, false);
    ASSERT_NE(fd, -1);
    pushToTalk(fd, 0, 1, false);
    std::vector<uint8_t> got = pty.drain();
    EXPECT_EQ(std::string(got.begin(), got.end()), "CPA11111110\rRESPA0\r");
    pushToTalk(fd, 0, 0, false);
    got = pty.drain();
    EXPECT_EQ(std::string(got.begin(), got.end()), "CPA11111110\rSETPA0\r");
    pushToTalk(fd, 3, 1, false);
    got = pty.drain();
    EXPECT_EQ(std::string(got.begin(), got.end()), "CPA11111110\rRESPA3\r");
    pushToTalk(-1, 0, 1, false);  // closed: nothing, no crash
    closeSerialPort(fd, false);
}

// The board answers each "RPA1\r" with the next reading of the script.
struct GatewayCase {
    const char* name;
    std::vector<std::string> readings;  // "" = no answer
    int expected;
    int queries;  // channel queries sent
};

class WaitForRadio : public FakeSerial, public ::testing::WithParamInterface<GatewayCase> {};

TEST_P(WaitForRadio, NeedsTwoQuietReadingsOneSecondApart) {
    const GatewayCase& c = GetParam();
    std::string written;
    int queries = 0;
    std::string pendingReply;
    line.writeResult = nullptr;
    // Collect what is written, hand out the next reading after each query.
    static std::string* sWritten;
    static int* sQueries;
    static std::string* sPending;
    static const std::vector<std::string>* sReadings;
    sWritten = &written;
    sQueries = &queries;
    sPending = &pendingReply;
    sReadings = &c.readings;
    SerialSystem sys = kFake;
    sys.writePort = [](int, const void* bytes, size_t) -> ssize_t {
        *sWritten += *static_cast<const char*>(bytes);
        if (sWritten->size() >= 5 && sWritten->compare(sWritten->size() - 5, 5, "RPA1\r") == 0) {
            const int q = (*sQueries)++;
            *sPending =
                q < static_cast<int>(sReadings->size()) ? (*sReadings)[static_cast<size_t>(q)] : "";
        }
        return 1;
    };
    sys.readPort = [](int, void* bytes, size_t count) -> ssize_t {
        const size_t n = std::min(count, sPending->size());
        if (n > 0) std::memcpy(bytes, sPending->data(), n);
        sPending->erase(0, n);
        return static_cast<ssize_t>(n);
    };
    SetSerialSystem(&sys);
    unsigned long elapsed = 12345;
    EXPECT_EQ(waitForRadio(3, 1, 21600, &elapsed, false), c.expected) << c.name;
    EXPECT_EQ(queries, c.queries) << c.name;
    EXPECT_EQ(written.rfind("CPA11111110\r", 0), 0u);
    if (c.expected == 1)
        EXPECT_GE(elapsed, 60ul);  // the second reading comes a second later
    else
        EXPECT_EQ(elapsed, 0ul);
}

INSTANTIATE_TEST_SUITE_P(
    Readings, WaitForRadio,
    ::testing::Values(GatewayCase{"never answers", {}, 0, 1},
                      GatewayCase{"quiet twice", {"0\r", "0\r"}, 1, 2},
                      GatewayCase{"busy, then quiet twice", {"1\r", "1\r", "0\r", "0\r"}, 1, 4},
                      GatewayCase{
                          "quiet, busy again, quiet twice", {"0\r", "1\r", "0\r", "0\r"}, 1, 4},
                      GatewayCase{"quiet, then silent, then stops", {"0\r", "", ""}, 0, 3},
                      GatewayCase{"one byte only", {"0"}, 0, 1}));

TEST_F(FakeSerial, WaitForRadioGivesUpAfterItsTimeout) {
    // A board that always reports a busy channel.
    static int sQueries;
    sQueries = 0;
    SerialSystem sys = kFake;
    sys.readPort = [](int, void* bytes, size_t count) -> ssize_t {
        const char busy[] = "1\r";
        const size_t n = std::min(count, size_t{2});
        std::memcpy(bytes, busy, n);
        ++sQueries;
        return static_cast<ssize_t>(n);
    };
    sys.writePort = [](int, const void*, size_t) -> ssize_t {
        gLine->now += 50000;  // each query takes the board 50 ms
        return 1;
    };
    SetSerialSystem(&sys);
    unsigned long elapsed = 0;
    EXPECT_EQ(waitForRadio(3, 1, 120, &elapsed, false), 0);
    EXPECT_GT(sQueries, 1);
    EXPECT_EQ(waitForRadio(-1, 1, 120, &elapsed, false), 1);
}

}  // namespace
}  // namespace veloran
