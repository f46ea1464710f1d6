#pragma once

#include <sys/stat.h>

/// What one file has besides its contents: owner, group, mode, access list, extended attributes.
class Attributes {
public:
    enum Loss : unsigned { owner = 1, group = 2, accessList = 4, others = 8 };

    /// Of an open file.
    Attributes(int file, const struct stat& status);

    /// Gives them to a file that nobody else can open yet, as far as the system lets, and access
    /// to nobody who had none: where the group or the access list cannot be kept, neither are
    /// their rights. 0, or the error of setting the mode, without which it must not be used.
    int giveTo(int file, unsigned& losses) const;

    /// Whether the owner may lose access to a file of another owner that is else the same. Who
    /// belongs to a group is not known here.
    bool locksOutOwner() const;

private:
    mode_t modeWithout(unsigned losses) const;
    bool giveAccessList(int file) const;
    bool giveOthers(int file) const;

    int file_;
    struct stat status_;
    bool hasAccessList_;
};
