#include "vekdb/order/record_compare.h"

#include <algorithm>
#include <cstdint>

#include <vekdb/host/strxcmp.h>
#include <vekdb/host/text_util.h>
#include <vekdb/record.h>

int* cmp_fields = nullptr;
int comco = 0;
int s_off = 0;
int force_normal_sort = 0;
int timecode_field = -1;

namespace {

int compareCharacters(char a, char b) {
    return int{static_cast<unsigned char>(asciiLower(a))} -
           int{static_cast<unsigned char>(asciiLower(b))};
}

}  // namespace

int compareIgnoringCase(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (int order = compareCharacters(a[i], b[i]); order != 0) return order;
    }
    return int{a.size() > b.size()} - int{a.size() < b.size()};
}

namespace {

int compareTimecodes(std::string_view a, std::string_view b) {
    int order = compareIgnoringCase(timecodeHead(a), timecodeHead(b));
    return order != 0 ? order : compareIgnoringCase(timecodeTail(a), timecodeTail(b));
}

int compareValues(std::string_view a, std::string_view b, int column) {
    switch (valueOrderOf(column)) {
        case ValueOrder::people:
            return strxcmp(a, b);
        case ValueOrder::timecode:
            return compareTimecodes(a, b);
        default:
            return compareIgnoringCase(partToCompare(a), partToCompare(b));
    }
}

}  // namespace

const int* sortColumns() {
    static constexpr int none[] = {-1};
    return cmp_fields != nullptr ? cmp_fields : none;
}

std::string_view textToCompare(const dbrecord& record, int column) {
    return record.fieldView(static_cast<unsigned>(column)).data();
}

ValueOrder valueOrderOf(int column) {
    if (column == timecode_field) return ValueOrder::timecode;
    return s_off == 0 && force_normal_sort == 0 ? ValueOrder::people : ValueOrder::part;
}

std::string_view partToCompare(std::string_view text) {
    if (s_off > 0) {
        return text.substr(std::min(static_cast<std::size_t>(s_off), text.size()));
    }
    if (force_normal_sort != 0) return text;
    const auto wanted = static_cast<std::size_t>(-std::int64_t{s_off});
    return wanted > text.size() ? std::string_view() : text.substr(text.size() - wanted);
}

int compareAscending(const dbrecord& a, const dbrecord& b) {
    const bool aBlank = a.is_blank();
    const bool bBlank = b.is_blank();
    if (aBlank || bBlank) return int{aBlank} - int{bBlank};

    for (const int* column = sortColumns(); *column >= 0; ++column) {
        std::string_view aText = withoutLeadingSpace(textToCompare(a, *column));
        std::string_view bText = withoutLeadingSpace(textToCompare(b, *column));
        // Two empty values end it: the columns behind them are not asked.
        if (aText.empty() || bText.empty()) return int{aText.empty()} - int{bText.empty()};
        if (int order = compareValues(aText, bText, *column); order != 0) return order;
    }
    return 0;
}

int compareDescending(const dbrecord& a, const dbrecord& b) {
    for (const int* column = sortColumns(); *column >= 0; ++column) {
        int order = compareIgnoringCase(textToCompare(a, *column), textToCompare(b, *column));
        if (order != 0) return -order;
    }
    return 0;
}

int dbr_cmp(const void* a, const void* b) {
    countComparisons(1);
    return compareAscending(**static_cast<dbrecord* const*>(a),
                            **static_cast<dbrecord* const*>(b));
}

int dbr_backcmp(const void* a, const void* b) {
    countComparisons(1);
    return compareDescending(**static_cast<dbrecord* const*>(a),
                             **static_cast<dbrecord* const*>(b));
}
