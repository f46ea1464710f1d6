#include <vekdb/text_rows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <vekdb/host/text_file.h>
#include <vekdb/table.h>

namespace {

Quor::Ptr<TextBlock> blockOf(std::string_view text) {
    Quor::Ptr<TextBlock> block = TextBlock::create(text.size());
    std::memcpy(block->data(), text.data(), text.size());
    return block;
}

std::vector<DBFieldDesc> columns(unsigned count) {
    std::vector<DBFieldDesc> out;
    for (unsigned i = 0; i < count; ++i) {
        out.push_back({("c" + std::to_string(i)).c_str(), DBFieldTypes::text});
    }
    return out;
}

// A table of one text, filled by a test.
class FromText : public testing::Test {
protected:
    void open(std::string_view text) { rows = std::make_unique<TextRows>(table, blockOf(text)); }
    std::string_view at(std::size_t from, std::size_t size) const {
        return {rows->text() + from, size};
    }
    TextRows::Room room(std::size_t from, std::size_t to) const {
        return {rows->text() + from, rows->text() + to};
    }
    bool append(TextRows::Room room, std::vector<std::string_view> values) {
        return rows->append(room, values.data(), values.size());
    }
    // How many bytes of the text become a row of quoted values; 0 where its line is another one.
    std::size_t appendQuoted(std::size_t from) {
        const TextRows::QuotedLine line = rows->appendQuoted(rows->text() + from);
        lastCount = line.count;
        return line.end != nullptr ? static_cast<std::size_t>(line.end - rows->text()) - from : 0;
    }
    void finish(unsigned count) {
        rows->finish(columns(count));
        rows.reset();
    }
    std::string_view value(unsigned row, unsigned column) const {
        return table.get_record(row)->fieldView(column);
    }
    void expectRow(unsigned row, std::vector<std::string_view> expected) const {
        for (unsigned i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(value(row, i), expected[i]) << i;
            EXPECT_EQ(table.get_record(row)->get_field(
                          static_cast<unsigned short>(i))[expected[i].size()],
                      '\0');
        }
    }

    vekdb table;
    std::unique_ptr<TextRows> rows;
    std::size_t lastCount = 0;
};

}  // namespace

TEST_F(FromText, ValuesStandInTheTextItself) {
    open("ab,c\nd,ef");
    const char* text = rows->text();
    EXPECT_TRUE(append(room(0, 5), {at(0, 2), at(3, 1)}));
    EXPECT_TRUE(append(room(5, 10), {at(5, 1), at(7, 2)}));
    finish(2);
    expectRow(0, {"ab", "c"});
    expectRow(1, {"d", "ef"});
    EXPECT_EQ(value(0, 0).data(), text);
    EXPECT_EQ(value(1, 1).data(), text + 7);
}

TEST_F(FromText, ValuesThatStandApartAreMovedTogether) {
    open("\"a\" , \"bc\";;\"d\"\n");
    EXPECT_TRUE(append(room(0, 16), {at(1, 1), at(7, 2), {}, at(13, 1)}));
    finish(4);
    expectRow(0, {"a", "bc", "", "d"});
}

TEST_F(FromText, ValuesInAnotherOrderThanInTheTextAreCopied) {
    open("first,second\n");
    EXPECT_TRUE(append(room(0, 13), {at(6, 6), at(0, 5)}));
    finish(2);
    expectRow(0, {"second", "first"});
}

TEST_F(FromText, MoreEmptyValuesThanTheRoomHasBytesAreCopied) {
    open("x\ny\n");
    EXPECT_TRUE(append(room(0, 2), {{}, {}, {}, {}, at(0, 1)}));
    EXPECT_TRUE(append(room(2, 4), {at(2, 1)}));
    finish(5);
    expectRow(0, {"", "", "", "", "x"});
    expectRow(1, {"y", "", "", "", ""});
}

TEST_F(FromText, ValuesFromElsewhereAreCopied) {
    open("x\n");
    {
        std::string other = "from elsewhere";
        EXPECT_TRUE(append(room(0, 2), {at(0, 1), other}));
        EXPECT_TRUE(append({}, {other, other}));
        other.assign(other.size(), '?');
    }
    finish(2);
    expectRow(0, {"x", "from elsewhere"});
    expectRow(1, {"from elsewhere", "from elsewhere"});
}

