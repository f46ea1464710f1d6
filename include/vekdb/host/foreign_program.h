#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <vekdb/host/visibility.h>

/// A file without a name in the folder for temporary files ($TMPDIR, or /tmp): it goes with its
/// last holder, however that ends. Another program can be handed it.
class VEKDB_PUBLIC ScratchFile {
public:
    /// A new, empty one. Where none could be made, `error` is not 0 and nothing else does anything.
    ScratchFile() noexcept;
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    /// The system's number of the first thing that went wrong; 0 for none.
    int error() const noexcept { return error_; }
    /// The descriptor, 10 or more, which stays this object's.
    int descriptor() const noexcept { return file_; }
    /// Puts the text behind what was written; false where the system refused.
    bool append(std::string_view text) noexcept;
    /// Up to `size` bytes from a place on; 0 at the end and where the system refused.
    std::size_t read(std::uint64_t from, char* bytes, std::size_t size) noexcept;

private:
    bool fail() noexcept;

    int file_ = -1;
    int error_ = 0;
};

/// How another program ended.
struct VEKDB_PUBLIC ForeignEnd {
    int error = 0;     ///< why it could not be started: ENOENT where it is not there
    int exitCode = 0;  ///< 128 and the signal's number where a signal ended it
};

/// Runs a program, looked for as a shell looks for it, and waits for its end. The arguments begin
/// with its name. It gets the descriptors of this list as its own 0, 1, 2 and so on, each from its
/// file's front; each of them is 10 or more. Besides them it inherits what any program does.
VEKDB_PUBLIC ForeignEnd runForeignProgram(const std::vector<const char*>& arguments,
                                          const std::vector<int>& descriptors);
