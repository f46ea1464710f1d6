#include <gtest/gtest.h>

#include <string>

#include "formats/xml/xml.h"
#include "formats/xml/xml_declaration.h"

using vek::formats::declaredEncoding;
using vek::formats::XmlDocument;

namespace {

std::string times(const char* text, std::size_t count) {
    std::string out;
    for (; count > 0; --count) out += text;
    return out;
}

std::string foundIn(std::string text, std::size_t mostMemory) {
    XmlDocument document;
    return document.parse(text.data(), text.size(), mostMemory).found;
}

// The least that a document may take for this text to be read.
std::size_t leastFor(const std::string& text) {
    std::size_t least = 0;
    for (std::size_t step = 1 << 24; step > 0; step /= 2) {
        if (foundIn(text, least + step - 1).starts_with("more elements")) least += step;
    }
    return least;
}

}  // namespace

TEST(Xml, ElementsAttributesAndTextsAreCountedBeforeTheyAreMade) {
    EXPECT_EQ(leastFor("<a/>"), 64u);
    EXPECT_EQ(leastFor("<a b='1' c = \"2\" d=\n'x=y'/>"), 64u + 3 * 40);
    EXPECT_EQ(leastFor("<a>x<b> </b></a>"), 64u * 4);
    EXPECT_EQ(leastFor("<a>" + times("<b/>", 1000) + "</a>"), 64u * 1001);
}

TEST(Xml, BlanksBetweenElementsCostNothing) {
    EXPECT_EQ(leastFor("<a>\n  <b/>\n  <b/></a>"), leastFor("<a><b/><b/></a>"));
}

TEST(Xml, ADocumentThatWouldTakeTooMuchIsRefusedWhereItDoes) {
    std::string text = "<a><b/><c/></a>";
    XmlDocument document;
    EXPECT_EQ(document.parse(text.data(), text.size(), 128).offset, text.find("<c"));
}

TEST(Xml, WhatOneDocumentTakesIsNoneOfAnothers) {
    std::string first = "<a>" + times("<b/>", 100) + "</a>";
    std::string second = first;
    XmlDocument one;
    XmlDocument other;
    EXPECT_FALSE(one.parse(first.data(), first.size(), 101 * 64).isAny());
    EXPECT_FALSE(other.parse(second.data(), second.size(), 101 * 64).isAny());
    EXPECT_EQ(one.root().firstChild().name(), "b");
}

TEST(XmlDeclaration, NamesAnEncodingInItsFirstLineAlone) {
    EXPECT_EQ(declaredEncoding("<?xml version=\"1.0\" encoding=\"ISO-8859-2\"?><a/>"),
              "ISO-8859-2");
    EXPECT_EQ(declaredEncoding("<?xml version='1.0' encoding = 'macroman' ?>"), "macroman");
    EXPECT_EQ(declaredEncoding("<?xml version='1.0'?><a encoding='x'/>"), "");
    EXPECT_EQ(declaredEncoding("<a encoding='x'/>"), "");
    EXPECT_EQ(declaredEncoding("<?xml encoding='x"), "");
    EXPECT_EQ(declaredEncoding("<?xml encoding='"), "");
    EXPECT_EQ(declaredEncoding("<?xml encoding"), "");
    EXPECT_EQ(declaredEncoding("<?xml encoding=x?>"), "");
}
