#include "host/posix/replacing/attributes.h"

#include "host/posix/file_io.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

namespace {

using FileIO::systemCalls;

constexpr const char* kAccessList = "system.posix_acl_access";

// Those that speak of the contents, and lose their meaning with them.
constexpr std::array<std::string_view, 3> kOfContents = {"security.capability", "security.ima",
                                                         "security.evm"};

// Asks for a text whose size is not known beforehand; false when there is none.
template <class Ask>
bool askWhole(std::string& text, Ask ask) {
    for (;;) {
        const ssize_t size = ask(nullptr, 0);
        if (size < 0) {
            return false;
        }
        text.resize(static_cast<std::size_t>(size));
        const ssize_t got = size == 0 ? 0 : ask(text.data(), text.size());
        if (got >= 0) {
            text.resize(static_cast<std::size_t>(got));
            return true;
        }
        if (errno != ERANGE) {
            return false;
        }
    }
}

bool attributeOf(int file, const char* name, std::string& value) {
    return askWhole(value, [&](char* to, std::size_t size) {
        return systemCalls().attribute(file, name, to, size);
    });
}

std::string namesOfAttributes(int file) {
    std::string names;
    const bool areKnown = askWhole(names, [&](char* to, std::size_t size) {
        return systemCalls().listAttributes(file, to, size);
    });
    return areKnown ? names : std::string();
}

bool isKeptByName(std::string_view name) {
    return name != kAccessList &&
           std::find(kOfContents.begin(), kOfContents.end(), name) == kOfContents.end();
}

// A new file may have it from its folder already.
bool giveAttribute(int from, int to, const char* name) {
    std::string value;
    std::string there;
    if (!attributeOf(from, name, value)) {
        return errno == ENODATA;
    }
    return (attributeOf(to, name, there) && there == value) ||
           systemCalls().setAttribute(to, name, value.data(), value.size()) == 0;
}

}  // namespace

Attributes::Attributes(int file, const struct stat& status) : file_(file), status_(status) {
    std::string list;
    hasAccessList_ = attributeOf(file, kAccessList, list);
}

int Attributes::giveTo(int file, unsigned& losses) const {
    losses = 0;
    if (systemCalls().setOwner(file, status_.st_uid, status_.st_gid) != 0) {
        struct stat given;
        const bool isKnown = systemCalls().status(file, &given) == 0;
        losses |= isKnown && given.st_uid == status_.st_uid ? 0u : unsigned{owner};
        losses |= systemCalls().setOwner(file, static_cast<uid_t>(-1), status_.st_gid) == 0
                      ? 0u
                      : unsigned{group};
    }
    losses |= giveAccessList(file) ? 0u : unsigned{accessList};
    losses |= giveOthers(file) ? 0u : unsigned{others};
    return systemCalls().setMode(file, modeWithout(losses)) == 0 ? 0 : errno;
}

bool Attributes::locksOutOwner() const {
    const mode_t ofOwner = (status_.st_mode >> 6) & 06;
    const mode_t assured = (status_.st_mode >> 3) & status_.st_mode & 06;
    return hasAccessList_ || (ofOwner & ~assured) != 0;
}

// Who was of the lost group is among the others now, and the new group's members are whoever
// they are: both get what both had.
mode_t Attributes::modeWithout(unsigned losses) const {
    mode_t mode = status_.st_mode & ((losses & (owner | group)) != 0 ? 0777 : 07777);
    if ((losses & accessList) != 0) {
        return mode & 0700;
    }
    if ((losses & group) != 0) {
        const mode_t both = (mode >> 3) & mode & 07;
        mode = (mode & 0700) | (both << 3) | both;
    }
    return mode;
}

// A list that the new file has from its folder would let others in.
bool Attributes::giveAccessList(int file) const {
    if (hasAccessList_) {
        return giveAttribute(file_, file, kAccessList);
    }
    return systemCalls().removeAttribute(file, kAccessList) == 0 || errno == ENODATA ||
           errno == EOPNOTSUPP || errno == ENOSYS;
}

bool Attributes::giveOthers(int file) const {
    const std::string names = namesOfAttributes(file_);
    bool areGiven = true;
    for (const char* name = names.c_str(); *name != '\0'; name += std::strlen(name) + 1) {
        areGiven = (!isKeptByName(name) || giveAttribute(file_, file, name)) && areGiven;
    }
    return areGiven;
}
