// The simulated gateway I/O board.

#include "sim/gateway_sim.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "sim/sim_line.h"

namespace veloran::sim {

namespace {

constexpr uint8_t kCarriageReturn = 0x0D;

// The line number after a command word, -1 when it is not 0..7.
int LineNumber(const std::string& command, size_t wordLength) {
    if (command.size() != wordLength + 1) return -1;
    const char c = command[wordLength];
    return c >= '0' && c <= '7' ? c - '0' : -1;
}

bool StartsWith(const std::string& text, const char* word) {
    return text.rfind(word, 0) == 0;
}

}  // namespace

void GatewayBoard::receive(uint8_t byte, std::vector<uint8_t>* out) {
    if (byte != kCarriageReturn) {
        std::lock_guard<std::mutex> lock(mutex_);
        line_.push_back(static_cast<char>(byte));
        return;
    }
    std::string command;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        command.swap(line_);
        commands_.push_back(command);
    }
    execute(command, out);
}

void GatewayBoard::execute(const std::string& command, std::vector<uint8_t>* out) {
    std::lock_guard<std::mutex> lock(mutex_);
    // The board acknowledges nothing but reads: a configure, set or reset
    // leaves the line quiet.
    if (StartsWith(command, "RESPA")) {
        const int line = LineNumber(command, 5);
        if (line >= 0) outputs_ &= static_cast<uint8_t>(~(1u << line));
        if (line == kPttLine && carrier_) keyedOverCarrier_ = true;
    } else if (StartsWith(command, "SETPA")) {
        const int line = LineNumber(command, 5);
        if (line >= 0) outputs_ |= static_cast<uint8_t>(1u << line);
    } else if (StartsWith(command, "RPA")) {
        const int line = LineNumber(command, 3);
        if (line < 0 || silent_) return;
        char level = '0';
        if (line == kCarrierLine) {
            ++carrierReads_;
            if (dropAfter_ > 0 && --dropAfter_ == 0) carrier_ = false;
            level = carrier_ ? '1' : '0';
        } else {
            level = (outputs_ >> line) & 1 ? '1' : '0';
        }
        out->push_back(static_cast<uint8_t>(level));
        out->push_back(kCarriageReturn);
    }
}

void GatewayBoard::setCarrier(bool present) {
    std::lock_guard<std::mutex> lock(mutex_);
    carrier_ = present;
}

void GatewayBoard::dropCarrierAfterReads(int reads) {
    std::lock_guard<std::mutex> lock(mutex_);
    dropAfter_ = reads;
}

bool GatewayBoard::keyed() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return (outputs_ & (1u << kPttLine)) == 0;
}

std::vector<std::string> GatewayBoard::commands() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return commands_;
}

int GatewayBoard::carrierReads() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return carrierReads_;
}

bool GatewayBoard::keyedOverCarrier() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return keyedOverCarrier_;
}

int RunGatewaySimulator(int argc, char** argv) {
    LineOptions line;
    if (!TakeLineOptions(&argc, argv, &line)) return 2;
    GatewayBoard board;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--carrier") == 0) {
            board.setCarrier(true);
        } else {
            std::fprintf(stderr, "veloran-sim: unknown option %s (try --help)\n", argv[i]);
            return 2;
        }
    }
    PtyServer server;
    if (!server.open()) {
        std::fprintf(stderr, "veloran-sim: cannot create a pseudo-terminal\n");
        return 1;
    }
    server.setTrace(line.verbose);
    server.start(&board);
    std::printf("%s\n", server.path().c_str());
    std::fflush(stdout);
    std::fprintf(stderr, "veloran-sim: simulated gateway on %s%s\n", server.path().c_str(),
                 board.keyed() ? " (keyed)" : "");
    bool wasKeyed = false;
    RunLine(
        line,
        [&] {
            const bool keyed = board.keyed();
            if (keyed != wasKeyed)
                std::fprintf(stderr, "veloran-sim: transmitter %s\n", keyed ? "keyed" : "unkeyed");
            wasKeyed = keyed;
        },
        [&] { server.setMute(true); }, [&] { server.hangUp(); });
    server.stop();
    return 0;
}

}  // namespace veloran::sim
