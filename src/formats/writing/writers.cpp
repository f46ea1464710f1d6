#include "formats/writing/writers.h"

#include <algorithm>
#include <numeric>

#include "formats/inform.h"

namespace vek::formats {

Target targetOf(const Log& log) {
    switch (log.format) {
        case Format::table:
        case Format::csv:
        case Format::tsv:
        case Format::ale:
        case Format::json:
        case Format::jsonl:
            return log.format;
        case Format::edl:
            throw Failure{wrongUsage, log.name +
                                          ": an edit list is not changed in place; make a table "
                                          "file of it with vek convert, and an edit list again"};
        case Format::otio:
        case Format::fcpxml:
            throw Failure{wrongUsage, log.name +
                                          ": a timeline is not changed in place; make a table "
                                          "file of it with vek convert, and a timeline again"};
        default:
            break;
    }
    throw Failure{wrongUsage, log.name + ": " + formatName(log.format) +
                                  " is read, not written; "
                                  "make a table file of it with vek convert"};
}

std::vector<unsigned> allColumns(const Log& log) {
    std::vector<unsigned> columns(log.columnCount());
    std::iota(columns.begin(), columns.end(), 0u);
    return columns;
}

Sheet wholeSheet(const Log& log) {
    VDBView view(log.table.get());
    view->buildIndex();
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
    messages_.push_back(message);
}

void Losses::tell(const std::string& output) const {
    constexpr std::size_t most = 20;
    for (std::size_t i = 0; i < messages_.size() && i < most; ++i) inform(messages_[i]);
    if (messages_.size() > most) {
        inform(output + ": " + std::to_string(messages_.size() - most) + " more like these");
    }
    for (const Kind& kind : kinds_) {
        inform(output + ": " + kind.what + ": " + std::to_string(kind.count) +
               (kind.firstPlace.empty() ? "" : ", first " + kind.firstPlace));
    }
}

std::size_t Losses::count() const {
    std::size_t sum = messages_.size();
    for (const Kind& kind : kinds_) sum += kind.count;
    return sum;
}

}  // namespace vek::formats
