#pragma once

#include "host/file_io_impl.h"
#include "host/ptr.h"

#include <cstddef>

/// A text on its way to the file that it is to replace, whole or not at all. Let go before its
/// end it leaves the old file as it was.
class TextDeparture : public Quor::InternalRefCount {
public:
    /// A text that goes nowhere where the path is null or the file cannot be written.
    TextDeparture(const char* path, bool toDisk);

    void send(const char* text, std::size_t size);
    /// Whether all of it has come to stand in the file's place.
    bool end();

private:
    FileIO::Replacement target_;
    bool works_;
};
