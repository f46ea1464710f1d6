#pragma once

#include <string>
#include <string_view>

/// Pictures made of few elements, whose looks are classes of the page's style.
namespace vek::page {

struct Box {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

class Svg {
public:
    /// `label` is what is read aloud in place of the picture.
    Svg(double width, double height, std::string_view label, std::string_view look);

    void rect(const Box& box, std::string_view look);
    void line(double x1, double y1, double x2, double y2, std::string_view look);
    /// A text of which no more than so many cells of a terminal are shown.
    void text(double x, double y, std::string_view text, std::string_view look,
              std::size_t widest = 60);
    /// Closed, from points as SVG has them.
    void shape(const std::string& points, std::string_view look);

    /// What stands between the two tells `title` when it is pointed at, and goes to `anchor`.
    void beginLink(std::string_view anchor, std::string_view title);
    void endLink();

    std::string take() &&;

private:
    std::string out_;
};

/// A number with one decimal at most.
std::string shortNumber(double number);

/// About how wide a text is in a picture.
double widthInPicture(std::string_view text);

}  // namespace vek::page
