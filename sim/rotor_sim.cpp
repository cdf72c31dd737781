// The simulated rotor controller: pseudo-terminal, command parsing for each
// controller, motion at a set speed and the position reply.

#include "sim/rotor_sim.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "sim/sim_line.h"

namespace veloran::sim {

namespace {

constexpr char kCR = '\r';
constexpr char kLF = '\n';
constexpr unsigned char kPTStart = '$';
constexpr unsigned char kPTEnd = '#';
constexpr size_t kPTPacketLength = 48;  // "$", 45 bytes of text and fixed bytes, XOR byte, "#"
constexpr size_t kPTChecksumAt = 46;    // XOR of bytes 1..45
constexpr double kSARtekSteps = 255.0;  // one byte spans the full circle

struct NameRow {
    const char* name;
    RotorProtocol protocol;
};
constexpr NameRow kNames[] = {
    {"gs232", RotorProtocol::kGS232},
    {"autotracker", RotorProtocol::kAutoTracker},
    {"easycomm", RotorProtocol::kEasyComm},
    {"klm", RotorProtocol::kKLM},
    {"sartek", RotorProtocol::kSARtek},
    {"satel", RotorProtocol::kSatEL},
    {"dcu1", RotorProtocol::kDCU1},
    {"spid", RotorProtocol::kSpid},
    {"pt", RotorProtocol::kPT},
};

double steadySeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

double now(RotorSim* sim) {
    return sim->clock ? sim->clock() : steadySeconds();
}

double towards(double from, double to, double step) {
    if (std::fabs(to - from) <= step) return to;
    return from + (to > from ? step : -step);
}

// Moves both axes toward the commanded pair. A rotator turns through its own
// range, never across its end stop, so the azimuth is not taken the short way
// round through north.
void move(RotorSim* sim, double t) {
    const double dt = t - sim->lastMoveSeconds;
    sim->lastMoveSeconds = t;
    if (dt <= 0) return;
    const double step = sim->degreesPerSecond * dt;
    sim->currentAzimuth = towards(sim->currentAzimuth, sim->commandedAzimuth, step);
    sim->currentElevation = towards(sim->currentElevation, sim->commandedElevation, step);
}

void command(RotorSim* sim, double az, double el) {
    sim->commandedAzimuth = az;
    sim->commandedElevation = el;
    sim->commands.push_back({az, el, sim->lastMoveSeconds});
}

void reply(RotorSim* sim, const char* text, size_t length) {
    if (sim->mute) return;
    if (sim->trace) TraceBytes("->", reinterpret_cast<const uint8_t*>(text), length);
    sim->sent.append(text, length);
    size_t done = 0;
    while (done < length) {
        const ssize_t n = ::write(sim->master, text + done, length - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return;
        done += static_cast<size_t>(n);
    }
}

// A whole number of `digits` digits at text[at]; false when they are not all there.
bool digitsAt(const std::string& text, size_t at, size_t digits, int* value) {
    if (at + digits > text.size()) return false;
    int v = 0;
    for (size_t i = at; i < at + digits; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        v = v * 10 + (text[i] - '0');
    }
    *value = v;
    return true;
}

// Two numbers separated by `separator` after `prefix`, each read as a decimal
// number in the C convention (a '.' point), whatever the locale.
bool twoNumbers(const std::string& line, const char* prefix, const char* separator, double* first,
                double* second) {
    const size_t p = std::strlen(prefix);
    if (line.compare(0, p, prefix) != 0) return false;
    const size_t sep = line.find(separator, p);
    if (sep == std::string::npos) return false;
    const char* a = line.data() + p;
    const char* aEnd = line.data() + sep;
    const char* b = line.data() + sep + std::strlen(separator);
    const char* bEnd = line.data() + line.size();
    const auto ra = std::from_chars(a, aEnd, *first);
    const auto rb = std::from_chars(b, bEnd, *second);
    return ra.ec == std::errc() && ra.ptr == aEnd && rb.ec == std::errc() && rb.ptr == bEnd;
}

void positionReply(RotorSim* sim) {
    // "+0aaa+0eee" and CR LF: 12 bytes.
    const int az = std::clamp(static_cast<int>(std::lround(sim->currentAzimuth)), 0, 9999);
    const int el = std::clamp(static_cast<int>(std::lround(sim->currentElevation)), 0, 9999);
    char text[32];
    const int n = std::snprintf(text, sizeof text, "+%04d+%04d%c%c", az, el, kCR, kLF);
    reply(sim, text, static_cast<size_t>(n));
}

void gs232Line(RotorSim* sim, const std::string& line) {
    int az = 0;
    int el = 0;
    if (line == "C2") {
        sim->controls.push_back(line);
        positionReply(sim);
    } else if (line.size() == 8 && line[0] == 'W' && line[4] == ' ' && digitsAt(line, 1, 3, &az) &&
               digitsAt(line, 5, 3, &el)) {
        command(sim, az, el);
    } else {
        sim->controls.push_back(line);
    }
}

void lineProtocol(RotorSim* sim, const std::string& line) {
    double a = 0;
    double b = 0;
    switch (sim->protocol) {
        case RotorProtocol::kGS232:
        case RotorProtocol::kSpid:
            gs232Line(sim, line);
            return;
        case RotorProtocol::kAutoTracker:
            if (twoNumbers(line, "A:", ",E:", &a, &b)) return command(sim, a, b);
            break;
        case RotorProtocol::kEasyComm:
            if (twoNumbers(line, "AZ", " EL", &a, &b)) return command(sim, a, b);
            break;
        case RotorProtocol::kKLM:
            // Elevation first on this controller.
            if (twoNumbers(line, "PC", " ", &b, &a)) return command(sim, a, b);
            break;
        case RotorProtocol::kSatEL:
            if (twoNumbers(line, "P", " ", &a, &b)) return command(sim, a, b);
            if (line == "S") {  // computer control ends: the rotator stays where it is
                sim->commandedAzimuth = sim->currentAzimuth;
                sim->commandedElevation = sim->currentElevation;
            }
            break;
        default:
            break;
    }
    sim->controls.push_back(line);
}

void dcu1Frame(RotorSim* sim, std::string frame) {
    // Line ends and stray zero bytes between frames mean nothing to it.
    const size_t first = frame.find_first_not_of(std::string("\r\n \0", 4));
    frame.erase(0, first == std::string::npos ? frame.size() : first);
    int bearing = 0;
    if (frame.compare(0, 3, "AP1") == 0 && digitsAt(frame, 3, 3, &bearing)) {
        // The bearing is the three digits after "AP1"; the move waits for "AM1;".
        sim->dcu1Bearing = bearing;
        sim->controls.push_back(frame);
    } else if (frame == "AM1") {
        sim->controls.push_back(frame);
        command(sim, sim->dcu1Bearing, sim->commandedElevation);
    } else if (frame.empty()) {
        // A lone ";" stops the rotator where it is.
        sim->controls.push_back(";");
        sim->commandedAzimuth = sim->currentAzimuth;
    } else {
        sim->controls.push_back(frame);
    }
}

void ptPacket(RotorSim* sim, const std::string& packet) {
    unsigned char sum = 0;
    for (size_t i = 1; i < kPTChecksumAt; ++i) sum ^= static_cast<unsigned char>(packet[i]);
    int az = 0;
    int el = 0;
    if (static_cast<unsigned char>(packet[kPTPacketLength - 1]) != kPTEnd ||
        static_cast<unsigned char>(packet[kPTChecksumAt]) != sum ||
        packet.compare(1, 2, "AZ") != 0 || !digitsAt(packet, 3, 3, &az) ||
        packet.compare(6, 2, "EL") != 0 || !digitsAt(packet, 8, 3, &el)) {
        ++sim->badPackets;
        return;
    }
    command(sim, az, el);
}

// Takes every complete command out of sim->pending.
void parse(RotorSim* sim) {
    std::string& in = sim->pending;
    switch (sim->protocol) {
        case RotorProtocol::kSARtek:
            while (!in.empty()) {
                if (in[0] != 'P') {
                    sim->controls.push_back(in.substr(0, 1));
                    in.erase(0, 1);
                    continue;
                }
                if (in.size() < 2) return;
                const double az = static_cast<unsigned char>(in[1]) * 360.0 / kSARtekSteps;
                in.erase(0, 2);
                command(sim, az, sim->commandedElevation);
            }
            return;
        case RotorProtocol::kPT:
            for (;;) {
                const size_t start = in.find(static_cast<char>(kPTStart));
                if (start == std::string::npos) {
                    in.clear();
                    return;
                }
                in.erase(0, start);
                if (in.size() < kPTPacketLength) return;
                ptPacket(sim, in.substr(0, kPTPacketLength));
                in.erase(0, kPTPacketLength);
            }
        case RotorProtocol::kDCU1:
            for (size_t end; (end = in.find(';')) != std::string::npos;) {
                dcu1Frame(sim, in.substr(0, end));
                in.erase(0, end + 1);
            }
            return;
        default:
            for (size_t end; (end = in.find(kCR)) != std::string::npos;) {
                std::string line = in.substr(0, end);
                in.erase(0, end + 1);
                if (!line.empty() && line[0] == kLF) line.erase(0, 1);
                lineProtocol(sim, line);
            }
            return;
    }
}

void makeRaw(int fd) {
    struct termios t;
    if (::tcgetattr(fd, &t) != 0) return;
    ::cfmakeraw(&t);
    ::tcsetattr(fd, TCSANOW, &t);
}

}  // namespace

bool RotorProtocolFromName(const std::string& name, RotorProtocol* out) {
    for (const NameRow& row : kNames) {
        if (name == row.name) {
            if (out) *out = row.protocol;
            return true;
        }
    }
    return false;
}

const char* RotorProtocolNames() {
    return "gs232|autotracker|easycomm|klm|sartek|satel|dcu1|spid|pt";
}

bool OpenRotorSim(RotorSim* sim, RotorProtocol protocol, double degreesPerSecond, double azimuth,
                  double elevation) {
    if (!sim) return false;
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0) return false;
    char path[sizeof sim->slavePath];
    if (::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
        ::ptsname_r(master, path, sizeof path) != 0) {
        ::close(master);
        return false;
    }
    const int slave = ::open(path, O_RDWR | O_NOCTTY);
    if (slave < 0) {
        ::close(master);
        return false;
    }
    // Raw from the start, so that a reply is never echoed back to us before
    // the program sets the line up.
    makeRaw(slave);
    std::lock_guard<std::mutex> lock(sim->mutex);
    sim->protocol = protocol;
    sim->degreesPerSecond = degreesPerSecond;
    sim->master = master;
    sim->slave = slave;
    std::memcpy(sim->slavePath, path, sizeof path);
    sim->commandedAzimuth = sim->currentAzimuth = azimuth;
    sim->commandedElevation = sim->currentElevation = elevation;
    sim->dcu1Bearing = azimuth;
    sim->lastMoveSeconds = now(sim);
    sim->received.clear();
    sim->sent.clear();
    sim->pending.clear();
    sim->commands.clear();
    sim->controls.clear();
    sim->badPackets = 0;
    return true;
}

void CloseRotorSim(RotorSim* sim) {
    if (!sim) return;
    StopRotorSimThread(sim);
    std::lock_guard<std::mutex> lock(sim->mutex);
    if (sim->slave >= 0) ::close(sim->slave);
    if (sim->master >= 0) ::close(sim->master);
    sim->slave = sim->master = -1;
}

int ServeRotorSim(RotorSim* sim, int waitMs) {
    if (!sim || sim->master < 0) return -1;
    struct pollfd p = {sim->master, POLLIN, 0};
    const int ready = ::poll(&p, 1, waitMs);
    if (ready <= 0 || !(p.revents & POLLIN)) return 0;
    char bytes[512];
    const ssize_t n = ::read(sim->master, bytes, sizeof bytes);
    if (n <= 0) return 0;
    if (sim->trace)
        TraceBytes("<-", reinterpret_cast<const uint8_t*>(bytes), static_cast<size_t>(n));
    std::lock_guard<std::mutex> lock(sim->mutex);
    move(sim, now(sim));
    sim->received.append(bytes, static_cast<size_t>(n));
    sim->pending.append(bytes, static_cast<size_t>(n));
    parse(sim);
    return static_cast<int>(n);
}

void StartRotorSimThread(RotorSim* sim) {
    if (!sim || sim->running.exchange(true)) return;
    sim->worker = std::thread([sim] {
        while (sim->running.load()) {
            // A wait that ends with nothing read has found the line empty,
            // bytes still in transit included (the kernel hands them over
            // before poll answers).
            const uint64_t asked = sim->idle.asked();
            if (ServeRotorSim(sim, sim->idle.owed() ? 0 : 1) == 0) sim->idle.seen(asked);
        }
    });
}

void StopRotorSimThread(RotorSim* sim) {
    if (!sim || !sim->running.exchange(false)) return;
    if (sim->worker.joinable()) sim->worker.join();
}

RotorSimState RotorSimSnapshot(RotorSim* sim) {
    std::lock_guard<std::mutex> lock(sim->mutex);
    move(sim, now(sim));
    return {sim->commandedAzimuth, sim->commandedElevation, sim->currentAzimuth,
            sim->currentElevation, sim->received,           sim->sent,
            sim->commands,         sim->controls,           sim->badPackets};
}

void WaitForRotorSimIdle(RotorSim* sim) {
    if (!sim || sim->master < 0) return;
    if (!sim->running.load()) {
        while (ServeRotorSim(sim, 0) > 0) {
        }
        return;
    }
    sim->idle.wait(sim->idle.ask(), std::chrono::seconds(30));
}

bool WaitForRotorSimBytes(RotorSim* sim, size_t count, int timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        {
            std::lock_guard<std::mutex> lock(sim->mutex);
            if (sim->received.size() >= count) return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) return false;
        if (sim->running.load())
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        else
            ServeRotorSim(sim, 5);
    }
}

}  // namespace veloran::sim
