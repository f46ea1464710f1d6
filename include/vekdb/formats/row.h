#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <vekdb/field_types.h>

/// Handles of a log's rows and columns. They are small, are copied like numbers, and keep the log
/// that they belong to alive. Rows and columns count from 0 in the order of the table.
namespace vek {

struct LogInside;

/// Walks what has a `size` and an element `at` each place below it. It has a handle of its own of
/// what it walks, which keeps the log alive.
template <class Range>
class PlaceIterator {
public:
    /// What iterators of the standard library are asked for.
    using value_type = decltype(std::declval<const Range&>().at(0u));
    using reference = value_type;
    using pointer = void;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::input_iterator_tag;

    /// Stands nowhere; equal to others that do.
    PlaceIterator() noexcept = default;
    /// Stands on a place of the range, or behind the last.
    PlaceIterator(const Range& range, unsigned place) : range_(range), place_(place) {}
    /// What is there, by value.
    value_type operator*() const { return range_->at(place_); }
    /// Goes to the next place.
    PlaceIterator& operator++() noexcept {
        ++place_;
        return *this;
    }
    PlaceIterator operator++(int) {
        PlaceIterator before = *this;
        ++place_;
        return before;
    }
    /// Both must walk the same range.
    bool operator==(const PlaceIterator& other) const noexcept { return place_ == other.place_; }

private:
    std::optional<Range> range_ = {};
    unsigned place_ = 0;
};

/// A column of a log: its name, its type and, as a range, its values row by row. It names its
/// place in the table, so it ends when a column before it is removed.
class Column {
public:
    /// Its place among the columns of the table.
    unsigned index() const noexcept { return index_; }
    /// Its name as it is now.
    std::string name() const;
    /// The name by which Log::column finds it and no other one: "Reel#2" is the second of several
    /// columns of the name Reel, and the first "Reel#1"; "[]" is one without a name.
    std::string address() const;
    /// What the table takes its values for; `text` in most formats.
    DBFieldTypes::eType type() const noexcept;

    /// How many rows the log has, and the value that the row in a place has here: bytes as they
    /// were read, "" behind the last row. They are the log's, as long as the cell does not change.
    unsigned size() const noexcept;
    std::string_view at(unsigned place) const noexcept;
    PlaceIterator<Column> begin() const { return {*this, 0}; }
    PlaceIterator<Column> end() const { return {*this, size()}; }

private:
    friend class Log;
    friend class Columns;
    friend class Row;
    friend struct LogInside;
    Column(std::shared_ptr<const LogInside> log, unsigned index)
        : log_(std::move(log)), index_(index) {}

    std::shared_ptr<const LogInside> log_;
    unsigned index_;
};

/// The columns of a log, as a range.
class Columns {
public:
    /// How many there are now, and the one in a place below that.
    unsigned size() const noexcept;
    Column at(unsigned place) const { return {log_, place}; }
    PlaceIterator<Columns> begin() const { return {*this, 0}; }
    PlaceIterator<Columns> end() const { return {*this, size()}; }

private:
    friend class Log;
    explicit Columns(std::shared_ptr<const LogInside> log) : log_(std::move(log)) {}

    std::shared_ptr<const LogInside> log_;
};

/// A row of a log and, as a range, its cells. Rows that are added or removed leave it what it is.
class Row {
public:
    /// Its place among the rows of the table.
    unsigned index() const noexcept { return index_; }
    /// The line of the file that it began on, from 1 on; 0 for a row that was added.
    std::size_t line() const noexcept;
    /// Whether its cell in the column "Tag" is a number other than 0.
    bool isTagged() const noexcept;

    /// A cell: bytes as they were read, "" where there is no such column in this log. They are the
    /// log's, as long as the cell does not change. A name finds what Log::column finds by it, so
    /// that one that several columns have finds none. Who goes over many rows looks the column up
    /// once.
    std::string_view operator[](const Column& column) const noexcept {
        return column.log_ == log_ ? at(column.index()) : std::string_view();
    }
    std::string_view operator[](std::string_view column) const noexcept;
    /// The number of cells, and the cell in a place.
    unsigned size() const noexcept;
    std::string_view at(unsigned column) const noexcept;
    PlaceIterator<Row> begin() const { return {*this, 0}; }
    PlaceIterator<Row> end() const { return {*this, size()}; }

private:
    friend class Log;
    friend class View;
    friend struct LogInside;
    Row(std::shared_ptr<const LogInside> log, unsigned index)
        : log_(std::move(log)), index_(index) {}

    std::shared_ptr<const LogInside> log_;
    unsigned index_;
};

}  // namespace vek
