#include "host/posix/replacing/place.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <utility>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace {

using FileIO::Descriptor;
using FileIO::systemCalls;

constexpr int kMostLinks = 40;
constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

bool isTrusted(uid_t owner) {
    return owner == 0 || owner == ::geteuid();
}

bool isStickyFolder(const struct stat& folder) {
    return (folder.st_mode & S_ISVTX) != 0 && (folder.st_mode & 022) != 0;
}

bool isExposedFolder(const struct stat& folder) {
    return isStickyFolder(folder) || !isTrusted(folder.st_uid);
}

// The links of this file system are no texts: each leads to a thing itself.
bool isListOfProcesses(int folder) {
    struct statfs system;
    return ::fstatfs(folder, &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
}

// A number written with digits alone, or -1.
int numberOf(const std::string& text) {
    int number = -1;
    const auto end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && text[0] != '-' ? number : -1;
}

bool isOpenForWriting(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

bool isDirect(const struct stat& status) {
    return S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode);
}

}  // namespace

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isUnchanged(const struct stat& a, const struct stat& b) {
    const auto isSameTime = [](const timespec& x, const timespec& y) {
        return x.tv_sec == y.tv_sec && x.tv_nsec == y.tv_nsec;
    };
    return isSameFile(a, b) && a.st_size == b.st_size && isSameTime(a.st_mtim, b.st_mtim) &&
           isSameTime(a.st_ctim, b.st_ctim);
}

// Goes through a path part by part, from one open folder to the next.
class Place::Walk {
public:
    Walk(Place& place, const std::string& path, bool followsLast)
        : place_(place), rest_(path), followsLast_(followsLast) {}

    FileTrouble go() {
        FileTrouble trouble = rest_.empty() ? FileTrouble::ofSystem(ENOENT) : start();
        while (!trouble && !isFound_) {
            trouble = step();
        }
        return trouble;
    }

private:
    FileTrouble start() { return enter(AT_FDCWD, rest_[0] == '/' ? "/" : ".", kFolderFlags); }

    FileTrouble enter(int from, const char* name, int flags) {
        Descriptor folder(systemCalls().openAt(from, name, flags, 0));
        struct stat status;
        if (!folder.isOpen() || systemCalls().status(folder.get(), &status) != 0) {
            return FileTrouble::ofCall();
        }
        place_.folder_ = std::move(folder);
        place_.folderStatus_ = status;
        return {};
    }

    FileTrouble step() {
        const std::string part = takePart();
        const bool isLast = rest_.empty();
        if (part.empty() || (isLast && (part == "." || part == ".."))) {
            return FileTrouble::ofSystem(EISDIR);
        }
        return isLast ? end(part) : pass(part);
    }

    // Without the slashes in front of it; those behind it stay.
    std::string takePart() {
        rest_.erase(0, rest_.find_first_not_of('/'));
        const std::size_t length = std::min(rest_.find('/'), rest_.size());
        std::string part = rest_.substr(0, length);
        rest_.erase(0, length);
        return part;
    }

    FileTrouble pass(const std::string& part) {
        const FileTrouble trouble = enter(place_.folder(), part.c_str(), kFolderFlags | O_NOFOLLOW);
        if (trouble.error != ENOTDIR && trouble.error != ELOOP) {
            return trouble;
        }
        struct stat status;
        const bool isThere = systemCalls().statusAt(place_.folder(), part.c_str(), &status) == 0;
        if (!isThere || !S_ISLNK(status.st_mode)) {
            return trouble;
        }
        if (isListOfProcesses(place_.folder())) {
            return enter(place_.folder(), part.c_str(), kFolderFlags);
        }
        return follow(part, status);
    }

    FileTrouble end(const std::string& part) {
        place_.name_ = part;
        if (const FileTrouble trouble = place_.look()) {
            return trouble;
        }
        isFound_ = place_.kind_ != Kind::link || !followsLast_;
        if (isFound_) {
            return isTrap() ? FileTrouble::ofSystem(EACCES) : FileTrouble();
        }
        if (isListOfProcesses(place_.folder()) && findOpen()) {
            isFound_ = true;
            return {};
        }
        return follow(part, place_.status_);
    }

