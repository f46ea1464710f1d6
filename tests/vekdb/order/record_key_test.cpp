#include "vekdb/order/record_key.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include <vekdb/record.h>
#include "testing/random.h"
#include "vekdb/order/sort_keys.h"

namespace {

using Texts = std::vector<std::string>;
using Bytes = std::array<unsigned char, RecordKey::largest>;

int sign(int order) {
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

dbrecord recordOf(const Texts& values) {
    dbrecord record(static_cast<unsigned short>(values.size()));
    for (unsigned short i = 0; i < values.size(); ++i) record.setField(i, values[i].c_str());
    return record;
}

std::string shown(const Texts& values) {
    std::string all;
    for (const std::string& value : values) all += '"' + value + "\" ";
    return all;
}

// The state of the comparison that a table's sort would prepare.
class RecordKeys : public testing::Test {
protected:
    RecordKeys()
        : fields_(cmp_fields), timecode_(timecode_field), normal_(force_normal_sort), off_(s_off) {
        cmp_fields = columns_.data();
        timecode_field = -1;
        force_normal_sort = 0;
        s_off = 0;
    }
    ~RecordKeys() override {
        cmp_fields = fields_;
        timecode_field = timecode_;
        force_normal_sort = normal_;
        s_off = off_;
    }

    void sortBy(std::initializer_list<int> columns) {
        columns_.fill(-1);
        std::copy(columns.begin(), columns.end(), columns_.begin());
    }

    // Keys that differ order their records as the comparison does. Those that are the same stand
    // for records that compare as equals, or both say that they do not know.
    static void expectOrder(bool descending, const Texts& x, const Texts& y) {
        const KeyLayout layout(descending);
        RecordKeyWriter writer(layout);
        Bytes forA;
        Bytes forB;
        const dbrecord a = recordOf(x);
        const dbrecord b = recordOf(y);
        const RecordKey keyA = writer.write(a, forA.data());
        const RecordKey keyB = writer.write(b, forB.data());
        const int byKeys = compareKeys(layout, keyA, keyB);
        const int byRecords = descending ? -compareDescending(a, b) : compareAscending(a, b);
        if (byKeys == 0 && keyA.isCut() && keyB.isCut()) return;
        EXPECT_EQ(sign(byKeys), sign(byRecords)) << shown(x) << "and " << shown(y);
    }

    static void expectOrders(const Texts& x, const Texts& y) {
        for (bool descending : {false, true}) {
            expectOrder(descending, x, y);
            expectOrder(descending, y, x);
        }
    }

    // Whether the key of one column's text holds all that there is to know.
    static bool isWhole(const char* text) {
        const KeyLayout layout(false);
        Bytes bytes;
        return !RecordKeyWriter(layout).write(recordOf({text}), bytes.data()).isCut();
    }

private:
    std::array<int, 8> columns_ = {0, -1, -1, -1, -1, -1, -1, -1};
    int* fields_;
    int timecode_;
    int normal_;
    int off_;
};

TEST_F(RecordKeys, HoldTheZerosOfEightNumbersAndSayWhereThereAreMore) {
    EXPECT_TRUE(isWhole("1a1a1a1a1a1a1a1"));
    EXPECT_FALSE(isWhole("1a1a1a1a1a1a1a1a1"));
    expectOrders({"1a1a1a1a1a1a1a1"}, {"1a1a1a1a1a1a1a01"});
    expectOrders({"1a1a1a1a1a1a1a1a1"}, {"1a1a1a1a1a1a1a1a01"});
    expectOrders({"1a1a1a1a1a1a1a1a1a1"}, {"1a1a1a1a1a1a1a1a1a001"});
}

TEST_F(RecordKeys, OfMoreZerosThanAPlaceCountsSayThatTheyDoNotKnow) {
    EXPECT_TRUE(isWhole(("x" + std::string(99, '0') + "1").c_str()));
    EXPECT_FALSE(isWhole(("x" + std::string(100, '0') + "1").c_str()));
    for (std::size_t zeros : {0u, 1u, 98u, 99u, 100u, 101u, 256u}) {
        for (std::size_t others : {0u, 1u, 98u, 99u, 100u, 101u, 256u}) {
            expectOrders({"x" + std::string(zeros, '0') + "1"},
                         {"x" + std::string(others, '0') + "1"});
        }
    }
}

TEST_F(RecordKeys, OfLongNumbersOrderThemByTheirLength) {
    for (std::size_t length : {1u, 7u, 8u, 9u, 10u, 54u, 55u, 56u, 254u, 255u, 256u, 600u}) {
        for (std::size_t other : {1u, 7u, 8u, 9u, 10u, 54u, 55u, 56u, 254u, 255u, 256u, 600u}) {
            expectOrders({std::string(length, '7')}, {std::string(other, '7')});
            expectOrders({std::string(length, '7') + "a"}, {std::string(other, '8')});
        }
    }
}

TEST_F(RecordKeys, EndWhereAValueIsMissing) {
    sortBy({0, 1});
    expectOrders({"", "b"}, {"", "a"});
    expectOrders({"", ""}, {"", "a"});
    expectOrders({"a", ""}, {"", ""});
    expectOrders({"a", ""}, {"a", "b"});
    expectOrders({" ", "b"}, {"", "a"});
}

TEST_F(RecordKeys, OfFewerColumnsThanAreComparedSayThatTheyDoNotKnow) {
    sortBy({0, 1, 2, 3});
    EXPECT_TRUE(isWhole("a"));
    sortBy({0, 1, 2, 3, 4});
    EXPECT_FALSE(isWhole("a"));
    expectOrders({"a", "a", "a", "a", "x"}, {"a", "a", "a", "a", "y"});
}

TEST_F(RecordKeys, OrderTimecodesByAllButTheirSeparatorOfFrames) {
    timecode_field = 0;
    expectOrders({"01:00:00:00"}, {"01:00:00;00"});
    expectOrders({"01:00:00:01"}, {"01:00:00;00"});
    expectOrders({"01:00:00"}, {"01:00:00:"});
    expectOrders({"01:00:00x1"}, {"01:00:00y0"});
}

TEST_F(RecordKeys, OrderTextsOfAllKindsAsTheComparisonDoes) {
    testing_support::Random random;
    for (int turn = 0; turn < 20000; ++turn) {
        sortBy({0, 1});
        if (random.oneIn(3)) sortBy({1, 0, 2});
        timecode_field = random.oneIn(4) ? 1 : -1;
        force_normal_sort = random.oneIn(4) ? 1 : 0;
        s_off = random.oneIn(4) ? random.between(-3, 3) : 0;
        const Texts x = {random.text("0a1 ", 24), random.text("0A1:", 12), random.text("0b", 2)};
        Texts y = random.oneIn(2) ? x : Texts{random.text("0A1 ", 24), x[1], x[2]};
        std::string& changed = y[random.below(3)];
        changed.insert(random.below(changed.size() + 1), random.text("0a19 ", 2));
        expectOrders(x, y);
        if (HasFailure()) return;
    }
}

unsigned bitsTogether(const std::vector<Texts>& rows) {
    std::vector<dbrecord> records;
    for (const Texts& row : rows) records.push_back(recordOf(row));
    std::vector<const dbrecord*> order;
    for (const dbrecord& record : records) order.push_back(&record);
    return SortKeys(order.data(), order.size(), false).bits();
}

TEST_F(RecordKeys, TakeNoMoreBitsTogetherThanTellTheirBytesApart) {
    sortBy({0, 1});
    EXPECT_EQ(bitsTogether({{"xa", "z"}, {"xa", "z"}}), 0u);
    EXPECT_EQ(bitsTogether({{"xa", "z"}, {"xb", "z"}, {"xc", "z"}}), 2u);
    EXPECT_EQ(bitsTogether({{"xa", "m"}, {"xb", "n"}, {"xc", "m"}, {"xd", "n"}, {"xe", "n"}}), 4u);
}

}  // namespace
