#pragma once

#include "host/cookie.h"
#include "host/lightweight_string.h"
#include "host/text_util.h"

#include <ostream>

// How failed tests show the library's values.
inline void PrintTo(const LightweightString<char>& text, std::ostream* out) {
    *out << '"' << text.view() << '"';
}

inline void PrintTo(const LightweightString<wchar_t>& text, std::ostream* out) {
    *out << "L\"" << toUTF8(text).view() << '"';
}

inline void PrintTo(const Cookie& cookie, std::ostream* out) {
    *out << cookie.asString(false).view();
}
