// Serial ports and the byte-level I/O every device driver uses: opening with
// the one line discipline all devices share, paced writes, polled reads with
// time-outs in 1/60 s ticks, the traffic log and the hex/ASCII helpers.
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <cstdint>

namespace veloran {

// The system calls and clocks behind the serial primitives. Tests install
// their own to inject short writes, EINTR, EIO or a virtual clock; every
// member must be set.
struct SerialSystem {
    int (*openPort)(const char* path, int flags);
    int (*setFileStatus)(int fd, int flags);  // fcntl(fd, F_SETFL, flags)
    int (*getAttributes)(int fd, struct termios* attrs);
    int (*setAttributes)(int fd, int when, const struct termios* attrs);
    int (*drain)(int fd);
    int (*closePort)(int fd);
    ssize_t (*writePort)(int fd, const void* bytes, size_t count);
    ssize_t (*readPort)(int fd, void* bytes, size_t count);
    double (*microseconds)();           // a steady microsecond clock
    void (*idle)(double microseconds);  // sleeps; also the pause between empty polls of a read
    // Optional (null skips them): the exclusive claim on a freshly opened
    // port (TIOCEXCL and flock), 0 or -1 with errno; and whether the line has
    // hung up (poll without waiting reports POLLHUP, POLLERR or POLLNVAL).
    int (*claimPort)(int fd);
    bool (*hungUp)(int fd);
};

// The real system calls on the steady clock.
const SerialSystem* RealSerialSystem();
// Installs `sys` for every primitive below; null puts the real one back.
void SetSerialSystem(const SerialSystem* sys);

// Ticks of 1/60 s on the seam's clock.
unsigned long SerialTicks();

// One row of the baud pop-up: index -> speed and stop bits.
struct BaudRate {
    speed_t speed;  // termios speed constant
    int bitsPerSecond;
    int stopBits;  // 2 only at 4800 bit/s, whatever the device
};
constexpr int kBaudTableSize = 13;
extern const BaudRate kBaudTable[kBaudTableSize];

// The attributes of the port last opened, as found. One slot for all ports on
// purpose: closing any port restores it from here.
extern struct termios gOriginalTTYAttrs;

// Opens `path` read/write with the shared line discipline at baud index
// `baudIndex` (an index outside the table keeps the port's own speed).
// `radio` only appears in the debug log. The port is claimed for this process
// alone (TIOCEXCL, and an exclusive flock that stops root too); a port another
// program holds fails with errno EBUSY. Returns the descriptor or -1, with
// errno telling why.
int openSerialPort(const char* path, int baudIndex, int radio, bool debug);
// Drains, restores gOriginalTTYAttrs and closes; -1 is ignored.
void closeSerialPort(int fd, bool debug);

// The command delay in milliseconds that sendRadioCommand paces bytes with.
void SetCommandDelay(float milliseconds);
float CommandDelay();

// Waits at least `microseconds` on the seam's clock. The thread sleeps rather
// than spins, so a wait costs no CPU; `noYield` no longer changes anything.
void MicrosecondDelay(double microseconds, int noYield);
// Waits milliseconds x 1000 microseconds; <= 0 returns at once.
void MillisecondDelay(double milliseconds);

// Writes `count` bytes one write() each, waiting the command delay after each
// and twice that after the last, then logs them. Returns the bytes the line
// took; less than `count` means the device is gone or refused them. A closed
// port (-1) is a logged no-op returning 0.
int sendRadioCommand(int fd, const unsigned char* bytes, int count, bool debug);
inline int sendRadioCommand(int fd, const char* text, int count, bool debug) {
    return sendRadioCommand(fd, reinterpret_cast<const unsigned char*>(text), count, debug);
}

// Reads and discards whatever the device has sent, without waiting (a stale
// reply must not be taken for the answer to the next command). Returns how
// many bytes were thrown away.
int flushRadioInput(int fd, bool debug);

// Polls for up to `maxCount` bytes until `timeoutTicks` (1/60 s) have passed;
// a time-out of 0 makes exactly one read. The buffer gets a terminating zero
// after the data, so it must hold maxCount + 1 bytes. Returns the count read;
// a read error ends the wait with what was gathered.
int readRadioResponse(int fd, unsigned char* buffer, int maxCount, int timeoutTicks, bool debug);

// --- How a device behaved during one driver call ------------------------------
//
// A driver call (tune, poll, point the rotor, key the gateway) is bracketed by
// beginDeviceCall and deviceCallStatus. Within it, the first read that times
// out with nothing at all marks the device as not answering: later reads in
// the same call look once at what is waiting and return without waiting, so
// a radio that is switched off costs one reply time-out per call, not one per
// command. A byte from the device lifts the mark.

enum class LineFault {
    kNone,
    kNoAnswer,     // every read that waited for a reply timed out with nothing
    kWriteFailed,  // the line refused a byte
    kGone,         // the device went away: hang-up, EIO, ENXIO, ENODEV
};
struct LineStatus {
    LineFault fault;
    int error;  // errno of the failed call; 0 for kNoAnswer and kNone
};

// Starts a driver call on `fd`: waits are allowed again and the call's counts
// start from zero. -1 is ignored.
void beginDeviceCall(int fd);
// What the device did since beginDeviceCall. A write or read error wins over
// silence; a missing reply while other replies came is not a fault.
LineStatus deviceCallStatus(int fd);
// "no answer", or the system's text for the error ("in use by another
// program" for EBUSY, which is how openSerialPort reports a held port).
const char* lineFaultText(const LineStatus& status);
const char* serialErrorText(int error);
// True once the line has hung up or failed as a vanished device does, or when
// the system reports the hang-up now (no traffic needed). -1 is never lost.
bool serialPortLost(int fd);

// Reads the bus echo of what was just sent (CI-V): like readRadioResponse,
// but the bytes are not counted as an answer from the device and a time-out
// does not mark it as silent. No traffic log.
int readLineEcho(int fd, unsigned char* buffer, int maxCount, int timeoutTicks);
// Whether the line echoes what is sent: -1 not known yet, 0 no, 1 yes. Known
// per open port; forgotten when a port is opened.
int lineEchoes(int fd);
void setLineEchoes(int fd, int echoes);

// "%02X " per byte into `text` (3 x count + 1 bytes). Null pointers: nothing.
void hexString(const unsigned char* bytes, char* text, int count);
// Printable bytes as they are, any other as "<%02X>" (5 x count + 1 bytes).
void asciiString(const unsigned char* bytes, char* text, int count);
// 1 when every byte is CR, LF or printable; 0 otherwise or for null.
int isPrintString(const unsigned char* bytes, int count);
// The two characters at `chars` as a hex number; 0 when they do not parse.
int Hex2CharsToNum(const char* chars);
// Upper-case hex, zero-padded to `width` digits.
void NumToHex(unsigned long number, char* text, int width);
// Up to 8 hex digits into *result; nothing when either pointer is null.
void HexToNum(const char* text, unsigned long* result);

}  // namespace veloran
