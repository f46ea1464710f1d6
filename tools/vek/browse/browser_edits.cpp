#include <algorithm>

#include "tools/vek/browse/browser.h"

namespace vek::browse {

bool Browser::tag(Act act) {
    switch (act) {
        case Act::mark:
            sheet().hasMark() ? sheet().unmark() : sheet().mark();
            return true;
        case Act::tag:
            return tagRows(), true;
        case Act::tagByCondition:
            ask("tag rows where (all of them) ", "",
                [this](const std::string& text) { tagBy(text, Sheet::Tagging::tag); });
            return true;
        case Act::untagByCondition:
            ask("untag rows where (all of them) ", "",
                [this](const std::string& text) { tagBy(text, Sheet::Tagging::untag); });
            return true;
        case Act::invertTags:
            return invertTags(), true;
        default:
            return false;
    }
}

void Browser::tagRows() {
    Sheet& now = sheet();
    if (now.hasMark()) {
        tagEach(now.chosenRows(), Sheet::Tagging::tag, [this] { sheet().unmark(); });
        return;
    }
    now.tag(now.chosenRows(), Sheet::Tagging::invert);
    now.moveBy(1);
}

void Browser::invertTags() {
    Sheet& now = sheet();
    tagEach(now.hasMark() ? now.chosenRows() : now.shownRows(), Sheet::Tagging::invert,
            [this] { sheet().unmark(); });
}

void Browser::tagEach(Sheet::Rows rows, Sheet::Tagging how, std::function<void()> end) {
    if (!sheet().canTag(rows, how)) return end();
    forEachRow(
        "tagging", std::move(rows), [this, how](unsigned row) { sheet().tagRow(row, how); },
        std::move(end));
}

// Of the rows shown.
void Browser::tagBy(const std::string& condition, Sheet::Tagging how) {
    later("choosing", [this, condition, how] {
        Sheet::Rows rows = sheet().shownRows();
        if (!condition.empty()) {
            const Log& log = sheet().log();
            const VDBView view = selectRows(log, rowsWhere(condition)).view;
            std::vector<char> holds(log.rowCount());
            for (unsigned i = 0; i < view->get_num_records(); ++i) holds[view->baseIndex(i)] = 1;
            std::erase_if(rows, [&](unsigned row) { return holds[row] == 0; });
        }
        const std::string told = counted(rows.size(), "row") + " matched";
        tagEach(std::move(rows), how, [this, told] { message_ = told; });
    });
}

bool Browser::edit(Act act) {
    switch (act) {
        case Act::edit:
            return editCell(), true;
        case Act::editTagged:
            return editTagged(), true;
        case Act::insertBelow:
        case Act::insertAbove:
            return insertRow(act == Act::insertBelow), true;
        case Act::deleteRows:
            return deleteRows(), true;
        case Act::deleteTagged:
            return deleteTagged(), true;
        case Act::rename:
            return rename(), true;
        case Act::undo:
        case Act::redo:
            return undo(act == Act::redo), true;
        default:
            return false;
    }
}

void Browser::editCell() {
    Sheet& now = sheet();
    const unsigned row = now.row();
    const unsigned column = now.column();
    if (row == Sheet::nowhere || column == Sheet::nowhere) return;
    ask(now.log().columnName(column) + ": ", std::string(now.log().cell(row, column)),
        [this, row, column](const std::string& text) { sheet().setCell(row, column, text); });
}

void Browser::editTagged() {
    Sheet& now = sheet();
    const unsigned column = now.column();
    if (column == Sheet::nowhere) return;
    withTagged([this, column](const Sheet::Rows& rows) {
        const std::string title = concat(sheet().log().columnName(column), " of ",
                                         counted(rows.size(), "tagged row"), ": ");
        ask(title, "", [this, rows, column](const std::string& text) {
            forEachRow(
                "editing", rows,
                [this, column, text](unsigned row) { sheet().edits().set(row, column, text); },
                [] {});
        });
    });
}

// All rows are looked at for that.
void Browser::withTagged(std::function<void(Sheet::Rows rows)> use) {
    later("looking at tags", [this, use = std::move(use)] {
        Sheet::Rows rows = sheet().taggedRows();
        if (rows.empty()) {
            message_ = "no row is tagged; t tags one";
            return;
        }
        use(std::move(rows));
    });
}

// A choice and an order of many rows are made anew around it.
void Browser::insertRow(bool isBehind) {
    if (sheet().rows().path().empty()) return sheet().insertRow(isBehind);
    later("inserting", [this, isBehind] { sheet().insertRow(isBehind); });
}

void Browser::deleteRows() {
    Sheet& now = sheet();
    if (!now.hasMark()) return now.deleteRows(now.chosenRows());
    later("deleting", [this] { sheet().deleteRows(sheet().chosenRows()); });
}

void Browser::deleteTagged() {
    withTagged([this](const Sheet::Rows& tagged) {
        later("deleting", [this, rows = tagged] {
            sheet().deleteRows(rows);
            message_ = counted(rows.size(), "row") + " deleted; u takes it back";
        });
    });
}

void Browser::rename() {
    const unsigned column = sheet().column();
    if (column == Sheet::nowhere) return;
    ask("new name: ", sheet().log().columnName(column),
        [this, column](const std::string& text) { sheet().renameColumn(column, text); });
}

void Browser::undo(bool isRedo) {
    later(isRedo ? "doing again" : "undoing", [this, isRedo] {
        const bool isDone = isRedo ? sheet().redo() : sheet().undo();
        if (!isDone) message_ = isRedo ? "nothing to do again" : "nothing to undo";
    });
}

}  // namespace vek::browse
