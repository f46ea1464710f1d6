#include "host/posix/file_service.h"

#include <vekdb/host/text_util.h>

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

namespace {

bool isRegularFile(const char* path) {
    struct stat status;
    return ::lstat(path, &status) == 0 && S_ISREG(status.st_mode);
}

bool nameIsTaken(const char* path) {
    struct stat status;
    return ::lstat(path, &status) == 0;
}

}  // namespace

// unlink, not remove: the latter takes empty folders as well.
bool PosixFileService::deleteFile(const LightweightString<wchar_t>& path) {
    LightweightString<char> bytes;
    return pathToUTF8(path, bytes) && ::unlink(bytes.c_str()) == 0;
}

bool PosixFileService::moveFile(const LightweightString<wchar_t>& from,
                                const LightweightString<wchar_t>& to, bool replace) {
    LightweightString<char> source;
    LightweightString<char> target;
    if (!pathToUTF8(from, source) || !pathToUTF8(to, target)) {
        return false;
    }
    if (!isRegularFile(source.c_str()) || (!replace && nameIsTaken(target.c_str()))) {
        return false;
    }
    return std::rename(source.c_str(), target.c_str()) == 0;
}
