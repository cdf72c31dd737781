// The rotor send path and the table of rotor controllers: one command per
// whole degree of movement, clamped to what a rotator can take, dispatched to
// the controller chosen in the preferences.
#pragma once

#include <cstdint>

namespace veloran {

// Rotor indices of the preferences pop-up (the `rotor` field of SiteRec).
enum RotorIndex : int {
    kRotorGS232 = 0,
    kRotorGS232Translated = 1,  // GS-232 with translate5500Azimuth
    kRotorAutoTracker = 2,
    kRotorAutoTracker2 = 3,
    kRotorEasyComm = 4,
    kRotorEasyComm2 = 5,
    kRotorKLM = 6,
    kRotorSARtek = 7,  // azimuth only
    kRotorSatEL = 8,
    kRotorDCU1 = 9,  // azimuth only
    kRotorAlphaSpid = 10,
    kRotorPT = 11,
};
constexpr int kRotorCount = 12;

// The name shown for rotor `index` in the preferences pop-up; null outside
// 0..11 and the Hamlib index (kHamlibRotor, rotor/hamlibrotor.h).
const char* rotorName(int index);

// False for the azimuth-only controllers (7 and 9), true for every other
// index, including those outside the table.
bool rotorIsAzEl(int index);

// Points the antenna: rounds both angles (degrees) to whole degrees, halves
// away from zero, and sends nothing when that pair equals the last one sent.
// Otherwise the pair is remembered (before clamping, and even when the port
// turns out to be closed), clamped to elevation 0..180 and azimuth 0..360 and
// given to the controller of `index`. Returns the driver's result: -1 for a
// closed port (fd -1), else the byte count of its last read; 0 when nothing
// was sent (unchanged pair, index outside 0..11, an angle that is not a
// number).
int SendAzEl(int index, int fd, double azimuth, double elevation, bool debug);

// Forgets the last pair sent, so that the next SendAzEl goes out whatever it
// holds. The program never needs it (a port opened later must not repeat an
// old position); tests and one-shot tools do.
void ResetRotorSendState();

// Reads the rotator's position, degrees, where the controller can report it
// (indices 0, 1 and 10). 1 with *azimuth and *elevation set; 0 with both left
// as they were for every other index, a closed port, silence, a short or a
// garbled reply.
int GetAzEl(int index, int fd, double* azimuth, double* elevation, bool debug);

// Puts the controller into computer control when it needs it (AutoTracker,
// SatEL); the others need nothing.
void startRotorDriver(int index, int fd, bool debug);
// Takes the SatEL controller out of computer control; the others need nothing.
void stopRotorDriver(int index, int fd, bool debug);

// Azimuth for the translated GS-232 (index 1): 180 for a negative azimuth,
// round(az / 1.5 - 180) above 270, round(az / 1.5 + 180) otherwise.
int16_t translate5500Azimuth(int azimuth);

}  // namespace veloran
