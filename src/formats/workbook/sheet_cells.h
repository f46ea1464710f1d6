#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/host/text_block.h>

/// The cells of a sheet as they come, before it is known which columns there are.
namespace vek::formats {

constexpr unsigned mostSheetColumns = 16384;
constexpr std::size_t mostSheetRows = 1048576;

/// The number of the column of "C12", from 0 on; `mostSheetColumns` where it names none.
unsigned columnOfReference(std::string_view reference);
/// "C" for 2.
std::string lettersOfColumn(unsigned column);

/// Rows without a cell take no memory, and neither do the columns between two cells. What a text
/// takes is its bytes and six more.
class SheetCells {
public:
    /// The text of a cell. Where a row names a column twice, the first is it: false for the second.
    bool add(unsigned column, std::string_view text);
    void endRow(std::uint32_t number);

    struct Row {
        std::uint32_t number;  ///< in the sheet, from 1 on
        std::uint32_t count;   ///< of its cells
    };
    const std::vector<Row>& rows() const { return rows_; }
    /// For each column of the sheet its place among those that have cells.
    std::vector<unsigned> places() const;
    /// The texts, to be gone through with a CellWalk; nothing can be added any more.
    Quor::Ptr<TextBlock> take();

private:
    void makeRoom(std::size_t size);

    Quor::Ptr<TextBlock> block_ = TextBlock::create(0);
    std::size_t size_ = 0;
    std::vector<Row> rows_;
    std::vector<unsigned> lastRow_;  // in which a column had a cell, from 1 on; 0 for none
    std::uint32_t count_ = 0;        // cells of the row
};

/// Goes through the cells of rows, one behind the other.
class CellWalk {
public:
    explicit CellWalk(char* at) : at_(at) {}

    struct Cell {
        unsigned column;
        std::string_view text;
    };
    Cell next();
    char* place() const { return at_; }

private:
    char* at_;
};

}  // namespace vek::formats
