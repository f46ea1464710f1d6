#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "vekdb/columns/column_list.h"
#include "vekdb/query/label_range.h"
#include "vekdb/query/query.h"
#include "vekdb/query/value_match.h"
#include "vekdb/record/record_access.h"

class dbrecord;

/// A query made ready for one pass over the rows, in which neither the columns nor the query
/// change: what it asks of each column, with the pairs of columns looked up.
class QueryPass {
public:
    QueryPass(const Query& query, const ColumnList& columns, const FindColumn& find);

    bool matches(const dbrecord& record) const {
        for (const RangeQuestion& range : ranges_) {
            const std::string_view start = RecordAccess::view(record, range.columns.start);
            const std::string_view end = RecordAccess::view(record, range.columns.end);
            if (!rangeHolds(start, end, range.text)) return false;
        }
        for (const Question& question : questions_) {
            if (!question.isAnsweredBy(RecordAccess::view(record, question.column), flags_)) {
                return false;
            }
        }
        return true;
    }
    /// The column whose value every record is asked for first.
    unsigned firstColumn() const;

    /// The first of the ranges that are asked for, or null.
    const RangeQuestion* firstRange() const { return ranges_.empty() ? nullptr : &ranges_[0]; }

private:
    struct Question {
        unsigned column;
        DBFieldTypes::eType type;
        const Query::Criteria* criteria;
        std::optional<TextSearch::Finder> finder;

        bool isAnsweredBy(std::string_view value, unsigned flags) const {
            return finder ? finder->finds(value) : valueMatches(value, type, *criteria, flags);
        }
    };
    unsigned flags_;
    std::vector<Question> questions_;
    std::vector<RangeQuestion> ranges_;
};
