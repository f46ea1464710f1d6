#include "formats/comparing/row_contents.h"

#include <algorithm>
#include <bit>
#include <utility>

#include <vekdb/host/keyed_hash.h>

namespace vek::formats {

namespace {

constexpr unsigned none = 0xFFFFFFFF;

// Which rows of two logs have one hash: one row of either, none, or many. A row is known by its
// place among the hashes of its log.
class HashedRows {
public:
    HashedRows(const std::vector<std::uint64_t>& inA, const std::vector<std::uint64_t>& inB)
        : inA_(inA), inB_(inB), slots_(std::bit_ceil((inA.size() + inB.size()) * 5 / 4 + 1)) {
        for (unsigned i = 0; i < inA.size(); ++i) enter(slotOf(inA[i]).a, i);
        for (unsigned i = 0; i < inB.size(); ++i) enter(slotOf(inB[i]).b, i);
    }

    /// The one row of B that has the hash of the row, where that is the one of A; else none.
    unsigned inBothOnce(unsigned a) const {
        const Slot& slot = slotOf(inA_[a]);
        return slot.a == a && !isMany(slot.b) ? slot.b : none;
    }

private:
    static constexpr unsigned many = 0x80000000;  // the rest is the first of them

    struct Slot {
        unsigned a = none;
        unsigned b = none;
    };

    static bool isMany(unsigned rows) { return (rows & many) != 0; }
    static void enter(unsigned& rows, unsigned row) { rows = rows == none ? row : rows | many; }

    std::uint64_t hashOf(const Slot& slot) const {
        return slot.a != none ? inA_[slot.a & ~many] : inB_[slot.b & ~many];
    }
    Slot& slotOf(std::uint64_t hash) {
        return const_cast<Slot&>(std::as_const(*this).slotOf(hash));
    }
    const Slot& slotOf(std::uint64_t hash) const {
        for (std::size_t i = hash & (slots_.size() - 1);; i = (i + 1) & (slots_.size() - 1)) {
            const Slot& slot = slots_[i];
            if (slot.a == none && slot.b == none) return slot;
            if (hashOf(slot) == hash) return slot;
        }
    }

    const std::vector<std::uint64_t>& inA_;
    const std::vector<std::uint64_t>& inB_;
    std::vector<Slot> slots_;
};

}  // namespace

RowComparer::RowComparer(const std::vector<ColumnPair>& columns) : columns_(columns) {
    std::size_t inA = 0;
    std::size_t inB = 0;
    for (const ColumnPair& pair : columns) {
        inA = std::max<std::size_t>(inA, pair.a + 1);
        inB = std::max<std::size_t>(inB, pair.b + 1);
    }
    a_.resize(inA);
    b_.resize(inB);
}

void RowComparer::fetch(const dbrecord& a, const dbrecord& b) {
    a.fieldViews(a_.data(), static_cast<unsigned>(a_.size()));
    b.fieldViews(b_.data(), static_cast<unsigned>(b_.size()));
}

bool RowComparer::areEqual(const dbrecord& a, const dbrecord& b) {
    fetch(a, b);
    return std::all_of(columns_.begin(), columns_.end(),
                       [&](const ColumnPair& pair) { return a_[pair.a] == b_[pair.b]; });
}

bool RowComparer::areAkin(const dbrecord& a, const dbrecord& b) {
    fetch(a, b);
    std::size_t filled = 0;
    std::size_t equal = 0;
    for (const ColumnPair& pair : columns_) {
        if (a_[pair.a].empty() && b_[pair.b].empty()) continue;
        ++filled;
        equal += a_[pair.a] == b_[pair.b] ? 1 : 0;
    }
    return equal * 2 >= filled;
}

bool RowContents::areEqual(unsigned a, unsigned b) {
    return rows_.areEqual(recordOf(a_, a), recordOf(b_, b));
}

unsigned RowContents::equalAtStart() {
    const unsigned most = std::min(a_.rowCount(), b_.rowCount());
    unsigned count = 0;
    while (count < most && areEqual(count, count)) ++count;
    return count;
}

unsigned RowContents::equalAtEnd(unsigned behind) {
    const unsigned most = std::min(a_.rowCount(), b_.rowCount()) - behind;
    unsigned count = 0;
    while (count < most && areEqual(a_.rowCount() - 1 - count, b_.rowCount() - 1 - count)) {
        ++count;
    }
    return count;
}

// Each value with its length in front, so that none runs into the next.
std::vector<std::uint64_t> RowContents::hashesOf(const Log& log, unsigned ColumnPair::*side,
                                                 unsigned start, unsigned end) const {
    std::vector<std::uint64_t> hashes;
    hashes.reserve(log.rowCount() - start - end);
    std::string content;
    for (unsigned row = start; row + end < log.rowCount(); ++row) {
        const dbrecord& record = recordOf(log, row);
        content.clear();
        for (const ColumnPair& pair : columns_) {
            const std::string_view cell = record.fieldView(pair.*side);
            const std::size_t size = cell.size();
            content.append(reinterpret_cast<const char*>(&size), sizeof size).append(cell);
        }
        hashes.push_back(Quor::keyedHash(content));
    }
    return hashes;
}

// That rows of one hash are equal is looked at, too.
std::vector<RowPair> RowContents::onceInEach(unsigned start, unsigned end) {
    const std::vector<std::uint64_t> inA = hashesOf(a_, &ColumnPair::a, start, end);
    const std::vector<std::uint64_t> inB = hashesOf(b_, &ColumnPair::b, start, end);
    if (inA.empty() || inB.empty()) return {};
    HashedRows rows(inA, inB);
    std::vector<RowPair> pairs;
    for (unsigned i = 0; i < inA.size(); ++i) {
        const unsigned other = rows.inBothOnce(i);
        if (other == none || !areEqual(start + i, start + other)) continue;
        pairs.push_back({start + i, start + other});
    }
    return pairs;
}

}  // namespace vek::formats
