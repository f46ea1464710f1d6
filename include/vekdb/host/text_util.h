#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

#include <string_view>

// Text rules of the house. They are the same under every locale of the host
// process, so that a file means the same on every machine: only the 7-bit
// characters have a class or a case, and numbers have a decimal point.

/// A blank, tab, vertical tab, form feed or line end.
constexpr bool isAsciiSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Below the blank, or the one above all others.
constexpr bool isAsciiControl(char c) noexcept {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// 0 to 9.
constexpr bool isAsciiDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

/// A small letter for one of A to Z; any other character as it is.
template <class C>
constexpr C asciiLower(C c) noexcept {
    return c >= C('A') && c <= C('Z') ? static_cast<C>(c + ('a' - 'A')) : c;
}

/// "true" or "false".
VEKDB_PUBLIC LightweightString<char> BoolAsString(bool value);

/// Reads true, false, t, f, 1 and 0 in any case. Answers whether the text was one
/// of these; otherwise value is untouched.
VEKDB_PUBLIC bool BoolFromString(const LightweightString<char>& text, bool& value);

/// Decimal digits with blanks around them; anything else, or a number past 32
/// bits, gives otherwise.
VEKDB_PUBLIC unsigned UIntFromString(const LightweightString<char>& text, unsigned otherwise);
VEKDB_PUBLIC unsigned parseUInt(std::string_view text, unsigned otherwise) noexcept;

/// Decimal digits, with a minus in front of a negative number.
VEKDB_PUBLIC LightweightString<char> StringFromInteger(int number);

/// The text that printf's "%.8lf" gives in the "C" locale.
VEKDB_PUBLIC LightweightString<char> StringFromDouble(double number);

/// Reads a number as atoi and atof do in the "C" locale: white space, a sign, and
/// as much as makes sense, 0 when nothing does. Integers out of range give the
/// nearest int; doubles out of range give infinity or 0.
VEKDB_PUBLIC int parseInt(std::string_view text) noexcept;
VEKDB_PUBLIC double parseDouble(std::string_view text) noexcept;

/// True for the null string and for a text of 7-bit white space only.
VEKDB_PUBLIC bool isEssentiallyEmpty(const LightweightString<char>& text);
VEKDB_PUBLIC bool isEssentiallyEmpty(std::string_view text) noexcept;

/// The letters A to Z become a to z.
VEKDB_PUBLIC void toLower(LightweightString<char>& text);

/// Whatever is no UTF-8, or no code point, becomes U+FFFD.
VEKDB_PUBLIC LightweightString<wchar_t> fromUTF8(const LightweightString<char>& text);
VEKDB_PUBLIC LightweightString<char> toUTF8(const LightweightString<wchar_t>& text);

/// A path of any bytes, as the system has them, in the form in which the library takes paths: a
/// byte that belongs to no UTF-8 character becomes the code unit U+DC00 + byte, which no text has.
VEKDB_PUBLIC LightweightString<wchar_t> pathFromBytes(const LightweightString<char>& bytes);

/// The bytes that name a file to the system, the reverse of pathFromBytes. False, with bytes
/// untouched, for the null path and for one that no file can have: with a character that is no
/// code point, or one that ends the name early, or with units for bytes that are a character.
VEKDB_PUBLIC bool pathToUTF8(const LightweightString<wchar_t>& path,
                             LightweightString<char>& bytes);

namespace Quor {

/// Each byte becomes the character of that number.
VEKDB_PUBLIC LightweightString<wchar_t> WStringFromAscii(const char* text);

}  // namespace Quor
