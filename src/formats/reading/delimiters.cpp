#include "formats/reading/delimiters.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <vekdb/host/text_util.h>
#include "formats/failure.h"
#include "formats/input/text_form.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr std::size_t sampleSize = 1 << 16;
constexpr std::size_t sampleRows = 50;
constexpr char delimiters[] = {',', ';', '\t', '|'};

constexpr std::pair<std::string_view, char> delimiterNames[] = {
    {"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"pipe", '|'}};

// "00;02" of the timecode "01:00:00;02", whose drop-frame counting a semicolon says.
bool isOfTimecode(std::string_view text, std::size_t semicolon) {
    constexpr std::string_view front = "00:00:00";
    if (semicolon < front.size()) return false;
    const std::string_view timecode = text.substr(semicolon - front.size(), front.size() + 3);
    constexpr std::string_view form = "00:00:00;00";
    return std::equal(timecode.begin(), timecode.end(), form.begin(), form.end(),
                      [](char c, char like) { return like == '0' ? isAsciiDigit(c) : c == like; });
}

// How many cells the first records have by a delimiter. The record at which the text is cut, by
// whoever gave it or here, does not count.
class Counts {
public:
    Counts(std::string_view text, bool isWhole, char delimiter) {
        const std::string_view sample = text.substr(0, sampleSize);
        std::size_t cells = 1;
        bool isQuoted = false;
        bool isCellBegin = true;
        std::size_t at = 0;
        for (; at < sample.size() && counts_.size() <= sampleRows; ++at) {
            const char c = sample[at];
            const bool isQuote = c == '"' && (isQuoted || isCellBegin);
            if (isQuote) isQuoted = !isQuoted;
            // A quote behind a closing one is part of the cell, which goes on.
            isCellBegin = !isQuoted && (isQuote || c == delimiter || c == '\n' || c == '\r');
            if (isQuoted) continue;
            if (c == delimiter) ++cells;
            if (c == delimiter && counts_.empty() && !separates_)
                separates_ = c != ';' || !isOfTimecode(sample, at);
            if (c != '\n' && c != '\r') continue;
            const bool isFeedOfBoth = c == '\n' && at > 0 && sample[at - 1] == '\r';
            const bool isBlank = cells == 1 && (at == 0 || isLineEnd(sample[at - 1]));
            if (!isFeedOfBoth && !isBlank) counts_.push_back(cells);
            cells = 1;
        }
        const bool isAtEnd = isWhole && at == text.size() && !text.empty();
        if (isAtEnd && !isLineEnd(text.back())) counts_.push_back(cells);
    }

    std::size_t heading() const { return counts_.empty() ? 0 : counts_.front(); }
    /// Whether the heading is several cells, and not by the semicolons of timecodes alone, as the
    /// first row of a file without a heading may have them.
    bool separates() const { return heading() > 1 && separates_; }
    std::size_t rows() const { return counts_.empty() ? 0 : counts_.size() - 1; }
    std::size_t rowsLikeHeading() const {
        if (counts_.empty()) return 0;
        return static_cast<std::size_t>(
            std::count(counts_.begin() + 1, counts_.end(), counts_.front()));
    }

    /// Whether each line is more than one cell, the heading included.
    bool splitsAll() const {
        return !counts_.empty() && std::all_of(counts_.begin(), counts_.end(),
                                               [](std::size_t cells) { return cells > 1; });
    }

private:
    static bool isLineEnd(char c) { return c == '\n' || c == '\r'; }

    std::vector<std::size_t> counts_;
    bool separates_ = false;
};

// What the commas are that stand free, where cells may be separated by another mark.
struct FreeCommas {
    bool areInNumbers = true;  ///< each of them, and there is one
    bool areInTexts = true;    ///< each is one of a number or has a blank behind it, as no mark has

    FreeCommas(std::string_view text, char mark) {
        const std::string_view sample = text.substr(0, sampleSize);
        bool isQuoted = false;
        bool isThere = false;
        for (std::size_t at = 0; at < sample.size(); ++at) {
            if (sample[at] == '"') isQuoted = !isQuoted;
            if (isQuoted) continue;
            const bool isBeforeBlank = at + 1 < sample.size() && sample[at + 1] == ' ';
            if (sample[at] == mark && isBeforeBlank) areInTexts = false;
            if (sample[at] != ',') continue;
            const bool isInNumber = at > 0 && isAsciiDigit(sample[at - 1]) &&
                                    at + 1 < sample.size() && isAsciiDigit(sample[at + 1]);
            areInNumbers = areInNumbers && isInNumber;
            areInTexts = areInTexts && (isInNumber || isBeforeBlank);
            isThere = true;
        }
        areInNumbers = areInNumbers && isThere;
    }
};

// A mark by which all lines have as many cells, where the commas are those of what people write.
// Of two that are as likely the comma is the one.
char insteadOfComma(std::string_view text, bool isWhole, const Counts& commas) {
    for (char mark : {';', '\t', '|'}) {
        const Counts counts(text, isWhole, mark);
        if (!counts.separates() || counts.rowsLikeHeading() != counts.rows()) continue;
        const FreeCommas free(text, mark);
        const bool isSemicolon = mark == ';' && free.areInNumbers;
        if (isSemicolon || (free.areInTexts && counts.heading() > commas.heading())) return mark;
    }
    return ',';
}

}  // namespace

char foundDelimiter(std::string_view text, bool isWhole, char usual) {
    const Counts own(text, isWhole, usual);
    const bool isTable = own.heading() > 1 && (own.rows() == 0 || own.rowsLikeHeading() > 0);
    if (isTable) return usual == ',' ? insteadOfComma(text, isWhole, own) : usual;
    char best = usual;
    std::pair<std::size_t, std::size_t> most;
    for (char delimiter : delimiters) {
        const Counts counts(text, isWhole, delimiter);
        const std::size_t alike = counts.rowsLikeHeading();
        const bool isLikely = own.heading() > 1 ? alike == counts.rows() && alike > 0
                                                : alike * 2 >= counts.rows() || counts.splitsAll();
        const std::pair rank(alike, counts.heading());
        if (delimiter == usual || !counts.separates() || !isLikely || rank <= most) continue;
        best = delimiter;
        most = rank;
    }
    return best;
}

bool hasSeveralCells(std::string_view text, char delimiter) {
    return Counts(text, true, delimiter).heading() > 1;
}

std::size_t cellsBehindFirstLine(std::string_view text) {
    const std::size_t end = text.find_first_of("\r\n");
    if (end == text.npos || text.substr(0, end).find('"') != text.npos) return 0;
    const std::string_view rest = text.substr(end);
    for (char mark : delimiters) {
        if (text.substr(0, end).find(mark) != text.npos) continue;
        const Counts counts(rest, true, mark);
        // Two keywords with a semicolon between them may be the values of one column.
        const std::size_t fewest = mark == '\t' ? 2 : 3;
        const bool areAlike = counts.rows() > 0 && counts.rowsLikeHeading() == counts.rows();
        if (counts.separates() && counts.heading() >= fewest && areAlike) return counts.heading();
    }
    return 0;
}

bool isMark(char c) {
    const bool isLetter = asciiLower(c) >= 'a' && asciiLower(c) <= 'z';
    return canDelimit(c) && !isLetter && !isAsciiDigit(c);
}

std::optional<char> delimiterOfLine(std::string_view line) {
    constexpr std::string_view name = "sep=";
    const bool isIt = line.size() == name.size() + 1 && sameText(line.substr(0, 4), name);
    return isIt && isMark(line.back()) ? std::optional<char>(line.back()) : std::nullopt;
}

bool isDelimited(std::string_view text, bool isWhole) {
    return std::any_of(std::begin(delimiters), std::end(delimiters), [&](char delimiter) {
        const Counts counts(text, isWhole, delimiter);
        return counts.separates() && counts.rows() > 0 && counts.rowsLikeHeading() == counts.rows();
    });
}

std::string delimiterName(char delimiter) {
    for (const auto& [name, known] : delimiterNames) {
        if (known == delimiter) return std::string(name);
    }
    return inQuotes(std::string_view(&delimiter, 1));
}

std::optional<char> delimiterNamed(std::string_view name) {
    for (const auto& [known, delimiter] : delimiterNames) {
        if (known == name) return delimiter;
    }
    return {};
}

}  // namespace vek::formats
