#include <gmock/gmock.h>

#include <ctime>

#include <vekdb/formats/log.h>
#include "formats/input/limits.h"
#include "formats/workbook/made_workbook.h"

using testing::HasSubstr;
using testing::StartsWith;

namespace {

std::string csvOf(const std::string& book, const vek::OpenOptions& options = {}) {
    auto log = vek::openText(book, "a.xlsx", options);
    if (!log) return log.reason().text();
    std::string text;
    EXPECT_TRUE(log->write(text, vek::Format::csv));
    return text;
}

std::string problemsOf(const std::string& book, const vek::OpenOptions& options = {}) {
    auto log = vek::openText(book, "a.xlsx", options);
    if (!log) return log.reason().text();
    std::string text;
    for (const vek::Problem& problem : log->problems()) text += problem.text("a.xlsx") + "\n";
    return text;
}

std::string withOneWrong(std::string text, std::string_view old, std::string_view by) {
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos);
    return text.replace(at, old.size(), by);
}

const char* const head = "<row r='1'><c r='A1' t='inlineStr'><is><t>N</t></is></c></row>";

}  // namespace

TEST(Workbooks, AreReadAsTheSheetShowsThem) {
    MadeWorkbook book{{{"One",
                        "<row r='2'><c r='B2' t='s'><v>0</v></c><c r='D2' t='s'><v>1</v></c></row>"
                        "<row r='5'><c r='B5' s='1'><v>45356</v></c><c r='D5' s='2'><v>1.005</v>"
                        "</c></row><row><c t='b' r='B6'><v>1</v></c><c r='D6' t='e'><v>#N/A</v></c>"
                        "</row><row r='9'><c r='B9' t='str'><f>A1</f><v>a&amp;b</v></c></row>"}}};
    book.shared =
        "<si><t>Day</t></si><si><r><t>Pr</t></r><r><t>ice</t></r><rPh><t>x</t></rPh></si>";
    book.formats = "<numFmt numFmtId='170' formatCode='d.m.yyyy'/>";
    book.styles = "<xf numFmtId='0'/><xf numFmtId='170'/><xf numFmtId='2'/>";
    EXPECT_EQ(csvOf(book.bytes()), "Day,Price\n5.3.2024,1.01\nTRUE,#N/A\na&b,\n");
    EXPECT_EQ(problemsOf(book.bytes()), "");
    book.properties = "<workbookPr date1904='true'/>";
    EXPECT_THAT(csvOf(book.bytes()), HasSubstr("6.3.2028"));
}

TEST(Workbooks, ShowDatesThatAreWrittenOutByTheFormatsOfTheirCells) {
    MadeWorkbook book{{{"One",
                        "<row r='1'><c r='A1' t='inlineStr'><is><t>D</t></is></c></row>"
                        "<row r='2'><c t='d' s='1'><v>2024-03-05T00:00:00.000</v></c></row>"
                        "<row r='3'><c t='d' s='2'><v>13:45:00</v></c></row>"
                        "<row r='4'><c t='d' s='3'><v>2024-03-05T23:59:59.96Z</v></c></row>"
                        "<row r='5'><c t='d' s='0'><v>2024-03-05</v></c></row>"
                        "<row r='6'><c t='d' s='1'><v>2024-02-30</v></c></row>"
                        "<row r='7'><c t='d' s='1'><v>1900-01-05</v></c></row>"
                        "<row r='8'><c t='d' s='1'><v>2024-03-05Tea</v></c></row>"
                        "<row r='9'><c t='d' s='1'><v>1903-12-31</v></c></row>"}}};
    book.formats =
        "<numFmt numFmtId='170' formatCode='d.m.yyyy'/>"
        "<numFmt numFmtId='171' formatCode='hh:mm:ss.0'/>";
    book.styles = "<xf numFmtId='0'/><xf numFmtId='170'/><xf numFmtId='20'/><xf numFmtId='171'/>";
    const std::string odd = "2024-03-05\n2024-02-30\n1900-01-05\n2024-03-05Tea\n";
    EXPECT_EQ(csvOf(book.bytes()), "D\n5.3.2024\n13:45\n00:00:00.0\n" + odd + "31.12.1903\n");
    book.properties = "<workbookPr date1904='true'/>";
    EXPECT_EQ(csvOf(book.bytes()), "D\n5.3.2024\n13:45\n00:00:00.0\n" + odd + "1903-12-31\n");
}

