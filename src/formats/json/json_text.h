#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vek::formats {

/// Reads the pieces of a JSON text, one after the other, and accepts exactly what the format
/// allows. Changes nothing of the text. After a piece that is not accepted nothing holds.
class JsonText {
public:
    /// A string as it stands between its quotes.
    struct String {
        std::string_view raw;
        bool hasEscapes = false;
    };

    JsonText(const char* begin, const char* end) : at_(begin), end_(end) {}

    const char* at() const { return at_; }
    bool atEnd() const { return at_ == end_; }
    char peek() const { return at_ == end_ ? '\0' : *at_; }
    std::size_t line() const { return line_; }

    /// Blanks as the format has them.
    void skipBlanks() {
        if (at_ != end_ && static_cast<unsigned char>(*at_) <= ' ') skipSomeBlanks();
    }
    /// All control characters and blanks, which may stand between the values of a text.
    void skipBetween();
    bool take(char c) {
        if (at_ == end_ || *at_ != c) return false;
        ++at_;
        return true;
    }
    /// What stood elsewhere and was accepted there, with so many line ends in it.
    bool takeAgain(std::string_view text, std::size_t lines);
    /// A byte order mark, which may stand in front of a text.
    void takeMark();
    std::optional<String> takeString();
    /// A number, true, false or null, as it stands.
    std::optional<std::string_view> takeWord();
    /// Goes on behind a value that somebody else read.
    void goTo(const char* at);

private:
    void skipSomeBlanks();
    std::optional<std::string_view> takeNumber();

    const char* at_;
    const char* end_;
    std::size_t line_ = 1;
};

/// Whether a text can stand without quotes, as a number, true or false, and reads as itself.
bool standsBare(std::string_view text);

/// Whether a text stands in a string as it is: well-formed, and nothing in it needs an escape.
bool standsAsItIs(std::string_view text);

/// Writes what the escapes of a string stand for in their place; how long it is then. `text` is
/// a string that was accepted.
std::size_t resolveEscapes(char* text, std::size_t size);

}  // namespace vek::formats
