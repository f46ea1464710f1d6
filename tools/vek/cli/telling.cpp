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

// Where writing failed there is no telling of it either, and what was written stands there.
void tellFailure(const Failure& failure, const Command& command, const Args& args) {
    const bool canBeTold = failure.kind == wrongUsage || failure.kind == unreadable;
    if (!canBeTold || !tellsJson(args) || !isTold(command)) return;
    try {
        printFailure(failure.text);
    } catch (const PipeClosed&) {
        // Nobody reads the object; the command failed all the same, and ends as failed.
    }
}
}  // namespace vek
