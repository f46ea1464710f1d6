#include <numeric>
#include <optional>

#include "formats/formats.h"
#include "formats/log/column_edits.h"
#include "formats/reading/open_log.h"
#include "formats/saving/file_sink.h"
#include "formats/saving/save_in_place.h"
#include "tools/vek/browse/sheet.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/terminal.h"

namespace vek::browse {

namespace {

// A file on whose replacement no signal falls.
std::vector<std::string> closed(Output& out, const Losses& losses) {
    const Undisturbed undisturbed;
    std::vector<std::string> notes = out.close();
    const auto& messages = losses.messages();
    notes.insert(notes.end(), messages.begin(), messages.end());
    for (const Losses::Kind& kind : losses.kinds()) {
        notes.push_back(concat(kind.what, ": ", std::to_string(kind.count)));
    }
    return notes;
}

std::vector<std::string> writeAs(const Sheet& sheet, Format target, const VDBView& rows,
                                 const std::vector<unsigned>& columns, const std::string& path,
                                 Held held) {
    const Log& log = sheet.log();
    Output out(path, std::make_unique<FileSink>(path, std::move(held)));
    Losses losses;
    formats::Sheet written{log, rows, columns};
    writeSheet(written, target, {log.lineEnd, log.beganWithMark}, out, losses);
    return closed(out, losses);
}

std::vector<unsigned> numbers(unsigned count) {
    std::vector<unsigned> all(count);
    std::iota(all.begin(), all.end(), 0u);
    return all;
}

}  // namespace

bool Sheet::isChangedOnDisk() const {
    return mark_ && markOf(log_.path) != mark_;
}

Sheet::Recovering::Recovering(Sheet& sheet, const std::string& path)
    : sheet_(sheet), replay_(sheet.recovery_.setAside(path), sheet.edits_) {
    sheet_.rows_.suspend();
}

std::size_t Sheet::Recovering::step() {
    const std::size_t done = replay_.step();
    if (done > 0) return done;
    sheet_.recovery_.flush();
    if (sheet_.recovery_.trouble().empty()) sheet_.recovery_.dropAside();
    return 0;
}

// Columns come and go at the end alone.
void Sheet::renameIn(Log& to) const {
    while (to.columnCount() > log_.columnCount()) ColumnEdits(to).remove(to.columnCount() - 1);
    std::vector<NewName> names;
    for (unsigned column = 0; column < to.columnCount(); ++column) {
        const NewName name{column, to.columnName(column), log_.columnName(column)};
        if (name.was != name.to) names.push_back(name);
    }
    if (!names.empty()) ColumnEdits(to).rename(names);
    for (unsigned column = to.columnCount(); column < log_.columnCount(); ++column) {
        addColumn(to, log_.columnName(column));
    }
}

void Sheet::copyRow(unsigned row, Log& to, unsigned toRow) const {
    dbrecord& record = *to.table->get_record(toRow);
    for (unsigned column = 0; column < log_.columnCount(); ++column) {
        const std::string_view cell = log_.cell(row, column);
        if (record.fieldView(column) == cell) continue;
        record.setField(static_cast<unsigned short>(column), cellText(cell));
    }
}

void Sheet::requireUnchanged() const {
    if (!isChangedOnDisk()) return;
    throw Failure{unwritable, log_.name +
                                  ": was changed by another program, and nothing is written; save "
                                  "again to choose"};
}

bool Sheet::isTouched(unsigned origin) const {
    return areAllTouched_ || (origin < touched_.size() && touched_[origin]);
}

// The rows of the file are those of the table.
void Sheet::forgetOrigins() {
    origins_.clear();
    gone_.clear();
    touched_.clear();
    areAllTouched_ = false;
}

// The file is read once more, and gets what was edited: so all that was not is known to stand as
// it came. Who held it until now may have changed it.
Log Sheet::fresh(std::vector<unsigned>& order, bool holds) const {
    Log to = holds ? openLogToChange(log_.path, opening_) : openLogToCopy(log_.path, opening_);
    requireUnchanged();
    requireWhole(to);
    renameIn(to);
    for (unsigned row = 0; row < log_.rowCount(); ++row) {
        const unsigned origin = originOf(row);
        const unsigned toRow = origin == nowhere ? to.table->add_records(1) : origin;
        if (origin == nowhere || isTouched(origin)) copyRow(row, to, toRow);
        order.push_back(toRow);
    }
    return to;
}

std::vector<std::string> Sheet::save(bool overwrites) {
    requireWhole(log_);
    const Format target = targetOf(log_);
    std::vector<std::string> notes;
    if ((overwrites && isChangedOnDisk()) || !isChangedInPlace(log_.format)) {
        const Held held = holdFile(log_.path);
        if (!overwrites) requireUnchanged();
        notes = writeAs(*this, target, viewOf(log_, numbers(log_.rowCount())), allColumns(log_),
                        log_.path, held);
    } else {
        std::vector<unsigned> order;
        const Log to = fresh(order, true);
        InPlace now(to);
        now.rows = std::move(order);
        Output out(log_.path, std::make_unique<FileSink>(log_.path, to.held));
        Losses losses;
        writeInPlace(now, false, out, losses);
        notes = closed(out, losses);
    }
    forgetOrigins();
    edits_.markSaved();
    recovery_.remove();
    mark_ = markOf(log_.path);
    recovery_.begin(mark_);
    return notes;
}

void Sheet::writeRows(const std::string& path) {
    writeAs(*this, targetFor(log_, path), rows_.shown(), allColumns(log_), path, nullptr);
}

std::vector<std::string> Sheet::saveAs(const std::string& path, bool asShown) {
    requireWhole(log_);
    const Format target = targetFor(log_, path);
    if (asShown) {
        std::vector<unsigned> shown;
        for (const Column& column : columns_) {
            if (!column.isHidden) shown.push_back(column.column);
        }
        return writeAs(*this, target, rows_.shown(), shown, path, nullptr);
    }
    if (target != log_.format || !isChangedInPlace(target) || isChangedOnDisk()) {
        return writeAs(*this, target, viewOf(log_, numbers(log_.rowCount())), allColumns(log_),
                       path, nullptr);
    }
    std::vector<unsigned> order;
    const Log to = fresh(order, false);
    InPlace now(to);
    now.rows = std::move(order);
    Output out(path, std::make_unique<FileSink>(path));
    Losses losses;
    writeInPlace(now, false, out, losses);
    return closed(out, losses);
}

}  // namespace vek::browse
