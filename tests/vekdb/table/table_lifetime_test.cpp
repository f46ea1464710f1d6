#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <memory>

#include <vekdb/table.h>
#include "testing/tables.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;

TEST(NewTable, ByDefaultIsEmptyAndNotValid) {
    vekdb table;
    EXPECT_EQ(0u, table.get_num_fields());
    EXPECT_EQ(0u, table.get_num_records());
    EXPECT_EQ(0u, table.get_capacity());
    EXPECT_EQ(1, table.get_revision());
    EXPECT_FALSE(table.get_valid());
    EXPECT_FALSE(table.get_modified());
}

TEST(NewTable, FromAnArrayTakesTheEntriesBeforeTheFirstWithoutAType) {
    DBFieldDesc fields[] = {{"Reel", DBFieldTypes::text},
                            {"Start time", DBFieldTypes::timecode},
                            {},
                            {"Unseen", DBFieldTypes::text}};
    vekdb table(fields);
    EXPECT_TRUE(table.get_valid());
    EXPECT_EQ(2u, table.get_num_fields());
    EXPECT_STREQ("Start time", table.get_fieldname(1));
    EXPECT_EQ(DBFieldTypes::timecode, table.get_field_type(1));
    EXPECT_EQ(500u, table.get_capacity());
    dberror error;
    EXPECT_FALSE(table.read_error_info(error));
}

TEST(NewTable, FromAnArrayThatEndsAtOnceIsValidWithRoomForRows) {
    DBFieldDesc fields[] = {{}};
    vekdb table(fields);
    EXPECT_TRUE(table.get_valid());
    EXPECT_EQ(0u, table.get_num_fields());
    EXPECT_EQ(500u, table.get_capacity());
}

TEST(NewTable, FromANullArrayHasNoColumns) {
    vekdb table(static_cast<const DBFieldDesc*>(nullptr));
    EXPECT_TRUE(table.get_valid());
    EXPECT_EQ(0u, table.get_num_fields());
}

TEST(NewTable, FromAVectorTakesEveryEntryAndMakesTypelessOnesText) {
    std::vector<DBFieldDesc> fields = {{"A", DBFieldTypes::none}, {"", DBFieldTypes::numeric}};
    vekdb table(fields);
    EXPECT_TRUE(table.get_valid());
    EXPECT_EQ(2u, table.get_num_fields());
    EXPECT_EQ(DBFieldTypes::text, table.get_field_type(0));
    EXPECT_STREQ("", table.get_fieldname(1));
    dberror error;
    ASSERT_TRUE(table.read_error_info(error));
    EXPECT_EQ(2, error.values[0]);
    EXPECT_EQ(3, error.values[1]);
    EXPECT_EQ(0, error.values[2]);
    EXPECT_EQ(0, error.values[3]);
}

TEST(NewTable, RemembersWhenItWasMade) {
    std::time_t before = std::time(nullptr);
    vekdb table(textColumns({"A"}));
    EXPECT_GE(table.get_creation_time(), before);
    EXPECT_LE(table.get_creation_time(), std::time(nullptr));
}

TEST(NewTable, HasNoParametersUntilTheFirstIsAdded) {
    vekdb table(textColumns({"A"}));
    EXPECT_EQ(0u, table.get_num_params());
    EXPECT_EQ(nullptr, table.get_param_val("VEKDB"));
}

TEST(Table, AccessorsAnswerOutOfRangePositions) {
    vekdb table(textColumns({"A"}));
    EXPECT_STREQ("", table.get_fieldname(1));
    EXPECT_EQ(DBFieldTypes::none, table.get_field_type(1));
    EXPECT_EQ(DBFieldTypes::none, table.get_fieldtype(none));
    EXPECT_EQ(7u, table.baseIndex(7));
}

TEST(Table, FileNameIsKeptAsGiven) {
    vekdb table;
    EXPECT_TRUE(table.get_filename().empty());
    table.set_filename(L"/tmp/\x416.vek");
    EXPECT_TRUE(table.get_filename() == L"/tmp/\x416.vek");
}

