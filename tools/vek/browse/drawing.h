#pragma once

#include <unordered_map>

#include "tools/vek/browse/browser.h"

namespace vek::browse {

/// Draws what a browser shows: the path on top, the heading, the rows, one of them in full beside
/// them, and what is said or asked at the foot.
class Drawing {
public:
    Drawing(Browser& browser, std::size_t width, std::size_t height);
    Picture draw();

private:
    struct Placed {
        std::size_t column;  // of the sheet's list
        std::size_t x;
        std::size_t width;
    };

    std::size_t numberWidth() const;
    std::vector<Placed> layOut();
    bool placeAround(std::size_t kept, std::vector<Placed>& placed);
    std::vector<std::size_t> columnsInReach(std::size_t kept, std::size_t left) const;
    std::size_t earliestLeft(std::size_t kept) const;
    std::vector<Placed> fit(const std::vector<std::size_t>& columns);
    std::size_t naturalWidth(const Sheet::Column& column);
    std::size_t measured(const Sheet::Column& column) const;
    void scrollRows();
    void add(std::size_t y, std::size_t x, const std::string& text, std::size_t width, Look look);
    void drawPath();
    void drawHeading(const std::vector<Placed>& placed);
    void drawRow(std::size_t y, unsigned place, const std::vector<Placed>& placed);
    void drawCard();
    void drawAnswer();
    void drawQuestion(const std::string& text);
    Picture drawWhileRowsMove();
    void drawHelp();
    std::string statusText() const;

    Browser& browser_;
    const Sheet& sheet_;
    std::size_t width_;
    std::size_t height_;
    std::size_t tableWidth_;
    Picture picture_;
    std::unordered_map<unsigned, std::size_t> widths_;
};

}  // namespace vek::browse
