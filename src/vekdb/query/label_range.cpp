#include "vekdb/query/label_range.h"

#include "vekdb/columns/special_labels.h"

LabelColumns labelColumns(const FindColumn& find, const SpecialLabelPair& pair) {
    return {find(pair.start), find(pair.end)};
}

std::string_view rangeText(const TextSearch::Criteria& criteria) {
    return criteria.getCriterion(0).text().c_str();
}
