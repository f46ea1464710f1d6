#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <vekdb/arrow/arrow.h>
#include "arrow/column_bytes.h"
#include "arrow/picture.h"

/// A cell whose bytes no text of Arrow may have.
struct ArrowBadCell {
    std::size_t row;
    std::size_t column;
    std::size_t byte;  // of the cell, from 0
    unsigned char value;
};

/// A cell that is longer than the places of texts count.
struct ArrowLongCell {
    std::size_t row;
    std::size_t column;
    std::size_t bytes;  // as they would be handed over
};

/// A column of texts while it is made: where each begins, and their bytes.
struct ArrowTexts {
    ColumnBytes places;
    ColumnBytes bytes;
};

/// How many bytes of text the places of a column count.
std::uint64_t mostBytesCounted(const ArrowExport& how);

/// Makes batch after batch of a picture's rows, none with more text than `mostBytes`.
class ArrowBatches {
public:
    ArrowBatches(const ArrowPicture& picture, const ArrowExport& how, std::uint64_t mostBytes);

    bool isAtEnd() const { return next_ == picture_.rows.size(); }
    /// Fills the next batch in, whose release frees it. Throws where memory ends, an ArrowBadCell
    /// or an ArrowLongCell; `out` is untouched then, and the same batch comes next.
    void make(ArrowArray& out);

private:
    std::size_t fill(std::vector<ArrowTexts>& columns);
    template <class Place>
    std::size_t fillWith(std::vector<ArrowTexts>& columns);
    void requireCounted(const ArrowTexts& texts, std::size_t column) const;
    void openColumns(std::vector<ArrowTexts>& columns) const;
    void rememberSizes(const std::vector<ArrowTexts>& columns);
    ColumnBytes tagsUpTo(std::size_t end) const;

    const ArrowPicture& picture_;
    const ArrowExport how_;
    const std::uint64_t mostBytes_;
    const std::uint64_t bytesPerBatch_;
    std::size_t next_ = 0;
    std::vector<std::string_view> values_;  // of a row
    std::vector<std::size_t> sizes_;        // of the columns' texts in the batch before
};
