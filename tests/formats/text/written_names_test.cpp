#include <gmock/gmock.h>

#include "formats/text/written_names.h"

using testing::ElementsAre;
using testing::Optional;
using namespace vek::formats;

TEST(WrittenNames, ReadsANameBetweenBrackets) {
    const auto name = bracketedName("[c<d]=x");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->name, "c<d");
    EXPECT_EQ(name->size, 5u);
}

TEST(WrittenNames, TakesTwoClosingBracketsForOne) {
    const auto name = bracketedName("[a]]b] and more");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->name, "a]b");
    EXPECT_EQ(name->size, 6u);
    EXPECT_EQ(bracketedName("[a]]"), std::nullopt);
}

TEST(WrittenNames, TakesBracketsAwayOnlyWhereTheyHoldAllOfIt) {
    EXPECT_THAT(unbracketed("[Name, clip]"),
                Optional(testing::Field(&WrittenName::name, "Name, clip")));
    EXPECT_EQ(unbracketed("[Name] 2"), std::nullopt);
    EXPECT_EQ(unbracketed("Name"), std::nullopt);
}

TEST(WrittenNames, DividesAListOnlyOutsideOfBrackets) {
    EXPECT_THAT(splitNames("Scene,[Name, clip],Take"),
                ElementsAre("Scene", "[Name, clip]", "Take"));
    EXPECT_THAT(splitNames("Scene"), ElementsAre("Scene"));
}
