#include <typeinfo>

#include <vekdb/table.h>
#include "vekdb/columns/special_labels.h"
#include "vekdb/query/query_pass.h"
#include "vekdb/query/value_match.h"
#include "vekdb/record/record_access.h"
#include "vekdb/record/row_ahead.h"
#include "vekdb/table/column_finder.h"
#include "vekdb/table/table_parts.h"

/// Only for a table of a class of its own may an operation be another's, so that every call must
/// go where it would be seen.
bool vekdb::mayBeOverridden() const {
    return typeid(*this) != typeid(vekdb);
}

void vekdb::set_query(dbrecord* query) {
    if (query == nullptr || get_num_fields() > query->get_num_fields()) return;
    std::vector<TextSearch::Criteria> criteria;
    criteria.reserve(query->get_num_fields());
    for (unsigned i = 0; i < query->get_num_fields(); ++i) {
        criteria.emplace_back(TextSearch::Criterion(query->getField(static_cast<unsigned short>(i)),
                                                    TextSearch::eMatchContains));
    }
    setQuery(criteria);
}

void vekdb::setQuery(const std::vector<TextSearch::Criteria>& criteria) {
    if (criteria.size() < get_num_fields() || &criteria == &parts().query.all()) return;
    parts().query.set(criteria);
}

unsigned vekdb::tag_matching_records(int keepTags) {
    if (!parts().query.isSet()) return 0;
    if (!mayBeOverridden()) return tagPlainRows(keepTags != 0);
    unsigned matching = 0;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        if (match_record(static_cast<int>(row)) != 0) {
            set_tag(row, 1);
            ++matching;
        } else if (keepTags == 0) {
            set_tag(row, 0);
        }
    }
    return matching;
}

unsigned vekdb::match_record(int row) const {
    dbrecord* record = get_record(static_cast<unsigned>(row));
    if (record == nullptr || !parts().query.isSet()) return Rows::none;
    for (unsigned column : parts().query.asked()) {
        if (column >= parts().columns.count()) break;
        if (match_field(record, static_cast<int>(column)) == 0) return 0;
    }
    return 1;
}

int vekdb::match_field(dbrecord* record, int field) const {
    const auto column = static_cast<unsigned>(field);
    if (parts().columns.isSpecial(column)) return found_in_special_label_field(record, field);
    const TextSearch::Criteria* criteria = parts().query.of(column);
    if (criteria == nullptr) return 1;
    return matchField(record, static_cast<unsigned short>(column), *criteria);
}

int vekdb::matchField(const dbrecord* record, unsigned short field,
                      const TextSearch::Criteria& criteria) const {
    if (record == nullptr) return 0;
    return valueMatches(record->fieldView(field), parts().columns.type(field), criteria,
                        parts().query.searchFlags());
}

int vekdb::found_in_special_label_field(dbrecord* record, int field) const {
    const auto column = static_cast<unsigned>(field);
    const TextSearch::Criteria* criteria = parts().query.of(column);
    if (criteria == nullptr) return 1;
    const SpecialLabelPair* pair = specialLabelPair(parts().columns.name(column).view());
    if (pair == nullptr) return 1;
    if (record == nullptr) return 0;
    const LabelColumns columns = labelColumns(columnFinder(*this), *pair);
    return rangeHolds(record->fieldView(columns.start), record->fieldView(columns.end),
                      rangeText(*criteria));
}

namespace {

// A tag is written only where it changes: memory that was not written need not be brought back.
void retag(dbrecord* record, bool isMatch, bool keepTags) {
    if (record == nullptr || (!isMatch && keepTags)) return;
    if (record->get_tag() != isMatch) RecordAccess::setTag(*record, isMatch);
}

// `matches` tells of a record and its row. A row without a record counts as one that matches, as
// match_record answers for it.
template <class Matches>
unsigned tagEach(const Rows& rows, unsigned columnAhead, bool keepTags, Matches matches) {
    unsigned matching = 0;
    for (unsigned from = 0; from < rows.shownCount();) {
        const RecordRun piece = rows.shownFrom(from);
        for (unsigned i = 0; i < piece.count; ++i) {
            RowAhead::fetchValue(piece, i, columnAhead);
            dbrecord* record = piece.records[i];
            const bool isMatch = record == nullptr || matches(*record, from + i);
            matching += isMatch;
            retag(record, isMatch, keepTags);
        }
        from += piece.count;
    }
    return matching;
}

// Keys are of all rows, so that those shown must be all.
RangeFilter rangeFilter(LabelRangeKeys& keys, const QueryPass& pass, const Rows& rows) {
    if (rows.tagsOnly() != 0) return {};
    return keys.filterFor(pass.firstRange(), rows.inOrder());
}

}  // namespace

unsigned vekdb::tagPlainRows(bool keepTags) {
    const QueryPass pass(parts().query, parts().columns, columnFinder(*this));
    const Rows& rows = parts().rows;
    RangeFilter filter = rangeFilter(parts().rangeKeys, pass, rows);
    if (!filter.isOn()) {
        return tagEach(rows, pass.firstColumn(), keepTags,
                       [&](const dbrecord& record, unsigned) { return pass.matches(record); });
    }
    const unsigned matching =
        tagEach(rows, RowAhead::noValue, keepTags, [&](const dbrecord& record, unsigned row) {
            return !filter.rulesOut(record, row) && pass.matches(record);
        });
    parts().rangeKeys.note(filter, rows.count());
    return matching;
}
