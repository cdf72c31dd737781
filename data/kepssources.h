// Where element sets are downloaded from, and the rules every download
// follows: https only, at most 32 MB, the same address at most once every
// two hours unless the user insists, and automatic updates stopped after any
// answer but 200 until the user downloads by hand. CelesTrak asks exactly
// this of programs and blocks those that ignore it. The state lives in the
// user-defaults store.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "data/userdefaults.h"

namespace veloran {

// The AMSAT bulletin, the default source.
constexpr const char* kAmsatKepsURL = "https://www.amsat.org/amsat/ftp/keps/current/nasa.all";
constexpr long long kMaxDownloadBytes = 32LL * 1024 * 1024;
constexpr int64_t kDownloadIntervalSeconds = 2 * 3600;

namespace prefkeys {
constexpr const char* kKepsSourceURL = "kepsSourceURL";  // the source chosen; empty: AMSAT
constexpr const char* kKepsUserURLs = "kepsUserURLs";    // the user's own sources, blank-separated
constexpr const char* kKepsFetchLog =
    "kepsFetchLog";  // "UNIXSECONDS URL ..." of the fetches of the last two hours
constexpr const char* kKepsAutoStopped =
    "kepsAutoUpdateStopped";  // why automatic updates stopped; empty: they run
}  // namespace prefkeys

struct KepsSource {
    std::string name;  // as a menu shows it
    std::string url;
};

// The AMSAT bulletin, the CelesTrak groups operators use most (amateur,
// stations, weather, active) in TLE and OMM JSON form, then the user's URLs.
std::vector<KepsSource> KepsSources(const UserDefaults* defaults);

// One satellite from CelesTrak by catalogue number, as TLE or OMM JSON.
std::string CelestrakCatalogURL(int32_t catalog, bool omm);

// The source to download from: the chosen one, else the AMSAT bulletin.
std::string ChosenKepsURL(const UserDefaults* defaults);

// https only; plain http is accepted for the loopback host (a local mirror,
// and the tests' server). False with the reason otherwise.
bool CheckDownloadURL(const std::string& url, std::string* why);

enum class DownloadTrigger {
    Automatic,  // the periodic update
    User,       // the user asked (menu, command line)
    Forced,     // the user insists: the two-hour rule is waived
};

// Whether a download of url may start at unixNow. A user's or forced
// request also resumes stopped automatic updates. False with the reason.
bool MayDownload(UserDefaults* defaults, const std::string& url, int64_t unixNow,
                 DownloadTrigger trigger, std::string* why);

// Notes that url was fetched at unixNow (whatever the outcome).
void RecordDownloadStarted(UserDefaults* defaults, const std::string& url, int64_t unixNow);

// Notes the server's answer: any HTTP status but 200 stops the automatic
// updates (status 0, no answer at all, does not).
void RecordDownloadAnswer(UserDefaults* defaults, const std::string& url, int httpStatus,
                          const std::string& why);

}  // namespace veloran