TEST_F(FromText, ALineLongerThanSlicesReachIsKept) {
    const std::string large(70000, 'l');
    open(large + ",b,,\n");
    EXPECT_TRUE(append(room(0, 70005), {at(0, 70000), {}, at(70001, 1), {}}));
    EXPECT_EQ(rows->longest(), 3u);
    finish(4);
    expectRow(0, {large, "", "b", ""});
}

TEST_F(FromText, BytesAreKeptAsTheyAre) {
    const std::string odd("\r\n\\n\"\0 \x80", 8);
    open(odd + "\n");
    EXPECT_TRUE(append(room(0, 9), {at(0, 8)}));
    finish(1);
    expectRow(0, {odd});
}

TEST_F(FromText, EmptyValuesAtTheEndOfARowDoNotCount) {
    open("a,,\n,,\n");
    EXPECT_TRUE(append(room(0, 4), {at(0, 1), {}, {}}));
    EXPECT_TRUE(append(room(4, 7), {{}, {}, {}}));
    EXPECT_EQ(rows->longest(), 1u);
    EXPECT_EQ(rows->valueCount(), 1u);
    EXPECT_EQ(rows->count(), 2u);
    finish(3);
    EXPECT_EQ(table.get_record(1)->get_num_fields(), 3);
    EXPECT_TRUE(table.get_record(1)->is_blank());
}

TEST_F(FromText, TheLastRowMayUseTheByteBehindTheText) {
    open("a,b");
    EXPECT_TRUE(append(room(0, 4), {at(0, 1), at(2, 1)}));
    finish(2);
    expectRow(0, {"a", "b"});
}

TEST_F(FromText, AValueBehindTheLastColumnThatCanBeIsRefused) {
    open("x\n");
    std::vector<std::string_view> values(65536);
    EXPECT_TRUE(append(room(0, 2), values));
    values[65535] = at(0, 1);
    EXPECT_FALSE(append(room(0, 2), values));
    EXPECT_EQ(rows->count(), 1u);
    values.erase(values.begin());
    EXPECT_TRUE(append(room(0, 2), values));
    finish(65535);
    EXPECT_EQ(value(1, 65534), "x");
}

TEST_F(FromText, TheTableIsAsIfItHadBeenLoaded) {
    open("a\n");
    EXPECT_TRUE(append(room(0, 2), {at(0, 1)}));
    finish(2);
    EXPECT_TRUE(table.get_valid());
    EXPECT_FALSE(table.get_modified());
    EXPECT_FALSE(table.get_record(0)->get_changed());
    EXPECT_EQ(table.get_num_fields(), 2u);
    EXPECT_TRUE(table.set_field(0, 1, "b"));
    EXPECT_TRUE(table.get_modified());
    table.get_record(0)->set_field(0, "z");
    expectRow(0, {"z", "b"});
}

TEST_F(FromText, WithoutAnEndTheTableIsEmpty) {
    open("a\n");
    append(room(0, 2), {at(0, 1)});
    rows.reset();
    EXPECT_EQ(table.get_num_records(), 0u);
    EXPECT_FALSE(table.get_valid());
}

TEST_F(FromText, SuchARowIsWrittenAsAnyOther) {
    open("say \"hi\",b\n");
    append(room(0, 11), {at(0, 8), at(9, 1)});
    finish(3);
    TextFile file;
    table.get_record(0)->write(file);
    EXPECT_EQ(file.line(0), "\"say \"\"hi\"\"\",\"b\",\"\"");
}

// Whatever the values are, the line is that of a record which has strings of its own.
TEST_F(FromText, LinesAreThoseOfRowsThatHaveStrings) {
    constexpr unsigned count = 20;
    std::uint32_t chance = 1;
    const auto below = [&](std::uint32_t n) { return (chance = chance * 69069 + 1) / 7 % n; };
    for (unsigned round = 0; round < 300; ++round) {
        std::vector<std::string> values(1 + below(count));
        const std::string_view bytes = round % 2 == 0 ? "abcdefgh" : "ab ,\\\t\"\n\r";
        std::string text;
        for (std::string& value : values) {
            const std::uint32_t size = below(4) == 0 ? below(60) : below(20);
            while (value.size() < size) {
                value += bytes[below(static_cast<std::uint32_t>(bytes.size()))];
            }
            text += value + ",";
        }
        vekdb made;
        TextRows one(made, blockOf(text));
        std::vector<std::string_view> views;
        std::size_t at = 0;
        for (const std::string& value : values) {
            views.emplace_back(one.text() + at, value.size());
            at += value.size() + 1;
        }
        ASSERT_TRUE(one.append({one.text(), one.text() + at}, views.data(), views.size()));
        one.finish(columns(count));
        dbrecord strings(count);
        for (unsigned short i = 0; i < values.size(); ++i) strings.setField(i, values[i].c_str());
        TextFile lines;
        made.get_record(0)->write(lines);
        strings.write(lines);
        ASSERT_EQ(lines.line(0), lines.line(1)) << round;
    }
}

