#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include <vekdb/arrow/arrow.h>
#include <vekdb/host/text_util.h>
#include "engines/duckdb.h"
#include "testing/random.h"
#include "testing/temp_dir.h"
#include "testing/views.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct Sums {
    std::string rows;
    std::string bytes;
    std::string numbers;

    bool operator==(const Sums&) const = default;
};

void PrintTo(const Sums& sums, std::ostream* out) {
    *out << sums.rows << " rows, " << sums.bytes << " bytes, " << sums.numbers;
}

// A text, a number and some blanks in each row.
std::unique_ptr<vekdb> randomTable(testing_support::Random& random, unsigned rows) {
    auto table = std::make_unique<vekdb>(textColumns({"Name", "Take", "Note"}));
    for (unsigned row = 0; row < rows; ++row) {
        const std::string take = std::to_string(random.below(100000));
        addRow(*table, {random.text("abc \xC3\xA9\n\"'", 0).c_str(), take.c_str(),
                        random.text("xyz \"\n,", 30).c_str()});
        table->setField(row, 0, random.oneIn(2) ? "Caf\xC3\xA9" : "");
        table->set_tag(row, random.oneIn(3) ? 1 : 0);
    }
    return table;
}

Sums sumsOf(const VDBBase& source) {
    std::size_t bytes = 0;
    long long numbers = 0;
    for (unsigned row = 0; row < source.get_num_records(); ++row) {
        const dbrecord& record = *source.get_record(row);
        bytes += record.fieldView(0).size() + record.fieldView(2).size();
        numbers += std::atoll(record.get_field(1));
    }
    return {std::to_string(source.get_num_records()), std::to_string(bytes),
            std::to_string(numbers)};
}

Sums sumsIn(DuckDb& engine, const std::string& table) {
    const Answer answer = engine.ask(
        "SELECT count(*), coalesce(sum(strlen(\"Name\") + strlen(\"Note\")), 0), "
        "coalesce(sum(\"Take\"::BIGINT), 0) FROM " +
        table);
    return {answer[0][0], answer[0][1], answer[0][2]};
}

// The way of a type to a table is the text that the engine itself writes of the value.
void expectSameText(DuckDb& engine, const std::string& value) {
    std::string why;
    auto table = engine.tableOf("SELECT " + value + " AS v", why);
    ASSERT_NE(table, nullptr) << value << ": " << why;
    EXPECT_EQ(columnOf(*table, 0).at(0), engine.one("SELECT (" + value + ")::VARCHAR")) << value;
}

std::string textIn(DuckDb& engine, const std::string& value) {
    std::string why;
    auto table = engine.tableOf("SELECT " + value + " AS v", why);
    return table != nullptr ? columnOf(*table, 0).at(0) : why;
}

}  // namespace

TEST(DuckDbScans, TablesAndViewsWithTheSameCountsAndSums) {
    testing_support::Random random;
    DuckDb engine;
    for (const unsigned rows : {0u, 1u, 2047u, 2048u, 2049u, 20000u}) {
        auto table = randomTable(random, rows);
        ArrowExport how;
        how.rowsPerBatch = static_cast<std::uint32_t>(1 + random.below(5000));
        how.bytesPerBatch = random.oneIn(3) ? std::uint64_t{1} << 40 : 1 + random.below(200000);
        const std::string name = "t" + std::to_string(rows);
        engine.take(name, exportArrow(*table, how));
        EXPECT_EQ(sumsIn(engine, name), sumsOf(*table));
        EXPECT_EQ(engine.one("SELECT count(*) FROM " + name + " WHERE \"Note\" IS NULL"), "0");

        VDBView view(table.get());
        for (unsigned row = rows; row > 0; row -= std::min(row, 3u)) {
            view->append(static_cast<int>(row - 1));
        }
        engine.take("v" + name, exportArrow(*view, how));
        EXPECT_EQ(sumsIn(engine, "v" + name), sumsOf(*view));
    }
}

TEST(DuckDbScans, TagsAsBooleansAndAsNumbers) {
    testing_support::Random random;
    DuckDb engine;
    auto table = randomTable(random, 5000);
    const std::string tagged = std::to_string(table->get_num_tags());
    engine.take("flags", exportArrow(*table, {.tags = ArrowTags::flags}));
    engine.take("numbers", exportArrow(*table, {.tags = ArrowTags::numbers}));
    EXPECT_EQ(engine.one("SELECT count(*) FROM flags WHERE \"Tag\""), tagged);
    EXPECT_EQ(engine.one("SELECT sum(\"Tag\") FROM numbers"), tagged);
    EXPECT_EQ(engine.one("SELECT DISTINCT typeof(\"Tag\") FROM flags"), "BOOLEAN");
}

TEST(DuckDbScans, BytesThatAreNoTextAsBlobs) {
    DuckDb engine;
    auto table = namedTable({"caf\xE9", ""});
    engine.take("t", exportArrow(*table, {.bytes = ArrowBytes::binary}));
    EXPECT_EQ(engine.one("SELECT hex(\"Name\") FROM t LIMIT 1"), "636166E9");
}

