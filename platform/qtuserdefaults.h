// The user-defaults store on a QSettings INI file (Veloran.conf in the
// config folder).
#pragma once

#include <QSettings>
#include <memory>
#include <string>

#include "data/userdefaults.h"

namespace veloran {

class QtUserDefaults : public UserDefaults {
  public:
    // Opens (or will create) the INI file at path.
    explicit QtUserDefaults(const std::string& path);

    bool contains(const std::string& key) const override;
    std::string stringForKey(const std::string& key) const override;
    void setString(const std::string& key, const std::string& value) override;
    void removeKey(const std::string& key) override;

    // Writes what is pending to disk. False, with the reason, when the file
    // cannot be written (a read-only folder, a full disk): the values stay in
    // memory and the old file stays whole.
    bool sync(std::string* error);

  private:
    std::unique_ptr<QSettings> settings_;
};

}  // namespace veloran