TEST_F(FromText, ManyRowsOfBothKindsOutliveTheReader) {
    std::string text;
    for (int i = 0; i < 20000; ++i) text += std::to_string(10000 + i) + ",x\n";
    open(text);
    for (std::size_t i = 0; i < 20000; ++i) {
        const std::string_view number = at(i * 8, 5);
        const std::string_view letter = at(i * 8 + 6, 1);
        if (i % 3 == 0)
            append(room(i * 8, i * 8 + 8), {letter, number});
        else
            append(room(i * 8, i * 8 + 8), {number, letter});
    }
    finish(2);
    for (unsigned i = 0; i < 20000; ++i) {
        ASSERT_EQ(value(i, i % 3 == 0 ? 1 : 0), std::to_string(10000 + i));
    }
    table.delete_records(0, 19999);
    EXPECT_EQ(value(0, 0), "29999");
}

TEST_F(FromText, QuotedValuesStayWhereTheyStand) {
    open("\"ab\",\"\",\"c,d\"\n\"e\"\r\n");
    const char* text = rows->text();
    EXPECT_EQ(appendQuoted(0), 13u);
    EXPECT_EQ(lastCount, 3u);
    EXPECT_EQ(rows->quotedValue(2), "c,d");
    EXPECT_EQ(rows->quotedValue(3), "");
    EXPECT_EQ(appendQuoted(14), 3u);
    EXPECT_EQ(lastCount, 1u);
    EXPECT_EQ(rows->longest(), 3u);
    EXPECT_EQ(rows->valueCount(), 4u);
    finish(3);
    expectRow(0, {"ab", "", "c,d"});
    expectRow(1, {"e", "", ""});
    EXPECT_EQ(value(0, 2).data(), text + 9);
}

TEST_F(FromText, EmptyQuotedValuesAtTheEndAreCountedAndNotKept) {
    open("\"a\",\"\",\"\"\n\"\",\"\"");
    EXPECT_EQ(appendQuoted(0), 9u);
    EXPECT_EQ(lastCount, 3u);
    EXPECT_EQ(appendQuoted(10), 5u);
    EXPECT_EQ(lastCount, 2u);
    EXPECT_EQ(rows->quotedValue(0), "");
    EXPECT_EQ(rows->longest(), 1u);
    EXPECT_EQ(rows->count(), 2u);
    finish(2);
    expectRow(0, {"a", ""});
    expectRow(1, {"", ""});
}

TEST_F(FromText, OtherLinesAreNoQuotedOnesAndStayAsTheyAre) {
    for (const std::string line :
         {"", "\"", "\"\"", "a", "\"a\",b", "\"a\"x", "\"a\"\"\"", "\" a\"", "\"a \"", "\"a\\\"",
          "\"a\tb\"", "\"a\nb\"", "\"a", "\"a\";\"b\"", "\"a\"\rb"}) {
        rows.reset();
        open(line);
        EXPECT_EQ(appendQuoted(0), 0u) << line;
        EXPECT_EQ(at(0, line.size()), line);
        EXPECT_EQ(rows->count(), 0u) << line;
    }
}

TEST_F(FromText, RowsOfQuotedAndOfMovedValuesStandInOneText) {
    open("\"a\",\"b\"\nc;d\n\"e\",\"f\"\n");
    EXPECT_EQ(appendQuoted(0), 7u);
    EXPECT_TRUE(append(room(8, 12), {at(8, 1), at(10, 1)}));
    EXPECT_EQ(appendQuoted(12), 7u);
    finish(2);
    expectRow(0, {"a", "b"});
    expectRow(1, {"c", "d"});
    expectRow(2, {"e", "f"});
    TextFile file;
    table.get_record(0)->write(file);
    table.get_record(2)->write(file);
    EXPECT_EQ(file.line(0), "\"a\",\"b\"");
    EXPECT_EQ(file.line(1), "\"e\",\"f\"");
}
