#include <gmock/gmock.h>

#include "testing/capture_diagnostics.h"
#include "testing/temp_dir.h"
#include "testing/views.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testing_support::TempDir;

/// A table of six rows with a column "Tag", and one parameter.
struct Saving : testing::Test {
    Saving() : table(textColumns({"Name", "Tag"})) {
        table.add_param("Project", "Night");
        for (const char* name : {"r0", "r1", "r2", "r3", "r4", "r5"}) addRow(table, {name, "9"});
        table.clear_changed();
    }

    std::string path(const char* name) const { return folder.file(name).string(); }

    TempDir folder;
    vekdb table;
};

// Sees what stands in the folder whenever a column is asked for.
struct LookingView : VDBViewRep {
    LookingView(vekdb* table, const TempDir& folder) : VDBViewRep(table), folder(folder) {}

    unsigned get_fieldnum(LightweightString<char> name) const override {
        ++asked;
        seen = folder.names();
        return VDBViewRep::get_fieldnum(name);
    }

    const TempDir& folder;
    mutable int asked = 0;
    mutable std::vector<std::string> seen;
};

}  // namespace

TEST_F(Saving, NothingStandsBesideTheFileWhileCodeOfAnApplicationRuns) {
    auto* const looking = new LookingView(&table, folder);
    VDBView view(looking);
    looking->displayAllRecords();
    looking->asked = 0;
    EXPECT_EQ(6, looking->saveAsText(folder.widePath("out"), false));
    EXPECT_GT(looking->asked, 0);
    EXPECT_THAT(looking->seen, testing::IsEmpty());
    EXPECT_THAT(folder.names(), testing::ElementsAre("out"));
}

TEST_F(Saving, WritesParametersHeaderAndRowsInViewOrderWithTheViewsTags) {
    VDBView view = viewOf(table, {4, 1});
    setTags(*view, {1, 0});
    EXPECT_EQ(2, view->saveAsText(folder.widePath("out"), false));
    EXPECT_EQ(folder.read("out"),
              "\"VEKDB:Rev 1\"\n"
              "\"Project:Night\"\n"
              "\"VEKDB\"\n"
              "\"32\",\"1\"\n"
              "\"text\",\"text\"\n"
              "\"Name\",\"Tag\"\n"
              "\"r4\",\"1\"\n"
              "\"r1\",\"0\"\n");
}

TEST_F(Saving, LeavesTheRecordsAsTheyWere) {
    table.set_field(4, 0u, "new");
    VDBView view = viewOf(table, {4, 1});
    view->set_tag(0, 1);
    view->saveAsText(folder.widePath("out"), false);
    EXPECT_EQ("9", table.getField(4, 1));
    EXPECT_TRUE(table.get_record(4)->get_changed());
    EXPECT_FALSE(table.get_record(1)->get_changed());
}

TEST_F(Saving, TheHeaderAloneWritesNoRows) {
    VDBView view = viewOfAll(table);
    EXPECT_EQ(0, view->saveAsText(folder.widePath("out"), true));
    EXPECT_THAT(folder.read("out"), EndsWith("\"Name\",\"Tag\"\n"));
    EXPECT_THAT(folder.read("out"), StartsWith("\"VEKDB:Rev 1\"\n\"Project:Night\"\n"));
}

TEST_F(Saving, AnEmptyViewWritesNoRows) {
    VDBView view(&table);
    EXPECT_EQ(0, view->saveAsText(folder.widePath("out"), false));
    EXPECT_THAT(folder.read("out"), EndsWith("\"Name\",\"Tag\"\n"));
}

TEST_F(Saving, AllColumnsAreWrittenWhateverTheFieldsAre) {
    VDBView view(new VDBViewRep(&table, "Tag"));
    show(*view, {2});
    EXPECT_EQ(1, view->saveAsText(folder.widePath("out"), false));
    EXPECT_THAT(folder.read("out"), EndsWith("\"Name\",\"Tag\"\n\"r2\",\"0\"\n"));
}

TEST_F(Saving, TheViewsOwnParametersAreWritten) {
    VDBView view = viewOf(table, {0});
    view->set_param_val("project", "Day");
    view->add_param("Mood", "dark");
    view->add_param("Empty", nullptr);
    view->saveAsText(folder.widePath("out"), false);
    EXPECT_THAT(folder.read("out"), StartsWith("\"VEKDB:Rev 1\"\n\"Project:Day\"\n\"Mood:dark\"\n"
                                               "\"Empty:\"\n\"VEKDB\"\n"));
    const vekdb loaded(folder.widePath("out"), 10, true);
    EXPECT_TRUE(loaded.get_valid());
    EXPECT_EQ("r0", namesOf(loaded));
}

