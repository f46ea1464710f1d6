#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "formats/failure.h"
#include "formats/text/suggestion.h"
#include "tools/vek/cli/exit_code.h"

/// How a subcommand is declared. The command line, `--help`, the manual page and the
/// completions of all three shells are made from this one declaration.
///
/// To add a subcommand:
///
/// 1. Write `tools/vek/NAME.cpp` with one function `Command NAMECommand()` that returns its
///    declaration, and name that function in `tools/vek/commands.h` and in the list in
///    `tools/vek/commands.cpp`.
/// 2. The declaration's last member is `int run(const Args&)`. It returns an ExitCode. Whatever
///    ends it early is thrown as a Failure{kind, text}; main says it and leaves with its code.
/// 3. Read with `readLog(args)` (cli/reading.h): any format, a path or "-". A Log is the library's
///    table, the line every row came from, and what was found wrong on the way. Before a file
///    is written back call `requireWhole(log)`, so that a row that could not be read is not lost.
/// 4. Choose rows with `selectRows(log, selectionFrom(args))` (formats/choosing/select.h and
///    cli/choosing.h); what comes back is a view. Declare the options for it by adding
///    `selectionOptions()`.
/// 5. Write to people and pipes through a Printout (cli/printout.h), never to std::cout: it
///    finishes with an error when the disk is full and quietly when a pipe is closed. Write logs
///    with `writeSheet` (formats/formats.h) and the options of cli/writing.h, and back into their
///    own file with `saveInPlace` (cli/saving.h).
/// 6. Say messages with `say` as file:line: what was found, what was expected, what to do.
/// 7. Add cases to tests/cli/cases/NAME/: one file a case.
namespace vek {

// The program is written in terms of the library of formats.
using namespace formats;

struct Example {
    const char* command;
    const char* does;
};

/// An argument without dashes. What stands in `choices` ("list|get|set") is all it may be; an
/// argument named FILE, A, B, IN or OUT is completed by file names, and COLUMN by the columns of
/// the first such file.
struct Argument {
    const char* name;
    const char* help;
    bool optional = false;
    bool repeats = false;
    const char* choices = "";
};

/// An option: "-o,--output". `value` names what it takes, "" for a switch. Completions go by it:
/// COLUMN, "A,B" for a list of columns, COND for a condition, OUT for a file.
struct Option {
    const char* names;
    const char* value;
    const char* help;
    bool repeats = false;
    const char* choices = "";
    const char* suggestions = "";  ///< for completions, where other words may be given, too
};

/// The types that a column can have, "|" between them.
extern const char* const columnTypes;

/// What a person wrote behind the subcommand's name. Options go by their long name without
/// the dashes, arguments by their declared name.
class Args {
public:
    bool has(std::string_view name) const;
    /// The value, or `otherwise` when it was not given.
    std::string text(std::string_view name, const std::string& otherwise = {}) const;
    const std::vector<std::string>& all(std::string_view name) const;
    /// A count of 0 or more; a Failure when something else was written.
    std::size_t number(std::string_view name, std::size_t otherwise) const;

    void set(std::string_view name, std::vector<std::string> values);

private:
    struct Entry {
        std::string name;
        std::vector<std::string> values;
    };
    std::vector<Entry> entries_;
};

struct Command {
    const char* name;
    const char* summary;      ///< one line, lower case, no full stop
    const char* description;  ///< a few sentences for --help and the manual page
    std::vector<Example> examples;
    std::vector<Argument> arguments;
    std::vector<Option> options;
    int (*run)(const Args&);
};

/// One list behind the other, for declarations put together from shared parts.
std::vector<Option> join(std::vector<Option> first, const std::vector<Option>& second);

/// Parses what stands behind the subcommand's name; a Failure with wrongUsage when it is wrong.
Args parse(const Command& command, const std::vector<std::string>& words);

/// The help text of a subcommand: examples first.
std::string helpText(const Command& command);
/// "vek show [OPTIONS] FILE".
std::string usageLine(const Command& command);

/// "-o" and "--output" of "-o,--output"; either may be empty.
std::string shortName(const Option& option);
std::string longName(const Option& option);

/// The words of "a|b|c".
std::vector<std::string> choicesOf(const char* choices);

}  // namespace vek
