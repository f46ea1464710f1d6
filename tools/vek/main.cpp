#include <vekdb/host/config.h>
#include <vekdb/host/diagnostics.h>
#include <vekdb/host/os.h>
#include <vekdb/support/version.h>
#include "tools/vek/cli/ending.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/cli/terminal.h"
#include "tools/vek/commands.h"

namespace {

using namespace vek;

// What the library has to say is for developers; people get it as file:line from the readers.
class SilentSink : public iDiagnosticSink {
public:
    void debug(const char*) noexcept override {}
    void log(const char*) noexcept override {}
    void splat(const char*) noexcept override {}
};

int print(const std::string& text) {
    Printout out;
    out.write(text);
    out.close();
    return done;
}

int runWith(const Command& command, const Args& args) {
    if (args.has("help")) return print(helpText(command));
    if (args.has("quiet")) leaveMessagesOut();
    limitPrintouts(args.number("max-output", 0));
    return command.run(args);
}

int runCommand(const Command& command, const std::vector<std::string>& words) {
    try {
        return runWith(command, parse(command, words));
    } catch (const Failure& failure) {
        tellFailure(failure, command, words);
        throw;
    }
}

int run(std::vector<std::string> words) {
    if (words.empty()) throw Failure{wrongUsage, "a command is missing (vek --help lists them)"};
    std::string name = words.front();
    words.erase(words.begin());
    if (name == "--version") return print(std::string("vek ") + vekdbDllVersionStr() + "\n");
    if (name == "complete") return complete(std::move(words));
    if (name == "help" && !words.empty()) return print(helpText(commandNamed(words.front())));
    if (name == "--help" || name == "-h" || name == "help") return print(programHelp());
    return runCommand(commandNamed(name), words);
}

}  // namespace

int main(int count, char** words) {
    static SilentSink silent;
    setDiagnosticSink(&silent);
    // Column names are kept as they are written, ampersands included.
    setConfigInt("remove_fieldname_ampersands", 0);
    // The program is its own host, and nobody asks it for a single thread.
    OS()->setReadsAhead(true);
    outliveFailingWrites();
    giveLargeBlocksBack();
    return endOf([&] { return run({words + (count > 0 ? 1 : 0), words + count}); });
}