TEST_F(Saving, AskingForAParameterEntersItIntoTheFile) {
    VDBView view = viewOf(table, {0});
    EXPECT_STREQ("", view->get_param_val("V5_FIELD_MAP"));
    view->saveAsText(folder.widePath("out"), true);
    EXPECT_THAT(folder.read("out"), HasSubstr("\n\"V5_FIELD_MAP:\"\n"));
}

TEST_F(Saving, WithoutParametersInTheTableTheRevisionIsEmpty) {
    const auto bare = numberedTable(1);
    VDBView view = viewOfAll(*bare);
    EXPECT_EQ(1, view->saveAsText(folder.widePath("out"), false));
    EXPECT_THAT(folder.read("out"), StartsWith("\"VEKDB:\"\n\"VEKDB\"\n"));
    const testing_support::CaptureDiagnostics quiet;
    const vekdb loaded(folder.widePath("out"), 10, true);
    EXPECT_TRUE(loaded.get_valid());
    EXPECT_EQ(0, loaded.get_revision());
    EXPECT_EQ(1u, quiet.messages.size());
    EXPECT_EQ("r0", namesOf(loaded));
}

TEST_F(Saving, AViewTakenOffItsBaseHasNoParametersAndItsFileCannotBeLoaded) {
    VDBView base = viewOfAll(table);
    VDBView view = stackedOnAll(base);
    view->baseView(nullptr);
    show(*view, {0});
    EXPECT_EQ(1, view->saveAsText(folder.widePath("out"), false));
    EXPECT_THAT(folder.read("out"), StartsWith("\"VEKDB\"\n"));
    const vekdb loaded(folder.widePath("out"), 10, true);
    EXPECT_FALSE(loaded.get_valid());
}

TEST_F(Saving, AStackedViewIsWrittenInItsOwnOrder) {
    VDBView base = viewOf(table, {5, 3, 1});
    VDBView view = stackedOn(base, {2, 0});
    view->set_tag(0, 1);
    base->set_tag(0, 1);
    EXPECT_EQ(2, view->saveAsText(folder.widePath("out"), false));
    EXPECT_THAT(folder.read("out"), EndsWith("\"r1\",\"1\"\n\"r5\",\"0\"\n"));
}

TEST_F(Saving, RowsWithoutARecordAreNeitherWrittenNorCounted) {
    VDBView view = viewOf(table, {4, 77, 1});
    EXPECT_EQ(2, view->saveAsText(folder.widePath("out"), false));
    EXPECT_THAT(folder.read("out"), EndsWith("\"r4\",\"0\"\n\"r1\",\"0\"\n"));
}

TEST_F(Saving, WithoutATagColumnValuesAreWrittenAsTheyAre) {
    vekdb plain(textColumns({"Name", "Other"}));
    plain.add_param("P", "v");
    addRow(plain, {"a", "9"});
    VDBView view = viewOfAll(plain);
    view->set_tag(0, 1);
    EXPECT_EQ(1, view->saveAsText(folder.widePath("out"), false));
    EXPECT_THAT(folder.read("out"), EndsWith("\"a\",\"9\"\n"));
}

TEST_F(Saving, ReplacesTheFileThatIsThere) {
    folder.write("out", "old");
    VDBView view = viewOf(table, {0});
    EXPECT_EQ(1, view->saveAsText(path("out").c_str(), false));
    EXPECT_THAT(folder.read("out"), EndsWith("\"r0\",\"0\"\n"));
    EXPECT_EQ(1u, folder.names().size());
}

TEST_F(Saving, NamesAreReadAsUtf8) {
    VDBView view = viewOf(table, {0});
    EXPECT_EQ(1, view->saveAsText(path("caf\xC3\xA9").c_str(), false));
    EXPECT_TRUE(folder.has("caf\xC3\xA9"));
    table.set_tag(0, 1);
    EXPECT_EQ(1, view->saveOnlyTagged(path("na\xC3\xAFve").c_str()));
    EXPECT_TRUE(folder.has("na\xC3\xAFve"));
}

