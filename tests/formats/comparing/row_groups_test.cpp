#include "formats/comparing/row_groups.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using vek::formats::RowGroups;

namespace {

const std::vector<std::string> keys = {"a", "b", "a", "c", "b", "a"};

auto isKeyOf(unsigned row) {
    return [row](unsigned other) { return keys[other] == keys[row]; };
}

// Of keys whose hashes may all be one.
RowGroups groupsOf(std::uint64_t (*hashOf)(unsigned row)) {
    RowGroups groups;
    for (unsigned row = 0; row < keys.size(); ++row) groups.add(hashOf(row), row, isKeyOf(row));
    return groups;
}

std::uint64_t ownHash(unsigned row) {
    return static_cast<std::uint64_t>(keys[row][0]) << 56;
}

std::uint64_t sameHash(unsigned) {
    return 42;
}

}  // namespace

TEST(RowGroups, HaveTheRowsOfAKeyInTheirOrder) {
    for (auto hashOf : {ownHash, sameHash}) {
        const RowGroups groups = groupsOf(hashOf);
        EXPECT_THAT(groups.find(hashOf(0), isKeyOf(0)), ElementsAre(0, 2, 5));
        EXPECT_THAT(groups.find(hashOf(4), isKeyOf(4)), ElementsAre(1, 4));
        EXPECT_THAT(groups.find(hashOf(3), isKeyOf(3)), ElementsAre(3));
        EXPECT_THAT(groups.repeated(), ElementsAre(ElementsAre(0, 2, 5), ElementsAre(1, 4)));
    }
}

TEST(RowGroups, FindNothingForAKeyThatIsNotThere) {
    const RowGroups groups = groupsOf(sameHash);
    EXPECT_THAT(groups.find(sameHash(0), [](unsigned) { return false; }), IsEmpty());
    EXPECT_THAT(RowGroups().find(1, [](unsigned) { return true; }), IsEmpty());
}

TEST(RowGroups, CountTheRowsOfAKeyAsTheyCome) {
    RowGroups groups;
    const auto isAny = [](unsigned) { return true; };
    for (unsigned row = 0; row < 100; ++row) EXPECT_EQ(row + 1, groups.add(7, row, isAny));
}
