#include "formats/delimited/raw_cells.h"

namespace vek::formats {

namespace {

// Behind the quote that closes a cell which begins with one; npos where none does.
std::size_t behindClosingQuote(std::string_view text) {
    for (std::size_t quote = 0;;) {
        quote = text.find('"', quote + 1);
        if (quote == text.npos) return text.npos;
        const bool isDoubled = quote + 1 < text.size() && text[quote + 1] == '"';
        if (!isDoubled) return quote + 1;
        ++quote;
    }
}

}  // namespace

const std::vector<std::string_view>& RawCells::take(std::string_view piece) {
    cells_.clear();
    if (piece.empty()) piece = "";
    look(piece);
    const char* at = piece.data();
    const char* const end = at + piece.size();
    for (;; ++at) {
        const char* const begin = at;
        at = endOfCell(at, end);
        cells_.emplace_back(begin, static_cast<std::size_t>(at - begin));
        if (at == end || *at != separator_) return cells_;
    }
}

void RawCells::look(std::string_view piece) {
    const char* const end = piece.data() + piece.size();
    if (marks_) return marks_->goOn(piece.data(), end);
    const char quote = hasTextQuotes_ ? separator_ : '"';
    marks_.emplace(piece.data(), end, ByteMarks::Kinds{separator_, quote, '\n', '\r'});
}

const char* RawCells::endOfCell(const char* at, const char* end) {
    if (at != end && *at == '"' && !hasTextQuotes_) at = behindQuoted(at, end);
    at = marks_->next(at);
    while (at != end && *at == '"') at = marks_->next(at + 1);
    return at;
}

// The end of the text where none closes the cell.
const char* RawCells::behindQuoted(const char* at, const char* end) {
    for (;;) {
        at = marks_->next(at + 1);
        if (at == end) return end;
        if (*at != '"') continue;
        ++at;
        if (at == end || *at != '"') return at;
    }
}

bool RawCells::isOpen(std::string_view raw) const {
    return isQuoted(raw) && behindClosingQuote(raw) == raw.npos;
}

bool RawCells::reads(std::string_view raw, std::string_view text) {
    if (!isQuoted(raw)) return raw == text;
    const std::size_t second = raw.find('"', 1);
    if (second + 1 == raw.size()) return raw.substr(1, second - 1) == text;
    const std::size_t closed = behindClosingQuote(raw);
    const bool isClosed = closed != raw.npos;
    const std::string_view inner = isClosed ? raw.substr(1, closed - 2) : raw.substr(1);
    resolved_.clear();
    for (std::size_t i = 0; i < inner.size(); ++i) {
        resolved_ += inner[i];
        if (inner[i] == '"') ++i;
    }
    if (isClosed) resolved_ += raw.substr(closed);
    return resolved_ == text;
}

}  // namespace vek::formats
