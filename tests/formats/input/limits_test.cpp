#include "formats/input/limits.h"

#include <gtest/gtest.h>

#include "formats/failure.h"
#include "formats/input/text_form.h"

using namespace vek::formats;

TEST(Limits, AreForBytesThatAreRead) {
    Limits limits;
    limits.bytes = 10;
    EXPECT_NO_THROW(requireBytes("a", 10, limits, ownTerms));
    EXPECT_THROW(requireBytes("a", 11, limits, ownTerms), Failure);
}

TEST(Limits, AreForCellsThatSomebodyNamed) {
    Limits limits;
    limits.cells = 6;
    EXPECT_NO_THROW(requireCells("a", 2, 3, 1, limits, ownTerms));
    EXPECT_THROW(requireCells("a", 2, 4, 1, limits, ownTerms), Failure);
    EXPECT_THROW(requireCells("a", SIZE_MAX, SIZE_MAX, 1, limits, ownTerms), Failure);
}

TEST(Limits, OfWhatIsUnpackedAreThoseOfTheBytes) {
    Limits limits;
    limits.bytes = 1000;
    EXPECT_EQ(1000u, mostUnpacked(100, limits));
}

TEST(Limits, AreForBytesThatAreWritten) {
    EXPECT_NO_THROW(requireOutput("a", 10, {10, 0}, ownTerms));
    EXPECT_THROW(requireOutput("a", 11, {10, 0}, ownTerms), Failure);
}

TEST(TextForm, HasCellsBetweenWhatIsNoPartOfALine) {
    for (char c : {',', ';', '\t', '|', 'x', ' '}) EXPECT_TRUE(canDelimit(c)) << c;
    for (char c : {'"', '\n', '\r', '\0', '\xE9'}) EXPECT_FALSE(canDelimit(c)) << c;
}
