#include "tools/vek/cli/grid.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "formats/text/width.h"
#include "tools/vek/cli/terminal.h"

namespace vek {

namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t widestPadding = 200;  // where nothing is cut
constexpr std::size_t narrowest = 12;  // a cut column still tells something; timecodes are whole

// The widest cell of each column.
std::vector<std::size_t> naturalWidths(const Grid& grid) {
    std::vector<std::size_t> widths;
    for (std::size_t column = 0; column < grid.columns.size(); ++column) {
        std::size_t width = displayWidth(escaped(grid.columns[column].title));
        for (std::size_t row = 0; row < grid.rowCount; ++row) {
            std::string_view cell = grid.cell(row, column);
            if (cell.size() > width) width = std::max(width, displayWidth(escaped(cell)));
        }
        widths.push_back(width);
    }
    return widths;
}

std::size_t total(const std::vector<std::size_t>& widths, std::size_t cap) {
    std::size_t sum = widths.empty() ? 0 : gap * (widths.size() - 1);
    for (std::size_t width : widths) sum += std::min(width, cap);
    return sum;
}

// Leaves columns out at the right until the others fit, each cut to the narrowest.
void dropColumns(std::vector<std::size_t>& widths, std::size_t room) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        used += std::min(widths[i], narrowest) + (i == 0 ? 0 : gap);
        if (i == 0 || used <= room) continue;
        widths.resize(i);
        return;
    }
}

// The widest cap under which all columns fit; narrow columns keep their width.
std::size_t fittingCap(const std::vector<std::size_t>& widths, std::size_t room) {
    std::size_t fits = 1;
    std::size_t over = *std::max_element(widths.begin(), widths.end()) + 1;
    while (over - fits > 1) {
        std::size_t middle = fits + (over - fits) / 2;
        (total(widths, middle) > room ? over : fits) = middle;
    }
    return fits;
}

// What a cap leaves unused goes to the columns that were cut, from the left.
void widen(std::vector<std::size_t>& widths, std::size_t cap, std::size_t room) {
    std::size_t spare = room - std::min(room, total(widths, cap));
    for (std::size_t& width : widths) {
        std::size_t more = width > cap ? std::min(width - cap, spare) : 0;
        spare -= more;
        width = std::min(width, cap) + more;
    }
}

std::vector<std::size_t> fittedWidths(std::vector<std::size_t> widths, std::size_t room) {
    if (room == 0 || widths.empty()) return widths;
    dropColumns(widths, room);
    widen(widths, fittingCap(widths, room), room);
    return widths;
}

class GridPrinter {
public:
    GridPrinter(const Grid& grid, const Screen& screen, Printout& out)
        : grid_(grid),
          screen_(screen),
          out_(out),
          widths_(fittedWidths(naturalWidths(grid), screen.width)) {}

    std::size_t print() {
        printLine([&](std::size_t i) { return std::string_view(grid_.columns[i].title); }, true);
        for (std::size_t row = 0; row < grid_.rowCount; ++row) {
            printLine([&](std::size_t i) { return grid_.cell(row, i); }, false);
        }
        return widths_.size();
    }

private:
    template <class Cell>
    void printLine(Cell cell, bool isTitle) {
        std::string line;
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            Ink ink = isTitle ? Ink::bold : grid_.columns[i].isFaint ? Ink::faint : Ink::plain;
            bool isLast = i + 1 == widths_.size();
            addCell(line, fitted(cell(i), widths_[i]), i, ink, isLast);
        }
        out_.inkedLine(line);
    }

    void addCell(std::string& line, const std::string& text, std::size_t i, Ink ink, bool isLast) {
        // Where nothing is cut, one long cell makes not every row as long.
        const std::size_t wanted =
            screen_.width == 0 ? std::min(widths_[i], widestPadding) : widths_[i];
        std::string padding(wanted - std::min(wanted, displayWidth(text)), ' ');
        if (grid_.columns[i].alignsRight) line += padding;
        line += text.empty() ? text : inked(ink, text, screen_);
        if (isLast) {
            line.erase(line.find_last_not_of(' ') + 1);
            return;
        }
        if (!grid_.columns[i].alignsRight) line += padding;
        line += std::string(gap, ' ');
    }

    const Grid& grid_;
    const Screen& screen_;
    Printout& out_;
    std::vector<std::size_t> widths_;
};

const char* inkCode(Ink ink) {
    switch (ink) {
        case Ink::bold:
            return "\x1b[1m";
        case Ink::faint:
            return "\x1b[2m";
        case Ink::red:
            return "\x1b[31m";
        case Ink::green:
            return "\x1b[32m";
        case Ink::yellow:
            return "\x1b[33m";
        default:
            return "";
    }
}

}  // namespace

Screen screenOf(const Printout& out, const Args& args) {
    const char* noColor = std::getenv("NO_COLOR");
    bool wantsColor = !args.has("no-color") && (noColor == nullptr || *noColor == '\0');
    std::size_t width = out.isTerminal() ? terminalWidth(80) : 0;
    return {args.number("width", width), wantsColor && out.isTerminal()};
}

std::vector<Option> screenOptions() {
    return {
        {"--width", "N", "fit to N columns; the terminal's width as a rule, no limit elsewhere"},
        {"--no-color", "", "no colours, as with NO_COLOR in the environment"},
    };
}

std::size_t printGrid(const Grid& grid, const Screen& screen, Printout& out) {
    return GridPrinter(grid, screen, out).print();
}

std::string inked(Ink ink, const std::string& text, const Screen& screen) {
    if (!screen.hasColor || ink == Ink::plain) return text;
    return inkCode(ink) + text + "\x1b[0m";
}

}  // namespace vek
