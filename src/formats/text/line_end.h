#pragma once

namespace vek::formats {

/// What ends the lines of a text.
enum class LineEnd { lf, crlf, cr };

/// "\n", "\r\n" or "\r".
const char* bytesOf(LineEnd end);

/// What ended the lines of a text that was read. A text with several kinds of ends is written
/// with CR and LF if any line had both, else with what ended its first line.
class LineEndsSeen {
public:
    void add(LineEnd end) {
        if (!isAny_ || end == LineEnd::crlf) kind_ = end;
        isAny_ = true;
        hasLoneReturns_ = hasLoneReturns_ || end == LineEnd::cr;
    }
    LineEnd kind() const { return kind_; }
    bool hasLoneReturns() const { return hasLoneReturns_; }

private:
    LineEnd kind_ = LineEnd::lf;
    bool isAny_ = false;
    bool hasLoneReturns_ = false;
};

}  // namespace vek::formats
