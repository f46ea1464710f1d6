#pragma once

#include <cstddef>
#include <string>

namespace vek::formats {

/// How the bytes of a text are written, where that is not the usual way. A log that is changed in
/// place is written so again.
struct TextForm {
    std::string encoding = {};  ///< as iconv calls it; "" for UTF-8
    char delimiter = '\0';      ///< another one than the format's own
    std::string skipped = {};   ///< lines in front of the heading, with their ends
    bool hasNoHeading = false;  ///< the first line is a row
    bool isPacked = false;      ///< by gzip
};

/// What a person says of a text that is to be read; the rest is found out.
struct ReadingWishes {
    std::string encoding = {};
    char delimiter = '\0';
    std::size_t skippedLines = 0;
    bool hasNoHeading = false;
    std::string sheet = {};  ///< of a workbook, by its name or number
};

/// Whether cells can be separated by the character.
bool canDelimit(char delimiter);

}  // namespace vek::formats
