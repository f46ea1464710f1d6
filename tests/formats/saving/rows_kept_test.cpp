// Texts of whatever lines are read, a cell or some rows are changed, and the file that becomes of
// them is read again: no row came, none is gone, and nothing else changed.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "formats/formats.h"
#include "formats/log/column_edits.h"
#include "formats/reading/open_log.h"
#include "formats/saving/save_in_place.h"
#include "testing/logs.h"
#include "testing/random.h"
#include "testing/temp_dir.h"

using testing_support::logOf;
using testing_support::Random;
using testing_support::TempDir;
using namespace vek::formats;

namespace {

using Row = std::vector<std::string>;

std::vector<Row> rowsOf(const Log& log) {
    std::vector<Row> rows;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        Row cells;
        for (unsigned i = 0; i < log.columnCount(); ++i) cells.emplace_back(log.cell(row, i));
        while (!cells.empty() && cells.back().empty()) cells.pop_back();
        rows.push_back(std::move(cells));
    }
    return rows;
}

struct Kind {
    const char* name;
    std::string heading;
    std::vector<std::string> pieces;  // of the lines behind it
};

const std::vector<Kind> kinds = {
    {"one.csv", "Name\n", {"\n", "A\n", "\"\"\n", "\"B\"\n", "x,y\n", "\r\n", "5\" z\n"}},
    {"two.csv", "Name,Take\n", {"\n", "A,1\n", "\"\"\n", "B\n", ",\n", "\"C\",\"2\"\n", "1,2,3\n"}},
    {"front.csv", "\nName,Take\n", {"\n", "A,1\n", "B\n", ",\n", "\"C\",\"2\"\r\n"}},
    {"one.tsv", "Name\n", {"\n", "A\n", "\"\"\n", "\"B\"\n", "x\ty\n"}},
    {"one text.tsv", "Name\n", {"\n", "A\n", "5\" z\n", "\"B\"\n", "\r\n"}},
    {"one named.csv", "sep=;\nName\n", {"\n", "A\n", "\"\"\n", "\"B\"\n", ";\n"}},
    {"one nameless.csv", "\n", {"\n", "A\n", "\"\"\n", "\"B\"\r\n"}},
    {"two.tsv", "Name\tTake\n", {"\n", "A\t1\n", "\"B\"\t\"b\"\n", "\t\n", "5\t2\r\n"}},
    {"log.ale",
     "Heading\nFPS\t24\n\nColumn\nName\tTake\n\nData\n",
     {"A\t1\n", "\n", "B\n", "\t2\n", "\"C\"\t3\t\n"}},
    {"one.ale",
     "Heading\nFPS\t24\n\nColumn\nName\n\nData\n",
     {"A\n", "\n", "\t\n", "B\t3\n", "\"C\"\r\n"}},
    {"log.jsonl",
     "{\"Name\": \"H\", \"Take\": 2}\n",
     {"{\"Name\": \"A\", \"Take\": 1}\n", "{}\n", "\n", "{\"Take\": \"-0\"}\n"}},
    {"one.jsonl", "{\"Name\": \"H\"}\n", {"{\"Name\": \"A\"}\n", "{}\n", "\n"}},
    {"one.vek",
     "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\"\n\"text\"\n\"Name\"\n",
     {"\"A\"\n", "\"\"\n", "B\n"}},
    {"log.vek",
     "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n\"Name\",\"Take\"\n",
     {"\"A\",\"1\"\n", "\"\",\"\"\n", "B,2\n", "\"C\"\n", "\"a\"\"b\",\"\\n\"\n"}},
};

std::string textOf(const Kind& kind, Random& random) {
    std::string text = kind.heading;
    for (std::size_t count = 1 + random.below(6); count > 0; --count) {
        text += random.pick(kind.pieces);
    }
    if (random.oneIn(4)) text.pop_back();
    return text;
}

class Kept {
public:
    Kept(const Kind& kind, bool hasNoHeading, const std::string& text) : name_(kind.name) {
        opening_.wishes.hasNoHeading = hasNoHeading;
        folder_.write(name_, text);
        log_ = openLogToCopy(folder_.file(name_).string(), opening_);
        expected_ = rowsOf(log_);
        rows_ = InPlace(log_).rows;
    }

    const Log& log() const { return log_; }

