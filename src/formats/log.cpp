#include "formats/log.h"

#include <algorithm>
#include <array>

#include <vekdb/host/text_util.h>
#include "formats/column_names.h"
#include "formats/inform.h"
#include "formats/input.h"
#include "formats/readers.h"
#include "formats/recognised.h"
#include "formats/suggestion.h"

namespace vek {

namespace {

struct FormatEntry {
    Format format;
    const char* name;
    const char* endings;  // "|.csv|" and so on
};

constexpr FormatEntry formats[] = {
    {Format::table, "vekdb", "|.vek|.vdb|.vekdb|"},
    {Format::csv, "csv", "|.csv|"},
    {Format::tsv, "tsv", "|.tsv|.tab|"},
    {Format::plainCsv, "plain-csv", ""},
    {Format::ale, "ale", "|.ale|"},
    {Format::edl, "edl", "|.edl|"},
    {Format::json, "json", "|.json|"},
    {Format::jsonl, "jsonl", "|.jsonl|.ndjson|"},
};

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::string_view firstFilledLine(std::string_view head) {
    LineWalk walk(head);
    std::string_view line;
    while (walk.next(line)) {
        if (!trimmed(line).empty()) return trimmed(line);
    }
    return {};
}

Format formatNamed(const std::string& name) {
    for (const FormatEntry& entry : formats) {
        if (name == entry.name) return entry.format;
    }
    throw Failure{wrongUsage, "there is no format " + inQuotes(name)};
}

void refuseBinary(const Input& input, std::string_view text) {
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
        throw Failure{unreadable, input.name() +
                                      ":1: UTF-16 text, expected UTF-8; convert it "
                                      "with iconv -f UTF-16 -t UTF-8"};
    }
    std::size_t nul = text.find('\0');
    if (nul == std::string_view::npos) return;
    auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(nul), '\n');
    throw Failure{unreadable,
                  input.name() + ":" + std::to_string(line) + ": a zero byte, expected text"};
}

// The bytes of an input, without a mark in front.
Text textOf(Input& input, Log& log) {
    log.beganWithMark = input.text().starts_with(byteOrderMark);
    return {input.takeText(), log.beganWithMark ? byteOrderMark.size() : 0};
}

void readAs(Format format, Input& input, const Wanted& wanted, Log& log) {
    if (format == Format::table) return readTable(input, wanted, log);
    // A file of another kind is not read further.
    refuseBinary(input, input.head());
    refuseBinary(input, input.text());
    if (format == Format::plainCsv) return readPlainCsv(input, log);
    Text text = textOf(input, log);
    switch (format) {
        case Format::tsv:
            return readDelimited(std::move(text), '\t', log);
        case Format::ale:
            return readAle(std::move(text), log);
        case Format::edl:
            return readEdl(text.view(), log);
        case Format::json:
        case Format::jsonl:
            return readJson(std::move(text), log);
        default:
            return readDelimited(std::move(text), ',', log);
    }
}

void tellProblems(const Log& log) {
    constexpr std::size_t most = 20;
    for (std::size_t i = 0; i < log.problems.size() && i < most; ++i) {
        inform(worded(log.name, log.problems[i]));
    }
    const std::size_t count = log.problems.size() + log.moreProblems;
    if (count > most) {
        inform(log.name + ": " + std::to_string(count - most) +
               " more like these; vek check lists " +
               (log.moreProblems == 0 ? "them all" : "the first thousand"));
    }
    if (!log.notRead.empty()) inform(log.notRead);
}

}  // namespace

// The content decides where it is plain; then the name's ending does.
Format recognised(const std::string& path, std::string_view head) {
    std::string_view line = firstFilledLine(head);
    std::string_view start = line.starts_with('"') ? line.substr(1) : line;
    if (sameText(start.substr(0, 6), "VEKDB:")) return Format::table;
    if (sameText(line, "Heading")) return Format::ale;
    if (sameText(line.substr(0, 6), "TITLE:")) return Format::edl;
    for (const FormatEntry& entry : formats) {
        std::size_t dot = path.rfind('.');
        if (dot == std::string::npos) break;
        LightweightString<char> ending = cellText(concat("|", path.substr(dot), "|"));
        toLower(ending);
        if (std::string_view(entry.endings).find(ending.view()) != std::string_view::npos) {
            return entry.format;
        }
    }
    if (line.starts_with('{') || line.starts_with('[')) return Format::json;
    return line.find('\t') != std::string_view::npos ? Format::tsv : Format::csv;
}

