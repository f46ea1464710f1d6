#include <algorithm>
#include <utility>

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
        Sheet::Rows rows =
            condition.empty() ? sheet().shownRows() : sheet().shownRows(rowsWhere(condition));
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
    struct Way {
        Sheet::Rows rows;
        unsigned done = 0;
    };
    auto way = std::make_shared<Way>();
    const unsigned count = sheet().log().rowCount();
    const auto some = [this, way, count]() -> std::size_t {
        constexpr unsigned mostAtOnce = 1000;
        const unsigned end = way->done + std::min(mostAtOnce, count - way->done);
        sheet().addTagged(way->done, end, way->rows);
        return end - std::exchange(way->done, end);
    };
    inSlices("looking at tags", count, some, [this, way, use = std::move(use)] {
        if (way->rows.empty()) {
            message_ = "no row is tagged; t tags one";
            return;
        }
        use(std::move(way->rows));
    });
    job_->stopped = [] { return "left"; };
}

// A choice and an order of many rows are made anew around it.
void Browser::insertRow(bool isBehind) {
    if (sheet().rows().path().empty()) return sheet().insertRow(isBehind);
    later("inserting", [this, isBehind] { sheet().insertRow(isBehind); });
}

void Browser::deleteRows() {
    Sheet& now = sheet();
    if (!now.hasMark()) return now.deleteRows(now.chosenRows());
    deleteEach(now.chosenRows(), [] {});
}

void Browser::deleteEach(const Sheet::Rows& rows, std::function<void()> end) {
    auto way = std::make_shared<Sheet::Deleting>(sheet(), rows);
    inSlices(
        "deleting", rows.size(), [way] { return way->step(); }, std::move(end));
}

void Browser::deleteTagged() {
    withTagged([this](const Sheet::Rows& rows) {
        const std::string told = counted(rows.size(), "row") + " deleted; u takes it back";
        deleteEach(rows, [this, told] { message_ = told; });
    });
}

void Browser::rename() {
    const unsigned column = sheet().column();
    if (column == Sheet::nowhere) return;
    ask("new name: ", sheet().log().columnName(column),
        [this, column](const std::string& text) { sheet().renameColumn(column, text); });
}

void Browser::undo(bool isRedo) {
    auto way = std::make_shared<Sheet::Undoing>(sheet(), isRedo);
    if (way->count() == 0) {
        message_ = isRedo ? "nothing to do again" : "nothing to undo";
        return;
    }
    const std::size_t count = way->count();
    inSlices(
        isRedo ? "doing again" : "undoing", count, [way = std::move(way)] { return way->step(); },
        [] {});
    const char* told = isRedo ? "ended; ^R goes on with it" : "ended; u goes on with it";
    job_->stopped = [told] { return told; };
}

}  // namespace vek::browse
