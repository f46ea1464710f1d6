#include "vekdb/query/query.h"

#include <utility>

void Query::set(std::vector<Criteria> criteria) {
    std::vector<unsigned> asked;
    for (unsigned column = 0; column < criteria.size(); ++column) {
        if (!criteria[column].empty()) asked.push_back(column);
    }
    criteria_.swap(criteria);
    asked_.swap(asked);
}

void Query::reset() {
    criteria_.clear();
    asked_.clear();
    matchFlag_ = 0;
}
