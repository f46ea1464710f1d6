#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vek::browse {

/// What keys do.
enum class Act {
    up,
    down,
    left,
    right,
    pageUp,
    pageDown,
    halfUp,
    halfDown,
    first,
    last,
    firstColumn,
    lastColumn,
    goToRow,
    goToTimecode,
    findForward,
    findBack,
    findNext,
    findPrevious,
    sortUp,
    sortDown,
    sortAlso,
    unsort,
    filterByValue,
    filterByCondition,
    filterByTags,
    unfilter,
    refresh,
    mark,
    tag,
    tagByCondition,
    untagByCondition,
    invertTags,
    edit,
    editTagged,
    insertBelow,
    insertAbove,
    deleteRows,
    deleteTagged,
    rename,
    undo,
    redo,
    widen,
    narrow,
    hide,
    showColumns,
    columnLeft,
    columnRight,
    keepColumns,
    card,
    save,
    saveAs,
    saveShown,
    open,
    nextSheet,
    previousSheet,
    copyTagged,
    command,
    help,
    redraw,
    cancel,
    quit,
    leave,
};

/// A line of the one table of keys: the help, the documentation and the keys themselves are made
/// of it. Keys are named as people say them: "j", "^D", "PgDn", "F2".
struct KeyEntry {
    Act act;
    const char* group;
    std::vector<std::string_view> keys;
    const char* does;
};
const std::vector<KeyEntry>& keyTable();

/// The entry of a key, or null.
const KeyEntry* entryOf(std::string_view key);

/// The table for people: a heading for each group, a line for each entry.
std::vector<std::string> keyHelp();

}  // namespace vek::browse
