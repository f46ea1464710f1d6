#include "arrow/export_batch.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "arrow/export_schema.h"
#include "arrow/owned_array.h"
#include "arrow/utf8_text.h"

namespace {

template <class Place>
Place placeAt(const ColumnBytes& places, std::size_t i) {
    Place place;
    std::memcpy(&place, places.data() + i * sizeof place, sizeof place);
    return place;
}

std::size_t bytesOf(const std::vector<std::string_view>& values) {
    std::size_t bytes = 0;
    for (const std::string_view value : values) bytes += value.size();
    return bytes;
}

// The cells of a column that was filled.
template <class Place>
class Cells {
public:
    explicit Cells(const ArrowTexts& texts) : texts_(texts) {}

    std::size_t count() const { return texts_.places.size() / sizeof(Place) - 1; }
    std::string_view operator[](std::size_t i) const {
        const auto from = static_cast<std::size_t>(placeAt<Place>(texts_.places, i));
        const auto to = static_cast<std::size_t>(placeAt<Place>(texts_.places, i + 1));
        return {texts_.bytes.data() + from, to - from};
    }

private:
    const ArrowTexts& texts_;
};

// The first cell that is no UTF-8; the number of cells where all are.
template <class Place>
std::size_t firstBadCell(const ArrowTexts& texts) {
    const Cells<Place> cells(texts);
    std::size_t row = 0;
    while (row < cells.count() && wellFormedFront(cells[row]) == cells[row].size()) ++row;
    return row;
}

template <class Place>
ArrowTexts replaced(const ArrowTexts& texts) {
    const Cells<Place> cells(texts);
    ArrowTexts made;
    made.places.appendNumber(Place{0});
    for (std::size_t row = 0; row < cells.count(); ++row) {
        const bool isWell = wellFormedFront(cells[row]) == cells[row].size();
        isWell ? made.bytes.append(cells[row]) : made.bytes.append(withReplacements(cells[row]));
        made.places.appendNumber(static_cast<Place>(made.bytes.size()));
    }
    return made;
}

// Bytes of cells that stand side by side could make a character together, so only a text of ASCII
// alone is told at a glance.
template <class Place>
void makeWellFormed(ArrowTexts& texts, ArrowBytes bytes, std::size_t firstRow, std::size_t column) {
    if (bytes == ArrowBytes::binary || isAscii(texts.bytes.view())) return;
    const std::size_t row = firstBadCell<Place>(texts);
    if (row == Cells<Place>(texts).count()) return;
    if (bytes == ArrowBytes::replace) {
        texts = replaced<Place>(texts);
        return;
    }
    const std::string_view cell = Cells<Place>(texts)[row];
    const std::size_t at = wellFormedFront(cell);
    throw ArrowBadCell{firstRow + row, column, at, static_cast<unsigned char>(cell[at])};
}

// Each byte that is replaced becomes three, which have to be counted, too.
std::uint64_t bytesTaken(const ArrowExport& how, std::uint64_t mostBytes) {
    constexpr std::uint64_t replacement = 3;
    return std::min(how.bytesPerBatch,
                    how.bytes == ArrowBytes::replace ? mostBytes / replacement : mostBytes);
}

}  // namespace

std::uint64_t mostBytesCounted(const ArrowExport& how) {
    return hasLargeTexts(how) ? std::numeric_limits<std::int64_t>::max()
                              : std::numeric_limits<std::int32_t>::max();
}

ArrowBatches::ArrowBatches(const ArrowPicture& picture, const ArrowExport& how,
                           std::uint64_t mostBytes)
    : picture_(picture),
      how_(how),
      mostBytes_(mostBytes),
      bytesPerBatch_(bytesTaken(how, mostBytes)),
      values_(picture.columns.size()),
      sizes_(picture.columns.size()) {}

