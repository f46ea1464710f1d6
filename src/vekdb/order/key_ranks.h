#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "vekdb/order/sort_items.h"
#include "vekdb/order/sort_keys.h"

/// The ranks of keys among those that differ, for rows that share few long ones: the different
/// keys are sorted, and then a row's key is a small number.
class KeyRanks final : private iTieBreak {
public:
    /// Without ranks where more keys differ than are worth it.
    explicit KeyRanks(SortKeys& keys);

    bool areKnown() const { return ranks_ != nullptr; }
    unsigned bits() const;
    std::uint32_t rankOf(std::size_t row) const { return ranks_[ids_[row]]; }

private:
    using Numbers = std::unique_ptr<std::uint32_t[]>;
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    bool identify();
    std::uint32_t idOf(RecordKey key);
    void rank();
    int decide(std::size_t a, std::size_t b) const override {
        return keys_.compare(different_[a], different_[b]);
    }

    SortKeys& keys_;
    std::size_t most_;
    std::vector<std::uint32_t> table_;  // ids by hash, none where a place is free
    std::vector<RecordKey> different_;  // by id
    Numbers ids_;                       // by row
    Numbers ranks_;                     // by id
};
