#pragma once

#include <string_view>
#include <vector>

#include "vekdb/columns_impl.h"
#include "vekdb/query_impl.h"
#include "vekdb/value_match_impl.h"

class VDBBase;
class dbrecord;
struct SpecialLabelPair;

/// The two columns of a pair as the table has them.
LabelColumns labelColumns(const VDBBase& table, const SpecialLabelPair& pair);

/// Whether the range from one column to the other holds a text.
struct RangeQuestion {
    LabelColumns columns;
    std::string_view text;
};

/// A query made ready for one pass over the rows, in which neither the columns nor the query
/// change: what it asks of each column, with the pairs of columns looked up.
class QueryPass {
public:
    QueryPass(const VDBBase& table, const Query& query, const Columns& columns);

    bool matches(const dbrecord& record) const;
    /// The column whose value every record is asked for first.
    unsigned firstColumn() const;

    /// The first of the ranges that are asked for, or null.
    const RangeQuestion* firstRange() const { return ranges_.empty() ? nullptr : &ranges_[0]; }

private:
    struct Question {
        unsigned column;
        DBFieldTypes::eType type;
        const Query::Criteria* criteria;
    };
    unsigned flags_;
    std::vector<Question> questions_;
    std::vector<RangeQuestion> ranges_;
};
