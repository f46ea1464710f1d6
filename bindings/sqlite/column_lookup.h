#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vek::sql {

/// What a cell must be to be equal to a text. SQLite compares texts as numbers where the other
/// side of a comparison is a number by its type, so of texts that look like numbers more may be
/// equal than are the same. What this lets through SQLite compares again; what it does not, is
/// equal in no way.
class EqualCells {
public:
    /// `isText`: both sides are compared as texts for sure.
    EqualCells(std::string_view text, bool isText);

    bool mayHold(std::string_view cell) const;
    /// Whether all that may be equal is found by the key.
    bool hasKey() const { return kind_ != Kind::oddNumber; }

private:
    friend class ColumnLookup;
    enum class Kind { text, wholeNumber, oddNumber };
    static Kind kindOf(std::string_view text, std::int64_t& number);

    std::string_view text_;
    Kind kind_ = Kind::text;
    std::int64_t number_ = 0;
};

/// The rows of a column by what its cells are equal to: what a join asks of it, row for row.
class ColumnLookup {
public:
    /// `cell(row)` for each row below the count.
    template <class Cell>
    ColumnLookup(unsigned count, Cell cell) : heads_(roomFor(count), none), next_(count, none) {
        for (unsigned row = count; row-- > 0;) add(row, cell(row));
    }

    /// Rows that may be equal, in their order.
    void find(const EqualCells& equal, std::vector<unsigned>& rows) const;

private:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    static std::size_t roomFor(unsigned count);
    void add(unsigned row, std::string_view cell);
    std::size_t placeOf(const EqualCells& equal) const;

    std::vector<std::uint32_t> heads_;
    std::vector<std::uint32_t> next_;
    std::vector<unsigned> odd_;  // numbers that are written in other ways, the last ones first
};

}  // namespace vek::sql
