#include "vekdb/lines/record_loader.h"

#include <algorithm>

#include <vekdb/host/diagnostics.h>
#include "vekdb/lines/table_text.h"

namespace {

// So many lines tell how long the others are: the first few roughly, more of them better.
bool isSample(unsigned lines) {
    return lines == 16 || lines == 1024;
}

}  // namespace

/// The record of the line that is read, destroyed where it does not arrive in the rows.
class RecordLoader::Row {
public:
    Row(vekdb& table, Rows& rows) : table_(table), rows_(rows) {}
    ~Row() { rows_.pool().destroy(record_); }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

    dbrecord& record() {
        if (record_ == nullptr) {
            record_ = rows_.pool().create(0);
            record_->set_container(&table_);
        }
        return *record_;
    }

    /// Takes the next slot, and as many more as it takes for one to be free.
    void append() {
        rows_.append(record_);
        record_ = nullptr;
        rows_.cover(std::uint64_t{rows_.count()} + 1);
    }

private:
    vekdb& table_;
    Rows& rows_;
    dbrecord* record_ = nullptr;
};

unsigned RecordLoader::load(int most) {
    if (parts_.rows.count() >= parts_.rows.capacity() || most < 1) return 0;
    const auto wanted = static_cast<unsigned>(most);
    Row row(table_, parts_.rows);
    while (loaded_ < wanted && readNext(row.record())) {
        if (sieve_.takes(row.record()))
            row.append();
        else
            lines_.takeBack(row.record());
        if (isSample(++loaded_)) expectRest(wanted - loaded_);
    }
    return loaded_;
}

// How many rows a sieve will take nobody knows.
void RecordLoader::expectRest(unsigned most) {
    if (!sieve_.isOpen()) return;
    const std::size_t expected = lines_.expectRest(parts_.columns.count());
    parts_.rows.expect(std::min<std::size_t>(most, expected));
}

bool RecordLoader::readNext(dbrecord& record) {
    const LineScan line = lines_.read(record);
    return line.steps != 0 && isComplete(line) && replacePassedOver(record);
}

bool RecordLoader::isComplete(const LineScan& line) {
    if (line.values == parts_.columns.count()) return true;
    lines_.awaitAll();
    table_.fill_error_info(1, static_cast<int>(loaded_), 0, 0);
    LogBoth("vekdb::add_text: returning because not all fields filled\n");
    return false;
}

// The first line is passed over where that was asked for; so are a magic line and the two lines
// behind it. The line that takes their place may have any number of values.
bool RecordLoader::replacePassedOver(dbrecord& record) {
    const bool skipsThis = skips_ && loaded_ == 0;
    if (!skipsThis && !isMagic(record.fieldView(0))) return true;
    if (!skipsThis) {
        lines_.read(record);
        lines_.read(record);
    }
    if (lines_.read(record).steps != 0) return true;
    lines_.awaitAll();
    debug_printf("vekdb::add_text: returning because no more lines\n");
    return false;
}
