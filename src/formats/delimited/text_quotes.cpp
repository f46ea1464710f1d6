#include "formats/delimited/text_quotes.h"

#include <algorithm>

namespace vek::formats {

namespace {

bool isLineEnd(char c) {
    return c == '\n' || c == '\r';
}

std::size_t endOfLine(std::string_view text, std::size_t at) {
    return std::min(text.find_first_of("\n\r", at), text.size());
}

// Looks at the cells with quotes in a text that may be quoted, one after the other.
class QuoteWalk {
public:
    QuoteWalk(std::string_view text, char delimiter) : text_(text), delimiter_(delimiter) {
        line_ = lineAt(0);
        heading_ = line_;
    }

    bool areText() {
        if (isQuotedHeading()) return false;
        for (std::size_t quote = text_.find('"'); quote < text_.size();
             quote = text_.find('"', quote)) {
            quote = beginsCell(quote) ? behindQuoted(quote) : behindPlain(quote);
            if (isNeeded_) return false;
        }
        return isOdd_;
    }

private:
    bool beginsCell(std::size_t at) const {
        return at == 0 || text_[at - 1] == delimiter_ || isLineEnd(text_[at - 1]);
    }

    bool endsCell(std::size_t at) const {
        return at == text_.size() || text_[at] == delimiter_ || isLineEnd(text_[at]);
    }

    std::size_t endOfCell(std::size_t at) const {
        while (!endsCell(at)) ++at;
        return at;
    }

    // A program that quotes cells quotes one with a quote inside.
    std::size_t behindPlain(std::size_t at) {
        isOdd_ = true;
        return endOfCell(at);
    }

    std::size_t behindQuoted(std::size_t begin) {
        bool isDoubled = false;
        std::size_t at = begin + 1;
        for (; (at = std::min(text_.find('"', at), text_.size())) < text_.size(); at += 2) {
            if (at + 1 == text_.size() || text_[at + 1] != '"') break;
            isDoubled = true;
        }
        const bool isClosed = at < text_.size() && endsCell(at + 1);
        if (begin > line_.end) line_ = lineAt(begin);
        const bool isOfSeveral = at > line_.end || hasDelimiter(begin, at);
        if (!isClosed || (isOfSeveral && areWholeLines(at))) {
            isOdd_ = true;
            return endOfCell(begin);
        }
        isNeeded_ = isDoubled || isOfSeveral || begin < heading_.end;
        return at + 1;
    }

    // A record as it is where quotes are no text.
    struct Record {
        std::size_t end = 0;
        std::size_t cells = 1;
        bool isQuotedWell = true;  // each cell that begins with a quote ends with another one
    };

    Record recordAt(std::size_t at) const {
        Record record;
        for (;; ++at, ++record.cells) {
            const bool isQuoted = at < text_.size() && text_[at] == '"';
            if (isQuoted) at = behindClosing(at + 1);
            if (isQuoted && (text_[at - 1] != '"' || !endsCell(at))) record.isQuotedWell = false;
            record.end = at = endOfCell(at);
            if (at == text_.size() || text_[at] != delimiter_) return record;
        }
    }

    std::size_t behindClosing(std::size_t at) const {
        for (; (at = text_.find('"', at)) < text_.size(); at += 2) {
            if (at + 1 == text_.size() || text_[at + 1] != '"') return at + 1;
        }
        return text_.size();
    }

    // Whether a name has a delimiter or an end of a line between its quotes, and what follows has
    // a cell for each name that there is then, other than the first line.
    bool isQuotedHeading() const {
        if (text_.substr(0, heading_.end).find('"') == text_.npos) return false;
        const Record heading = recordAt(0);
        if (!heading.isQuotedWell) return false;
        if (heading.cells == heading_.cells) return false;
        const std::size_t next = text_.find_first_not_of("\r\n", heading.end);
        return next == text_.npos || recordAt(next).cells == heading.cells;
    }

    bool hasDelimiter(std::size_t begin, std::size_t end) const {
        return text_.substr(begin, end - begin).find(delimiter_) != text_.npos;
    }

    // Whether the lines of a cell have as many cells as the first one where quotes are nothing but
    // text.
    bool areWholeLines(std::size_t end) const {
        if (heading_.cells == 1 || line_.cells != heading_.cells) return false;
        return end <= line_.end || lineAt(end).cells == heading_.cells;
    }

    struct Line {
        std::size_t end = 0;
        std::size_t cells = 0;  // where quotes are nothing but text
    };

    Line lineAt(std::size_t at) const {
        while (at > 0 && !isLineEnd(text_[at - 1])) --at;
        const std::string_view line = text_.substr(at, endOfLine(text_, at) - at);
        const auto marks = std::count(line.begin(), line.end(), delimiter_);
        return {at + line.size(), 1 + static_cast<std::size_t>(marks)};
    }

    std::string_view text_;
    char delimiter_;
    Line heading_;
    Line line_;              // of the cell
    bool isNeeded_ = false;  // by a cell
    bool isOdd_ = false;     // where cells are quoted
};

}  // namespace

bool hasTextQuotes(std::string_view text, char delimiter) {
    return delimiter == '\t' && QuoteWalk(text, delimiter).areText();
}

bool hasQuotedCell(std::string_view text, char delimiter) {
    for (std::size_t at = text.find('"'); at != text.npos; at = text.find('"', at + 1)) {
        if (at == 0 || text[at - 1] == delimiter || isLineEnd(text[at - 1])) return true;
    }
    return false;
}

}  // namespace vek::formats
