// Bytes as hex text and back, for comparing what went over a line.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace veloran::testing {

// "FE FE 60 E0 03 FD"; with `block` set, " | " after every `block` bytes, so
// that a failing comparison of Yaesu CAT traffic shows its 5-byte blocks.
inline std::string Hex(const uint8_t* bytes, size_t count, size_t block = 0) {
    std::string out;
    char pair[4];
    for (size_t i = 0; i < count; ++i) {
        if (i > 0) out += (block && i % block == 0) ? " | " : " ";
        std::snprintf(pair, sizeof pair, "%02X", bytes[i]);
        out += pair;
    }
    return out;
}
inline std::string Hex(const std::vector<uint8_t>& bytes, size_t block = 0) {
    return Hex(bytes.data(), bytes.size(), block);
}

inline std::vector<std::string> HexFrames(const std::vector<std::vector<uint8_t>>& frames) {
    std::vector<std::string> text;
    for (const auto& f : frames) text.push_back(Hex(f));
    return text;
}

// "43 58 00 00 01|14 59" -> bytes; blanks and bars only separate.
inline std::vector<uint8_t> Bytes(const std::string& hex) {
    std::vector<uint8_t> out;
    std::string digits;
    for (char c : hex) {
        if (c == ' ' || c == '|') continue;
        digits += c;
        if (digits.size() == 2) {
            out.push_back(static_cast<uint8_t>(std::stoul(digits, nullptr, 16)));
            digits.clear();
        }
    }
    return out;
}

}  // namespace veloran::testing
