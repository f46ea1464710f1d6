#pragma once

#include <string>
#include <vector>

#include "formats/writing/sheet_facts.h"

/// What editing systems expect of a log exchange file: VIDEO_FORMAT, AUDIO_FORMAT and FPS in the
/// heading, and the columns Name, Tracks, Start, End and Tape.
namespace vek::formats {

/// The heading and the column names of a sheet as they are written. The cells stay as they are;
/// `tracks`, when not empty, stands in a further column Tracks of every row.
struct AleForm {
    std::vector<ParameterText> heading;
    std::vector<std::string> names;
    std::string tracks;
};

/// Gives columns the names that editing systems know and tells it, and asks for what the log does
/// not say. A log that was read from an ALE has its names and entries already: nothing is changed
/// there but what the style says. A Failure for a `--map` that cannot be.
AleForm aleForm(const Sheet& sheet, const WriteStyle& style, const std::string& output,
                Losses& losses);

}  // namespace vek::formats
