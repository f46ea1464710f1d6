#include <vekdb/host/config.h>

#include "testing/print_strings.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

class ConfigInt : public ::testing::Test {
protected:
    ~ConfigInt() override { clearConfigInt("test_setting"); }
};

TEST_F(ConfigInt, UnsetGivesTheDefault) {
    EXPECT_EQ(config_int("test_setting", 1, INT_MIN, INT_MAX), 1);
    EXPECT_EQ(config_int("test_setting", -7, INT_MIN, INT_MAX), -7);
}

TEST_F(ConfigInt, UnsetGivesTheDefaultAsItIs) {
    EXPECT_EQ(config_int("test_setting", 9, 0, 5), 9);
}

TEST_F(ConfigInt, SetValueIsRead) {
    setConfigInt("test_setting", 0);
    EXPECT_EQ(config_int("test_setting", 1, INT_MIN, INT_MAX), 0);
    setConfigInt("test_setting", 42);
    EXPECT_EQ(config_int("test_setting", 1, INT_MIN, INT_MAX), 42);
}

TEST_F(ConfigInt, SetValueIsMovedIntoTheRange) {
    setConfigInt("test_setting", 11);
    EXPECT_EQ(config_int("test_setting", 1, 0, 10), 10);
    setConfigInt("test_setting", -1);
    EXPECT_EQ(config_int("test_setting", 1, 0, 10), 0);
    setConfigInt("test_setting", INT_MIN);
    EXPECT_EQ(config_int("test_setting", 1, INT_MIN, INT_MAX), INT_MIN);
}

TEST_F(ConfigInt, ClearedSettingIsUnset) {
    setConfigInt("test_setting", 5);
    clearConfigInt("test_setting");
    clearConfigInt("test_setting");
    EXPECT_EQ(config_int("test_setting", 1, INT_MIN, INT_MAX), 1);
}

TEST_F(ConfigInt, NamesDifferByCase) {
    setConfigInt("test_setting", 5);
    EXPECT_EQ(config_int("Test_Setting", 1, INT_MIN, INT_MAX), 1);
}

TEST_F(ConfigInt, NullNameIsNoSetting) {
    setConfigInt(nullptr, 5);
    EXPECT_EQ(config_int(nullptr, 1, INT_MIN, INT_MAX), 1);
    EXPECT_EQ(config_int("", 2, INT_MIN, INT_MAX), 2);
    clearConfigInt(nullptr);
}

std::string textOf(const configb& settings, const char* key) {
    return settings.get(key).get().c_str();
}

TEST(StrpField, HoldsTheTextThatWasSet) {
    strp_field field;
    EXPECT_TRUE(field.get().empty());
    field.set("12A");
    EXPECT_EQ(field.get(), "12A");
    field.set("");
    EXPECT_TRUE(field.get().empty());
    EXPECT_EQ(strp_field("7").get(), "7");
}

TEST(Configb, KeepsFieldsByKeyInTheOrderOfSetting) {
    configb settings;
    settings.set("slate/take", strp_field("4"));
    settings.set("name", strp_field("12A-4"));
    EXPECT_EQ(settings.size(), 2u);
    EXPECT_EQ(settings.key(0), "slate/take");
    EXPECT_EQ(settings.key(1), "name");
    EXPECT_EQ(textOf(settings, "slate/take"), "4");
    EXPECT_EQ(textOf(settings, "name"), "12A-4");
}

TEST(Configb, LaterSetReplacesAndKeepsThePlace) {
    configb settings;
    settings.set("a", strp_field("1"));
    settings.set("b", strp_field("2"));
    settings.set("a", strp_field("3"));
    EXPECT_EQ(settings.size(), 2u);
    EXPECT_EQ(settings.key(0), "a");
    EXPECT_EQ(textOf(settings, "a"), "3");
}

TEST(Configb, AbsentKeyGivesAnEmptyField) {
    configb settings;
    settings.set("a", strp_field("1"));
    EXPECT_FALSE(settings.has("A"));
    EXPECT_EQ(textOf(settings, "A"), "");
    EXPECT_TRUE(settings.key(1).empty());
}

TEST(Configb, EmptyFieldIsStillSet) {
    configb settings;
    settings.set("a", strp_field());
    EXPECT_TRUE(settings.has("a"));
    EXPECT_EQ(settings.size(), 1u);
}

TEST(Configb, OwnFieldMayBeSetUnderAnotherKey) {
    configb settings;
    settings.set("a", strp_field("1"));
    for (const char* key : {"b", "c", "d", "e", "f"}) {
        settings.set(key, settings.get("a"));
    }
    EXPECT_EQ(textOf(settings, "f"), "1");
}

TEST(Configb, NullKeyIsTheEmptyKey) {
    configb settings;
    settings.set(nullptr, strp_field("1"));
    EXPECT_EQ(textOf(settings, ""), "1");
    EXPECT_TRUE(settings.has(nullptr));
}

}  // namespace
