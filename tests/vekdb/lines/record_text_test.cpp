#include <gtest/gtest.h>

#include <string>

#include <vekdb/record.h>
#include "testing/lines.h"
#include "testing/random.h"
#include "vekdb/lines/record_lines.h"
#include "vekdb/record/record_access.h"

namespace {

using testing_support::linesOf;
using testing_support::quotedLine;
using testing_support::Random;
using testing_support::Strings;
using testing_support::valuesOf;

dbrecord recordOf(const Strings& values) {
    dbrecord record(static_cast<unsigned short>(values.size()));
    for (unsigned i = 0; i < values.size(); ++i) {
        record.setField(static_cast<unsigned short>(i),
                        LightweightString<char>(std::string_view(values[i])));
    }
    return record;
}

std::string written(const dbrecord& record) {
    TextFile file;
    EXPECT_EQ(1, record.write(file));
    EXPECT_EQ(1u, file.size());
    return std::string(file.line(0));
}

Strings readBack(const std::string& line) {
    TextFile file;
    file.appendLine(line.c_str());
    dbrecord record(0);
    record.read(file);
    return valuesOf(record);
}

Strings roundTrip(const Strings& values) {
    return readBack(written(recordOf(values)));
}

TEST(RecordWrite, QuotesEveryValueWithCommasBetween) {
    EXPECT_EQ("\"A001\",\"\",\"3\"", written(recordOf({"A001", "", "3"})));
    EXPECT_EQ("\"\"", written(recordOf({""})));
}

TEST(RecordWrite, RecordWithoutValuesIsAnEmptyLine) {
    EXPECT_EQ("", written(dbrecord(0)));
}

TEST(RecordWrite, EscapesQuotesAndLineFeedsAndDropsCarriageReturns) {
    EXPECT_EQ("\"a\"\"b\"", written(recordOf({"a\"b"})));
    EXPECT_EQ("\"a\\nb\"", written(recordOf({"a\r\nb\r"})));
    EXPECT_EQ("\"\"\"\"\"\\n\\n\"", written(recordOf({"\"\"\n\r\n"})));
}

TEST(RecordWrite, EveryOtherByteIsWrittenAsItIs) {
    std::string bytes;
    for (int c = 1; c < 256; ++c) {
        if (c != '\r' && c != '\n' && c != '"') bytes += static_cast<char>(c);
    }
    EXPECT_EQ("\"" + bytes + "\"", written(recordOf({bytes})));
}

TEST(RecordWrite, AValueEndsAtItsFirstNul) {
    EXPECT_EQ("\"a\",\"c\"", written(recordOf({std::string("a\0b", 3), "c"})));
}

TEST(RecordWrite, ValuesThatWereNeverStoredAreWrittenAsEmpty) {
    dbrecord record(4);
    record.set_field(1, "b");
    EXPECT_EQ("\"\",\"b\",\"\",\"\"", written(record));
}

TEST(RecordWrite, ClearsTheChangedFlag) {
    const dbrecord record = recordOf({"a"});
    ASSERT_TRUE(record.get_changed());
    written(record);
    EXPECT_FALSE(record.get_changed());
}

TEST(RecordWrite, AppendsBehindWhatTheFileHolds) {
    TextFile file;
    file.appendLine("first");
    recordOf({"a"}).write(file);
    recordOf({"b"}).write(file);
    EXPECT_EQ((Strings{"first", "\"a\"", "\"b\""}), linesOf(file));
}

TEST(RecordWrite, LongValuesOfSpecialsFit) {
    const std::string quotes(5000, '"');
    EXPECT_EQ("\"" + quotes + quotes + "\"", written(recordOf({quotes})));
}

// What a table is told of its records.
struct Told : RecordOwner {
    int changes = 0;
    int readings = 0;

private:
    void recordChanged() override { ++changes; }
    void recordRead() override { ++readings; }
};

struct RecordRead : testing::Test {
    RecordRead() : values(2), record(&values) { RecordAccess::setOwner(values, &told); }

    int read(const char* line) {
        TextFile file;
        file.appendLine(line);
        return record->read(file);
    }

