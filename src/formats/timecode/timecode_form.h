#pragma once

#include <vekdb/formats/timecode.h>

namespace vek::formats {

/// The semicolon of a timecode: as it was, or one that a new counting asks for.
enum class Mark { asBefore, dropFrame, nonDrop };

/// Another timecode in the form of an old one, its separators and outer blanks as they were:
/// "1:00:00:00", "01.00.00.00" or "01000000". `code` is what timecodeText makes.
std::string inFormOf(std::string_view old, const std::string& code, Mark mark = Mark::asBefore);

/// Whether a cell itself has the semicolon.
bool hasDropMark(std::string_view cell);

}  // namespace vek::formats
