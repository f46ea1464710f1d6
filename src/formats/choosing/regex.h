#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace vek::formats {

/// A regular expression that takes time in proportion to the text it is tried on and a bounded
/// room, whoever wrote it: what cannot be had at that price (back-references, looking ahead) is
/// refused. The only place that knows RE2.
class Regex {
public:
    /// A Failure with wrongUsage that says why the text is none.
    explicit Regex(const std::string& text);
    ~Regex();
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;

    /// Whether it matches anywhere in the text. "." is a character of a well-formed text and a
    /// byte of any other, line ends included; "^" and "$" are the ends of the whole text.
    bool matches(std::string_view text) const;

private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

}  // namespace vek::formats
