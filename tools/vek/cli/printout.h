#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/input/held.h"
#include "formats/writing/output.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// Where a subcommand's text goes: standard output, or a file that is replaced whole or not at
/// all. A full disk or a closed stream is a Failure with `unwritable`; so is more than the limits
/// allow. A pipe that nobody reads any more ends the program quietly.
///
/// On a terminal all but line ends and tabs is escaped.
class Printout : public Output {
public:
    /// Standard output.
    Printout();
    /// A file; "" and "-" are standard output. `keepsOld` keeps what a held file is now beside it.
    explicit Printout(const std::string& path, Held held = nullptr, bool keepsOld = false);
    /// A file that is held once there is something to write, for very many at once.
    static Printout late(const std::string& path, std::function<Held()> hold, bool keepsOld);
    /// The same for what is only tried: refused or told as if it were written, and kept nowhere.
    static Printout trial(const std::string& path);
    /// A held file that takes its place by `commit` alone; until then it stands beside it, whole
    /// once it is closed. The program is not ended meanwhile.
    static Printout prepared(const std::string& path, Held held, bool keepsOld);

    /// To be called where more was read since it was made: more may be written then, too.
    void renewLimit();

    /// A line whose parts are escaped already, with colours between them.
    void inkedLine(std::string_view text);
    /// Says that everything is written, and says to people what there is to say of the file.
    void close();
    /// For what `prepared` made alone, once it is closed: puts the file in its place, and says what
    /// there is to say of it.
    void commit();

    bool isStandardOutput() const { return screen_ != nullptr; }
    /// Whether a person's terminal is at the other end.
    bool isTerminal() const;

private:
    class Screen;
    class UndisturbedFile;

    Printout(std::string name, std::unique_ptr<OutputSink> sink);
    void tellNotes() const;
    static std::unique_ptr<OutputSink> sinkFor(const std::string& path, Held held, bool keepsOld);

    Screen* screen_;                       // null for a file
    UndisturbedFile* prepared_ = nullptr;  // null for one that takes its place when it is closed
    std::vector<std::string> notes_;       // of what was prepared
};

/// Thrown where nobody reads what is printed any more: whoever did has seen enough.
struct PipeClosed {};

/// Says what a file could not hold, each kind once: "OUT: cells that lose the blanks at their
/// ends: 3, first FILE:12:Scene".
void tellLosses(const Losses& losses, const std::string& output);

/// At most so many bytes are written from now on; 0 for as many as those that were read give
/// reason for.
void limitPrintouts(std::size_t bytes);
/// Adds up what the program read.
void noteRead(std::size_t bytes);

}  // namespace vek
