// Serial line discipline, paced writes, polled reads and the traffic log.

#include "serial/serial.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>

#include "engine/timebase.h"  // dateStamp for the traffic log

namespace veloran {

namespace {

int realOpen(const char* path, int flags) {
    return ::open(path, flags);
}
int realSetFileStatus(int fd, int flags) {
    return ::fcntl(fd, F_SETFL, flags);
}
int realGetAttributes(int fd, struct termios* attrs) {
    return ::tcgetattr(fd, attrs);
}
int realSetAttributes(int fd, int when, const struct termios* attrs) {
    return ::tcsetattr(fd, when, attrs);
}
int realDrain(int fd) {
    return ::tcdrain(fd);
}
int realClose(int fd) {
    return ::close(fd);
}
ssize_t realWrite(int fd, const void* bytes, size_t count) {
    return ::write(fd, bytes, count);
}
ssize_t realRead(int fd, void* bytes, size_t count) {
    return ::read(fd, bytes, count);
}

double realMicroseconds() {
    using namespace std::chrono;
    return static_cast<double>(
        duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count());
}

// A short sleep between empty polls keeps a waiting read from taking a whole
// core; at 38400 bit/s a byte takes 260 us, so nothing is noticeably delayed.
void realIdle(double microseconds) {
    std::this_thread::sleep_for(std::chrono::microseconds(static_cast<long>(microseconds)));
}

// TIOCEXCL keeps other programs from opening the port, but not root; the
// flock keeps out every program that asks for it, root or not (rigctld and
// minicom both take one).
int realClaim(int fd) {
    if (::flock(fd, LOCK_EX | LOCK_NB) == -1) {
        if (errno == EWOULDBLOCK) errno = EBUSY;
        return -1;
    }
    ::ioctl(fd, TIOCEXCL);  // not every device is a terminal; the lock is what counts
    return 0;
}

bool realHungUp(int fd) {
    struct pollfd p = {fd, 0, 0};
    return ::poll(&p, 1, 0) == 1 && (p.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
}

const SerialSystem kRealSystem = {
    realOpen,  realSetFileStatus, realGetAttributes, realSetAttributes, realDrain, realClose,
    realWrite, realRead,          realMicroseconds,  realIdle,          realClaim, realHungUp};

const SerialSystem* gSystem = &kRealSystem;

// Command delay in milliseconds applied by sendRadioCommand.
float smsdelay = 0.0f;

constexpr double kPollIdleMicroseconds = 250.0;

constexpr int kFlushCount = 255;

// Rendering for the traffic log: text when the whole block is printable,
// otherwise hex pairs.
std::string renderForLog(const unsigned char* bytes, int count) {
    if (count <= 0) return std::string();
    std::string text(static_cast<size_t>(count) * 5 + 1, '\0');
    if (isPrintString(bytes, count))
        asciiString(bytes, text.data(), count);
    else
        hexString(bytes, text.data(), count);
    text.resize(std::strlen(text.c_str()));
    return text;
}

void logTraffic(const char* arrow, const unsigned char* bytes, int count) {
    char stamp[32];
    dateStamp(stamp);
    std::fprintf(stderr, "%s%s%02d:%s\n", stamp, arrow, count, renderForLog(bytes, count).c_str());
}

void logClosedPort() {
    char stamp[32];
    dateStamp(stamp);
    std::fprintf(stderr, "%s Serial Port port closed.\n", stamp);
}

// Per-port bookkeeping of the current driver call, indexed by descriptor.
// Each port has one user thread at a time (the radio and rotor the core
// thread, the gateway the announcement thread), so slots need no lock.
struct LineRecord {
    bool waitsCut;  // a reply time-out passed in silence during this call
    bool lost;      // the device went away; stays until the port is reopened
    int answers;    // bytes the device sent during this call (echo excluded)
    int silences;   // reads that timed out with nothing
    int writeError;
    int readError;
    int echoes;  // 0 not known yet, 1 no echo, 2 echoes (zero-filled slots start unknown)
};
constexpr int kTrackedDescriptors = 1024;
LineRecord gLines[kTrackedDescriptors];

LineRecord* lineOf(int fd) {
    return fd >= 0 && fd < kTrackedDescriptors ? &gLines[fd] : nullptr;
}

// The errors with which a read or write tells that the device is gone, as
// opposed to a line that merely refused one byte.
bool meansGone(int error) {
    return error == EIO || error == ENXIO || error == ENODEV || error == EBADF || error == EPIPE;
}

void noteWriteError(int fd, int error) {
    if (LineRecord* line = lineOf(fd)) {
        line->writeError = error;
        if (meansGone(error)) line->lost = true;
    }
}

int bitsPerSecondOf(speed_t speed) {
    for (const BaudRate& b : kBaudTable) {
        if (b.speed == speed && b.speed != B0) return b.bitsPerSecond;
    }
    return static_cast<int>(speed);
}

}  // namespace

// Linux termios has no 14400 or 28800 bit/s constant; those rows keep the
// port's own speed (B0 marks them).
const BaudRate kBaudTable[kBaudTableSize] = {
    {B300, 300, 1},       {B600, 600, 1},     {B1200, 1200, 1},   {B2400, 2400, 1},
    {B4800, 4800, 2},     {B9600, 9600, 1},   {B0, 14400, 1},     {B19200, 19200, 1},
    {B0, 28800, 1},       {B38400, 38400, 1}, {B57600, 57600, 1}, {B115200, 115200, 1},
    {B230400, 230400, 1},
};

struct termios gOriginalTTYAttrs;

const SerialSystem* RealSerialSystem() {
    return &kRealSystem;
}
void SetSerialSystem(const SerialSystem* sys) {
    gSystem = sys ? sys : &kRealSystem;
}

unsigned long SerialTicks() {
    return static_cast<unsigned long>(gSystem->microseconds() * 60.0 / 1000000.0);
}

int openSerialPort(const char* path, int baudIndex, int radio, bool debug) {
    if (!path) return -1;
    // Non-blocking so that a port without carrier cannot hang the open; no
    // controlling terminal so that a pseudo-terminal never becomes ours.
    // Close-on-exec, so a download helper or speech engine started later
    // does not inherit the radio.
    const int fd = gSystem->openPort(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd == -1) {
        if (debug)
            std::fprintf(stderr, "Error opening serial port %s - %s(%d).\n", path,
                         std::strerror(errno), errno);
        return -1;
    }
    if (gSystem->claimPort && gSystem->claimPort(fd) == -1) {
        const int error = errno;
        if (debug)
            std::fprintf(stderr, "Error opening serial port %s - %s(%d).\n", path,
                         serialErrorText(error), error);
        gSystem->closePort(fd);
        errno = error;
        return -1;
    }
    if (gSystem->setFileStatus(fd, 0) == -1) {
        if (debug)
            std::fprintf(stderr, "Error clearing O_NONBLOCK %s - %s(%d).\n", path,
                         std::strerror(errno), errno);
        const int error = errno;
        gSystem->closePort(fd);
        errno = error;
        return -1;
    }
    if (gSystem->getAttributes(fd, &gOriginalTTYAttrs) == -1) {
        if (debug) {
            std::fprintf(stderr, "Error getting tty attributes %s - %s(%d).\n", path,
                         std::strerror(errno), errno);
        }
        const int error = errno;
        gSystem->closePort(fd);
        errno = error;
        return -1;
    }
    struct termios options = gOriginalTTYAttrs;
    if (baudIndex >= 0 && baudIndex < kBaudTableSize && kBaudTable[baudIndex].speed != B0) {
        cfsetispeed(&options, kBaudTable[baudIndex].speed);
        cfsetospeed(&options, kBaudTable[baudIndex].speed);
    }
    // The control flags are replaced whole: 8N1 (8N2 at 4800 bit/s), no
    // hardware flow control, modem lines ignored, no hang-up on close. The
    // speed bits live in c_cflag on Linux, so they are carried over.
    options.c_cflag = (options.c_cflag & CBAUD) | CS8 | CREAD | CLOCAL;
    if (baudIndex == 4) options.c_cflag |= CSTOPB;
    // Eight-bit input. Linux ports start with XON/XOFF and CR-to-LF on, which
    // would swallow or alter the binary bytes 0x11, 0x13 and 0x0D of a CAT
    // reply (a frequency of 145.913 MHz carries 0x13, and an XOFF from the
    // radio would stop our output for good), so those go too.
    options.c_iflag &= ~(ISTRIP | IXON | IXOFF | IXANY | ICRNL | INLCR | IGNCR);
    options.c_oflag &= ~OPOST;
    options.c_lflag &= ~(ICANON | ISIG | ECHO | ECHOE);
    // Reads return at once with what is waiting; readRadioResponse does the timing.
    options.c_cc[VMIN] = 0;
    options.c_cc[VTIME] = 0;
    if (gSystem->setAttributes(fd, TCSANOW, &options) == -1) {
        if (debug) {
            std::fprintf(stderr, "Error setting tty attributes %s - %s(%d).\n", path,
                         std::strerror(errno), errno);
        }
        const int error = errno;
        gSystem->closePort(fd);
        errno = error;
        return -1;
    }
    if (LineRecord* line = lineOf(fd)) *line = LineRecord{};
    if (debug) {
        std::fprintf(stderr, "Port %s open. iBaud: %d, oBaud: %d Radio: %d c_cflag %x\n", path,
                     bitsPerSecondOf(cfgetispeed(&options)), bitsPerSecondOf(cfgetospeed(&options)),
                     radio, static_cast<unsigned>(options.c_cflag));
    }
    return fd;
}

void closeSerialPort(int fd, bool debug) {
    if (fd == -1) return;
    if (debug) std::fprintf(stderr, "Closing Serial Port\n");
    LineRecord* line = lineOf(fd);
    // Output to a vanished device would never drain.
    const bool lost = line && line->lost;
    if (line) *line = LineRecord{};
    if (!lost && gSystem->drain(fd) == -1 && debug) {
        std::fprintf(stderr, "Error waiting for drain - %s(%d).\n", std::strerror(errno), errno);
    }
    if (gSystem->setAttributes(fd, TCSANOW, &gOriginalTTYAttrs) == -1 && debug) {
        std::fprintf(stderr, "Error resetting tty attributes - %s(%d).\n", std::strerror(errno),
                     errno);
    }
    gSystem->closePort(fd);
}

void SetCommandDelay(float milliseconds) {
    smsdelay = milliseconds;
}
float CommandDelay() {
    return smsdelay;
}

void MicrosecondDelay(double microseconds, int) {
    // Sleeping may overshoot by a scheduler slice; the pauses are minimum
    // gaps a radio needs between bytes, so late is harmless and early is not.
    const double start = gSystem->microseconds();
    for (double left = microseconds; left > 0;
         left = microseconds - (gSystem->microseconds() - start)) {
        gSystem->idle(left);
    }
}

void MillisecondDelay(double milliseconds) {
    if (milliseconds > 0) MicrosecondDelay(milliseconds * 1000.0, 1);
}

int sendRadioCommand(int fd, const unsigned char* bytes, int count, bool debug) {
    if (fd == -1) {
        if (debug) logClosedPort();
        return 0;
    }
    if (!bytes || count <= 0) return 0;
    int written = 0;
    for (int i = 0; i < count; ++i) {
        ssize_t result;
        do {
            result = gSystem->writePort(fd, bytes + i, 1);
        } while (result < 0 && errno == EINTR);
        if (result <= 0) {
            noteWriteError(fd, result < 0 ? errno : EIO);
            break;  // the device has gone or refuses; the rest would fail alike
        }
        written += static_cast<int>(result);
        if (smsdelay > 0) MicrosecondDelay(smsdelay * 1000.0, 1);
    }
    if (2 * smsdelay > 0) MicrosecondDelay(2 * smsdelay * 1000.0, 1);
    if (debug) logTraffic("->", bytes, written);
    return written;
}

namespace {

// The polled read of readRadioResponse and readLineEcho; `echo` reads do not
// count as the device answering and never cut the waits of the call.
int pollRead(int fd, unsigned char* buffer, int maxCount, int timeoutTicks, bool echo, bool debug) {
    LineRecord* line = lineOf(fd);
    // Once the device has let a reply time-out pass in silence, the rest of
    // the call only looks at what is already there.
    if (!echo && line && line->waitsCut) timeoutTicks = 0;
    const unsigned long start = SerialTicks();
    const unsigned long deadline =
        start + static_cast<unsigned long>(timeoutTicks > 0 ? timeoutTicks : 0);
    int held = 0;
    while (held < maxCount) {
        const ssize_t result =
            gSystem->readPort(fd, buffer + held, static_cast<size_t>(maxCount - held));
        if (result < 0 && errno != EINTR && errno != EAGAIN) {
            const int error = errno;
            if (line) {
                line->readError = error;
                if (meansGone(error)) line->lost = true;
            }
            if (debug) {
                char stamp[32];
                dateStamp(stamp);
                std::fprintf(stderr, "%s Error reading from Serial Port - %s(%d).\n", stamp,
                             std::strerror(error), error);
            }
            break;
        }
        if (result > 0) held += static_cast<int>(result);
        const unsigned long now = SerialTicks();
        if (now >= deadline) break;
        if (result > 0) continue;
        if (gSystem != &kRealSystem) {
            gSystem->idle(kPollIdleMicroseconds);
            continue;
        }
        // On the real line the thread sleeps in poll until a byte comes or
        // the time-out passes, so a long wait costs no CPU.
        struct pollfd p = {fd, POLLIN, 0};
        const int ms = static_cast<int>((deadline - now) * 1000 / 60) + 1;
        if (::poll(&p, 1, ms) == 1 && (p.revents & POLLIN) == 0 &&
            (p.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0) {
            if (line) {
                line->lost = true;
                if (!line->readError) line->readError = EIO;
            }
            break;  // hung up: nothing will ever come
        }
    }
    if (line && !echo) {
        if (held > 0) {
            line->answers += held;
            line->waitsCut = false;
        } else if (timeoutTicks > 0) {
            ++line->silences;
            line->waitsCut = true;
        }
    }
    buffer[held > 0 ? held : 0] = 0;
    return held;
}

}  // namespace

int readRadioResponse(int fd, unsigned char* buffer, int maxCount, int timeoutTicks, bool debug) {
    if (!buffer) return 0;
    if (fd == -1) {
        if (debug) logClosedPort();
        buffer[0] = 0;
        return 0;
    }
    const int held = pollRead(fd, buffer, maxCount, timeoutTicks, false, debug);
    if (debug && held > 0) logTraffic("<-", buffer, held);
    return held;
}

int readLineEcho(int fd, unsigned char* buffer, int maxCount, int timeoutTicks) {
    if (!buffer) return 0;
    if (fd == -1) {
        buffer[0] = 0;
        return 0;
    }
    return pollRead(fd, buffer, maxCount, timeoutTicks, true, false);
}

void beginDeviceCall(int fd) {
    if (LineRecord* line = lineOf(fd)) {
        line->waitsCut = false;
        line->answers = 0;
        line->silences = 0;
        line->writeError = 0;
        line->readError = 0;
    }
}

LineStatus deviceCallStatus(int fd) {
    const LineRecord* line = lineOf(fd);
    if (!line) return {LineFault::kNone, 0};
    if (line->lost) {
        const int error = line->writeError ? line->writeError : line->readError;
        return {LineFault::kGone, error ? error : EIO};
    }
    if (line->writeError) return {LineFault::kWriteFailed, line->writeError};
    if (line->silences > 0 && line->answers == 0) return {LineFault::kNoAnswer, 0};
    return {LineFault::kNone, 0};
}

const char* serialErrorText(int error) {
    if (error == EBUSY) return "in use by another program";
    return std::strerror(error);
}

const char* lineFaultText(const LineStatus& status) {
    if (status.fault == LineFault::kNoAnswer) return "no answer";
    if (status.fault == LineFault::kNone) return "";
    return serialErrorText(status.error);
}

bool serialPortLost(int fd) {
    if (fd == -1) return false;
    LineRecord* line = lineOf(fd);
    if (line && line->lost) return true;
    if (gSystem->hungUp && gSystem->hungUp(fd)) {
        if (line) {
            line->lost = true;
            if (!line->readError && !line->writeError) line->readError = EIO;
        }
        return true;
    }
    return false;
}

int lineEchoes(int fd) {
    const LineRecord* line = lineOf(fd);
    return line ? line->echoes - 1 : -1;
}

void setLineEchoes(int fd, int echoes) {
    if (LineRecord* line = lineOf(fd)) line->echoes = echoes < 0 ? 0 : (echoes ? 2 : 1);
}

void hexString(const unsigned char* bytes, char* text, int count) {
    if (!bytes || !text) return;
    text[0] = 0;
    char* out = text;
    for (int i = 0; i < count; ++i) out += std::sprintf(out, "%02X ", bytes[i]);
}

void asciiString(const unsigned char* bytes, char* text, int count) {
    if (!bytes || !text) return;
    text[0] = 0;
    char* out = text;
    for (int i = 0; i < count; ++i) {
        if (std::isprint(bytes[i]))
            out += std::sprintf(out, "%c", bytes[i]);
        else
            out += std::sprintf(out, "<%02X>", bytes[i]);
    }
}

int isPrintString(const unsigned char* bytes, int count) {
    if (!bytes) return 0;
    for (int i = 0; i < count; ++i) {
        if (bytes[i] != 13 && bytes[i] != 10 && !std::isprint(bytes[i])) return 0;
    }
    return 1;
}

int Hex2CharsToNum(const char* chars) {
    if (!chars) return 0;
    char scratch[3] = {chars[0], chars[0] ? chars[1] : '\0', '\0'};
    unsigned value = 0;
    if (std::sscanf(scratch, "%x", &value) != 1) return 0;
    return static_cast<int>(value);
}

void NumToHex(unsigned long number, char* text, int width) {
    if (!text) return;
    std::sprintf(text, "%0*lX", width, number);
}

void HexToNum(const char* text, unsigned long* result) {
    if (!text || !result) return;
    std::sscanf(text, "%8lx", result);
}

int flushRadioInput(int fd, bool debug) {
    unsigned char scrap[kFlushCount + 1];
    return readRadioResponse(fd, scrap, kFlushCount, 0, debug);
}

}  // namespace veloran
