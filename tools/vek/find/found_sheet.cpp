#include "tools/vek/find/found_sheet.h"

#include <algorithm>

#include <vekdb/views/view_rep.h>
#include "formats/reading/table_builder.h"

namespace vek::find {

namespace {

// The view of a table that has none of these rows.
class FoundRows : public VDBViewRep {
public:
    FoundRows(vekdb* columns, const Result& result)
        : VDBViewRep(columns),
          count_(static_cast<unsigned>(result.rowCount())),
          cells_(result),
          atOnce_(static_cast<unsigned>(
              std::clamp<std::size_t>(mostCells / cells_.names().size(), 1, mostRows))) {}

    unsigned get_num_records() const override { return count_; }
    unsigned baseIndex(unsigned row) const override { return row; }
    dbrecord* get_record(unsigned row) const override {
        if (row >= count_) return nullptr;
        if (row < first_ || row - first_ >= part_.rowCount()) makePart(row);
        return part_.table->get_record(row - first_);
    }

private:
    static constexpr std::size_t mostCells = std::size_t{1} << 19;
    static constexpr std::size_t mostRows = 4096;

    void makePart(unsigned row) const {
        part_ = Log();
        TableBuilder builder(part_, cells_.names());
        const unsigned end = row + std::min(atOnce_, count_ - row);
        for (unsigned i = row; i < end; ++i) builder.addRow(i + 1, cells_.of(i));
        builder.finish();
        first_ = row;
    }

    unsigned count_;
    mutable ResultCells cells_;
    unsigned atOnce_;
    mutable Log part_;
    mutable unsigned first_ = noColumn;
};

}  // namespace

ResultCells::ResultCells(const Result& result) : result_(result), names_{"File", "Row"} {
    for (std::size_t i = 0; i < result.columnCount(); ++i) names_.push_back(result.title(i));
    cells_.resize(names_.size());
}

const std::vector<std::string_view>& ResultCells::of(std::size_t row) {
    number_ = std::to_string(result_.row(row).number);
    cells_[0] = result_.fileOf(row);
    cells_[1] = number_;
    for (std::size_t i = 2; i < cells_.size(); ++i) cells_[i] = result_.cell(row, i - 2);
    return cells_;
}

FoundSheet::FoundSheet(const Result& result) {
    log_.path = log_.name = "what was found";
    TableBuilder(log_, ResultCells(result).names()).finish();
    for (std::size_t row = 0; row < result.rowCount(); ++row) {
        log_.lines.push_back(static_cast<std::uint32_t>(row + 1));
    }
    rows_ = VDBView(new FoundRows(log_.table.get(), result));
}

}  // namespace vek::find
