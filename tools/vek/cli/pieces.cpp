#include "tools/vek/cli/pieces.h"

#include <unordered_map>

#include <vekdb/host/keyed_hash.h>
#include "tools/vek/cli/grid.h"

namespace vek {

namespace {

void addKey(std::string& key, std::string_view cell) {
    key += std::to_string(cell.size());
    key += ':';
    key += cell;
}

}  // namespace

Pieces piecesOf(const Log& log, const VDBView& view, const std::vector<unsigned>& columns) {
    Pieces pieces;
    std::unordered_map<std::string, std::size_t, Quor::KeyedHash> places;
    std::string key;
    for (unsigned i = 0; i < view->get_num_records(); ++i) {
        const unsigned row = view->baseIndex(i);
        key.clear();
        for (unsigned column : columns) addKey(key, log.cell(row, column));
        auto [place, isNew] = places.try_emplace(key, pieces.size());
        if (isNew) pieces.emplace_back();
        pieces[place->second].rows.push_back(row);
    }
    return pieces;
}

void printPlan(const std::vector<PlannedFile>& files, const Args& args) {
    Printout out;
    std::string number;
    Grid grid{{{"File"}, {"Rows", true}},
              files.size(),
              [&](std::size_t row, std::size_t column) -> std::string_view {
                  if (column == 0) return files[row].path;
                  return number = std::to_string(files[row].rows);
              }};
    printGrid(grid, screenOf(out, args), out);
    out.close();
}

}  // namespace vek
