#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vekdb/host/file_replacement.h>
#include "formats/reading/source.h"

namespace vek::formats {

/// A file that nobody else who asks changes before it has been replaced; null for none.
using Held = std::shared_ptr<FileReplacement>;

/// Takes hold of a file before it is read. A Failure with `unwritable` when another program has
/// it, or when its path leads through somebody else's link. What else is wrong with a path is
/// said by who reads it. Null for standard input.
Held holdFile(const std::string& path);

/// The same for an output that is one of the inputs, too; null when it is none of them.
Held holdInput(const std::vector<std::string>& inputs, const std::string& output);

/// Where a subcommand's text goes: standard output, or a file that is replaced whole or not at
/// all. A long text goes to a file beside the one that it is to replace while it is made, so that
/// only a piece of it is held in memory; the file itself is not touched before `close`.
class Output {
public:
    /// Standard output.
    Output();
    /// A file; "" and "-" are standard output.
    explicit Output(const std::string& path, Held held = nullptr);
    ~Output();
    Output(Output&&) noexcept;

    /// All that is written is put into another encoding than UTF-8, "" for none, and packed by
    /// gzip, when the output is closed. To be said before anything is written.
    void encode(const std::string& encoding, bool isPacked);

    /// A Failure with `unwritable` when a full disk or a closed stream takes no more. A pipe
    /// that nobody reads any more ends the program quietly. Another Failure with `unwritable`
    /// for more than the limits allow.
    /// On a terminal all but line ends and tabs is escaped.
    void write(std::string_view text);
    void line(std::string_view text);
    /// A line whose parts are escaped already, with colours between them.
    void inkedLine(std::string_view text);
    /// Bytes of a file that was read, as they stand there. The input must live as long as this.
    void copy(const Input& input, Range range);
    /// Says that everything is written. To be called before the end; nothing is saved without.
    void close();
    /// What was written so far, of a file that is not written to.
    std::string take() { return std::move(pending_); }

    /// The path, or "standard output".
    const std::string& name() const;
    bool isStandardOutput() const { return path_.empty(); }
    /// Whether a person's terminal is at the other end.
    bool isTerminal() const;

private:
    class Departure;

    void add(std::string_view text);
    void encodePending();
    void flush();
    void sendPiece();
    void replaceFile();

    std::string path_;
    Held held_;
    std::unique_ptr<Departure> departure_;
    std::string pending_;
    const Input* copied_ = nullptr;  ///< the last one that was copied of
    std::optional<SourceReader> reader_;
    std::size_t size_ = 0;  ///< of all that was written
    std::string encoding_;
    bool isPacked_ = false;
    mutable std::optional<bool> isTerminal_;
};

/// Copies a file that is held beside itself, as "PATH.bak", before it is replaced.
void backUp(const std::string& path, FileReplacement& held);

/// Columns of the terminal on standard output; `otherwise` when there is none.
std::size_t terminalWidth(std::size_t otherwise);

}  // namespace vek::formats
