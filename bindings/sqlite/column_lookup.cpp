#include "column_lookup.h"

#include <algorithm>

#include <vekdb/host/keyed_hash.h>

namespace vek::sql {

namespace {

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

void skipDigits(std::string_view& text) {
    while (!text.empty() && isDigit(text.front())) text.remove_prefix(1);
}

bool takeOneOf(std::string_view& text, char a, char b) {
    if (text.empty() || (text.front() != a && text.front() != b)) return false;
    text.remove_prefix(1);
    return true;
}

std::string_view withoutBlanks(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

// What SQLite may read as a number, and perhaps some more.
bool looksLikeNumber(std::string_view text) {
    text = withoutBlanks(text);
    takeOneOf(text, '+', '-');
    if (text.empty() || (!isDigit(text.front()) && text.front() != '.')) return false;
    skipDigits(text);
    if (takeOneOf(text, '.', '.')) skipDigits(text);
    if (takeOneOf(text, 'e', 'E')) {
        takeOneOf(text, '+', '-');
        skipDigits(text);
    }
    return text.empty();
}

// Numbers up to here are told apart by a floating-point number, too.
constexpr std::size_t mostDigits = 15;

bool isWholeNumber(std::string_view text, std::int64_t& number) {
    text = withoutBlanks(text);
    const bool isNegative = !text.empty() && text.front() == '-';
    takeOneOf(text, '+', '-');
    if (text.empty() || text.size() > mostDigits) return false;
    number = 0;
    for (char c : text) {
        if (!isDigit(c)) return false;
        number = number * 10 + (c - '0');
    }
    if (isNegative) number = -number;
    return true;
}

}  // namespace

EqualCells::Kind EqualCells::kindOf(std::string_view text, std::int64_t& number) {
    if (isWholeNumber(text, number)) return Kind::wholeNumber;
    return looksLikeNumber(text) ? Kind::oddNumber : Kind::text;
}

EqualCells::EqualCells(std::string_view text, bool isText) : text_(text) {
    if (!isText) kind_ = kindOf(text, number_);
}

bool EqualCells::mayHold(std::string_view cell) const {
    if (cell == text_) return true;
    if (kind_ == Kind::text) return false;
    std::int64_t number = 0;
    const Kind kind = kindOf(cell, number);
    if (kind == Kind::text) return false;
    return kind != kind_ || kind == Kind::oddNumber || number == number_;
}

std::size_t ColumnLookup::roomFor(unsigned count) {
    std::size_t room = 16;
    while (room < count) room *= 2;
    return room;
}

std::size_t ColumnLookup::placeOf(const EqualCells& equal) const {
    std::uint64_t hash = 0;
    if (equal.kind_ == EqualCells::Kind::wholeNumber) {
        const char* const bytes = reinterpret_cast<const char*>(&equal.number_);
        hash = Quor::keyedHash({bytes, sizeof equal.number_});
    } else {
        hash = Quor::keyedHash(equal.text_);
    }
    return hash & (heads_.size() - 1);
}

void ColumnLookup::add(unsigned row, std::string_view cell) {
    const EqualCells key(cell, false);
    if (!key.hasKey()) odd_.push_back(row);
    std::uint32_t& head = heads_[placeOf(key)];
    next_[row] = head;
    head = row;
}

// A text that looks like a number is kept by the number; one that is surely compared as a text is
// among those, too.
void ColumnLookup::find(const EqualCells& equal, std::vector<unsigned>& rows) const {
    rows.clear();
    const bool isText = equal.kind_ == EqualCells::Kind::text;
    const std::size_t place = placeOf(isText ? EqualCells(equal.text_, false) : equal);
    for (std::uint32_t row = heads_[place]; row != none; row = next_[row]) rows.push_back(row);
    if (isText || odd_.empty()) return;
    rows.insert(rows.end(), odd_.begin(), odd_.end());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
}

}  // namespace vek::sql
