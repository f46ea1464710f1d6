#include "vekdb/lines/record_loader.h"

#include <algorithm>

#include <vekdb/host/diagnostics.h>
#include <vekdb/record.h>
#include "vekdb/lines/table_text.h"

namespace {

// So many lines tell how long the others are: the first few roughly, more of them better.
bool isSample(unsigned lines) {
    return lines == 16 || lines == 1024;
}

}  // namespace

unsigned RecordLoader::load(unsigned most) {
    dbrecord* record = &receiver_.first();
    while (loaded_ < most && readNext(*record)) {
        dbrecord& next = receiver_.take(*record);
        if (&next == record) lines_.takeBack(*record);
        record = &next;
        if (isSample(++loaded_)) expectRest(most - loaded_);
    }
    return loaded_;
}

// How many records will be kept nobody knows where not all are.
void RecordLoader::expectRest(unsigned most) {
    if (!receiver_.takesAll()) return;
    receiver_.expect(std::min<std::size_t>(most, lines_.expectRest(columns_)));
}

bool RecordLoader::readNext(dbrecord& record) {
    const LineScan line = lines_.read(record);
    return line.steps != 0 && isComplete(line) && replacePassedOver(record);
}

bool RecordLoader::isComplete(const LineScan& line) {
    if (line.values == columns_) return true;
    lines_.awaitAll();
    receiver_.refuse(loaded_);
    LogBoth("vekdb::add_text: returning because not all fields filled\n");
    return false;
}

// The first line is passed over where that was asked for; so are a magic line and the two lines
// behind it. The line that takes their place may have any number of values.
bool RecordLoader::replacePassedOver(dbrecord& record) {
    const bool skipsThis = skips_ && loaded_ == 0;
    if (!skipsThis && !isMagicName(record.fieldView(0))) return true;
    if (!skipsThis) {
        lines_.read(record);
        lines_.read(record);
    }
    if (lines_.read(record).steps != 0) return true;
    lines_.awaitAll();
    debug_printf("vekdb::add_text: returning because no more lines\n");
    return false;
}
