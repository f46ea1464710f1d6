#include <numeric>

#include <vekdb/host/text_util.h>
#include "formats/face/guarded.h"
#include "formats/face/inside.h"

namespace vek {

unsigned LogInside::rowCount() const {
    return kept ? static_cast<unsigned>(kept->size()) : log.rowCount();
}

unsigned LogInside::rowAt(unsigned place) const {
    if (!kept) return place;
    return place < kept->size() ? (*kept)[place] : log.rowCount();
}

std::vector<unsigned> LogInside::rows() const {
    if (kept) return *kept;
    std::vector<unsigned> rows(log.rowCount());
    std::iota(rows.begin(), rows.end(), 0u);
    return rows;
}

std::string_view LogInside::cell(unsigned row, unsigned column) const {
    return isRow(row) && column < log.columnCount() ? log.cell(row, column) : std::string_view();
}

Column LogInside::columnOf(std::shared_ptr<const LogInside> log, unsigned column) {
    return {std::move(log), column};
}

Row LogInside::rowOf(std::shared_ptr<const LogInside> log, unsigned row) {
    return {std::move(log), row};
}

std::string Column::name() const {
    return log_->log.columnName(index_);
}

DBFieldTypes::eType Column::type() const noexcept {
    return log_->log.table->get_field_type(index_);
}

unsigned Column::size() const noexcept {
    return log_->rowCount();
}

std::string_view Column::at(unsigned place) const noexcept {
    return log_->cell(log_->rowAt(place), index_);
}

unsigned Columns::size() const noexcept {
    return log_->log.columnCount();
}

std::size_t Row::line() const noexcept {
    return log_->log.lineOf(index_);
}

bool Row::isTagged() const noexcept {
    return parseInt((*this)["Tag"]) != 0;
}

std::string_view Row::operator[](std::string_view column) const noexcept {
    return at(log_->log.findColumn(column));
}

unsigned Row::size() const noexcept {
    return log_->log.columnCount();
}

std::string_view Row::at(unsigned column) const noexcept {
    return log_->cell(index_, column);
}

std::string_view Log::name() const noexcept {
    return log_->log.name;
}

Format Log::format() const noexcept {
    return log_->log.format;
}

const std::vector<Problem>& Log::problems() const noexcept {
    return log_->log.problems;
}

std::size_t Log::moreProblems() const noexcept {
    return log_->log.moreProblems;
}

std::string_view Log::notRead() const noexcept {
    return log_->log.notRead;
}

unsigned Log::size() const noexcept {
    return log_->rowCount();
}

Row Log::at(unsigned place) const {
    return LogInside::rowOf(log_, log_->rowAt(place));
}

Result<Column> Log::column(std::string_view name) const {
    return guarded([&]() -> Result<Column> {
        return LogInside::columnOf(log_, log_->log.requireColumn(name));
    });
}

vekdb& Log::table() const noexcept {
    return *log_->log.table;
}

unsigned View::size() const noexcept {
    return view_->get_num_records();
}

Row View::at(unsigned place) const {
    const bool isThere = place < size();
    return LogInside::rowOf(log_, isThere ? view_->baseIndex(place) : log_->log.rowCount());
}

}  // namespace vek
