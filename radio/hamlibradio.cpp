// The Hamlib row of the radio table: one connection per open radio, set up
// from Hamlib's capability flags the first time a transponder mode is forced.
//
// Radios with a main and a sub receiver work full duplex (satellite mode
// where Hamlib offers it): the downlink on the main band, the uplink on the
// sub band, as the IC-910 family pairs them. Radios with two VFOs and split
// transmit the uplink from the other VFO. A radio with neither only follows
// the downlink. Whatever a model lacks is left out and said once.

#include "radio/hamlibradio.h"

#include <fcntl.h>
#include <hamlib/rig.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include "radio/yaesu.h"
#include "serial/netprobe.h"

namespace veloran {

namespace {

std::atomic<int> gReplyTimeoutMs{500};  // Hamlib's wait for each reply
constexpr int kConnectTimeoutMs = 1000;
// Asks rigctld whether it takes a VFO with each command; it always answers.
constexpr const char* kRigctldQuery = "\\chk_vfo\n";
constexpr int kSMeterZeroDb = 54;  // Hamlib reports strength in dB relative to S9; S0 is -54 dB

enum Said : unsigned {
    kSaidNoSecondVfo = 1u << 0,
    kSaidNoMode = 1u << 1,
    kSaidNoTone = 1u << 2,
    kSaidNoSatMode = 1u << 3,
    kSaidNoSplit = 1u << 4,
};

struct Connection {
    RIG* rig = nullptr;
    std::string name;  // "Icom IC-910 on /dev/ttyUSB0"
    bool mainSub = false;
    bool split = false;
    bool satMode = false;
    bool selectFirst = false;  // select each VFO before setting it (rigctld without --vfo)
    vfo_t rxVfo = RIG_VFO_CURR;
    vfo_t txVfo = RIG_VFO_CURR;
    LastSent last{};
    freq_t downSent = 0;  // hertz, for the dial read-back
    unsigned said = 0;
    std::string error;
};

std::mutex gMutex;
std::map<int, std::unique_ptr<Connection>> gConnections;
bool gDebug = false;

int debugToLog(enum rig_debug_level_e, rig_ptr_t, const char* format, va_list args) {
    if (gDebug) std::vfprintf(stderr, format, args);
    return 0;
}

void applyDebug() {
    rig_set_debug_callback(debugToLog, nullptr);
    rig_set_debug(gDebug ? RIG_DEBUG_TRACE : RIG_DEBUG_NONE);
}

// The connection of the reachability check, closed when it goes out of scope.
struct HeldSocket {
    int fd = -1;
    ~HeldSocket() {
        if (fd != -1) close(fd);
    }
};

Connection* find(int fd) {
    auto it = gConnections.find(fd);
    return it == gConnections.end() ? nullptr : it->second.get();
}

void sayOnce(Connection* c, unsigned what, const char* text) {
    if (c->said & what) return;
    c->said |= what;
    std::fprintf(stderr, "%s: %s\n", c->name.c_str(), text);
}

// Operating modes per transponder mode: the downlink's, then the uplink's.
struct ModePair {
    rmode_t down;
    rmode_t up;
};

ModePair modesFor(int commMode) {
    switch (commMode) {
        case CommMode::REPEATER:
        case CommMode::J_FM:
        case CommMode::SIMP_FM:
        case CommMode::B_FM:
            return {RIG_MODE_FM, RIG_MODE_FM};
        case CommMode::WIDE_FM:
            return {RIG_MODE_WFM, RIG_MODE_FM};
        case CommMode::JA_SSB:
        case CommMode::B_SSB:
        case CommMode::A_SSB:
        case CommMode::T_SSB:
            return {RIG_MODE_USB, RIG_MODE_LSB};  // inverting transponders turn LSB into USB
        case CommMode::JA_CW:
        case CommMode::B_CW:
        case CommMode::A_CW:
        case CommMode::T_CW:
        case CommMode::RECEIVE_ONLY:
            return {RIG_MODE_CW, RIG_MODE_CW};
        case CommMode::JD_MIX:
            return {RIG_MODE_USB, RIG_MODE_FM};
        case CommMode::SIMP_AM:
            return {RIG_MODE_AM, RIG_MODE_AM};
        case CommMode::SIMP_SSB:
            return {RIG_MODE_USB, RIG_MODE_USB};
        case CommMode::J_EXP:
            return {RIG_MODE_FM, RIG_MODE_USB};
        default:
            return {RIG_MODE_NONE, RIG_MODE_NONE};
    }
}

freq_t hertzOf(double mhz) {
    return mhz > 0 ? std::trunc(mhz * 1000000.0) : 0;
}

// Whether the radio receives in `mode` anywhere: the ranges a rigctld
// reports arrive in the state, not in the model's fixed capabilities.
bool canSet(const RIG* rig, rmode_t mode) {
    for (const freq_range_t& r : rig->state.rx_range_list) {
        if (r.startf == 0 && r.endf == 0) break;
        if (r.modes & mode) return true;
    }
    return false;
}

// A rigctld started without --vfo applies every command to its current VFO,
// so there the VFO is selected first and the command goes to the current
// one; everything else takes the VFO with the command (Hamlib switches VFOs
// itself for radios that need it).
vfo_t target(Connection* c, vfo_t vfo) {
    if (!c->selectFirst || vfo == RIG_VFO_CURR) return vfo;
    return rig_set_vfo(c->rig, vfo) == RIG_OK ? RIG_VFO_CURR : vfo;
}

// The forced part: satellite mode or split, operating modes, tone.
void setUp(Connection* c, int commMode, int gTone, int gCTone, bool uplink) {
    RIG* rig = c->rig;
    const rig_caps* caps = rig->caps;
    if (c->satMode) rig_set_func(rig, RIG_VFO_CURR, RIG_FUNC_SATMODE, uplink ? 1 : 0);
    if (c->split && uplink) rig_set_split_vfo(rig, RIG_VFO_A, RIG_SPLIT_ON, RIG_VFO_B);
    // Some full-duplex backends (the FT-847's) enter the radio's satellite
    // mode through split between main and sub.
    if (c->mainSub && !c->satMode && caps->set_split_vfo)
        rig_set_split_vfo(rig, RIG_VFO_MAIN, uplink ? RIG_SPLIT_ON : RIG_SPLIT_OFF, RIG_VFO_SUB);
    const ModePair modes = modesFor(commMode);
    if (caps->set_mode && canSet(rig, modes.down)) {
        rig_set_mode(rig, target(c, c->rxVfo), modes.down, RIG_PASSBAND_NOCHANGE);
        if (uplink && c->mainSub)
            rig_set_mode(rig, target(c, c->txVfo), modes.up, RIG_PASSBAND_NOCHANGE);
        if (uplink && c->split)
            rig_set_split_mode(rig, RIG_VFO_CURR, modes.up, RIG_PASSBAND_NOCHANGE);
    } else {
        sayOnce(c, kSaidNoMode, "cannot set the operating mode; left as it is");
    }
    // The uplink's CTCSS tone: the tone squelch setting when there is one,
    // else the repeater tone, both as entries of the CTCSS table.
    const int toneIndex = gCTone != 0 ? gCTone : gTone;
    if (!uplink) return;
    const vfo_t toneVfo = c->mainSub ? target(c, c->txVfo) : RIG_VFO_CURR;
    if (toneIndex != 0 && caps->set_ctcss_tone)
        rig_set_ctcss_tone(rig, toneVfo, static_cast<tone_t>(tableToToneTenths(toneIndex)));
    if (rig_has_set_func(rig, RIG_FUNC_TONE))
        rig_set_func(rig, toneVfo, RIG_FUNC_TONE, toneIndex != 0 ? 1 : 0);
    else if (toneIndex != 0)
        sayOnce(c, kSaidNoTone, "cannot send a CTCSS tone");
}

// Hamlib's error text, first line only: later lines are its debug history.
std::string errorText(int status) {
    const std::string text = rigerror(status);
    return text.substr(0, text.find('\n'));
}

int fail(Connection* c, int status) {
    c->error = errorText(status);
    c->last = {};  // not sent after all: the next call sends again
    return 0;
}

int setFrequencies(int fd, int, double upMHz, double downMHz, int commMode, int gTone, int gCTone,
                   bool force, bool) {
    std::lock_guard<std::mutex> lock(gMutex);
    Connection* c = find(fd);
    if (!c) return 0;
    // Hamlib takes every band in plain hertz, microwave ones included.
    const freq_t up = hertzOf(upMHz), down = hertzOf(downMHz);
    const uint32_t upKey = static_cast<uint32_t>(std::fmin(up, 4294967295.0));
    const uint32_t downKey = static_cast<uint32_t>(std::fmin(down, 4294967295.0));
    if (!force && upKey == c->last.up && downKey == c->last.down) return 1;
    c->last = {upKey, downKey};
    if (commMode == CommMode::UNKNOWN) return 1;
    const bool uplink = up > 0;  // 0 while listening to the beacon
    if (force) setUp(c, commMode, gTone, gCTone, uplink);
    // The uplink first, so that the receive VFO is the current one after.
    int status = RIG_OK;
    if (uplink && c->mainSub) {
        status = rig_set_freq(c->rig, target(c, c->txVfo), up);
    } else if (uplink && c->split) {
        status = c->selectFirst ? rig_set_freq(c->rig, target(c, c->txVfo), up)
                                : rig_set_split_freq(c->rig, RIG_VFO_CURR, up);
    } else if (uplink) {
        sayOnce(c, kSaidNoSecondVfo, "no second VFO or split: only the downlink is tuned");
    }
    if (status != RIG_OK) return fail(c, status);
    status = rig_set_freq(c->rig, target(c, c->rxVfo), down);
    if (status != RIG_OK) return fail(c, status);
    c->downSent = down;
    return 1;
}

int squelched(int fd, VFORec* vfo, bool) {
    std::lock_guard<std::mutex> lock(gMutex);
    Connection* c = find(fd);
    if (!c || !vfo) return 0;
    if (rig_has_get_level(c->rig, RIG_LEVEL_STRENGTH)) {
        value_t v{};
        if (rig_get_level(c->rig, target(c, c->rxVfo), RIG_LEVEL_STRENGTH, &v) == RIG_OK)
            vfo->signalStrength = v.i + kSMeterZeroDb > 0 ? v.i + kSMeterZeroDb : 0;
    }
    if (!c->rig->caps->get_dcd) return 0;  // no squelch report: always open
    dcd_t dcd = RIG_DCD_ON;
    if (rig_get_dcd(c->rig, target(c, c->rxVfo), &dcd) != RIG_OK) return 0;
    return dcd == RIG_DCD_OFF ? 1 : 0;
}

int downlinkChanged(int fd, int, int32_t* changeHz, bool) {
    std::lock_guard<std::mutex> lock(gMutex);
    Connection* c = find(fd);
    if (!c || !changeHz || c->downSent == 0 || !c->rig->caps->get_freq) return 0;
    freq_t now = 0;
    if (rig_get_freq(c->rig, target(c, c->rxVfo), &now) != RIG_OK || now <= 0) return 0;
    const double change = now - c->downSent;
    if (change == 0 || std::fabs(change) > 2147483647.0) return 0;
    *changeHz = static_cast<int32_t>(change);
    return 1;
}

// The S-meter indicator shows decibels above S0.
constexpr double kHamlibSMeter = 1.0;

const RadioDriver kHamlibRow = {
    "Hamlib", nullptr, nullptr, setFrequencies, squelched, kHamlibSMeter, downlinkChanged, nullptr,
};

}  // namespace

const RadioDriver* HamlibRadioDriver() {
    return &kHamlibRow;
}

void SetHamlibReplyTimeout(int milliseconds) {
    gReplyTimeoutMs = milliseconds > 0 ? milliseconds : 500;
}

int HamlibReplyTimeout() {
    return gReplyTimeoutMs;
}

int OpenHamlibRadio(int model, const char* port, int baud, bool debug, std::string* error) {
    std::lock_guard<std::mutex> lock(gMutex);
    gDebug = debug;
    applyDebug();
    const std::string path = port ? port : "";
    // Held until Hamlib's own connection is up (see ConnectNetworkDevice).
    HeldSocket probe;
    if (model == kHamlibNetModel) {
        // Hamlib's own connect blocks for as long as the system keeps trying.
        probe.fd = ConnectNetworkDevice(path, std::max(kConnectTimeoutMs, gReplyTimeoutMs.load()),
                                        error, kRigctldQuery);
        if (probe.fd == -1) return -1;
        // A rigctld that goes away mid-write must not end the program.
        signal(SIGPIPE, SIG_IGN);
    }
    RIG* rig = rig_init(static_cast<rig_model_t>(model));
    if (!rig) {
        if (error) *error = "Hamlib has no radio model " + std::to_string(model);
        return -1;
    }
    if (!path.empty()) {
        std::snprintf(rig->state.rigport.pathname, sizeof rig->state.rigport.pathname, "%s",
                      path.c_str());
    }
    if (baud > 0) rig->state.rigport.parm.serial.rate = baud;
    rig->state.rigport.timeout = gReplyTimeoutMs;
    rig->state.rigport.retry = 0;
    const int status = rig_open(rig);
    if (status != RIG_OK) {
        if (error) *error = errorText(status);
        rig_cleanup(rig);
        return -1;
    }
    const int token = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (token == -1) {
        if (error) *error = std::strerror(errno);
        rig_close(rig);
        rig_cleanup(rig);
        return -1;
    }
    auto c = std::make_unique<Connection>();
    c->rig = rig;
    c->name = std::string(rig->caps->mfg_name) + " " + rig->caps->model_name + " on " + path;
    const vfo_t vfos = rig->state.vfo_list;
    c->mainSub = (vfos & (RIG_VFO_MAIN | RIG_VFO_SUB)) == (RIG_VFO_MAIN | RIG_VFO_SUB);
    c->satMode = c->mainSub && rig_has_set_func(rig, RIG_FUNC_SATMODE);
    c->split = !c->mainSub && rig->caps->set_split_vfo != nullptr &&
               (vfos & (RIG_VFO_A | RIG_VFO_B)) == (RIG_VFO_A | RIG_VFO_B);
    const vfo_t bandsA = RIG_VFO_MAIN_A | RIG_VFO_SUB_A;
    if (c->mainSub && model != kHamlibNetModel && (vfos & bandsA) == bandsA) {
        // Hamlib takes a plain "sub" on radios that also have VFOs A and B
        // as the main band's VFO B unless it believes satellite mode is on.
        // (Through rigctld the names travel as they are, and rigctld's
        // dummy keeps "MainA" apart from "Main".)
        c->rxVfo = RIG_VFO_MAIN_A;
        c->txVfo = RIG_VFO_SUB_A;
    } else if (c->mainSub) {
        c->rxVfo = RIG_VFO_MAIN;
        c->txVfo = RIG_VFO_SUB;
    } else if (c->split) {
        c->rxVfo = RIG_VFO_A;
        c->txVfo = RIG_VFO_B;
    }
    c->selectFirst = model == kHamlibNetModel && !rig->state.vfo_opt;
    if (c->mainSub && !c->satMode && !rig->caps->set_split_vfo)
        sayOnce(c.get(), kSaidNoSatMode, "no satellite mode switch");
    gConnections[token] = std::move(c);
    return token;
}

void CloseHamlibRadio(int fd) {
    std::unique_ptr<Connection> c;
    {
        std::lock_guard<std::mutex> lock(gMutex);
        auto it = gConnections.find(fd);
        if (it == gConnections.end()) return;
        c = std::move(it->second);
        gConnections.erase(it);
    }
    rig_close(c->rig);
    rig_cleanup(c->rig);
    close(fd);
}

int IsHamlibRadio(int fd) {
    std::lock_guard<std::mutex> lock(gMutex);
    return find(fd) != nullptr ? 1 : 0;
}

std::string HamlibRadioError(int fd) {
    std::lock_guard<std::mutex> lock(gMutex);
    const Connection* c = find(fd);
    return c ? c->error : std::string();
}

namespace {

int collectRig(const rig_caps* caps, rig_ptr_t data) {
    auto* out = static_cast<std::vector<HamlibModel>*>(data);
    out->push_back({static_cast<int>(caps->rig_model), caps->mfg_name ? caps->mfg_name : "",
                    caps->model_name ? caps->model_name : ""});
    return 1;  // go on
}

}  // namespace

std::vector<HamlibModel> HamlibRadioModels() {
    std::lock_guard<std::mutex> lock(gMutex);
    applyDebug();
    rig_load_all_backends();
    std::vector<HamlibModel> models;
    rig_list_foreach(collectRig, &models);
    std::sort(models.begin(), models.end(),
              [](const HamlibModel& a, const HamlibModel& b) { return a.number < b.number; });
    return models;
}

std::string HamlibRadioName(int number) {
    for (const HamlibModel& m : HamlibRadioModels())
        if (m.number == number) return m.maker + " " + m.model;
    return "";
}

}  // namespace veloran
