#pragma once

#include <vector>

#include "host/text_search.h"

/// A table's query: the criteria of each column in column order, none when there is no query.
class Query {
public:
    using Criteria = TextSearch::Criteria;

    bool isSet() const { return !criteria_.empty(); }
    /// The column's criteria; null for a column that the query says nothing of.
    const Criteria* of(unsigned column) const {
        if (column >= criteria_.size() || criteria_[column].empty()) return nullptr;
        return &criteria_[column];
    }
    const std::vector<Criteria>& all() const { return criteria_; }
    void set(std::vector<Criteria> criteria) { criteria_.swap(criteria); }

    /// Non-zero matches with regard to case.
    unsigned matchFlag() const { return matchFlag_; }
    void reset() {
        criteria_.clear();
        matchFlag_ = 0;
    }

private:
    std::vector<Criteria> criteria_;
    unsigned matchFlag_ = 0;
};
