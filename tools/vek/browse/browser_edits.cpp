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
        case Act::invertTags: {
            Sheet& now = sheet();
            now.tag(now.hasMark() ? now.chosenRows() : now.shownRows(), Sheet::Tagging::invert);
            return now.unmark(), true;
        }
        default:
            return false;
    }
}

void Browser::tagRows() {
    Sheet& now = sheet();
    const bool isRange = now.hasMark();
    now.tag(now.chosenRows(), isRange ? Sheet::Tagging::tag : Sheet::Tagging::invert);
    now.unmark();
    if (!isRange) now.moveBy(1);
}

// Of the rows shown.
void Browser::tagBy(const std::string& condition, Sheet::Tagging how) {
    Sheet& now = sheet();
    Sheet::Rows rows = now.shownRows();
    if (!condition.empty()) {
        const VDBView view = selectRows(now.log(), rowsWhere(condition)).view;
        std::vector<char> holds(now.log().rowCount());
        for (unsigned i = 0; i < view->get_num_records(); ++i) holds[view->baseIndex(i)] = 1;
        std::erase_if(rows, [&](unsigned row) { return holds[row] == 0; });
    }
    now.tag(rows, how);
    message_ = counted(rows.size(), "row") + " matched";
}

bool Browser::edit(Act act) {
    Sheet& now = sheet();
    switch (act) {
        case Act::edit:
            return editCell(), true;
        case Act::editTagged:
            return editTagged(), true;
        case Act::insertBelow:
        case Act::insertAbove:
            return now.insertRow(act == Act::insertBelow), true;
        case Act::deleteRows:
            return now.deleteRows(now.chosenRows()), true;
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
    Sheet::Rows rows = now.taggedRows();
    if (rows.empty()) {
        message_ = "no row is tagged; t tags one";
        return;
    }
    const std::string title =
        concat(now.log().columnName(column), " of ", counted(rows.size(), "tagged row"), ": ");
    ask(title, "",
        [this, rows, column](const std::string& text) { sheet().setCells(rows, column, text); });
}

void Browser::deleteTagged() {
    Sheet::Rows rows = sheet().taggedRows();
    if (rows.empty()) {
        message_ = "no row is tagged; t tags one";
        return;
    }
    message_ = counted(rows.size(), "row") + " deleted; u takes it back";
    sheet().deleteRows(std::move(rows));
}

void Browser::rename() {
    const unsigned column = sheet().column();
    if (column == Sheet::nowhere) return;
    ask("new name: ", sheet().log().columnName(column),
        [this, column](const std::string& text) { sheet().renameColumn(column, text); });
}

void Browser::undo(bool isRedo) {
    const bool isDone = isRedo ? sheet().redo() : sheet().undo();
    if (!isDone) message_ = isRedo ? "nothing to do again" : "nothing to undo";
}

}  // namespace vek::browse
