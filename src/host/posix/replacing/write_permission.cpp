#include <vekdb/host/write_permission.h>

#include "host/posix/replacing/place.h"

#include <cerrno>

// The new file is made beside the old one, so both the file and its folder are asked.
int errorOfWritePermission(const char* path) {
    Place place;
    if (const FileTrouble trouble = place.find(path, true)) {
        return trouble.error;
    }
    const auto ask = [&](const char* name) {
        return FileIO::systemCalls().mayWriteAt(place.folder(), name) == 0 ? 0 : errno;
    };
    switch (place.kind()) {
        case Place::Kind::nothing:
            return ask(".");
        case Place::Kind::file: {
            const int error = ask(place.name().c_str());
            return error == 0 ? ask(".") : error;
        }
        default:
            return 0;
    }
}
