#include "vekdb/lines/field_unescaping.h"

#include <algorithm>

#include <vekdb/host/text_util.h>
#include "vekdb/bytes/line_bytes.h"

namespace {

// Reads one value from `at` on and writes it at `out`. Scanning by position and end, never past
// the end; in place the output never overtakes the input.
class FieldReader {
public:
    FieldReader(const char* at, const char* end, char* out)
        : at_(at), end_(end), start_(out), out_(out), solid_(out) {}

    void read() {
        open();
        while (at_ < end_ && !isFull()) {
            copyRun();
            if (at_ == end_ || isFull()) break;
            if (*at_ == ',' && !quoted_) break;
            if (*at_ == '"') {
                readQuote();
            } else {
                readBackslash();
            }
        }
        // The comma that ends the value; of a value that is cut, the byte that is lost.
        if (at_ < end_) ++at_;
        trim();
    }

    const char* at() const { return at_; }
    char* out() const { return out_; }

private:
    void open() {
        quoted_ = *at_ == '"';
        if (quoted_) ++at_;
        while (at_ < end_ && isAsciiSpace(*at_)) ++at_;
    }

    std::size_t length() const { return static_cast<std::size_t>(out_ - start_); }
    bool isFull() const { return length() >= FieldUnescaper::longestValue; }
    bool isNext(char c) const { return end_ - at_ > 1 && at_[1] == c; }

    void copyRun() {
        const std::size_t most =
            std::min(static_cast<std::size_t>(end_ - at_), FieldUnescaper::longestValue - length());
        const std::size_t copied = LineBytes::copyRun(at_, most, out_, quoted_);
        at_ += copied;
        out_ += copied;
    }

    void readQuote() {
        if (isNext('"')) {
            *out_++ = '"';
            at_ += 2;
        } else {
            quoted_ = false;
            ++at_;
        }
    }

    void readBackslash() {
        if (isNext('n')) {
            *out_++ = '\n';
            solid_ = out_;
            at_ += 2;
        } else {
            if (isNext('\\')) *out_++ = *at_++;
            *out_++ = *at_++;
        }
    }

    // White space that stands in the line goes; a line feed that was written as an escape is
    // part of the value.
    void trim() {
        while (out_ > solid_ && isAsciiSpace(out_[-1])) --out_;
    }

    const char* at_;
    const char* end_;
    char* start_;
    char* out_;
    char* solid_;  // behind the last escaped line feed
    bool quoted_ = false;
};

}  // namespace

LineScan FieldUnescaper::scan(std::string_view line, char* out) {
    LineScan found;
    out_ = out;
    next_.clear();
    const char* at = line.data();
    const char* const end = at + line.size();
    for (; at < end; ++found.steps) {
        if (isAsciiControl(*at)) {
            ++at;
            continue;
        }
        FieldReader value(at, end, out);
        value.read();
        at = value.at();
        ++found.values;
        if (next_.size() == mostValues) continue;
        out = value.out();
        *out++ = '\0';
        next_.push_back(static_cast<std::size_t>(out - out_));
    }
    return found;
}

std::string_view FieldUnescaper::value(unsigned i) const {
    const std::size_t from = i == 0 ? 0 : next_[i - 1];
    return {out_ + from, next_[i] - from - 1};
}
