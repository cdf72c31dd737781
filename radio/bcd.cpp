// Packed-BCD helpers shared by the CAT and CI-V drivers.

#include "radio/bcd.h"

namespace veloran {

uint8_t BCD(int value) {
    if (value < 0) value = -value;
    value %= 100;
    return static_cast<uint8_t>(((value / 10) << 4) | (value % 10));
}

int UnpackBCD(uint8_t byte) {
    return (byte >> 4) * 10 + (byte & 0x0F);
}

void IcomToneBCD2(int tenths, unsigned char* out) {
    if (!out) return;
    if (tenths < 0) tenths = 0;
    out[0] = BCD(tenths / 100);
    out[1] = BCD(tenths % 100);
}

}  // namespace veloran