// What the batch before came to, and some more, so that few columns grow while they are filled.
void ArrowBatches::openColumns(std::vector<ArrowTexts>& columns) const {
    const std::size_t rows = std::min<std::size_t>(how_.rowsPerBatch, picture_.rows.size() - next_);
    const std::size_t place = hasLargeTexts(how_) ? sizeof(std::int64_t) : sizeof(std::int32_t);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i].bytes.reserve(sizes_[i] + sizes_[i] / 8);
        columns[i].places.reserve((std::min<std::size_t>(rows, 4096) + 1) * place);
    }
}

void ArrowBatches::rememberSizes(const std::vector<ArrowTexts>& columns) {
    for (std::size_t i = 0; i < columns.size(); ++i) sizes_[i] = columns[i].bytes.size();
}

// Rows that stand together are never too long together, so what is not counted is one cell.
void ArrowBatches::requireCounted(const ArrowTexts& texts, std::size_t column) const {
    const std::size_t bytes = texts.bytes.size();
    if (bytes > mostBytes_) throw ArrowLongCell{next_, column, bytes};
}

// The row behind the last one that was taken.
template <class Place>
std::size_t ArrowBatches::fillWith(std::vector<ArrowTexts>& columns) {
    const auto width = static_cast<unsigned>(columns.size());
    for (ArrowTexts& column : columns) column.places.appendNumber(Place{0});
    const std::size_t most = std::max<std::size_t>(how_.rowsPerBatch, 1);
    const std::size_t end = std::min(picture_.rows.size() - next_, most) + next_;
    std::uint64_t bytes = 0;
    std::size_t row = next_;
    for (; row < end; ++row) {
        picture_.rows[row].fieldViews(values_.data(), width);
        bytes += bytesOf(values_);
        if (bytes > bytesPerBatch_ && row != next_) break;
        for (unsigned i = 0; i < width; ++i) {
            columns[i].bytes.append(values_[i]);
            columns[i].places.appendNumber(static_cast<Place>(columns[i].bytes.size()));
        }
    }
    for (unsigned i = 0; i < width; ++i) {
        requireCounted(columns[i], i);
        makeWellFormed<Place>(columns[i], how_.bytes, next_, i);
        requireCounted(columns[i], i);
    }
    return row;
}

std::size_t ArrowBatches::fill(std::vector<ArrowTexts>& columns) {
    openColumns(columns);
    return hasLargeTexts(how_) ? fillWith<std::int64_t>(columns) : fillWith<std::int32_t>(columns);
}

// Flags stand eight in a byte, the first one in its lowest bit.
ColumnBytes ArrowBatches::tagsUpTo(std::size_t end) const {
    ColumnBytes made;
    const bool areFlags = how_.tags == ArrowTags::flags;
    std::uint8_t flags = 0;
    for (std::size_t row = next_; row < end; ++row) {
        const std::uint8_t tag = picture_.tags[row];
        if (!areFlags) {
            made.appendNumber(tag);
            continue;
        }
        const std::size_t bit = (row - next_) % 8;
        flags = static_cast<std::uint8_t>(flags | ((tag != 0 ? 1U : 0U) << bit));
        if (bit == 7 || row + 1 == end) made.appendNumber(std::exchange(flags, std::uint8_t{0}));
    }
    return made;
}

void ArrowBatches::make(ArrowArray& out) {
    std::vector<ArrowTexts> columns(picture_.columns.size());
    const std::size_t end = fill(columns);
    const bool withTags = how_.tags != ArrowTags::none;
    const std::size_t rows = end - next_;
    auto batch = std::make_unique<OwnedBatch>(columns.size() + (withTags ? 1 : 0));
    rememberSizes(columns);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        makeColumn(std::move(columns[i].places), std::move(columns[i].bytes), rows,
                   batch->column(i));
    }
    if (withTags) makeColumn(tagsUpTo(end), rows, batch->column(columns.size()));
    OwnedBatch::handOver(batch.release(), rows, out);
    next_ = end;
}
