// Ports held by one program at a time, lines that vanish, devices that fall
// silent in the middle of a call, and the pacing kept on a real line.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "serial/portlist.h"
#include "serial/serial.h"

namespace veloran {
namespace {

struct Pty {
    int master = -1, slave = -1;
    char name[256] = {0};
    Pty() { EXPECT_EQ(openpty(&master, &slave, name, nullptr, nullptr), 0); }
    ~Pty() {
        if (slave != -1) close(slave);
        if (master != -1) close(master);
    }
};

TEST(ExclusivePort, HeldUntilClosedAndNeverInherited) {
    Pty pty;
    const int fd = openSerialPort(pty.name, 5, 0, false);
    ASSERT_NE(fd, -1);
    EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);
    errno = 0;
    EXPECT_EQ(openSerialPort(pty.name, 5, 0, false), -1);
    EXPECT_EQ(errno, EBUSY);
    EXPECT_STREQ(serialErrorText(EBUSY), "in use by another program");
    // Another program asking for the lock is refused as well. TIOCEXCL alone
    // would let root in, and CI runs as root, so the lock is what is checked.
    const int other = open(pty.name, O_RDWR | O_NOCTTY);
    if (other != -1) {
        EXPECT_EQ(flock(other, LOCK_EX | LOCK_NB), -1);
        close(other);
    }
    closeSerialPort(fd, false);
    const int again = openSerialPort(pty.name, 5, 0, false);
    EXPECT_NE(again, -1);
    closeSerialPort(again, false);
}

TEST(VanishedPort, HangUpIsSeenWithoutTrafficAndFailsTheCall) {
    Pty pty;
    const int fd = openSerialPort(pty.name, 5, 0, false);
    ASSERT_NE(fd, -1);
    EXPECT_FALSE(serialPortLost(fd));
    close(pty.master);  // the USB adapter is pulled out
    pty.master = -1;
    EXPECT_TRUE(serialPortLost(fd));
    beginDeviceCall(fd);
    EXPECT_LT(sendRadioCommand(fd, "FA;", 3, false), 3);
    unsigned char reply[8];
    EXPECT_EQ(readRadioResponse(fd, reply, 4, 30, false), 0);
    const LineStatus status = deviceCallStatus(fd);
    EXPECT_EQ(status.fault, LineFault::kGone);
    EXPECT_EQ(status.error, EIO);
    closeSerialPort(fd, false);
    EXPECT_FALSE(serialPortLost(-1));
}

TEST(PortPath, ByIdLinkIsSavedForTheDeviceItPointsAt) {
    namespace fs = std::filesystem;
    char folder[] = "/tmp/veloran-dev-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const fs::path root(folder);
    fs::create_directories(root / "serial" / "by-id");
    std::ofstream(root / "ttyUSB3").put('\n');
    std::ofstream(root / "ttyUSB4").put('\n');
    const fs::path link = root / "serial" / "by-id" / "usb-FTDI_FT232R_A1B2-if00-port0";
    fs::create_symlink("../../ttyUSB3", link);
    const std::string usb3 = (root / "ttyUSB3").string(), usb4 = (root / "ttyUSB4").string();
    EXPECT_EQ(stablePortPath(usb3.c_str(), folder), link.string());
    EXPECT_EQ(stablePortPath(usb4.c_str(), folder), usb4);
    EXPECT_EQ(stablePortPath(link.c_str(), folder), link.string());

    PortNameRecord ports[kMaxSerialPorts] = {};
    ASSERT_EQ(addTypedPort(ports, usb3.c_str()), 0);
    EXPECT_EQ(findPortByPath(ports, link.c_str()), 0);  // the same device by another name
    EXPECT_EQ(findPortByPath(ports, usb4.c_str()), -1);
    fs::remove_all(root);
}

// --- a scripted device on a virtual clock --------------------------------------

// Each command written arms the reply its script holds; the next read gets it.
struct Script {
    std::vector<std::string> replies;
    size_t next = 0;
    std::string pending;
    int writeErrno = 0;  // non-zero: every write fails with it
    double now = 0;      // virtual microseconds
    int reads = 0;
};
Script* gScript = nullptr;

SerialSystem ScriptedSystem() {
    SerialSystem sys = *RealSerialSystem();
    sys.writePort = [](int, const void*, size_t) -> ssize_t {
        if (gScript->writeErrno) {
            errno = gScript->writeErrno;
            return -1;
        }
        gScript->pending = gScript->next < gScript->replies.size()
                               ? gScript->replies[gScript->next++]
                               : std::string();
        return 1;
    };
    sys.readPort = [](int, void* bytes, size_t count) -> ssize_t {
        ++gScript->reads;
        const size_t n = std::min(count, gScript->pending.size());
        std::copy_n(gScript->pending.data(), n, static_cast<char*>(bytes));
        gScript->pending.erase(0, n);
        return static_cast<ssize_t>(n);
    };
    sys.microseconds = [] { return gScript->now; };
    sys.idle = [](double us) { gScript->now += us; };
    sys.hungUp = nullptr;
    return sys;
}

struct CallCase {
    const char* name;
    std::vector<std::string> replies;  // one per command; "" is silence
    int writeErrno;
    LineFault fault;
    double waitedTicks;  // time-outs the whole call sat through, in ticks
};

class DeviceCall : public ::testing::TestWithParam<CallCase> {};

// Three commands, each waiting up to 30 ticks for a 2-byte reply.
TEST_P(DeviceCall, FirstSilentTimeOutEndsTheWaiting) {
    const CallCase& c = GetParam();
    Script script;
    script.replies = c.replies;
    script.writeErrno = c.writeErrno;
    gScript = &script;
    const SerialSystem sys = ScriptedSystem();
    SetSerialSystem(&sys);
    SetCommandDelay(0);
    static int sNextFd = 900;  // never reaches the system; a fresh slot per row
    const int kFd = sNextFd++;
    beginDeviceCall(kFd);
    unsigned char reply[4];
    for (int i = 0; i < 3; ++i) {
        sendRadioCommand(kFd, "Q", 1, false);
        readRadioResponse(kFd, reply, 2, 30, false);
    }
    const LineStatus status = deviceCallStatus(kFd);
    EXPECT_EQ(status.fault, c.fault) << c.name;
    EXPECT_EQ(status.error, c.writeErrno) << c.name;
    EXPECT_NEAR(script.now * 60.0 / 1e6, c.waitedTicks, 1.0) << c.name;
    SetSerialSystem(nullptr);
    gScript = nullptr;
}

INSTANTIATE_TEST_SUITE_P(
    Devices, DeviceCall,
    ::testing::Values(CallCase{"answers", {"OK", "OK", "OK"}, 0, LineFault::kNone, 0},
                      CallCase{"switched off", {"", "", ""}, 0, LineFault::kNoAnswer, 30},
                      // An acknowledgement the drivers ignore stays ignored.
                      CallCase{"one reply missing", {"OK", "", "OK"}, 0, LineFault::kNone, 30},
                      CallCase{"wakes up mid-call", {"", "OK", "OK"}, 0, LineFault::kNone, 30},
                      CallCase{"line refuses bytes", {}, EAGAIN, LineFault::kWriteFailed, 30},
                      CallCase{"adapter gone", {}, EIO, LineFault::kGone, 30}));

// The pauses between bytes are kept on a real pseudo-terminal, now that they
// sleep: each byte at least the command delay after the previous one, and
// the whole command (n + 2) delays (a lower bound; late is harmless).
TEST(Pacing, MinimumGapsBetweenBytesOnAPseudoTerminal) {
    static std::vector<double>* sTimes;
    std::vector<double> times;
    sTimes = &times;
    SerialSystem sys = *RealSerialSystem();
    sys.writePort = [](int fd, const void* bytes, size_t count) -> ssize_t {
        sTimes->push_back(RealSerialSystem()->microseconds());
        return RealSerialSystem()->writePort(fd, bytes, count);
    };
    SetSerialSystem(&sys);
    Pty pty;
    const int fd = openSerialPort(pty.name, 9, 0, false);
    ASSERT_NE(fd, -1);
    SetCommandDelay(2.0f);
    const double start = RealSerialSystem()->microseconds();
    EXPECT_EQ(sendRadioCommand(fd, "W180 045", 5, false), 5);
    const double end = RealSerialSystem()->microseconds();
    SetCommandDelay(0);
    closeSerialPort(fd, false);
    SetSerialSystem(nullptr);
    ASSERT_EQ(times.size(), 5u);
    for (size_t i = 1; i < times.size(); ++i) EXPECT_GE(times[i] - times[i - 1], 2000.0) << i;
    EXPECT_GE(end - start, 14000.0);
}

}  // namespace
}  // namespace veloran
