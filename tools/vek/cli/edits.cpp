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
                  if (column > 1) return column == 2 ? edit.before : std::string_view(edit.after);
                  return number = std::to_string(edit.row + 1);
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
