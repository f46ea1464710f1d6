#pragma once

#include <string>
#include <vector>

#include "formats/choosing/select.h"

namespace vek::browse {

using namespace formats;

/// What a person asks for: rows of one condition, and tagged ones.
Selection rowsWhere(const std::string& condition);
Selection taggedRowsOnly();

/// The rows of a log that are shown: a stack of views over its table, each with the rows of the
/// one below that a filter leaves, and on top of it an order. Rows that are deleted vanish from
/// all of them by themselves. Rows that an edit made no longer fit stay until the next `refresh`.
class RowStack {
public:
    /// All rows. The log outlives this.
    explicit RowStack(const Log& log);

    unsigned size() const { return shown_->get_num_records(); }
    /// The table's row at a place.
    unsigned rowAt(unsigned place) const { return shown_->baseIndex(place); }
    /// Where a row of the table is shown; `nowhere` when it is not.
    unsigned placeOf(unsigned row) const;
    static constexpr unsigned nowhere = 0xFFFFFFFF;
    const VDBView& shown() const { return shown_; }

    /// One more view on the stack. A Failure leaves the stack as it was.
    void filter(const std::string& name, const Selection& selection);
    /// Takes the uppermost off; false when there is none.
    bool unfilter();
    /// By these columns; none is the order of the file.
    void sort(std::vector<unsigned> columns, bool isReversed);
    /// Looks all filters up and sorts anew.
    void refresh();
    /// Rows came into the table: those that were there move, the new ones are shown, in the order
    /// of the file, or behind a place where the rows are sorted.
    void rowsInserted(unsigned first, unsigned count, unsigned behindPlace);
    /// The conditions and the order, as people read them.
    std::vector<std::string> path() const;
    const std::vector<unsigned>& order() const { return order_; }
    bool isReversed() const { return isReversed_; }

private:
    struct Level {
        std::string name;
        Selection selection;
        VDBView view;  // in the order of the file
    };

    VDBView chosen(const Selection& selection, const VDBView& below) const;
    VDBView sorted(const VDBView& view, const std::vector<unsigned>& order) const;
    void show();

    const Log& log_;
    std::vector<Level> levels_;
    std::vector<unsigned> order_;
    bool isReversed_ = false;
    VDBView shown_;
};

}  // namespace vek::browse
