#include <gtest/gtest.h>

#include <string>

#include <vekdb/table.h>
#include "testing/tables.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;

struct Parametered : testing::Test {
    Parametered() : table(textColumns({"A"})) {}
    vekdb table;
};

TEST_F(Parametered, TheFirstOneComesBehindTheRevision) {
    EXPECT_EQ(0u, table.add_param("Project", "Night"));
    EXPECT_EQ(2u, table.get_num_params());
    EXPECT_STREQ("VEKDB", table.get_param_name(0));
    EXPECT_STREQ("Rev 1", table.get_param_text(0));
    EXPECT_STREQ("Project", table.get_param_name(1));
    EXPECT_TRUE(table.get_modified());
}

TEST_F(Parametered, TheSamePairAgainChangesNothing) {
    table.add_param("Project", "Night");
    table.clear_changed();
    EXPECT_EQ(0u, table.add_param("PROJECT", "Night"));
    EXPECT_FALSE(table.get_modified());
    EXPECT_EQ(2u, table.get_num_params());
}

TEST_F(Parametered, AnotherValueReplacesAndKeepsTheName) {
    table.add_param("Project", "Night");
    table.clear_changed();
    EXPECT_EQ(0u, table.set_param_val("project", "night"));
    EXPECT_STREQ("night", table.get_param_val("Project"));
    EXPECT_STREQ("Project", table.get_param_name(1));
    EXPECT_TRUE(table.get_modified());
}

TEST_F(Parametered, ABadNameOrValueIsRefused) {
    EXPECT_EQ(none, table.add_param(nullptr, "v"));
    EXPECT_EQ(none, table.add_param("n", nullptr));
    EXPECT_EQ(none, table.add_param("", "v"));
    EXPECT_EQ(0u, table.get_num_params());
    EXPECT_FALSE(table.get_modified());
}

TEST_F(Parametered, AnEmptyValueIsAccepted) {
    EXPECT_EQ(0u, table.add_param("Empty", ""));
    EXPECT_STREQ("", table.get_param_val("Empty"));
}

TEST_F(Parametered, TheRevisionIsRefusedByHandUntilItExists) {
    EXPECT_EQ(none, table.add_param("VEKDB", "Rev 9"));
    EXPECT_FALSE(table.get_modified());
    table.add_param("Project", "x");
    EXPECT_EQ(0u, table.add_param("VEKDB", "Rev 9"));
    EXPECT_STREQ("Rev 9", table.get_param_val("vekdb"));
    EXPECT_EQ(1, table.get_revision());
}

TEST_F(Parametered, TheFortiethIsAcceptedAndTheNextRefused) {
    for (int i = 1; i < 40; ++i) {
        EXPECT_EQ(0u, table.add_param(("P" + std::to_string(i)).c_str(), "v"));
    }
    EXPECT_EQ(40u, table.get_num_params());
    EXPECT_EQ(none, table.add_param("One more", "v"));
    EXPECT_EQ(40u, table.get_num_params());
    EXPECT_EQ(0u, table.add_param("P39", "w"));
}

TEST_F(Parametered, TheyAreFoundWithoutRegardToCaseByTheFirstSlot) {
    table.add_param("Project", "x");
    EXPECT_EQ(1u, table.find_param("pROJECT"));
    EXPECT_EQ(none, table.find_param("Projects"));
    EXPECT_EQ(none, table.find_param(nullptr));
    EXPECT_EQ(nullptr, table.get_param_val("Other"));
}

TEST_F(Parametered, AValueMayBeReplacedByItsOwnTail) {
    table.add_param("P", "abcdef");
    EXPECT_EQ(0u, table.add_param("P", table.get_param_val("P") + 2));
    EXPECT_STREQ("cdef", table.get_param_val("P"));
}

TEST_F(Parametered, TheirTextsAreCopiedOnEntry) {
    std::string name = "Project";
    std::string value = "Night";
    table.add_param(name.c_str(), value.c_str());
    name[0] = value[0] = '-';
    EXPECT_STREQ("Night", table.get_param_val("Project"));
}

TEST_F(Parametered, TheRevisionInOtherLettersIsAParameterOfItsOwnWhileThereIsNone) {
    EXPECT_EQ(0u, table.add_param("vekdb", "mine"));
    EXPECT_EQ(2u, table.get_num_params());
    EXPECT_STREQ("Rev 1", table.get_param_val("vekdb"));
    EXPECT_STREQ("mine", table.get_param_text(1));
}

TEST_F(Parametered, SettingAValueReachesAddParamOfASubclass) {
    struct Seen : vekdb {
        using vekdb::vekdb;
        unsigned add_param(const char* name, const char*) override {
            added = name;
            return 5;
        }
        std::string added;
    } seen(textColumns({"A"}));
    EXPECT_EQ(5u, seen.set_param_val("P", "v"));
    EXPECT_EQ("P", seen.added);
}

TEST_F(Parametered, SlotsOutOfUseReadEmpty) {
    EXPECT_STREQ("", table.get_param_name(0));
    EXPECT_STREQ("", table.get_param_text(99));
}

}  // namespace
