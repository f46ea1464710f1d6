#include "tools/vek/cli/grid.h"

#include <algorithm>
#include <cstdlib>

#include "formats/text/text_lines.h"
#include "formats/text/width.h"
#include "formats/text/wrapping.h"
#include "tools/vek/cli/fitting.h"
#include "tools/vek/cli/terminal.h"

namespace vek {

namespace {

constexpr std::size_t widestPadding = 200;  // where nothing is cut

// The widest cell of each column.
std::vector<std::size_t> naturalWidths(const Grid& grid) {
    std::vector<std::size_t> widths;
    for (std::size_t column = 0; column < grid.columns.size(); ++column) {
        std::size_t width = escapedWidth(grid.columns[column].title);
        for (std::size_t row = 0; row < grid.rowCount; ++row) {
            std::string_view cell = grid.cell(row, column);
            // A byte takes four cells at most, where its number is shown.
            if (4 * cell.size() > width) width = std::max(width, escapedWidth(cell));
        }
        widths.push_back(width);
    }
    return widths;
}

std::size_t longestWord(std::string_view text) {
    std::size_t longest = 0;
    for (std::string_view word : split(text, ' ')) longest = std::max(longest, displayWidth(word));
    return longest;
}

// What a column takes at least: where cells are broken between words, its longest word, as long as
// that is no longer than what is cut elsewhere.
std::size_t leastWidth(const Grid& grid, std::size_t column) {
    if (!grid.wraps) return narrowestColumn;
    std::size_t least = longestWord(escaped(grid.columns[column].title));
    for (std::size_t row = 0; row < grid.rowCount && least < narrowestColumn; ++row) {
        const std::string_view cell = grid.cell(row, column);
        if (cell.size() > least) least = std::max(least, longestWord(escaped(cell)));
    }
    return std::min(least, narrowestColumn);
}

class GridPrinter {
public:
    GridPrinter(const Grid& grid, const Screen& screen, Printout& out, GridLayout& layout)
        : grid_(grid), screen_(screen), out_(out), layout_(layout), widths_(layoutWidths()) {}

    std::size_t print() {
        if (!layout_.hasHeading) printHeading();
        layout_.hasHeading = true;
        for (std::size_t row = 0; row < grid_.rowCount; ++row) {
            const auto cell = [&](std::size_t i) { return grid_.cell(row, i); };
            grid_.wraps ? printWrapped(cell, false) : printLine(cell, false);
        }
        return widths_.size();
    }

private:
    std::vector<std::size_t> layoutWidths() const {
        std::vector<std::size_t> widths = naturalWidths(grid_);
        layout_.widths.resize(widths.size());
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = layout_.widths[i] = std::max(widths[i], layout_.widths[i]);
        }
        layout_.leasts.resize(widths.size());
        if (screen_.width == 0) return widths;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            layout_.leasts[i] = std::max(layout_.leasts[i], leastWidth(grid_, i));
        }
        return fittedWidths(widths, layout_.leasts, screen_.width);
    }

    void printHeading() {
        const auto title = [&](std::size_t i) { return std::string_view(grid_.columns[i].title); };
        grid_.wraps ? printWrapped(title, true) : printLine(title, true);
    }

    Ink inkOf(std::size_t i) const { return grid_.columns[i].isFaint ? Ink::faint : Ink::plain; }

    template <class Cell>
    void printLine(Cell cell, bool isTitle) {
        std::string line;
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            bool isLast = i + 1 == widths_.size();
            addCell(line, fitted(cell(i), widths_[i]), i, isTitle ? Ink::bold : inkOf(i), isLast);
        }
        out_.inkedLine(line);
    }

    // As many lines as the cell that takes most of them.
    template <class Cell>
    void printWrapped(Cell cell, bool isTitle) {
        std::vector<std::vector<std::string>> cells;
        std::size_t most = 1;
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            cells.push_back(wrapped(cell(i), std::max<std::size_t>(1, widths_[i])));
            most = std::max(most, cells.back().size());
        }
        for (std::size_t n = 0; n < most; ++n) {
            std::string line;
            for (std::size_t i = 0; i < cells.size(); ++i) {
                const std::string text = n < cells[i].size() ? cells[i][n] : std::string();
                const Ink ink = isTitle ? Ink::bold : inkOf(i);
                addCell(line, text, i, ink, i + 1 == cells.size());
            }
            out_.inkedLine(line);
        }
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
        line += std::string(columnGap, ' ');
    }

    const Grid& grid_;
    const Screen& screen_;
    Printout& out_;
    GridLayout& layout_;
    std::vector<std::size_t> widths_;
};

// Prints cards: names at the left, as wide as the widest of them, and values beside them.
class CardPrinter {
public:
    CardPrinter(const Grid& grid, const Screen& screen, Printout& out)
        : grid_(grid), screen_(screen), out_(out) {
        for (std::size_t i = 1; i < grid.columns.size(); ++i) {
            nameWidth_ = std::max(nameWidth_, displayWidth(escaped(grid.columns[i].title)));
        }
        if (screen.width == 0) return;
        nameWidth_ = std::min(nameWidth_, std::max<std::size_t>(1, screen.width / 2));
        valueWidth_ =
            screen.width > nameWidth_ + columnGap ? screen.width - nameWidth_ - columnGap : 1;
    }

    void print() {
        for (std::size_t row = 0; row < grid_.rowCount; ++row) {
            if (row > 0) out_.line("");
            const std::string title = concat(grid_.columns[0].title, escaped(grid_.cell(row, 0)));
            out_.inkedLine(
                inked(Ink::bold, title.substr(0, title.find_last_not_of(' ') + 1), screen_));
            for (std::size_t i = 1; i < grid_.columns.size(); ++i) printField(row, i);
        }
    }

private:
    void printField(std::size_t row, std::size_t column) {
        std::string name = fitted(grid_.columns[column].title, nameWidth_);
        std::size_t taken = displayWidth(name);
        name = inked(Ink::faint, name, screen_);
        for (const std::string& value : wrapped(grid_.cell(row, column), valueWidth_)) {
            const std::size_t room = value.empty() ? 0 : nameWidth_ + columnGap - taken;
            out_.inkedLine(name + std::string(room, ' ') + value);
            name.clear();
            taken = 0;
        }
    }

    const Grid& grid_;
    const Screen& screen_;
    Printout& out_;
    std::size_t nameWidth_ = 0;
    std::size_t valueWidth_ = std::string::npos;
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
    GridLayout layout;
    return printGrid(grid, screen, out, layout);
}

std::size_t printGrid(const Grid& grid, const Screen& screen, Printout& out, GridLayout& layout) {
    return GridPrinter(grid, screen, out, layout).print();
}

void printCards(const Grid& grid, const Screen& screen, Printout& out) {
    CardPrinter(grid, screen, out).print();
}

std::string inked(Ink ink, const std::string& text, const Screen& screen) {
    if (!screen.hasColor || ink == Ink::plain) return text;
    return inkCode(ink) + text + "\x1b[0m";
}

}  // namespace vek
