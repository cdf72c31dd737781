// Download sources and the download rules.

#include "data/kepssources.h"

#include <sstream>

namespace veloran {

namespace {

constexpr const char* kCelestrak = "https://celestrak.org/NORAD/elements/gp.php?";

struct Entry {
    int64_t when;
    std::string url;
};

std::vector<Entry> ReadLog(const UserDefaults* defaults) {
    std::vector<Entry> log;
    std::istringstream words(defaults->stringForKey(prefkeys::kKepsFetchLog));
    Entry e;
    while (words >> e.when >> e.url) log.push_back(e);
    return log;
}

bool StartsWith(const std::string& s, const char* prefix) {
    return s.rfind(prefix, 0) == 0;
}

}  // namespace

std::vector<KepsSource> KepsSources(const UserDefaults* defaults) {
    std::vector<KepsSource> sources = {{"AMSAT bulletin (nasa.all)", kAmsatKepsURL}};
    const std::pair<const char*, const char*> groups[] = {{"amateur", "Amateur radio"},
                                                          {"stations", "Space stations"},
                                                          {"weather", "Weather"},
                                                          {"active", "Active satellites"}};
    for (const auto& [group, title] : groups) {
        sources.push_back({std::string("CelesTrak: ") + title + " (TLE)",
                           std::string(kCelestrak) + "GROUP=" + group + "&FORMAT=tle"});
        sources.push_back({std::string("CelesTrak: ") + title + " (OMM)",
                           std::string(kCelestrak) + "GROUP=" + group + "&FORMAT=json"});
    }
    if (defaults != nullptr) {
        std::istringstream words(defaults->stringForKey(prefkeys::kKepsUserURLs));
        std::string url;
        while (words >> url) sources.push_back({url, url});
    }
    return sources;
}

std::string CelestrakCatalogURL(int32_t catalog, bool omm) {
    return std::string(kCelestrak) + "CATNR=" + std::to_string(catalog) +
           (omm ? "&FORMAT=json" : "&FORMAT=tle");
}

std::string ChosenKepsURL(const UserDefaults* defaults) {
    const std::string chosen =
        defaults != nullptr ? defaults->stringForKey(prefkeys::kKepsSourceURL) : std::string();
    return chosen.empty() ? kAmsatKepsURL : chosen;
}

bool CheckDownloadURL(const std::string& url, std::string* why) {
    if (StartsWith(url, "https://") && url.size() > 8) return true;
    for (const char* local : {"http://127.0.0.1:", "http://127.0.0.1/",
                              "http://localhost:", "http://localhost/", "http://[::1]"}) {
        if (StartsWith(url, local)) return true;
    }
    *why = StartsWith(url, "http://")
               ? url + " is plain http; element sets are fetched over https only"
               : url + " is not an https address";
    return false;
}

bool MayDownload(UserDefaults* defaults, const std::string& url, int64_t unixNow,
                 DownloadTrigger trigger, std::string* why) {
    if (!CheckDownloadURL(url, why)) return false;
    const std::string stopped = defaults->stringForKey(prefkeys::kKepsAutoStopped);
    if (trigger == DownloadTrigger::Automatic && !stopped.empty()) {
        *why = "automatic element-set updates are stopped (" + stopped +
               "); download once by hand to resume them";
        return false;
    }
    if (trigger != DownloadTrigger::Forced) {
        for (const Entry& e : ReadLog(defaults)) {
            const int64_t age = unixNow - e.when;
            if (e.url != url || age < 0 || age >= kDownloadIntervalSeconds) continue;
            *why = url + " was fetched " + std::to_string(age / 60) +
                   " minutes ago; the same address is fetched at most once every 2 hours "
                   "unless you insist (Insist in the download dialog, or veloran-cli keps "
                   "download --force)";
            return false;
        }
    }
    if (trigger != DownloadTrigger::Automatic && !stopped.empty())
        defaults->removeKey(prefkeys::kKepsAutoStopped);
    return true;
}

void RecordDownloadStarted(UserDefaults* defaults, const std::string& url, int64_t unixNow) {
    std::string log;
    for (const Entry& e : ReadLog(defaults)) {
        if (e.url == url || unixNow - e.when >= kDownloadIntervalSeconds) continue;
        log += std::to_string(e.when) + " " + e.url + " ";
    }
    log += std::to_string(unixNow) + " " + url;
    defaults->setString(prefkeys::kKepsFetchLog, log);
}

void RecordDownloadAnswer(UserDefaults* defaults, const std::string& url, int httpStatus,
                          const std::string& why) {
    if (httpStatus == 0 || httpStatus == 200) return;
    defaults->setString(
        prefkeys::kKepsAutoStopped,
        url + " answered " + std::to_string(httpStatus) + (why.empty() ? "" : ": " + why));
}

}  // namespace veloran