TEST(Table, ErrorRecordIsReplacedAndReadingKeepsIt) {
    vekdb table;
    dberror error = {{9, 9, 9, 9}};
    EXPECT_FALSE(table.read_error_info(error));
    EXPECT_EQ(9, error.values[0]);
    table.fill_error_info(1, 2, 3, 4);
    table.fill_error_info(5, 6, 7, -8);
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(table.read_error_info(error));
        EXPECT_EQ(5, error.values[0]);
        EXPECT_EQ(-8, error.values[3]);
    }
}

TEST(Table, CapacityGrowsByFiveHundred) {
    vekdb table(textColumns({"A"}));
    table.add_chunk();
    EXPECT_EQ(1000u, table.get_capacity());
    EXPECT_EQ(0u, table.get_num_records());
}

TEST(Table, CapacityNeverShrinks) {
    vekdb table(textColumns({"A"}));
    table.add_records(1200);
    EXPECT_EQ(1500u, table.get_capacity());
    table.delete_records(0, 1200);
    EXPECT_EQ(1500u, table.get_capacity());
}

TEST(Table, ADefaultTableCanBeGivenRows) {
    vekdb table;
    EXPECT_EQ(0u, table.add_records(3));
    EXPECT_EQ(500u, table.get_capacity());
    EXPECT_EQ(3u, table.get_num_records());
    EXPECT_EQ(0, table.get_record(2)->get_num_fields());
}

struct CopiedTable : testing::Test {
    CopiedTable() : source(textColumns({"Reel", "Scene"})) {
        addRow(source, {" A001", "12"});
        addRow(source, {"A002", "13"});
        source.add_param("Project", "Night");
        source.set_filename(L"source.vek");
        source.set_tag(1, 1);
    }
    vekdb source;
};

TEST_F(CopiedTable, WithRecordsHasColumnsParametersAndRows) {
    vekdb copy(source, 1);
    EXPECT_TRUE(copy.get_valid());
    EXPECT_TRUE(copy.sameColumns(&source));
    EXPECT_STREQ("Night", copy.get_param_val("Project"));
    EXPECT_STREQ("Rev 1", copy.get_param_val("VEKDB"));
    EXPECT_EQ(columnOf(source, 0), columnOf(copy, 0));
    EXPECT_EQ(1u, copy.get_fieldnum("scene"));
}

TEST_F(CopiedTable, WithoutRecordsHasNoRows) {
    vekdb copy(source, 0);
    EXPECT_TRUE(copy.get_valid());
    EXPECT_EQ(0u, copy.get_num_records());
    EXPECT_EQ(500u, copy.get_capacity());
    EXPECT_STREQ("Night", copy.get_param_val("Project"));
}

TEST_F(CopiedTable, WithoutParametersHasRowsAndNoneAtAll) {
    vekdb copy(source, static_cast<DBFieldDesc*>(nullptr));
    EXPECT_EQ(2u, copy.get_num_records());
    EXPECT_EQ(0u, copy.get_num_params());
    EXPECT_EQ(nullptr, copy.get_param_val("VEKDB"));
    EXPECT_TRUE(copy.get_valid());
}

TEST_F(CopiedTable, RowsAreUntaggedUnchangedAndWithoutContainer) {
    vekdb copy(source, 1);
    EXPECT_EQ(0u, copy.get_tag(1));
    EXPECT_FALSE(copy.get_record(0)->get_changed());
    EXPECT_EQ(nullptr, copy.get_record(0)->get_container());
    copy.clear_changed();
    copy.set_field(0, 0, "changed");
    EXPECT_TRUE(copy.get_record(0)->get_changed());
    EXPECT_FALSE(copy.get_modified());
}

TEST_F(CopiedTable, TakesNoFileNameNoTagModeAndNoSort) {
    source.set_show_tags_only(1);
    vekdb copy(source, 1);
    EXPECT_TRUE(copy.get_filename().empty());
    EXPECT_EQ(0u, copy.get_show_tags_only());
    EXPECT_EQ(0, copy.sortPrepare(1, 0)[0]);
}

TEST_F(CopiedTable, OfATableThatShowsTaggedRowsTakesThoseOnly) {
    source.set_show_tags_only(1);
    vekdb copy(source, 1);
    EXPECT_EQ(std::vector<std::string>{"A002"}, columnOf(copy, 0));
}

TEST_F(CopiedTable, IsModifiedByItsParametersOnly) {
    EXPECT_TRUE(vekdb(source, 1).get_modified());
    EXPECT_FALSE(vekdb(source, static_cast<DBFieldDesc*>(nullptr)).get_modified());
    EXPECT_FALSE(vekdb(vekdb(textColumns({"A"})), 1).get_modified());
}

