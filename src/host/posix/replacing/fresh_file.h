#pragma once

#include <vekdb/host/lightweight_string.h>

#include "host/posix/replacing/place.h"

/// An empty file in a place that somebody is about to save to: whatever stood there is gone, a
/// link included, and nothing that somebody puts there is followed. Where it is still empty at
/// the end, as nobody saved, it goes.
class FreshFile {
public:
    /// Only those can open it who can open the file at the other path, if there is one. Does
    /// nothing where the place takes no file; saving fails there, too.
    FreshFile(const LightweightString<wchar_t>& path, const LightweightString<wchar_t>& likeThat);
    FreshFile(const FreshFile&) = delete;
    FreshFile& operator=(const FreshFile&) = delete;
    ~FreshFile();

private:
    void create(const LightweightString<wchar_t>& likeThat);

    Place place_;
    FileIO::Descriptor file_;
};
