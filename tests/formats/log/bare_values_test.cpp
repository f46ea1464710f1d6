#include "formats/log/bare_values.h"

#include <gtest/gtest.h>

using vek::formats::Bare;
using vek::formats::BareValues;

TEST(BareValues, ACellThatNobodySpokeOfStoodBetweenQuotes) {
    BareValues values;
    EXPECT_FALSE(values.areAny());
    EXPECT_EQ(values.of(0, 0), Bare::no);
    values.note(3, 1, Bare::number);
    EXPECT_TRUE(values.areAny());
    EXPECT_EQ(values.of(2, 1), Bare::no);
    EXPECT_EQ(values.of(3, 0), Bare::no);
    EXPECT_EQ(values.of(3, 2), Bare::no);
    EXPECT_EQ(values.of(4, 1), Bare::no);
}

TEST(BareValues, WhatIsNotedLastOfACellHolds) {
    BareValues values;
    values.note(0, 0, Bare::number);
    values.note(1, 0, Bare::number);
    values.note(1, 0, Bare::truth);
    EXPECT_EQ(values.of(0, 0), Bare::number);
    EXPECT_EQ(values.of(1, 0), Bare::truth);
    values.note(1, 0, Bare::no);
    EXPECT_EQ(values.of(0, 0), Bare::number);
    EXPECT_EQ(values.of(1, 0), Bare::no);
}

TEST(BareValues, AnyCellMayBeReplacedAndTakesItsPlaceWhereColumnsGo) {
    BareValues values;
    for (unsigned row = 0; row < 9; ++row) values.note(row, 2, Bare::number);
    values.replace(4, 2, Bare::no);
    values.replace(4, 1, Bare::nothing);
    values.replace(20, 2, Bare::nested);
    values.forget(0);
    values.forget(70);
    EXPECT_EQ(values.of(3, 1), Bare::number);
    EXPECT_EQ(values.of(4, 1), Bare::no);
    EXPECT_EQ(values.of(4, 0), Bare::nothing);
    EXPECT_EQ(values.of(20, 1), Bare::nested);
}

TEST(BareValues, OfTheLastColumnGoWithIt) {
    BareValues values;
    values.note(0, 1, Bare::number);
    values.forget(1);
    EXPECT_EQ(values.of(0, 1), Bare::no);
}
