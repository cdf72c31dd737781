// The online callsign lookup (HamQTH's XML service, or one that answers the
// same way): the settings, the request addresses, the answer parser and a
// cache. The fetch itself goes through the platform's downloader; nothing
// here touches the network.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "data/userdefaults.h"

namespace veloran {

namespace callbookkeys {
constexpr const char* kEnabled = "callbook_enabled";  // off unless the user turns it on
constexpr const char* kUser = "callbook_user";
// Read once from a settings file of an older release, then moved to the
// password file and removed from the settings.
constexpr const char* kPassword = "callbook_password";
constexpr const char* kUrl = "callbook_url";  // the service's XML address
}  // namespace callbookkeys

constexpr const char* kCallbookDefaultUrl = "https://www.hamqth.com/xml.php";
// A lookup gives up after this long: during a pass there is no time to wait.
constexpr double kCallbookTimeoutSeconds = 10.0;

struct CallbookSettings {
    bool enabled = false;
    std::string user;
    std::string password;
    std::string url = kCallbookDefaultUrl;
};

// The password lives apart from the settings file, in this file of the
// config folder: the password alone (no line end needed), readable and
// writable by its owner only.
constexpr const char* kCallbookPasswordFileName = "callbook-password";
std::string CallbookPasswordPath(const std::string& configDir);

// Stores the password in the config folder's password file, created 0600 (an
// existing one is made 0600 first); an empty password removes the file.
// 0 with *error filled when the folder or the file cannot be written.
int StoreCallbookPassword(const std::string& configDir, const std::string& password,
                          std::string* error);

// The settings as stored; missing keys leave the defaults (off). The password
// comes from the password file in configDir; a password still in the settings
// is moved there and removed from them (kept in the settings when the file
// cannot be written).
void ReadCallbookSettings(UserDefaults* defaults, const std::string& configDir,
                          CallbookSettings* settings);

// Stores what the operator set: enabled, user and url in the settings (an
// empty url, or the default one, is left out so the default applies); the
// password goes through StoreCallbookPassword, and only when
// passwordChanged (an empty one then removes the file). The password is never
// put in the settings, and one left there by an older release is removed
// once the file holds the new one. 0 with *error filled, and the settings
// untouched, when the password file cannot be written.
int WriteCallbookSettings(UserDefaults* defaults, const std::string& configDir,
                          const CallbookSettings* settings, bool passwordChanged,
                          std::string* error);

// The address that opens a session: "<url>?u=USER&p=PASSWORD", both
// percent-encoded.
std::string CallbookLoginUrl(const CallbookSettings* settings);
// The address that looks up a call within a session.
std::string CallbookSearchUrl(const CallbookSettings* settings, const std::string& session,
                              const std::string& call);

struct CallbookRecord {
    std::string call;     // as the service spells it, capitals
    std::string name;     // the name operators use on the air
    std::string qth;      // town
    std::string grid;     // Maidenhead locator
    std::string country;  // the service's country name
};

enum class CallbookReply {
    Session,         // a session was opened: *text is its id
    Found,           // *record is filled
    NotFound,        // the service does not know the call
    SessionExpired,  // log in again
    Error,           // *text says why, in the service's words or ours
};

// Reads one answer of the service.
CallbookReply ParseCallbookReply(const std::string& xml, CallbookRecord* record, std::string* text);

// Answers already fetched, so a call typed twice during a pass is looked up
// once. Calls the service did not know are kept too.
struct CallbookCache {
    struct Entry {
        uint32_t fetchedUTC = 0;  // seconds since 1904
        bool found = false;
        CallbookRecord record;
    };
    std::map<std::string, Entry> entries;  // by call, capitals
    size_t capacity = 500;
    uint32_t maxAgeSeconds = 86400;
};

// The cached answer for a call not older than maxAgeSeconds, or null.
const CallbookCache::Entry* CachedCall(const CallbookCache* cache, const std::string& call,
                                       uint32_t nowUTC);
// Keeps an answer, dropping the oldest entry when full.
void CacheCall(CallbookCache* cache, const std::string& call, bool found,
               const CallbookRecord* record, uint32_t nowUTC);

}  // namespace veloran
