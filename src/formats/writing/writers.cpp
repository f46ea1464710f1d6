#include "formats/writing/writers.h"

#include <algorithm>

namespace vek::formats {

const std::string& RowSources::of(unsigned row) const {
    const auto isBehind = [](unsigned at, const Part& part) { return at < part.first; };
    return std::prev(std::upper_bound(parts.begin(), parts.end(), row, isBehind))->name;
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
