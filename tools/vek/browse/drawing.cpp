#include "tools/vek/browse/drawing.h"

#include <algorithm>
#include <string_view>

#include "formats/text/width.h"
#include "formats/text/wrapping.h"
#include "tools/vek/cli/fitting.h"

namespace vek::browse {

namespace {

constexpr std::size_t rowsMeasured = 200;
constexpr std::size_t widestMeasured = 200;
constexpr std::size_t fewestForCard = 70;
constexpr std::size_t mostCellsOfByte = 4;  // one that is shown escaped
constexpr std::size_t longestPrompt = 8192;

// As much of the end of a text as any screen shows, from a whole character on.
std::string_view lastOf(std::string_view text) {
    if (text.size() <= longestPrompt) return text;
    text.remove_prefix(text.size() - longestPrompt);
    while (!text.empty() && (static_cast<unsigned char>(text[0]) & 0xC0) == 0x80) {
        text.remove_prefix(1);
    }
    return text;
}

}  // namespace

std::string textOf(const Picture& picture) {
    std::string text;
    for (const std::vector<Piece>& line : picture.lines) {
        std::string drawn;
        std::size_t x = 0;
        for (const Piece& piece : line) {
            if (piece.x > x) drawn.append(piece.x - x, ' ');
            drawn += piece.text;
            x = piece.x + displayWidth(piece.text);
        }
        text += drawn.substr(0, drawn.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

Picture Browser::picture(std::size_t width, std::size_t height) {
    if (isOver()) return {};
    return Drawing(*this, std::max<std::size_t>(width, 10), std::max<std::size_t>(height, 5))
        .draw();
}

// The rows that were in sight stay there while the rows that are shown are not known.
Picture Drawing::drawWhileRowsMove() {
    picture_.lines = browser_.lines_;
    picture_.lines.resize(height_);
    for (std::size_t y = height_ - 1; y < picture_.lines.size(); ++y) picture_.lines[y].clear();
    for (std::vector<Piece>& line : picture_.lines) {
        std::erase_if(line, [&](const Piece& piece) { return piece.x + piece.width > width_; });
    }
    drawAnswer();
    return std::move(picture_);
}

Drawing::Drawing(Browser& browser, std::size_t width, std::size_t height)
    : browser_(browser),
      sheet_(browser.sheet()),
      width_(width),
      height_(height),
      tableWidth_(browser.hasCard_ && width >= fewestForCard ? width * 3 / 5 : width) {
    picture_.lines.resize(height);
}

Picture Drawing::draw() {
    browser_.page_ = height_ - 4;
    if (sheet_.rows().isSuspended()) return drawWhileRowsMove();
    if (browser_.hasHelp_) {
        drawHelp();
        return std::move(picture_);
    }
    scrollRows();
    drawPath();
    const bool isCardAlone = browser_.hasCard_ && width_ < fewestForCard;
    if (!isCardAlone) {
        const std::vector<Placed> placed = layOut();
        drawHeading(placed);
        const unsigned top = browser_.scrolls_[browser_.current_].top;
        for (std::size_t i = 0; i < browser_.page_; ++i) {
            const std::size_t place = top + i;
            if (place < sheet_.rows().size()) drawRow(i + 2, static_cast<unsigned>(place), placed);
        }
    }
    if (browser_.hasCard_) drawCard();
    add(height_ - 2, 0, statusText(), width_, Look::bar);
    browser_.lines_ = picture_.lines;
    drawAnswer();
    return std::move(picture_);
}

void Drawing::add(std::size_t y, std::size_t x, const std::string& text, std::size_t width,
                  Look look) {
    picture_.lines[y].push_back({x, fitted(text, width), width, look});
}

void Drawing::scrollRows() {
    unsigned& top = browser_.scrolls_[browser_.current_].top;
    const auto page = static_cast<unsigned>(browser_.page_);
    if (sheet_.place() < top) top = sheet_.place();
    if (sheet_.place() >= top + page) top = sheet_.place() - page + 1;
}

void Drawing::drawPath() {
    std::string text = sheet_.log().name;
    if (sheet_.isUnsaved()) text += " [not saved]";
    for (const std::string& level : sheet_.rows().path()) text += " > " + level;
    const std::size_t count = browser_.sheets_.size();
    if (count > 1) {
        text = concat("(", std::to_string(browser_.current_ + 1), "/", std::to_string(count), ") ",
                      text);
    }
    add(0, 0, text, width_, Look::bar);
}

std::size_t Drawing::numberWidth() const {
    return std::max<std::size_t>(3, std::to_string(sheet_.log().rowCount()).size()) + 1;
}

std::size_t Drawing::naturalWidth(const Sheet::Column& column) {
    if (column.width != 0) return column.width;
    const auto [known, isNew] = widths_.try_emplace(column.column, 0);
    if (isNew) known->second = measured(column);
    return known->second;
}

// Of the rows in sight and the first ones.
std::size_t Drawing::measured(const Sheet::Column& column) const {
    const Log& log = sheet_.log();
    std::size_t width = displayWidth(escaped(log.columnName(column.column)));
    const auto measure = [&](std::size_t place) {
        const std::string_view cell =
            log.cell(sheet_.rows().rowAt(static_cast<unsigned>(place)), column.column);
        if (mostCellsOfByte * cell.size() <= width) return;
        width = std::max(width, displayWidth(escaped(cell.substr(0, widestMeasured))));
    };
    const std::size_t count = sheet_.rows().size();
    for (std::size_t i = 0; i < std::min(count, rowsMeasured); ++i) measure(i);
    const std::size_t top = browser_.scrolls_[browser_.current_].top;
    for (std::size_t i = top; i < std::min(count, top + browser_.page_); ++i) measure(i);
    return std::max<std::size_t>(width, 1);
}

// Widths that somebody gave stay; the others are fitted into what is left.
std::vector<Drawing::Placed> Drawing::fit(const std::vector<std::size_t>& columns) {
    const std::size_t begin = numberWidth() + columnGap;
    std::size_t room = tableWidth_ > begin ? tableWidth_ - begin : 1;
    std::vector<std::size_t> free;
    std::size_t given = 0;
    for (std::size_t at : columns) {
        const Sheet::Column& column = sheet_.columns()[at];
        if (column.width == 0)
            free.push_back(naturalWidth(column));
        else if (given + column.width + columnGap <= room)
            given += column.width + columnGap;
    }
    free =
        fittedWidths(std::move(free), std::max<std::size_t>(1, room - std::min(given, room - 1)));
    std::vector<Placed> placed;
    std::size_t x = begin;
    std::size_t nextFree = 0;
    for (std::size_t at : columns) {
        const std::size_t own = sheet_.columns()[at].width;
        if (own == 0 && nextFree == free.size()) break;
        std::size_t width = own != 0 ? own : free[nextFree++];
        if (x >= tableWidth_) break;
        width = std::min(width, tableWidth_ - x);
        placed.push_back({at, x, width});
        x += width + columnGap;
    }
    return placed;
}

// No more columns than there could be room for, each of a cell and a gap: the kept ones, and of the
// others those from the first in sight on.
std::vector<std::size_t> Drawing::columnsInReach(std::size_t kept, std::size_t left) const {
    std::vector<std::size_t> columns;
    const std::size_t most = tableWidth_ / (1 + columnGap) + 1;
    const auto& all = sheet_.columns();
    for (std::size_t at = 0; at < all.size() && columns.size() < most; ++at) {
        if (at == kept) at = std::max(at, left);
        if (at < all.size() && !all[at].isHidden) columns.push_back(at);
    }
    return columns;
}

// The first column that may be in sight together with the cursor's.
std::size_t Drawing::earliestLeft(std::size_t kept) const {
    std::size_t most = tableWidth_ / (1 + columnGap) + 1;
    std::size_t at = sheet_.columnPlace();
    while (at > kept && most > 0) most -= sheet_.columns()[--at].isHidden ? 0 : 1;
    return at;
}

bool Drawing::placeAround(std::size_t kept, std::vector<Placed>& placed) {
    std::size_t& left = browser_.scrolls_[browser_.current_].left;
    const std::size_t cursor = sheet_.columnPlace();
    left = cursor < kept ? kept : std::max({left, kept, earliestLeft(kept)});
    if (cursor >= kept && cursor < left) left = cursor;
    for (;;) {
        placed = fit(columnsInReach(kept, left));
        const auto isCursor = [&](const Placed& one) { return one.column == cursor; };
        if (std::any_of(placed.begin(), placed.end(), isCursor)) return true;
        if (left >= cursor || cursor < kept) return false;
        ++left;
    }
}

// The cursor's column is always in sight; kept ones that leave it no room are scrolled, too.
std::vector<Drawing::Placed> Drawing::layOut() {
    std::vector<Placed> placed;
    const std::size_t kept = std::min(sheet_.kept(), sheet_.columns().size());
    if (!placeAround(kept, placed) && kept > 0) placeAround(0, placed);
    return placed;
}

void Drawing::drawHeading(const std::vector<Placed>& placed) {
    browser_.spots_.clear();
    for (const Placed& one : placed) {
        const bool isCursor = one.column == sheet_.columnPlace();
        const unsigned column = sheet_.columns()[one.column].column;
        add(1, one.x, sheet_.log().columnName(column), one.width,
            isCursor ? Look::cell : Look::title);
        browser_.spots_.push_back({one.x, one.width, one.column});
        if (isCursor) browser_.shownWidth_ = one.width;
    }
}

void Drawing::drawRow(std::size_t y, unsigned place, const std::vector<Placed>& placed) {
    const unsigned row = sheet_.rows().rowAt(place);
    const bool isTagged = sheet_.isTagged(row);
    const bool isHere = place == sheet_.place();
    std::string number = std::to_string(row + 1) + (isTagged ? "*" : " ");
    number.insert(0, numberWidth() - std::min(numberWidth(), number.size()), ' ');
    add(y, 0, number, numberWidth(), isTagged ? Look::tagged : Look::faint);
    Look look = isTagged ? Look::tagged : Look::plain;
    if (sheet_.isMarked(place)) look = Look::range;
    if (isHere) look = Look::row;
    for (const Placed& one : placed) {
        const bool isCell = isHere && one.column == sheet_.columnPlace();
        const unsigned column = sheet_.columns()[one.column].column;
        add(y, one.x, std::string(sheet_.log().cell(row, column).substr(0, 4 * one.width + 64)),
            one.width, isCell ? Look::cell : look);
        if (!isCell) continue;
        picture_.cursorX = one.x;
        picture_.cursorY = y;
        picture_.hasCursor = true;
    }
}

void Drawing::drawCard() {
    const std::size_t x = tableWidth_ < width_ ? tableWidth_ + 1 : 0;
    const std::size_t width = width_ - x;
    const std::size_t last = height_ - 2;
    if (sheet_.row() == Sheet::nowhere) return;
    std::size_t y = 1;
    add(y++, x, "Row " + std::to_string(sheet_.row() + 1), width, Look::title);
    for (const Sheet::Column& column : sheet_.columns()) {
        const std::string_view cell = sheet_.log().cell(sheet_.row(), column.column);
        if (y >= last || cell.empty()) continue;
        const std::string name = sheet_.log().columnName(column.column) + ": ";
        for (const std::string& text :
             wrapped(concat(name, cell.substr(0, 4 * width * height_)), width)) {
            if (y < last) add(y++, x, text, width, Look::plain);
        }
    }
}

std::string Drawing::statusText() const {
    const std::string shown = counted(sheet_.rows().size(), "row");
    std::string text = sheet_.row() == Sheet::nowhere
                           ? "no row"
                           : concat("row ", std::to_string(sheet_.place() + 1), " of ", shown);
    if (sheet_.rows().size() != sheet_.log().rowCount()) {
        text += concat(" (", std::to_string(sheet_.log().rowCount()), " in all)");
    }
    if (sheet_.column() != Sheet::nowhere) {
        text += ", " + sheet_.log().columnName(sheet_.column());
    }
    if (sheet_.hasMark()) text += ", range of " + std::to_string(sheet_.chosenCount());
    return text + "   ? keys  q close";
}

// Its choices stand at its end: where it is longer than the screen is high, that is what is seen.
void Drawing::drawQuestion(const std::string& text) {
    const std::vector<std::string> lines = wrapped(text, width_);
    const std::size_t count = std::min(lines.size(), height_);
    const std::size_t top = height_ - count;
    std::vector<Piece> status = std::move(picture_.lines[height_ - 2]);
    for (std::size_t y = std::min(top, height_ - 2); y < height_; ++y) picture_.lines[y].clear();
    if (top > 0) picture_.lines[top - 1] = std::move(status);
    for (std::size_t i = 0; i < count; ++i) {
        add(top + i, 0, lines[lines.size() - count + i], width_, Look::trouble);
    }
    if (picture_.cursorY + 1 >= top) picture_.hasCursor = false;
}

void Drawing::drawAnswer() {
    const std::size_t y = height_ - 1;
    if (browser_.question_) return drawQuestion(browser_.question_->text);
    if (!browser_.prompt_) {
        const Look look = browser_.isTrouble_ ? Look::trouble : Look::message;
        return add(y, 0, browser_.message_, width_, look);
    }
    // The end of a long line is what is typed.
    const Prompt& prompt = *browser_.prompt_;
    const std::string before = escaped(concat(prompt.title, lastOf(prompt.line.beforeCursor())));
    std::string text = escaped(concat(prompt.title, prompt.line.text().substr(0, longestPrompt)));
    std::size_t cursor = displayWidth(before);
    if (cursor + 1 > width_) {
        const std::vector<std::string> pieces = wrapped(before, width_ - 1);
        text = pieces.back();
        cursor = displayWidth(text);
    }
    add(y, 0, text, width_, Look::message);
    picture_.cursorX = std::min(cursor, width_ - 1);
    picture_.cursorY = y;
    picture_.hasCursor = true;
}

void Drawing::drawHelp() {
    const std::vector<std::string> lines = keyHelp();
    add(0, 0, "Keys of vek browse", width_, Look::bar);
    for (std::size_t i = 0; i < height_ - 3 && browser_.helpTop_ + i < lines.size(); ++i) {
        const std::string& line = lines[browser_.helpTop_ + i];
        const bool isTitle = !line.empty() && line[0] != ' ';
        add(i + 1, 0, line, width_, isTitle ? Look::title : Look::plain);
    }
    add(height_ - 1, 0, "Space and b turn pages, any other key leaves", width_, Look::message);
}

}  // namespace vek::browse
