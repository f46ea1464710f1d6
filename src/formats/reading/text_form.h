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

/// What a person says of the texts that are read from now on; the rest is found out.
struct ReadingWishes {
    std::string encoding = {};
    char delimiter = '\0';
    std::size_t skippedLines = 0;
    bool hasNoHeading = false;
};
ReadingWishes& readingWishes();

/// "tab" or one character; a Failure with wrongUsage for anything else.
char delimiterNamed(const std::string& name);
/// "comma", "tab", "\"x\"".
std::string delimiterName(char delimiter);

}  // namespace vek::formats
