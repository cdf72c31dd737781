// The simulated CAT radio: a pseudo-terminal, a thread that answers it, and
// one decoder per model.

#include "sim/radio_sim.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>

namespace veloran::sim {

namespace {

using Block = std::array<uint8_t, 5>;

// Four packed-BCD bytes, most significant first, in 10 Hz units.
uint32_t bcdHertz(uint8_t a, uint8_t b, uint8_t c, uint8_t d) {
    uint32_t tens = 0;
    for (uint8_t byte : {a, b, c, d}) tens = tens * 100 + (byte >> 4) * 10u + (byte & 0x0Fu);
    return tens * 10;
}

void putBcdHertz(uint32_t hertz, std::vector<uint8_t>* out) {
    uint32_t tens = hertz / 10;
    uint8_t bytes[4];
    for (int i = 3; i >= 0; --i) {
        const uint32_t pair = tens % 100;
        tens /= 100;
        bytes[i] = static_cast<uint8_t>(((pair / 10) << 4) | (pair % 10));
    }
    out->insert(out->end(), bytes, bytes + 4);
}

int unBcd(uint8_t byte) {
    return (byte >> 4) * 10 + (byte & 0x0F);
}

// The FT-817 answers every command that is not a read with one byte.
constexpr uint8_t kAck = 0x00;

}  // namespace

bool ParseRadioModel(const std::string& name, RadioModel* model) {
    std::string key;
    for (char c : name) {
        if (c != '-' && c != '_')
            key += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    RadioModel found;
    if (key == "ft847")
        found = RadioModel::FT847;
    else if (key == "ft817")
        found = RadioModel::FT817;
    else if (key == "ft100d" || key == "ft100")
        found = RadioModel::FT100D;
    else if (key == "ft736r" || key == "ft736")
        found = RadioModel::FT736R;
    else if (key == "vr5000")
        found = RadioModel::VR5000;
    else
        return false;
    if (model) *model = found;
    return true;
}

const char* RadioModelName(RadioModel model) {
    switch (model) {
        case RadioModel::FT847:
            return "FT-847";
        case RadioModel::FT817:
            return "FT-817";
        case RadioModel::FT100D:
            return "FT-100D";
        case RadioModel::FT736R:
            return "FT-736R";
        case RadioModel::VR5000:
            return "VR-5000";
    }
    return "?";
}

SimulatedRadio::SimulatedRadio(RadioModel model) : model_(model) {}

SimulatedRadio::~SimulatedRadio() {
    close();
}

bool SimulatedRadio::open() {
    if (master_ != -1) return true;
    char name[256] = {0};
    if (::openpty(&master_, &slave_, name, nullptr, nullptr) == -1) return false;
    // The radio's side is a plain 8-bit line; the program sets its own end.
    struct termios raw;
    if (::tcgetattr(slave_, &raw) == 0) {
        ::cfmakeraw(&raw);
        ::tcsetattr(slave_, TCSANOW, &raw);
    }
    path_ = name;
    running_ = true;
    thread_ = std::thread([this] { run(); });
    return true;
}

void SimulatedRadio::unplug() {
    running_ = false;
    if (thread_.joinable()) thread_.join();
    if (master_ != -1) ::close(master_);
    if (slave_ != -1) ::close(slave_);
    master_ = slave_ = -1;
}

void SimulatedRadio::close() {
    unplug();
}

void SimulatedRadio::setRxStatus(uint8_t status) {
    std::lock_guard<std::mutex> lock(mutex_);
    state_.rxStatus = status;
}

void SimulatedRadio::turnDial(int32_t hertz) {
    std::lock_guard<std::mutex> lock(mutex_);
    SimVfo* vfo = receiveVfo();
    vfo->hertz = static_cast<uint32_t>(static_cast<int64_t>(vfo->hertz) + hertz);
}

RadioState SimulatedRadio::state() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

std::vector<uint8_t> SimulatedRadio::received() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return received_;
}

void SimulatedRadio::clearReceived() {
    std::lock_guard<std::mutex> lock(mutex_);
    received_.clear();
}

bool SimulatedRadio::waitForBytes(size_t count, int milliseconds) const {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (received_.size() >= count) return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void SimulatedRadio::waitIdle() const {
    if (!running_) return;
    idle_.wait(idle_.ask(), std::chrono::seconds(30));
}

void SimulatedRadio::run() {
    uint8_t buffer[256];
    while (running_) {
        // A poll that finds nothing has found the line empty, bytes still
        // in transit included: it answers the waitIdle calls made before it.
        const uint64_t asked = idle_.asked();
        struct pollfd p = {master_, POLLIN, 0};
        const int ready = ::poll(&p, 1, idle_.owed() ? 0 : 5);
        if (ready <= 0 || !(p.revents & POLLIN)) {
            if (ready == 0) idle_.seen(asked);
            if (ready > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        const ssize_t n = ::read(master_, buffer, sizeof buffer);
        if (n <= 0) continue;
        std::vector<uint8_t> reply;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            received_.insert(received_.end(), buffer, buffer + n);
            pending_.insert(pending_.end(), buffer, buffer + n);
            while (pending_.size() >= 5) {
                Block block;
                std::copy_n(pending_.begin(), 5, block.begin());
                pending_.erase(pending_.begin(), pending_.begin() + 5);
                ++state_.blocks;
                handle(block, &reply);
            }
        }
        if (silent_ || reply.empty()) continue;
        size_t sent = 0;
        while (sent < reply.size()) {
            const ssize_t w = ::write(master_, reply.data() + sent, reply.size() - sent);
            if (w <= 0) break;
            sent += static_cast<size_t>(w);
        }
    }
}

SimVfo* SimulatedRadio::receiveVfo() {
    switch (model_) {
        case RadioModel::FT817:
            return state_.onVfoB ? &state_.vfoB : &state_.vfoA;
        case RadioModel::FT847:
        case RadioModel::FT736R:
            return state_.satelliteMode ? &state_.satRx : &state_.main;
        default:
            return &state_.main;
    }
}

void SimulatedRadio::handle(const Block& block, std::vector<uint8_t>* reply) {
    switch (model_) {
        case RadioModel::FT847:
            handle847(block, reply);
            break;
        case RadioModel::FT817:
            handle817(block, reply);
            break;
        case RadioModel::FT100D:
            handle100(block, reply);
            break;
        case RadioModel::FT736R:
            handle736(block, reply);
            break;
        case RadioModel::VR5000:
            handleVR5000(block, reply);
            break;
    }
}

// FT-847: nothing is obeyed before CAT ON. Opcodes x0-x9 of the 0x, 1x and
// 2x rows address the main, satellite-receive and satellite-transmit VFOs.
void SimulatedRadio::handle847(const Block& b, std::vector<uint8_t>* reply) {
    RadioState& s = state_;
    const uint8_t op = b[4];
    if (op == 0x00) {
        s.catOn = true;
        return;
    }
    if (!s.catOn) return;
    SimVfo* vfos[3] = {&s.main, &s.satRx, &s.satTx};
    SimTone* tones[3] = {&s.tone, &s.satRxTone, &s.satTxTone};
    const int row = op >> 4;
    switch (op) {
        case 0x80:
            s.catOn = false;
            return;
        case 0x4E:
            s.satelliteMode = true;
            return;
        case 0x8E:
            s.satelliteMode = false;
            return;
        case 0x07:
        case 0x17:
        case 0x27:
            vfos[row]->mode = b[0];
            return;
        case 0x01:
        case 0x11:
        case 0x21:
            vfos[row]->hertz = bcdHertz(b[0], b[1], b[2], b[3]);
            return;
        case 0x03:
        case 0x13:
        case 0x23:
            putBcdHertz(vfos[row]->hertz, reply);
            reply->push_back(vfos[row]->mode);
            return;
        case 0x0A:
        case 0x1A:
        case 0x2A:
            tones[row]->mode = b[0];
            return;
        case 0x0B:
        case 0x1B:
        case 0x2B:
            tones[row]->code = b[0];
            return;
        case 0x09:
            s.shift = b[0];
            return;
        case 0xF9:
            s.offsetHertz = bcdHertz(b[0], b[1], b[2], b[3]);
            return;
        case 0xE7:
            reply->push_back(s.rxStatus);
            return;
        case 0xF7:
            reply->push_back(0x00);
            return;
        default:
            return;
    }
}

// FT-817: one current VFO (A or B); every command that reads nothing is
// acknowledged with one byte.
void SimulatedRadio::handle817(const Block& b, std::vector<uint8_t>* reply) {
    RadioState& s = state_;
    SimVfo* current = s.onVfoB ? &s.vfoB : &s.vfoA;
    switch (b[4]) {
        case 0x03:
            putBcdHertz(current->hertz, reply);
            reply->push_back(current->mode);
            return;
        case 0xE7:
            reply->push_back(s.rxStatus);
            return;
        case 0xF7:
            reply->push_back(0x00);
            return;
        case 0xBB: {
            const int address = (b[0] << 8) | b[1];
            reply->push_back(address == 0x0055 ? (s.onVfoB ? 0x01 : 0x00) : 0x00);
            reply->push_back(0x00);
            return;
        }
        case 0x01:
            current->hertz = bcdHertz(b[0], b[1], b[2], b[3]);
            break;
        case 0x07:
            current->mode = b[0];
            break;
        case 0x02:
            s.split = true;
            break;
        case 0x82:
            s.split = false;
            break;
        case 0x81:
            s.onVfoB = !s.onVfoB;
            break;
        case 0x09:
            s.shift = b[0];
            break;
        case 0xF9:
            s.offsetHertz = bcdHertz(b[0], b[1], b[2], b[3]);
            break;
        case 0x0A:
            s.tone.mode = b[0];
            break;
        case 0x0B:
            s.tone.tenths = unBcd(b[0]) * 100 + unBcd(b[1]);
            break;
        default:
            break;
    }
    reply->push_back(kAck);
}

// FT-100D: frequency bytes least significant first; a 16-byte status block
// carries the frequency in 1.25 Hz synthesizer steps.
void SimulatedRadio::handle100(const Block& b, std::vector<uint8_t>* reply) {
    RadioState& s = state_;
    switch (b[4]) {
        case 0x0A:
            s.main.hertz = bcdHertz(b[3], b[2], b[1], b[0]);
            return;
        case 0x0C:
            s.main.mode = b[0];
            return;
        case 0x10: {
            const uint32_t steps =
                static_cast<uint32_t>(static_cast<uint64_t>(s.main.hertz) * 4 / 5);
            uint8_t status[16] = {0};
            status[1] = static_cast<uint8_t>(steps >> 24);
            status[2] = static_cast<uint8_t>(steps >> 16);
            status[3] = static_cast<uint8_t>(steps >> 8);
            status[4] = static_cast<uint8_t>(steps);
            status[5] = s.main.mode;
            reply->insert(reply->end(), status, status + 16);
            return;
        }
        default:
            return;
    }
}

// FT-736R: CAT ON first; full duplex uses opcodes 0x1E/0x2E for the
// receive/transmit frequencies and 0x17/0x27 for their modes.
void SimulatedRadio::handle736(const Block& b, std::vector<uint8_t>* reply) {
    RadioState& s = state_;
    const uint8_t op = b[4];
    if (op == 0x00) {
        s.catOn = true;
        return;
    }
    if (!s.catOn) return;
    switch (op) {
        case 0x80:
            s.catOn = false;
            return;
        case 0x0E:
            s.satelliteMode = true;
            return;
        case 0x8E:
            s.satelliteMode = false;
            return;
        case 0x07:
            s.main.mode = b[0];
            return;
        case 0x17:
            s.satRx.mode = b[0];
            return;
        case 0x27:
            s.satTx.mode = b[0];
            return;
        case 0x01:
            s.main.hertz = bcdHertz(b[0], b[1], b[2], b[3]);
            return;
        case 0x1E:
            s.satRx.hertz = bcdHertz(b[0], b[1], b[2], b[3]);
            return;
        case 0x2E:
            s.satTx.hertz = bcdHertz(b[0], b[1], b[2], b[3]);
            return;
        case 0x09:
            s.shift = b[0];
            return;
        case 0xF9:
            s.offsetHertz = bcdHertz(b[0], b[1], b[2], b[3]);
            return;
        case 0x0A:
            s.tone.mode = b[0];
            return;
        case 0xFA:
            s.tone.code = b[0];
            return;
        case 0xE7:
            reply->push_back(s.rxStatus);
            return;
        default:
            return;
    }
}

// VR-5000: CAT ON first; the frequency is a 32-bit binary count of 10 Hz.
void SimulatedRadio::handleVR5000(const Block& b, std::vector<uint8_t>* reply) {
    (void)reply;
    RadioState& s = state_;
    const uint8_t op = b[4];
    if (op == 0x00) {
        s.catOn = true;
        return;
    }
    if (!s.catOn) return;
    switch (op) {
        case 0x80:
            s.catOn = false;
            return;
        case 0x07:
            s.main.mode = b[0];
            return;
        case 0x01:
            s.main.hertz =
                ((uint32_t{b[0]} << 24) | (uint32_t{b[1]} << 16) | (uint32_t{b[2]} << 8) | b[3]) *
                10u;
            return;
        default:
            return;
    }
}

}  // namespace veloran::sim
