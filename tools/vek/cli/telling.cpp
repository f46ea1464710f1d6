#include "tools/vek/cli/telling.h"

#include <algorithm>

#include "tools/vek/cli/printout.h"

namespace vek {

namespace {

// Logs are printed in other formats, too, and a log is no object that tells something.
bool isTold(const Command& command) {
    return std::any_of(command.options.begin(), command.options.end(), [](const Option& option) {
        return std::string_view(option.choices) == tellings;
    });
}

void printFailure(const std::string& text) {
    Printout out;
    JsonWriter json(out);
    json.beginObject();
    json.text("failure", text);
    json.end();
    out.close();
}

}  // namespace

Option tellingOption() {
    return {"-f,--format", "FORMAT", "text for people (as a rule), or json for programs", false,
            tellings};
}

bool tellsJson(const Args& args) {
    return args.text("format") == "json";
}

bool asksForJson(const std::vector<std::string>& words) {
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        const bool isOption = words[i] == "--format" || words[i] == "-f";
        if (isOption && i + 1 < words.size() && words[i + 1] == "json") return true;
        if (words[i] == "--format=json" || words[i] == "-fjson") return true;
    }
    return false;
}

// Where writing failed there is no telling of it either, and what was written stands there.
void tellFailure(const Failure& failure, const Command& command,
                 const std::vector<std::string>& words) {
    const bool canBeTold = failure.kind == wrongUsage || failure.kind == unreadable;
    if (!canBeTold || !asksForJson(words) || !isTold(command)) return;
    try {
        printFailure(failure.text);
    } catch (const PipeClosed&) {
        // Nobody reads the object; the command failed all the same, and ends as failed.
    }
}

}  // namespace vek
