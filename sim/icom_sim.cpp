// The simulated Icom CI-V radio: frame parsing, the radio's state and its
// replies, and the stand-alone runner.

#include "sim/icom_sim.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "sim/sim_line.h"

namespace veloran::sim {

namespace {

constexpr uint8_t kPreamble = 0xFE;
constexpr uint8_t kController = 0xE0;
constexpr uint8_t kEnd = 0xFD;
constexpr uint8_t kOk = 0xFB;
constexpr uint8_t kNg = 0xFA;
constexpr uint8_t kBroadcast = 0x00;

// What each model understands beyond frequency and mode.
struct Traits {
    const char* name;
    bool twoBands;       // main/sub band select and exchange
    bool satellite;      // 0x1A 0x07 satellite mode, 0x1A 0x09 sub band
    bool transmitState;  // 0x1C 0x00
    bool tones;          // 0x1B, 0x16 0x42/0x43
    uint8_t address;
    uint32_t mainHertz, subHertz;
};

constexpr Traits kTraits[] = {
    {"ic910", true, true, true, true, 0x60, 145000000, 435000000},
    {"ic821", true, false, false, false, 0x4C, 145000000, 435000000},
    {"ic706", false, false, false, true, 0x48, 14200000, 0},
};

const Traits& traitsOf(IcomModel model) {
    return kTraits[static_cast<int>(model)];
}

uint8_t toBcd(unsigned value) {
    return static_cast<uint8_t>(((value / 10) % 10) << 4 | (value % 10));
}
unsigned fromBcd(uint8_t byte) {
    return (byte >> 4) * 10u + (byte & 0x0Fu);
}

uint32_t unpackLittle(const uint8_t* bytes, int count) {
    uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i) value = value * 100 + fromBcd(bytes[i]);
    return value;
}

void packLittle(uint32_t value, int count, std::vector<uint8_t>* out) {
    for (int i = 0; i < count; ++i) {
        out->push_back(toBcd(value % 100));
        value /= 100;
    }
}

void header(uint8_t address, uint8_t command, std::vector<uint8_t>* reply) {
    *reply = {kPreamble, kPreamble, kController, address, command};
}

}  // namespace

bool IcomModelFromName(const char* name, IcomModel* model) {
    if (!name || !model) return false;
    char plain[16] = "";
    size_t n = 0;
    for (const char* p = name; *p && n + 1 < sizeof plain; ++p) {
        if (*p == '-') continue;
        plain[n++] = static_cast<char>(*p >= 'A' && *p <= 'Z' ? *p - 'A' + 'a' : *p);
    }
    plain[n] = '\0';
    for (int i = 0; i < 3; ++i) {
        if (std::strcmp(plain, kTraits[i].name) == 0) {
            *model = static_cast<IcomModel>(i);
            return true;
        }
    }
    return false;
}

uint8_t IcomDefaultAddress(IcomModel model) {
    return traitsOf(model).address;
}

IcomSimulator::IcomSimulator(IcomModel model, uint8_t address)
    : model_(model), address_(address), state_{} {
    const Traits& t = traitsOf(model);
    state_.main = {{{t.mainHertz, kSimFM}, {t.mainHertz, kSimFM}}, 0};
    state_.sub = {{{t.subHertz, kSimFM}, {t.subHertz, kSimFM}}, 0};
    if (model == IcomModel::IC706) state_.main.vfo[0].mode = state_.main.vfo[1].mode = kSimUSB;
    state_.duplex = 0x10;
    state_.toneTenths = 885;
}

IcomSimBand& IcomSimulator::band() {
    return state_.subSelected ? state_.sub : state_.main;
}

void IcomSimulator::receive(uint8_t byte, std::vector<uint8_t>* out) {
    std::lock_guard<std::mutex> lock(mutex_);
    received_.push_back(byte);
    // The interface puts every byte straight back on the line.
    if (echo_) out->push_back(byte);
    if (partial_.empty() && byte != kPreamble) return;  // noise between frames
    partial_.push_back(byte);
    if (partial_.size() > 64) {
        partial_.clear();
        return;
    }
    if (byte != kEnd) return;
    std::vector<uint8_t> frame;
    frame.swap(partial_);
    // A frame is FE FE to-address from-address command ... FD.
    if (frame.size() < 6 || frame[1] != kPreamble) return;
    if (frame[2] != address_ && frame[2] != kBroadcast) return;
    frames_.push_back(frame);
    if (silent_) return;
    std::vector<uint8_t> reply;
    handleFrame(frame, &reply);
    if (garbage_) {
        for (size_t i = 0; i < reply.size(); ++i) reply[i] = static_cast<uint8_t>(0x5A ^ (i * 37));
    }
    if (short_) reply.resize(reply.size() / 2);
    out->insert(out->end(), reply.begin(), reply.end());
}

