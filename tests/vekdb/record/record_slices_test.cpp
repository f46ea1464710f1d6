#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <vekdb/host/text_block.h>
#include <vekdb/record.h>
#include "vekdb/record/line_store.h"
#include "vekdb/record/record_access.h"
#include "vekdb/record/value_copies.h"

#include "testing/random.h"

// A record that stands on slices of its file's text behaves as one of strings does.
namespace {

struct OnSlices : testing::Test {
    // The values stand as they were quoted: three bytes between one and the next.
    OnSlices() : record(0) {
        static const char text[] = "\"A001\0,\"\0,\"slate 12\0\n";
        auto block = TextBlock::create(sizeof text);
        std::memcpy(block->data(), text, sizeof text);
        auto* store = new LineStore(block);
        LineSlices* slices = store->addSlices(3, 1, 3);
        slices->next()[0] = 7;
        slices->next()[1] = 10;
        slices->next()[2] = 21;
        store->addReferences(1);
        RecordAccess::adopt(record, slices, 3);
        store->release();
    }
    dbrecord record;
};

TEST_F(OnSlices, ValuesAreRead) {
    EXPECT_EQ(3, record.get_num_fields());
    EXPECT_EQ("A001", record.fieldView(0));
    EXPECT_EQ("", record.fieldView(1));
    EXPECT_STREQ("slate 12", record.get_field(2));
    EXPECT_EQ(nullptr, record.get_field(3));
    EXPECT_FALSE(record.is_blank());
    EXPECT_FALSE(record.get_changed());
}

TEST_F(OnSlices, AStringAskedForIsSharedWithTheNextAsker) {
    LightweightString<char> first = record.getField(0);
    LightweightString<char> second = record.getField(0);
    EXPECT_EQ(first.c_str(), second.c_str());
    EXPECT_STREQ("A001", first.c_str());
    EXPECT_TRUE(record.getField(1).empty());
    EXPECT_FALSE(record.get_changed());
}

TEST_F(OnSlices, APointerStaysValidWhenTheStringIsAskedFor) {
    const char* before = record.get_field(2);
    record.getField(2);
    EXPECT_STREQ("slate 12", before);
}

TEST_F(OnSlices, ChangingOneValueKeepsTheOthers) {
    EXPECT_TRUE(record.set_field(1, "new"));
    EXPECT_TRUE(record.set_field(2, ""));
    EXPECT_STREQ("A001", record.get_field(0));
    EXPECT_STREQ("new", record.get_field(1));
    EXPECT_STREQ("", record.get_field(2));
    EXPECT_TRUE(record.get_changed());
}

TEST_F(OnSlices, AValueOfTheSameLengthTakesTheOldOnesPlaceWhereItIsWrittenAsItIs) {
    const char* const place = record.fieldView(0).data();
    EXPECT_TRUE(record.set_field(0, "B777"));
    EXPECT_EQ(record.fieldView(0).data(), place);
    for (const char* value : {"B\"77", "B\n77"}) {
        EXPECT_TRUE(record.set_field(0, value));
        EXPECT_NE(record.fieldView(0).data(), place);
        EXPECT_STREQ(record.get_field(0), value);
    }
}

TEST_F(OnSlices, AViewOfNothingEmptiesAValue) {
    EXPECT_TRUE(record.set_field(0, std::string_view(), false));
    EXPECT_TRUE(record.set_field(1, std::string_view(), false));
    EXPECT_TRUE(record.set_field(2, static_cast<const char*>(nullptr)));
    EXPECT_EQ("", record.fieldView(0));
    EXPECT_EQ("", record.fieldView(1));
    EXPECT_EQ("", record.fieldView(2));
}

TEST_F(OnSlices, AnEqualValueChangesNothing) {
    EXPECT_TRUE(record.setField(0, "A001"));
    EXPECT_FALSE(record.get_changed());
}

TEST_F(OnSlices, CopiesOutliveTheOriginal) {
    auto original = std::make_unique<dbrecord>(record);
    dbrecord copy(*original);
    original->set_field(0, "B002");
    dbrecord changed(*original);
    original.reset();
    record.clear();
    EXPECT_STREQ("A001", copy.get_field(0));
    EXPECT_STREQ("B002", changed.get_field(0));
    EXPECT_STREQ("slate 12", changed.get_field(2));
}

TEST_F(OnSlices, GrowingAddsEmptyValues) {
    int width = 0;
    record.resizeRecord(5, &width, false);
    EXPECT_EQ("", record.fieldView(4));
    EXPECT_TRUE(record.set_field(4, "e"));
    EXPECT_STREQ("e", record.get_field(4));
    EXPECT_STREQ("", record.get_field(3));
    EXPECT_STREQ("slate 12", record.get_field(2));
}

TEST_F(OnSlices, ValuesThatWereDroppedDoNotComeBack) {
    int width = 0;
    record.resizeRecord(1, &width, false);
    record.resizeRecord(3, &width, false);
    EXPECT_EQ("", record.fieldView(2));
    EXPECT_TRUE(record.set_field(1, "b"));
    EXPECT_EQ("", record.fieldView(2));
}

TEST_F(OnSlices, DroppedValuesOfAChangedRecordDoNotComeBackEither) {
    int width = 0;
    record.set_field(0, "x");
    record.resizeRecord(1, &width, false);
    record.resizeRecord(3, &width, false);
    record.set_field(2, "c");
    EXPECT_EQ("", record.fieldView(1));
    EXPECT_EQ("c", record.fieldView(2));
}

TEST_F(OnSlices, RemovingAValueMovesTheLaterOnesDown) {
    record.removeField(0);
    EXPECT_EQ(2, record.get_num_fields());
    EXPECT_STREQ("", record.get_field(0));
    EXPECT_STREQ("slate 12", record.get_field(1));
}

TEST_F(OnSlices, ValuesAreReadTogetherAsTheyAreOneByOne) {
    std::string_view values[5];
    for (const bool isChanged : {false, true}) {
        if (isChanged) record.setField(1, LightweightString<char>("changed"));
        record.fieldViews(values, 5);
        for (unsigned i = 0; i < 5; ++i) EXPECT_EQ(record.fieldView(i), values[i]) << i;
        EXPECT_NE(nullptr, values[4].data());
    }
}

TEST_F(OnSlices, RemovingTheLastValueLeavesTheRest) {
    record.removeField(2);
    EXPECT_EQ(2, record.get_num_fields());
    EXPECT_STREQ("A001", record.get_field(0));
    EXPECT_EQ(nullptr, record.get_field(2));
}

TEST_F(OnSlices, TextsThatWereAskedForStayWhereTheyAreWhenAnotherValueIsRemoved) {
    const char* last = record.get_field(2);
    record.removeField(0);
    EXPECT_EQ(last, record.get_field(1));
    record.removeField(0);
    EXPECT_STREQ("slate 12", last);
    EXPECT_STREQ("slate 12", record.get_field(0));
    EXPECT_EQ(1, record.get_num_fields());
}

TEST_F(OnSlices, APatchGoesAlongWhenAnotherValueIsRemovedAndGoesWithItsOwn) {
    record.set_field(1, "patched");
    record.set_field(2, "last");
    dbrecord other(record);
    record.removeField(0);
    EXPECT_STREQ("patched", record.get_field(0));
    EXPECT_STREQ("last", record.get_field(1));
    other.removeField(1);
    EXPECT_STREQ("A001", other.get_field(0));
    EXPECT_STREQ("last", other.get_field(1));
}

TEST_F(OnSlices, ACopyOfARecordWithoutAValueHasTheOthersToo) {
    record.removeField(0);
    dbrecord copy(record);
    copy.set_field(0, "x");
    EXPECT_STREQ("x", copy.get_field(0));
    EXPECT_STREQ("slate 12", copy.get_field(1));
    EXPECT_STREQ("slate 12", copy.getField(1).c_str());
}

// Every operation on slices gives what it gives on strings.
TEST(SlicesBesideStrings, AreTheSameWhateverIsRemovedSetAndAppended) {
    testing_support::Random random;
    for (int i = 0; i < 2000; ++i) {
        const unsigned count = 1 + static_cast<unsigned>(random.below(6));
        dbrecord onSlices(0);
        dbrecord onStrings(static_cast<unsigned short>(count));
        std::vector<std::string> texts;
        std::vector<std::string_view> values;
        for (unsigned k = 0; k < count; ++k) texts.push_back(random.text("ab", 5));
        for (const std::string& text : texts) values.push_back(text);
        ValueCopies copies;
        copies.give(onSlices, values.data(), count);
        for (unsigned k = 0; k < count; ++k) onStrings.set_field(static_cast<int>(k), texts[k]);
        for (int step = 0; step < 12; ++step) {
            const auto at = static_cast<unsigned short>(random.below(count + 1));
            const std::string text = random.text("xyz", 5);
            const auto what = random.below(5);
            dbrecord copyOfSlices(onSlices);
            for (dbrecord* record : {&onSlices, &onStrings}) {
                if (what == 0) record->removeField(at);
                if (what == 1) record->set_field(at, text);
                if (what == 2) record->setField(at, LightweightString<char>(text));
                if (what == 3) record->getField(at);
                if (what == 4) RecordAccess::append(*record, text);
            }
            ASSERT_EQ(onStrings.get_num_fields(), onSlices.get_num_fields());
            for (unsigned k = 0; k < onStrings.get_num_fields(); ++k) {
                ASSERT_EQ(onStrings.fieldView(k), onSlices.fieldView(k)) << k;
            }
        }
    }
}

TEST_F(OnSlices, AppendedValuesFollow) {
    RecordAccess::append(record, "d");
    EXPECT_EQ(4, record.get_num_fields());
    EXPECT_STREQ("d", record.get_field(3));
    RecordAccess::drop(record);
    EXPECT_EQ(0, record.get_num_fields());
}

TEST_F(OnSlices, ClearEmptiesEveryValue) {
    record.clear();
    EXPECT_EQ(3, record.get_num_fields());
    EXPECT_TRUE(record.is_blank());
}

TEST_F(OnSlices, AssignmentTrimsAndTakesOver) {
    dbrecord target(1);
    target = record;
    EXPECT_EQ(3, target.get_num_fields());
    EXPECT_STREQ("slate 12", target.get_field(2));
    EXPECT_TRUE(target.get_changed());
}

TEST_F(OnSlices, TextsThatAreSetLeaveTheOthersWhereTheyAre) {
    const char* const first = record.get_field(0);
    record.set_field(1, "a text that is longer than what stands there");
    const char* const second = record.get_field(1);
    for (const char* text : {"1", "twelve", "a longer text", "an even longer text than that",
                             "and one that is longer than all of the others together", "2"}) {
        record.set_field(2, text);
        EXPECT_STREQ(text, record.get_field(2));
    }
    record.getField(1);
    record.set_field(2, "x");
    EXPECT_STREQ("A001", first);
    EXPECT_STREQ("a text that is longer than what stands there", second);
    EXPECT_EQ("x", record.fieldView(2));
}

TEST_F(OnSlices, AValueMayBeAPartOfItself) {
    record.set_field(2, "slate 123");
    record.set_field(2, record.get_field(2) + 6);
    EXPECT_STREQ("123", record.get_field(2));
    record.set_field(0, record.get_field(2));
    EXPECT_STREQ("123", record.get_field(0));
}

TEST_F(OnSlices, AStringThatIsGivenIsSharedAlsoBesideTextsThatWereSet) {
    const LightweightString<char> given("given");
    record.set_field(2, "a text");
    record.setField(1, given);
    EXPECT_EQ(given.c_str(), record.get_field(1));
    EXPECT_STREQ("a text", record.get_field(2));
    EXPECT_STREQ("A001", record.get_field(0));
}

TEST_F(OnSlices, WhateverIsDoneInAnyOrderTheValuesAreThoseOfAPlainList) {
    std::minstd_rand random(11);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random()) % n; };
    const dbrecord loaded(record);
    for (unsigned run = 0; run < 300; ++run) {
        dbrecord row(loaded);
        std::vector<std::string> plain = {"A001", "", "slate 12"};
        for (unsigned step = 0; step < 30; ++step) {
            const unsigned at = below(static_cast<unsigned>(plain.size()));
            const std::string text(below(4) == 0 ? 0 : below(below(9) == 0 ? 1500 : 24), 'x');
            const int width = 0;
            switch (below(10)) {
                case 0:
                    row.setField(static_cast<unsigned short>(at), text.c_str());
                    plain[at] = text;
                    break;
                case 1:
                    EXPECT_EQ(plain[at], row.getField(static_cast<unsigned short>(at)).c_str());
                    break;
                case 2:
                    plain.resize(1 + below(5));
                    row.resizeRecord(static_cast<int>(plain.size()), &width, false);
                    break;
                case 3:
                    EXPECT_EQ(plain[at], dbrecord(row).fieldView(at));
                    break;
                default:
                    row.set_field(static_cast<int>(at), text.c_str());
                    plain[at] = text;
            }
            for (unsigned i = 0; i < plain.size(); ++i) ASSERT_EQ(plain[i], row.fieldView(i));
        }
    }
}

}  // namespace
