// The table of identities by itself, against the standard library's.
#include <gtest/gtest.h>

#include <map>

#include "testing/random.h"
#include "vekdb/rows/cookie_rows.h"

namespace {

Quor::UUID idOf(unsigned number) {
    Quor::UUID id;
    for (int i = 0; i < 4; ++i) id.bytes[12 + i] = static_cast<std::uint8_t>(number >> (8 * i));
    return id;
}

void expectSame(const std::map<Quor::UUID, unsigned>& expected, const CookieRows& rows,
                unsigned numbers) {
    EXPECT_EQ(expected.empty(), rows.empty());
    for (unsigned number = 0; number < numbers; ++number) {
        const auto found = expected.find(idOf(number));
        const unsigned row = found == expected.end() ? CookieRows::none : found->second;
        ASSERT_EQ(row, rows.find(idOf(number))) << "identity " << number;
    }
}

TEST(CookieRows, AnswerAsAMapDoes) {
    testing_support::Random random;
    for (const unsigned numbers : {1u, 10u, 11u, 12u, 200u, 3000u}) {
        CookieRows rows;
        std::map<Quor::UUID, unsigned> expected;
        for (unsigned row = 0; row < 2 * numbers; ++row) {
            const Quor::UUID id = idOf(random.below(numbers));
            rows.expect(id);
            if (random.below(2) == 0) {
                rows.enter(id, row);
                expected.emplace(id, row);
            } else {
                rows.replace(id, row);
                expected[id] = row;
            }
        }
        expectSame(expected, rows, numbers + 1);
    }
}

TEST(CookieRows, RoomMadeAheadChangesNothing) {
    CookieRows rows;
    rows.enter(idOf(1), 5);
    rows.reserve(100000);
    EXPECT_EQ(5u, rows.find(idOf(1)));
    rows.reserve(1);
    EXPECT_EQ(5u, rows.find(idOf(1)));
    EXPECT_EQ(CookieRows::none, rows.find(idOf(2)));
}

TEST(CookieRows, CanBeFilledAgainAfterBeingCleared) {
    CookieRows rows;
    for (unsigned i = 0; i < 100; ++i) rows.enter(idOf(i), i);
    rows.clear();
    EXPECT_TRUE(rows.empty());
    EXPECT_EQ(CookieRows::none, rows.find(idOf(3)));
    rows.enter(idOf(3), 9);
    EXPECT_EQ(9u, rows.find(idOf(3)));
}

TEST(CookieRows, TheNilIdentityIsOneAsAnyOther) {
    CookieRows rows;
    EXPECT_EQ(CookieRows::none, rows.find(Quor::UUID()));
    rows.enter(idOf(1), 4);
    EXPECT_EQ(CookieRows::none, rows.find(Quor::UUID()));
    rows.enter(Quor::UUID(), 3);
    EXPECT_EQ(3u, rows.find(Quor::UUID()));
}

}  // namespace