    // Whoever listens there would be given what is written for somebody else.
    bool isTrap() const {
        const struct stat& folder = place_.folderStatus_;
        const struct stat& found = place_.status_;
        return place_.kind_ == Kind::direct && S_ISFIFO(found.st_mode) && isStickyFolder(folder) &&
               !isTrusted(found.st_uid) && found.st_uid != folder.st_uid;
    }

    FileTrouble follow(const std::string& part, const struct stat& link) {
        if (++links_ > kMostLinks) {
            return FileTrouble::ofSystem(ELOOP);
        }
        if (isExposedFolder(place_.folderStatus_) && !isTrusted(link.st_uid)) {
            return {FileTrouble::foreignLink, EACCES};
        }
        char text[PATH_MAX];
        const ssize_t length =
            systemCalls().linkAt(place_.folder(), part.c_str(), text, sizeof text);
        if (length <= 0) {
            return FileTrouble::ofCall();
        }
        rest_.insert(0, text, static_cast<std::size_t>(length));
        return rest_[0] == '/' ? start() : FileTrouble();
    }

    // What the link leads to, where that can be written to as it is.
    bool findOpen() {
        const Descriptor there(
            systemCalls().openAt(place_.folder(), place_.name_.c_str(), O_PATH | O_CLOEXEC, 0));
        struct stat status;
        struct stat own;
        if (!there.isOpen() || systemCalls().status(there.get(), &status) != 0) {
            return false;
        }
        const int number = numberOf(place_.name_);
        if (number >= 0 && systemCalls().status(number, &own) == 0 && isSameFile(status, own) &&
            isOpenForWriting(number)) {
            place_.kind_ = Kind::descriptor;
            place_.descriptor_ = number;
            return true;
        }
        if (!isDirect(status)) {
            return false;
        }
        place_.kind_ = Kind::direct;
        place_.status_ = status;
        return place_.isListed_ = true;
    }

    Place& place_;
    std::string rest_;
    bool followsLast_;
    bool isFound_ = false;
    int links_ = 0;
};

FileTrouble Place::find(const std::string& path, bool followsLast) {
    return Walk(*this, path, followsLast).go();
}

FileTrouble Place::look() {
    if (systemCalls().statusAt(folder(), name_.c_str(), &status_) != 0) {
        kind_ = Kind::nothing;
        return errno == ENOENT ? FileTrouble() : FileTrouble::ofCall();
    }
    if (S_ISDIR(status_.st_mode)) {
        return FileTrouble::ofSystem(EISDIR);
    }
    const bool isFile = S_ISREG(status_.st_mode);
    kind_ = isFile ? Kind::file : S_ISLNK(status_.st_mode) ? Kind::link : Kind::direct;
    const bool isWritable = isFile || kind_ == Kind::link || isDirect(status_);
    return isWritable ? FileTrouble() : FileTrouble::ofSystem(ENXIO);
}

// Meanwhile something else may have been put there.
FileTrouble Place::openDirect(Descriptor& file) const {
    const int flags = O_WRONLY | O_CLOEXEC | O_NOCTTY | (isListed_ ? 0 : O_NOFOLLOW);
    Descriptor opened(systemCalls().openAt(folder(), name_.c_str(), flags, 0));
    struct stat status;
    const bool isLink = !opened.isOpen() && errno == ELOOP;
    if (!isLink && (!opened.isOpen() || systemCalls().status(opened.get(), &status) != 0)) {
        return FileTrouble::ofCall();
    }
    if (isLink || !isSameFile(status, status_)) {
        return {FileTrouble::changed, EBUSY};
    }
    file = std::move(opened);
    return {};
}

bool Place::isExposed() const {
    return isExposedFolder(folderStatus_);
}
