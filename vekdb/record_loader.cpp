#include "vekdb/record_loader_impl.h"

#include "host/diagnostics.h"
#include "vekdb/table_text_impl.h"

/// A record on its way into the rows, destroyed where it does not arrive.
class RecordLoader::Row {
public:
    Row(vekdb& table, Rows& rows)
        : rows_(rows), record_(rows.pool().create(0)) {
        record_->set_container(&table);
    }
    ~Row() { rows_.pool().destroy(record_); }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

    dbrecord& record() { return *record_; }

    /// Takes the next slot, and as many more as it takes for one to be free.
    void append() {
        rows_.append(record_);
        record_ = nullptr;
        rows_.cover(std::uint64_t{rows_.count()} + 1);
    }

private:
    Rows& rows_;
    dbrecord* record_;
};

unsigned RecordLoader::load(int most) {
    if (parts_.rows.count() >= parts_.rows.capacity() || most < 1) return 0;
    while (loaded_ < static_cast<unsigned>(most) && appendNext()) ++loaded_;
    return loaded_;
}

bool RecordLoader::appendNext() {
    Row row(table_, parts_.rows);
    const LineScan line = lines_.read(row.record());
    if (line.steps == 0 || !isComplete(line) || !replacePassedOver(row.record())) return false;
    row.append();
    return true;
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
