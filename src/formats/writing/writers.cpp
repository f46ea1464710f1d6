#include "formats/writing/writers.h"

#include <algorithm>
#include <numeric>

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

std::vector<unsigned> allColumns(const Log& log) {
    std::vector<unsigned> columns(log.columnCount());
    std::iota(columns.begin(), columns.end(), 0u);
    return columns;
}

Sheet wholeSheet(const Log& log) {
    VDBView view(log.table.get());
    view->displayAllRecords();
    return {log, view, allColumns(log)};
}

void Losses::add(const std::string& what, const std::string& firstPlace) {
    auto kind =
        std::find_if(kinds_.begin(), kinds_.end(), [&](const Kind& k) { return k.what == what; });
    if (kind == kinds_.end())
        kinds_.push_back({what, firstPlace, 1});
    else
        ++kind->count;
}

void Losses::addEach(const std::string& message) {
    if (messages_.size() < Log::mostProblems)
        messages_.push_back(message);
    else
        add("more like these", "");
}

std::size_t Losses::count() const {
    std::size_t sum = messages_.size();
    for (const Kind& kind : kinds_) sum += kind.count;
    return sum;
}

}  // namespace vek::formats