    Told told;
    dbrecord values;
    dbrecord* record;
};

TEST_F(RecordRead, AnswersTheScanStepsAndStoresTheValues) {
    EXPECT_EQ(3, read("\"a\",\t\"b\""));
    EXPECT_EQ((Strings{"a", "b"}), valuesOf(*record));
}

TEST_F(RecordRead, FormerValuesAreGone) {
    read("\"a\",\"b\",\"c\"");
    EXPECT_EQ(1, read("\"d\""));
    EXPECT_EQ(Strings{"d"}, valuesOf(*record));
}

TEST_F(RecordRead, AnEmptyValueIsAValue) {
    EXPECT_EQ(3, read("a,,b"));
    EXPECT_EQ((Strings{"a", "", "b"}), valuesOf(*record));
    EXPECT_EQ(1, read("a,"));
    EXPECT_EQ(Strings{"a"}, valuesOf(*record));
}

TEST_F(RecordRead, AnEssentiallyEmptyLineLeavesNoValuesAndNoMarks) {
    EXPECT_EQ(0, read(" \t\v\f\r "));
    EXPECT_EQ(0u, record->get_num_fields());
    EXPECT_FALSE(record->get_changed());
    EXPECT_EQ(0, told.readings);
    EXPECT_EQ(0, told.changes);
}

TEST_F(RecordRead, ALineOfOneControlCharacterHasAStepAndNoValues) {
    EXPECT_EQ(1, read("\x01"));
    EXPECT_EQ(0u, record->get_num_fields());
    EXPECT_TRUE(record->get_changed());
}

TEST_F(RecordRead, MarksTheRecordAndTellsItsOwner) {
    read("\"a\"");
    EXPECT_TRUE(record->get_changed());
    EXPECT_EQ(1, told.readings);
}

TEST_F(RecordRead, ARecordWithoutATableIsMarkedToo) {
    dbrecord loose(0);
    TextFile file;
    file.appendLine("\"a\"");
    EXPECT_EQ(1, loose.read(file));
    EXPECT_TRUE(loose.get_changed());
}

TEST_F(RecordRead, EveryReadTakesALineAlsoPastTheEnd) {
    TextFile file;
    file.appendLine("\"a\"");
    file.appendLine("");
    file.appendLine("\"b\"");
    EXPECT_EQ(1, record->read(file));
    EXPECT_EQ(0, record->read(file));
    EXPECT_EQ(1, record->read(file));
    EXPECT_EQ(Strings{"b"}, valuesOf(*record));
    EXPECT_EQ(0, record->read(file));
    EXPECT_EQ(0, record->read(file));
    EXPECT_EQ(5u, file.currentLine);
    file.currentLine = 0xFFFFFFFF;
    EXPECT_EQ(0, record->read(file));
    EXPECT_EQ(0xFFFFFFFF, file.currentLine);
}

TEST_F(RecordRead, TheFilesTextStays) {
    const char* line = "\"a\"\"b\\n\" , \"c\"";
    TextFile file;
    file.appendLine(line);
    record->read(file);
    EXPECT_EQ(Strings{line}, linesOf(file));
    file.currentLine = 0;
    EXPECT_EQ(2, record->read(file));
    EXPECT_EQ((Strings{"a\"b\n", "c"}), valuesOf(*record));
}

TEST_F(RecordRead, MoreValuesThanARecordHoldsAreDropped) {
    const std::string line(65538, ',');
    EXPECT_EQ(65538, read(line.c_str()));
    EXPECT_EQ(65535u, record->get_num_fields());
}

TEST_F(RecordRead, ValuesOutliveTheFile) {
    read("\"a\",\"b\"");
    EXPECT_STREQ("b", record->get_field(1));
}

TEST(RecordText, QuotesCommasAndLineFeedsReadBackEqual) {
    const std::string value = "a\"b,c\n";
    EXPECT_EQ("\"a\"\"b,c\\n\"", written(recordOf({value})));
    EXPECT_EQ(Strings{value}, roundTrip({value}));
}

TEST(RecordText, ABackslashBeforeAnNReadsBackAsALineFeed) {
    EXPECT_EQ("\"C:\\new\"", written(recordOf({"C:\\new"})));
    EXPECT_EQ(Strings{"C:\new"}, roundTrip({"C:\\new"}));
}

TEST(RecordText, BlanksAtBothEndsAreWrittenButDoNotComeBack) {
    EXPECT_EQ("\"  a b\t\"", written(recordOf({"  a b\t"})));
    EXPECT_EQ(Strings{"a b"}, roundTrip({"  a b\t"}));
}

TEST(RecordText, KnownLosses) {
    EXPECT_EQ(Strings{"\\\\n"}, roundTrip({"\\\n"}));
    EXPECT_EQ(Strings{"\\\\"}, roundTrip({"\\\\"}));
    EXPECT_EQ(Strings{"ab"}, roundTrip({"a\rb"}));
    EXPECT_EQ(Strings{"\nab"}, roundTrip({"\nab"}));
}

TEST(RecordText, AValueOfFiveThousandIsCutAndLosesAByte) {
    const Strings cut = readBack(std::string(5000, 'x'));
    ASSERT_EQ(2u, cut.size());
    EXPECT_EQ(4095u, cut[0].size());
    EXPECT_EQ(904u, cut[1].size());
}

TEST(RecordText, WhatTheReaderDoesNotTouchComesBackEqual) {
    Random random;
    for (int i = 0; i < 2000; ++i) {
        Strings values(1 + random.below(6));
        for (std::string& value : values) {
            value = "<" + random.text("ab\", \n\t\x01\x7F\xFFxyz", 60) + ">";
        }
        ASSERT_EQ(values, roundTrip(values));
    }
}

// Records on slices of a text write what records of strings write.
class SlicedRecord : public testing::Test {
protected:
    void stand(const std::string& line, dbrecord& record) {
        TextFile file;
        file.appendLine(line.c_str());
        TextLines lines(file, TextLines::Mark::none);
        lines.read(record);
    }
};

TEST_F(SlicedRecord, PlainlyQuotedValuesAreWrittenAsTheyStood) {
    const std::string line = "\"A001\",\"\",\"b,c\",\"\xE9\"";
    dbrecord record(0);
    stand(line, record);
    EXPECT_EQ(line, written(record));
    EXPECT_EQ((Strings{"A001", "", "b,c", "\xE9"}), valuesOf(record));
    EXPECT_EQ(line, written(record));
}

TEST_F(SlicedRecord, MovedValuesAreQuotedAnew) {
    dbrecord record(0);
    stand(" a ,\"b\"\"c\\n\",", record);
    EXPECT_EQ("\"a\",\"b\"\"c\\n\"", written(record));
}

TEST_F(SlicedRecord, ChangedAndResizedRecordsAreWrittenAsTheyAreNow) {
    const int unread = 0;
    dbrecord record(0);
    stand("\"a\",\"b\",\"c\"", record);
    record.resizeRecord(4, &unread, false);
    EXPECT_EQ("\"a\",\"b\",\"c\",\"\"", written(record));
    record.resizeRecord(2, &unread, false);
    EXPECT_EQ("\"a\",\"b\"", written(record));
    record.set_field(0, "x\"y");
    EXPECT_EQ("\"x\"\"y\",\"b\"", written(record));
    stand("\"a\",\"b\",\"c\"", record);
    record.removeField(2);
    EXPECT_EQ("\"a\",\"b\"", written(record));
    record.removeField(0);
    EXPECT_EQ("\"b\"", written(record));
    record.clear();
    EXPECT_EQ("\"\"", written(record));
}

TEST_F(SlicedRecord, ACopyIsWrittenTheSame) {
    dbrecord record(0);
    stand("\"a\",\"b\"", record);
    const dbrecord copy(record);
    record.set_field(1, "c");
    EXPECT_EQ("\"a\",\"b\"", written(copy));
    EXPECT_EQ("\"a\",\"c\"", written(record));
}

TEST_F(SlicedRecord, AValueOfTheSameLengthIsWrittenInPlace) {
    const std::string line = "\"one\",\"two\"";
    dbrecord record(0);
    stand(line, record);
    EXPECT_TRUE(record.set_field(0, " abc"));
    EXPECT_TRUE(record.get_changed());
    EXPECT_EQ("\"abc\",\"two\"", written(record));
    record.set_field(1, record.get_field(0));
    EXPECT_EQ((Strings{"abc", "abc"}), valuesOf(record));
    record.set_field(1, "a\"b");
    EXPECT_EQ("\"abc\",\"a\"\"b\"", written(record));
}

TEST_F(SlicedRecord, CopiesDoNotSeeEachOthersChanges) {
    dbrecord record(0);
    stand("\"one\",\"two\"", record);
    dbrecord copy(record);
    record.set_field(0, "abc");
    copy.set_field(1, "xyz");
    const dbrecord second(copy);
    copy.set_field(0, "def");
    EXPECT_EQ((Strings{"abc", "two"}), valuesOf(record));
    EXPECT_EQ((Strings{"def", "xyz"}), valuesOf(copy));
    EXPECT_EQ((Strings{"one", "xyz"}), valuesOf(second));
}

TEST_F(SlicedRecord, AStringTakenBeforeAChangeStays) {
    dbrecord record(0);
    stand("\"one\",\"two\"", record);
    const LightweightString<char> taken = record.getField(0);
    record.set_field(0, "abc");
    EXPECT_EQ("one", taken.view());
    EXPECT_STREQ("abc", record.get_field(0));
}

}  // namespace