TEST(Workbooks, KeepTextsByteForByte) {
    const std::string rows =
        std::string(head) +
        "<row r='2'><c r='A2' t='inlineStr'><is><t xml:space='preserve'> 1_x000D_&#10;</t></is></c>"
        "</row><row r='3'><c r='A3' t='inlineStr'><is><t>_x005F_x000D_ _xZZ_ _x00E9_</t></is></c>"
        "</row><row r='4'><c r='A4' t='inlineStr'><is><t/></is></c></row>";
    EXPECT_EQ(csvOf(workbookOf(rows)), "N\n\" 1\r\n\"\n_x000D_ _xZZ_ \u00E9\n\"\"\n");
}

TEST(Workbooks, GiveTheFirstSheetThatIsSeenOrTheOneThatIsNamed) {
    const auto row = [](const char* text) {
        return std::string("<row><c t='inlineStr'><is><t>") + text + "</t></is></c></row>";
    };
    const std::string book =
        MadeWorkbook{{{"Old", row("o"), "hidden"}, {"Takes", row("t")}, {"2", row("n")}}}.bytes();
    EXPECT_EQ(csvOf(book), "t\n");
    EXPECT_EQ(problemsOf(book),
              "a.xlsx: 3 sheets, expected one; \"Takes\" is read; sheet reads \"Old\" (hidden), "
              "\"2\"\n");
    vek::OpenOptions options;
    options.sheet = "old";
    EXPECT_EQ(csvOf(book, options), "o\n");
    EXPECT_EQ(problemsOf(book, options), "");
    options.sheet = "2";
    EXPECT_EQ(csvOf(book, options), "n\n");
    options.sheet = "1";
    EXPECT_EQ(csvOf(book, options), "o\n");
    options.sheet = "4";
    EXPECT_EQ(csvOf(book, options),
              "a.xlsx: there is no sheet \"4\", expected one of \"Old\" (hidden), \"Takes\", "
              "\"2\"; a name or its number, from 1 on");
}

TEST(Workbooks, SayWhatCannotBeUsed) {
    const std::string rows =
        std::string(head) +
        "<row r='2'><c r='A2' t='s'><v>7</v></c></row><row r='3'><c r='A3'><f>1+1</f></c></row>"
        "<row r='4'><c r='A4'><v>twelve</v></c><c r='A4'><v>2</v></c></row>"
        "<row r='x'><c r='A5'><v>1</v></c><c r='ZZZZ5'><v>2</v></c></row>";
    MadeWorkbook book{{{"One", rows, "", "<mergeCells><mergeCell ref='A1:B1'/></mergeCells>"}}};
    EXPECT_EQ(csvOf(book.bytes()), "N,Extra 1\ntwelve,\n1,2\n");
    EXPECT_EQ(
        problemsOf(book.bytes()),
        "a.xlsx:2:A: a text that the workbook does not have, expected the number of one; the "
        "cell is empty\n"
        "a.xlsx:3:A: a formula without its value, expected what it gives; the cell is empty; "
        "open the workbook in a spreadsheet program and save it\n"
        "a.xlsx:4:A: a number that is none, expected digits; its characters are kept\n"
        "a.xlsx:4:A: a second cell in this place, expected one; it is not read\n"
        "a.xlsx:5: a row \"x\", expected a number from 1 to 1048576; it is taken for the one "
        "behind the row before it\n"
        "a.xlsx:5:B: a place that no sheet has, expected one from A1 to XFD1048576; it is "
        "taken for the one behind the cell before it\n"
        "a.xlsx: 1 range of merged cells, expected cells of their own; the first cell of each "
        "has the text, the others are empty\n"
        "a.xlsx:5: 2 values, expected 1; the row is kept, values behind the last column are "
        "in columns Extra 1, 2, ...\n");
}

TEST(Workbooks, SpendNothingOnGapsBetweenCells) {
    const std::string rows = std::string(head) +
                             "<row r='1048576'><c r='XFD1048576'><v>7</v></c>"
                             "</row>";
    EXPECT_EQ(csvOf(workbookOf(rows)), "N,Extra 1\n,7\n");
    std::string wide = "<row r='1'>";
    for (int i = 0; i < 16384; ++i) wide += "<c><v>1</v></c>";
    wide += "</row>";
    for (int i = 0; i < 200; ++i) wide += "<row><c r='XFD1'><v>1</v></c></row>";
    EXPECT_THAT(csvOf(workbookOf(wide)), HasSubstr("empty cells, expected no more"));
}

TEST(Workbooks, RefuseTextsThatAreRepeatedBeyondBounds) {
    std::string rows = head;
    for (int i = 0; i < 40; ++i) rows += "<row><c t='s'><v>0</v></c></row>";
    const std::string book = workbookOf(rows, "<si><t>" + std::string(32767, 'a') + "</t></si>");
    EXPECT_TRUE(vek::openText(book, "a.xlsx"));
    vek::OpenOptions options;
    options.maxBytes = std::size_t{1} << 20;
    const auto refused = vek::openText(book, "a.xlsx", options);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.reason().text(), HasSubstr("more than 1048576 bytes of text in its cells, "
                                                   "expected no more; maxBytes allows more"));
}

