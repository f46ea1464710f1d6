#include "formats/workbook/sheet_cells.h"

#include <algorithm>
#include <cstring>

namespace vek::formats {

namespace {

constexpr std::size_t bytesOfColumn = 2;
constexpr std::size_t bytesOfSize = 4;

}  // namespace

unsigned columnOfReference(std::string_view reference) {
    unsigned number = 0;
    std::size_t letters = 0;
    for (char c : reference) {
        const bool isSmall = c >= 'a' && c <= 'z';
        if (!isSmall && (c < 'A' || c > 'Z')) break;
        if (++letters > 3) return mostSheetColumns;
        number = 26 * number + static_cast<unsigned>(c - (isSmall ? 'a' : 'A')) + 1;
    }
    return number == 0 || number > mostSheetColumns ? mostSheetColumns : number - 1;
}

std::string lettersOfColumn(unsigned column) {
    std::string letters;
    for (unsigned rest = column + 1; rest > 0; rest = (rest - 1) / 26) {
        letters.insert(letters.begin(), static_cast<char>('A' + (rest - 1) % 26));
    }
    return letters;
}

void SheetCells::makeRoom(std::size_t size) {
    constexpr std::size_t least = 4096;
    if (size <= block_->size()) return;
    block_->resize(std::max({size, block_->size() + block_->size() / 2, least}));
}

bool SheetCells::add(unsigned column, std::string_view text) {
    const auto row = static_cast<unsigned>(rows_.size()) + 1;
    if (lastRow_.size() <= column) lastRow_.resize(column + 1);
    if (std::exchange(lastRow_[column], row) == row) return false;
    makeRoom(size_ + bytesOfColumn + bytesOfSize + text.size() + 1);
    char* to = block_->data() + size_;
    const auto number = static_cast<std::uint16_t>(column);
    const auto size = static_cast<std::uint32_t>(text.size());
    std::memcpy(to, &number, bytesOfColumn);
    std::memcpy(to + bytesOfColumn, &size, bytesOfSize);
    std::copy(text.begin(), text.end(), to + bytesOfColumn + bytesOfSize);
    size_ += bytesOfColumn + bytesOfSize + text.size();
    ++count_;
    return true;
}

void SheetCells::endRow(std::uint32_t number) {
    if (count_ > 0) rows_.push_back({number, count_});
    count_ = 0;
}

std::vector<unsigned> SheetCells::places() const {
    std::vector<unsigned> places(lastRow_.size());
    unsigned next = 0;
    for (std::size_t column = 0; column < places.size(); ++column) {
        places[column] = next;
        if (lastRow_[column] != 0) ++next;
    }
    return places;
}

Quor::Ptr<TextBlock> SheetCells::take() {
    block_->resize(size_);
    return std::move(block_);
}

CellWalk::Cell CellWalk::next() {
    std::uint16_t column = 0;
    std::uint32_t size = 0;
    std::memcpy(&column, at_, bytesOfColumn);
    std::memcpy(&size, at_ + bytesOfColumn, bytesOfSize);
    char* const text = at_ + bytesOfColumn + bytesOfSize;
    at_ = text + size;
    return {column, {text, size}};
}

}  // namespace vek::formats
