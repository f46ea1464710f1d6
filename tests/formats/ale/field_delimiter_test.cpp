#include "formats/ale/field_delimiter.h"

#include <gtest/gtest.h>

using vek::formats::aleDelimiter;

TEST(FieldDelimiter, IsNamedByAWordOfOneOrMany) {
    EXPECT_EQ('\t', aleDelimiter("TABS"));
    EXPECT_EQ('\t', aleDelimiter(" tab "));
    EXPECT_EQ(',', aleDelimiter("COMMAS"));
    EXPECT_EQ('/', aleDelimiter("SLASHES"));
}

TEST(FieldDelimiter, IsNamedByItself) {
    EXPECT_EQ(';', aleDelimiter(";"));
    EXPECT_EQ('^', aleDelimiter(" ^ "));
    EXPECT_EQ('\t', aleDelimiter("\t"));
}

TEST(FieldDelimiter, IsNoLetterAndNoFurtherWord) {
    for (const char* text : {"", "x", "7", "TABLE", "COMMA COMMA", "\"", "::"}) {
        EXPECT_FALSE(aleDelimiter(text)) << text;
    }
}
