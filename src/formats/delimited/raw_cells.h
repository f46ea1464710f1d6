#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/byte_marks.h>

namespace vek::formats {

/// The cells of a row as they stand in its lines, with their quotes: those that nobody changed can
/// be written as they came.
class RawCells {
public:
    RawCells(char separator, bool hasTextQuotes)
        : separator_(separator), hasTextQuotes_(hasTextQuotes) {}

    /// Of a piece of a file, whose line end may stand behind it. Valid as long as the piece.
    const std::vector<std::string_view>& take(std::string_view piece);
    /// Whether a cell that stands so reads as a text.
    bool reads(std::string_view raw, std::string_view text);
    bool isQuoted(std::string_view raw) const { return !hasTextQuotes_ && raw.starts_with('"'); }
    /// Whether it begins with a quote that is never closed.
    bool isOpen(std::string_view raw) const;

private:
    void look(std::string_view piece);
    const char* endOfCell(const char* at, const char* end);
    const char* behindQuoted(const char* at, const char* end);

    char separator_;
    bool hasTextQuotes_;
    std::optional<ByteMarks> marks_;
    std::vector<std::string_view> cells_;
    std::string resolved_;
};

}  // namespace vek::formats
