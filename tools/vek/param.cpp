#include "formats/formats.h"
#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/writing/sheet_facts.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

int list(const Log& log) {
    Printout out;
    for (const ParameterText& parameter : ownParameters(log)) {
        out.line(escaped(parameter.name + ": " + parameter.value));
    }
    out.close();
    return done;
}

bool hasParameter(const Log& log, const std::string& name) {
    return log.table->get_param_val(name.c_str()) != nullptr;
}

int get(const Log& log, const std::string& name) {
    if (!hasParameter(log, name)) {
        std::vector<std::string> names;
        for (const ParameterText& parameter : ownParameters(log)) names.push_back(parameter.name);
        say(log.name + ": there is no parameter " + inQuotes(name) + suggestion(name, names));
        return found;
    }
    Printout out;
    out.line(log.parameter(name.c_str()));
    out.close();
    return done;
}

void checkHolds(const Log& log, const std::string& name, const std::string& value) {
    if (sameText(name, "VEKDB")) {
        throw Failure{wrongUsage, "param: VEKDB is the file's revision and not to be set"};
    }
    if (canBeParameter(name, value)) return;
    throw Failure{wrongUsage, log.name +
                                  ": a parameter holds no quotes, tabs, line ends or blanks "
                                  "at its ends, and its name no colon"};
}

void print(const std::string& name, const std::string& before, const std::string& after,
           const Args& args) {
    Printout out;
    const std::string cells[] = {name, before, after};
    Grid grid{{{"Parameter"}, {"Before"}, {"After"}},
              1,
              [&](std::size_t, std::size_t column) -> std::string_view { return cells[column]; }};
    printGrid(grid, screenOf(out, args), out);
    out.close();
}

void requirePlace(const Log& log, const std::string& name) {
    const Format target = targetOf(log);
    if (target == Format::table || target == Format::ale) return;
    const bool isEdl = log.format == Format::edl;
    if (isEdl && (sameText(name, "TITLE") || sameText(name, "FCM"))) return;
    throw Failure{
        wrongUsage,
        isEdl ? concat(log.name, ": an edit list has no place for a parameter ", inQuotes(name),
                       ", expected TITLE or FCM; table files and ALE hold others")
              : concat(log.name, ": ", formatName(log.format),
                       " holds no parameters, only table files, ALE and, for TITLE and "
                       "FCM, edit lists do")};
}

int set(Log& log, const std::string& name, const std::string& value, const Args& args) {
    checkHolds(log, name, value);
    requirePlace(log, name);
    const std::string before = log.parameter(name.c_str());
    if (!log.setParameter(name, value)) {
        throw Failure{unwritable, log.name + ": there is no room for " + inQuotes(name) +
                                      ", a file holds 40 parameters"};
    }
    const bool isTrial = args.has("dry-run");
    if (isTrial) print(name, before, value, args);
    saveInPlace(log, args);
    const char* how = before == value ? "as it is" : "set";
    if (isTrial) say(concat(log.name, ": 1 parameter would be ", how));
    return done;
}

int run(const Args& args) {
    std::string action = args.text("ACTION");
    bool hasName = args.has("NAME");
    bool hasValue = args.has("VALUE");
    if (hasName != (action != "list") || hasValue != (action == "set")) {
        throw Failure{wrongUsage,
                      "param: expected list FILE, get FILE NAME, or set FILE NAME "
                      "VALUE"};
    }
    for (const char* option : {"dry-run", "backup"}) {
        if (!args.has(option) || action == "set") continue;
        throw Failure{wrongUsage, concat("param: --", option, " is for set")};
    }
    if (action == "list") return list(readLog(args));
    if (action == "get") return get(readLog(args), args.text("NAME"));
    Log log = readLogToSave(args);
    return set(log, args.text("NAME"), args.text("VALUE"), args);
}

}  // namespace

Command paramCommand() {
    return {
        "param",
        "list, get or set the parameters of a log",
        "Parameters are the named values in a table file's head and the heading entries of an "
        "ALE. get ends with 1 when there is none of the name.",
        {{"vek param list samples/dailies.vek", "all of them"},
         {"vek param get samples/dailies.vek FPS", "one value"},
         {"vek param set log.vek Project 'Night shoot'", "add or replace one"}},
        {{"ACTION", "what to do", false, false, "list|get|set"},
         {"FILE", "the log; - reads standard input"},
         {"NAME", "the parameter, case ignored", true},
         {"VALUE", "its new value", true}},
        join({{"-n,--dry-run", "", "with set: show before and after, change nothing"},
              backupOption(),
              fromOption()},
             screenOptions()),
        run,
    };
}

}  // namespace vek
