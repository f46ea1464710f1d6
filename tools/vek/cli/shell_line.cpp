#include "tools/vek/cli/shell_line.h"

#include <algorithm>

#include <vekdb/host/text_util.h>

namespace vek {

namespace {

// What a backslash stands in front of between double quotes to lose its meaning.
constexpr std::string_view special = "\"\\$`";

// Takes a line apart, character by character.
class BashReader {
public:
    explicit BashReader(std::string_view breaks) : breaks_(breaks) {}

    ShellLine read(std::string_view text) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            const bool hasNext = at + 1 < text.size();
            if (hasNext && isEscape(text[at], text[at + 1]))
                add(text[++at]);
            else
                take(text[at]);
        }
        line_.quote = quote_;
        return std::move(line_);
    }

private:
    bool isEscape(char c, char next) const {
        if (c != '\\' || quote_ == '\'') return false;
        return quote_ == '\0' || special.find(next) != special.npos;
    }

    void take(char c) {
        if (quote_ == '\0') return takeBare(c);
        if (c != quote_) return add(c);
        quote_ = '\0';
        line_.kept = keptBefore_;
    }

    void takeBare(char c) {
        if (c == '\'' || c == '"') return open(c);
        if (c == ' ' || c == '\t') return endWord();
        add(c);
        if (breaks_.find(c) != breaks_.npos) line_.kept = line_.word.size();
    }

    void open(char c) {
        quote_ = c;
        isBegun_ = true;
        keptBefore_ = line_.kept;
        line_.kept = line_.word.size();
    }

    void add(char c) {
        line_.word += c;
        isBegun_ = true;
    }

    void endWord() {
        if (isBegun_) line_.words.push_back(std::move(line_.word));
        line_.word.clear();
        line_.kept = 0;
        isBegun_ = false;
    }

    std::string_view breaks_;
    ShellLine line_;
    char quote_ = '\0';
    bool isBegun_ = false;
    std::size_t keptBefore_ = 0;
};

// "NAME=value" in front of a command is for its environment.
bool isAssignment(std::string_view word) {
    const std::size_t equals = word.find('=');
    if (equals == std::string_view::npos || equals == 0) return false;
    for (char c : word.substr(0, equals)) {
        const char small = asciiLower(c);
        const bool isOfName = (small >= 'a' && small <= 'z') || isAsciiDigit(c) || c == '_';
        if (!isOfName) return false;
    }
    return true;
}

bool isPlain(char c) {
    const char small = asciiLower(c);
    const bool isWord = (small >= 'a' && small <= 'z') || isAsciiDigit(c);
    const bool isSign = std::string_view("_./,:=+@%-").find(c) != std::string_view::npos;
    return isWord || isSign || static_cast<unsigned char>(c) >= 0x80;
}

std::vector<std::string> allWords(ShellLine line) {
    if (!line.word.empty()) line.words.push_back(std::move(line.word));
    return std::move(line.words);
}

// Those behind the first `count`.
std::vector<std::string> wordsBehind(std::vector<std::string> words, std::size_t count) {
    words.erase(words.begin(),
                words.begin() + static_cast<std::ptrdiff_t>(std::min(count, words.size())));
    return words;
}

// A quote that is open at the cursor may be closed behind it, or not yet.
std::vector<std::string> bashBehind(std::string_view line, std::string_view rest,
                                    const ShellLine& front) {
    const ShellLine whole = BashReader("").read(std::string(line).append(rest));
    if (whole.quote == '\0' || front.quote == '\0') {
        return wordsBehind(allWords(whole), front.words.size() + 1);
    }
    const std::string own = std::string("x").append(rest);
    return wordsBehind(allWords(BashReader("").read(own)), 1);
}

}  // namespace

ShellLine bashLine(std::string_view line, std::string_view breaks, std::string_view rest) {
    ShellLine made = BashReader(breaks).read(line);
    made.behind = bashBehind(line, rest, made);
    std::size_t name = 0;
    while (name < made.words.size() && isAssignment(made.words[name])) ++name;
    const std::size_t taken = name < made.words.size() ? name + 1 : name;
    made.words.erase(made.words.begin(), made.words.begin() + static_cast<std::ptrdiff_t>(taken));
    return made;
}

std::string bashQuoted(std::string_view text, char quote) {
    std::string out;
    for (char c : text) {
        if (quote == '\'') {
            out += c == '\'' ? std::string("'\\''") : std::string(1, c);
            continue;
        }
        const bool needsEscape = quote == '"' ? special.find(c) != special.npos : !isPlain(c);
        if (needsEscape) out += '\\';
        out += c;
    }
    return out;
}

std::string fishUnquoted(std::string_view word) {
    std::string out;
    char quote = '\0';
    for (std::size_t at = 0; at < word.size(); ++at) {
        const char c = word[at];
        const char next = at + 1 < word.size() ? word[at + 1] : '\0';
        const bool isEscaped = quote == '\0' || next == '\\' || next == quote || next == '$';
        if (c == '\\' && next != '\0' && isEscaped)
            out += word[++at];
        else if (quote == '\0' && (c == '\'' || c == '"'))
            quote = c;
        else if (quote != '\0' && c == quote)
            quote = '\0';
        else
            out += c;
    }
    return out;
}

}  // namespace vek