TEST_F(CopiedTable, OfAnInvalidTableIsValidWithoutColumns) {
    vekdb invalid;
    vekdb copy(invalid, 1);
    EXPECT_TRUE(copy.get_valid());
    EXPECT_EQ(0u, copy.get_num_fields());
}

TEST_F(CopiedTable, HasRoomForExactlyFiveHundredRowsOfFiveHundred) {
    vekdb many(textColumns({"A"}));
    many.add_records(500);
    EXPECT_EQ(500u, vekdb(many, 1).get_capacity());
    many.add_records(1);
    EXPECT_EQ(1000u, vekdb(many, 1).get_capacity());
}

TEST_F(CopiedTable, KeepsARevisionOtherThanOne) {
    source.add_param("VEKDB", "Rev 2");
    vekdb copy(source, 0);
    EXPECT_STREQ("Rev 2", copy.get_param_val("VEKDB"));
    EXPECT_STREQ("VEKDB", copy.get_param_name(0));
    EXPECT_EQ(2u, copy.get_num_params());
}

TEST_F(CopiedTable, FindsColumnsByTheirFormerNamesToo) {
    source.set_fieldname(0, "Tape");
    vekdb copy(source, 0);
    EXPECT_EQ(0u, copy.get_fieldnum("Reel"));
    EXPECT_EQ(0u, copy.get_fieldnum("Tape"));
}

TEST_F(CopiedTable, TakesTheRowsThatASubclassShows) {
    struct Twice : vekdb {
        using vekdb::vekdb;
        unsigned get_num_records() const override { return 3; }
        dbrecord* get_record(unsigned row) const override {
            return row == 1 ? nullptr : vekdb::get_record(0);
        }
    } twice(textColumns({"A"}));
    addRow(twice, {"x"});
    twice.vekdb::get_record(0)->set_field(0, "x");
    EXPECT_EQ((std::vector<std::string>{"x", "x"}), columnOf(vekdb(twice, 1), 0));
}

TEST_F(CopiedTable, SharesTextWithItsSourceAndOutlivesIt) {
    auto original = std::make_unique<vekdb>(source, 1);
    vekdb copy(*original, 1);
    original->set_field(0, 1, "99");
    original.reset();
    EXPECT_STREQ(" A001", copy.getField(0, 0).c_str());
    EXPECT_STREQ("12", copy.getField(0, 1).c_str());
}

TEST(FreedTable, IsEmptyNotValidAndCanBeFilledAgain) {
    vekdb table(textColumns({"A", "B"}));
    addRow(table, {"1", "2"});
    table.add_param("P", "v");
    table.set_fieldtype(0, DBFieldTypes::none);
    table.beginUpdate();
    table.set_tag(0, 1);
    table.set_show_tags_only(1);
    table.free();

    dberror error;
    EXPECT_FALSE(table.get_valid());
    EXPECT_FALSE(table.read_error_info(error));
    EXPECT_EQ(0u, table.get_num_fields());
    EXPECT_EQ(0u, table.get_num_records());
    EXPECT_EQ(0u, table.get_capacity());
    EXPECT_EQ(0u, table.get_num_params());
    EXPECT_EQ(0u, table.get_update_depth());
    EXPECT_EQ(0u, table.get_show_tags_only());
    EXPECT_FALSE(table.get_modified());
    EXPECT_EQ(none, table.get_fieldnum("A"));

    EXPECT_EQ(0u, table.addField({"C", DBFieldTypes::text}));
    addRow(table, {"x"});
    EXPECT_STREQ("x", table.getField(0, 0).c_str());
}

TEST(SharedTable, EndsWithItsLastHolder) {
    struct Told : vekdb {
        explicit Told(bool& gone) : vekdb(textColumns({"A"})), gone_(gone) {}
        ~Told() override { gone_ = true; }
        bool& gone_;
    };
    bool gone = false;
    {
        Quor::Ptr<vekdb> first(new Told(gone));
        Quor::Ptr<vekdb> second(first);
        first.reset();
        EXPECT_FALSE(gone);
        second->add_records(1);
    }
    EXPECT_TRUE(gone);
}

}  // namespace
