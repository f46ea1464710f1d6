#include "formats/comparing/compare.h"

#include <algorithm>
#include <utility>

#include <vekdb/host/keyed_hash.h>
#include "formats/choosing/select.h"
#include "formats/comparing/row_contents.h"
#include "formats/comparing/row_groups.h"
#include "formats/comparing/timecode_forms.h"
#include "formats/log/column_names.h"

namespace vek::formats {

namespace {

using Quor::keyedHash;

// The rows of a log by their keys, and which of the rows of its key each one is.
class Keys {
    auto sameAs(std::string_view key) const {
        return [this, key](unsigned row) { return key_.of(log_, row, other_) == key; };
    }

public:
    Keys(const Log& log, RowKey key) : log_(log), key_(std::move(key)), groups_(log.rowCount()) {
        const auto hashOf = [&](unsigned row) { return keyedHash(of(row)); };
        forEachHashed(groups_, log.rowCount(), hashOf, [&](unsigned row, std::uint64_t hash) {
            const std::string_view key = of(row);
            if (key.empty() && withoutKey_++ == 0) firstWithout_ = row;
            groups_.add(hash, row, sameAs(key));
        });
        if (groups_.repeated().empty()) return;
        turns_.resize(log.rowCount());
        for (const std::vector<unsigned>& rows : groups_.repeated()) {
            for (unsigned i = 0; i < rows.size(); ++i) turns_[rows[i]] = i;
        }
    }

    // Ends with the next one that is asked for.
    std::string_view of(unsigned row) const { return key_.of(log_, row, room_); }
    const RowGroups& groups() const { return groups_; }
    std::span<const unsigned> rowsOf(std::uint64_t hash, std::string_view key) const {
        return groups_.find(hash, sameAs(key));
    }
    unsigned turnOf(unsigned row) const { return turns_.empty() ? 0 : turns_[row]; }

    // Those without a key, and rows of one value, in the order of the second of them.
    void note(LogComparison& found) const {
        if (withoutKey_ > 0) found.notes.push_back(noteOfThoseWithout());
        for (const std::vector<unsigned>& rows : groups_.repeated()) {
            if (withoutKey_ > 0 && rows.front() == firstWithout_) continue;
            if (found.notes.size() < Log::mostProblems)
                found.notes.push_back(noteOf(rows));
            else
                ++found.moreNotes;
        }
    }

private:
    std::string noteOfThoseWithout() const {
        return worded(
            log_.name,
            {log_.lineOf(firstWithout_), key_.name(log_),
             concat("no key",
                    withoutKey_ == 1 ? std::string() : concat(" in ", counted(withoutKey_, "row"))),
             "one in each row", "rows without a key are matched in their order"});
    }

    std::string noteOf(const std::vector<unsigned>& rows) const {
        return worded(log_.name, {log_.lineOf(rows[1]), key_.name(log_),
                                  "key " + inQuotes(key_.text(log_, rows[1])) + " " +
                                      std::to_string(rows.size()) + " times",
                                  "each key once", "rows of this key are matched in their order"});
    }

    const Log& log_;
    RowKey key_;
    mutable std::string room_;
    mutable std::string other_;
    RowGroups groups_;
    std::vector<unsigned> turns_;
    std::size_t withoutKey_ = 0;
    unsigned firstWithout_ = 0;
};

// Columns of one name belong together in their order.
LogComparison columnsOf(const Log& a, const Log& b) {
    LogComparison found{a, b, {}, {}, {}, {}, {}, 0, RowKey()};
    std::vector<unsigned> others = sameColumns(a, b);
    std::vector<char> isShared(b.columnCount());
    for (unsigned i = 0; i < a.columnCount(); ++i) {
        if (others[i] == noColumn) {
            found.onlyInA.push_back(i);
            continue;
        }
        found.shared.push_back({i, others[i]});
        isShared[others[i]] = 1;
        if (const auto other = TimecodeForms(a, i).others(b, others[i], a.name)) {
            found.notes.push_back(worded(b.name, *other));
        }
    }
    for (unsigned i = 0; i < b.columnCount(); ++i) {
        if (!isShared[i]) found.onlyInB.push_back(i);
    }
    for (const Problem& alike : namesAlmostAs(b, a)) found.notes.push_back(worded(b.name, alike));
    return found;
}

class Comparison {
public:
    Comparison(const Log& a, const Log& b)
        : a_(a), b_(b), found_(columnsOf(a, b)), rows_(found_.shared) {}

