#pragma once

#include "host/posix/file_io.h"

#include <string>

#include <sys/types.h>

/// A file of unique name in a folder, there until it is removed or has become another. It is
/// locked for as long as its maker lives, and by that it is told from what a maker left behind
/// whose process ended.
class Temporary {
public:
    Temporary() = default;
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    ~Temporary();

    /// For reading and writing. 0, or the system's error. The folder stays open for as long as
    /// this lives.
    int create(int folder, mode_t mode);
    /// The same under a name that begins as another does and that no clearing-up removes.
    int createBeside(int folder, const std::string& name);

    bool isThere() const { return !name_.empty(); }
    int file() const { return file_.get(); }
    const std::string& name() const { return name_; }

    /// Closes the file, so that what the disk has against it is known. 0 or the error.
    int close();
    /// Gives it the name of another file of the folder, or, where it is to be a new one, EEXIST
    /// where there is one. 0 or the error.
    int become(const std::string& name, bool isNew);
    /// Leaves it where it is.
    void keep();
    void remove();

    /// Removes what makers left behind in a folder that are gone; best effort.
    static void clearUp(int folder);

private:
    int createNamed(int folder, const std::string& name, mode_t mode);
    bool isOurs() const;

    int folder_ = -1;
    FileIO::Descriptor file_;
    FileIO::Descriptor lock_;  // the same opening of the file
    std::string name_;
};
