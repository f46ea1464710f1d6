#include <cstdint>

#include <vekdb/host/config.h>
#include <vekdb/host/cookie.h>
#include <vekdb/record.h>
#include <vekdb/table.h>
#include "vekdb/columns/column_list.h"

namespace {

struct SettingsKey {
    const char* field;
    const char* key;
    bool reel;  // only where reels may be edited
};

// The names of a log's columns and the settings of a clip that they fill.
constexpr SettingsKey settingsKeys[] = {
    {"notes", "notes", false},      {"who", "who", false},
    {"scene", "scene", false},      {"description", "description", false},
    {"shot", "shot", false},        {"reel", "reelid", false},
    {"snd reel", "reelid1", true},  {"24P reel", "24P_reel", true},
    {"cam reel", "camreel", true},  {"comp reel", "comp_reel", true},
    {"lab reel", "lab_reel", true},
};

bool reelFieldsEditable() {
    static const bool editable =
        config_int("dbv_reel_field_editable", 1, INT32_MIN, INT32_MAX) != 0;
    return editable;
}

const SettingsKey* settingsKeyFor(const char* field, bool reels) {
    for (const SettingsKey& entry : settingsKeys) {
        if ((reels || !entry.reel) && LightweightString<char>::icompare(field, entry.field) == 0)
            return &entry;
    }
    return nullptr;
}

strp_field settingOf(const LightweightString<char>& value) {
    strp_field setting;
    setting.set(value);
    return setting;
}

}  // namespace

int dbrecord::update(configb* settings) const {
    const bool reels = reelFieldsEditable();
    const vekdb* table = get_container();
    if (table == nullptr || settings == nullptr) return 0;
    unsigned name = table->get_fieldnum("name");
    if (name == 0xFFFFFFFF) return 0;
    strp_field clip = settingOf(getField(static_cast<unsigned short>(name)));
    settings->set("slate/take", clip);
    settings->set("name", clip);

    int copied = 0;
    for (unsigned i = 0; i < count_; ++i) {
        const SettingsKey* entry = settingsKeyFor(table->get_fieldname(i), reels);
        if (entry == nullptr) continue;
        settings->set(entry->key, settingOf(getField(static_cast<unsigned short>(i))));
        ++copied;
    }
    return copied;
}

bool vekdb::update(configb* settings, int row) {
    const dbrecord* record = get_record(static_cast<unsigned>(row));
    if (record == nullptr || record->update(settings) == 0) return false;
    unsigned field = get_fieldnum("cookie");
    if (field == ColumnList::none) return true;
    const char* text = record->get_field(static_cast<unsigned short>(field));
    if (text == nullptr) return true;
    Cookie cookie(text, false);
    if (cookie.type != cookieTypeInvalid) addToUpdate(cookie);
    return true;
}
