// CI-V framing and packing, and the exchange on the single-wire CI-V bus that
// every Icom driver uses.

#include <cstdio>
#include <cstring>

#include "engine/timebase.h"
#include "radio/icom.h"
#include "radio/yaesu.h"
#include "serial/serial.h"

namespace veloran {

namespace {

// The bus paces itself: a short pause after each byte so the echo can come
// back, a longer one after the frame so the radio can act on it. The command
// delay of the other radios does not apply here.
constexpr double kCivByteMicroseconds = 2000.0;
constexpr double kCivFrameMicroseconds = 8000.0;
constexpr int kCivEchoTicks = 30;

int startFrame(uint8_t address, unsigned char* buffer, uint8_t command) {
    buffer[0] = kCivPreamble;
    buffer[1] = kCivPreamble;
    buffer[2] = address;
    buffer[3] = kCivControllerAddress;
    buffer[4] = command;
    return 5;
}

int appendData(unsigned char* buffer, int at, const unsigned char* data, int n) {
    if (n > 0 && data) {
        std::memcpy(buffer + at, data, static_cast<size_t>(n));
        at += n;
    }
    buffer[at++] = kCivEndOfMessage;
    return at;
}

// One byte onto the line through the serial layer, with its command delay held
// at 0 for the moment: the CI-V exchange does its own pacing.
int writeOneByte(int fd, unsigned char byte) {
    const float delay = CommandDelay();
    SetCommandDelay(0.0f);
    const int written = sendRadioCommand(fd, &byte, 1, false);
    SetCommandDelay(delay);
    return written;
}

void logHexLine(const char* arrow, int count, const unsigned char* bytes, int rendered) {
    char stamp[32];
    dateStamp(stamp);
    char text[3 * 256 + 1] = "";
    if (rendered > 256) rendered = 256;
    hexString(bytes, text, rendered);
    std::fprintf(stderr, "%s%s%02d:%s\n", stamp, arrow, count, text);
}

// Sends a complete frame and reads its acknowledgement, which the caller may
// look at.
int exchange(int fd, uint8_t address, const unsigned char* frame, int length, bool debug) {
    SendIcomRadioCommand(fd, frame, length, debug);
    unsigned char reply[kCivAckLength + 1];
    return ReadAndCheckIcomFlag(fd, address, reply, kCivAck, kCivAckLength, kCivReplyTicks, debug);
}

}  // namespace

int IcomCommandNoSubNoData(uint8_t address, unsigned char* buffer, uint8_t command) {
    if (!buffer) return 0;
    return appendData(buffer, startFrame(address, buffer, command), nullptr, 0);
}

int IcomCommandSubNoData(uint8_t address, unsigned char* buffer, uint8_t command, uint8_t sub) {
    if (!buffer) return 0;
    int at = startFrame(address, buffer, command);
    buffer[at++] = sub;
    return appendData(buffer, at, nullptr, 0);
}

int IcomCommandNoSubData(uint8_t address, unsigned char* buffer, uint8_t command,
                         const unsigned char* data, int n) {
    if (!buffer || n < 0) return 0;
    return appendData(buffer, startFrame(address, buffer, command), data, n);
}

int IcomCommandSubAndData(uint8_t address, unsigned char* buffer, uint8_t command, uint8_t sub,
                          const unsigned char* data, int n) {
    if (!buffer || n < 0) return 0;
    int at = startFrame(address, buffer, command);
    buffer[at++] = sub;
    return appendData(buffer, at, data, n);
}

void IcomBCD(uint32_t hertz, unsigned char* out5) {
    if (!out5) return;
    for (int i = 0; i < 5; ++i) {
        out5[i] = BCD(static_cast<int>(hertz % 100));
        hertz /= 100;
    }
}

uint32_t UnpackIcom(const unsigned char* in5) {
    if (!in5) return 0;
    uint32_t hertz = 0;
    for (int i = 4; i >= 0; --i) hertz = hertz * 100 + static_cast<uint32_t>(UnpackBCD(in5[i]));
    return hertz;
}

void IcomBCD3(uint32_t hundredsOfHertz, unsigned char* out3) {
    if (!out3) return;
    for (int i = 0; i < 3; ++i) {
        out3[i] = BCD(static_cast<int>(hundredsOfHertz % 100));
        hundredsOfHertz /= 100;
    }
}

int SendIcomRadioCommand(int fd, const unsigned char* bytes, int count, bool debug) {
    if (count <= 0 || !bytes) return 0;
    if (fd == -1)
        return sendRadioCommand(fd, bytes, count, debug);  // the serial layer logs the closed port
    flushRadioInput(fd, debug);
    // The CI-V bus is one wire: every byte we send comes straight back to us,
    // so each echo is read before the next byte goes out. Once the echoed end
    // of message is seen the echo is complete. Some interfaces have the echo
    // switched off: when the first byte's echo of a freshly opened line does
    // not come, the line is taken to have none and no echo is waited for
    // again until the port is reopened (a missing echo would otherwise cost
    // its time-out on every frame). Once the line has echoed, a missing echo
    // ends the echo reading of that frame only.
    unsigned char echo[256];
    int echoed = 0;
    bool readEcho = lineEchoes(fd) != 0;
    int written = 0;
    for (int i = 0; i < count; ++i) {
        // A byte the line refused means the interface is gone: the rest of
        // the frame, and its echo, would only cost time.
        if (writeOneByte(fd, bytes[i]) != 1) break;
        ++written;
        MicrosecondDelay(kCivByteMicroseconds, 1);
        if (!readEcho) continue;
        unsigned char byte[2];
        if (readLineEcho(fd, byte, 1, kCivEchoTicks) == 1) {
            if (echoed < static_cast<int>(sizeof echo)) echo[echoed++] = byte[0];
            if (byte[0] == kCivEndOfMessage) readEcho = false;
            setLineEchoes(fd, 1);
        } else {
            if (lineEchoes(fd) == -1) setLineEchoes(fd, 0);
            readEcho = false;
        }
    }
    MicrosecondDelay(kCivFrameMicroseconds, 1);
    if (debug) {
        logHexLine("->", count, bytes, count);
        logHexLine("<e", count, echo, echoed);
    }
    return written;
}

int ReadAndCheckIcomFlag(int fd, uint8_t address, unsigned char* buffer, uint8_t command,
                         int expectedLength, int timeoutTicks, bool debug) {
    if (!buffer || expectedLength <= 0) return 0;
    const int got = readRadioResponse(fd, buffer, expectedLength, timeoutTicks, debug);
    if (got != expectedLength || got < 5) return 0;
    return buffer[0] == kCivPreamble && buffer[1] == kCivPreamble &&
           buffer[2] == kCivControllerAddress && buffer[3] == address && buffer[4] == command;
}

int SetIcomBandVFO(int fd, uint8_t address, uint8_t selector, bool debug) {
    if (fd == -1) return 0;
    unsigned char frame[kCivMaxFrame];
    const int length = IcomCommandSubNoData(address, frame, kCivSelect, selector);
    return exchange(fd, address, frame, length, debug);
}

void SetIcomMode(int fd, uint8_t address, uint8_t mode, bool debug) {
    if (fd == -1) return;
    unsigned char frame[kCivMaxFrame];
    const int length = IcomCommandNoSubData(address, frame, kCivSetMode, &mode, 1);
    exchange(fd, address, frame, length, debug);
}

void SetIcomFrequency(int fd, uint8_t address, uint32_t hertz, bool debug) {
    if (fd == -1) return;
    unsigned char data[5];
    IcomBCD(hertz, data);
    unsigned char frame[kCivMaxFrame];
    const int length = IcomCommandNoSubData(address, frame, kCivSetFrequency, data, 5);
    SendIcomRadioCommand(fd, frame, length, debug);
    unsigned char reply[kCivAckLength + 1];
    readRadioResponse(fd, reply, kCivAckLength, kCivReplyTicks, debug);
}

uint32_t GetIcomRadioDownLinkCycles(int fd, uint8_t address, bool debug) {
    if (fd == -1) return 0;
    flushRadioInput(fd, debug);
    unsigned char frame[kCivMaxFrame];
    const int length = IcomCommandNoSubNoData(address, frame, kCivReadFrequency);
    SendIcomRadioCommand(fd, frame, length, debug);
    unsigned char reply[kCivFrequencyReplyLength + 1];
    if (!ReadAndCheckIcomFlag(fd, address, reply, kCivReadFrequency, kCivFrequencyReplyLength,
                              kCivReplyTicks, debug)) {
        return 0;
    }
    return UnpackIcom(reply + 5);
}

void IcomCommand(int fd, uint8_t address, uint8_t command, uint8_t sub, const unsigned char* data,
                 bool hasData, bool debug) {
    if (fd == -1) return;
    unsigned char frame[kCivMaxFrame];
    // With data the sub-command is left out: the only data this carries is a
    // 5-byte frequency, whose commands take no sub-command.
    const int length = hasData && data ? IcomCommandNoSubData(address, frame, command, data, 5)
                                       : IcomCommandSubNoData(address, frame, command, sub);
    SendIcomRadioCommand(fd, frame, length, debug);
    flushRadioInput(fd, debug);
}

void SendTone(int fd, uint8_t address, int toneIndex, bool debug) {
    if (fd == -1) return;
    unsigned char tone[2];
    IcomToneBCD2(tableToToneTenths(toneIndex), tone);
    unsigned char frame[kCivMaxFrame];
    const int length = IcomCommandSubAndData(address, frame, kCivToneFrequency,
                                             kCivRepeaterToneFrequency, tone, 2);
    SendIcomRadioCommand(fd, frame, length, debug);
    unsigned char reply[kCivAckLength + 1];
    readRadioResponse(fd, reply, kCivAckLength, kCivReplyTicks, debug);
}

}  // namespace veloran
