#include <algorithm>
#include <optional>
#include <unordered_map>

#include <vekdb/host/keyed_hash.h>
#include "formats/changing/cell_function.h"
#include "formats/log/column_edits.h"
#include "formats/log/column_names.h"
#include "formats/log/mapped_columns.h"
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/column_keys.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

DBFieldTypes::eType typeNamed(const std::string& name) {
    DBFieldTypes::eType type = vekdb_string_to_fieldtype(name.c_str());
    const char* known = vekdb_fieldtype_to_string(type);
    if (known != nullptr && name.size() > 1) return type;
    std::string list;
    for (const std::string& one : choicesOf(columnTypes)) list += (list.empty() ? "" : ", ") + one;
    throw Failure{wrongUsage,
                  "column: there is no type " + inQuotes(name) + ", expected one of " + list};
}

std::vector<unsigned> namedColumns(const Log& log, const std::vector<std::string>& words) {
    std::vector<unsigned> columns;
    for (const std::string& word : words) {
        for (unsigned column : columnList(log, word)) columns.push_back(column);
    }
    return columns;
}

// Formats without a field map get their columns in the order itself.
InPlace reordered(const Log& log, std::vector<unsigned> columns) {
    std::vector<char> isNamed(log.columnCount());
    for (unsigned column : columns) isNamed[column] = 1;
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        if (!isNamed[column]) columns.push_back(column);
    }
    InPlace now(log);
    now.columns = std::move(columns);
    return now;
}

void requireWords(const std::vector<std::string>& words, std::size_t least, std::size_t most,
                  const char* expected) {
    if (words.size() >= least && words.size() <= most) return;
    throw Failure{wrongUsage, std::string("column: expected ") + expected};
}

// Brackets around a name are none of it, here as elsewhere.
std::string newName(const std::string& word) {
    const std::optional<WrittenName> inner = unbracketed(word);
    return inner && inner->turn == 0 ? inner->name : word;
}

void addColumn(Log& log, const std::vector<std::string>& words) {
    requireWords(words, 1, 2, "add FILE NAME [TYPE]");
    const auto type = words.size() > 1 ? typeNamed(words[1]) : DBFieldTypes::text;
    ColumnEdits(log).add(newName(words[0]), type);
}

void removeColumn(Log& log, const std::vector<std::string>& words) {
    requireWords(words, 1, 1, "remove FILE NAME");
    unsigned column = log.requireColumn(words[0]);
    ColumnEdits(log).remove(column);
}

// What a function makes of the names, of those alone that it changes.
std::vector<NewName> renamedBy(const CellFunction& function, const Log& log) {
    std::vector<NewName> names;
    for (unsigned column = 0; column < log.columnCount(); ++column) {
        NewName name{column, log.columnName(column), log.columnName(column)};
        function.apply(name.to);
        const bool isNamed = !log.unnamed.contains(name.was);
        if (isNamed && name.to != name.was) names.push_back(std::move(name));
    }
    return names;
}

std::string lowerCase(std::string_view text) {
    std::string out;
    addLower(out, text);
    return out;
}

// Columns that had one name may keep one; no others get the same.
void requireDistinct(const Log& log, const std::vector<NewName>& names) {
    std::vector<std::string> all = log.columnNames();
    for (const NewName& name : names) all[name.column] = name.to;
    std::unordered_map<std::string, unsigned, Quor::KeyedHash> first;
    for (unsigned column = 0; column < all.size(); ++column) {
        auto [known, isNew] = first.try_emplace(lowerCase(all[column]), column);
        const std::string was = log.columnName(column);
        const std::string other = log.columnName(known->second);
        if (isNew || sameText(was, other)) continue;
        throw Failure{wrongUsage, concat(log.name, ": ", inQuotes(other), " and ", inQuotes(was),
                                         " would both be named ", inQuotes(all[column]),
                                         ", expected names that differ; nothing is renamed")};
    }
}

void requireNames(const Log& log, const std::vector<NewName>& names) {
    for (const NewName& name : names) {
        if (!name.to.empty()) continue;
        throw Failure{wrongUsage, concat(log.name, ": nothing would be left of the name ",
                                         inQuotes(name.was), "; nothing is renamed")};
    }
    requireDistinct(log, names);
}

void printNames(const std::vector<NewName>& names, const Args& args) {
    Printout out;
    std::string number;
    Grid grid{{{"#", true, true}, {"Before"}, {"After"}},
              names.size(),
              [&](std::size_t row, std::size_t column) -> std::string_view {
                  if (column > 0) return column == 1 ? names[row].was : names[row].to;
                  return number = std::to_string(names[row].column + 1);
              }};
    printGrid(grid, screenOf(out, args), out);
    out.close();
}

constexpr const char* renameForms = "rename FILE NAME NEW, or rename FILE FUNCTION";

std::vector<NewName> wantedNames(const Log& log, const std::vector<std::string>& words) {
    if (log.findColumn(words[0]) != noColumn) requireWords(words, 2, 2, renameForms);
    std::vector<NewName> names = renamedBy(CellFunction::parse(words[0]), log);
    requireNames(log, names);
    return names;
}

int renameColumns(Log& log, const Args& args) {
    std::vector<NewName> names = wantedNames(log, args.all("WORD"));
    const std::string summary = concat(log.name, ": ", counted(names.size(), "column"));
    const bool isTrial = args.has("dry-run");
    if (isTrial) printNames(names, args);
    if (!names.empty()) ColumnEdits(log).rename(names);
    saveResult(log, args);
    if (names.empty() && !isTrial)
        say(log.name + ": no column's name changes, nothing is renamed");
    else
        say(summary + (isTrial ? " would be renamed" : " renamed"));
    return names.empty() ? found : done;
}

