#include "formats/delimited/raw_cells.h"

#include <algorithm>

namespace vek::formats {

namespace {

// Behind the quote that closes a cell which begins with one; npos where none does.
std::size_t behindClosingQuote(std::string_view text, std::size_t at) {
    for (std::size_t quote = at;;) {
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
    std::size_t at = 0;
    for (;; ++at) {
        const std::size_t begin = at;
        at = endOfCell(piece, at);
        cells_.push_back(piece.substr(begin, at - begin));
        if (at == piece.size() || piece[at] != separator_) return cells_;
    }
}

std::size_t RawCells::endOfCell(std::string_view piece, std::size_t at) const {
    if (isQuoted(piece.substr(at))) at = std::min(behindClosingQuote(piece, at), piece.size());
    const auto isEnd = [this](char c) { return c == separator_ || c == '\n' || c == '\r'; };
    const auto end =
        std::find_if(piece.begin() + static_cast<std::ptrdiff_t>(at), piece.end(), isEnd);
    return static_cast<std::size_t>(end - piece.begin());
}

bool RawCells::reads(std::string_view raw, std::string_view text) {
    if (!isQuoted(raw)) return raw == text;
    const std::size_t closed = behindClosingQuote(raw, 0);
    const bool isClosed = closed != raw.npos;
    const std::string_view inner = isClosed ? raw.substr(1, closed - 2) : raw.substr(1);
    if (closed == raw.size() && inner.find('"') == inner.npos) return inner == text;
    resolved_.clear();
    for (std::size_t i = 0; i < inner.size(); ++i) {
        resolved_ += inner[i];
        if (inner[i] == '"') ++i;
    }
    if (isClosed) resolved_ += raw.substr(closed);
    return resolved_ == text;
}

}  // namespace vek::formats
