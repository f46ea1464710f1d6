#include <vekdb/host/array.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/grow_string.h>
#include "testing/failing_allocator.h"
#include "testing/random.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

using testing::ElementsAre;
using testing_support::failEachAllocation;
using testing_support::FailingAllocator;
using testing_support::Random;

static_assert(std::has_virtual_destructor_v<Array>);
static_assert(!std::is_copy_constructible_v<Array>);

namespace {

int aliveRecords = 0;

struct Number final : ArrayRec {
    explicit Number(int value, char mark = ' ') : value_(value), mark_(mark) { ++aliveRecords; }
    ~Number() override { --aliveRecords; }
    int compare(const ArrayRec& other) const override {
        return value_ - static_cast<const Number&>(other).value_;
    }
    void printOn(GrowString& out) const override { out.append(std::to_string(value_).c_str()); }
    int value_;
    char mark_;
};

int valueAt(const Array& array, unsigned i) {
    return static_cast<const Number*>(array.datum(i))->value_;
}

template <class Container>
std::vector<int> values(const Container& array) {
    std::vector<int> found;
    for (unsigned i = 0; i < array.size(); ++i) {
        found.push_back(static_cast<const Number*>(array.datum(i))->value_);
    }
    return found;
}

void fill(Array& array, std::initializer_list<int> numbers) {
    for (const int number : numbers) {
        array.appendDatum(new Number(number));
    }
}

// Every test leaves no record behind.
class ArrayTest : public testing::Test {
protected:
    void SetUp() override { aliveRecords = 0; }
    void TearDown() override { EXPECT_EQ(aliveRecords, 0); }
};

}  // namespace

TEST_F(ArrayTest, AppendsAtTheEndAndOwnsItsRecords) {
    Array array;
    fill(array, {3, 1, 2});
    EXPECT_THAT(values(array), ElementsAre(3, 1, 2));
    EXPECT_EQ(aliveRecords, 3);
    EXPECT_EQ(array.datum(3), nullptr);
}

TEST_F(ArrayTest, InsertPutsBeforeTheIndex) {
    Array array;
    fill(array, {1, 2});
    array.insertDatum(new Number(9), 1);
    array.insertDatum(new Number(8), 0);
    array.insertDatum(new Number(7), 100);
    EXPECT_THAT(values(array), ElementsAre(8, 1, 9, 2, 7));
}

TEST_F(ArrayTest, ReplaceDeletesTheOldRecord) {
    Array array;
    fill(array, {1, 2});
    EXPECT_TRUE(array.replaceDatum(0, new Number(5)));
    EXPECT_THAT(values(array), ElementsAre(5, 2));
    EXPECT_EQ(aliveRecords, 2);
}

TEST_F(ArrayTest, ReplaceWhereNothingIsDeletesTheGivenRecord) {
    Array array;
    fill(array, {1});
    EXPECT_FALSE(array.replaceDatum(1, new Number(5)));
    EXPECT_EQ(aliveRecords, 1);
}

TEST_F(ArrayTest, NullRecordsAreIgnored) {
    Array array;
    unsigned index = 77;
    array.appendDatum(nullptr);
    array.insertDatum(nullptr, 0);
    EXPECT_FALSE(array.intern(nullptr, index));
    EXPECT_FALSE(array.replaceDatum(0, nullptr));
    EXPECT_EQ(array.size(), 0u);
    EXPECT_EQ(index, 77u);
}

TEST_F(ArrayTest, SortOrdersByTheRecordsAndKeepsEqualOnesInTheirOrder) {
    Array array;
    array.appendDatum(new Number(2, 'a'));
    array.appendDatum(new Number(1, 'b'));
    array.appendDatum(new Number(2, 'c'));
    EXPECT_FALSE(array.isSorted());
    array.sort();
    EXPECT_TRUE(array.isSorted());
    EXPECT_THAT(values(array), ElementsAre(1, 2, 2));
    EXPECT_EQ(static_cast<const Number*>(array.datum(1))->mark_, 'a');
}

TEST_F(ArrayTest, InternKeepsSortedModeInOrder) {
    Array array;
    fill(array, {5, 1});
    array.sort();
    unsigned index = 0;
    EXPECT_TRUE(array.intern(new Number(3), index));
    EXPECT_EQ(index, 1u);
    EXPECT_FALSE(array.intern(new Number(5), index));
    EXPECT_EQ(index, 2u);
    EXPECT_THAT(values(array), ElementsAre(1, 3, 5));
    EXPECT_EQ(aliveRecords, 3);
}

