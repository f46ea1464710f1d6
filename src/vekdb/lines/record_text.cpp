#include <climits>
#include <cstring>

#include <vekdb/byte_marks.h>
#include <vekdb/host/text_file.h>
#include <vekdb/record.h>
#include "vekdb/bytes/line_bytes.h"
#include "vekdb/lines/record_lines.h"
#include "vekdb/record/record_strings.h"

namespace {

// Quotes and comma of a value; each of its bytes may become two.
constexpr std::size_t mostAround = 3;

char* writeSpecial(char c, char* to) {
    switch (c) {
        case '\r':
            return to;
        case '\n':
            *to++ = '\\';
            *to++ = 'n';
            return to;
        case '"':
            *to++ = '"';
            [[fallthrough]];
        default:
            *to++ = c;
            return to;
    }
}

// A text ends at its first NUL, here as everywhere; a line could not hold more of it.
char* writeText(std::string_view text, char* to) {
    for (;;) {
        const std::size_t run = LineBytes::writableRun(text.data(), text.size());
        std::memcpy(to, text.data(), run);
        to += run;
        if (run == text.size() || text[run] == '\0') return to;
        to = writeSpecial(text[run], to);
        text.remove_prefix(run + 1);
    }
}

char* writeValue(std::string_view value, char* to) {
    *to++ = '"';
    to = writeText(value, to);
    *to++ = '"';
    return to;
}

// Values that stand as they were quoted need no look at their bytes: the line is copied whole
// and gets its closing quotes back.
char* copyQuoted(const LineSlices& slices, unsigned count, char* to) {
    const std::uint16_t* next = slices.next();
    const std::size_t length = next[count - 1] - 1u;
    std::memcpy(to, slices.first() - 1, length);
    for (unsigned i = 0; i < count; ++i) {
        to[next[i] - 2] = '"';
    }
    return to + length;
}

// Whether no byte of the values has to be written as others: the only NULs are those between them.
bool arePlain(const LineSlices& slices, unsigned count, std::size_t size) {
    const char* const begin = slices.first();
    return ByteMarks::count(begin, begin + size, {'"', '\r', '\n', '\0'}) == count - 1;
}

// A short value is copied with some of the bytes that stand behind it on its line, which what
// follows overwrites: a copy of a fixed size is the quickest.
char* copyValue(const char* from, std::size_t size, std::size_t left, char* to) {
    constexpr std::size_t atOnce = 16;
    if (size <= atOnce && left >= atOnce)
        std::memcpy(to, from, atOnce);
    else
        std::memcpy(to, from, size);
    return to + size;
}

char* copyMoved(const LineSlices& slices, unsigned count, std::size_t size, char* to) {
    const std::uint16_t* const next = slices.next();
    const char* const text = slices.first();
    std::size_t from = 0;
    for (unsigned i = 0; i < count; ++i) {
        if (i > 0) *to++ = ',';
        *to++ = '"';
        to = copyValue(text + from, next[i] - from - 1, size - from, to);
        *to++ = '"';
        from = next[i];
    }
    return to;
}

}  // namespace

int dbrecord::read(TextFile& file) {
    const std::size_t steps = FileLines(file).read(*this).steps;
    return steps > INT_MAX ? INT_MAX : static_cast<int>(steps);
}

int dbrecord::write(TextFile& file) const {
    char* const line = file.beginLine(longestLine());
    const char* const end = writeValues(line);
    file.endLine(static_cast<std::size_t>(end - line));
    changed_ = false;
    return 1;
}

std::size_t dbrecord::longestLine() const {
    std::size_t bytes = 0;
    if (storage_ == Storage::slices) {
        bytes = values_.slices->next()[stored_ - 1];
    } else {
        for (unsigned i = 0; i < stored_; ++i) {
            bytes += fieldView(i).size();
        }
    }
    return 2 * bytes + mostAround * count_;
}

char* dbrecord::writeValues(char* to) const {
    unsigned written = 0;
    if (storage_ == Storage::slices) {
        const LineSlices& slices = *values_.slices;
        const std::size_t size = slices.next()[stored_ - 1] - std::size_t{slices.gap()};
        if (slices.gap() == LineSlices::quotedGap) {
            to = copyQuoted(slices, stored_, to);
            written = stored_;
        } else if (arePlain(slices, stored_, size)) {
            to = copyMoved(slices, stored_, size, to);
            written = stored_;
        }
    }
    for (; written < count_; ++written) {
        if (written > 0) *to++ = ',';
        to = writeValue(fieldView(written), to);
    }
    return to;
}
