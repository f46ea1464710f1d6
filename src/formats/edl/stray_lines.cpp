#include "formats/edl/stray_lines.h"

#include <vekdb/host/text_util.h>
#include "formats/edl/edl_lines.h"
#include "formats/text/letters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

void tellStrayLines(const Log& log, const std::function<void(const Problem&)>& tell) {
    const unsigned column = log.findColumn(edlCommentsBeforeName(0));
    if (column == noColumn || log.rowCount() == 0) return;
    for (std::string_view line : split(log.cell(0, column), '\n')) {
        if (line.empty() || !isAsciiLetterOrDigit(line.front())) continue;
        tell({log.lineOf(0), log.columnName(column), inQuotes(line),
              "a star in front of it, or an event that it stands behind: it belongs to none", ""});
    }
}

}  // namespace vek::formats
