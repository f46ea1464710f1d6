#include "tools/vek/timecode/shift.h"

#include "formats/text/text_lines.h"
#include "formats/timecode/timecode_form.h"
#include "tools/vek/timecode/markers.h"

namespace vek::timecode {

namespace {

// A time so much later or earlier; nothing where its rate has no such length.
struct Shift {
    Work& work;
    std::string_view length;
    bool isBack;

    std::optional<std::int64_t> frames(unsigned row, unsigned column, const Timecode& code) const {
        const int nominal = work.nominal(row, column);
        const std::optional<std::int64_t> by = lengthOf(length, nominal, code.dropFrame);
        if (!by || isNoFrame(length, nominal, code.dropFrame)) return {};
        return inDay(work, framesOf(code, nominal) + (isBack ? -*by : *by),
                     framesInDay(nominal, code.dropFrame));
    }

    std::string whatWouldDo(unsigned row, unsigned column) const {
        if (!lengthOf(length, work.nominal(row, column), false)) {
            return concat("a rate that has the frame ", length);
        }
        return concat("a length that drop-frame counting has, which leaves out ", length,
                      ", or one in frames");
    }

    std::string text(unsigned row, unsigned column, const Timecode& code, std::string_view old,
                     std::int64_t now) const {
        return inFormOf(old, timecodeText(now, work.nominal(row, column), code.dropFrame));
    }

    void cell(unsigned row, unsigned column) const {
        const std::optional<Timecode> code = codeOf(work, row, column);
        if (!code) return;
        const std::optional<std::int64_t> now = frames(row, column, *code);
        if (!now) return work.leave(row, column, whatWouldDo(row, column));
        const std::int64_t before = framesOf(*code, work.nominal(row, column));
        work.moveExact(row, column, [&](const ExactTime& time) {
            return time + ExactTime::ofFrames(*now - before, *work.counting.rate(row, column));
        });
        work.put(row, column, text(row, column, *code, work.log.cell(row, column), *now));
    }

    std::optional<std::string> marker(unsigned row, unsigned record, const Timecode& code,
                                      std::string_view old) const {
        const std::optional<std::int64_t> now = frames(row, record, code);
        return now ? std::optional(text(row, record, code, old, *now)) : std::nullopt;
    }
};

}  // namespace

void shift(Work& work, const std::vector<unsigned>& columns, const std::string& by) {
    std::string_view text = by;
    const bool isBack = text.starts_with('-');
    if (isBack || text.starts_with('+')) text.remove_prefix(1);
    if (!lengthOf(text, work.counting.nominal(), false)) {
        throw Failure{wrongUsage, "timecode shift: " + inQuotes(by) +
                                      " is no length, expected frames (48, -48) or a timecode"};
    }
    const Shift job{work, text, isBack};
    Markers markers(work);
    const bool movesMarkers = markers.goWith(columns);
    for (unsigned row : work.rows) {
        for (unsigned column : columns) job.cell(row, column);
        if (!movesMarkers) continue;
        markers.move(row,
                     [&](const Timecode& code, std::string_view old, unsigned, std::string_view) {
                         return job.marker(row, markers.record(), code, old);
                     });
    }
}

}  // namespace vek::timecode
