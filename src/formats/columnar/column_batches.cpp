#include "formats/columnar/column_batches.h"

#include <limits>

#include "formats/columnar/engine_names.h"
#include "formats/input/progress.h"
#include "formats/text/width.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/sheet_row.h"

namespace vek::formats {

namespace {

constexpr std::size_t mostRows = 65'536;
constexpr std::size_t mostBytes = std::size_t{16} << 20;

struct TextColumn {
    std::vector<std::int32_t> ends = {0};
    std::string bytes;

    void add(std::string_view cell) {
        bytes += cell;
        ends.push_back(static_cast<std::int32_t>(bytes.size()));
    }
    void clear() {
        ends.resize(1);
        bytes.clear();
    }
};

class Batches {
public:
    Batches(const Sheet& sheet, ScratchFile& file, const std::string& output, Losses& losses)
        : sheet_(sheet),
          file_(file),
          output_(output),
          losses_(losses),
          columns_(sheet.columns.size()) {}

    void add(unsigned row, const std::string_view* cells) {
        if (rows_ == mostRows || bytes_ >= mostBytes) flush();
        for (unsigned i = 0; i < columns_.size(); ++i) {
            if (isUtf8(cells[i]))
                addCell(row, i, cells[i]);
            else
                addBroken(row, i, cells[i]);
        }
        ++rows_;
    }

    std::vector<ColumnBatch> end() {
        if (rows_ > 0 || made_.empty()) flush();
        return std::move(made_);
    }

private:
    void addCell(unsigned row, unsigned column, std::string_view cell) {
        constexpr auto most = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
        if (most - columns_[column].bytes.size() < cell.size()) {
            throw Failure{unwritable,
                          output_,
                          {0, "",
                           concat("the cell ", place(sheet_, row, column), " has ",
                                  std::to_string(cell.size()), " bytes"),
                           "less than 2 GiB in a column of 65,536 rows", ""}};
        }
        columns_[column].add(cell);
        bytes_ += cell.size();
    }
    void addBroken(unsigned row, unsigned column, std::string_view cell) {
        losses_.add("cells that are no UTF-8", place(sheet_, row, column));
        addCell(row, column, withoutBrokenBytes(cell));
    }

    void flush() {
        ColumnBatch batch{rows_, {}};
        for (TextColumn& column : columns_) {
            file_.append({reinterpret_cast<const char*>(column.ends.data()),
                          column.ends.size() * sizeof column.ends[0]});
            file_.append(column.bytes);
            batch.bytes.push_back(column.bytes.size());
            column.clear();
        }
        made_.push_back(std::move(batch));
        rows_ = bytes_ = 0;
    }

    const Sheet& sheet_;
    ScratchFile& file_;
    const std::string& output_;
    Losses& losses_;
    std::vector<TextColumn> columns_;
    std::size_t rows_ = 0;
    std::size_t bytes_ = 0;
    std::vector<ColumnBatch> made_;
};

}  // namespace

std::vector<ColumnBatch> writeBatches(const Sheet& sheet, ScratchFile& file,
                                      const std::string& output, Losses& losses) {
    SheetRow row(sheet);
    Batches batches(sheet, file, output, losses);
    Progress progress(sheet.log.opening.watcher, "writing", sheet.rowCount());
    for (unsigned i = 0; i < sheet.rowCount(); ++i) {
        progress.reach(i);
        batches.add(i, row.cells(i));
    }
    return batches.end();
}

}  // namespace vek::formats
