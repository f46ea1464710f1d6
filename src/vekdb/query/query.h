#pragma once

#include <vector>

#include <vekdb/host/text_search.h>

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
    /// The columns that the query says something of, in order. All others always match.
    const std::vector<unsigned>& asked() const { return asked_; }
    const std::vector<Criteria>& all() const { return criteria_; }
    void set(std::vector<Criteria> criteria);

    /// The flags for every search: with regard to case where the match flag is set.
    unsigned searchFlags() const { return matchFlag_ != 0 ? unsigned{TextSearch::eMatchCase} : 0; }
    void reset();

private:
    std::vector<Criteria> criteria_;
    std::vector<unsigned> asked_;
    unsigned matchFlag_ = 0;  // for the embedding application: nothing here sets it
};
