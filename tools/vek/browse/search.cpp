#include "tools/vek/browse/search.h"

#include "tools/vek/browse/slice.h"

namespace vek::browse {

void Search::begin(const std::string& text, unsigned from, bool isBack, bool fromHere) {
    text_ = text;
    criterion_ = TextSearch::Criterion(cellText(text));
    from_ = from;
    done_ = 0;
    isBack_ = isBack;
    fromHere_ = fromHere;
    isRunning_ = !text.empty();
    found_.reset();
}

bool Search::step(const Sheet& sheet) {
    const unsigned count = sheet.rows().size();
    Slice slice;
    for (bool isOver = false; done_ < count && isRunning_ && !isOver; ++done_) {
        const std::uint64_t offset = std::uint64_t{done_} + (fromHere_ ? 0 : 1);
        const std::uint64_t place =
            isBack_ ? from_ + 2 * std::uint64_t{count} - offset : from_ + offset;
        if (look(sheet, static_cast<unsigned>(place % count))) isRunning_ = false;
        isOver = slice.isOver();
    }
    if (done_ >= count) isRunning_ = false;
    return !isRunning_;
}

bool Search::look(const Sheet& sheet, unsigned place) {
    const dbrecord& record = *sheet.log().table->get_record(sheet.rows().rowAt(place));
    for (std::size_t i = 0; i < sheet.columns().size(); ++i) {
        const Sheet::Column& column = sheet.columns()[i];
        if (column.isHidden) continue;
        if (!criterion_.isSatisfiedBy(record.fieldView(column.column), 0)) continue;
        found_ = Found{place, i};
        return true;
    }
    return false;
}

std::size_t Search::percent(const Sheet& sheet) const {
    const std::size_t count = sheet.rows().size();
    return count == 0 ? 100 : std::size_t{done_} * 100 / count;
}

}  // namespace vek::browse
