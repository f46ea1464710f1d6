#pragma once

#include <string_view>

/// A table's parameters: up to 40 pairs of name and value in the order in which they came,
/// kept as texts of their own. A text whose memory could not be had is null and reads as "".
class Parameters {
public:
    static constexpr unsigned most = 40;
    static constexpr unsigned none = 0xFFFFFFFF;

    Parameters() = default;
    ~Parameters() { clear(); }
    Parameters(const Parameters&) = delete;
    Parameters& operator=(const Parameters&) = delete;

    unsigned count() const { return count_; }
    const char* name(unsigned slot) const;
    const char* value(unsigned slot) const;

    /// The first slot of this name, case ignored, or none. Null finds nothing.
    unsigned find(const char* name) const;
    /// Appends a pair as it is; nothing when there is no room.
    void append(std::string_view name, std::string_view value);
    /// Replaces a value. `value` may be the text that is replaced.
    void replace(unsigned slot, std::string_view value);
    void clear();

private:
    struct Pair {
        char* name;
        char* value;
    };

    Pair pairs_[most] = {};
    unsigned count_ = 0;
};
