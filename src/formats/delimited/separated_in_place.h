#pragma once

#include <algorithm>
#include <optional>

#include "formats/delimited/delimited_scanner.h"
#include "formats/saving/row_lengths.h"
#include "formats/saving/rows_in_place.h"

namespace vek::formats {

/// Rows of values between separators, in lines.
class SeparatedInPlace : public RowsInPlace {
public:
    SeparatedInPlace(const Saving& saving, char separator, DelimitedScanner::Quotes quotes)
        : saving_(saving),
          lengths_(saving.log, saving.columns),
          separator_(separator),
          quotes_(quotes) {}

    bool reads(std::string_view piece, unsigned row) override {
        const std::vector<std::string_view>& cells = cellsOf(piece);
        const std::size_t count = std::max<std::size_t>(cells.size(), saving_.log.columnCount());
        for (std::size_t i = 0; i < count; ++i) {
            const std::string_view cell = i < cells.size() ? cells[i] : std::string_view();
            if (cell != saving_.log.cell(row, static_cast<unsigned>(i))) return false;
        }
        return true;
    }

protected:
    const Saving& saving() const { return saving_; }
    char separator() const { return separator_; }

    // Valid until the next call.
    const std::vector<std::string_view>& cellsOf(std::string_view piece) {
        scratch_.assign(piece);
        char* const begin = scratch_.data();
        char* const end = begin + scratch_.size();
        if (scanner_)
            scanner_->goOn(begin, end);
        else
            scanner_.emplace(begin, end, separator_, quotes_);
        return scanner_->takeRecord();
    }

    std::size_t length(unsigned row, std::size_t came) const {
        return lengths_.of(rows(), row, came);
    }

    // Of the columns that the heading names.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < lengths_.ofHeading(); ++i) {
            names.push_back(saving_.log.columnName(saving_.columns[i]));
        }
        return names;
    }

private:
    Saving saving_;
    RowLengths lengths_;
    char separator_;
    DelimitedScanner::Quotes quotes_;
    std::string scratch_;
    std::optional<DelimitedScanner> scanner_;
};

}  // namespace vek::formats
