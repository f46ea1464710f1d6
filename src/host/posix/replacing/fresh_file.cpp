#include "host/posix/replacing/fresh_file.h"

#include <string>

#include <fcntl.h>

#include <vekdb/host/text_util.h>

#include "host/posix/replacing/attributes.h"
#include "host/posix/replacing/held_file.h"

namespace {

using FileIO::Descriptor;
using FileIO::systemCalls;

bool findPlace(const LightweightString<wchar_t>& path, bool followsLast, Place& place) {
    LightweightString<char> bytes;
    return pathToUTF8(path, bytes) && !place.find(bytes.c_str(), followsLast);
}

// Whoever saves next must be able to write to it.
void giveAttributes(const HeldFile& from, int file) {
    unsigned losses = 0;
    struct stat given;
    const bool areGiven = Attributes(from.file(), from.status()).giveTo(file, losses) == 0 &&
                          systemCalls().status(file, &given) == 0;
    if (areGiven && (given.st_mode & S_IWUSR) == 0) {
        systemCalls().setMode(file, (given.st_mode & 07777) | S_IWUSR);
    }
}

}  // namespace

FreshFile::FreshFile(const LightweightString<wchar_t>& path,
                     const LightweightString<wchar_t>& likeThat) {
    if (findPlace(path, false, place_)) {
        create(likeThat);
    }
}

void FreshFile::create(const LightweightString<wchar_t>& likeThat) {
    const char* name = place_.name().c_str();
    Place model;
    HeldFile held;
    if (findPlace(likeThat, true, model)) {
        held.hold(model, 0);
    }
    if (place_.kind() != Place::Kind::nothing) {
        systemCalls().removeAt(place_.folder(), name);
    }
    constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    file_ = Descriptor(systemCalls().openAt(place_.folder(), name, flags, 0600));
    if (file_.isOpen() && held.isOpen()) {
        giveAttributes(held, file_.get());
    }
}

FreshFile::~FreshFile() {
    struct stat own;
    if (file_.isOpen() && systemCalls().status(file_.get(), &own) == 0 && !place_.look() &&
        isSameFile(own, place_.status()) && own.st_size == 0) {
        systemCalls().removeAt(place_.folder(), place_.name().c_str());
    }
}
