#include "formats/log/column_edits.h"

#include <algorithm>

#include "formats/delimited/row_lengths.h"
#include "formats/text/text_lines.h"
#include "formats/writing/writers.h"

namespace vek::formats {

namespace {

constexpr const char* mapName = "V5_FIELD_MAP";

}  // namespace

ColumnEdits::ColumnEdits(Log& log) : log_(log), distinct_(log) {
    if (!log.parameter(mapName).empty()) map_.emplace(*log.table);
}

void ColumnEdits::add(const std::string& name, DBFieldTypes::eType type) {
    refuseTaken(name);
    if (type != DBFieldTypes::text) requireTypes();
    log_.table->addField({cellText(name), type});
    if (map_) map_->append(cellText(name), true);
    store();
}

void ColumnEdits::remove(unsigned column) {
    std::vector<std::string> names = distinct_.names();
    const std::string was = names[column];
    names.erase(names.begin() + static_cast<std::ptrdiff_t>(column));
    RepeatedNames repeated = findRepeatedNames(names);
    const std::string name = log_.columnName(column);
    log_.table->removeField(cellText(name));
    distinct_.removed(column);
    std::move(repeated).giveTo(log_);
    log_.unnamed.erase(was);
    forgetSource(column);
    if (map_) map_->remove(cellText(name));
    store();
}

void ColumnEdits::forgetSource(unsigned column) {
    if (log_.source == nullptr) return;
    std::vector<unsigned>& cameFrom = log_.source->cameFrom;
    if (column < cameFrom.size()) {
        cameFrom.erase(cameFrom.begin() + static_cast<std::ptrdiff_t>(column));
    }
}

void ColumnEdits::rename(unsigned column, const std::string& was, const std::string& to) {
    if (!sameText(was, to)) refuseTaken(to);
    rename({{column, was, to}});
}

void ColumnEdits::rename(const std::vector<NewName>& names) {
    std::vector<std::string> all = distinct_.names();
    for (const NewName& name : names) all[name.column] = name.to;
    RepeatedNames repeated = findRepeatedNames(all);
    for (const NewName& name : names) {
        nameColumns(log_, {name.column});
        distinct_.renamed(name.column, name.to);
    }
    std::move(repeated).giveTo(log_);
}

void ColumnEdits::setType(unsigned column, DBFieldTypes::eType type) {
    requireTypes();
    log_.table->set_fieldtype(column, type);
}

// A map is read three characters an entry, so positions from 100 on cannot stand in it as hidden;
// columns that do not stand in it are not shown either.
void ColumnEdits::order(const std::vector<unsigned>& shown) {
    FieldMap all(*log_.table);
    map_.emplace(all);
    map_->clear();
    for (unsigned column : shown) map_->append(cellText(log_.columnName(column)), true);
    for (unsigned column = 0; column < std::min(log_.columnCount(), 99u); ++column) {
        map_->append(cellText(log_.columnName(column)), false);
    }
    store();
}

void ColumnEdits::refuseTaken(const std::string& name) const {
    if (log_.findColumn(name) == noColumn) return;
    throw Failure{wrongUsage, log_.name + ": there is a column " + inQuotes(name) + " already"};
}

void ColumnEdits::requireTypes() const {
    if (targetOf(log_) == Format::table) return;
    throw Failure{wrongUsage,
                  concat(log_.name, ": ", formatName(log_.format),
                         " holds no column types, only table files do; make one of it with ",
                         log_.opening.terms->saving)};
}

void ColumnEdits::store() {
    if (map_) log_.setParameter(mapName, map_->asString().c_str());
}

}  // namespace vek::formats
