// Typed access to the user-defaults store, and the in-memory store.

#include "data/userdefaults.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "data/cnumeric.h"

namespace veloran {

namespace {

bool ParseDouble(const std::string& text, double* out) {
    CNumericLocale cLocale;
    const char* start = text.c_str();
    char* end = nullptr;
    const double v = std::strtod(start, &end);
    if (end == start) return false;
    while (*end == ' ') ++end;
    if (*end != '\0') return false;
    *out = v;
    return true;
}

bool ParseLong(const std::string& text, long* out) {
    const char* start = text.c_str();
    char* end = nullptr;
    errno = 0;
    const long v = std::strtol(start, &end, 10);
    if (end == start || errno == ERANGE || v < INT32_MIN || v > INT32_MAX) return false;
    while (*end == ' ') ++end;
    if (*end != '\0') return false;
    *out = v;
    return true;
}

}  // namespace

bool UserDefaults::readInt(const std::string& key, int32_t* out) const {
    if (!contains(key)) return false;
    long v = 0;
    if (!ParseLong(stringForKey(key), &v)) return false;
    *out = static_cast<int32_t>(v);
    return true;
}

bool UserDefaults::readBool(const std::string& key, int32_t* out) const {
    if (!contains(key)) return false;
    const std::string text = stringForKey(key);
    if (text == "true" || text == "YES") {
        *out = 1;
        return true;
    }
    if (text == "false" || text == "NO") {
        *out = 0;
        return true;
    }
    double v = 0;
    if (!ParseDouble(text, &v)) return false;
    *out = v != 0.0 ? 1 : 0;
    return true;
}

bool UserDefaults::readDouble(const std::string& key, double* out) const {
    return contains(key) && ParseDouble(stringForKey(key), out);
}

bool UserDefaults::readFloat(const std::string& key, float* out) const {
    double v = 0;
    if (!readDouble(key, &v)) return false;
    *out = static_cast<float>(v);
    return true;
}

bool UserDefaults::readText(const std::string& key, char* out, size_t size) const {
    if (size == 0 || !contains(key)) return false;
    const std::string text = stringForKey(key);
    const size_t n = text.size() < size - 1 ? text.size() : size - 1;
    std::memcpy(out, text.data(), n);
    out[n] = '\0';
    return true;
}

int32_t UserDefaults::integerForKey(const std::string& key) const {
    int32_t v = 0;
    if (readInt(key, &v)) return v;
    double d = 0;
    if (readDouble(key, &d) && d > INT32_MIN && d < INT32_MAX) return static_cast<int32_t>(d);
    return 0;
}

bool UserDefaults::boolForKey(const std::string& key) const {
    int32_t v = 0;
    return readBool(key, &v) && v != 0;
}

void UserDefaults::setInteger(const std::string& key, int32_t value) {
    setString(key, std::to_string(value));
}

void UserDefaults::setBool(const std::string& key, bool value) {
    setString(key, value ? "true" : "false");
}

void UserDefaults::setDouble(const std::string& key, double value) {
    CNumericLocale cLocale;
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    setString(key, text);
}

bool MemoryUserDefaults::contains(const std::string& key) const {
    return values_.count(key) != 0;
}

std::string MemoryUserDefaults::stringForKey(const std::string& key) const {
    const auto it = values_.find(key);
    return it == values_.end() ? std::string() : it->second;
}

void MemoryUserDefaults::setString(const std::string& key, const std::string& value) {
    values_[key] = value;
    writes_.push_back(key);
}

void MemoryUserDefaults::removeKey(const std::string& key) {
    values_.erase(key);
}

}  // namespace veloran
