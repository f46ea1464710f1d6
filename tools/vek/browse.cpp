#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "formats/formats.h"
#include "tools/vek/browse/browser.h"
#include "tools/vek/browse/screen.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/cli/terminal.h"
#include "tools/vek/commands.h"

namespace fs = std::filesystem;

namespace vek {

namespace {

// A folder of one's own, gone with this.
class OwnFolder {
public:
    OwnFolder() : path_((fs::temp_directory_path() / "vek-browse-XXXXXX").string()) {
        if (::mkdtemp(path_.data()) == nullptr) {
            throw Failure{unwritable, path_ + ": could not be made"};
        }
    }
    ~OwnFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    std::string file(const std::string& name) const { return (fs::path(path_) / name).string(); }

private:
    std::string path_;
};

bool hasOption(const Command& command, std::string_view name) {
    const auto isIt = [&](const Option& option) { return longName(option) == name; };
    return std::any_of(command.options.begin(), command.options.end(), isIt);
}

// An action that only looks, and statements that save nothing, change no file.
bool onlyLooks(const Command& command, const Args& args) {
    const std::string action = args.text("ACTION");
    if (action == "list" || action == "get" || action == "contains") return true;
    return hasOption(command, "--write") && !args.has("write");
}

// What would change a file in place would change a copy that goes.
void refuseChanges(const Command& command, const Args& args) {
    if (std::string_view(command.name) == "browse") {
        throw Failure{wrongUsage, "this is vek browse; ^O opens a log beside this one"};
    }
    if (!hasOption(command, "--backup") || args.has("dry-run")) return;
    // Behind --write an output is that of the answer: the rows are saved in place all the same.
    const bool canBeCopied = hasOption(command, "--output") && !args.has("write");
    if ((canBeCopied && args.has("output")) || onlyLooks(command, args)) return;
    const char* way = canBeCopied ? "give it -o OUT, or " : "";
    throw Failure{wrongUsage, concat(command.name,
                                     " changes a file; here it sees a copy of the rows shown, so ",
                                     way, "edit with the keys")};
}

// The words behind the command's name with the log in its place, which is behind an action.
std::vector<std::string> withLog(const Command& command, std::vector<std::string> words,
                                 const std::string& path) {
    static constexpr std::string_view names[] = {"FILE", "A", "IN", "PATH"};
    for (std::size_t i = 0; i < command.arguments.size(); ++i) {
        if (std::ranges::find(names, command.arguments[i].name) == std::end(names)) continue;
        const auto place = std::min(i, words.size());
        words.insert(words.begin() + static_cast<std::ptrdiff_t>(place), path);
        break;
    }
    return words;
}

// The rows shown, all columns, in a file of the log's own name.
std::string writeChoice(browse::Sheet& sheet, const OwnFolder& folder) {
    const fs::path own = fs::path(sheet.log().path).filename();
    std::string path = folder.file(own.string());
    try {
        targetFor(sheet.log(), path);
    } catch (const Failure&) {
        path = folder.file(own.stem().string() + ".vek");
    }
    sheet.writeRows(path);
    return path;
}

void runOnChoice(browse::Browser& browser, const std::vector<std::string>& words) {
    try {
        const Command command = commandNamed(words.front());
        const OwnFolder folder;
        const Args args = parse(command, withLog(command, {words.begin() + 1, words.end()},
                                                 writeChoice(browser.sheet(), folder)));
        refuseChanges(command, args);
        command.run(args);
    } catch (const Failure& failure) {
        sayFailure(failure.text);
    }
}

void waitForEnter() {
    std::cout << "\nEnter goes back to the log " << std::flush;
    std::string line;
    std::getline(std::cin, line);
    std::cin.clear();
}

// Small pieces of memory that are let go of are joined with others at once, and not a million of
// them when somebody presses a key.
void keepMemoryInOrder() {
#ifdef M_MXFAST
    ::mallopt(M_MXFAST, 0);
#endif
}

int run(const Args& args) {
    keepMemoryInOrder();
    if (!isTerminal(Stream::output)) {
        throw Failure{wrongUsage, "browse: needs a terminal; vek show prints a log"};
    }
    browse::Browser browser(openingFrom(args));
    for (const std::string& path : args.all("FILE")) {
        if (path == "-") {
            throw Failure{wrongUsage, "browse: keys come from the standard input, so no log can"};
        }
        const std::optional<browse::FileMark> mark = browse::markOf(path);
        browser.add(readLog(path, openingFrom(args)), mark);
    }
    browser.goToFirst();
    const char* noColor = std::getenv("NO_COLOR");
    const bool hasColor = !args.has("no-color") && (noColor == nullptr || *noColor == '\0');
    browse::showOnScreen(browser, hasColor, [&](const std::vector<std::string>& words) {
        runOnChoice(browser, words);
        waitForEnter();
    });
    for (const std::string& file : browser.recoveryFiles()) {
        say("edits that are not saved stand in " + file + "; vek browse offers them next time");
    }
    return done;
}

}  // namespace

Command browseCommand() {
    return {
        "browse",
        "look at and edit logs on the whole screen",
        "Opens logs of any format on the terminal: move, sort, choose, find, tag and edit, with "
        "undo for all of it. Nothing is written before you save. Edits that are not saved stand in "
        "the file .FILE.vek-edits beside the log, and are offered when the log is opened next. In "
        "it ? lists the keys.",
        {{"vek browse samples/dailies.vek", "look at a log"},
         {"vek browse day1.vek day2.vek", "two of them; Tab goes from one to the other"}},
        {{"FILE", "the logs", false, true}},
        {{"--no-color", "", "no colours, as with NO_COLOR in the environment"}, fromOption()},
        run,
    };
}

}  // namespace vek
