#include "tools/vek/browse/keys.h"

#include <algorithm>

namespace vek::browse {

const std::vector<KeyEntry>& keyTable() {
    static const char* const moving = "Moving";
    static const char* const choosing = "Order and choice";
    static const char* const tagging = "Tags";
    static const char* const editing = "Editing";
    static const char* const columns = "Columns";
    static const char* const files = "Files and sheets";
    static const char* const other = "Other";
    static const std::vector<KeyEntry> table = {
        {Act::up, moving, {"Up", "k"}, "a row up"},
        {Act::down, moving, {"Down", "j"}, "a row down"},
        {Act::left, moving, {"Left", "h"}, "a column to the left"},
        {Act::right, moving, {"Right", "l"}, "a column to the right"},
        {Act::pageUp, moving, {"PgUp", "^B", "b"}, "a page up"},
        {Act::pageDown, moving, {"PgDn", "^F", "Space"}, "a page down"},
        {Act::halfUp, moving, {"^U"}, "half a page up"},
        {Act::halfDown, moving, {"^D"}, "half a page down"},
        {Act::first, moving, {"g", "<"}, "the first row"},
        {Act::last, moving, {"G", ">"}, "the last row"},
        {Act::firstColumn, moving, {"Home", "^A"}, "the first column"},
        {Act::lastColumn, moving, {"End", "^E", "$"}, "the last column"},
        {Act::goToRow, moving, {"#"}, "the row of a number"},
        {Act::goToTimecode, moving, {"@"}, "the next clip that holds a timecode or keycode"},
        {Act::findForward, moving, {"/"}, "find a text as you type"},
        {Act::findBack, moving, {"\\"}, "find it backwards"},
        {Act::findNext, moving, {"n"}, "find it again"},
        {Act::findPrevious, moving, {"N"}, "find it again the other way"},
        {Act::sortUp, choosing, {"s"}, "sort by this column"},
        {Act::sortDown, choosing, {"S"}, "the reverse of that order"},
        {Act::sortAlso, choosing, {"+"}, "then by this column, too"},
        {Act::unsort, choosing, {"_"}, "the order of the file"},
        {Act::filterByValue, choosing, {"="}, "only rows with the value of this cell"},
        {Act::filterByCondition, choosing, {"f", "F4"}, "only rows of a condition, as --where"},
        {Act::filterByTags, choosing, {"F"}, "only tagged rows"},
        {Act::unfilter, choosing, {"Backspace", "-"}, "take the last choice off again"},
        {Act::refresh, choosing, {"R", "F5"}, "choose and sort anew after edits"},
        {Act::mark, tagging, {"v"}, "begin a range of rows, which ends at the cursor"},
        {Act::tag, tagging, {"t"}, "tag or untag the row, or tag the range"},
        {Act::tagByCondition, tagging, {"T"}, "tag the rows shown, all or by a condition"},
        {Act::untagByCondition, tagging, {"U"}, "untag the rows shown, all or by a condition"},
        {Act::invertTags, tagging, {"i"}, "turn the tags of the rows shown, or of the range"},
        {Act::edit, editing, {"e", "F2", "Enter"}, "edit the cell"},
        {Act::editTagged, editing, {"E"}, "give all tagged rows one value in this column"},
        {Act::insertBelow, editing, {"o"}, "a new row below"},
        {Act::insertAbove, editing, {"O", "Ins"}, "a new row above"},
        {Act::deleteRows, editing, {"d", "Del"}, "delete the row or the range"},
        {Act::deleteTagged, editing, {"D"}, "delete the tagged rows"},
        {Act::rename, editing, {"r"}, "rename the column"},
        {Act::undo, editing, {"u", "^Z"}, "undo"},
        {Act::redo, editing, {"^R", "^Y"}, "redo"},
        {Act::widen, columns, {"w"}, "widen the column"},
        {Act::narrow, columns, {"W"}, "narrow the column"},
        {Act::hide, columns, {"H"}, "hide the column"},
        {Act::showColumns, columns, {"A"}, "show all columns"},
        {Act::columnLeft, columns, {"["}, "move the column to the left"},
        {Act::columnRight, columns, {"]"}, "move the column to the right"},
        {Act::keepColumns, columns, {"K"}, "keep the columns up to here at the left, or one"},
        {Act::card, columns, {"c", "F3"}, "the whole row beside the table"},
        {Act::save, files, {"^S", "F6"}, "save"},
        {Act::saveAs, files, {"a"}, "save all in another file; its ending says the format"},
        {Act::saveShown, files, {"p"}, "save the present view in another file"},
        {Act::open, files, {"^O", "F7"}, "open another log beside this one"},
        {Act::nextSheet, files, {"Tab"}, "the next log"},
        {Act::previousSheet, files, {"BackTab"}, "the log before"},
        {Act::copyTagged, files, {"y"}, "copy the tagged rows to the next log"},
        {Act::command, other, {":"}, "run a command of vek on the rows shown"},
        {Act::help, other, {"?", "F1"}, "the keys"},
        {Act::redraw, other, {"^L"}, "draw the screen anew"},
        {Act::cancel, other, {"Esc"}, "leave a question, end a range"},
        {Act::quit, other, {"q", "F10"}, "close the log; asks about what is not saved"},
        {Act::leave, other, {"^C"}, "leave at once; what is not saved can be recovered"},
    };
    return table;
}

const KeyEntry* entryOf(std::string_view key) {
    for (const KeyEntry& entry : keyTable()) {
        const auto& keys = entry.keys;
        if (std::find(keys.begin(), keys.end(), key) != keys.end()) return &entry;
    }
    return nullptr;
}

std::vector<std::string> keyHelp() {
    constexpr std::size_t room = 18;
    std::vector<std::string> lines;
    std::string_view group;
    for (const KeyEntry& entry : keyTable()) {
        if (group != entry.group) {
            if (!lines.empty()) lines.emplace_back();
            lines.emplace_back(group = entry.group);
        }
        std::string keys = "  ";
        for (std::string_view key : entry.keys) keys.append(key).append(" ");
        keys.resize(std::max(keys.size(), room), ' ');
        lines.push_back(keys + entry.does);
    }
    return lines;
}

}  // namespace vek::browse
