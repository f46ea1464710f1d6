#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/vek/cli/command.h"
#include "tools/vek/cli/printout.h"

namespace vek {

/// How much of a terminal there is, and whether it shows colours.
struct Screen {
    std::size_t width = 0;  ///< 0 for no limit
    bool hasColor = false;
};

/// The screen behind an output: colour only on a terminal and not with NO_COLOR or --no-color;
/// the terminal's width, --width where given, no limit elsewhere.
Screen screenOf(const Printout& out, const Args& args);
/// The --no-color and --width options.
std::vector<Option> screenOptions();

/// A column of a grid.
struct GridColumn {
    std::string title;
    bool alignsRight = false;
    bool isFaint = false;
};

/// Cells in columns for people. Cells are asked for as they are printed; nothing is copied.
struct Grid {
    std::vector<GridColumn> columns;
    std::size_t rowCount = 0;
    std::function<std::string_view(std::size_t row, std::size_t column)> cell;
    bool wraps = false;  ///< long cells take several lines instead of being cut
};

/// What is printed of a grid in several parts has one heading, and columns that never become
/// narrower.
struct GridLayout {
    std::vector<std::size_t> widths;
    std::vector<std::size_t> leasts;  ///< what they may be cut to
    bool hasHeading = false;
};

/// Prints the grid, its columns fitted to the screen: long cells are cut, and columns that have
/// no room at all are left out at the right. Returns how many were printed.
std::size_t printGrid(const Grid& grid, const Screen& screen, Printout& out);
std::size_t printGrid(const Grid& grid, const Screen& screen, Printout& out, GridLayout& layout);

/// Prints each row as a card, its first cell as the title and the others below it, a line each with
/// the column's name. Long cells take several lines.
void printCards(const Grid& grid, const Screen& screen, Printout& out);

/// A text in bold, faint, red or green where the screen has colours.
enum class Ink { plain, bold, faint, red, green, yellow };
std::string inked(Ink ink, const std::string& text, const Screen& screen);

}  // namespace vek
