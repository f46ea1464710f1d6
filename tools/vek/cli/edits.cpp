#include "tools/vek/cli/edits.h"

#include "tools/vek/cli/grid.h"

namespace vek {

void printEdits(const Log& log, const std::vector<Edit>& edits, const Args& args) {
    Output out;
    Screen screen = screenOf(out, args);
    std::vector<std::vector<std::string>> cells;
    cells.reserve(edits.size());
    for (const Edit& edit : edits) {
        cells.push_back(
            {std::to_string(edit.row + 1), log.columnName(edit.column), edit.before, edit.after});
    }
    Grid grid{{{"#", true, true}, {"Column"}, {"Before"}, {"After"}},
              cells.size(),
              [&](std::size_t row, std::size_t column) -> std::string_view {
                  return cells[row][column];
              }};
    printGrid(grid, screen, out);
    out.close();
}

void makeEdits(Log& log, const std::vector<Edit>& edits) {
    for (const Edit& edit : edits) {
        log.table->get_record(edit.row)->setField(edit.column, cellText(edit.after));
    }
}

Option dryRunOption() {
    return {"-n,--dry-run", "", "show before and after, change nothing"};
}

}  // namespace vek
