#pragma once

#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/visibility.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace Quor {

/// A 128-bit identity. The default one is nil, all zeros.
struct VEKDB_PUBLIC UUID {
    std::uint8_t bytes[16] = {};  ///< the first one counts most where two are compared

    /// Negative, 0 or positive, by the bytes in their order.
    int compare(const UUID& other) const noexcept {
        return std::memcmp(bytes, other.bytes, sizeof bytes);
    }

    /// Equal identities have equal values; for tables keyed by identity.
    std::size_t hashValue() const noexcept {
        std::uint64_t halves[2];
        std::memcpy(halves, bytes, sizeof halves);
        std::uint64_t mixed = (halves[0] ^ (halves[1] * 0x9E3779B97F4A7C15u));
        mixed = (mixed ^ (mixed >> 32)) * 0xD6E8FEB86659FD93u;
        return static_cast<std::size_t>(mixed ^ (mixed >> 32));
    }

    /// By `compare`.
    friend bool operator==(const UUID& a, const UUID& b) noexcept { return a.compare(b) == 0; }
    friend bool operator<(const UUID& a, const UUID& b) noexcept { return a.compare(b) < 0; }
};

}  // namespace Quor

/// Kinds of cookie. Any other code is carried as it is.
enum CookieType : unsigned char {
    cookieTypeInvalid = 'I',
    cookieTypeM = 'M',
    cookieTypeB = 'B',
};

/// Names a stored object; a plain value. The default cookie, of nil identity and
/// the type code I, names nothing.
///
/// The text form is 38 lower-case hexadecimal digits: 32 of the identity, 4 of the
/// field, 2 of the type code. It is fit to be a file's name. The flag that goes
/// with it is of no consequence here: every text reads back under either value.
class VEKDB_PUBLIC Cookie {
public:
    /// Names nothing.
    Cookie() noexcept = default;

    /// Reads the text form in any case, white space around it allowed. Anything
    /// else, a null pointer included, gives the default cookie.
    explicit Cookie(const char* text, bool flag);
    explicit Cookie(const LightweightString<wchar_t>& text, bool flag);
    static Cookie fromText(std::string_view text) noexcept;

    /// The text form.
    LightweightString<char> asString(bool flag) const;

    /// Total order: by identity, then field, then type code. Negative, 0 or
    /// positive; 0 exactly for equal cookies.
    int compare(const Cookie& other) const noexcept;

    /// By `compare`.
    friend bool operator==(const Cookie& a, const Cookie& b) noexcept { return a.compare(b) == 0; }
    friend bool operator<(const Cookie& a, const Cookie& b) noexcept { return a.compare(b) < 0; }

    Quor::UUID uuid;                         ///< the object
    std::uint16_t field = 0;                 ///< a part of it
    unsigned char type = cookieTypeInvalid;  ///< a CookieType, or any other code
};

/// The cookie with the given type code, and with the given field unless that is
/// 255, which leaves the field as it is.
VEKDB_PUBLIC Cookie convertCookie(const Cookie& cookie, CookieType type, unsigned char field);
