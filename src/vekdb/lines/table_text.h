#pragma once

#include <string_view>

#include "host/names.h"

class TextFile;

/// The level of the file format that is read and written.
constexpr int currentRevision = 1;

/// True for the first value of the line behind the parameters, and of one that stands again
/// among the records.
inline bool isMagicName(std::string_view value) {
    return NameEqual::same(value, "VEKDB");
}

/// Writes the line of one parameter. Nothing in it is escaped.
void appendParameter(TextFile& file, std::string_view name, std::string_view value);