    void set(unsigned row, unsigned column, const std::string& text) {
        log_.table->get_record(row)->setField(static_cast<unsigned short>(column), cellText(text));
        expected_ = rowsOf(log_);
    }
    void remove(std::size_t place) {
        rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(place));
        expected_.erase(expected_.begin() + static_cast<std::ptrdiff_t>(place));
    }
    // By their contents, as sorting moves them.
    void reverse() {
        std::reverse(rows_.begin(), rows_.end());
        std::reverse(expected_.begin(), expected_.end());
    }
    void add(const std::string& text) {
        log_.table->add_records(1);
        rows_.push_back(log_.rowCount() - 1);
        set(log_.rowCount() - 1, 0, text);
    }
    void removeColumn(unsigned column) {
        ColumnEdits(log_).remove(column);
        expected_ = rowsOf(log_);
    }

    // Nothing where the change is refused.
    void check() {
        Output out("text");
        Losses losses;
        try {
            if (!writeInPlace(InPlace(log_, rows_), false, out, losses)) return;
            out.close();
        } catch (const Failure&) {
            return;
        }
        const std::string text = out.take();
        // A file without a heading has none and no row then, and is not read as a log.
        if (opening_.wishes.hasNoHeading && rows_.empty()) return;
        SCOPED_TRACE(testing::PrintToString(rowsOf(log_)));
        EXPECT_EQ(rowsOf(logOf(text, name_, opening_)), expected_) << text;
    }

private:
    std::string name_;
    Opening opening_;
    TempDir folder_;
    Log log_;
    std::vector<Row> expected_;
    std::vector<unsigned> rows_;
};

void change(Kept& kept, Random& random) {
    const Log& log = kept.log();
    if (log.columnCount() > 1 && random.oneIn(4)) {
        return kept.removeColumn(static_cast<unsigned>(random.below(log.columnCount())));
    }
    const std::vector<std::string> texts = {"", "x", "\"q\" r", "5\" s", "\"t\""};
    if (random.oneIn(4) && log.columnCount() > 0) return kept.add(random.pick(texts));
    if (log.rowCount() == 0) return;
    const auto row = static_cast<unsigned>(random.below(log.rowCount()));
    const bool saysOrder = log.format == vek::Format::jsonl && row == 0;  // of the columns
    if (random.oneIn(4) && log.format != vek::Format::jsonl) return kept.reverse();
    if (random.oneIn(3) && !saysOrder) return kept.remove(row);
    const auto column = static_cast<unsigned>(random.below(log.columnCount()));
    if (log.columnCount() > 0) kept.set(row, column, random.pick(texts));
}

}  // namespace

TEST(RowsKept, AreAllButThoseThatWereTakenAway) {
    Random random;
    for (int i = 0; i < 500; ++i) {
        const Kind& kind = random.pick(kinds);
        const bool mayHaveNone = std::string_view(kind.name).starts_with("one") ||
                                 std::string_view(kind.name).starts_with("two");
        const std::string text = textOf(kind, random);
        SCOPED_TRACE(kind.name + (":\n" + text));
        try {
            Kept kept(kind, mayHaveNone && random.oneIn(3), text);
            change(kept, random);
            kept.check();
        } catch (const Failure& failure) {
            ADD_FAILURE() << failure.text;
        }
        if (HasFailure()) return;
    }
}

namespace {

std::vector<Row> rowsReadOf(const std::string& text, const std::string& name) {
    try {
        return rowsOf(logOf(text, name));
    } catch (const Failure& failure) {
        ADD_FAILURE() << failure.text;
        return {};
    }
}

// Nothing where it is refused.
std::optional<std::string> copyOf(const Log& log, vek::Format target, Losses& losses) {
    Output out("text");
    try {
        writeSheet(wholeSheet(log), target, {}, out, losses);
        out.close();
    } catch (const Failure&) {
        return {};
    }
    return out.take();
}

}  // namespace

TEST(RowsKept, AreThoseOfACopyInAnotherFormat) {
    const vek::Format targets[] = {vek::Format::csv,  vek::Format::tsv,   vek::Format::ale,
                                   vek::Format::json, vek::Format::jsonl, vek::Format::table};
    Random random;
    for (int i = 0; i < 500 && !HasFailure(); ++i) {
        const Kind& kind = random.pick(kinds);
        const vek::Format target = random.pick(targets);
        const std::string text = textOf(kind, random);
        SCOPED_TRACE(kind.name + (":\n" + text));
        const Log log = logOf(text, kind.name);
        if (log.rowCount() == 0) continue;
        Losses losses;
        const std::optional<std::string> copy = copyOf(log, target, losses);
        if (!copy) continue;
        const std::vector<Row> rows = rowsReadOf(*copy, concat("x.", formatName(target)));
        EXPECT_EQ(rows.size(), log.rowCount()) << *copy;
        if (losses.count() == 0) {
            EXPECT_EQ(rows, rowsOf(log)) << *copy;
        }
    }
}
