#include "formats/choosing/sorted_values.h"

#include <unordered_map>

#include <vekdb/host/keyed_hash.h>
#include <vekdb/sort.h>
#include <vekdb/views/view_rep.h>
#include "formats/choosing/select.h"

namespace vek::formats {

namespace {

// A row for each value of a column, and for each row the number of its value.
class ValueRows {
public:
    ValueRows(const Log& log, unsigned column) : log_(log), column_(column) {
        numbers_.reserve(log.rowCount());
        for (unsigned row = 0; row < log.rowCount(); ++row) add(row);
    }

    const std::vector<unsigned>& rows() const { return rows_; }
    const std::vector<std::uint32_t>& numbers() const { return numbers_; }

private:
    // Rows of one value often stand together.
    void add(unsigned row) {
        const std::string_view value = log_.cell(row, column_);
        if (numbers_.empty() || log_.cell(rows_[numbers_.back()], column_) != value) {
            const auto next = static_cast<std::uint32_t>(rows_.size());
            auto [known, isNew] = known_.try_emplace(value, next);
            if (isNew) rows_.push_back(row);
            numbers_.push_back(known->second);
        } else {
            numbers_.push_back(numbers_.back());
        }
        keepUnblank(row, value);
    }

    // A row without any value stands behind all others whatever it is sorted by, and is no
    // example of one whose value is empty.
    void keepUnblank(unsigned row, std::string_view value) {
        unsigned& example = rows_[numbers_.back()];
        if (!value.empty() || !log_.table->get_record(example)->is_blank()) return;
        example = row;
    }

    const Log& log_;
    unsigned column_;
    std::unordered_map<std::string_view, std::uint32_t, Quor::KeyedHash> known_;
    std::vector<unsigned> rows_;
    std::vector<std::uint32_t> numbers_;
};

}  // namespace

ValueSorting::ValueSorting(const Log& log) : log_(log), view_(log.table.get()) {}

SortedValues ValueSorting::valuesOf(unsigned column) {
    const ValueRows values(log_, column);
    const std::vector<unsigned> sorted = sortedRows(values.rows(), column);
    SortedValues out;
    out.values.reserve(sorted.size());
    std::vector<std::uint32_t> placeOfRow(log_.rowCount());
    for (std::uint32_t place = 0; place < sorted.size(); ++place) {
        out.values.push_back(log_.cell(sorted[place], column));
        placeOfRow[sorted[place]] = place;
    }
    out.placeOf.reserve(log_.rowCount());
    for (std::uint32_t number : values.numbers()) {
        out.placeOf.push_back(placeOfRow[values.rows()[number]]);
    }
    out.isSameAsBefore = samesOf(sorted, column);
    return out;
}

std::vector<unsigned> ValueSorting::sortedRows(const std::vector<unsigned>& rows, unsigned column) {
    view_->clear();
    view_->sizeIndexFor(static_cast<int>(rows.size()));
    for (unsigned row : rows) view_->append(static_cast<int>(row));
    sortBy({column}, view_);
    return rowsOf(view_);
}

std::vector<bool> ValueSorting::samesOf(const std::vector<unsigned>& rows, unsigned column) {
    std::vector<bool> isSame(rows.size());
    int fields[] = {static_cast<int>(column), -1};
    view_->set_sortfields(fields);
    view_->sortPrepare(0, 0);
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const dbrecord* before = log_.table->get_record(rows[i - 1]);
        const dbrecord* own = log_.table->get_record(rows[i]);
        isSame[i] = dbr_cmp(&before, &own) == 0;
    }
    view_->set_sortfield(0);
    return isSame;
}

SortedValues sortedValues(const Log& log, unsigned column) {
    return ValueSorting(log).valuesOf(column);
}

}  // namespace vek::formats
