#include "formats/log/log.h"

#include <algorithm>

#include <vekdb/host/text_util.h>
#include "formats/inform.h"
#include "formats/log/column_names.h"
#include "formats/reading/decoding.h"
#include "formats/reading/input.h"
#include "formats/text/suggestion.h"
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"

namespace vek::formats {

namespace {

std::string withoutGz(const std::string& path) {
    const bool isGz = path.size() > 3 && sameText(path.substr(path.size() - 3), ".gz");
    return isGz ? path.substr(0, path.size() - 3) : path;
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

std::string worded(const std::string& file, const Problem& problem) {
    return problem.text(file);
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
        throw Failure{wrongUsage,
                      name,
                      {0, "",
                       concat(std::to_string(repeated->columns.size()), " columns are named ",
                              inQuotes(wanted)),
                       concat("one of them: ", choicesOf(*this, *repeated)), ""}};
    }
    if (column == noColumn) column = numberedColumn(*this, wanted);
    if (column != noColumn) return column;
    if (std::optional<std::string> inner = unbracketed(wanted)) return requireColumn(*inner);
    std::string near = nearest(wanted, columnNames());
    if (!near.empty()) near = concat("did you mean ", near, "?");
    throw Failure{wrongUsage, name, {0, "", "there is no column " + inQuotes(wanted), "", near}};
}

std::string Log::parameter(const char* wanted) const {
    const char* value = table->get_param_val(wanted);
    return value == nullptr ? std::string() : std::string(value);
}

bool Log::setParameter(const std::string& wanted, const std::string& value) {
    return table->set_param_val(wanted.c_str(), value.c_str()) != noColumn;
}

bool canBeParameter(std::string_view name, std::string_view value) {
    constexpr std::string_view no("\"\n\r\t\0", 5);
    return !name.empty() && trimmed(name) == name && trimmed(value) == value &&
           name.find_first_of(no) == name.npos && value.find_first_of(no) == value.npos &&
           name.find(':') == name.npos && !sameText(name, "VEKDB");
}

namespace {

Log openLog(Input& input, const std::string& path, const std::string& from, const Wanted& wanted,
            std::shared_ptr<Source> source) {
    Log log;
    log.source = std::move(source);
    log.path = path;
    log.name = input.name();
    if (input.head().empty()) {
        throw Failure{unreadable, log.name, {0, "", "is empty", "a log", ""}};
    }
    decode(input, log);
    if (input.head().empty()) {
        throw Failure{unreadable, log.name + ": is empty once unpacked, expected a log"};
    }
    const std::string ending = log.form.isPacked ? withoutGz(path) : path;
    log.format = from.empty() ? recognised(ending, input.head()) : formatNamed(from);
    readAs(log.format, input, wanted, log);
    noteRepeatedNames(log);
    return log;
}

// What a save in place compares the log with.
void noteWhatCame(Log& log) {
    Source& source = *log.source;
    source.rows = log.rowCount();
    for (unsigned i = 0; i < log.columnCount(); ++i) {
        source.columns.push_back({log.columnName(i), log.table->get_field_type(i)});
        source.cameFrom.push_back(i);
    }
    source.named = source.columns.size() - log.unnamed.size();
    for (unsigned i = 0; i < log.table->get_num_params(); ++i) {
        source.parameters.push_back({log.table->get_param_name(i), log.table->get_param_text(i)});
    }
}

}  // namespace

Log openLog(Input& input, const std::string& path, const std::string& from, const Wanted& wanted) {
    return openLog(input, path, from, wanted, nullptr);
}

Log readLog(const std::string& path, const std::string& from, const Wanted& wanted) {
    Input input(path);
    Log log = openLog(input, path, from, wanted);
    tellProblems(log);
    return log;
}

Log readLogToChange(const std::string& path, const std::string& from) {
    Held held = holdFile(path);
    Log log = readLogToCopy(path, from);
    log.held = held;
    return log;
}

Log readLogToCopy(const std::string& path, const std::string& from) {
    auto source = std::make_shared<Source>();
    source->input = std::make_shared<Input>(path);
    source->input->keep();
    Log log = openLog(*source->input, path, from, {}, source);
    noteWhatCame(log);
    tellProblems(log);
    return log;
}

void requireWhole(const Log& log) {
    if (log.notRead.empty()) return;
    throw Failure{unreadable,
                  log.name,
                  {0, "", "not changed, rows that were not read would be lost", "",
                   "repair the file, or write a copy with vek convert"}};
}

int readingResult(const Log& log) {
    bool isDamaged = std::any_of(log.problems.begin(), log.problems.end(),
                                 [](const Problem& problem) { return problem.isDamage; });
    return (log.format == Format::table && isDamaged) || !log.notRead.empty() ? found : done;
}

}  // namespace vek::formats
