#pragma once

#include <memory>

#include <vekdb/host/visibility.h>

/// Waits for a file to change: to grow, to be replaced by another of its name, to be cut off, to
/// go and to come back. Does not use up the processor meanwhile.
class VEKDB_PUBLIC FileWatch {
public:
    /// What `wait` was ended by.
    enum Event {
        eChanged,  ///< differs from what it was when this was last said, or is no file any more
        eNothing,  ///< it did not change for a second, or something beside it did before
        eClosed    ///< nobody reads from the descriptor that was given
    };

    /// A path as the system has it.
    explicit FileWatch(const char* path);
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Whether a regular file is there now.
    bool isThere() const;
    /// What changes in quick succession is told once, when it has come to rest. `output` is a
    /// descriptor whose reader may go, or -1.
    Event wait(int output);

private:
    struct State;

    std::unique_ptr<State> state_;
};
