#include "vekdb/query/query_pass.h"

#include "vekdb/columns/special_labels.h"

QueryPass::QueryPass(const Query& query, const ColumnList& columns, const FindColumn& find)
    : flags_(query.searchFlags()) {
    for (unsigned column : query.asked()) {
        if (column >= columns.count()) break;
        if (!columns.isSpecial(column)) {
            const TextSearch::Criteria& criteria = *query.of(column);
            const DBFieldTypes::eType type = columns.type(column);
            questions_.push_back({column, type, &criteria, finderFor(type, criteria, flags_)});
            continue;
        }
        // A column that was renamed since it was marked matches whatever is asked.
        const SpecialLabelPair* pair = specialLabelPair(columns.name(column).view());
        if (pair == nullptr) continue;
        ranges_.push_back({labelColumns(find, *pair), rangeText(*query.of(column))});
    }
}

unsigned QueryPass::firstColumn() const {
    if (!ranges_.empty()) return ranges_.front().columns.start;
    return questions_.empty() ? LabelColumns::missing : questions_.front().column;
}
