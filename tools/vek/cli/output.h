#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vek {

/// Where a subcommand's text goes: standard output, or a file that is replaced whole or not at
/// all. Nothing of a file is touched before `close`.
class Output {
public:
    /// Standard output.
    Output() = default;
    /// A file; "" and "-" are standard output.
    explicit Output(const std::string& path);

    /// A Failure with `unwritable` when a full disk or a closed stream takes no more. A pipe
    /// that nobody reads any more ends the program quietly.
    /// On a terminal all but line ends and tabs is escaped.
    void write(std::string_view text);
    void line(std::string_view text);
    /// A line whose parts are escaped already, with colours between them.
    void inkedLine(std::string_view text);
    /// Says that everything is written. To be called before the end; nothing is saved without.
    void close();

    /// The path, or "standard output".
    std::string name() const;
    bool isStandardOutput() const { return path_.empty(); }
    /// Whether a person's terminal is at the other end.
    bool isTerminal() const;

private:
    void add(std::string_view text);
    void flush();

    std::string path_;
    std::string pending_;
    mutable std::optional<bool> isTerminal_;
};

/// Replaces a file atomically: mode and links are kept, and on any failure the old file stays.
/// Devices and pipes are written to. A Failure with `unwritable` says why it did not work. A
/// text that is not empty ends in a line feed.
void replaceFile(const std::string& path, std::string_view text);

/// Copies a file beside itself, as "PATH.bak", before it is replaced.
void backUp(const std::string& path);

/// Columns of the terminal on standard output; `otherwise` when there is none.
std::size_t terminalWidth(std::size_t otherwise);

}  // namespace vek
