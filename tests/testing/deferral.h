#pragma once

#include "views/view_index.h"

/// While in scope, indexes of at least so many rows defer their removals after so many passes.
class DeferralFrom {
public:
    DeferralFrom(int leastRows, unsigned passes) {
        ViewIndex::Deferral::leastRows = leastRows;
        ViewIndex::Deferral::passes = passes;
    }
    DeferralFrom(const DeferralFrom&) = delete;
    DeferralFrom& operator=(const DeferralFrom&) = delete;
    ~DeferralFrom() {
        ViewIndex::Deferral::leastRows = leastRows_;
        ViewIndex::Deferral::passes = passes_;
    }

    static constexpr int never = 1 << 30;

private:
    int leastRows_ = ViewIndex::Deferral::leastRows;
    unsigned passes_ = ViewIndex::Deferral::passes;
};

/// While in scope, indexes that are made keep their rows in blocks of so few that a handful of
/// rows are many blocks.
class SmallBlocks {
public:
    explicit SmallBlocks(unsigned bits = 2) { RowBlocks::Fill::bits = bits; }
    SmallBlocks(const SmallBlocks&) = delete;
    SmallBlocks& operator=(const SmallBlocks&) = delete;
    ~SmallBlocks() { RowBlocks::Fill::bits = RowBlocks::Fill::mostBits; }
};
