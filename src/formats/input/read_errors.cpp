#include "formats/input/read_errors.h"

#include <cerrno>
#include <cstring>

#include "formats/failure.h"

namespace vek::formats {

namespace {

const char* adviceFor(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
            return "check the path";
        case EISDIR:
            return "name a file in it";
        case EACCES:
        case EPERM:
            return "check its permissions";
        case EMFILE:
        case ENFILE:
            return "close other files or programs and give the command again";
        case EIO:
        case ESTALE:
        case ETIMEDOUT:
            return "the disk or the network did not give all of it: check them, or take the file "
                   "from a copy";
        default:
            return "";
    }
}

}  // namespace

void refuseReading(const std::string& name, int error) {
    std::string found = std::strerror(error);
    if (error == EISDIR) found += ", a file was expected";
    if (error == EFBIG) found += ", it is larger than this machine's memory";
    throw Failure{unreadable, name, {0, "", found, "", adviceFor(error)}};
}

}  // namespace vek::formats
