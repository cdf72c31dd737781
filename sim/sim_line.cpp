// The options and the run loop every simulator shares.

#include "sim/sim_line.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace veloran::sim {

namespace {

volatile std::sig_atomic_t gStop = 0;
void OnSignal(int) {
    gStop = 1;
}

bool Seconds(const char* name, const char* text, double* out) {
    char* end = nullptr;
    const double v = text != nullptr ? std::strtod(text, &end) : -1;
    if (text == nullptr || end == text || *end != '\0' || !(v >= 0)) {
        std::fprintf(stderr, "veloran-sim: %s wants a number of seconds\n", name);
        return false;
    }
    *out = v;
    return true;
}

}  // namespace

const char* const kLineOptionsHelp =
    "  --verbose          trace every byte in (<-) and out (->) on standard error\n"
    "  --silent-after N   stop answering N seconds after starting (a radio switched off)\n"
    "  --vanish-after N   hang up and exit N seconds after starting (a cable pulled)\n";

bool TakeLineOptions(int* argc, char** argv, LineOptions* out) {
    int kept = 0;
    for (int i = 0; i < *argc; ++i) {
        if (std::strcmp(argv[i], "--verbose") == 0) {
            out->verbose = true;
        } else if (std::strcmp(argv[i], "--silent-after") == 0) {
            if (!Seconds(argv[i], i + 1 < *argc ? argv[i + 1] : nullptr, &out->silentAfter))
                return false;
            ++i;
        } else if (std::strcmp(argv[i], "--vanish-after") == 0) {
            if (!Seconds(argv[i], i + 1 < *argc ? argv[i + 1] : nullptr, &out->vanishAfter))
                return false;
            ++i;
        } else {
            argv[kept++] = argv[i];
        }
    }
    *argc = kept;
    return true;
}

bool WantsHelp(int argc, char** argv) {
    for (int i = 0; i < argc; ++i)
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) return true;
    return false;
}

void TraceBytes(const char* direction, const uint8_t* bytes, size_t count) {
    if (count == 0) return;
    std::string line = direction;
    char hex[4];
    for (size_t i = 0; i < count; ++i) {
        std::snprintf(hex, sizeof hex, " %02X", bytes[i]);
        line += hex;
    }
    std::fprintf(stderr, "%s\n", line.c_str());
}

void RunLine(const LineOptions& options, const std::function<void()>& poll,
             const std::function<void()>& silence, const std::function<void()>& vanish) {
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    const auto start = std::chrono::steady_clock::now();
    bool silent = false;
    while (!gStop) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (poll) poll();
        const double elapsed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!silent && options.silentAfter >= 0 && elapsed >= options.silentAfter) {
            silent = true;
            std::fprintf(stderr, "veloran-sim: gone silent\n");
            silence();
        }
        if (options.vanishAfter >= 0 && elapsed >= options.vanishAfter) {
            std::fprintf(stderr, "veloran-sim: hung up\n");
            vanish();
            return;
        }
    }
}

}  // namespace veloran::sim
