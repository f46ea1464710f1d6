#include "formats/log/target.h"

#include "formats/formats.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

// `why` and `again` may be empty.
[[noreturn]] void refuseInPlace(const Log& log, const char* what, const char* why, const char* made,
                                const char* again) {
    throw Failure{wrongUsage,
                  concat(log.name, ": ", what, " is not changed in place", why,
                         "; make a table file ", made, " with ", log.opening.terms->saving, again)};
}

}  // namespace

Format targetOf(const Log& log) {
    switch (log.format) {
        case Format::table:
        case Format::csv:
        case Format::tsv:
        case Format::ale:
        case Format::edl:
        case Format::json:
        case Format::jsonl:
            return log.format;
        case Format::otio:
        case Format::fcpxml:
            refuseInPlace(log, "a timeline", "", "of it", ", and a timeline again");
        case Format::xlsx:
            refuseInPlace(log, "a workbook",
                          ", its other sheets, formulas and layout would be lost",
                          "or another workbook of it", "");
        default:
            break;
    }
    throw Failure{wrongUsage, concat(log.name, ": ", formatName(log.format),
                                     " is read, not written; make a table file of it with ",
                                     log.opening.terms->saving)};
}

// A plain CSV is no format of its own to be written, and its file is changed all the same.
void requireWrittenBack(const Log& log) {
    if (log.format != Format::plainCsv) targetOf(log);
}

}  // namespace vek::formats
