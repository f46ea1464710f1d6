#pragma once

#include <string>
#include <vector>

#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "formats/choosing/conditions.h"
#include "formats/log/log.h"

namespace vek::formats {

/// Which rows of a log a person wants, and in which order.
struct Selection {
    std::vector<std::string> where;
    std::vector<Condition> conditions;  ///< further ones
    bool any = false;                   ///< one condition is enough
    std::string at;                     ///< a timecode or keycode that a row's range must hold
    bool tagged = false;
    std::string unique;
    std::string duplicates;
    std::string sort;                   ///< column names between commas
    std::vector<unsigned> sortColumns;  ///< the same as columns, where there are no names
    bool reverse = false;
    std::size_t limit = 0;  ///< 0 is no limit
    std::size_t offset = 0;
    Regexes* regexes = nullptr;  ///< kept for the next log, where there is one
};

/// What a reader may know of it: rows that are not wanted can be left out in the first place.
Wanted wantedRows(const Selection& selection);

/// Whether anything narrows the rows down.
bool narrows(const Selection& selection);

/// The chosen rows in their order, each with the tag that the file's column "Tag" gives it.
struct Selected {
    VDBView view;
    std::size_t matched = 0;  ///< rows before limit and offset
};

/// Looks the rows up. A Failure for a condition that cannot be read, a column that is not there.
Selected selectRows(const Log& log, const Selection& selection);

/// The table rows alone, without the tags, which are a look at a cell of each.
std::vector<unsigned> selectedRows(const Log& log, const Selection& selection);

/// The same among these table rows alone, in the table's order where no other is asked for.
Selected selectRows(const Log& log, const Selection& selection, const std::vector<unsigned>& among);

/// The same with the order that they have here, also where rows compare equal and for which of
/// several is the first one.
Selected selectInOrder(const Log& log, const Selection& selection, std::vector<unsigned> among);

/// A view of these table rows in this order, with their tags.
VDBView viewOf(const Log& log, const std::vector<unsigned>& rows);

/// Puts the rows of a view in people's order by these columns, empty values last; rows that
/// compare equal keep theirs.
void sortBy(const std::vector<unsigned>& columns, VDBView& view);

/// These table rows sorted by columns, as --sort does it.
std::vector<unsigned> sortedRows(const Log& log, const std::vector<unsigned>& rows,
                                 const std::vector<unsigned>& columns);

/// For each row of the table whether the file's column "Tag" tags it.
std::vector<bool> taggedRows(const Log& log);

/// The table rows of a view, in its order.
std::vector<unsigned> rowsOf(const VDBView& view);

/// The column positions of a list such as "Scene,Take" or "[Name, clip],Take".
std::vector<unsigned> columnList(const Log& log, const std::string& names);

}  // namespace vek::formats
