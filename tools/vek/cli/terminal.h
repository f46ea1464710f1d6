#pragma once

#include <csignal>
#include <cstddef>
#include <string>
#include <string_view>

/// What the program asks the operating system about the person at the other end. The only place
/// that does.
namespace vek {

enum class Stream { output, errors };

/// Whether a person's terminal is at the other end.
bool isTerminal(Stream stream);
/// Columns of the terminal on standard output; `otherwise` when there is none.
std::size_t terminalWidth(std::size_t otherwise);
/// How large it is; nothing of it where there is none.
struct TerminalSize {
    std::size_t rows = 0;
    std::size_t columns = 0;
    bool operator==(const TerminalSize&) const = default;
};
TerminalSize terminalSize();
/// Writes all of a text; 0, or the system's number of what went wrong.
int writeTo(Stream stream, std::string_view text);

/// Has the C library take the characters that are typed and shown for UTF-8, whatever the locale
/// says.
void takeCharactersForUtf8();

/// A closed pipe, and a file that must not grow, are seen where they are written to, and do not end
/// the program.
void outliveFailingWrites();

/// Has the system take large blocks of memory back where they end, whatever came before them: left
/// in the heap, they are too small or too large for what comes after.
void giveLargeBlocksBack();

/// Whether something stands at a path, whatever it is.
bool isThere(const std::string& path);

/// While it lives, what would end the program (a closed terminal, a kill) is noted, so that the
/// terminal can be put right before.
class NotedEndings {
public:
    NotedEndings();
    /// Ends the program as it was asked to, if it was.
    ~NotedEndings();
    NotedEndings(const NotedEndings&) = delete;
    NotedEndings& operator=(const NotedEndings&) = delete;

    bool isAsked() const;

private:
    struct sigaction before_[3];
};

/// Keeps Ctrl-C and its kin waiting while a file is being replaced: the old file or the new one is
/// there then, and nothing beside it. While several files are, until the last of them is. Those
/// that the program ignores are none of its business.
class Undisturbed {
public:
    Undisturbed();
    ~Undisturbed();
    Undisturbed(const Undisturbed&) = delete;
    Undisturbed& operator=(const Undisturbed&) = delete;

    /// Whether one of them waits by now.
    bool isAwaited() const;
};

}  // namespace vek
