#include "formats/comparing/compare.h"

#include <algorithm>
#include <unordered_map>

#include <vekdb/host/keyed_hash.h>
#include "formats/log/column_names.h"

namespace vek::formats {

namespace {

struct ColumnPair {
    unsigned a = 0;
    unsigned b = 0;
};

// Rows of the two logs that belong together, ascending in both.
struct RowPair {
    unsigned a = 0;
    unsigned b = 0;
};

class Comparison {
public:
    Comparison(const Log& a, const Log& b) : a_(a), b_(b), found_{a, b, {}, {}, {}, {}} {
        // Columns of one name belong together in their order.
        std::vector<unsigned> others = sameColumns(a, b);
        std::vector<char> isShared(b.columnCount());
        for (unsigned i = 0; i < a.columnCount(); ++i) {
            if (others[i] == noColumn) {
                found_.onlyInA.push_back(a.columnName(i));
                continue;
            }
            shared_.push_back({i, others[i]});
            isShared[others[i]] = 1;
        }
        for (unsigned i = 0; i < b.columnCount(); ++i) {
            if (!isShared[i]) found_.onlyInB.push_back(b.columnName(i));
        }
    }

    Differences byKey(const std::string& key) {
        unsigned columnA = a_.requireColumn(key);
        unsigned columnB = b_.requireColumn(key);
        Keys inA = keysOf(a_, columnA);
        Keys inB = keysOf(b_, columnB);
        std::vector<char> isMatched(b_.rowCount());
        for (unsigned row = 0; row < a_.rowCount(); ++row) {
            std::string value(a_.cell(row, columnA));
            unsigned turn = inA.turn[row];
            auto known = inB.rows.find(value);
            if (known == inB.rows.end() || turn >= known->second.size()) {
                addRemoved(row);
                continue;
            }
            unsigned other = known->second[turn];
            isMatched[other] = 1;
            addChanged(row, other, value);
        }
        for (unsigned row = 0; row < b_.rowCount(); ++row) {
            if (!isMatched[row]) addAdded(row);
        }
        return std::move(found_);
    }

    Differences inOrder() {
        unsigned nextA = 0;
        unsigned nextB = 0;
        for (const RowPair& pair : anchors()) {
            compareGap(nextA, pair.a, nextB, pair.b);
            nextA = pair.a + 1;
            nextB = pair.b + 1;
        }
        compareGap(nextA, a_.rowCount(), nextB, b_.rowCount());
        return std::move(found_);
    }

private:
    // The rows of each key in their order, and for every row the how-manieth of its key it is.
    struct Keys {
        std::unordered_map<std::string, std::vector<unsigned>, Quor::KeyedHash> rows;
        std::vector<unsigned> turn;
    };

    Keys keysOf(const Log& log, unsigned column) {
        Keys keys;
        for (unsigned row = 0; row < log.rowCount(); ++row) {
            std::vector<unsigned>& rows = keys.rows[std::string(log.cell(row, column))];
            keys.turn.push_back(static_cast<unsigned>(rows.size()));
            rows.push_back(row);
        }
        noteRepeats(log, column, keys);
        return keys;
    }

    void noteRepeats(const Log& log, unsigned column, const Keys& keys) {
        for (unsigned row = 0; row < log.rowCount(); ++row) {
            std::string value(log.cell(row, column));
            std::size_t count = keys.rows.at(value).size();
            if (count == 1 || keys.turn[row] != 1) continue;
            found_.notes.push_back(
                worded(log.name, {log.lineOf(row), log.columnName(column),
                                  "key " + inQuotes(value) + " " + std::to_string(count) + " times",
                                  "each key once", "rows of this key are matched in their order"}));
        }
    }

    std::string content(const Log& log, unsigned row, unsigned ColumnPair::*side) const {
        std::string text;
        for (const ColumnPair& pair : shared_) {
            std::string_view cell = log.cell(row, pair.*side);
            text += std::to_string(cell.size()) + ":" + std::string(cell);
        }
        return text;
    }

    // Equal rows at both ends, and between them the rows that are there exactly once on either
    // side, of which the longest ascending run is taken.
    std::vector<RowPair> anchors() const {
        std::vector<std::string> textA = contents(a_, &ColumnPair::a);
        std::vector<std::string> textB = contents(b_, &ColumnPair::b);
        std::size_t head = 0;
        while (head < textA.size() && head < textB.size() && textA[head] == textB[head]) ++head;
        std::size_t tail = 0;
        while (tail < textA.size() - head && tail < textB.size() - head &&
               textA[textA.size() - 1 - tail] == textB[textB.size() - 1 - tail]) {
            ++tail;
        }
        std::vector<RowPair> pairs;
        for (unsigned i = 0; i < head; ++i) pairs.push_back({i, i});
        for (const RowPair& pair : ascending(uniquePairs(textA, textB, head, tail))) {
            pairs.push_back(pair);
        }
        for (std::size_t i = tail; i > 0; --i) {
            pairs.push_back(
                {static_cast<unsigned>(textA.size() - i), static_cast<unsigned>(textB.size() - i)});
        }
        return pairs;
    }

