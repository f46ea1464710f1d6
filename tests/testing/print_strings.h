#pragma once

#include <vekdb/host/cookie.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/text_util.h>

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
