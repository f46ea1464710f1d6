#pragma once

#include <charconv>
#include <cstddef>
#include <string_view>

/// A whole number as decimal text, without memory of its own.
class DecimalText {
public:
    template <class Integer>
    explicit DecimalText(Integer number) noexcept
        : end_(std::to_chars(text_, text_ + sizeof text_ - 1, number).ptr) {
        *end_ = '\0';
    }

    std::string_view view() const noexcept {
        return {text_, static_cast<std::size_t>(end_ - text_)};
    }
    const char* c_str() const noexcept { return text_; }

private:
    char text_[24];
    char* end_;
};
