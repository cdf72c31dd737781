// Helpers of the radio wire tests: hex text to bytes and back, and waiting
// for the simulated radio's thread to catch up with what a driver wrote.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace veloran::testing {

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

// Bytes as "43 58 00 00 01", a bar after every 5-byte block, so that a
// failing comparison shows the blocks.
inline std::string Hex(const std::vector<uint8_t>& bytes) {
    std::string out;
    char pair[4];
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i > 0) out += (i % 5 == 0) ? " | " : " ";
        std::snprintf(pair, sizeof pair, "%02X", bytes[i]);
        out += pair;
    }
    return out;
}

// Polls `ready` for up to two seconds (the simulator answers within
// milliseconds; the bound only keeps a broken test from hanging).
inline bool Eventually(const std::function<bool()>& ready) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!ready()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace veloran::testing
