#include <vekdb/host/config.h>

#include <vekdb/host/critical_section.h>

#include <algorithm>

namespace {

// The integer settings of the process.
class IntegerSettings {
public:
    static IntegerSettings& instance() {
        // Never destroyed: what is static may still ask when it goes.
        static IntegerSettings& settings = *new IntegerSettings;
        return settings;
    }

    bool read(const char* key, int& value) {
        const CriticalSectionHold hold(lock_);
        const auto setting = find(key);
        if (setting == settings_.end()) {
            return false;
        }
        value = setting->value;
        return true;
    }

    void set(const char* key, int value) {
        const CriticalSectionHold hold(lock_);
        const auto setting = find(key);
        if (setting != settings_.end()) {
            setting->value = value;
        } else {
            settings_.push_back({key, value});
        }
    }

    void clear(const char* key) {
        const CriticalSectionHold hold(lock_);
        const auto setting = find(key);
        if (setting != settings_.end()) {
            settings_.erase(setting);
        }
    }

private:
    struct Setting {
        LightweightString<char> key;
        int value;
    };

    std::vector<Setting>::iterator find(const char* key) {
        return std::find_if(settings_.begin(), settings_.end(),
                            [key](const Setting& setting) { return setting.key == key; });
    }

    CriticalSection lock_;
    std::vector<Setting> settings_;
};

}  // namespace

int config_int(const char* key, int defaultValue, int min, int max) {
    int value = 0;
    if (key == nullptr || !IntegerSettings::instance().read(key, value)) {
        return defaultValue;
    }
    return value < min ? min : value > max ? max : value;
}

void setConfigInt(const char* key, int value) {
    if (key != nullptr) {
        IntegerSettings::instance().set(key, value);
    }
}

void clearConfigInt(const char* key) {
    if (key != nullptr) {
        IntegerSettings::instance().clear(key);
    }
}

void configb::set(const char* key, const strp_field& field) {
    if (const Entry* entry = find(key)) {
        entries_[static_cast<std::size_t>(entry - entries_.data())].field = field;
    } else {
        entries_.push_back({key, field});
    }
}

const strp_field& configb::get(const char* key) const {
    static const strp_field none;
    const Entry* entry = find(key);
    return entry != nullptr ? entry->field : none;
}

LightweightString<char> configb::key(std::size_t i) const {
    return i < entries_.size() ? entries_[i].key : LightweightString<char>();
}

const configb::Entry* configb::find(const char* key) const {
    const auto entry = std::find_if(entries_.begin(), entries_.end(),
                                    [key](const Entry& e) { return e.key == key; });
    return entry != entries_.end() ? &*entry : nullptr;
}
