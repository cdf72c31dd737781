// The command set of each rotor controller: pure frame builders that fill a
// buffer and return its length, and the drivers that put those frames on the
// line. Drivers take the port first and the debug switch last; angles are
// whole degrees already clamped by SendAzEl (EasyComm takes them unrounded).
// Every driver returns -1 at once for a closed port (fd -1); otherwise it
// discards what is waiting, sends, and returns the byte count of its last read.
#pragma once

#include <cstddef>

namespace veloran {

// Longest frame any controller takes, plus room for a terminating zero.
constexpr int kRotorFrameSize = 64;
// The PT controller's packet: 46 bytes of text, the XOR byte and "#".
constexpr int kPTPacketLength = 48;
// The position reply to "C2": sign, four digits of azimuth, sign, four digits
// of elevation, two line-end bytes.
constexpr int kPositionReplyLength = 12;

// Frame builders. Each writes at most `size` bytes (terminated when room is
// left) and returns the frame's length, or 0 when it does not fit. Numbers use
// '.' as the decimal point whatever the locale.
int FormatGS232Position(char* out, size_t size, int azimuth, int elevation);  // "W%03d %03d\r"
int FormatAutoTrackerPosition(char* out, size_t size, int azimuth,
                              int elevation);  // "A:%03d,E:%03d\r"
int FormatEasyCommPosition(char* out, size_t size, double azimuth,
                           double elevation);  // "AZ%.1f EL%.1f\r"
int FormatKLMPosition(char* out, size_t size, int azimuth,
                      int elevation);  // "PC%03d %03d\r", elevation first
int FormatSatELPosition(char* out, size_t size, int azimuth, int elevation);  // "P%d %d\r"
int FormatDCU1Position(char* out, size_t size, int azimuth, int elevation);   // "AP1%03d %03d;\r"
// "P" and the position byte azimuth x 255 / 360, the azimuth first held in 2..358.
int BuildSARtekPacket(unsigned char* out, size_t size, int azimuth);
// The 48-byte PT packet; `out` needs kPTPacketLength + 1 bytes (it is
// terminated after byte 47).
int BuildPTPacket(unsigned char* out, size_t size, int azimuth, int elevation);
// XOR of bytes 1..45 of a PT packet: the "$" is not covered.
unsigned char PTChecksum(const unsigned char* packet);

// The position in a "C2" reply: azimuth from bytes 1..4, elevation from bytes
// 6..9. 1 only for exactly 12 bytes with digits in those places; otherwise 0
// and the outputs are untouched.
int ParsePositionReply(const unsigned char* reply, int count, double* azimuth, double* elevation);

// Position drivers, one per controller of the rotor table.
int AzElGS232(int fd, int azimuth, int elevation, bool debug);
int AzElAutoTracker(int fd, int azimuth, int elevation, bool debug);
// Sends only when more than 180 ticks (3 s) have passed since its last
// command; a change inside that time is dropped, not queued. Angles are
// clamped here (elevation 0..180, azimuth 0..360) and sent with one decimal.
int AzElEasyComRotor(int fd, double azimuth, double elevation, bool debug);
int AzElKLM(int fd, int azimuth, int elevation, bool debug);
int AzElSARtek(int fd, int azimuth, int elevation, bool debug);
int AzElSatEL(int fd, int azimuth, int elevation, bool debug);
int AzElDCU1(int fd, int azimuth, int elevation, bool debug);
int AzElAlphaSpid(int fd, int azimuth, int elevation, bool debug);
int AzElPT(int fd, int azimuth, int elevation, bool debug);

// Forgets when EasyComm last sent, so its next command goes out at once.
void ResetEasyCommClock();

// Start and stop of computer control.
void StartATVFO(int fd, bool debug);
void StartSatEL(int fd, bool debug);
void StopSatEL(int fd, bool debug);

// Position read-back ("C2"): 1 with the angles (degrees) set, 0 otherwise.
int GetAzElGS232(int fd, double* azimuth, double* elevation, bool debug);
int GetAzElAlphaSpid(int fd, double* azimuth, double* elevation, bool debug);

}  // namespace veloran
