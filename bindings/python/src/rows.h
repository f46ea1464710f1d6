#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <vekdb/formats/choice.h>
#include "shared_log.h"

/// Rows and lists of them as Python holds them: by their indexes in the table, which rows keep.
namespace vekpy {

struct Row {
    Shared log;
    unsigned index = 0;
};

/// The rows of a view. What is removed from the log, or from the view that this one was made of, is
/// dropped when the rows are next asked for; so nobody has to know his views, and they may go in
/// any order.
class RowList {
public:
    RowList(Shared log, std::vector<unsigned> rows, std::size_t matched,
            std::shared_ptr<RowList> base, const Hold& hold);
    ~RowList();
    RowList(const RowList&) = delete;
    RowList& operator=(const RowList&) = delete;

    const Shared& log() const { return log_; }
    /// As they are now. To be asked with the turn of the log.
    const std::vector<unsigned>& rows(const Hold& hold);
    std::size_t matched() const { return matched_; }
    const std::shared_ptr<RowList>& base() const { return base_; }

    /// Puts them in another order, or others in their place.
    void put(std::vector<unsigned> rows, std::size_t matched);
    void remove(std::size_t first, std::size_t behind);

    /// What it was made by, to be asked anew.
    std::optional<vek::Choice> choice = {};

private:
    bool isBehind(const Hold& hold) const;
    void follow(const Hold& hold);

    Shared log_;
    std::vector<unsigned> rows_;
    std::size_t matched_;
    std::shared_ptr<RowList> base_;
    std::size_t drops_ = 0;
    std::size_t seen_ = 0;  // removals of the log, or drops of the base, that were followed
};

using View = std::shared_ptr<RowList>;

/// The place that an index of Python means, counted from the end where it is negative; an
/// IndexError for one that is not there.
unsigned placeOf(py::ssize_t index, std::size_t size);

/// The places of a slice, in its order.
std::vector<std::size_t> placesOf(const py::slice& slice, std::size_t size);

/// The table's rows of a view of the library.
std::vector<unsigned> rowsOf(const vek::View& view);

/// The rows that the log shows, in its order.
std::vector<unsigned> shownRows(const Hold& hold);

/// A view of the library that shows these rows.
vek::View viewOf(const Hold& hold, const std::vector<unsigned>& rows);

/// A new object of Python for a row.
py::object newRow(Row row);

void bindRow(py::module_& module);

}  // namespace vekpy

namespace pybind11::detail {

template <>
class type_caster<vekpy::View> : public vekpy::MadeHolderCaster<vekpy::RowList> {};

}  // namespace pybind11::detail
