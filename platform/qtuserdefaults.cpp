// The user-defaults store on a QSettings INI file. Values are kept as text:
// the core formats and parses numbers itself, in the C locale, so a German
// desktop never writes "145,9" into the settings.

#include "platform/qtuserdefaults.h"

#include <QString>

namespace veloran {

namespace {

QString Key(const std::string& key) {
    return QString::fromStdString(key);
}

}  // namespace

QtUserDefaults::QtUserDefaults(const std::string& path)
    : settings_(std::make_unique<QSettings>(QString::fromStdString(path), QSettings::IniFormat)) {}

bool QtUserDefaults::contains(const std::string& key) const {
    return settings_->contains(Key(key));
}

std::string QtUserDefaults::stringForKey(const std::string& key) const {
    return settings_->value(Key(key)).toString().toStdString();
}

void QtUserDefaults::setString(const std::string& key, const std::string& value) {
    settings_->setValue(Key(key), QString::fromStdString(value));
}

void QtUserDefaults::removeKey(const std::string& key) {
    settings_->remove(Key(key));
}

bool QtUserDefaults::sync(std::string* error) {
    settings_->sync();
    switch (settings_->status()) {
        case QSettings::NoError:
            return true;
        case QSettings::AccessError:
            if (error)
                *error = "cannot write the settings file " + settings_->fileName().toStdString();
            return false;
        case QSettings::FormatError:
            if (error)
                *error = "the settings file " + settings_->fileName().toStdString() + " is damaged";
            return false;
    }
    return false;
}

}  // namespace veloran
