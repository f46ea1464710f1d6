#include <algorithm>
#include <charconv>

#include "formats/choosing/ranges.h"
#include "tools/vek/browse/browser.h"
#include "tools/vek/browse/slice.h"

namespace vek::browse {

void Browser::goToRow(const std::string& text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || number == 0 || number > sheet().log().rowCount()) {
        throw Failure{wrongUsage, concat("there is no row ", text, ", rows are 1 to ",
                                         std::to_string(sheet().log().rowCount()))};
    }
    if (!sheet().moveToRow(number - 1)) message_ = concat("row ", text, " is not shown now");
}

// From the row behind the cursor on, round the end.
void Browser::goToTimecode(const std::string& text) {
    const RowTest holds = codeTest(sheet().log(), text);
    const unsigned count = sheet().rows().size();
    message_ = concat("looking for ", text, " ...");
    const auto slice = [this, text, holds, count, from = sheet().place(), done = 0u]() mutable {
        const Slice slice;
        for (bool isOver = false; done < count && !isOver; isOver = slice.isOver()) {
            const auto place = static_cast<unsigned>((std::uint64_t{from} + ++done) % count);
            if (!holds(sheet().rows().rowAt(place))) continue;
            sheet().moveTo(place);
            return true;
        }
        const bool isOver = done >= count;
        message_ = isOver ? concat("no clip shown holds ", text)
                          : concat("looking for ", text, " ... ",
                                   std::to_string(std::uint64_t{done} * 100 / count), " %");
        return isOver;
    };
    job_ = Job{slice, [] { return "left"; }};
}

void Browser::find(bool isBack) {
    const unsigned from = sheet().place();
    const std::size_t column = sheet().columnPlace();
    ask(isBack ? "find back " : "find ", "", [this](const std::string&) {
        if (!search_.isRunning() && !search_.found()) message_ = "not found";
    });
    prompt_->typed = [this, from, isBack](const std::string& text) {
        looksBack_ = isBack;
        sheet().moveTo(from);
        search_.begin(text, from, isBack, true);
    };
    prompt_->cancelled = [this, from, column] {
        sheet().moveTo(from);
        sheet().moveToColumn(column);
    };
}

// What is near is found at once, so that the key can be held down.
void Browser::findAgain(bool isBack) {
    if (search_.text().empty()) {
        message_ = "nothing was looked for yet; / asks what";
        return;
    }
    search_.begin(search_.text(), sheet().place(), isBack, false);
    workOn();
}

void Browser::showFound() {
    message_.clear();
    if (!search_.found()) {
        message_ = concat(search_.text(), " is not found");
        return;
    }
    sheet().moveTo(search_.found()->place);
    sheet().moveToColumn(search_.found()->column);
}

bool Browser::choose(Act act) {
    switch (act) {
        case Act::sortUp:
            return sortBy({sheet().column()}, false), true;
        case Act::sortDown:
            return sortBy({sheet().column()}, true), true;
        case Act::sortAlso:
            return sortAlso(), true;
        case Act::unsort:
            return sortBy({}, false), true;
        case Act::filterByValue:
            return filterByValue(), true;
        case Act::filterByCondition:
            ask("only rows where ", "", [this](const std::string& text) {
                if (!text.empty()) filter(text, rowsWhere(text));
            });
            return true;
        case Act::filterByTags:
            return filter("tagged", taggedRowsOnly()), true;
        case Act::unfilter:
            return later("choosing",
                         [this] {
                             if (!sheet().unfilter()) message_ = "all rows are shown";
                         }),
                   true;
        case Act::refresh:
            return later("choosing", [this] { sheet().refresh(); }), true;
        default:
            return false;
    }
}

void Browser::sortBy(std::vector<unsigned> columns, bool isReversed) {
    if (!columns.empty() && columns.front() == Sheet::nowhere) return;
    later("sorting",
          [this, columns = std::move(columns), isReversed] { sheet().sort(columns, isReversed); });
}

void Browser::sortAlso() {
    std::vector<unsigned> columns = sheet().rows().order();
    const bool isThere =
        std::find(columns.begin(), columns.end(), sheet().column()) != columns.end();
    if (!isThere) columns.push_back(sheet().column());
    sortBy(std::move(columns), sheet().rows().isReversed());
}

void Browser::filter(const std::string& name, const Selection& selection) {
    later("choosing", [this, name, selection] { sheet().filter(name, selection); });
}

void Browser::filterByValue() {
    Sheet& now = sheet();
    if (now.row() == Sheet::nowhere || now.column() == Sheet::nowhere) return;
    const std::string value(now.log().cell(now.row(), now.column()));
    Selection selection;
    const Operator op = value.empty() ? Operator::empty : Operator::equal;
    selection.conditions.push_back({now.column(), op, value});
    constexpr std::size_t longest = 100;
    const std::string told =
        value.size() <= longest ? value : concat(value.substr(0, longest), "\xE2\x80\xA6");
    filter(concat(now.log().columnName(now.column()), value.empty() ? "=" : "==", told), selection);
}

}  // namespace vek::browse
