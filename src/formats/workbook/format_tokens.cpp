#include "formats/workbook/format_tokens.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "formats/text/text_lines.h"
#include "formats/text/utf8.h"

namespace vek::formats {

namespace {

using Kind = FormatToken::Kind;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::optional<Kind> partOfDate(char letter) {
    switch (lower(letter)) {
        case 'y':
            return Kind::year;
        case 'm':
            return Kind::month;
        case 'd':
            return Kind::day;
        case 'h':
            return Kind::hour;
        case 's':
            return Kind::second;
        default:
            return {};
    }
}

Kind elapsed(char letter) {
    const char part = lower(letter);
    return part == 'h' ? Kind::hours : part == 'm' ? Kind::minutes : Kind::seconds;
}

std::optional<Kind> partOfNumber(char sign) {
    switch (sign) {
        case '0':
        case '#':
        case '?':
            return Kind::digit;
        case '.':
            return Kind::point;
        case ',':
            return Kind::comma;
        case '%':
            return Kind::percent;
        case '/':
            return Kind::slash;
        case '@':
            return Kind::cellText;
        default:
            return {};
    }
}

// Takes the code of one section apart.
class SectionReader {
public:
    explicit SectionReader(std::string_view code) : rest_(code) {}

    FormatSection read() {
        while (!rest_.empty()) readNext();
        section_.isDate = std::any_of(section_.tokens.begin(), section_.tokens.end(), isOfDate);
        if (section_.isDate && isOfEra_) return SectionReader("yyyy-mm-dd").read();
        if (section_.isDate) {
            findMinutes();
            findFractions();
        }
        return std::move(section_);
    }

private:
    static bool isOfDate(const FormatToken& token) {
        return token.kind >= Kind::year && token.kind <= Kind::seconds;
    }

    std::string_view take(std::size_t count) {
        const std::string_view taken = rest_.substr(0, count);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    // A sign and the character behind it.
    std::string_view takeWithNext() {
        return take(1 + std::max<std::size_t>(1, wideCharacterSize(rest_.substr(1))));
    }

    void add(Kind kind, std::string_view text, std::size_t count = 1) {
        section_.tokens.push_back({kind, std::string(text), count});
    }

    void readNext() {
        const char c = rest_.front();
        if (c == '"') return readQuoted();
        if (c == '[') return readBrackets();
        if (c == '\\') return addLiteral(takeWithNext().substr(1));
        if (c == '_' || c == '*') {
            takeWithNext();  // room as wide as a character, or filled with one
            return;
        }
        if (startsWith("General")) return add(Kind::general, take(7));
        if (startsWith("AM/PM")) return add(Kind::halfDay, take(5));
        if (startsWith("A/P")) return add(Kind::halfDay, take(3));
        if (startsWith("E+") || startsWith("E-")) return add(Kind::exponent, take(2));
        if (lower(c) == 'e') return readYear();
        if (const auto part = partOfDate(c)) return add(*part, "", takeRun(c));
        if (lower(c) == 'g') return readEra();
        if (const auto part = partOfNumber(c)) return add(*part, take(1));
        addLiteral(take(1));
    }

    // The year as a country counts it; where that is by eras the date is the one that all know.
    void readYear() {
        takeRun('e');
        add(Kind::year, "", wholeYear);
    }

    void readEra() {
        const std::string_view letters = rest_;
        addLiteral(letters.substr(0, takeRun('g')));
        isOfEra_ = true;
    }

    bool startsWith(std::string_view text) const {
        return sameText(rest_.substr(0, text.size()), text);
    }

    std::size_t takeRun(char letter) {
        std::size_t count = 0;
        while (count < rest_.size() && lower(rest_[count]) == lower(letter)) ++count;
        return take(count).size();
    }

    void addLiteral(std::string_view text) { add(Kind::literal, text); }

    void readQuoted() {
        take(1);
        addLiteral(take(std::min(rest_.find('"'), rest_.size())));
        take(1);
    }

    // A colour, a condition, elapsed time, or a sign of money with a language behind it.
    void readBrackets() {
        take(1);
        const std::string_view inside = take(std::min(rest_.find(']'), rest_.size()));
        take(1);
        if (inside.empty()) return;
        if (inside.front() == '$') {
            const std::string_view sign = inside.substr(1, inside.find('-') - 1);
            if (!sign.empty()) addLiteral(sign);
        } else if (inside.find_first_of("<>=") == 0) {
            readCondition(inside);
        } else if (inside.find_first_not_of(inside.front()) == inside.npos &&
                   std::string_view("hmsHMS").find(inside.front()) != std::string_view::npos) {
            add(elapsed(inside.front()), "", inside.size());
        }
    }

    void readCondition(std::string_view text) {
        const std::size_t size = std::min(text.find_first_not_of("<>="), text.size());
        section_.comparison = text.substr(0, size);
        const std::string_view bound = text.substr(size);
        std::from_chars(bound.data(), bound.data() + bound.size(), section_.bound);
    }

    // An m behind hours or in front of seconds means minutes.
    void findMinutes() {
        std::vector<FormatToken*> parts;
        for (FormatToken& token : section_.tokens) {
            if (isOfDate(token) && token.kind != Kind::halfDay) parts.push_back(&token);
        }
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (parts[i]->kind != Kind::month || parts[i]->count > 2) continue;
            const bool isBehind =
                i > 0 && (parts[i - 1]->kind == Kind::hour || parts[i - 1]->kind == Kind::hours);
            const bool isBefore = i + 1 < parts.size() && (parts[i + 1]->kind == Kind::second ||
                                                           parts[i + 1]->kind == Kind::seconds);
            if (isBehind || isBefore) parts[i]->kind = Kind::minute;
        }
    }

    // A point with zeros behind it is of a second; other signs of numbers are themselves in dates.
    void findFractions() {
        std::vector<FormatToken> made;
        for (FormatToken& token : section_.tokens) {
            const bool isZero = token.kind == Kind::digit && token.text == "0";
            if (isZero && !made.empty() && made.back().kind == Kind::point) {
                made.back() = {Kind::fraction, "", 1};
            } else if (isZero && !made.empty() && made.back().kind == Kind::fraction) {
                ++made.back().count;
            } else {
                made.push_back(std::move(token));
            }
        }
        for (FormatToken& token : made) {
            if (token.kind > Kind::seconds) token.kind = Kind::literal;
        }
        section_.tokens = std::move(made);
    }

    static constexpr std::size_t wholeYear = 4;  // its digits

    std::string_view rest_;
    FormatSection section_;
    bool isOfEra_ = false;
};

std::size_t endOfSection(std::string_view code) {
    char open = '\0';
    for (std::size_t i = 0; i < code.size(); ++i) {
        const char c = code[i];
        if (open != '\0') {
            if (c == open) open = '\0';
        } else if (c == '"' || c == '[') {
            open = c == '[' ? ']' : '"';
        } else if (c == '\\' || c == '_' || c == '*') {
            ++i;
        } else if (c == ';') {
            return i;
        }
    }
    return code.size();
}

}  // namespace

std::vector<FormatSection> formatSections(std::string_view code) {
    std::vector<FormatSection> sections;
    while (true) {
        const std::size_t end = endOfSection(code);
        sections.push_back(SectionReader(code.substr(0, end)).read());
        if (end == code.size()) return sections;
        code.remove_prefix(end + 1);
    }
}

}  // namespace vek::formats
