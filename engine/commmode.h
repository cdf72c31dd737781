// Transponder and operating modes: the values of a mode's commMode, numbered
// as the modes file numbers them and named as it spells them. The
// enumerators are written qualified (CommMode::JA_SSB) and compare directly
// with the int16_t field and the drivers' int arguments.
#pragma once

namespace veloran {

enum CommMode : int {
    RECEIVE_ONLY = -1,  // the reader's default for a mode without a "CMode:" piece
    UNKNOWN = 0,        // nothing is sent to the radio
    REPEATER = 1,
    J_FM = 2,
    JA_SSB = 3,  // inverting
    B_SSB = 4,   // inverting
    A_SSB = 5,
    SIMP_FM = 6,
    JA_CW = 7,  // inverting
    B_CW = 8,   // inverting
    A_CW = 9,
    B_FM = 10,
    JD_MIX = 11,
    WIDE_FM = 12,
    T_SSB = 13,
    T_CW = 14,
    SIMP_AM = 15,
    SIMP_SSB = 16,
    J_EXP = 17,
};
constexpr int kLastCommMode = CommMode::J_EXP;

}  // namespace veloran
