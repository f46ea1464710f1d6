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

/// Puts another text in the place of what a regular expression matches.
class Substitution {
public:
    /// What the place is found by, and how often.
    struct Manner {
        bool everywhere = false;  ///< each place, not the first alone
        bool ignoresCase = false;
    };

    /// In `with` \1 to \9 are what the groups match, \0 is what all of it does, and \\ a
    /// backslash. A Failure with wrongUsage that says what is wrong with either of the two.
    Substitution(const std::string& expression, const std::string& with, Manner manner);
    ~Substitution();
    Substitution(Substitution&&) noexcept;

    void apply(std::string& text) const;

private:
    struct Compiled;
    std::unique_ptr<Compiled> compiled_;
};

}  // namespace vek::formats
