#include <vekdb/field_types.h>

#include <cstring>

namespace {

struct TypeName {
    const char* name;
    DBFieldTypes::eType type;
    bool written;
};

constexpr TypeName typeNames[] = {
    {"timecode", DBFieldTypes::timecode, true},
    {"timecode_s", DBFieldTypes::timecode_s, true},
    {"text", DBFieldTypes::text, true},
    {"text_s", DBFieldTypes::text_s, true},
    {"time_of_day", DBFieldTypes::time_of_day, true},
    {"date", DBFieldTypes::date, true},
    {"dos_date", DBFieldTypes::dos_date, true},
    {"char", DBFieldTypes::character, false},
    {"numeric", DBFieldTypes::numeric, true},
    {"long", DBFieldTypes::long_integer, true},
    {"double", DBFieldTypes::floating, true},
};

}  // namespace

DBFieldTypes::eType vekdb_string_to_fieldtype(const char* name) {
    for (const TypeName& entry : typeNames) {
        if (LightweightString<char>::icompare(entry.name, name) == 0) return entry.type;
    }
    if (name[0] == '\0' || name[1] != '\0') return DBFieldTypes::none;
    return static_cast<DBFieldTypes::eType>(static_cast<unsigned char>(name[0]));
}

const char* vekdb_fieldtype_to_string(DBFieldTypes::eType type) {
    for (const TypeName& entry : typeNames) {
        if (entry.written && entry.type == type) return entry.name;
    }
    return nullptr;
}

LightweightString<char> strip_char_from_string(char c, const char* s) {
    LightweightString<char> stripped;
    if (s == nullptr || c == '\0') return s;
    while (const char* found = std::strchr(s, c)) {
        stripped.append(s, static_cast<std::size_t>(found - s));
        s = found + 1;
    }
    stripped.append(s, std::strlen(s));
    return stripped;
}
