#include "formats/input/held.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <vekdb/host/file_look.h>
#include "formats/failure.h"

namespace vek::formats {

namespace {

constexpr unsigned longestWait = 5000;  // milliseconds for a program that changes the file

std::string because(int error) {
    std::string text = error == 0 ? "could not be written" : std::strerror(error);
    if (error == ENOSPC) text += "; make room and try again";
    if (error == EACCES || error == EPERM) text += "; check the permissions of it and its folder";
    if (error == ENOENT) text += "; make its folder first";
    return text;
}

std::string oldBeside(const FileReplacement& file) {
    return concat("could not be written (", std::strerror(file.error()),
                  "), nor be put back; what it held stands beside it, in ", file.oldBeside(),
                  "; copy that back when there is room");
}

std::string whatOthersDid(const std::string& name) {
    if (FileLook::at(name.c_str()).error == ENOENT) {
        return "was deleted since it was read, so nothing is written; write it as another file";
    }
    return "was changed by another program since it was read, so nothing is written; look at it, "
           "and change it anew";
}

std::string because(const std::string& name, const FileReplacement& file) {
    switch (file.trouble()) {
        case FileReplacement::eInUse:
            return "another program is changing it; try again when that is done";
        case FileReplacement::eChanged:
            return whatOthersDid(name);
        case FileReplacement::eForeignLink:
            return "the path leads through a link that somebody else put there, which is not "
                   "followed to write; name the file itself";
        case FileReplacement::eForeignName:
            return "is also another file, by a name that somebody else may have put there; change "
                   "a copy";
        case FileReplacement::eOldBeside:
            return oldBeside(file);
        default:
            return because(file.error());
    }
}

}  // namespace

void refuse(const std::string& name, int error) {
    throw Failure{unwritable, name + ": " + because(error)};
}

void refuse(const std::string& name, const FileReplacement& file) {
    throw Failure{unwritable, name + ": " + because(name, file)};
}

void refuseBackup(const std::string& name, int error) {
    if (error != EISDIR) refuse(name, error);
    throw Failure{unwritable, concat(name, ": ", because(error),
                                     "; the old file is to be kept there, so move it away first")};
}

Held holdFile(const std::string& path) {
    if (path == "-") return nullptr;
    auto held = std::make_shared<FileReplacement>();
    bool isHeld = held->find(path.c_str()) && held->hold(longestWait);
    if (!isHeld && held->trouble() != FileReplacement::eSystem) refuse(path, *held);
    return held;
}

Held holdInput(const std::vector<std::string>& inputs, const std::string& output) {
    for (const std::string& input : inputs) {
        std::error_code ignored;
        if (std::filesystem::equivalent(input, output, ignored)) return holdFile(output);
    }
    return nullptr;
}

}  // namespace vek::formats
