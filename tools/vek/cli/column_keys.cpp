#include "tools/vek/cli/column_keys.h"

#include <algorithm>

#include "formats/log/column_names.h"
#include "formats/text/letters.h"

namespace vek {

std::string keyOf(const formats::Log& log, unsigned column) {
    std::string key;
    formats::addLower(key, log.columnName(column));
    const formats::RepeatedName* repeated = formats::repeatedNameOf(log, column);
    if (repeated == nullptr) return key;
    const auto turn = std::find(repeated->columns.begin(), repeated->columns.end(), column) -
                      repeated->columns.begin();
    if (turn > 0) key.append(1, '\0').append(std::to_string(turn));
    return key;
}

void requireEachOnce(const formats::Log& log, std::vector<unsigned> columns, const char* what) {
    std::sort(columns.begin(), columns.end());
    const auto twice = std::adjacent_find(columns.begin(), columns.end());
    if (twice == columns.end()) return;
    throw formats::Failure{
        formats::wrongUsage,
        formats::concat(what, " names ", formats::inQuotes(log.columnName(*twice)),
                        " twice, expected each column once")};
}

}  // namespace vek