void IcomSimulator::handleFrame(const std::vector<uint8_t>& frame, std::vector<uint8_t>* reply) {
    const Traits& t = traitsOf(model_);
    const uint8_t command = frame[4];
    const uint8_t* data = frame.data() + 5;
    const int n = static_cast<int>(frame.size()) - 6;  // bytes between command and FD
    bool ok = true;
    header(address_, kOk, reply);
    switch (command) {
        case 0x03: {  // read the operating frequency
            header(address_, 0x03, reply);
            packLittle(band().vfo[band().current].hertz, 5, reply);
            reply->push_back(kEnd);
            return;
        }
        case 0x04: {  // read the operating mode (and its filter)
            header(address_, 0x04, reply);
            reply->push_back(band().vfo[band().current].mode);
            reply->push_back(0x01);
            reply->push_back(kEnd);
            return;
        }
        case 0x05:
            if (n != 5) {
                ok = false;
                break;
            }
            band().vfo[band().current].hertz = unpackLittle(data, 5);
            break;
        case 0x06:
            if (n < 1 || n > 2) {
                ok = false;
                break;
            }
            band().vfo[band().current].mode = data[0];
            break;
        case 0x07:
            if (n == 0) break;  // VFO mode
            if (n != 1) {
                ok = false;
                break;
            }
            if (data[0] == 0x00 || data[0] == 0x01)
                band().current = data[0];
            else if (t.twoBands && data[0] == 0xD0)
                state_.subSelected = false;
            else if (t.twoBands && data[0] == 0xD1)
                state_.subSelected = true;
            else if (t.twoBands && data[0] == 0xB0) {
                std::swap(state_.main, state_.sub);
                ++state_.bandExchanges;
            } else
                ok = false;
            break;
        case 0x0D:
            if (n != 3) {
                ok = false;
                break;
            }
            state_.offsetHertz = unpackLittle(data, 3) * 100;
            break;
        case 0x0F:
            if (n != 1) {
                ok = false;
                break;
            }
            if (data[0] == 0x00 || data[0] == 0x01)
                state_.split = data[0] == 0x01;
            else if (data[0] >= 0x10 && data[0] <= 0x12)
                state_.duplex = data[0];
            else
                ok = false;
            break;
        case 0x16:
            if (!t.tones || n != 2 || data[1] > 1) {
                ok = false;
                break;
            }
            if (data[0] == 0x42)
                state_.repeaterTone = data[1] == 1;
            else if (data[0] == 0x43)
                state_.toneSquelch = data[1] == 1;
            else
                ok = false;
            break;
        case 0x1A:
            if (t.satellite && n == 1 && (data[0] == 0x07 || data[0] == 0x09)) {
                // Reading a switch: the radio answers with its state.
                header(address_, 0x1A, reply);
                reply->push_back(data[0]);
                reply->push_back((data[0] == 0x07 ? state_.satelliteMode : state_.subBandOn) ? 1
                                                                                             : 0);
                reply->push_back(kEnd);
                return;
            }
            if (!t.satellite || n != 2 || data[1] > 1) {
                ok = false;
                break;
            }
            if (data[0] == 0x07)
                state_.satelliteMode = data[1] == 1;
            else if (data[0] == 0x09)
                state_.subBandOn = data[1] == 1;
            else
                ok = false;
            break;
        case 0x1B:
            if (!t.tones || n != 3 || data[0] != 0x00) {
                ok = false;
                break;
            }
            state_.toneTenths = static_cast<int>(fromBcd(data[1]) * 100 + fromBcd(data[2]));
            break;
        case 0x1C:
            if (!t.transmitState || n != 1 || data[0] != 0x00) {
                ok = false;
                break;
            }
            header(address_, 0x1C, reply);
            reply->push_back(0x00);
            reply->push_back(state_.transmitting ? 0x01 : 0x00);
            reply->push_back(kEnd);
            return;
        default:
            ok = false;
            break;
    }
    if (!ok) (*reply)[4] = kNg;
    reply->push_back(kEnd);
}

IcomSimState IcomSimulator::state() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

void IcomSimulator::setState(const IcomSimState& state) {
    std::lock_guard<std::mutex> lock(mutex_);
    state_ = state;
}

void IcomSimulator::setTransmitting(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    state_.transmitting = on;
}

void IcomSimulator::setSilent(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    silent_ = on;
}

void IcomSimulator::setEcho(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    echo_ = on;
}

void IcomSimulator::setShortReplies(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    short_ = on;
}

void IcomSimulator::setGarbage(bool on) {
    std::lock_guard<std::mutex> lock(mutex_);
    garbage_ = on;
}

std::vector<uint8_t> IcomSimulator::received() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return received_;
}

std::vector<std::vector<uint8_t>> IcomSimulator::frames() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return frames_;
}

void IcomSimulator::clearRecords() {
    std::lock_guard<std::mutex> lock(mutex_);
    received_.clear();
    frames_.clear();
}

int RunIcomSimulator(const char* model, int argc, char** argv) {
    IcomModel which;
    if (!IcomModelFromName(model, &which)) {
        std::fprintf(stderr, "unknown Icom model %s (ic910, ic821, ic706)\n", model ? model : "");
        return 2;
    }
    LineOptions line;
    if (!TakeLineOptions(&argc, argv, &line)) return 2;
    uint8_t address = IcomDefaultAddress(which);
    bool transmitting = false, silent = false, garbage = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--address") == 0 && i + 1 < argc) {
            address = static_cast<uint8_t>(std::strtoul(argv[++i], nullptr, 0));
        } else if (std::strcmp(argv[i], "--transmitting") == 0) {
            transmitting = true;
        } else if (std::strcmp(argv[i], "--silent") == 0) {
            silent = true;
        } else if (std::strcmp(argv[i], "--garbage") == 0) {
            garbage = true;
        } else {
            std::fprintf(stderr, "veloran-sim: unknown option %s (try --help)\n", argv[i]);
            return 2;
        }
    }
    IcomSimulator radio(which, address);
    radio.setTransmitting(transmitting);
    radio.setSilent(silent);
    radio.setGarbage(garbage);
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
