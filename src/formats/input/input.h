#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <vekdb/host/open_file.h>
#include <vekdb/host/text_block.h>
#include "formats/input/opening.h"

namespace vek::formats {

/// The bytes of one input, from a path or, for "-", from standard input. What can be read again
/// is read only as far as somebody asks, a pipe at once. Reading that does not work is a Failure
/// with `unreadable` that says why, from whichever operation it was.
class Input {
public:
    explicit Input(const std::string& path, const Opening& opening = {});
    /// What another's descriptor gives; it stays open. And a text, which is copied.
    Input(const std::string& name, int descriptor, const Opening& opening);
    Input(const std::string& name, std::string_view text, const Opening& opening);
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    static constexpr const char* standardInput = "standard input";
    /// For messages: the path, or "standard input".
    const std::string& name() const { return name_; }

    static constexpr std::size_t headSize = 4096;
    /// As much of its beginning, enough to tell a format; ends with the first call of `text`.
    std::string_view head() const { return got().substr(0, headSize); }
    /// All of it, kept in memory from then on.
    std::string_view text();
    /// How many bytes it had before it became another text, as far as it was read.
    std::size_t bytesRead() const { return bytesRead_; }
    /// Another text from here on, made of what was read.
    void become(Quor::Ptr<TextBlock> text);
    /// Gives up the memory that holds it all, for whoever makes something of it there.
    Quor::Ptr<TextBlock> takeText();

    /// An open file whose bytes the library's own loader reads again from the first one on,
    /// whatever the file is called and also for standard input. Ends with the Input.
    int loaderDescriptor();

    /// Makes it one that can be read again after `takeText`, a pipe as well.
    void keep() {
        isKept_ = true;
        loaderDescriptor();
    }
    /// The number of bytes of what was kept, as it is now.
    std::uint64_t size() const;
    /// Reads bytes of such a file from a place on; how many there were, fewer only at its end.
    std::size_t readFrom(std::uint64_t from, char* to, std::size_t size) const;
    /// Reads bytes of what was kept. A Failure with `unwritable` where they are gone.
    void readAgain(std::uint64_t from, char* to, std::size_t size) const;
    /// All of it, kept in memory from then on for everybody who asks.
    std::string_view textAgain() const;
    bool holdsTextAgain() const { return again_ != nullptr; }

private:
    void open(OpenFile file);
    std::size_t readMore();
    void requireBytes(std::size_t bytes) const;
    void requireWithinMost() const;
    void requireWithoutGap() const;
    void readUpTo(std::size_t most);
    void makeRoom(std::size_t most);
    void spool();
    std::string_view got() const { return {text_->data(), size_}; }

    std::string name_;
    Limits limits_;
    const Terms& terms_;
    Watcher* watcher_;
    Quor::Ptr<TextBlock> text_;  ///< begins with what was read
    std::size_t size_ = 0;       ///< of what was read
    std::size_t bytesRead_ = 0;
    bool isWhole_ = false;
    bool isStandardInput_ = false;
    bool isKept_ = false;
    bool isRegular_ = false;    ///< it can be read again, from any place on
    std::size_t expected_ = 0;  ///< the size, as far as known beforehand
    std::size_t most_ = 0;      ///< more is not read of what does not tell its size
    OpenFile file_;
    mutable Quor::Ptr<TextBlock> again_;
};

}  // namespace vek::formats
