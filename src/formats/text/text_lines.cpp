#include "formats/text/text_lines.h"

#include <algorithm>

#include <vekdb/host/text_util.h>

namespace vek::formats {

LineWalk::LineWalk(std::string_view text, Ends ends) : text_(text), ends_(ends) {
    nextCr_ = ends == Ends::any ? text.find('\r') : std::string_view::npos;
}

// Where the next carriage return stands is looked up once for all lines up to there.
std::size_t LineWalk::findEnd() {
    if (nextCr_ < at_) nextCr_ = text_.find('\r', at_);
    const std::string_view upToCr = text_.substr(at_, nextCr_ - at_);
    const std::size_t feed = upToCr.find('\n');
    return at_ + std::min(feed, upToCr.size());
}

void LineWalk::takeEnd() {
    if (at_ == text_.size()) return;
    const bool isCr = text_[at_++] == '\r';
    const bool isBoth = isCr && at_ < text_.size() && text_[at_] == '\n';
    if (isBoth) ++at_;
    sawCr_ = sawCr_ || isCr;
    seen_.add(isBoth ? LineEnd::crlf : isCr ? LineEnd::cr : LineEnd::lf);
}

bool LineWalk::next(std::string_view& line) {
    if (at_ == text_.size()) return false;
    const std::size_t end = findEnd();
    line = text_.substr(at_, end - at_);
    at_ = end;
    takeEnd();
    if (ends_ == Ends::lineFeed && line.ends_with('\r')) line.remove_suffix(1);
    ++number_;
    return true;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        std::size_t end = text.find(separator);
        pieces.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return pieces;
        text.remove_prefix(end + 1);
    }
}

std::string_view withoutBlankEnds(std::string_view text) {
    while (!text.empty() && isAsciiSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isAsciiSpace(text.back())) text.remove_suffix(1);
    return text;
}

bool sameText(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    if (a == b) return true;
    return std::equal(a.begin(), a.end(), b.begin(),
                      [](char x, char y) { return asciiLower(x) == asciiLower(y); });
}

}  // namespace vek::formats