// What is unpacked does not allow more to be made of it than the packed bytes do.
TEST(Workbooks, HaveOneBoundForWhatIsUnpackedAndWhatItsCellsRepeat) {
    std::string rows = head;
    for (int i = 0; i < 2500; ++i) rows += "<row><c t='s'><v>0</v></c></row>";
    const std::string book = workbookOf(rows, "<si><t>" + std::string(32767, 'a') + "</t></si>");
    const auto refused = vek::openText(book, "a.xlsx");
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.reason().text(), HasSubstr("bytes of text in its cells"));
}

TEST(Workbooks, CutOrChangedAtAnyByteDoNoHarm) {
    const std::string book = workbookOf(head + std::string("<row><c><v>1</v></c></row>"));
    ASSERT_EQ(csvOf(book), "N\n1\n");
    for (std::size_t size = 1; size < book.size(); ++size) {
        const auto log = vek::openText(book.substr(0, size), "a.xlsx");
        ASSERT_FALSE(log) << size;
    }
    std::size_t refused = 0;
    for (std::size_t at = 0; at < book.size(); ++at) {
        std::string changed = book;
        changed[at] = static_cast<char>(changed[at] ^ 0x41);
        if (!vek::openText(changed, "a.xlsx")) ++refused;
    }
    EXPECT_GT(refused, book.size() / 3);
}

TEST(Workbooks, AreBoundInWhatTheyUnpackTo) {
    EXPECT_EQ(vek::formats::mostUnpacked(1000, {}), (std::size_t{64} << 20) + 200000);
    const std::string bomb = workbookOf(head + std::string(3 << 20, ' '));
    ASSERT_LT(bomb.size(), std::size_t{1} << 14);
    vek::OpenOptions options;
    options.maxBytes = std::size_t{1} << 20;
    const auto refused = vek::openText(bomb, "a.xlsx", options);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.reason().text(),
                HasSubstr("unpacks to more than 1048576 bytes, expected no "
                          "more; maxBytes allows more"));
    EXPECT_TRUE(vek::openText(bomb, "a.xlsx"));
}

TEST(Workbooks, OfHostileXmlAreRefused) {
    std::string deep;
    for (int i = 0; i < 100; ++i) deep += "<a>";
    EXPECT_THAT(csvOf(workbookOf(deep)), HasSubstr("more than 64 elements in one another"));
    EXPECT_THAT(csvOf(workbookOf("<row a='" + std::string(3 << 20, 'x') + "'/>")),
                HasSubstr("a tag of more than 1 MB"));
    const std::string start = "<!DOCTYPE a [<!ENTITY b \"bbbb\"><!ENTITY c \"&b;&b;\">]><sst/>";
    EXPECT_THAT(csvOf(archiveOf({{"_rels/.rels", start}})),
                HasSubstr("_rels/.rels:1: a document type, expected a workbook, which has none"));
    EXPECT_THAT(csvOf(workbookOf("<row><c></row>")), HasSubstr("mismatched tag"));
}

TEST(Workbooks, TakeNoTimeForPathsThatLeadFarUp) {
    std::string up;
    for (int i = 0; i < 300000; ++i) up += "../";
    std::string relations = "<Relationships>";
    for (int i = 0; i < 4; ++i) relations += "<Relationship Id='a' Type='b' Target='" + up + "c'/>";
    const std::string book = archiveOf({{"_rels/.rels", relations + "</Relationships>"}});
    const std::clock_t begin = std::clock();
    EXPECT_THAT(csvOf(book), HasSubstr("an archive that is no workbook"));
    EXPECT_LT(std::clock() - begin, 4 * CLOCKS_PER_SEC);
}

TEST(Workbooks, AreFoundByPathsOfEveryForm) {
    for (const char* path : {"/xl/book.xml", "xl/book.xml", "./xl/./book.xml", "xl/a/../book.xml",
                             "../../xl/book.xml", "/a/b/../../xl/book.xml"}) {
        const std::string root =
            "<Relationships><Relationship Id='a' Type='x/officeDocument' "
            "Target='" +
            std::string(path) + "'/></Relationships>";
        const std::string book = archiveOf(
            {{"_rels/.rels", root},
             {"xl/book.xml", "<workbook><sheets><sheet name='A' id='r'/></sheets></workbook>"},
             {"xl/_rels/book.xml.rels",
              "<Relationships><Relationship Id='r' Type='x/worksheet' "
              "Target='./../xl/sheets/./1.xml'/></Relationships>"},
             {"xl/sheets/1.xml",
              "<worksheet><sheetData><row><c t='str'><v>A</v></c></row>"
              "</sheetData></worksheet>"}});
        EXPECT_EQ(csvOf(book), "A\n") << path;
    }
}

