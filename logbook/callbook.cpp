// Callsign lookup requests and answers. HamQTH answers in XML under a
// <HamQTH> root: <session><session_id> after a login, <session><error> on a
// failure, <search> with the station's fields after a lookup.

#include "logbook/callbook.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <pugixml.hpp>

#include "data/files.h"

namespace veloran {

namespace {

// The program name the service asks lookups to carry.
constexpr const char* kProgramName = "Veloran";
// HamQTH's own error texts that mean something to us.
constexpr const char* kNotFoundText = "Callsign not found";
constexpr const char* kExpiredText = "Session does not exist or expired";

std::string Encode(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~') {
            out += static_cast<char>(c);
        } else {
            char buf[4];
            std::snprintf(buf, sizeof buf, "%%%02X", c);
            out += buf;
        }
    }
    return out;
}

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string Trimmed(const std::string& text) {
    size_t begin = 0, end = text.size();
    while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
    while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
    return text.substr(begin, end - begin);
}

std::string Child(const pugi::xml_node& node, const char* name) {
    return node.child(name).text().as_string();
}

}  // namespace

std::string CallbookPasswordPath(const std::string& configDir) {
    return configDir + "/" + kCallbookPasswordFileName;
}

int StoreCallbookPassword(const std::string& configDir, const std::string& password,
                          std::string* error) {
    const std::string path = CallbookPasswordPath(configDir);
    if (password.empty()) {
        if (std::remove(path.c_str()) == 0 || errno == ENOENT) return 1;
        if (error) *error = "cannot remove " + path + ": " + std::strerror(errno);
        return 0;
    }
    if (!MakeDirectories(configDir)) {
        if (error) *error = "cannot create the folder " + configDir;
        return 0;
    }
    // The rewrite keeps the permissions of the file it replaces, so the file
    // is made private before anything is written into it.
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0 || fchmod(fd, 0600) != 0) {
        if (error) *error = "cannot write " + path + ": " + std::strerror(errno);
        if (fd >= 0) close(fd);
        return 0;
    }
    close(fd);
    if (!AtomicWriteFile(path, [&password](FILE* out) {
            return std::fwrite(password.data(), 1, password.size(), out) == password.size();
        })) {
        if (error) *error = "cannot write " + path;
        return 0;
    }
    return 1;
}

void ReadCallbookSettings(UserDefaults* defaults, const std::string& configDir,
                          CallbookSettings* settings) {
    int32_t enabled = 0;
    if (defaults->readBool(callbookkeys::kEnabled, &enabled)) settings->enabled = enabled != 0;
    if (defaults->contains(callbookkeys::kUser))
        settings->user = defaults->stringForKey(callbookkeys::kUser);
    if (!defaults->stringForKey(callbookkeys::kUrl).empty())
        settings->url = defaults->stringForKey(callbookkeys::kUrl);
    if (defaults->contains(callbookkeys::kPassword)) {
        const std::string old = defaults->stringForKey(callbookkeys::kPassword);
        std::string error;
        if (old.empty() || StoreCallbookPassword(configDir, old, &error)) {
            defaults->removeKey(callbookkeys::kPassword);
        } else {
            std::fprintf(stderr, "callbook: %s; the password stays in the settings\n",
                         error.c_str());
            settings->password = old;
            return;
        }
    }
    const std::string path = CallbookPasswordPath(configDir);
    std::string text;
    if (!ReadWholeFile(path, &text)) return;
    struct stat st {};
    if (stat(path.c_str(), &st) == 0 && (st.st_mode & 077) != 0) chmod(path.c_str(), 0600);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    settings->password = text;
}

int WriteCallbookSettings(UserDefaults* defaults, const std::string& configDir,
                          const CallbookSettings* settings, bool passwordChanged,
                          std::string* error) {
    if (passwordChanged) {
        if (!StoreCallbookPassword(configDir, settings->password, error)) return 0;
        defaults->removeKey(callbookkeys::kPassword);
    }
    defaults->setBool(callbookkeys::kEnabled, settings->enabled);
    defaults->setString(callbookkeys::kUser, Trimmed(settings->user));
    const std::string url = Trimmed(settings->url);
    if (url.empty() || url == kCallbookDefaultUrl)
        defaults->removeKey(callbookkeys::kUrl);
    else
        defaults->setString(callbookkeys::kUrl, url);
    return 1;
}

std::string CallbookLoginUrl(const CallbookSettings* settings) {
    return settings->url + "?u=" + Encode(settings->user) + "&p=" + Encode(settings->password);
}

std::string CallbookSearchUrl(const CallbookSettings* settings, const std::string& session,
                              const std::string& call) {
    return settings->url + "?id=" + Encode(session) + "&callsign=" + Encode(Upper(call)) +
           "&prg=" + kProgramName;
}

CallbookReply ParseCallbookReply(const std::string& xml, CallbookRecord* record,
                                 std::string* text) {
    pugi::xml_document doc;
    if (!doc.load_buffer(xml.data(), xml.size())) {
        *text = "the callsign service sent something that is not XML";
        return CallbookReply::Error;
    }
    const pugi::xml_node root = doc.first_child();
    const pugi::xml_node session = root.child("session");
    const std::string error = Child(session, "error");
    if (!error.empty()) {
        *text = error;
        if (error == kNotFoundText) return CallbookReply::NotFound;
        if (error == kExpiredText) return CallbookReply::SessionExpired;
        return CallbookReply::Error;
    }
    const pugi::xml_node search = root.child("search");
    if (search) {
        record->call = Upper(Child(search, "callsign"));
        record->name = Child(search, "nick");
        if (record->name.empty()) record->name = Child(search, "adr_name");
        record->qth = Child(search, "qth");
        record->grid = Child(search, "grid");
        record->country = Child(search, "country");
        if (record->call.empty()) {
            *text = "the callsign service answered without a call";
            return CallbookReply::Error;
        }
        return CallbookReply::Found;
    }
    *text = Child(session, "session_id");
    if (!text->empty()) return CallbookReply::Session;
    *text = "the callsign service gave neither a session nor an answer";
    return CallbookReply::Error;
}

const CallbookCache::Entry* CachedCall(const CallbookCache* cache, const std::string& call,
                                       uint32_t nowUTC) {
    auto hit = cache->entries.find(Upper(call));
    if (hit == cache->entries.end() || nowUTC - hit->second.fetchedUTC > cache->maxAgeSeconds)
        return nullptr;
    return &hit->second;
}

void CacheCall(CallbookCache* cache, const std::string& call, bool found,
               const CallbookRecord* record, uint32_t nowUTC) {
    const std::string key = Upper(call);
    if (cache->entries.size() >= cache->capacity && !cache->entries.count(key)) {
        auto oldest = cache->entries.begin();
        for (auto it = cache->entries.begin(); it != cache->entries.end(); ++it)
            if (it->second.fetchedUTC < oldest->second.fetchedUTC) oldest = it;
        cache->entries.erase(oldest);
    }
    CallbookCache::Entry& entry = cache->entries[key];
    entry.fetchedUTC = nowUTC;
    entry.found = found;
    entry.record = found && record ? *record : CallbookRecord();
}

}  // namespace veloran
