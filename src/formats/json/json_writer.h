#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "formats/writing/output.h"

namespace vek::formats {

/// Writes one JSON document for programs. Texts stay texts, and counts are numbers. Fields
/// and elements have a line each, but for those of a row.
class JsonWriter {
public:
    explicit JsonWriter(Output& out) : out_(out) {}

    /// A field of an object.
    void text(std::string_view name, std::string_view value);
    void number(std::string_view name, std::size_t value);
    void flag(std::string_view name, bool value);
    void nothing(std::string_view name);
    /// Null for "".
    void textOrNothing(std::string_view name, std::string_view value);
    /// Null for 0: a line that is not known.
    void numberOrNothing(std::string_view name, std::size_t value);

    void beginArray(std::string_view name);
    void beginObject(std::string_view name);
    /// An element of an array, or the document itself.
    void beginObject();
    /// An element that stands on one line.
    void beginRow();
    void element(std::string_view text);
    /// One that is JSON already.
    void readyElement(std::string_view json);
    void end();

private:
    struct Level {
        char closing;
        bool isOnOneLine;
        bool isEmpty = true;
    };

    void beginValue();
    void beginField(std::string_view name);
    void begin(char opening, char closing, bool isOnOneLine = false);
    void newLine();

    Output& out_;
    std::vector<Level> levels_;
    std::string pending_;
};

}  // namespace vek::formats