TEST(Workbooks, OfDamagedArchivesAreRefused) {
    const std::string book = workbookOf(head);
    const std::string twice = archiveOf({{"a", "1"}, {"A", "2"}});
    EXPECT_THAT(csvOf(twice), HasSubstr("two entries of one name"));
    const std::string encrypted =
        withOneWrong(book, std::string("PK\x01\x02\x00\x00\x14\x00\x00\x00", 10),
                     std::string("PK\x01\x02\x00\x00\x14\x00\x01\x00", 10));
    EXPECT_THAT(csvOf(encrypted),
                HasSubstr("entries with a password, expected a workbook without"));
}

TEST(Workbooks, OfOtherProgramsAreNamed) {
    EXPECT_THAT(csvOf(archiveOf({{"mimetype", "x"}, {"content.xml", "<a/>"}})),
                StartsWith("a.xlsx: an OpenDocument file (.ods), expected an Excel workbook"));
    EXPECT_THAT(csvOf(archiveOf({{"xl/workbook.bin", "x"}})), HasSubstr("(.xlsb)"));
    EXPECT_THAT(csvOf(archiveOf({{"a.txt", "x"}})), HasSubstr("an archive that is no workbook"));
    EXPECT_THAT(csvOf("\xD0\xCF\x11\xE0\xA1\xB1"), HasSubstr("an old workbook (.xls), or one with "
                                                             "a password"));
    EXPECT_EQ(csvOf("Name;Take\nA;1\nB;2\n"), "Name,Take\nA,1\nB,2\n");
}

TEST(Workbooks, ThatAreEmptyAreNoLogs) {
    EXPECT_EQ(csvOf(workbookOf("<row r='3'><c r='A3'/></row>")),
              "a.xlsx: nothing in the sheet \"One\", expected a row of column names; fill it, "
              "or name another file");
    EXPECT_THAT(csvOf(MadeWorkbook{}.bytes()), HasSubstr("no sheet of cells"));
}

TEST(Workbooks, ThatAreWrittenAreReadBackAsTheyWere) {
    std::string text = "Name,Note,\n";
    for (int i = 0; i < 128; ++i) {
        if (i == 0 || i == '"' || i == '\r' || i == '\n') continue;
        text += "\" " + std::string(1, static_cast<char>(i)) + "\t\",=1+1,\n";
    }
    text += ",,\n\"a\r\nb\",_x0041_ __x0041_,\n\u00E9\U0001F3AC\uFFFE,0012,1e5\n";
    auto log = vek::openText(text, "a.csv");
    ASSERT_TRUE(log);
    std::string book;
    auto saved = log->write(book, vek::Format::xlsx);
    ASSERT_TRUE(saved) << saved.reason().text();
    EXPECT_TRUE(saved->isWhole());
    std::string again;
    ASSERT_TRUE(log->write(again, vek::Format::xlsx));
    EXPECT_EQ(again, book);
    std::string csv;
    ASSERT_TRUE(log->write(csv, vek::Format::csv));
    EXPECT_EQ(csvOf(book), csv);
}

TEST(Workbooks, KeepTaggedRowsThatAreEmpty) {
    auto log = vek::openText("Scene,Note,Tag\n,,1\n,,0\n3,,1\n", "a.csv");
    ASSERT_TRUE(log);
    vek::SaveOptions options;
    options.columns = {"Scene", "Note"};
    std::string book;
    ASSERT_TRUE(log->write(book, vek::Format::xlsx, options));
    EXPECT_EQ(csvOf(book), "Scene,Note\n,\n,\n3,\n");
}

TEST(Workbooks, SayWhatTheyCannotHold) {
    auto bytes = vek::openText("Name,Other\nx,y\n", "a.csv");
    ASSERT_TRUE(bytes);
    ASSERT_TRUE(bytes->set(bytes->at(0), "Name", "\xFF\xC3"));
    std::string book;
    const auto saved = bytes->write(book, vek::Format::xlsx);
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->losses.size(), 1u);
    EXPECT_EQ(saved->losses[0].what, "cells whose bytes that are no UTF-8 become U+FFFD");
    EXPECT_THAT(csvOf(book), HasSubstr("\uFFFD\uFFFD,y"));
    ASSERT_TRUE(bytes->set(bytes->at(0), "Name", std::string(32767, 'a')));
    EXPECT_TRUE(bytes->write(book, vek::Format::xlsx));
    ASSERT_TRUE(bytes->set(bytes->at(0), "Other", std::string(32768, 'a')));
    const auto refused = bytes->write(book, vek::Format::xlsx);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.reason().text(), HasSubstr("a.csv:2:Other: more than 32767 characters"));
}
