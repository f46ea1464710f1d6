#include "formats/delimited/log_quotes.h"

#include <algorithm>

#include "formats/delimited/text_quotes.h"
#include "formats/input/input.h"
#include "formats/log/log.h"
#include "formats/saving/change_formats.h"
#include "formats/saving/reading_back.h"
#include "formats/saving/save_in_place.h"

namespace vek::formats {

namespace {

bool hasQuotes(const Input& input) {
    constexpr std::uint64_t most = 1 << 18;
    SourceReader reader(input);
    const std::uint64_t size = input.size();
    for (std::uint64_t at = 0; at < size; at += most) {
        const std::string_view piece = reader.read({at, std::min(size, at + most)});
        if (piece.find('"') != piece.npos) return true;
    }
    return false;
}

bool hasTabs(const Log& log) {
    if (log.format == Format::tsv) return log.form.delimiter == '\0' || log.form.delimiter == '\t';
    return log.format == Format::csv && log.form.delimiter == '\t';
}

bool hasTabsAndQuotes(const Log& log) {
    return hasTabs(log) && hasQuotes(*log.source->input);
}

}  // namespace

// Behind the mark and the lines in front of the heading.
bool cameWithTextQuotes(const Log& log) {
    if (!hasTabsAndQuotes(log)) return false;
    const std::string_view text = log.source->input->textAgain();
    return hasTextQuotes(text.substr(std::min(sizeInFront(log), text.size())), '\t');
}

// Only cells that begin with a quote read in two ways.
void requireSameQuotes(const Saving& saving, const InPlace& now, PatchedText& text) {
    const Log& log = saving.log;
    if (!hasTabsAndQuotes(log) && !(hasTabs(log) && text.isMadeWith('"'))) return;
    const std::string bytes = text.beginning(*log.source->input, SIZE_MAX);
    const std::string_view cells =
        std::string_view(bytes).substr(std::min(sizeInFront(log), bytes.size()));
    const bool wereText = cameWithTextQuotes(log);
    if (hasTextQuotes(cells, '\t') == wereText || !hasQuotedCell(cells, '\t')) return;
    refuseOrTell(saving.output,
                 wereText
                     ? "quotes that are part of its cells would be read as quotes around them then"
                     : "quotes around its cells would be read as part of them then",
                 now.isPiece ? &saving.losses : nullptr);
}

}  // namespace vek::formats
