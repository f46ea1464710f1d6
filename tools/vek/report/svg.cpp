#include "tools/vek/report/svg.h"

#include <cmath>

#include "formats/failure.h"
#include "formats/text/width.h"
#include "tools/vek/report/markup.h"

namespace vek::page {

namespace {

void addAttribute(std::string& out, const char* name, double value) {
    ((((out += ' ') += name) += "=\"") += shortNumber(value)) += '"';
}

void addLook(std::string& out, std::string_view look) {
    if (!look.empty()) ((out += " class=\"") += look) += '"';
}

}  // namespace

std::string shortNumber(double number) {
    const auto tenths = static_cast<long long>(std::llround(number * 10));
    std::string text = std::to_string(tenths / 10);
    if (tenths < 0 && tenths > -10) text.insert(0, "-");
    if (tenths % 10 != 0) text += "." + std::to_string(std::abs(tenths % 10));
    return text;
}

double widthInPicture(std::string_view text) {
    constexpr double ofCell = 6.6;
    return ofCell * static_cast<double>(formats::displayWidth(text));
}

Svg::Svg(double width, double height, std::string_view label, std::string_view look) {
    out_ = "<svg viewBox=\"0 0 " + shortNumber(width) + " " + shortNumber(height) + "\"";
    addAttribute(out_, "width", width);
    addAttribute(out_, "height", height);
    addLook(out_, look);
    out_ += " role=\"group\" aria-label=\"" + asText(label) + "\">\n";
}

void Svg::rect(const Box& box, std::string_view look) {
    out_ += "<path";
    addLook(out_, look);
    out_ += formats::concat(" d=\"M", shortNumber(box.x), " ", shortNumber(box.y), "h",
                            shortNumber(box.width), "v", shortNumber(box.height), "H",
                            shortNumber(box.x), "z\"/>");
}

void Svg::line(double x1, double y1, double x2, double y2, std::string_view look) {
    out_ += "<line";
    addAttribute(out_, "x1", x1);
    addAttribute(out_, "y1", y1);
    addAttribute(out_, "x2", x2);
    addAttribute(out_, "y2", y2);
    addLook(out_, look);
    out_ += "/>\n";
}

void Svg::text(double x, double y, std::string_view text, std::string_view look,
               std::size_t widest) {
    out_ += "<text";
    addAttribute(out_, "x", x);
    addAttribute(out_, "y", y);
    addLook(out_, look);
    out_ += '>';
    addText(out_, formats::fitted(text, widest));
    out_ += "</text>\n";
}

void Svg::shape(const std::string& points, std::string_view look) {
    out_ += "<polygon points=\"" + points + "\"";
    addLook(out_, look);
    out_ += "/>";
}

void Svg::beginLink(std::string_view anchor, std::string_view title) {
    ((out_ += "<a href=\"#") += anchor) += "\"><title>";
    addText(out_, title);
    out_ += "</title>";
}

void Svg::endLink() {
    out_ += "</a>\n";
}

std::string Svg::take() && {
    out_ += "</svg>\n";
    return std::move(out_);
}

}  // namespace vek::page
