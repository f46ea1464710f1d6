#include "formats/checking/findings.h"
#include "formats/input/input.h"
#include "formats/reading/open_log.h"
#include "formats/text/width.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/reading_options.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

Findings findingsOf(const std::string& path, const Args& args) {
    const Opening opening = openingFrom(args);
    Input input(path, opening);
    Log log = openLog(input, path, opening);
    requireUse(log, args);
    noteRead(log.bytesRead);
    return findingsOf(log, input, wantedGauge(args));
}

Findings findingsOrFailure(const std::string& path, const Args& args) {
    try {
        return findingsOf(path, args);
    } catch (const Failure& failure) {
        if (failure.kind != unreadable) throw;
        sayFailure(failure.text);
        return {path, failure.text};
    }
}

void print(const Findings& findings, Printout& out) {
    for (const Problem& problem : findings.problems) {
        out.line(escaped(worded(findings.file, problem)));
    }
    if (findings.more > 0) {
        out.line(escaped(findings.file) + ": " + counted(findings.more, "problem") +
                 " more of reading");
    }
    if (!findings.notRead.empty()) out.line(escaped(findings.notRead));
}

void addProblem(const Problem& problem, JsonWriter& json) {
    json.beginRow();
    json.numberOrNothing("line", problem.line);
    json.text("column", problem.column);
    json.text("found", problem.found);
    json.text("expected", problem.expected);
    json.text("outcome", problem.outcome);
    json.flag("remark", isRemark(problem));
    json.end();
}

void addFindings(const Findings& findings, JsonWriter& json) {
    json.beginObject();
    json.text("file", findings.file);
    json.textOrNothing("failure", findings.failure);
    json.beginArray("problems");
    for (const Problem& problem : findings.problems) addProblem(problem, json);
    json.end();
    json.number("more", findings.more);
    json.textOrNothing("notRead", findings.notRead);
    json.end();
}

// Prints what is found, as text or as one document for all files.
class Report {
public:
    explicit Report(bool isJson) : isJson_(isJson), json_(out_) {
        if (!isJson) return;
        json_.beginObject();
        json_.beginArray("files");
    }

    void add(const Findings& findings) {
        out_.renewLimit();
        problems_ += findings.problemCount();
        remarks_ += findings.remarks;
        isUnread_ = isUnread_ || !findings.failure.empty();
        if (isJson_)
            addFindings(findings, json_);
        else
            print(findings, out_);
    }

    void close() {
        if (isJson_) {
            json_.end();
            json_.number("problems", problems_);
            json_.number("remarks", remarks_);
            json_.end();
        }
        out_.close();
        if (isJson_) return;
        if (problems_ > 0) say(counted(problems_, "problem"));
        if (remarks_ > 0) say(counted(remarks_, "remark"));
    }

    int result() const {
        if (isUnread_) return exitCodeOf(unreadable);
        return problems_ > 0 ? found : done;
    }

private:
    bool isJson_;
    Printout out_;
    JsonWriter json_;
    std::size_t problems_ = 0;
    std::size_t remarks_ = 0;
    bool isUnread_ = false;
};

int run(const Args& args) {
    Report report(tellsJson(args));
    for (const std::string& path : args.all("FILE")) report.add(findingsOrFailure(path, args));
    report.close();
    return report.result();
}

}  // namespace

Command checkCommand() {
    return {
        "check",
        "find every problem in logs",
        "Prints one line a problem, file:line:column: what was found, what was expected. It finds "
        "damaged and ragged lines, values that a table file would change on the way, timecodes "
        "and keycodes that do not parse, drop-frame counting that contradicts itself, columns with "
        "and without its semicolon, ends before starts, identifiers that appear twice and unknown "
        "column types. A clip over midnight is "
        "a remark and no problem. Ends with 1 when it found a problem, with 3 when a file could "
        "not be read.",
        {{"vek check samples/*.vek", "several files"},
         {"vek check samples/docs.vek && echo fine", "in a script"},
         {"vek check samples/docs.vek --format json", "for a program"}},
        {{"FILE", "a log, or - for standard input", false, true}},
        {tellingOption(), gaugeOption(), fromOption()},
        run,
    };
}

}  // namespace vek
