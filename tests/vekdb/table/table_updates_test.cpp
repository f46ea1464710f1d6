#include <gtest/gtest.h>

#include <vekdb/host/config.h>
#include <vekdb/host/cookie_containers.h>
#include <vekdb/host/wrapped_data.h>
#include <vekdb/table.h>
#include "testing/tables.h"

namespace {

Cookie cookieOf(unsigned char number) {
    Cookie cookie;
    cookie.uuid.bytes[0] = number;
    cookie.type = 'C';
    return cookie;
}

std::vector<unsigned> numbersIn(const Quor::Ptr<iObject>& object) {
    std::vector<unsigned> numbers;
    auto* wrapped = dynamic_cast<WrappedData<CookieVec>*>(object.get());
    if (wrapped == nullptr) return numbers;
    for (const Cookie& cookie : wrapped->data()) numbers.push_back(cookie.uuid.bytes[0]);
    return numbers;
}

struct Updates : testing::Test {
    Updates() : table(textColumns({"Name", "Cookie", "Notes"})), changed(table, "recordsChanged") {}
    vekdb table;
    NoticeTexts changed;
};

TEST_F(Updates, NestedBracketsGiveOneNoticeWithEveryCookie) {
    EXPECT_EQ(1u, table.beginUpdate());
    EXPECT_EQ(2u, table.beginUpdate());
    table.addToUpdate(cookieOf(2));
    table.addToUpdate(cookieOf(1));
    table.endUpdate();
    EXPECT_TRUE(changed.texts.empty());
    table.endUpdate();
    ASSERT_EQ(1u, changed.texts.size());
    EXPECT_EQ("", changed.texts[0]);
    EXPECT_EQ((std::vector<unsigned>{2, 1}), numbersIn(changed.objects[0]));
    table.endUpdate();
    EXPECT_EQ(1u, changed.texts.size());
    EXPECT_EQ(0u, table.get_update_depth());
}

TEST_F(Updates, AnEmptyBracketIssuesNothing) {
    table.beginUpdate();
    table.endUpdate();
    EXPECT_TRUE(changed.texts.empty());
}

TEST_F(Updates, CookiesFromOutsideABracketAreDroppedByTheNextOne) {
    table.addToUpdate(cookieOf(1));
    table.endUpdate();
    table.beginUpdate();
    table.addToUpdate(cookieOf(2));
    table.endUpdate();
    ASSERT_EQ(1u, changed.objects.size());
    EXPECT_EQ(std::vector<unsigned>{2}, numbersIn(changed.objects[0]));
}

TEST_F(Updates, PendingCookiesAreGoneWhenTheNoticeComes) {
    table.beginUpdate();
    table.addToUpdate(cookieOf(1));
    table.endUpdate();
    table.beginUpdate();
    table.endUpdate();
    EXPECT_EQ(1u, changed.texts.size());
}

TEST_F(Updates, ExportingARowCollectsItsCookie) {
    addRow(table, {"Clip", cookieOf(5).asString(false).c_str(), "n"});
    configb settings;
    table.beginUpdate();
    EXPECT_TRUE(table.update(&settings, 0));
    table.endUpdate();
    ASSERT_EQ(1u, changed.objects.size());
    EXPECT_EQ(std::vector<unsigned>{5}, numbersIn(changed.objects[0]));
    EXPECT_STREQ("n", settings.get("notes").get().c_str());
}

TEST_F(Updates, ExportingWithoutAnIdentityCollectsNothing) {
    addRow(table, {"Clip", "", "n"});
    addRow(table, {"Clip", "garbage", "n"});
    configb settings;
    table.beginUpdate();
    EXPECT_TRUE(table.update(&settings, 0));
    EXPECT_TRUE(table.update(&settings, 1));
    table.endUpdate();
    EXPECT_TRUE(changed.texts.empty());
}

TEST_F(Updates, ExportingFailsWithoutARowOrAMappedField) {
    configb settings;
    EXPECT_FALSE(table.update(&settings, 0));
    EXPECT_FALSE(table.update(&settings, -1));
    vekdb named(textColumns({"Name"}));
    addRow(named, {"x"});
    EXPECT_FALSE(named.update(&settings, 0));
}

TEST_F(Updates, ExportingWithoutACookieColumnSucceeds) {
    vekdb plain(textColumns({"Name", "Notes"}));
    addRow(plain, {"x", "n"});
    configb settings;
    EXPECT_TRUE(plain.update(&settings, 0));
}

}  // namespace