TEST_F(ArrayTest, InternInAnUnsortedArrayAppends) {
    Array array;
    fill(array, {5, 1});
    unsigned index = 0;
    EXPECT_FALSE(array.intern(new Number(1), index));
    EXPECT_EQ(index, 1u);
    EXPECT_TRUE(array.intern(new Number(3), index));
    EXPECT_EQ(index, 2u);
    EXPECT_THAT(values(array), ElementsAre(5, 1, 3));
}

TEST_F(ArrayTest, SortedModeEndsWhenARecordBreaksTheOrder) {
    Array array;
    fill(array, {1, 3});
    array.sort();
    array.insertDatum(new Number(2), 1);
    array.appendDatum(new Number(4));
    EXPECT_TRUE(array.isSorted());
    array.appendDatum(new Number(0));
    EXPECT_FALSE(array.isSorted());
    array.sort();
    array.replaceDatum(0, new Number(1));
    EXPECT_TRUE(array.isSorted());
    array.replaceDatum(0, new Number(99));
    EXPECT_FALSE(array.isSorted());
    unsigned index = 0;
    EXPECT_FALSE(array.intern(new Number(1), index));
    EXPECT_EQ(index, 1u);
}

TEST_F(ArrayTest, InitEmptiesAndLeavesSortedMode) {
    Array array;
    fill(array, {1, 2});
    array.sort();
    array.init(100);
    EXPECT_EQ(array.size(), 0u);
    EXPECT_EQ(aliveRecords, 0);
    EXPECT_FALSE(array.isSorted());
    fill(array, {2, 1});
    EXPECT_THAT(values(array), ElementsAre(2, 1));
}

TEST_F(ArrayTest, PrintsItsRecordsInTurn) {
    Array array;
    GrowString none;
    array.printOn(none);
    EXPECT_STREQ(none, "");
    fill(array, {3, 1, 2});
    GrowString out;
    array.printOn(out);
    EXPECT_STREQ(out, "3, 1, 2");
}

TEST_F(ArrayTest, SetIsAlwaysSortedAndHasNoDuplicates) {
    Set set;
    unsigned index = 0;
    EXPECT_TRUE(set.intern(new Number(5), index));
    EXPECT_TRUE(set.intern(new Number(1), index));
    EXPECT_EQ(index, 0u);
    EXPECT_FALSE(set.intern(new Number(5), index));
    EXPECT_EQ(index, 1u);
    EXPECT_THAT(values(set), ElementsAre(1, 5));
    set.init();
    EXPECT_EQ(set.size(), 0u);
    set.intern(new Number(3), index);
    set.intern(new Number(2), index);
    EXPECT_THAT(values(set), ElementsAre(2, 3));
}

TEST_F(ArrayTest, FailedGrowthDeletesTheGivenRecordAndKeepsTheOthers) {
    Array array;
    for (int i = 0; i < 8; ++i) {
        array.appendDatum(new Number(i));
    }
    unsigned index = 0;
    for (int attempt = 0; attempt < 3; ++attempt) {
        Number* record = new Number(100);
        FailingAllocator failing(1);
        switch (attempt) {
            case 0:
                EXPECT_THROW(array.appendDatum(record), Quor::Exception::BadAlloc);
                break;
            case 1:
                EXPECT_THROW(array.insertDatum(record, 0), Quor::Exception::BadAlloc);
                break;
            default:
                EXPECT_THROW(array.intern(record, index), Quor::Exception::BadAlloc);
        }
        EXPECT_EQ(aliveRecords, 8);
    }
    EXPECT_EQ(valueAt(array, 7), 7);
}

TEST_F(ArrayTest, AgreesWithAPlainVectorUnderRandomUse) {
    Random random;
    Array array;
    std::vector<int> model;
    for (int step = 0; step < 3000; ++step) {
        const int number = random.between(0, 50);
        const std::size_t at = random.below(model.size() + 1);
        unsigned index = 0;
        switch (random.below(5)) {
            case 0:
                array.appendDatum(new Number(number));
                model.push_back(number);
                break;
            case 1:
                array.insertDatum(new Number(number), unsigned(at));
                model.insert(model.begin() + std::ptrdiff_t(at), number);
                break;
            case 2:
                ASSERT_EQ(array.replaceDatum(unsigned(at), new Number(number)), at < model.size());
                if (at < model.size()) {
                    model[at] = number;
                }
                break;
            case 3: {
                const bool known = std::count(model.begin(), model.end(), number) != 0;
                ASSERT_EQ(array.intern(new Number(number), index), !known);
                ASSERT_EQ(valueAt(array, index), number);
                if (!known) {
                    model.insert(model.begin() + index, number);
                }
                break;
            }
            default:
                if (random.oneIn(5)) {
                    array.sort();
                    std::stable_sort(model.begin(), model.end());
                }
        }
        ASSERT_EQ(values(array), model);
        ASSERT_TRUE(!array.isSorted() || std::is_sorted(model.begin(), model.end()));
    }
}
