#include "log_round_trip.h"

#include <algorithm>

#include <vekdb/host/text_util.h>

namespace fuzz {

namespace {

using vek::Format;
using vek::Log;

constexpr std::size_t mostCells = std::size_t{1} << 20;

vek::OpenOptions asked(std::optional<Format> format) {
    vek::OpenOptions options;
    options.format = format;
    options.maxCells = mostCells;
    return options;
}

std::string checkReason(const vek::Reason& reason) {
    if (reason.kind == vek::Reason::none || reason.kind == vek::Reason::outOfMemory) {
        return "no reason for a failure";
    }
    return reason.text().empty() ? "a reason without words" : "";
}

std::size_t linesOf(std::string_view text) {
    auto isEnd = [](char c) { return c == '\n' || c == '\r'; };
    return 1 + static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isEnd));
}

std::string checkProblems(const Log& log, std::size_t lines) {
    for (const vek::Problem& problem : log.problems()) {
        if (problem.text("log").empty()) return "a problem without words";
        if (problem.line > lines) return "a problem behind the last line";
    }
    for (unsigned row = 0; row < log.size(); ++row) {
        if (log.at(row).line() > lines) return "a row behind the last line";
    }
    return {};
}

std::string place(const char* what, unsigned row, const vek::Column& column) {
    return std::string(what) + " in row " + std::to_string(row) + ", column \"" + column.name() +
           "\"";
}

bool standsByItself(const Log& log, const vek::Column& column) {
    return bool(log.column(column.name()));
}

std::string compareCells(const Log& before, const vek::Column& was, const vek::Column& is) {
    for (unsigned row = 0; row < before.size(); ++row) {
        if (was.at(row) != is.at(row)) return place("another cell", row, was);
    }
    return {};
}

// A word about drop frames that is said twice in an edit list is not said twice again.
bool isImplied(const Log& after, const vek::Column& column) {
    return after.format() == Format::edl && column.name() == "FCM";
}

// The rate that is asked for stands in the place of the log's own.
bool isAskedFor(const Log& after, const std::string& parameter) {
    return after.format() == Format::ale &&
           LightweightString<char>::icompare(parameter.c_str(), "FPS") == 0;
}

// What a heading says of the file's delimiter and is not so, which is told, is put right.
bool isPutRight(const Log& before, const std::string& parameter) {
    const auto& problems = before.problems();
    return LightweightString<char>::icompare(parameter.c_str(), "FIELD_DELIM") == 0 &&
           std::any_of(problems.begin(), problems.end(), [](const vek::Problem& problem) {
               return problem.expected.starts_with("what FIELD_DELIM says");
           });
}

// Formats with a heading of their own may say more in it.
std::string compareParameters(const Log& before, const Log& after) {
    for (const vek::Parameter& parameter : before.parameters()) {
        if (isAskedFor(after, parameter.name) || isPutRight(before, parameter.name)) continue;
        const auto same = after.parameter(parameter.name);
        if (!same) return "no parameter \"" + parameter.name + "\"";
        if (*same != before.parameter(parameter.name)) {
            return "parameter \"" + parameter.name + "\" is \"" + *same + "\"";
        }
    }
    return {};
}

// Formats with columns of their own may put them in another order.
std::string compareLogs(const Log& before, const Log& after) {
    if (before.size() != after.size()) return "another number of rows";
    for (vek::Column column : before.columns()) {
        if (!standsByItself(before, column) || isImplied(after, column)) continue;
        auto same = after.column(column.name());
        if (!same) return "no column \"" + column.name() + "\"";
        const std::string wrong = compareCells(before, column, *same);
        if (!wrong.empty()) return wrong;
    }
    return compareParameters(before, after);
}

bool isDamaged(const Log& log) {
    const auto& problems = log.problems();
    return log.moreProblems() > 0 ||
           std::any_of(problems.begin(), problems.end(),
                       [](const vek::Problem& problem) { return problem.isDamage; });
}

// A log of nothing is an empty text, which is no log. JSON and timelines have no place for the
// names of columns without rows. Which bytes a text that is no UTF-8 stands for is guessed, and
// lines that are none of an edit list are kept as comments, as far as that goes.
bool isSure(const Log& log, Format format, const std::string& written) {
    const bool isJson = format == Format::json || format == Format::jsonl;
    const bool isTimeline = format == Format::edl || format == Format::otio;
    const auto letters = fromUTF8(LightweightString<char>(written.c_str()));
    const bool isUtf8 = toUTF8(letters) == LightweightString<char>(written.c_str());
    return !written.empty() && isUtf8 && !((isJson || isTimeline) && log.size() == 0) &&
           !(isTimeline && isDamaged(log));
}

std::string writeAndCompare(const Log& log, Format format) {
    vek::SaveOptions options;
    options.rate = "25";
    std::string written;
    auto saved = log.write(written, format, options);
    if (!saved) return checkReason(saved.reason());
    if (!saved->isWhole() || !canRead(format) || !isSure(log, format, written)) return {};
    auto again = vek::openText(written, "written", asked(format));
    if (!again) return "what was written is not read: " + again.reason().text();
    return compareLogs(log, *again);
}

constexpr Format writable[] = {Format::table, Format::csv,     Format::tsv, Format::json,
                               Format::jsonl, Format::ale,     Format::edl, Format::otio,
                               Format::html,  Format::markdown};

// Every input goes to its own format and to another one, which its bytes choose.
Format otherFormat(std::string_view text) {
    unsigned sum = static_cast<unsigned>(text.size());
    for (char c : text) sum += static_cast<unsigned char>(c);
    return writable[sum % std::size(writable)];
}

std::string checkWays(const Log& log, std::string_view text) {
    for (Format format : {log.format(), otherFormat(text)}) {
        if (!canWrite(format)) continue;
        const std::string wrong = writeAndCompare(log, format);
        if (!wrong.empty()) return std::string(nameOf(format)) + ": " + wrong;
    }
    return {};
}

}  // namespace

std::string checkLog(std::string_view text, std::optional<Format> format) {
    auto log = vek::openText(text, "log", asked(format));
    if (!log) return checkReason(log.reason());
    const std::string wrong = format ? checkProblems(*log, linesOf(text)) : "";
    return wrong.empty() ? checkWays(*log, text) : wrong;
}

}  // namespace fuzz
