#include <vekdb/host/file_look.h>

#include <sys/stat.h>

#include <cerrno>

namespace {

FileLook::Kind kindOf(mode_t mode) {
    if (S_ISREG(mode)) return FileLook::Kind::regular;
    return S_ISDIR(mode) ? FileLook::Kind::folder : FileLook::Kind::other;
}

}  // namespace

FileLook FileLook::at(const char* path) {
    struct stat found = {};
    if (::stat(path, &found) != 0) return {Kind::nothing, errno, {}};
    const auto number = [](auto part) { return static_cast<unsigned long long>(part); };
    return {kindOf(found.st_mode),
            0,
            {number(found.st_dev), number(found.st_ino), number(found.st_size),
             number(found.st_mtim.tv_sec), number(found.st_mtim.tv_nsec),
             number(found.st_ctim.tv_sec), number(found.st_ctim.tv_nsec)}};
}
