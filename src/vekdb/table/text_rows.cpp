#include <vekdb/text_rows.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <vekdb/table.h>
#include "vekdb/lines/plain_line.h"
#include "vekdb/record/line_store.h"
#include "vekdb/record/record_access.h"
#include "vekdb/record/value_copies.h"
#include "vekdb/table/table_parts.h"

namespace {

constexpr std::uint32_t countedAhead = 4096;
constexpr unsigned gap = 1;  // between values that were moved together

std::size_t withoutEmptyEnd(const std::string_view* values, std::size_t count) {
    while (count > 0 && values[count - 1].empty()) --count;
    return count;
}

// Writes where each value will end, seen from the first one. False where a value would be
// overwritten by those before it, stands outside of the room or does not fit in.
bool place(TextRows::Room room, const std::string_view* values, unsigned count,
           std::uint16_t* next) {
    const char* to = room.begin;
    for (unsigned i = 0; i < count; ++i) {
        const std::string_view value = values[i];
        if (!value.empty() && (value.data() < to || value.data() >= room.end)) return false;
        to += value.size() + gap;
        if (to > room.end) return false;
        next[i] = static_cast<std::uint16_t>(to - room.begin);
    }
    return static_cast<std::size_t>(to - room.begin) <= LineSlices::farthest;
}

void write(char* to, const std::string_view* values, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        const std::string_view value = values[i];
        if (!value.empty() && value.data() != to) std::memmove(to, value.data(), value.size());
        to += value.size();
        *to++ = '\0';
    }
}

}  // namespace

TextRows::TextRows(vekdb& table, Quor::Ptr<TextBlock> text)
    : table_(table),
      size_(text->size()),
      copies_(std::make_unique<ValueCopies>()),
      quoted_(std::make_unique<PlainLine>()) {
    text_.lines = new LineStore(std::move(text));
}

TextRows::~TextRows() {
    letGo(text_);
    if (!isFinished_) table_.free();
}

void TextRows::letGo(Store& store) {
    if (store.lines != nullptr) store.lines->release(store.spareReferences + 1);
    store = {};
}

char* TextRows::text() const {
    return text_.lines->text();
}

unsigned TextRows::count() const {
    return table_.parts().rows.count();
}

dbrecord& TextRows::newRow() {
    Rows& rows = table_.parts().rows;
    rows.cover(std::uint64_t{rows.count()} + 1);
    dbrecord* record = rows.pool().create(0);
    RecordAccess::setOwner(*record, &table_);
    rows.append(record);
    return *record;
}

// References are counted many at a time, before they are needed.
void TextRows::adopt(Store& store, LineSlices* slices, unsigned count, dbrecord& record) {
    if (store.spareReferences == 0) {
        store.lines->addReferences(countedAhead);
        store.spareReferences = countedAhead;
    }
    --store.spareReferences;
    RecordAccess::adopt(record, slices, static_cast<unsigned short>(count));
}

bool TextRows::append(Room room, const std::string_view* values, std::size_t count) {
    count = withoutEmptyEnd(values, count);
    if (count > ColumnList::most) return false;
    dbrecord& record = newRow();
    const auto stored = static_cast<unsigned>(count);
    if (stored == 0) return true;
    noteValues(stored);
    if (LineSlices* slices = moveTogether(room, values, stored)) {
        adopt(text_, slices, stored, record);
    } else {
        copies_->give(record, values, stored);
    }
    return true;
}

void TextRows::noteValues(unsigned count) {
    longest_ = std::max(longest_, count);
    values_ += count;
}

// Two bytes are the quotes of a value that is empty.
TextRows::QuotedLine TextRows::appendQuoted(char* line) {
    const bool isQuoted = quoted_->recognise(line, text() + size_) && quoted_->mostValues() > 1;
    if (!isQuoted) return {nullptr, 0};
    dbrecord& record = newRow();
    const auto offset = static_cast<std::uint64_t>(line + 1 - text());
    LineSlices* slices =
        text_.lines->openSlices(quoted_->mostValues(), offset, LineSlices::quotedGap);
    const unsigned count = quoted_->cutUp(line, slices->next());
    char* const end = line + slices->next()[count - 1] - 1;
    lastCount_ = count;
    while (lastCount_ > 0 && slices->view(lastCount_ - 1).empty()) --lastCount_;
    lastQuoted_ = slices;
    if (lastCount_ == 0) return {end, count};
    noteValues(lastCount_);
    text_.lines->closeSlices(slices, lastCount_);
    adopt(text_, slices, lastCount_, record);
    return {end, count};
}

std::string_view TextRows::quotedValue(std::size_t at) const {
    return at < lastCount_ ? lastQuoted_->view(static_cast<unsigned>(at)) : std::string_view();
}

LineSlices* TextRows::moveTogether(Room room, const std::string_view* values, unsigned count) {
    const auto offset = static_cast<std::uint64_t>(room.begin - text_.lines->text());
    LineSlices* slices = text_.lines->openSlices(count, offset, gap);
    if (!place(room, values, count, slices->next())) return nullptr;
    text_.lines->closeSlices(slices, count);
    write(room.begin, values, count);
    return slices;
}

void TextRows::finish(const std::vector<DBFieldDesc>& columns) {
    table_.buildColumns(columns.data(), columns.size());
    const Rows& rows = table_.parts().rows;
    const auto count = static_cast<unsigned short>(table_.get_num_fields());
    for (unsigned i = 0; i < rows.count(); ++i) {
        RecordAccess::widen(*rows.at(i), count);
    }
    table_.parts().modified = false;
    isFinished_ = true;
}
