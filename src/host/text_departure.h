#pragma once

#include <vekdb/host/file_replacement.h>
#include <vekdb/host/ptr.h>

#include <cstddef>

/// A text on its way to the file that it is to replace, whole or not at all. Let go before its
/// end it leaves the old file as it was.
class TextDeparture : public Quor::InternalRefCount {
public:
    /// A text that goes nowhere where the path is empty or the file cannot be written.
    TextDeparture(const char* path, bool toDisk);

    /// Whether it goes by and by. What is written to directly gets it when it is whole.
    bool goesInPieces() const { return !target_.isWrittenDirectly(); }
    void send(const char* text, std::size_t size);
    /// Whether all of it has come to stand in the file's place.
    bool end();

private:
    void open();

    FileReplacement target_;
    bool isOpened_ = false;
};
