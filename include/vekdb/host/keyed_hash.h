#pragma once

#include <cstdint>
#include <string_view>

#include <vekdb/host/visibility.h>

namespace Quor {

/// Hash of a text under a key that every process draws anew, so that nobody can choose texts
/// beforehand that all meet in one place of a map. Not to be stored or shown.
VEKDB_PUBLIC std::uint64_t keyedHash(std::string_view text) noexcept;

/// For maps whose keys come from files.
struct VEKDB_PUBLIC KeyedHash {
    /// Views are looked up without being made strings.
    using is_transparent = void;
    /// `keyedHash`.
    std::size_t operator()(std::string_view text) const noexcept {
        return static_cast<std::size_t>(keyedHash(text));
    }
};

}  // namespace Quor
