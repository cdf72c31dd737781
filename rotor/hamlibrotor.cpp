// The Hamlib row of the rotor table: one connection per open rotator.

#include "rotor/hamlibrotor.h"

#include <fcntl.h>
#include <hamlib/rotator.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>

#include "serial/netprobe.h"

namespace veloran {

namespace {

constexpr int kReplyTimeoutMs = 500;
constexpr int kConnectTimeoutMs = 1000;
// Asks rotctld where the rotator points; it always answers.
constexpr const char* kRotctldQuery = "p\n";
constexpr int kHamlibNetRotor = 2;

std::mutex gMutex;
std::map<int, ROT*> gRotors;

// The connection of the reachability check, closed when it goes out of scope.
struct HeldSocket {
    int fd = -1;
    ~HeldSocket() {
        if (fd != -1) close(fd);
    }
};

ROT* find(int fd) {
    auto it = gRotors.find(fd);
    return it == gRotors.end() ? nullptr : it->second;
}

}  // namespace

int OpenHamlibRotor(int model, const char* port, int baud, bool debug, std::string* error) {
    std::lock_guard<std::mutex> lock(gMutex);
    rig_set_debug(debug ? RIG_DEBUG_TRACE : RIG_DEBUG_NONE);
    const std::string path = port ? port : "";
    // Held until Hamlib's own connection is up (see ConnectNetworkDevice).
    HeldSocket probe;
    if (model == kHamlibNetRotor) {
        // Hamlib's own connect blocks for as long as the system keeps trying.
        probe.fd = ConnectNetworkDevice(path, kConnectTimeoutMs, error, kRotctldQuery);
        if (probe.fd == -1) return -1;
        signal(SIGPIPE, SIG_IGN);  // a rotctld that goes away mid-write must not end us
    }
    ROT* rot = rot_init(static_cast<rot_model_t>(model));
    if (!rot) {
        if (error) *error = "Hamlib has no rotator model " + std::to_string(model);
        return -1;
    }
    if (!path.empty())
        std::snprintf(rot->state.rotport.pathname, sizeof rot->state.rotport.pathname, "%s",
                      path.c_str());
    if (baud > 0) rot->state.rotport.parm.serial.rate = baud;
    rot->state.rotport.timeout = kReplyTimeoutMs;
    rot->state.rotport.retry = 0;
    const int status = rot_open(rot);
    if (status != RIG_OK) {
        if (error) {
            // The first line only: later lines are Hamlib's debug history.
            *error = rigerror(status);
            *error = error->substr(0, error->find('\n'));
        }
        rot_cleanup(rot);
        return -1;
    }
    const int token = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (token == -1) {
        if (error) *error = std::strerror(errno);
        rot_close(rot);
        rot_cleanup(rot);
        return -1;
    }
    gRotors[token] = rot;
    return token;
}

void CloseHamlibRotor(int fd) {
    ROT* rot = nullptr;
    {
        std::lock_guard<std::mutex> lock(gMutex);
        rot = find(fd);
        if (!rot) return;
        gRotors.erase(fd);
    }
    rot_close(rot);
    rot_cleanup(rot);
    close(fd);
}

int IsHamlibRotor(int fd) {
    std::lock_guard<std::mutex> lock(gMutex);
    return find(fd) != nullptr ? 1 : 0;
}

int HamlibRotorPosition(int fd, int azimuth, int elevation, bool) {
    std::lock_guard<std::mutex> lock(gMutex);
    ROT* rot = find(fd);
    if (!rot) return -1;
    // Our steering has already flipped past 180 degrees of elevation where
    // the pass needs it; Hamlib refuses angles outside the model's limits.
    const float az = std::clamp(static_cast<float>(azimuth), rot->state.min_az, rot->state.max_az);
    const float el =
        std::clamp(static_cast<float>(elevation), rot->state.min_el, rot->state.max_el);
    return rot_set_position(rot, az, el) == RIG_OK ? 1 : -1;
}

int HamlibRotorReadBack(int fd, double* azimuth, double* elevation, bool) {
    std::lock_guard<std::mutex> lock(gMutex);
    ROT* rot = find(fd);
    if (!rot || !azimuth || !elevation || !rot->caps->get_position) return 0;
    azimuth_t az = 0;
    elevation_t el = 0;
    if (rot_get_position(rot, &az, &el) != RIG_OK) return 0;
    *azimuth = az;
    *elevation = el;
    return 1;
}

namespace {

int collectRotor(const rot_caps* caps, rig_ptr_t data) {
    auto* out = static_cast<std::vector<HamlibRotorModel>*>(data);
    out->push_back({static_cast<int>(caps->rot_model), caps->mfg_name ? caps->mfg_name : "",
                    caps->model_name ? caps->model_name : ""});
    return 1;
}

}  // namespace

std::vector<HamlibRotorModel> HamlibRotorModels() {
    std::lock_guard<std::mutex> lock(gMutex);
    rot_load_all_backends();
    std::vector<HamlibRotorModel> models;
    rot_list_foreach(collectRotor, &models);
    std::sort(
        models.begin(), models.end(),
        [](const HamlibRotorModel& a, const HamlibRotorModel& b) { return a.number < b.number; });
    return models;
}

}  // namespace veloran
