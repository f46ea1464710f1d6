// The parts that a table is composed of, each by itself.
#include <gtest/gtest.h>

#include <string>

#include "testing/failing_allocator.h"
#include "vekdb/order/sort_settings.h"
#include "vekdb/rows/cookie_rows.h"
#include "vekdb/table/parameters.h"
#include "vekdb/table/update_batch.h"

namespace {

using testing_support::FailingAllocator;

Cookie cookieOf(unsigned char number) {
    Cookie cookie;
    cookie.uuid.bytes[0] = number;
    cookie.type = 'C';
    return cookie;
}

TEST(Parameters, AreKeptInTheirOrderAsCopies) {
    Parameters parameters;
    std::string name = "Project";
    std::string value = "Night";
    parameters.append(name, value);
    name = value = "gone";
    parameters.append("Unit", "");
    EXPECT_EQ(2u, parameters.count());
    EXPECT_STREQ("Project", parameters.name(0));
    EXPECT_STREQ("Night", parameters.value(0));
    EXPECT_STREQ("", parameters.value(1));
    EXPECT_STREQ("", parameters.name(2));
}

TEST(Parameters, OfOneNameTheFirstIsFound) {
    Parameters parameters;
    parameters.append("A", "1");
    parameters.append("a", "2");
    EXPECT_EQ(0u, parameters.find("a"));
    EXPECT_EQ(Parameters::none, parameters.find("b"));
    EXPECT_EQ(Parameters::none, parameters.find(nullptr));
}

TEST(Parameters, AreNoMoreThanForty) {
    Parameters parameters;
    for (int i = 0; i < 41; ++i) parameters.append(std::to_string(i), "v");
    EXPECT_EQ(40u, parameters.count());
    EXPECT_EQ(39u, parameters.find("39"));
    EXPECT_EQ(Parameters::none, parameters.find("40"));
}

TEST(Parameters, AValueMayBeReplacedByItselfOrByAnothers) {
    Parameters parameters;
    parameters.append("A", "first");
    parameters.append("B", "second");
    parameters.replace(0, parameters.value(0));
    EXPECT_STREQ("first", parameters.value(0));
    parameters.replace(0, parameters.value(1));
    parameters.replace(1, "");
    EXPECT_STREQ("second", parameters.value(0));
    EXPECT_STREQ("", parameters.value(1));
}

TEST(Parameters, ATextThatCouldNotBeCopiedReadsEmptyInItsSlot) {
    Parameters parameters;
    {
        const FailingAllocator failing(2);
        parameters.append("A", "value");
    }
    {
        const FailingAllocator failing(1);
        parameters.append("B", "value");
    }
    EXPECT_EQ(2u, parameters.count());
    EXPECT_STREQ("A", parameters.name(0));
    EXPECT_STREQ("", parameters.value(0));
    EXPECT_STREQ("", parameters.name(1));
    EXPECT_STREQ("value", parameters.value(1));
    EXPECT_EQ(Parameters::none, parameters.find("B"));
}

TEST(Parameters, CanBeClearedAndFilledAgain) {
    Parameters parameters;
    parameters.append("A", "1");
    parameters.clear();
    EXPECT_EQ(0u, parameters.count());
    EXPECT_EQ(Parameters::none, parameters.find("A"));
    parameters.append("B", "2");
    EXPECT_STREQ("B", parameters.name(0));
}

TEST(CookieRows, TheFirstRowEnteredKeepsAnIdentityUntilItIsReplaced) {
    CookieRows rows;
    EXPECT_TRUE(rows.empty());
    rows.enter(cookieOf(1).uuid, 7);
    rows.enter(cookieOf(1).uuid, 8);
    EXPECT_EQ(7u, rows.find(cookieOf(1).uuid));
    rows.replace(cookieOf(1).uuid, 9);
    rows.replace(cookieOf(2).uuid, 1);
    EXPECT_EQ(9u, rows.find(cookieOf(1).uuid));
    EXPECT_EQ(1u, rows.find(cookieOf(2).uuid));
    EXPECT_EQ(CookieRows::none, rows.find(cookieOf(3).uuid));
    rows.clear();
    EXPECT_TRUE(rows.empty());
    EXPECT_EQ(CookieRows::none, rows.find(cookieOf(1).uuid));
}

TEST(SortSettings, AreByNothingAtFirstAndAfterAReset) {
    SortSettings sort;
    EXPECT_EQ(-1, sort.columns()[0]);
    EXPECT_EQ(0, sort.offset());
    sort.sortBy(3);
    sort.setOffset(2);
    EXPECT_EQ(3, sort.columns()[0]);
    EXPECT_EQ(-1, sort.columns()[1]);
    EXPECT_EQ(2, sort.offset());
    sort.reset();
    EXPECT_EQ(-1, sort.columns()[0]);
    EXPECT_EQ(0, sort.offset());
}

TEST(SortSettings, ACallersListStaysTheCallers) {
    SortSettings sort;
    int columns[] = {2, 1, -1};
    sort.sortBy(columns);
    EXPECT_EQ(columns, sort.columns());
    sort.sortBy(4);
    EXPECT_NE(columns, sort.columns());
    EXPECT_EQ(2, columns[0]);
    sort.sortBy(columns);
    sort.sortBy(static_cast<int*>(nullptr));
    EXPECT_EQ(-1, sort.columns()[0]);
}

TEST(UpdateBatch, EndsOnceForAllItsBrackets) {
    UpdateBatch batch;
    EXPECT_EQ(1u, batch.begin());
    EXPECT_EQ(2u, batch.begin());
    batch.add(cookieOf(1));
    EXPECT_FALSE(batch.end());
    EXPECT_TRUE(batch.end());
    EXPECT_EQ(1u, batch.take().size());
    EXPECT_EQ(0u, batch.take().size());
    EXPECT_FALSE(batch.end());
    EXPECT_EQ(0u, batch.depth());
}

TEST(UpdateBatch, WhatWasAddedOutsideIsDroppedByTheOutermostBracketOnly) {
    UpdateBatch batch;
    batch.add(cookieOf(1));
    batch.begin();
    batch.add(cookieOf(2));
    batch.begin();
    batch.add(cookieOf(2));
    batch.end();
    EXPECT_TRUE(batch.end());
    const CookieVec taken = batch.take();
    ASSERT_EQ(2u, taken.size());
    EXPECT_EQ(2, taken[0].uuid.bytes[0]);
}

TEST(UpdateBatch, AResetClosesEveryBracket) {
    UpdateBatch batch;
    batch.begin();
    batch.add(cookieOf(1));
    batch.reset();
    EXPECT_EQ(0u, batch.depth());
    batch.begin();
    EXPECT_FALSE(batch.end());
}

}  // namespace