    std::vector<std::string> contents(const Log& log, unsigned ColumnPair::*side) const {
        std::vector<std::string> out;
        for (unsigned row = 0; row < log.rowCount(); ++row) out.push_back(content(log, row, side));
        return out;
    }

    static std::vector<RowPair> uniquePairs(const std::vector<std::string>& a,
                                            const std::vector<std::string>& b, std::size_t head,
                                            std::size_t tail) {
        struct Seen {
            unsigned inA = 0;
            unsigned inB = 0;
            unsigned rowB = 0;
        };
        std::unordered_map<std::string_view, Seen, Quor::KeyedHash> seen;
        for (std::size_t i = head; i + tail < a.size(); ++i) ++seen[a[i]].inA;
        for (std::size_t i = head; i + tail < b.size(); ++i) {
            Seen& entry = seen[b[i]];
            ++entry.inB;
            entry.rowB = static_cast<unsigned>(i);
        }
        std::vector<RowPair> pairs;
        for (std::size_t i = head; i + tail < a.size(); ++i) {
            const Seen& entry = seen[a[i]];
            if (entry.inA != 1 || entry.inB != 1) continue;
            pairs.push_back({static_cast<unsigned>(i), entry.rowB});
        }
        return pairs;
    }

    // The longest run that ascends in B, too.
    static std::vector<RowPair> ascending(const std::vector<RowPair>& pairs) {
        std::vector<std::size_t> ends;
        std::vector<std::size_t> before(pairs.size(), pairs.size());
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            auto place =
                std::lower_bound(ends.begin(), ends.end(), pairs[i].b,
                                 [&](std::size_t end, unsigned row) { return pairs[end].b < row; });
            if (place != ends.begin()) before[i] = *(place - 1);
            if (place == ends.end())
                ends.push_back(i);
            else
                *place = i;
        }
        std::vector<RowPair> run;
        std::size_t at = ends.empty() ? pairs.size() : ends.back();
        for (; at < pairs.size(); at = before[at]) run.push_back(pairs[at]);
        std::reverse(run.begin(), run.end());
        return run;
    }

    // Between two anchors rows go together one by one where most of their cells agree.
    void compareGap(unsigned a, unsigned endA, unsigned b, unsigned endB) {
        while (a < endA && b < endB) {
            if (areAkin(a, b))
                addChanged(a++, b++, "");
            else if (endB - b > endA - a)
                addAdded(b++);
            else
                addRemoved(a++);
        }
        while (a < endA) addRemoved(a++);
        while (b < endB) addAdded(b++);
    }

    bool areAkin(unsigned a, unsigned b) const {
        std::size_t filled = 0;
        std::size_t equal = 0;
        for (const ColumnPair& pair : shared_) {
            std::string_view before = a_.cell(a, pair.a);
            std::string_view after = b_.cell(b, pair.b);
            if (before.empty() && after.empty()) continue;
            ++filled;
            equal += before == after ? 1 : 0;
        }
        return equal * 2 >= filled;
    }

    void addRemoved(unsigned row) {
        found_.rows.push_back({RowDifference::removed, row, 0, "", {}});
    }

    void addAdded(unsigned row) { found_.rows.push_back({RowDifference::added, 0, row, "", {}}); }

    void addChanged(unsigned a, unsigned b, const std::string& key) {
        RowDifference difference{RowDifference::changed, a, b, key, {}};
        for (const ColumnPair& pair : shared_) {
            std::string_view before = a_.cell(a, pair.a);
            std::string_view after = b_.cell(b, pair.b);
            if (before == after) continue;
            difference.cells.push_back(
                {a_.columnName(pair.a), std::string(before), std::string(after)});
        }
        if (!difference.cells.empty()) found_.rows.push_back(std::move(difference));
    }

    const Log& a_;
    const Log& b_;
    std::vector<ColumnPair> shared_;
    Differences found_;
};

}  // namespace

Differences compareLogs(const Log& a, const Log& b, const std::string& key) {
    Comparison comparison(a, b);
    return key.empty() ? comparison.inOrder() : comparison.byKey(key);
}

}  // namespace vek::formats
