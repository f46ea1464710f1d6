#include "tools/vek/find/search.h"

#include <algorithm>
#include <new>

#include "formats/choosing/ranges.h"
#include "formats/log/mapped_columns.h"
#include "formats/reading/open_log.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/column_keys.h"
#include "tools/vek/cli/side_by_side.h"

namespace vek::find {

namespace {

Missing missing(std::size_t place, const Failure& failure) {
    const Reason& reason = failure.reason;
    std::string what = reason.found;
    if (!reason.expected.empty()) what += concat(", expected ", reason.expected);
    return {place, std::move(what), failure.text};
}

// Of many logs the first thing that is wrong with one is enough.
void noteProblems(const Log& log, Answer& answer) {
    const std::size_t count = log.problems.size() + log.moreProblems;
    if (!log.problems.empty())
        answer.remark().told.push_back(worded(log.name, log.problems.front()));
    if (count > 1) {
        answer.remark().told.push_back(concat(log.name, ": ", std::to_string(count - 1),
                                              " more like this; vek check lists them"));
    }
    if (!log.notRead.empty()) answer.remark().told.push_back(log.notRead);
    answer.isWhole = log.notRead.empty();
}

std::size_t bytesOf(const Log& log, const VDBView& view, const std::vector<unsigned>& columns) {
    std::size_t bytes = 0;
    for (unsigned i = 0; i < view->get_num_records(); ++i) {
        const unsigned row = view->baseIndex(i);
        for (unsigned column : columns) bytes += log.cell(row, column).size();
    }
    return bytes;
}

}  // namespace

const Answer::Remarks& Answer::remarks() const {
    static const Remarks none;
    return remarks_ ? *remarks_ : none;
}

Answer::Remarks& Answer::remark() {
    if (!remarks_) remarks_ = std::make_unique<Remarks>();
    return *remarks_;
}

void Answer::callOwn(const std::string& name) {
    if (name != name_) ownName_ = name;
}

const std::vector<FoundColumn>& Answer::has() const {
    static const std::vector<FoundColumn> none;
    return found_ ? found_->has : none;
}

Answer::Found& Answer::found() {
    if (!found_) found_ = std::make_unique<Found>();
    return *found_;
}

std::size_t Answer::endOf(std::size_t cell) const {
    const auto& turns = found_->turns;
    const auto behind = std::upper_bound(turns.begin(), turns.end(), cell) - turns.begin();
    return (static_cast<std::size_t>(behind) << 32) + found_->ends[cell];
}

std::string_view Answer::cell(std::size_t row, std::size_t column) const {
    const std::size_t at = row * found_->has.size() + column;
    const std::size_t begin = at == 0 ? 0 : endOf(at - 1);
    return std::string_view(found_->text).substr(begin, endOf(at) - begin);
}

void Answer::addColumn(FoundColumn column) {
    found().has.push_back(std::move(column));
}

void Answer::addRow(FoundRow row) {
    found().numbers.push_back(row.number);
    found_->tags.push_back(row.isTagged);
}

void Answer::addCell(std::string_view cell) {
    Found& found = *found_;
    found.text += cell;
    while (found.turns.size() < found.text.size() >> 32) found.turns.push_back(found.ends.size());
    found.ends.push_back(static_cast<std::uint32_t>(found.text.size()));
}

void Answer::reserve(std::size_t rows, std::size_t bytes) {
    found().numbers.reserve(rows);
    found_->tags.reserve(rows);
    found_->text.reserve(bytes);
    found_->ends.reserve(rows * found_->has.size());
}

void Answer::drop() {
    constexpr std::size_t large = 4 << 20;
    const bool isLarge = found_ && found_->text.capacity() >= large;
    found_.reset();
    if (isLarge) giveFreedMemoryBack();
}

Search::Search(const Question& question, Opening opening)
    : question_(question), opening_(std::move(opening)) {
    opening_.watcher = nullptr;
    if (!question_.any) opening_.wanted = question_.where;
}

// Conditions for which the log has no columns are left out, and noted.
Selection Search::selectionFor(const Log& log, Answer& answer) const {
    Selection selection;
    selection.any = question_.any;
    selection.tagged = question_.tagged;
    for (std::size_t i = 0; i < question_.where.size(); ++i) {
        try {
            selection.conditions.push_back(parseCondition(log, question_.where[i]));
        } catch (const Failure& failure) {
            answer.remark().conditions.push_back(missing(i, failure));
        }
    }
    if (question_.at.empty()) return selection;
    try {
        codeTest(log, question_.at);
        selection.at = question_.at;
    } catch (const Failure& failure) {
        answer.remark().conditions.push_back(missing(question_.where.size(), failure));
    }
    return selection;
}

// One for each name; noColumn where the log has none, which is noted.
std::vector<unsigned> Search::namedColumns(const Log& log, Answer& answer) const {
    std::vector<unsigned> columns(question_.names.size(), noColumn);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        try {
            columns[i] = log.requireColumn(question_.names[i]);
        } catch (const Failure& failure) {
            answer.remark().columns.push_back(missing(i, failure));
        }
    }
    return columns;
}

std::vector<unsigned> Search::addColumns(const Log& log, std::vector<unsigned> named,
                                         Answer& answer) const {
    if (question_.columns == Question::Columns::named) {
        for (std::size_t i = 0; i < named.size(); ++i) {
            if (named[i] == noColumn) continue;
            answer.addColumn({question_.names[i], log.columnName(named[i])});
        }
        std::erase(named, noColumn);
        return named;
    }
    const bool isMapped = question_.columns == Question::Columns::mapped;
    const std::vector<unsigned> columns = isMapped ? mappedColumns(log) : allColumns(log);
    for (unsigned column : columns) {
        answer.addColumn({keyOf(log, column), log.columnName(column)});
    }
    return columns;
}

void Search::addRows(const Log& log, const VDBView& view, const std::vector<unsigned>& columns,
                     Answer& answer) const {
    answer.reserve(view->get_num_records(), bytesOf(log, view, columns));
    for (unsigned i = 0; i < view->get_num_records(); ++i) {
        const unsigned row = view->baseIndex(i);
        const auto number = static_cast<std::uint32_t>(log.numberOf(row));
        answer.addRow({number, view->get_tag(i) != 0});
        for (unsigned column : columns) answer.addCell(log.cell(row, column));
    }
}

Answer Search::ask(const std::string& path) {
    Answer answer;
    answer.isAsked = true;
    answer.call(path);
    try {
        const Log log = openLog(path, opening_);
        answer.callOwn(log.name);
        answer.bytes = log.bytesRead;
        answer.format = log.format;
        answer.rows = log.rowsInSource();
        noteProblems(log, answer);
        std::vector<unsigned> named = namedColumns(log, answer);
        Selection selection = selectionFor(log, answer);
        selection.regexes = &regexes_;
        const bool hasSome = answer.remarks().conditions.size() < question_.conditionCount();
        const bool canMatch = answer.remarks().conditions.empty() || (question_.any && hasSome);
        if (!canMatch) return answer;
        const Selected selected = selectRows(log, selection);
        answer.count = selected.matched;
        if (answer.count > 0 && question_.columns != Question::Columns::none) {
            addRows(log, selected.view, addColumns(log, std::move(named), answer), answer);
        }
    } catch (const Failure& failure) {
        if (failure.kind != unreadable) throw;
        answer.remark().failure = failure.text;
    } catch (const std::bad_alloc&) {
        answer.remark().failure = path + ": out of memory";
    }
    return answer;
}

}  // namespace vek::find
