#include <gmock/gmock.h>

#include <climits>
#include <cstring>

#include "testing/views.h"

using testing::ElementsAre;

namespace {

/// A table that writes down what a view passes on to it.
class Asked : public vekdb {
public:
    Asked() : vekdb(textColumns({"A", "B"})) { vekdb::add_records(6); }
    using vekdb::in_field;
    using vekdb::set_field;

    void set_sortfield(int field) override { note("set_sortfield", field); }
    void set_sortfields(int* fields) override { note("set_sortfields", fields[0]); }
    void set_sort_offset(int offset) override { note("set_sort_offset", offset); }
    int* sortPrepare(int direction, int forceNormal) override {
        note("sortPrepare", direction, forceNormal);
        return vekdb::sortPrepare(direction, forceNormal);
    }
    void set_query(dbrecord* query) override { note("set_query", query->get_num_fields()); }
    unsigned findFirst(const char* field, const char* value, int prefixLength) override {
        note("findFirst", *field, *value, prefixLength);
        return 77;
    }
    unsigned match_record(int row) const override {
        note("match_record", row);
        return 5;
    }
    unsigned get_fieldsize(unsigned field) const override {
        note("get_fieldsize", static_cast<int>(field));
        return 88;
    }
    bool get_valid() const override { return valid; }

    void note(const char* name, int a, int b = 0, int c = 0) const {
        std::string entry(name);
        for (int value : {a, b, c}) joinWord(entry, std::to_string(value));
        log.push_back(entry);
    }

    mutable std::vector<std::string> log;
    bool valid = true;
};

/// A table, a view of it in reverse and a view on that one of every other row: 4, 2, 0.
struct Stack : testing::Test {
    Stack() : table(textColumns({"Name", "Count", "Cookie"})) {
        for (const char* name : {"r0", "r1", "r2", "r3", "r4"}) addRow(table, {name});
        base = viewOf(table, {4, 3, 2, 1, 0});
        view = stackedOn(base, {0, 2, 4});
    }
    vekdb table;
    VDBView base, view;
};

}  // namespace

TEST_F(Stack, RowsAreTheViewsOwn) {
    EXPECT_EQ(3u, view->get_num_records());
    EXPECT_EQ(table.get_record(4), view->get_record(0));
    EXPECT_EQ(table.get_record(0), view->get_record(2));
    EXPECT_EQ(nullptr, view->get_record(3));
    EXPECT_EQ(nullptr, view->get_record(0xFFFFFFFF));
    EXPECT_EQ("r4 r2 r0", namesOf(*view));
}

