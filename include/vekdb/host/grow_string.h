#pragma once

#include <cstddef>
#include <string_view>

#include <vekdb/host/visibility.h>

/// A buffer that things print themselves into. It takes its room from the host
/// allocator once the text is no longer short, grows by doubling, and always ends
/// in a 0 character.
class VEKDB_PUBLIC GrowString {
public:
    /// Empty.
    GrowString() noexcept {}
    GrowString(const GrowString&) = delete;
    GrowString& operator=(const GrowString&) = delete;
    ~GrowString();

    /// A null pointer and a 0 character append nothing. On BadAlloc the text is
    /// as it was. The text appended may be part of the buffer's own.
    void append(const char* text);
    void append(char c);
    void append(std::string_view text);

    /// The text; never null. It holds until the next append.
    operator const char*() const noexcept { return text_ != nullptr ? text_ : ""; }

    /// Bytes of the text, the 0 character at its end not counted.
    std::size_t length() const noexcept { return length_; }

private:
    char* newPlaceFor(std::size_t length);
    void letGo(char* place) noexcept;

    char* text_ = nullptr;
    std::size_t length_ = 0;
    std::size_t capacity_ = 0;
    char short_[64];
};