int renameColumn(Log& log, const Args& args) {
    const std::vector<std::string>& words = args.all("WORD");
    requireWords(words, 2, 2, renameForms);
    const unsigned column = log.requireColumn(words[0]);
    const NewName name{column, log.columnName(column), newName(words[1])};
    ColumnEdits(log).rename(column, name.was, name.to);
    const bool isTrial = args.has("dry-run");
    if (isTrial) printNames({name}, args);
    saveResult(log, args);
    if (isTrial) say(log.name + ": 1 column would be renamed");
    return done;
}

void typeColumn(Log& log, const std::vector<std::string>& words) {
    requireWords(words, 2, 2, "type FILE NAME TYPE");
    DBFieldTypes::eType type = typeNamed(words[1]);
    unsigned column = log.requireColumn(words[0]);
    ColumnEdits(log).setType(column, type);
}

// Columns as a person sees them: what they are called, and their types.
std::vector<std::string> described(const Log& log, const std::vector<unsigned>& columns) {
    std::vector<std::string> texts;
    for (unsigned column : columns) {
        const char* type = vekdb_fieldtype_to_string(log.table->get_field_type(column));
        texts.push_back(concat(log.columnName(column), " (", type == nullptr ? "" : type, ")"));
    }
    return texts;
}

void printColumns(const std::vector<std::string>& before, const std::vector<std::string>& after,
                  const Args& args) {
    Printout out;
    std::string number;
    const auto at = [](const std::vector<std::string>& list, std::size_t row) {
        return row < list.size() ? std::string_view(list[row]) : std::string_view();
    };
    Grid grid{{{"#", true, true}, {"Before"}, {"After"}},
              std::max(before.size(), after.size()),
              [&](std::size_t row, std::size_t column) -> std::string_view {
                  if (column > 0) return at(column == 1 ? before : after, row);
                  return number = std::to_string(row + 1);
              }};
    printGrid(grid, screenOf(out, args), out);
    out.close();
}

// Writes the log with other columns, or shows those that are seen.
int finish(const InPlace& now, const std::vector<unsigned>& seen,
           const std::vector<std::string>& before, const Args& args) {
    const bool isTrial = args.has("dry-run");
    if (isTrial) printColumns(before, described(now.log, seen), args);
    saveResult(now, args);
    if (isTrial) say(now.log.name + ": these would be the columns, nothing is changed");
    return done;
}

int orderColumns(Log& log, const Args& args) {
    const std::vector<std::string>& words = args.all("WORD");
    requireWords(words, 1, 65535, "order FILE NAME...");
    std::vector<unsigned> order = namedColumns(log, words);
    requireEachOnce(log, order, "column: order");
    nameColumns(log, order);
    const std::vector<std::string> before = described(log, mappedColumns(log));
    if (log.format == Format::table) {
        ColumnEdits(log).order(order);
        return finish(InPlace(log), mappedColumns(log), before, args);
    }
    const InPlace now = reordered(log, std::move(order));
    return finish(now, now.columns, before, args);
}

int run(const Args& args) {
    std::string action = args.text("ACTION");
    const std::vector<std::string>& words = args.all("WORD");
    Log log = readLogToSave(args);
    if (action == "rename")
        return words.size() == 1 ? renameColumns(log, args) : renameColumn(log, args);
    if (action == "order") return orderColumns(log, args);
    const std::vector<std::string> before = described(log, allColumns(log));
    if (action == "add") addColumn(log, words);
    if (action == "remove") removeColumn(log, words);
    if (action == "type") typeColumn(log, words);
    return finish(InPlace(log), allColumns(log), before, args);
}

}  // namespace

Command columnCommand() {
    return {
        "column",
        "add, remove, rename, type or order the columns of a log",
        "add FILE NAME [TYPE]; remove FILE NAME; rename FILE NAME NEW, or rename FILE FUNCTION, "
        "which works on all names: s/EXPRESSION/TEXT/ with the flags g (each place) and i (case "
        "ignored), upper, lower or trim; type FILE NAME TYPE; order FILE NAME...: the columns that "
        "are shown, in their order. In a table file the order is "
        "its field map and hides the columns that are not named; in other formats the columns "
        "themselves are put in order, those not named last. Types are text, text_s, timecode, "
        "timecode_s, date, time_of_day, dos_date, numeric, long and double; they never change a "
        "cell.",
        {{"vek column add log.vek Circled", "a text column at the end"},
         {"vek column rename log.vek Notes Remarks", "the cells stay"},
         {"vek column rename log.vek 's/ +/_/g' --dry-run", "blanks of all names, nothing changed"},
         {"vek column type log.vek 'Start time' timecode", "sorts and matches as timecode"},
         {"vek column order log.vek Scene Take Reel", "what vek show shows"}},
        {{"ACTION", "what to do", false, false, "add|remove|rename|type|order"},
         {"FILE", "the log, changed in place; - reads standard input and prints"},
         {"WORD", "column names, for add and type the type, for rename a function", true, true}},
        join({{"-n,--dry-run", "", "list the columns before and after, change nothing"},
              savingOption(),
              backupOption(),
              fromOption()},
             screenOptions()),
        run,
    };
}

}  // namespace vek
