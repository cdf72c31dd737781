// Rotor controller protocols: frame builders, one exchange routine, the
// drivers of the rotor table and the position read-back.

#include "rotor/protocols.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "serial/serial.h"

namespace veloran {

namespace {

// Whatever a controller sends unasked (echoes, prompts, status lines) is read
// and thrown away before and after each command, up to this many bytes.
constexpr int kDiscardCount = 255;
// "C2": report azimuth and elevation.
constexpr char kPositionQuery[] = "C2\r";
constexpr int kPositionQueryLength = 3;
// The read-back waits this many ticks (1/60 s) for the 12-byte reply.
constexpr int kPositionReplyTicks = 20;
// EasyComm controllers are sent at most one command per 180 ticks (3 s).
constexpr unsigned long kEasyCommIntervalTicks = 180;

constexpr char kCarriageReturn = '\r';
// KLM: after the position, "D" and "P" (each closed by a carriage return)
// make the controller take and drive to it.
constexpr char kKLMDrive[] = "D\r";
constexpr char kKLMPosition[] = "P\r";
// SatEL: "G" starts and "S" stops computer control.
constexpr char kSatELGo[] = "G\r";
constexpr char kSatELStop[] = "S\r";
// DCU-1: "AP1nnn;" loads a bearing, "AM1;" starts the move to it.
constexpr char kDCU1Move[] = "AM1;\r";
// SARtek: "P" then one byte, 0..255 for 0..360 degrees.
constexpr unsigned char kSARtekPosition = 'P';
constexpr int kSARtekLowest = 2;
constexpr int kSARtekHighest = 358;

// PT packet: "$" opens it, "#" closes it; the XOR byte before "#" covers
// bytes 1..45. The two frequency fields are fixed: the controller's radio
// side is not driven from here.
constexpr unsigned char kPTStart = '$';
constexpr unsigned char kPTEnd = '#';
constexpr double kPTUplinkMHz = 145.0;
constexpr double kPTDownlinkMHz = 432.0;
// The nine fixed bytes that end the text part of every packet; the controller
// expects them exactly so.
constexpr unsigned char kPTTrailer[9] = {0xA9, 0x6D, 0x81, 0x4C, 0x4C, 0x01, 0x01, 0x01, 0x01};
constexpr int kPTTextLength = 46;
// The controller needs a moment after a packet before it answers.
constexpr double kPTSettleMs = 33.0;

unsigned long sLastTicks = 0;  // when EasyComm last sent
bool sEasyCommSent = false;

// A fixed-point number with `decimals` decimals, '.' as the decimal point in
// any locale, zero-padded on the left to `width` characters. Returns the
// characters written (no terminator), 0 when they do not fit.
int appendFixed(char* out, size_t size, double value, int decimals, int width) {
    char digits[64];
    const auto result =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    if (result.ec != std::errc()) return 0;
    int length = static_cast<int>(result.ptr - digits);
    const bool negative = digits[0] == '-';
    const int padding = std::max(0, width - length);
    if (static_cast<size_t>(length + padding) > size) return 0;
    char* p = out;
    if (negative) *p++ = '-';
    for (int i = 0; i < padding; ++i) *p++ = '0';
    std::memcpy(p, digits + (negative ? 1 : 0), static_cast<size_t>(length - (negative ? 1 : 0)));
    return length + padding;
}

// snprintf for integer-only formats (which no locale changes); 0 when cut.
template <typename... Args>
int formatInts(char* out, size_t size, const char* format, Args... args) {
    if (!out || size == 0) return 0;
    const int n = std::snprintf(out, size, format, args...);
    return (n < 0 || static_cast<size_t>(n) >= size) ? 0 : n;
}

void discardInput(int fd, bool debug) {
    unsigned char scratch[kDiscardCount + 1];
    readRadioResponse(fd, scratch, kDiscardCount, 0, debug);
}

// Sends one command and reads whatever the controller says back straight
// away; the byte count read is the driver's result.
int sendAndCollect(int fd, const void* bytes, int count, bool debug) {
    sendRadioCommand(fd, static_cast<const unsigned char*>(bytes), count, debug);
    unsigned char scratch[kDiscardCount + 1];
    return readRadioResponse(fd, scratch, kDiscardCount, 0, debug);
}

// The common shape of the one-command controllers.
int sendFrame(int fd, const void* bytes, int count, bool debug) {
    if (fd == -1) return -1;
    discardInput(fd, debug);
    return sendAndCollect(fd, bytes, count, debug);
}

void sendControl(int fd, const char* command, bool debug) {
    if (fd == -1) return;
    discardInput(fd, debug);
    sendAndCollect(fd, command, static_cast<int>(std::strlen(command)), debug);
}

bool fourDigits(const unsigned char* p, int* value) {
    int v = 0;
    for (int i = 0; i < 4; ++i) {
        if (p[i] < '0' || p[i] > '9') return false;
        v = v * 10 + (p[i] - '0');
    }
    *value = v;
    return true;
}

int readPosition(int fd, double* azimuth, double* elevation, bool debug) {
    if (fd == -1) return 0;
    discardInput(fd, debug);
    sendRadioCommand(fd, kPositionQuery, kPositionQueryLength, debug);
    unsigned char reply[kPositionReplyLength + 1];
    const int count =
        readRadioResponse(fd, reply, kPositionReplyLength, kPositionReplyTicks, debug);
    return ParsePositionReply(reply, count, azimuth, elevation);
}

}  // namespace

int FormatGS232Position(char* out, size_t size, int azimuth, int elevation) {
    return formatInts(out, size, "W%03d %03d\r", azimuth, elevation);
}

int FormatAutoTrackerPosition(char* out, size_t size, int azimuth, int elevation) {
    return formatInts(out, size, "A:%03d,E:%03d\r", azimuth, elevation);
}

int FormatEasyCommPosition(char* out, size_t size, double azimuth, double elevation) {
    if (!out || size == 0) return 0;
    char text[kRotorFrameSize];
    int n = 0;
    auto put = [&](const char* s) {
        const size_t len = std::strlen(s);
        if (n + len >= sizeof text) return false;
        std::memcpy(text + n, s, len);
        n += static_cast<int>(len);
        return true;
    };
    auto number = [&](double v) {
        const int len = appendFixed(text + n, sizeof text - static_cast<size_t>(n) - 1, v, 1, 0);
        n += len;
        return len > 0;
    };
    if (!put("AZ") || !number(azimuth) || !put(" EL") || !number(elevation) || !put("\r")) return 0;
    if (static_cast<size_t>(n) >= size) return 0;
    std::memcpy(out, text, static_cast<size_t>(n));
    out[n] = 0;
    return n;
}

int FormatKLMPosition(char* out, size_t size, int azimuth, int elevation) {
    // Elevation first: the KLM controller reads the pair the other way round.
    return formatInts(out, size, "PC%03d %03d\r", elevation, azimuth);
}

int FormatSatELPosition(char* out, size_t size, int azimuth, int elevation) {
    return formatInts(out, size, "P%d %d\r", azimuth, elevation);
}

int FormatDCU1Position(char* out, size_t size, int azimuth, int elevation) {
    // The bearing field carries the elevation argument: that is how this
    // controller has always been driven here, and it is kept so. The DCU-1 is azimuth-only and
    // reads one bearing, so the second field, which it has no meaning for, carries the azimuth: the
    // one angle such a rotator can turn to, in the last three digits before ";" where a controller
    // that shifts digits in as they come would pick it up.
    return formatInts(out, size, "AP1%03d %03d;\r", elevation, azimuth);
}

int BuildSARtekPacket(unsigned char* out, size_t size, int azimuth) {
    if (!out || size < 2) return 0;
    const int held = std::clamp(azimuth, kSARtekLowest, kSARtekHighest);
    out[0] = kSARtekPosition;
    out[1] = static_cast<unsigned char>(held * 255 / 360);
    return 2;
}

unsigned char PTChecksum(const unsigned char* packet) {
    unsigned char sum = 0;
    if (!packet) return 0;
    for (int i = 1; i < kPTTextLength; ++i) sum ^= packet[i];
    return sum;
}

int BuildPTPacket(unsigned char* out, size_t size, int azimuth, int elevation) {
    if (!out || size < static_cast<size_t>(kPTPacketLength + 1)) return 0;
    char text[kRotorFrameSize];
    int n = formatInts(text, sizeof text, "%cAZ%03dEL%03dUL", kPTStart, azimuth, elevation);
    if (n == 0) return 0;
    n += appendFixed(text + n, sizeof text - static_cast<size_t>(n), kPTUplinkMHz, 6, 11);
    text[n++] = 'D';
    text[n++] = 'L';
    n += appendFixed(text + n, sizeof text - static_cast<size_t>(n), kPTDownlinkMHz, 6, 11);
    if (n + static_cast<int>(sizeof kPTTrailer) != kPTTextLength)
        return 0;  // angles wider than 3 digits
    std::memcpy(out, text, static_cast<size_t>(n));
    std::memcpy(out + n, kPTTrailer, sizeof kPTTrailer);
    out[kPTTextLength] = PTChecksum(out);
    out[kPTTextLength + 1] = kPTEnd;
    out[kPTPacketLength] = 0;
    return kPTPacketLength;
}

int ParsePositionReply(const unsigned char* reply, int count, double* azimuth, double* elevation) {
    if (!reply || count != kPositionReplyLength) return 0;
    int az = 0;
    int el = 0;
    if (!fourDigits(reply + 1, &az) || !fourDigits(reply + 6, &el)) return 0;
    if (azimuth) *azimuth = az;
    if (elevation) *elevation = el;
    return 1;
}

int AzElGS232(int fd, int azimuth, int elevation, bool debug) {
    char frame[kRotorFrameSize];
    return sendFrame(fd, frame, FormatGS232Position(frame, sizeof frame, azimuth, elevation),
                     debug);
}

int AzElAlphaSpid(int fd, int azimuth, int elevation, bool debug) {
    // The SPID controller is driven in its GS-232 emulation.
    char frame[kRotorFrameSize];
    return sendFrame(fd, frame, FormatGS232Position(frame, sizeof frame, azimuth, elevation),
                     debug);
}

int AzElAutoTracker(int fd, int azimuth, int elevation, bool debug) {
    char frame[kRotorFrameSize];
    return sendFrame(fd, frame, FormatAutoTrackerPosition(frame, sizeof frame, azimuth, elevation),
                     debug);
}

int AzElEasyComRotor(int fd, double azimuth, double elevation, bool debug) {
    if (fd == -1) return -1;
    const unsigned long now = SerialTicks();
    if (sEasyCommSent && now <= sLastTicks + kEasyCommIntervalTicks) return 0;
    const double el = std::clamp(elevation, 0.0, 180.0);
    const double az = std::clamp(azimuth, 0.0, 360.0);
    char frame[kRotorFrameSize];
    const int result =
        sendFrame(fd, frame, FormatEasyCommPosition(frame, sizeof frame, az, el), debug);
    sLastTicks = now;
    sEasyCommSent = true;
    return result;
}

void ResetEasyCommClock() {
    sLastTicks = 0;
    sEasyCommSent = false;
}

int AzElKLM(int fd, int azimuth, int elevation, bool debug) {
    if (fd == -1) return -1;
    char frame[kRotorFrameSize];
    discardInput(fd, debug);
    sendAndCollect(fd, frame, FormatKLMPosition(frame, sizeof frame, azimuth, elevation), debug);
    sendAndCollect(fd, kKLMDrive, 2, debug);
    return sendAndCollect(fd, kKLMPosition, 2, debug);
}

int AzElSARtek(int fd, int azimuth, int /*elevation*/, bool debug) {
    unsigned char packet[2];
    return sendFrame(fd, packet, BuildSARtekPacket(packet, sizeof packet, azimuth), debug);
}

int AzElSatEL(int fd, int azimuth, int elevation, bool debug) {
    char frame[kRotorFrameSize];
    return sendFrame(fd, frame, FormatSatELPosition(frame, sizeof frame, azimuth, elevation),
                     debug);
}

int AzElDCU1(int fd, int azimuth, int elevation, bool debug) {
    if (fd == -1) return -1;
    char frame[kRotorFrameSize];
    std::memset(frame, 0, sizeof frame);
    discardInput(fd, debug);
    const int length = FormatDCU1Position(frame, sizeof frame, azimuth, elevation);
    sendAndCollect(fd, frame, length, debug);
    // "AM1;\r" goes out with the length of the position command, from the
    // same buffer: after its own terminator and a zero byte the tail of the
    // earlier text follows it on the wire. Kept so; the DCU-1 has always been
    // sent this.
    std::memcpy(frame, kDCU1Move, sizeof kDCU1Move);
    return sendAndCollect(fd, frame, length, debug);
}

int AzElPT(int fd, int azimuth, int elevation, bool debug) {
    if (fd == -1) return -1;
    unsigned char packet[kPTPacketLength + 1];
    const int length = BuildPTPacket(packet, sizeof packet, azimuth, elevation);
    discardInput(fd, debug);
    sendRadioCommand(fd, packet, length, debug);
    MillisecondDelay(kPTSettleMs);
    std::printf("AzElPT: %s \n", reinterpret_cast<const char*>(packet));
    std::fflush(stdout);
    unsigned char scratch[kDiscardCount + 1];
    return readRadioResponse(fd, scratch, kDiscardCount, 0, debug);
}

void StartATVFO(int fd, bool debug) {
    // The AutoTracker (Endeavour Electronics) takes "A:nnn,E:nnn" position
    // lines whenever they come: its serial protocol has no command that puts
    // it into computer control, and its radio side is driven by the radio
    // driver. All that is sent here is a lone carriage return, which ends any
    // half line another program may have left in the controller's input, so
    // that the first position line is read whole.
    const char ending[] = {kCarriageReturn};
    if (fd == -1) return;
    discardInput(fd, debug);
    sendAndCollect(fd, ending, 1, debug);
}

void StartSatEL(int fd, bool debug) {
    sendControl(fd, kSatELGo, debug);
}

void StopSatEL(int fd, bool debug) {
    sendControl(fd, kSatELStop, debug);
}

int GetAzElGS232(int fd, double* azimuth, double* elevation, bool debug) {
    return readPosition(fd, azimuth, elevation, debug);
}

int GetAzElAlphaSpid(int fd, double* azimuth, double* elevation, bool debug) {
    return readPosition(fd, azimuth, elevation, debug);
}

}  // namespace veloran
