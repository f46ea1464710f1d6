#include "formats/log/column_edits.h"

#include <algorithm>

#include "formats/formats.h"
#include "formats/log/column_names.h"
#include "formats/log/target.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// The table would take the column that had the name before for the one that is to be added.
bool isFormerName(const Log& log, const LightweightString<char>& name) {
    return log.table->get_fieldnum(name) != noColumn && log.findColumn(name.view()) == noColumn;
}

}  // namespace

unsigned addColumn(Log& log, std::string_view name, DBFieldTypes::eType type) {
    const unsigned column = addColumns(log, {{cellText(name), type}}).front();
    if (column != noColumn) return column;
    refuseFurtherColumn(log.name, name);
}

std::vector<unsigned> addColumns(Log& log, const std::vector<DBFieldDesc>& columns) {
    std::vector<DBFieldDesc> asked = columns;
    bool isAnyFormer = false;
    for (DBFieldDesc& column : asked) {
        if (!isFormerName(log, column.name)) continue;
        column.name = {};
        isAnyFormer = true;
    }
    const std::vector<unsigned> places = log.table->addFields(asked);
    if (!isAnyFormer) return places;
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i] == noColumn || !asked[i].name.empty()) continue;
        log.table->set_fieldname(places[i], columns[i].name.c_str());
    }
    askRangesByNewNames(log);
    return places;
}

// A table knows the columns of ranges by the names that they had when it was set up. Setting it up
// leaves its columns and rows as they are.
void askRangesByNewNames(Log& log) {
    log.table->post_init();
}

void refuseFurtherColumn(const std::string& from, std::string_view name) {
    throw Failure{unwritable, concat(from, ": no room for column ", inQuotes(name),
                                     ", a log holds at most 65535")};
}

ColumnEdits::ColumnEdits(Log& log) : log_(log) {
    if (!log.parameter(columnMapName).empty()) map_.emplace(log);
}

void ColumnEdits::add(const std::string& name, DBFieldTypes::eType type) {
    refuseTaken(name);
    if (type != DBFieldTypes::text) requireTypes();
    const unsigned before = log_.columnCount();
    addColumn(log_, name, type);
    if (map_ && log_.columnCount() > before) map_->added();
    store();
}

void ColumnEdits::remove(unsigned column) {
    std::vector<std::string> names = log_.columnNames();
    const std::string was = names[column];
    names.erase(names.begin() + static_cast<std::ptrdiff_t>(column));
    RepeatedNames repeated = findRepeatedNames(names);
    removeFromTable(column);
    std::move(repeated).giveTo(log_);
    log_.unnamed.erase(was);
    log_.bare.forget(column);
    askRangesByNewNames(log_);
    forgetSource(column);
    if (map_) map_->removed(column);
    store();
}

// The table removes by name, and of several columns of one name the one that was called so last. A
// column without a name gets one for it, and loses it again, which takes no memory, where the
// table cannot remove it.
void ColumnEdits::removeFromTable(unsigned column) {
    const std::string own = log_.columnName(column);
    const LightweightString<char> name = cellText(own.empty() ? freeName() : own);
    log_.table->set_fieldname(column, name.c_str());
    try {
        log_.table->removeField(name);
    } catch (...) {
        if (own.empty()) log_.table->set_fieldname(column, "");
        throw;
    }
}

std::string ColumnEdits::freeName() const {
    std::string name = "\x01";
    while (log_.findColumn(name) != noColumn) name += '\x01';
    return name;
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
    std::vector<std::string> all = log_.columnNames();
    bool isAnyUnnamed = false;
    for (const NewName& name : names) {
        all[name.column] = name.to;
        isAnyUnnamed = isAnyUnnamed || isUnnamed(log_, name.column);
    }
    RepeatedNames repeated = findRepeatedNames(all);
    for (const NewName& name : names) {
        findAnotherByName(name.column);
        log_.table->set_fieldname(name.column, name.to.c_str());
    }
    if (isAnyUnnamed) log_.unnamed.clear();
    std::move(repeated).giveTo(log_);
    askRangesByNewNames(log_);
}

// The table finds a column by its former name, too: what another one is called is that one's.
void ColumnEdits::findAnotherByName(unsigned column) {
    const RepeatedName* const repeated = repeatedNameOf(log_, column);
    if (repeated == nullptr) return;
    const bool isFirst = repeated->columns.front() == column;
    const unsigned other = repeated->columns[isFirst ? 1 : 0];
    log_.table->set_fieldname(other, log_.columnName(other).c_str());
}

void ColumnEdits::setType(unsigned column, DBFieldTypes::eType type) {
    requireTypes();
    log_.table->set_fieldtype(column, type);
}

void ColumnEdits::order(const std::vector<unsigned>& shown) {
    if (!map_) map_.emplace(log_);
    map_->show(shown);
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
    if (map_) log_.setParameter(columnMapName, map_->text().c_str());
}

}  // namespace vek::formats
