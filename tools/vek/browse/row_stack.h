#pragma once

#include <string>
#include <vector>

#include "formats/choosing/select.h"
#include "tools/vek/browse/row_list.h"

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
    /// The shown ones that are chosen, in the order of the table.
    std::vector<unsigned> chosenRows(const Selection& selection) const {
        return chosenRows(selection, shown_);
    }

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
    /// Rows went, which the views know already.
    void rowsDeleted(unsigned first, unsigned count);
    /// While many rows come and go, no row may be shown: all of them follow at once, in `resume`.
    void suspend();
    void resume(unsigned behindPlace);
    bool isSuspended() const { return isSuspended_; }
    /// The conditions and the order, as people read them.
    std::vector<std::string> path() const;
    const std::vector<unsigned>& order() const { return order_; }
    bool isReversed() const { return isReversed_; }

private:
    struct Level {
        std::string name;
        Selection selection;
        VDBView view;                     // in the order of the file
        std::vector<unsigned> rows = {};  // while there is no view; none where it had all of them
        bool isWhole = false;
    };
    class Moves;

    std::vector<unsigned> chosenRows(const Selection& selection, const VDBView& below) const;
    VDBView chosen(const Selection& selection, const VDBView& below) const;
    VDBView sorted(const VDBView& view, const std::vector<unsigned>& order) const;
    void show();
    bool isSorted() const { return shown_.get() != levels_.back().view.get(); }
    void resume(Level& level, const Moves& moves);

    const Log& log_;
    std::vector<Level> levels_;
    std::vector<unsigned> order_;
    bool isReversed_ = false;
    VDBView shown_;
    bool isSuspended_ = false;
    bool wasSorted_ = false;
    unsigned rowsBefore_ = 0;
    std::vector<unsigned> sortedRows_;  // while suspended
    RowList numbers_;                   // what the rows were then; `nowhere` for those that came
};

}  // namespace vek::browse
