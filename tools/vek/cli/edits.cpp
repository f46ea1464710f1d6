#include "tools/vek/cli/edits.h"

#include "tools/vek/cli/grid.h"

namespace vek {

void printEdits(const Log& log, const std::vector<Edit>& edits, const Args& args) {
    Printout out;
    Screen screen = screenOf(out, args);
    const std::vector<std::string> names = log.columnNames();
    std::string number;
    Grid grid{{{"#", true, true}, {"Column"}, {"Before"}, {"After"}},
              edits.size(),
              [&](std::size_t row, std::size_t column) -> std::string_view {
                  const Edit& edit = edits[row];
                  if (column == 1) return names[edit.column];
                  if (column == 2) return log.cell(edit.row, edit.column);
                  if (column == 3) return edit.after;
                  return number = std::to_string(edit.row + 1);
              }};
    printGrid(grid, screen, out);
    out.close();
}

// The cells of a row are stored together, so that none gets memory of its own.
void EditMaker::make(const std::vector<Edit>& edits) {
    std::vector<std::string_view> cells(log_.columnCount());
    for (std::size_t i = 0; i < edits.size();) {
        const unsigned row = edits[i].row;
        log_.cells(row, cells);
        for (; i < edits.size() && edits[i].row == row; ++i)
            cells[edits[i].column] = edits[i].after;
        copies_.replace(row, cells.data(), cells.size());
    }
}

Option dryRunOption() {
    return {"-n,--dry-run", "", "show before and after, change nothing"};
}

}  // namespace vek
