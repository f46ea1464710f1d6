#pragma once

#include <cerrno>

/// Why a file was not found, opened or replaced.
struct FileTrouble {
    enum Kind : unsigned char {
        none,
        system,       // what the system said, in `error`
        inUse,        // somebody else holds the lock
        changed,      // it is not as it was when it was held
        foreignLink,  // a link that somebody else put there, where that may be a trap
        foreignName,  // a file with further names, the same
        oldBeside     // the file is damaged; its old bytes stand beside it
    };

    Kind kind = none;
    int error = 0;

    explicit operator bool() const { return kind != none; }
    static FileTrouble ofSystem(int error) { return {system, error != 0 ? error : EIO}; }
    static FileTrouble ofCall() { return ofSystem(errno); }
};
