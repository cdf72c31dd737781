// Icom CI-V drivers: the IC-910, the IC-820/821/970 family and the IC-706
// family, and the CI-V framing, packing and bus exchange they share. Every
// function takes the radio's descriptor first and the debug switch last; a
// descriptor of -1 sends nothing and reports failure (or 0).
#pragma once

#include <cstdint>

#include "radio/bcd.h"  // BCD, UnpackBCD and IcomToneBCD2 belong to the CI-V set too

namespace veloran {

// --- CI-V protocol bytes ------------------------------------------------------

constexpr uint8_t kCivPreamble = 0xFE;           // sent twice at the start of every frame
constexpr uint8_t kCivControllerAddress = 0xE0;  // our own address on the bus
constexpr uint8_t kCivEndOfMessage = 0xFD;
constexpr uint8_t kCivAck = 0xFB;  // the radio did it
constexpr uint8_t kCivNak = 0xFA;  // the radio refused it

// Commands.
constexpr uint8_t kCivReadFrequency = 0x03;  // reply carries the 5 frequency bytes
constexpr uint8_t kCivSetFrequency = 0x05;
constexpr uint8_t kCivSetMode = 0x06;
constexpr uint8_t kCivSelect = 0x07;        // VFO or band, by sub-command
constexpr uint8_t kCivDuplexOffset = 0x0D;  // 3 bytes, 100 Hz resolution
constexpr uint8_t kCivSplitDuplex = 0x0F;
constexpr uint8_t kCivFunction = 0x16;  // on/off switches, data 01 / 00
constexpr uint8_t kCivSettings = 0x1A;  // IC-910 settings, data 01 / 00
constexpr uint8_t kCivToneFrequency = 0x1B;
constexpr uint8_t kCivTransmitState = 0x1C;

// Sub-commands of kCivSelect.
constexpr uint8_t kCivVfoA = 0x00;
constexpr uint8_t kCivVfoB = 0x01;
constexpr uint8_t kCivExchangeBands = 0xB0;  // swap main and sub band
constexpr uint8_t kCivMainBand = 0xD0;
constexpr uint8_t kCivSubBand = 0xD1;

// Sub-commands of kCivSplitDuplex.
constexpr uint8_t kCivSplitOff = 0x00;
constexpr uint8_t kCivSplitOn = 0x01;
constexpr uint8_t kCivSimplex = 0x10;
constexpr uint8_t kCivDuplexMinus = 0x11;
constexpr uint8_t kCivDuplexPlus = 0x12;

// Sub-commands of kCivFunction, kCivSettings, kCivToneFrequency and
// kCivTransmitState.
constexpr uint8_t kCivRepeaterTone = 0x42;
constexpr uint8_t kCivToneSquelch = 0x43;
constexpr uint8_t kCivSatelliteMode = 0x07;
constexpr uint8_t kCivSubBandOnOff = 0x09;
constexpr uint8_t kCivRepeaterToneFrequency = 0x00;
constexpr uint8_t kCivTransmitting = 0x00;
constexpr uint8_t kCivOn = 0x01;
constexpr uint8_t kCivOff = 0x00;

// Operating modes for kCivSetMode.
constexpr uint8_t kCivModeLSB = 0x00;
constexpr uint8_t kCivModeUSB = 0x01;
constexpr uint8_t kCivModeAM = 0x02;
constexpr uint8_t kCivModeCW = 0x03;
constexpr uint8_t kCivModeFM = 0x05;
constexpr uint8_t kCivModeWFM = 0x06;

// Reply lengths: an acknowledgement, a frequency and the transmit state.
constexpr int kCivAckLength = 6;
constexpr int kCivFrequencyReplyLength = 11;
constexpr int kCivTransmitStateReplyLength = 8;
constexpr int kCivReplyTicks = 30;
// The longest frame the drivers build (a frequency command) and then some.
constexpr int kCivMaxFrame = 16;

// --- Frame builders -------------------------------------------------------------
// Each fills `buffer` and returns the frame length. The buffer must hold the
// length given; `data` may be null only when n is 0.

int IcomCommandNoSubNoData(uint8_t address, unsigned char* buffer, uint8_t command);  // 6
int IcomCommandSubNoData(uint8_t address, unsigned char* buffer, uint8_t command,
                         uint8_t sub);  // 7
int IcomCommandNoSubData(uint8_t address, unsigned char* buffer, uint8_t command,
                         const unsigned char* data,
                         int n);  // n + 6
int IcomCommandSubAndData(uint8_t address, unsigned char* buffer, uint8_t command, uint8_t sub,
                          const unsigned char* data, int n);  // n + 7

// --- Packing ---------------------------------------------------------------------

// Hertz as 5 packed-BCD bytes, least significant pair first
// (145900000 -> 00 00 90 45 01). Digits above 9.99 GHz are dropped.
void IcomBCD(uint32_t hertz, unsigned char* out5);
// The inverse of IcomBCD.
uint32_t UnpackIcom(const unsigned char* in5);
// An offset in units of 100 Hz as 3 packed-BCD bytes, least significant pair
// first (600 kHz = 6000 -> 00 60 00). Offsets of 100 MHz and more lose their
// top digits: the radio's field has only six.
void IcomBCD3(uint32_t hundredsOfHertz, unsigned char* out3);

// --- Exchanges on the bus ----------------------------------------------------------

// Sends a frame byte by byte, reading back the bus echo of each byte, with the
// bus's own pacing (2 ms per byte, 8 ms after the frame). Returns the bytes
// the line took.
int SendIcomRadioCommand(int fd, const unsigned char* bytes, int count, bool debug);
// Reads a reply of `expectedLength` bytes within `timeoutTicks` into `buffer`
// (expectedLength + 1 bytes, zero-terminated). 1 when exactly that many came
// and they begin FE FE E0 address command.
int ReadAndCheckIcomFlag(int fd, uint8_t address, unsigned char* buffer, uint8_t command,
                         int expectedLength, int timeoutTicks, bool debug);
// Command 0x07 with `selector` (VFO A/B, main/sub band, exchange); 1 when the
// radio acknowledges within 30 ticks.
int SetIcomBandVFO(int fd, uint8_t address, uint8_t selector, bool debug);
// Operating mode; the acknowledgement is read and not looked at.
void SetIcomMode(int fd, uint8_t address, uint8_t mode, bool debug);
// Frequency of the current VFO, hertz; the acknowledgement is read and not
// looked at.
void SetIcomFrequency(int fd, uint8_t address, uint32_t hertz, bool debug);
// The radio's operating frequency in hertz, or 0 when it does not answer
// properly.
uint32_t GetIcomRadioDownLinkCycles(int fd, uint8_t address, bool debug);
// FE FE addr E0 command sub FD, or with `hasData` FE FE addr E0 command and
// the 5 bytes of `data` and FD (no sub-command then); whatever comes back is
// read without waiting and dropped.
void IcomCommand(int fd, uint8_t address, uint8_t command, uint8_t sub, const unsigned char* data,
                 bool hasData, bool debug);
// Programs the CTCSS tone of table index `toneIndex` (1 = 67.0 Hz).
void SendTone(int fd, uint8_t address, int toneIndex, bool debug);

// --- IC-910 switches (each reads the acknowledgement within 30 ticks) -----------

void Set910SatMode(int fd, uint8_t address, bool on, bool debug);
void Set910SubBand(int fd, uint8_t address, bool on, bool debug);
// Repeater tone on or off; switching it on programs tone index 1 first.
void Set910Tone(int fd, uint8_t address, bool on, bool debug);
// Tone squelch with tone index `toneIndex`, off for 0.
void Set910CTone(int fd, uint8_t address, int toneIndex, bool debug);

// --- Set-frequencies drivers (MHz; 1 on success, 0 when the port is closed or
// the radio failed) ---

// IC-910: the main band receives, the sub band transmits. Never retunes the
// radio while it transmits in a single-channel mode.
int Set910VFO(int fd, int address, double upMHz, double downMHz, int commMode, int gTone,
              int gCTone, bool force, bool debug);
// IC-820, IC-821, IC-970: main band VFO A transmits, the sub band receives.
int Set821HVFO(int fd, int address, double upMHz, double downMHz, int commMode, int gTone,
               int gCTone, bool force, bool debug);
// IC-706 family: one receiver, only the downlink is tuned.
int Set706VFO(int fd, int address, double upMHz, double downMHz, int commMode, int gTone,
              int gCTone, bool force, bool debug);

// --- Dial read-back: 1 and the change in hertz when the dial moved ------------

int DownLinkChanged910(int fd, int address, int32_t* changeHz, bool debug);
int DownLinkChanged821(int fd, int address, int32_t* changeHz, bool debug);

// Forgets what every Icom driver last sent and the IC-821's band exchange, as
// at program start (a new radio session, or a test).
void ResetIcomDriverState();

}  // namespace veloran