TEST(DuckDbScans, AQueryThatStopsBeforeTheEnd) {
    testing_support::Random random;
    DuckDb engine;
    auto table = randomTable(random, 30000);
    ArrowArrayStream stream = exportArrow(*table, {.rowsPerBatch = 100});
    table.reset();
    engine.take("t", stream);
    EXPECT_EQ(engine.ask("SELECT * FROM t LIMIT 7").size(), 7u);
}

TEST(DuckDbAnswers, BecomeATableWithTheTextsThatTheEngineWrites) {
    DuckDb engine;
    for (const char* value :
         {"'text'", "''", "repeat('long ', 50)", "127::TINYINT", "(-32768)::SMALLINT", "7::INTEGER",
          "(-9223372036854775807)::BIGINT", "255::UTINYINT", "18446744073709551615::UBIGINT",
          "123.45::DECIMAL(5,2)", "(-0.05)::DECIMAL(18,2)", "12345678901234567.8900::DECIMAL(38,4)",
          "99::DECIMAL(4,0)", "true", "DATE '2026-11-22'", "DATE '1600-02-29'", "TIME '23:59:59.5'",
          "TIME '01:02:03'", "'a'::ENUM('a', 'b')"}) {
        expectSameText(engine, value);
    }
}

TEST(DuckDbAnswers, NumbersAndInstantsAreWrittenAsIsSaid) {
    DuckDb engine;
    EXPECT_EQ(textIn(engine, "0.1::DOUBLE"), "0.1");
    EXPECT_EQ(textIn(engine, "100000::DOUBLE"), "100000");
    EXPECT_EQ(textIn(engine, "TIMESTAMP '2026-11-22 23:59:59.25'"), "2026-11-22T23:59:59.25");
    EXPECT_EQ(textIn(engine, "NULL::INTEGER"), "");
    EXPECT_THAT(textIn(engine, "[1, 2]"), HasSubstr("column 1 \"v\": its type, format \"+l\""));
}

TEST(DuckDbAnswers, OfATableAreThatTable) {
    testing_support::Random random;
    DuckDb engine;
    auto table = randomTable(random, 10000);
    engine.take("t", exportArrow(*table));
    std::string why;
    auto back = engine.tableOf("SELECT * FROM t", why);
    ASSERT_NE(back, nullptr) << why;
    for (unsigned column = 0; column < 3; ++column) {
        EXPECT_EQ(columnOf(*back, column), columnOf(*table, column));
    }
}

// The program writes through the same library.
TEST(DuckDbReads, WhatVekConvertWritesAsParquet) {
    testing_support::TempDir folder;
    std::ofstream(folder.file("in.csv"))
        << "Name,name,Take,\"q\"\"t\"\nA,\"two\nlines\",01,1e5\n,\"say \"\"x\"\"\",2026-01-01,\n";
    const std::string made = folder.file("out.parquet").string();
    const std::string command = "VEK_DUCKDB=\"$VEKDB_DUCKDB\" \"$VEK_PROGRAM\" convert '" +
                                folder.file("in.csv").string() + "' '" + made + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
    DuckDb engine;
    const std::string from = " FROM read_parquet('" + made + "')";
    EXPECT_THAT(engine.ask("SELECT *" + from),
                ElementsAre(ElementsAre("A", "two\nlines", "01", "1e5"),
                            ElementsAre("", "say \"x\"", "2026-01-01", "")));
    EXPECT_THAT(engine.ask("SELECT column_name, column_type FROM (DESCRIBE SELECT *" + from + ")"),
                ElementsAre(ElementsAre("Name", "VARCHAR"), ElementsAre("name 2", "VARCHAR"),
                            ElementsAre("Take", "VARCHAR"), ElementsAre("q\"t", "VARCHAR")));
}

TEST(DuckDbReads, ParquetOfManyRowsInTheirOrderAndOfNone) {
    testing_support::TempDir folder;
    for (const int rows : {0, 200000}) {
        std::ofstream in(folder.file("in.csv"));
        in << "n,text\n";
        for (int row = 0; row < rows; ++row) in << row << ",some text " << row % 7 << '\n';
        in.close();
        const std::string made = folder.file("out.parquet").string();
        const std::string command = "VEK_DUCKDB=\"$VEKDB_DUCKDB\" \"$VEK_PROGRAM\" convert '" +
                                    folder.file("in.csv").string() + "' - --to parquet > '" + made +
                                    "'";
        ASSERT_EQ(std::system(command.c_str()), 0);
        DuckDb engine;
        const std::string from = " FROM read_parquet('" + made + "')";
        EXPECT_EQ(engine.one("SELECT count(*)" + from), std::to_string(rows));
        EXPECT_EQ(engine.one("SELECT count(*) FROM (SELECT n, row_number() OVER () - 1 AS r" +
                             from + ") WHERE n::BIGINT <> r"),
                  "0");
    }
}