TEST_F(Stack, BaseIndexWalksDownToTheTable) {
    EXPECT_EQ(4u, view->baseIndex(0));
    EXPECT_EQ(2u, view->baseIndex(1));
    EXPECT_EQ(0u, view->baseIndex(2));
    VDBView top = stackedOn(view, {2, 1});
    EXPECT_EQ(0u, top->baseIndex(0));
    EXPECT_EQ(2u, top->baseIndex(1));
    for (unsigned row : {3u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_EQ(0u, view->baseIndex(row));
    }
}

TEST_F(Stack, ColumnsAreTheSources) {
    EXPECT_EQ(3u, view->get_num_fields());
    EXPECT_STREQ("Count", view->get_fieldname(1));
    EXPECT_EQ(1u, view->get_fieldnum("COUNT"));
    EXPECT_EQ(0xFFFFFFFFu, view->get_fieldnum("None"));
    EXPECT_EQ(2u, view->get_fieldsize(0));
    EXPECT_TRUE(view->set_fieldtype(1, DBFieldTypes::numeric));
    EXPECT_EQ(DBFieldTypes::numeric, table.get_field_type(1));
    EXPECT_EQ(DBFieldTypes::numeric, view->get_field_type(1));
    EXPECT_EQ(DBFieldTypes::numeric, view->get_fieldtype(1));
    EXPECT_TRUE(view->set_fieldname(1, "Number"));
    EXPECT_STREQ("Number", table.get_fieldname(1));
}

TEST_F(Stack, TheFieldListDoesNotNarrowTheColumns) {
    VDBView narrow(new VDBViewRep(&table, "Count"));
    EXPECT_EQ(3u, narrow->get_num_fields());
    EXPECT_STREQ("Name", narrow->get_fieldname(0));
}

TEST_F(Stack, FieldTypesAreAskedForThroughTheInterface) {
    class Typed : public VDBViewRep {
    public:
        using VDBViewRep::VDBViewRep;
        DBFieldTypes::eType get_field_type(unsigned) const override { return DBFieldTypes::date; }
    };
    VDBView typed(new Typed(&table));
    EXPECT_EQ(DBFieldTypes::date, typed->get_fieldtype(0));
}

TEST_F(Stack, ValuesAreWrittenThroughToTheTable) {
    EXPECT_TRUE(view->set_field(0, 0u, "text"));
    EXPECT_EQ("text", table.getField(4, 0));
    EXPECT_TRUE(view->set_field(1, 1u, 42));
    EXPECT_EQ("42", table.getField(2, 1));
    EXPECT_TRUE(view->set_field(1, 1u, 0.5));
    EXPECT_EQ("0.50000000", table.getField(2, 1));
    EXPECT_TRUE(view->set_field(1, 1u, true));
    EXPECT_EQ("t", table.getField(2, 1));
    EXPECT_TRUE(view->set_field(2, Cookie()));
    EXPECT_EQ(Cookie().asString(false), table.getField(0, 2));
    EXPECT_FALSE(view->set_field(0, 3u, "text"));
}

TEST_F(Stack, ValuesAreReadThroughFromTheTable) {
    char text[4] = "???";
    EXPECT_TRUE(view->in_field(0, 0u, text, 3));
    EXPECT_STREQ("r4", text);
    table.set_field(2, 1u, "17");
    int number = 0;
    EXPECT_TRUE(view->in_field(1, 1u, number));
    EXPECT_EQ(17, number);
    double real = 0;
    EXPECT_TRUE(view->in_field(1, 1u, real));
    EXPECT_EQ(17.0, real);
    table.set_field(2, 1u, "t");
    bool flag = false;
    EXPECT_TRUE(view->in_field(1, 1u, flag));
    EXPECT_TRUE(flag);
    EXPECT_EQ("r2", view->getField(1, 0));
    EXPECT_EQ("r2", view->getField(1, 65536));
    EXPECT_TRUE(view->getField(1, 9).empty());
}

TEST_F(Stack, RowsOutOfRangeAreNeitherReadNorWritten) {
    char text[4] = "???";
    int number = 5;
    double real = 5;
    bool flag = true;
    for (unsigned row : {3u, 19u, 20u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(view->set_field(row, Cookie()));
        EXPECT_FALSE(view->set_field(row, 0u, "x"));
        EXPECT_FALSE(view->set_field(row, 0u, 1));
        EXPECT_FALSE(view->set_field(row, 0u, 1.0));
        EXPECT_FALSE(view->set_field(row, 0u, true));
        EXPECT_FALSE(view->in_field(row, 0u, text, 3));
        EXPECT_FALSE(view->in_field(row, 0u, number));
        EXPECT_FALSE(view->in_field(row, 0u, real));
        EXPECT_FALSE(view->in_field(row, 0u, flag));
        EXPECT_TRUE(view->getField(row, 0).empty());
    }
    EXPECT_STREQ("???", text);
    EXPECT_EQ("r0 r1 r2 r3 r4", namesOf(table));
}

TEST_F(Stack, RowsThatTheBaseHasNoMoreAreNeitherReadNorWritten) {
    base->clear();
    int number = 5;
    EXPECT_EQ(3u, view->get_num_records());
    EXPECT_EQ(nullptr, view->get_record(1));
    EXPECT_TRUE(view->getField(1, 0).empty());
    EXPECT_FALSE(view->set_field(1, 0u, "x"));
    EXPECT_FALSE(view->set_field(1, Cookie()));
    EXPECT_FALSE(view->in_field(1, 0u, number));
    EXPECT_EQ(0u, view->baseIndex(1));
    view->tagBaseFromTags();
    view->sort(0, 0);
    view->deleteRecords(0, 3);
    view->removeRecordsFromBaseView(0, 3);
    EXPECT_EQ("r0 r1 r2 r3 r4", namesOf(table));
    base->vdb(nullptr);
    view->insertBlankRecords(1, 1);
    EXPECT_EQ("r0 r1 r2 r3 r4", namesOf(table));
}

TEST_F(Stack, DummyRecordsAreTheTables) {
    dbrecord* dummy = view->make_dummy_record();
    ASSERT_NE(nullptr, dummy);
    EXPECT_EQ(3, dummy->get_num_fields());
    EXPECT_EQ(nullptr, dummy->get_container());
    delete dummy;
}

TEST_F(Stack, TheFileNameIsTheViewsOwn) {
    table.set_filename(L"table.vdb");
    view->set_filename(L"view.vdb");
    EXPECT_EQ(L"view.vdb", view->get_filename());
    view->fileName(L"other.vdb");
    EXPECT_EQ(L"other.vdb", view->get_filename());
    EXPECT_EQ(L"table.vdb", table.get_filename());
    EXPECT_TRUE(base->get_filename().empty());
}

TEST_F(Stack, ParametersAreTheViewsOwn) {
    EXPECT_EQ(0u, view->add_param("Mood", "dark"));
    EXPECT_STREQ("dark", view->get_param_val("mood"));
    EXPECT_EQ(0u, view->add_param("MOOD", "light"));
    EXPECT_EQ(0u, view->set_param_val("Mood", "bright"));
    EXPECT_STREQ("bright", view->get_param_val("Mood"));
    EXPECT_EQ(0u, view->set_param_val("Fresh", "new"));
    EXPECT_STREQ("new", view->get_param_val("Fresh"));
    EXPECT_EQ(nullptr, table.get_param_val("Mood"));
    EXPECT_EQ(0u, view->add_param("VEKDB", "Rev 7"));
    EXPECT_STREQ("Rev 7", view->get_param_val("VEKDB"));
    EXPECT_EQ(0u, view->add_param(nullptr, nullptr));
    EXPECT_STREQ("", view->get_param_val(nullptr));
    EXPECT_STREQ("", view->get_param_val("Never set"));
}

TEST(ViewSource, AViewHoldsMoreParametersThanATable) {
    vekdb table(textColumns({"A"}));
    VDBView view(&table);
    for (int i = 0; i < 60; ++i) {
        view->add_param(std::string("p").append(std::to_string(i)).c_str(), "v");
    }
    EXPECT_STREQ("v", view->get_param_val("p59"));
}

TEST(ViewSource, OrdersQuestionsAndQueriesPassThroughUntranslated) {
    Asked table;
    VDBView base = viewOf(table, {5, 4, 3});
    VDBView view = stackedOn(base, {2, 1, 0});
    int fields[] = {1, -1};
    dbrecord query(2);
    view->set_sortfield(1);
    view->set_sortfields(fields);
    view->set_sort_offset(-3);
    EXPECT_NE(nullptr, view->sortPrepare(-1, 1));
    view->set_query(&query);
    EXPECT_EQ(77u, view->findFirst("B", "x", 4));
    EXPECT_EQ(5u, view->match_record(2));
    EXPECT_EQ(88u, view->get_fieldsize(9));
    EXPECT_THAT(table.log,
                ElementsAre("set_sortfield 1 0 0", "set_sortfields 1 0 0", "set_sort_offset -3 0 0",
                            "sortPrepare -1 1 0", "set_query 2 0 0", "findFirst 66 120 4",
                            "match_record 2 0 0", "get_fieldsize 9 0 0"));
}

TEST(ViewSource, ValidityIsTheSources) {
    Asked table;
    VDBView base(&table), view(&table);
    view->baseView(base.get());
    EXPECT_TRUE(view->get_valid());
    table.valid = false;
    EXPECT_FALSE(view->get_valid());
    EXPECT_FALSE(base->get_valid());
}

namespace {

void expectNoAnswers(VDBViewRep& view) {
    char text[2] = "?";
    int number = 5;
    double real = 5;
    bool flag = true;
    dbrecord query(1);
    int fields[] = {0, -1};
    EXPECT_EQ(0, view.save_text());
    EXPECT_EQ(0, view.save_tags());
    view.insert_records(0, 1);
    view.delete_records(0, 1);
    EXPECT_EQ(0u, view.delete_tagged_records());
    EXPECT_EQ(0u, view.get_num_fields());
    EXPECT_EQ(nullptr, view.get_record(0));
    EXPECT_EQ(nullptr, view.make_dummy_record());
    EXPECT_TRUE(view.getField(0, 0).empty());
    EXPECT_EQ(nullptr, view.get_fieldname(0));
    EXPECT_EQ(0u, view.get_fieldsize(0));
    EXPECT_EQ(DBFieldTypes::none, view.get_field_type(0));
    EXPECT_EQ(DBFieldTypes::none, view.get_fieldtype(0));
    EXPECT_FALSE(view.set_fieldtype(0, DBFieldTypes::date));
    EXPECT_EQ(0u, view.get_fieldnum("A"));
    EXPECT_FALSE(view.set_fieldname(0, "A"));
    view.set_sortfield(0);
    view.set_sortfields(fields);
    view.set_sort_offset(1);
    view.sort(0, 0);
    view.set_query(&query);
    EXPECT_EQ(0u, view.tag_matching_records(0));
    EXPECT_EQ(0u, view.tag_all_different(0));
    EXPECT_FALSE(view.set_field(0, Cookie()));
    EXPECT_FALSE(view.set_field(0, 0u, "x"));
    EXPECT_FALSE(view.set_field(0, 0u, 1));
    EXPECT_FALSE(view.set_field(0, 0u, 1.0));
    EXPECT_FALSE(view.set_field(0, 0u, true));
    EXPECT_FALSE(view.in_field(0, 0u, text, 1));
    EXPECT_FALSE(view.in_field(0, 0u, number));
    EXPECT_FALSE(view.in_field(0, 0u, real));
    EXPECT_FALSE(view.in_field(0, 0u, flag));
    EXPECT_EQ(0u, view.findFirst("A", "x", 0));
    EXPECT_EQ(nullptr, view.sortPrepare(0, 0));
    EXPECT_EQ(0u, view.match_record(0));
    EXPECT_EQ(0u, view.baseIndex(0));
    EXPECT_FALSE(view.get_valid());
    EXPECT_EQ(nullptr, view.copy());
    EXPECT_EQ(nullptr, view.copyWithNewBaseView());
    EXPECT_EQ(nullptr, view.newTagSubview());
}

}  // namespace

TEST(ViewSource, WithoutASourceThereAreNoAnswers) {
    VDBView empty(static_cast<vekdb*>(nullptr));
    expectNoAnswers(*empty);
    EXPECT_EQ(0u, empty->add_records(2));
    VDBView filled(static_cast<vekdb*>(nullptr));
    filled->append(0);
    expectNoAnswers(*filled);
    EXPECT_EQ(1u, filled->add_records(2));
}

TEST(ViewSource, WithABaseWithoutASourceThereAreNoAnswersEither) {
    VDBView base(static_cast<vekdb*>(nullptr));
    base->append(0);
    VDBView view(static_cast<vekdb*>(nullptr));
    view->baseView(base.get());
    view->displayAllRecords();
    EXPECT_EQ("null", namesOf(*view));
    EXPECT_EQ(0u, view->get_num_fields());
    EXPECT_EQ(nullptr, view->get_fieldname(0));
    EXPECT_EQ(0u, view->get_fieldnum("A"));
    EXPECT_EQ(0u, view->baseIndex(0));
    EXPECT_FALSE(view->get_valid());
    EXPECT_FALSE(view->set_field(0, 0u, "x"));
    view->displayTaggedRecordsAt(0);
    EXPECT_EQ(1u, view->get_num_records());
    view->displayAllRecordsWithBaseTagStatus();
    view->setupViewTagsFromVekdbTagField();
    EXPECT_EQ("0", tagsOf(*view));
    EXPECT_EQ(0u, view->tagMatches(0));
    EXPECT_EQ(0u, view->tagDuplicates(0));
}
