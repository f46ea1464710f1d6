#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// What was seen of a world: the text itself where it is to be read, otherwise a number that
/// tells different texts apart, so that most scripts are compared without writing them out.
class Account {
public:
    explicit Account(bool spelled) : spelled_(spelled) {}

    Account& operator<<(std::string_view text) {
        if (spelled_) {
            text_ += text;
        } else {
            mix(std::hash<std::string_view>()(text));
        }
        return *this;
    }
    Account& operator<<(const char* text) { return *this << std::string_view(text); }
    Account& operator<<(std::integral auto number) {
        if (spelled_) {
            text_ += std::to_string(number);
        } else {
            mix(static_cast<std::uint64_t>(number) + 1);
        }
        return *this;
    }

    /// Helps a reader and says nothing.
    Account& mark(const char* text) {
        if (spelled_) {
            text_ += text;
        }
        return *this;
    }

    const std::string& text() const { return text_; }
    std::uint64_t digest() const { return digest_; }

private:
    void mix(std::uint64_t value) {
        digest_ = (digest_ ^ value) * 0x9E3779B97F4A7C15U;
        digest_ ^= digest_ >> 29;
    }

    bool spelled_;
    std::string text_;
    std::uint64_t digest_ = 0;
};
