#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vek::browse {

/// A line that somebody types: text with a cursor in it, always whole characters of UTF-8.
class LineInput {
public:
    explicit LineInput(std::string text = {}) : text_(std::move(text)), at_(text_.size()) {}

    /// False for a key that has no meaning in a line.
    bool press(const std::string& key);
    const std::string& text() const { return text_; }
    std::string_view beforeCursor() const { return std::string_view(text_).substr(0, at_); }

private:
    std::size_t before() const;
    std::size_t behind() const;

    std::string text_;
    std::size_t at_;
};

/// Whether a key is a character to type, and no key with a name.
bool isCharacter(const std::string& key);

/// A question at the foot of the screen that a line answers.
struct Prompt {
    std::string title;
    LineInput line;
    std::function<void(const std::string&)> answered;
    std::function<void(const std::string&)> typed = {};  ///< after each key
    std::function<void()> cancelled = {};
};

/// One that a single key answers.
struct Question {
    struct Answer {
        std::string key;
        std::function<void()> run;
    };

    std::string text;
    std::vector<Answer> answers;  ///< every other key leaves it
};

}  // namespace vek::browse