const char* formatName(Format format) {
    for (const FormatEntry& entry : formats) {
        if (entry.format == format) return entry.name;
    }
    return "";
}

std::string worded(const std::string& file, const Problem& problem) {
    std::string text = file;
    if (problem.line != 0) text += concat(":", std::to_string(problem.line));
    if (!problem.column.empty()) text += ":" + problem.column;
    text += ": " + problem.found;
    if (!problem.expected.empty()) text += ", expected " + problem.expected;
    if (!problem.outcome.empty()) text += "; " + problem.outcome;
    return text;
}

std::string Log::columnName(unsigned column) const {
    const char* name = table->get_fieldname(column);
    return name == nullptr ? std::string() : std::string(name);
}

std::vector<std::string> Log::columnNames() const {
    std::vector<std::string> names;
    for (unsigned i = 0; i < columnCount(); ++i) names.push_back(columnName(i));
    return names;
}

unsigned Log::findColumn(std::string_view name) const {
    // The library finds the first or the last of several.
    unsigned column = table->get_fieldnum(cellText(name));
    const RepeatedName* repeated = repeatedNameOf(*this, column);
    return repeated == nullptr ? column : repeated->columns.front();
}

unsigned Log::requireColumn(std::string_view wanted) const {
    unsigned column = findColumn(wanted);
    if (const RepeatedName* repeated = repeatedNameOf(*this, column)) {
        throw Failure{wrongUsage, concat(name, ": ", std::to_string(repeated->columns.size()),
                                         " columns are named ", inQuotes(wanted),
                                         ", expected one of them: ", choicesOf(*this, *repeated))};
    }
    if (column == noColumn) column = numberedColumn(*this, wanted);
    if (column != noColumn) return column;
    throw Failure{wrongUsage, name + ": there is no column " + inQuotes(wanted) +
                                  suggestion(wanted, columnNames())};
}

std::string Log::parameter(const char* wanted) const {
    const char* value = table->get_param_val(wanted);
    return value == nullptr ? std::string() : std::string(value);
}

bool Log::setParameter(const std::string& wanted, const std::string& value) {
    return table->set_param_val(wanted.c_str(), value.c_str()) != noColumn;
}

Log openLog(Input& input, const std::string& path, const std::string& from, const Wanted& wanted) {
    Log log;
    log.path = path;
    log.name = input.name();
    if (input.head().empty()) {
        throw Failure{unreadable, log.name + ": is empty, expected a log"};
    }
    log.format = from.empty() ? recognised(path, input.head()) : formatNamed(from);
    readAs(log.format, input, wanted, log);
    noteRepeatedNames(log);
    return log;
}

Log readLog(const std::string& path, const std::string& from, const Wanted& wanted) {
    Input input(path);
    Log log = openLog(input, path, from, wanted);
    tellProblems(log);
    return log;
}

Log readLogToChange(const std::string& path, const std::string& from) {
    Held held = holdFile(path);
    Log log = readLog(path, from);
    log.held = held;
    return log;
}

void requireWhole(const Log& log) {
    if (log.notRead.empty()) return;
    throw Failure{unreadable, log.name +
                                  ": not changed, rows that were not read would be lost; "
                                  "repair the file, or write a copy with vek convert"};
}

int readingResult(const Log& log) {
    bool isDamaged = std::any_of(log.problems.begin(), log.problems.end(),
                                 [](const Problem& problem) { return problem.isDamage; });
    return (log.format == Format::table && isDamaged) || !log.notRead.empty() ? found : done;
}

}  // namespace vek
