#include <algorithm>
#include <utility>
#include <vector>

#include <vekdb/host/watchdog.h>
#include "vekdb/order/record_sort.h"
#include "views/view_parts.h"

// Entries from `at` on are taken to show rows that the insertion moved up. The room for the new
// ones is had first: once the source has them, nothing may fail.
void VDBViewRep::insertBlankRecords(int at, int n) {
    VDBBase* to = source();
    if (to == nullptr || n < 0) {
        return;
    }
    at = std::clamp(at, 0, rowCount());
    const bool inside = at < rowCount();
    const unsigned first = inside ? sourceRow(at) : to->get_num_records();
    ViewIndex::Room room = index().roomForMore(at, n);
    if (inside) {
        to->insert_records(first, n);
    } else {
        to->add_records(n);
    }
    index().raiseFrom(at, static_cast<unsigned>(n));
    index().insertRun(at, n, first, std::move(room));
}

// The rows go from this view through the notice of each deletion, so that those still to go
// come to stand at `at`.
void VDBViewRep::deleteRecords(int at, int n) {
    const Pin pin(*this);
    while (at >= 0 && source() != nullptr) {
        n = std::min(n, rowCount() - at);
        if (n < 1) {
            return;
        }
        const int run = index().consecutiveRun(at, n);
        source()->delete_records(sourceRow(at), run);
        if (pin.gone() || n <= run) {
            return;
        }
        n -= run;
    }
}

int VDBViewRep::deleteTagged() {
    return eachRun(&VDBViewRep::tag, &VDBViewRep::deleteRecords);
}

int VDBViewRep::removeSome(PositionTest test) {
    return eachRun(test, &VDBViewRep::removeRecordsFromBaseView);
}

int VDBViewRep::removeTagged() {
    return removeSome(&VDBViewRep::tag);
}

int VDBViewRep::removeNonTagged() {
    return removeSome(&VDBViewRep::notTagged);
}

// Edits every unbroken run of rows that pass the test and adds up their lengths. The row that
// ended a run is expected at the run's start when the edit is done, and not looked at again.
int VDBViewRep::eachRun(PositionTest test, void (VDBViewRep::*edit)(int at, int n)) {
    const Pin pin(*this);
    int rows = 0;
    int start = -1;
    for (int row = 0; row < rowCount() || start >= 0; ++row) {
        if (row < rowCount() && (this->*test)(row)) {
            start = start < 0 ? row : start;
            continue;
        }
        if (start < 0) {
            continue;
        }
        const bool atEnd = row >= rowCount();
        const int run = row - start;
        (this->*edit)(start, run);
        rows += run;
        if (pin.gone() || atEnd) {
            return rows;
        }
        row = start;
        start = -1;
    }
    return rows;
}

void VDBViewRep::remove(int at, int n) {
    if (at < 0 || at >= rowCount() || n < 0) {
        return;
    }
    const int removed = std::min(n, rowCount() - at);
    if (!hasListeners(recordsDeletedType())) {
        index().remove(at, removed);
        return;
    }
    RowNumbers rows;
    rows.appendRun(at, removed);
    index().remove(at, removed);
    tell(NotifyMsg(rows), recordsDeletedType());
}

// The lowest view of the stack takes the rows out; the ones above it follow its notices.
void VDBViewRep::removeRecordsFromBaseView(int at, int n) {
    const Pin pin(*this);
    while (at >= 0) {
        n = std::min(n, rowCount() - at);
        if (n < 1) {
            return;
        }
        if (base() == nullptr) {
            if (table() != nullptr) {
                remove(at, n);
            }
            return;
        }
        const int run = index().consecutiveRun(at, n);
        base()->removeRecordsFromBaseView(static_cast<int>(sourceRow(at)), run);
        if (pin.gone() || n <= run) {
            return;
        }
        n -= run;
    }
}

void VDBViewRep::sort(int direction, int forceNormal) {
    const LifeSupport alive;
    VDBBase* from = source();
    if (from == nullptr) {
        return;
    }
    from->sortPrepare(direction, forceNormal);
    std::vector<SortEntry> entries;
    const int rows = index().backedCount();
    entries.reserve(static_cast<std::size_t>(rows));
    for (int i = 0; i < rows; ++i) {
        entries.push_back({(*this)[i], static_cast<unsigned>(i)});
    }
    sortRecordEntries(entries.data(), entries.size(), direction);
    std::vector<unsigned> positions;
    positions.reserve(entries.size());
    for (const SortEntry& entry : entries) {
        positions.push_back(entry.position);
    }
    entries = std::vector<SortEntry>();
    index().reorder(positions.data());
}
