#include "formats/log/column_names.h"

#include <algorithm>
#include <charconv>
#include <unordered_map>

#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/text_util.h>
#include "formats/text/letters.h"
#include "formats/text/written_names.h"

namespace vek::formats {

namespace {

std::string folded(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), asciiLower<char>);
    return name;
}

std::string numbered(const Log& log, const RepeatedName& repeated, std::size_t turn) {
    const std::string name = log.columnName(repeated.columns[turn]);
    return concat(name.empty() ? unnamedAddress : name, "#", std::to_string(turn + 1));
}

// The number behind the last "#", 0 where there is none.
std::size_t numberBehind(std::string_view text, std::size_t mark) {
    std::size_t number = 0;
    const char* end = text.data() + text.size();
    auto [stopped, error] = std::from_chars(text.data() + mark + 1, end, number);
    return error == std::errc() && stopped == end ? number : 0;
}

std::string placesOf(const RepeatedName& repeated) {
    constexpr std::size_t most = 5;
    std::string list;
    for (std::size_t i = 0; i < repeated.columns.size() && i < most; ++i) {
        list += concat(i == 0 ? "" : ", ", std::to_string(repeated.columns[i] + 1));
    }
    return repeated.columns.size() > most ? list + ", ..." : list;
}

Problem problemOf(const Log& log, const RepeatedName& repeated) {
    const std::string name = log.columnName(repeated.columns.front());
    const std::string count = std::to_string(repeated.columns.size());
    const std::string places = concat(" (", placesOf(repeated), ")");
    Problem problem;
    problem.found = name.empty() ? concat(count, " columns without a name", places)
                                 : concat(count, " columns named ", inQuotes(name), places);
    problem.expected = "names that differ";
    problem.outcome = "all are kept, one of them is called " + choicesOf(log, repeated);
    problem.isDamage = false;
    return problem;
}

}  // namespace

RepeatedNames findRepeatedNames(const std::vector<std::string>& names) {
    RepeatedNames found;
    std::unordered_map<std::string, std::size_t, Quor::KeyedHash> places;
    for (unsigned column = 0; column < names.size(); ++column) {
        auto [place, isNew] = places.try_emplace(folded(names[column]), found.all.size());
        if (isNew) found.all.emplace_back();
        found.all[place->second].columns.push_back(column);
    }
    std::erase_if(found.all, [](const RepeatedName& name) { return name.columns.size() == 1; });
    for (std::size_t i = 0; i < found.all.size(); ++i) {
        for (unsigned column : found.all[i].columns) found.at[column] = i;
    }
    return found;
}

void RepeatedNames::giveTo(Log& log) && noexcept {
    log.repeatedNames = std::move(all);
    log.repeatedAt = std::move(at);
}

void keepRepeatedNames(Log& log) {
    findRepeatedNames(log.columnNames()).giveTo(log);
}

void noteRepeatedNames(Log& log) {
    keepRepeatedNames(log);
    for (const RepeatedName& repeated : log.repeatedNames) {
        log.report([&] { return problemOf(log, repeated); });
    }
}

const RepeatedName* repeatedNameOf(const Log& log, unsigned column) {
    auto place = log.repeatedAt.find(column);
    return place == log.repeatedAt.end() ? nullptr : &log.repeatedNames[place->second];
}

std::size_t turnOf(const Log& log, unsigned column) {
    const RepeatedName* const repeated = repeatedNameOf(log, column);
    if (repeated == nullptr) return 1;
    const auto& all = repeated->columns;
    const auto before = std::lower_bound(all.begin(), all.end(), column) - all.begin();
    return static_cast<std::size_t>(before) + 1;
}

std::string ownNameOf(const Log& log, unsigned column) {
    const std::string name = log.columnName(column);
    const RepeatedName* const repeated = repeatedNameOf(log, column);
    if (repeated == nullptr) return name.empty() ? unnamedAddress : name;
    const std::size_t turn = turnOf(log, column);
    const std::string own = numbered(log, *repeated, turn - 1);
    // Another column may be called so itself.
    if (log.findColumn(own) == noColumn) return own;
    return concat(inBrackets(name), "#", std::to_string(turn));
}

std::string choicesOf(const Log& log, const RepeatedName& repeated) {
    std::size_t last = repeated.columns.size() - 1;
    return concat(numbered(log, repeated, 0), last == 1 ? " or " : " to ",
                  numbered(log, repeated, last));
}

unsigned numberedColumn(const Log& log, std::string_view text) {
    std::size_t mark = text.rfind('#');
    if (mark == std::string_view::npos || mark == 0) return noColumn;
    std::size_t number = numberBehind(text, mark);
    const unsigned first = log.findColumn(text.substr(0, mark));
    if (repeatedNameOf(log, first) == nullptr) return noColumn;
    return columnOfTurn(log, text.substr(0, mark), number);
}

unsigned columnOfTurn(const Log& log, std::string_view name, std::size_t turn) {
    const unsigned first = log.findColumn(name);
    const RepeatedName* repeated = repeatedNameOf(log, first);
    if (repeated == nullptr) return turn == 1 ? first : noColumn;
    return turn == 0 || turn > repeated->columns.size() ? noColumn : repeated->columns[turn - 1];
}

std::vector<unsigned> sameColumns(const Log& a, const Log& b) {
    std::vector<unsigned> others;
    for (unsigned i = 0; i < a.columnCount(); ++i) others.push_back(b.findColumn(a.columnName(i)));
    for (const RepeatedName& repeated : a.repeatedNames) {
        unsigned first = others[repeated.columns.front()];
        const RepeatedName* inB = repeatedNameOf(b, first);
        for (std::size_t turn = 1; turn < repeated.columns.size(); ++turn) {
            bool isThere = inB != nullptr && turn < inB->columns.size();
            others[repeated.columns[turn]] = isThere ? inB->columns[turn] : noColumn;
        }
    }
    return others;
}

// Columns that both logs have are none of them; nor are their namesakes, which have a turn.
std::vector<Problem> namesAlmostAs(const Log& log, const Log& as) {
    std::unordered_map<std::string, std::string, Quor::KeyedHash> known;
    for (const std::string& name : as.columnNames()) {
        if (log.findColumn(name) == noColumn) known.try_emplace(foldedName(name), name);
    }
    std::vector<Problem> problems;
    if (known.empty()) return problems;
    for (const std::string& name : log.columnNames()) {
        if (as.findColumn(name) != noColumn) continue;
        const auto other = known.find(foldedName(name));
        if (other == known.end()) continue;
        problems.push_back({0, "", concat("a column ", inQuotes(name)),
                            concat(inQuotes(other->second), " as in ", as.name),
                            "the two are not taken for one, as only ASCII letters are whatever "
                            "their case; give both the same name"});
    }
    return problems;
}

bool isUnnamed(const Log& log, unsigned column) {
    return !log.unnamed.empty() && log.unnamed.contains(log.columnName(column));
}

void nameColumns(Log& log, const std::vector<unsigned>& columns) {
    if (std::any_of(columns.begin(), columns.end(),
                    [&](unsigned column) { return isUnnamed(log, column); })) {
        log.unnamed.clear();
    }
}

}  // namespace vek::formats
