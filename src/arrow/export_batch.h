#pragma once

#include <cstddef>
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

/// A column of texts while it is made: where each begins, and their bytes.
struct ArrowTexts {
    ColumnBytes places;
    ColumnBytes bytes;
};

/// Makes batch after batch of a picture's rows.
class ArrowBatches {
public:
    ArrowBatches(const ArrowPicture& picture, const ArrowExport& how);

    bool isAtEnd() const { return next_ == picture_.rows.size(); }
    /// Fills the next batch in, whose release frees it. Throws where memory ends, or an
    /// ArrowBadCell; `out` is untouched then, and the same batch comes next.
    void make(ArrowArray& out);

private:
    std::size_t fill(std::vector<ArrowTexts>& columns);
    template <class Place>
    std::size_t fillWith(std::vector<ArrowTexts>& columns);
    void openColumns(std::vector<ArrowTexts>& columns) const;
    void rememberSizes(const std::vector<ArrowTexts>& columns);
    ColumnBytes tagsUpTo(std::size_t end) const;

    const ArrowPicture& picture_;
    const ArrowExport how_;
    std::size_t next_ = 0;
    std::vector<std::string_view> values_;  // of a row
    std::vector<std::size_t> sizes_;        // of the columns' texts in the batch before
};
