// The simulated TS-2000: command parsing, the radio's state, its replies and
// the stand-alone runner.

#include "sim/ts2000_sim.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "sim/sim_line.h"

namespace veloran::sim {

namespace {

bool allDigits(const std::string& text) {
    if (text.empty()) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    return true;
}

std::string format(const char* pattern, long long value) {
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

}  // namespace

Ts2000Simulator::Ts2000Simulator() : state_{} {
    state_.vfoA = 145000000;
    state_.vfoB = 435000000;
    state_.modeA = state_.modeB = '4';
    state_.satellite = "0100000";
    state_.toneNumber = 8;
    state_.toneSquelchNumber = 8;
    state_.controls = 0;
}

// MD acts on the side satellite mode is controlling, else on the receive VFO.
char* Ts2000Simulator::modeTarget() {
    if (state_.satellite.size() >= 4 && state_.satellite[0] == '1') {
        return state_.satellite[3] == '1' ? &state_.modeB : &state_.modeA;
    }
    return state_.receiveVfo == 1 ? &state_.modeB : &state_.modeA;
}

void Ts2000Simulator::receive(uint8_t byte, std::vector<uint8_t>* out) {
    std::lock_guard<std::mutex> lock(mutex_);
    received_.push_back(byte);
    std::string reply;
    if (byte == '\r' || byte == '\n') {
        if (state_.packetMode && partial_.empty()) reply = "\r\ncmd:";
    } else if (byte != ';') {
        partial_.push_back(static_cast<char>(byte));
        if (partial_.size() > 64) partial_.clear();
        return;
    } else {
        std::string command;
        command.swap(partial_);
        commands_.push_back(command);
        reply = handle(command);
    }
    if (silent_) return;
    if (garbage_) {
        for (size_t i = 0; i < reply.size(); ++i) reply[i] = static_cast<char>(0x80 | (i * 29));
    }
    if (short_) reply.resize(reply.size() / 2);
    out->insert(out->end(), reply.begin(), reply.end());
}

std::string Ts2000Simulator::handle(const std::string& command) {
    if (command == "TC 1") {
        state_.packetMode = false;
        return "";
    }
    if (state_.packetMode || command.size() < 2) return "";
    const std::string name = command.substr(0, 2);
    const std::string arg = command.substr(2);
    const bool query = arg.empty();
    const bool number = allDigits(arg);
    auto flag = [&](bool* field, const char* reply) -> std::string {
        if (query) return format(reply, *field ? 1 : 0);
        if (arg == "0" || arg == "1") {
            *field = arg == "1";
            return "";
        }
        return "?;";
    };
    if (name == "FA" || name == "FB") {
        uint64_t* vfo = name == "FA" ? &state_.vfoA : &state_.vfoB;
        if (query)
            return format(name == "FA" ? "FA%011lld;" : "FB%011lld;", static_cast<long long>(*vfo));
        if (arg.size() != 11 || !number) return "?;";
        *vfo = std::strtoull(arg.c_str(), nullptr, 10);
        return "";
    }
    if (name == "FR" || name == "FT") {
        int* vfo = name == "FR" ? &state_.receiveVfo : &state_.transmitVfo;
        if (query) return format(name == "FR" ? "FR%lld;" : "FT%lld;", *vfo);
        if (arg.size() != 1 || arg[0] < '0' || arg[0] > '2') return "?;";
        *vfo = arg[0] - '0';
        return "";
    }
    if (name == "SA") {
        if (query) return "SA" + state_.satellite + ";";
        if (arg.size() != 7 || !number) return "?;";
        state_.satellite = arg;
        return "";
    }
    if (name == "MD") {
        if (query) return std::string("MD") + *modeTarget() + ";";
        if (arg.size() != 1 || arg[0] < '1' || arg[0] > '9') return "?;";
        *modeTarget() = arg[0];
        return "";
    }
    if (name == "TO") return flag(&state_.tone, "TO%lld;");
    if (name == "CT") return flag(&state_.toneSquelch, "CT%lld;");
    if (name == "CM") return flag(&state_.packetClusterTune, "CM%lld;");
    if (name == "AM") return flag(&state_.autoMode, "AM%lld;");
    if (name == "TN" || name == "CN") {
        int* tone = name == "TN" ? &state_.toneNumber : &state_.toneSquelchNumber;
        if (query) return format(name == "TN" ? "TN%02lld;" : "CN%02lld;", *tone);
        if (arg.size() != 2 || !number) return "?;";
        *tone = std::atoi(arg.c_str());
        return "";
    }
    if (name == "SB" || name == "RX" || name == "TX") {
        if (arg.size() != 1 || !number) return "?;";
        if (name == "SB") state_.subReceiver = arg[0] - '0';
        return "";
    }
    if (name == "DC") {
        if (arg.size() != 2 || !number) return "?;";
        state_.controls = std::atoi(arg.c_str());
        return "";
    }
    if (command == "BY") return state_.busy ? "BY10;" : "BY00;";
    if (command == "SM0") return format("SM0%04lld;", state_.sMeter);
    if (command == "IF") {
        // Frequency, step, RIT offset, RIT, XIT, bank, channel, TX/RX, mode,
        // FR/FT, scan, split, tone, tone number, shift: 38 bytes in all.
        const uint64_t hertz = state_.receiveVfo == 1 ? state_.vfoB : state_.vfoA;
        const char mode = state_.receiveVfo == 1 ? state_.modeB : state_.modeA;
        char text[64];
        std::snprintf(text, sizeof text, "IF%011llu0000+00000000000%c%d0%d%d%02d0;",
                      static_cast<unsigned long long>(hertz), mode, state_.receiveVfo,
                      state_.receiveVfo != state_.transmitVfo ? 1 : 0, state_.tone ? 1 : 0,
                      state_.toneNumber);
        return text;
    }
    return "?;";
}

Ts2000SimState Ts2000Simulator::state() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

void Ts2000Simulator::setState(const Ts2000SimState& state) {
    std::lock_guard<std::mutex> lock(mutex_);
    state_ = state;
}

void Ts2000Simulator::setSilent(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    silent_ = on;
}

void Ts2000Simulator::setShortReplies(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    short_ = on;
}

void Ts2000Simulator::setGarbage(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    garbage_ = on;
}

std::vector<uint8_t> Ts2000Simulator::received() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return received_;
}

std::vector<std::string> Ts2000Simulator::commands() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return commands_;
}

void Ts2000Simulator::clearRecords() {
    std::lock_guard<std::mutex> lock(mutex_);
    received_.clear();
    commands_.clear();
}

int RunTs2000Simulator(int argc, char** argv) {
    LineOptions line;
    if (!TakeLineOptions(&argc, argv, &line)) return 2;
    Ts2000Simulator radio;
    Ts2000SimState state = radio.state();
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--silent") == 0) {
            radio.setSilent(true);
        } else if (std::strcmp(argv[i], "--garbage") == 0) {
            radio.setGarbage(true);
        } else if (std::strcmp(argv[i], "--packet") == 0) {
            state.packetMode = true;
        } else {
            std::fprintf(stderr, "veloran-sim: unknown option %s (try --help)\n", argv[i]);
            return 2;
        }
    }
    radio.setState(state);
    PtyServer pty;
    if (!pty.open()) {
        std::perror("openpty");
        return 1;
    }
    pty.setTrace(line.verbose);
    std::printf("%s\n", pty.path().c_str());
    std::fflush(stdout);
    pty.start(&radio);
    RunLine(
        line, nullptr, [&] { pty.setMute(true); }, [&] { pty.hangUp(); });
    return 0;
}

}  // namespace veloran::sim