    LogComparison byKey(const std::string& key) {
        found_.key = RowKey(columnList(a_, key));
        const Keys inA(a_, found_.key);
        const Keys inB(b_, RowKey(columnList(b_, key)));
        inA.note(found_);
        inB.note(found_);
        std::vector<bool> isMatched(b_.rowCount());
        const auto hashOf = [&](unsigned row) { return keyedHash(inA.of(row)); };
        forEachHashed(inB.groups(), a_.rowCount(), hashOf, [&](unsigned row, std::uint64_t hash) {
            const auto rows = inB.rowsOf(hash, inA.of(row));
            const unsigned turn = inA.turnOf(row);
            if (turn >= rows.size()) return addRemoved(row);
            isMatched[rows[turn]] = true;
            addChanged(row, rows[turn]);
        });
        for (unsigned row = 0; row < b_.rowCount(); ++row) {
            if (!isMatched[row]) addAdded(row);
        }
        return std::move(found_);
    }

    LogComparison inOrder() {
        RowContents contents(a_, b_, found_.shared);
        unsigned nextA = 0;
        unsigned nextB = 0;
        const auto anchor = [&](unsigned a, unsigned b) {
            compareGap(nextA, a, nextB, b);
            nextA = a + 1;
            nextB = b + 1;
        };
        // Equal rows at both ends, and between them the rows that are there exactly once on
        // either side, of which the longest ascending run is taken.
        const unsigned head = contents.equalAtStart();
        const unsigned tail = contents.equalAtEnd(head);
        if (head > 0) nextA = nextB = head;
        for (const RowPair& pair : ascending(contents.onceInEach(head, tail))) {
            anchor(pair.a, pair.b);
        }
        compareGap(nextA, a_.rowCount() - tail, nextB, b_.rowCount() - tail);
        return std::move(found_);
    }

private:
    // The longest run that ascends in B, too.
    static std::vector<RowPair> ascending(const std::vector<RowPair>& pairs) {
        std::vector<unsigned> ends;
        const auto count = static_cast<unsigned>(pairs.size());
        std::vector<unsigned> before(count, count);
        for (unsigned i = 0; i < count; ++i) {
            auto place =
                std::lower_bound(ends.begin(), ends.end(), pairs[i].b,
                                 [&](unsigned end, unsigned row) { return pairs[end].b < row; });
            if (place != ends.begin()) before[i] = *(place - 1);
            if (place == ends.end())
                ends.push_back(i);
            else
                *place = i;
        }
        std::vector<RowPair> run;
        unsigned at = ends.empty() ? count : ends.back();
        for (; at < count; at = before[at]) run.push_back(pairs[at]);
        std::reverse(run.begin(), run.end());
        return run;
    }

    // Between two anchors rows go together one by one where most of their cells agree.
    void compareGap(unsigned a, unsigned endA, unsigned b, unsigned endB) {
        while (a < endA && b < endB) {
            if (areAkin(a, b))
                addChanged(a++, b++);
            else if (endB - b > endA - a)
                addAdded(b++);
            else
                addRemoved(a++);
        }
        while (a < endA) addRemoved(a++);
        while (b < endB) addAdded(b++);
    }

    bool areAkin(unsigned a, unsigned b) { return rows_.areAkin(recordOf(a_, a), recordOf(b_, b)); }

    void addRemoved(unsigned row) { found_.rows.push_back({DifferingRow::removed, row, 0}); }
    void addAdded(unsigned row) { found_.rows.push_back({DifferingRow::added, 0, row}); }

    void addChanged(unsigned a, unsigned b) {
        if (!rows_.areEqual(recordOf(a_, a), recordOf(b_, b))) {
            found_.rows.push_back({DifferingRow::changed, a, b});
        }
    }

    const Log& a_;
    const Log& b_;
    LogComparison found_;
    RowComparer rows_;
};

}  // namespace

LogComparison compareLogs(const Log& a, const Log& b, const std::string& key) {
    Comparison comparison(a, b);
    return key.empty() ? comparison.inOrder() : comparison.byKey(key);
}

}  // namespace vek::formats
