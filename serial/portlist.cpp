// Serial port discovery under /dev and the typed-in port paths.

#include "serial/portlist.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace veloran {

namespace {

namespace fs = std::filesystem;

void copyBounded(char* dst, const std::string& src) {
    const size_t n = std::min(src.size(), sizeof(PortNameRecord::bsdPath) - 1);
    std::memcpy(dst, src.data(), n);
    dst[n] = 0;
}

std::vector<fs::path> sortedEntries(const fs::path& folder, const char* prefix) {
    std::vector<fs::path> found;
    std::error_code ec;
    for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string name = it->path().filename().string();
        if (prefix && name.rfind(prefix, 0) != 0) continue;
        found.push_back(it->path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace

int DevSerialPortList::findPorts(PortNameRecord* ports, int maxPorts) {
    if (!ports || maxPorts <= 0) return 0;
    const fs::path root(root_);
    std::vector<std::string> seenTargets;
    int count = 0;
    auto add = [&](const fs::path& path, const std::string& name) {
        if (count >= maxPorts) return;
        std::error_code ec;
        const fs::path target = fs::weakly_canonical(path, ec);
        const std::string key = ec ? path.string() : target.string();
        if (std::find(seenTargets.begin(), seenTargets.end(), key) != seenTargets.end()) return;
        seenTargets.push_back(key);
        copyBounded(ports[count].bsdPath, path.string());
        copyBounded(ports[count].userName, name);
        ++count;
    };
    // The by-id names carry the adapter's make and serial number, the most
    // useful thing to show; they are links to the ttyUSB/ttyACM nodes.
    for (const fs::path& p : sortedEntries(root / "serial" / "by-id", nullptr))
        add(p, p.filename().string());
    for (const char* prefix : {"ttyUSB", "ttyACM", "ttyS"}) {
        for (const fs::path& p : sortedEntries(root, prefix)) add(p, p.filename().string());
    }
    return count;
}

int countSerialPorts(SerialPortList* list, PortNameRecord* ports, bool debug) {
    if (!ports) return 0;
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        ports[i].bsdPath[0] = 0;
        ports[i].userName[0] = 0;
    }
    if (!list) return 0;
    const int found = std::clamp(list->findPorts(ports, kMaxSerialPorts), 0, kMaxSerialPorts);
    for (int i = 0; i < found; ++i) {
        ports[i].bsdPath[sizeof ports[i].bsdPath - 1] = 0;
        ports[i].userName[sizeof ports[i].userName - 1] = 0;
        if (debug) {
            std::fprintf(stderr, "BSD path: %s\n", ports[i].bsdPath);
            std::fprintf(stderr, "User Name: %s\t", ports[i].userName);
        }
    }
    return found;
}

int addTypedPort(PortNameRecord* ports, const char* path) {
    if (!ports || !path || path[0] == 0 || std::strlen(path) >= sizeof(PortNameRecord::bsdPath))
        return -1;
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        if (std::strcmp(ports[i].bsdPath, path) == 0) return i;
    }
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        if (ports[i].bsdPath[0] != 0) continue;
        copyBounded(ports[i].bsdPath, path);
        copyBounded(ports[i].userName, path);
        return i;
    }
    return -1;
}

namespace {

// The device a path leads to, or the path itself when it does not resolve.
std::string deviceOf(const char* path) {
    std::error_code ec;
    const fs::path target = fs::canonical(path, ec);
    return ec ? std::string(path) : target.string();
}

}  // namespace

std::string stablePortPath(const char* path, const char* root) {
    if (!path || path[0] == 0) return std::string();
    const std::string device = deviceOf(path);
    for (const fs::path& link : sortedEntries(fs::path(root) / "serial" / "by-id", nullptr)) {
        std::error_code ec;
        const fs::path target = fs::canonical(link, ec);
        if (!ec && target.string() == device) return link.string();
    }
    return path;
}

int findPortByPath(const PortNameRecord* ports, const char* path) {
    if (!ports || !path || path[0] == 0) return -1;
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        if (std::strcmp(ports[i].bsdPath, path) == 0) return i;
    }
    const std::string device = deviceOf(path);
    for (int i = 0; i < kMaxSerialPorts; ++i) {
        if (ports[i].bsdPath[0] != 0 && deviceOf(ports[i].bsdPath) == device) return i;
    }
    return -1;
}

int addMissingPort(PortNameRecord* ports, const char* path) {
    const int index = addTypedPort(ports, path);
    if (index >= 0) copyBounded(ports[index].userName, std::string(path) + " (missing)");
    return index;
}

}  // namespace veloran