TEST_F(Saving, WithoutASourceOrANameNothingIsWritten) {
    VDBView view = viewOfAll(table), unbound(static_cast<vekdb*>(nullptr));
    EXPECT_EQ(0, view->saveAsText("", false));
    EXPECT_EQ(0, view->saveAsText(static_cast<const char*>(nullptr), false));
    EXPECT_EQ(0, view->saveAsText(LightweightString<wchar_t>(), false));
    EXPECT_EQ(0, view->saveOnlyTagged(""));
    EXPECT_EQ(0, unbound->saveAsText(folder.widePath("out"), false));
    EXPECT_EQ(0, unbound->saveOnlyTagged(folder.widePath("out")));
    VDBView base = viewOfAll(table), floating(static_cast<vekdb*>(nullptr));
    floating->baseView(base.get());
    floating->displayAllRecords();
    EXPECT_EQ(6u, floating->get_num_records());
    EXPECT_EQ(0, floating->saveAsText(folder.widePath("out"), false));
    EXPECT_EQ(0, floating->saveOnlyTagged(folder.widePath("out")));
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(Saving, AFailedSaveAnswersZero) {
    VDBView view = viewOfAll(table);
    table.set_tag(0, 1);
    EXPECT_EQ(0, view->saveAsText(folder.widePath("none/out"), false));
    EXPECT_EQ(0, view->saveOnlyTagged(folder.widePath("none/out")));
    EXPECT_EQ(0, view->saveAsText(folder.widePath("."), false));
}

TEST_F(Saving, OnlyTaggedWritesRecordsWithTheTablesTagAndCountsAllLookedAt) {
    table.set_tag(1, 1);
    table.set_tag(4, 200);
    VDBView view = viewOf(table, {5, 4, 3, 2, 1});
    view->tagAll(true);
    EXPECT_EQ(5, view->saveOnlyTagged(folder.widePath("out")));
    EXPECT_THAT(folder.read("out"), StartsWith("\"VEKDB:Rev 1\"\n\"Project:Night\"\n\"VEKDB\"\n"));
    EXPECT_THAT(folder.read("out"), EndsWith("\"Name\",\"Tag\"\n\"r4\",\"9\"\n\"r1\",\"9\"\n"));
}

TEST_F(Saving, OnlyTaggedWritesTheRecordsThemselves) {
    table.set_tag(1, 1);
    table.set_field(1, 0u, "new");
    table.set_field(2, 0u, "new");
    VDBView view = viewOfAll(table);
    EXPECT_EQ(6, view->saveOnlyTagged(folder.widePath("out")));
    EXPECT_FALSE(table.get_record(1)->get_changed());
    EXPECT_TRUE(table.get_record(2)->get_changed());
}

TEST_F(Saving, OnlyTaggedLooksAtRowsWithoutARecordToo) {
    table.set_tag(1, 1);
    VDBView view = viewOf(table, {1, 77});
    EXPECT_EQ(2, view->saveOnlyTagged(folder.widePath("out")));
    VDBView empty(&table);
    EXPECT_EQ(0, empty->saveOnlyTagged(folder.widePath("none")));
    EXPECT_TRUE(folder.has("none"));
}

TEST_F(Saving, TheInterfaceSavesUnderTheViewsOwnName) {
    VDBView view = viewOf(table, {4, 1});
    view->set_filename(folder.widePath("out"));
    EXPECT_EQ(2, view->save_text());
    EXPECT_THAT(folder.read("out"), EndsWith("\"r4\",\"0\"\n\"r1\",\"0\"\n"));
    table.set_tag(4, 1);
    EXPECT_EQ(2, view->save_tags());
    EXPECT_THAT(folder.read("out"), EndsWith("\"Name\",\"Tag\"\n\"r4\",\"9\"\n"));
    view->set_filename(nullptr);
    EXPECT_EQ(0, view->save_text());
    EXPECT_EQ(0, view->save_tags());
}

TEST_F(Saving, ACopySavesOverTheTablesFile) {
    table.set_filename(folder.widePath("table"));
    VDBView view = viewOf(table, {4, 1});
    view->set_filename(folder.widePath("view"));
    VDBView copy = view.copy();
    EXPECT_EQ(folder.widePath("table"), copy->get_filename());
    EXPECT_EQ(2, copy->save_text());
    EXPECT_TRUE(folder.has("table"));
    EXPECT_FALSE(folder.has("view"));
}
