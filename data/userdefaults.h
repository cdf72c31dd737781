// The user-defaults store as the core sees it: string values under short
// keys, with typed helpers that format and parse numbers in the C locale.
// The desktop application backs it with its settings file; tests and the
// command-line tools use MemoryUserDefaults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace veloran {

class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    virtual bool contains(const std::string& key) const = 0;
    // The stored text; empty when the key is missing.
    virtual std::string stringForKey(const std::string& key) const = 0;
    virtual void setString(const std::string& key, const std::string& value) = 0;
    virtual void removeKey(const std::string& key) = 0;

    // Typed reads: false, leaving *out as it was, when the key is missing or
    // its text is not of the type.
    bool readInt(const std::string& key, int32_t* out) const;
    bool readBool(const std::string& key,
                  int32_t* out) const;  // "true"/"false", or a number (non-zero is true)
    bool readDouble(const std::string& key, double* out) const;
    bool readFloat(const std::string& key, float* out) const;
    // Copies the text, cut to fit size bytes.
    bool readText(const std::string& key, char* out, size_t size) const;

    // As the platform's store answers: 0 or false when missing.
    int32_t integerForKey(const std::string& key) const;
    bool boolForKey(const std::string& key) const;

    void setInteger(const std::string& key, int32_t value);
    void setBool(const std::string& key, bool value);
    // Written with enough digits to read back the same double.
    void setDouble(const std::string& key, double value);
};

// Keeps the values in memory and remembers the order of writes.
class MemoryUserDefaults : public UserDefaults {
  public:
    bool contains(const std::string& key) const override;
    std::string stringForKey(const std::string& key) const override;
    void setString(const std::string& key, const std::string& value) override;
    void removeKey(const std::string& key) override;

    const std::map<std::string, std::string>& values() const { return values_; }
    // Every key in the order it was written, repeats included.
    const std::vector<std::string>& writes() const { return writes_; }

  private:
    std::map<std::string, std::string> values_;
    std::vector<std::string> writes_;
};

}  // namespace veloran
