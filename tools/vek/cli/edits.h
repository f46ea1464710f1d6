#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <vekdb/row_copies.h>
#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

namespace vek {

/// A change of a cell that is still to be made. What it holds before stands in the table.
struct Edit {
    unsigned row = 0;
    unsigned short column = 0;
    std::string after;
};

/// Shows them to a person, before they are made.
void printEdits(const Log& log, const std::vector<Edit>& edits, const Args& args);

/// Makes them, in the table alone, those of a row one behind the other.
class EditMaker {
public:
    explicit EditMaker(Log& log) : log_(log), copies_(*log.table) {}
    void make(const std::vector<Edit>& edits);

private:
    Log& log_;
    RowCopies copies_;
};

/// The --dry-run option.
Option dryRunOption();

}  // namespace vek
