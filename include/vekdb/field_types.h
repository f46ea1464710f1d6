#pragma once

#include <concepts>
#include <cstdint>

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

/// The types a column can have. A type is the code of one ASCII letter; values are always held
/// as text, and the type only tells loading, saving, sorting, query and merge how to read it.
/// Any letter is a legal value: a file may declare a letter of its own.
struct VEKDB_PUBLIC DBFieldTypes {
    /// The code of a type: that of its letter.
    enum eType : std::uint32_t {
        none = 0,
        timecode = 't',    ///< punctuated timecode text
        timecode_s = 'T',  ///< the compact database form of a timecode
        text = 'a',        ///< text of any kind
        text_s = 'A',      ///< text as well
        time_of_day = 'D',
        date = 'd',  ///< the seconds of a moment since 1970, as a number
        dos_date = 'M',
        character = 'c',
        numeric = 'n',
        long_integer = 'l',  ///< "long" in files
        floating = 'f',      ///< "double" in files
    };
};

/// One column when a table is built or a column is added. A pointer array of descriptors ends
/// at the first entry whose type is none; `{}` makes such an entry.
struct VEKDB_PUBLIC DBFieldDesc {
    LightweightString<char> name;                   ///< compared without regard to case
    DBFieldTypes::eType type = DBFieldTypes::none;  ///< none ends an array
};

/// The type of a written name: one of "timecode", "timecode_s", "text", "text_s",
/// "time_of_day", "date", "dos_date", "char", "numeric", "long", "double" (case ignored), or a
/// single character, which stands for its own code. Anything else is none. `name` is not null.
VEKDB_PUBLIC DBFieldTypes::eType vekdb_string_to_fieldtype(const char* name);

/// The written name of a type, or null where it has none and is written as its letter.
VEKDB_PUBLIC const char* vekdb_fieldtype_to_string(DBFieldTypes::eType type);

/// A copy of `s` (null counts as empty) without any occurrence of `c`.
VEKDB_PUBLIC LightweightString<char> strip_char_from_string(char c, const char* s);

/// What is a character and no number: no value of a field by itself.
template <class C>
concept FieldCharacter = std::same_as<C, char> || std::same_as<C, wchar_t> ||
    std::same_as<C, char8_t> || std::same_as<C, char16_t> || std::same_as<C, char32_t>;
