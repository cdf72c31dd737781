// Packed-BCD helpers shared by the CAT and CI-V drivers.
#pragma once

#include <cstdint>

namespace veloran {

// 0..99 as one packed-BCD byte (37 -> 0x37); other values are taken modulo 100.
uint8_t BCD(int value);
// One packed-BCD byte back to 0..99; nibbles above 9 count as they stand.
int UnpackBCD(uint8_t byte);
// A CTCSS tone in tenths of hertz as two BCD bytes: hundreds and tens of
// hertz, then units and tenths (885 -> 08 85, 2541 -> 25 41).
void IcomToneBCD2(int tenths, unsigned char* out);

}  // namespace veloran
