#pragma once

#include <string>
#include <utility>

#include <vekdb/host/open_file.h>

namespace vek::browse {

/// A file beside a log, of this user's, that nobody else can use while this lives: a lock says so,
/// which ends with its process, however that ends. Whoever makes such a file locks it; in between,
/// others may take it for a leftover and remove it, which `leadsTo` tells.
class HeldFile {
public:
    enum class State {
        none,  ///< it is not there, or not this user's
        held,
        inUse,
    };

    /// Somebody who only looks at it has it for a moment; that is waited for.
    explicit HeldFile(const std::string& path);

    State state() const { return state_; }
    /// Whether nothing is in it, which is known only of one that could be locked.
    bool isEmpty() const;
    OpenFile take() { return std::move(file_); }

private:
    OpenFile file_;
    State state_ = State::none;
    bool isLocked_ = false;
};

/// Locks a file that was made just now. False where somebody else has it, or where its name leads
/// to it no longer. A disk that knows no locks is no reason.
bool holdNew(const std::string& path, int descriptor);
/// Whether the file that is open is the one of this name.
bool leadsTo(const std::string& path, int descriptor);

}  // namespace vek::browse
