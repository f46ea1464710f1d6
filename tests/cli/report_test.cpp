#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <set>

#include "cli/program.h"

using testing::HasSubstr;
using testing::IsSubsetOf;
using testing::Not;

namespace {

Finish vek(const WorkFolder& folder, std::vector<std::string> words) {
    words.insert(words.begin(), "vek");
    Start start;
    start.words = std::move(words);
    return run(folder, start);
}

// A page of these logs.
std::string pageOf(const WorkFolder& folder, std::vector<std::string> words, int exitCode = 0) {
    words.insert(words.begin(), "report");
    words.insert(words.end(), {"-o", "page.html"});
    const Finish finish = vek(folder, words);
    EXPECT_EQ(finish.exitCode, exitCode) << finish.errors;
    EXPECT_EQ(finish.output, "");
    return folder.read("page.html");
}

std::string between(const std::string& text, const std::string& begin, const std::string& end) {
    const std::size_t from = text.find(begin);
    if (from == std::string::npos) return "(not there)";
    const std::size_t to = text.find(end, from + begin.size());
    return text.substr(from + begin.size(), to - from - begin.size());
}

std::size_t countOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
    return count;
}

std::string base64OfHex(const std::string& hex) {
    const char* letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bits;
    for (char c : hex) {
        const int value = c <= '9' ? c - '0' : c - 'a' + 10;
        for (int bit = 3; bit >= 0; --bit) bits += (value >> bit & 1) != 0 ? '1' : '0';
    }
    std::string out;
    for (std::size_t at = 0; at < bits.size(); at += 6) {
        std::string six = bits.substr(at, 6);
        six.resize(6, '0');
        out += letters[std::stoi(six, nullptr, 2)];
    }
    while (out.size() % 4 != 0) out += '=';
    return out;
}

// What the system's own tool makes of a text.
std::string sha256Of(const WorkFolder& folder, const std::string& text) {
    folder.write("part", text);
    Start start;
    start.words = {"/usr/bin/sha256sum", "part"};
    return "'sha256-" + base64OfHex(run(folder, start).output.substr(0, 64)) + "'";
}

// The names of all elements of a page, without what stands in its script and style.
std::set<std::string> elementsOf(std::string page) {
    page = std::regex_replace(page, std::regex("<style>[^]*?</style>"), "");
    const std::size_t script = page.rfind("<script>");
    page.resize(script);
    std::set<std::string> names;
    static const std::regex tag("<(/?[A-Za-z!?][A-Za-z0-9!-]*)");
    for (std::sregex_iterator at(page.begin(), page.end(), tag), end; at != end; ++at) {
        std::string name = (*at)[1];
        names.insert(name.starts_with('/') ? name.substr(1) : name);
    }
    return names;
}

const std::vector<std::string> ownElements = {
    "!DOCTYPE", "a",       "abbr",   "bdi",        "body",   "col",   "colgroup", "dd",  "details",
    "div",      "dl",      "dt",     "figcaption", "figure", "h1",    "h2",       "h3",  "head",
    "header",   "html",    "i",      "li",         "line",   "main",  "meta",     "nav", "p",
    "path",     "polygon", "script", "section",    "span",   "style", "summary",  "svg", "table",
    "tbody",    "td",      "text",   "tfoot",      "th",     "thead", "title",    "tr",  "ul"};

const std::vector<std::string> hostileTexts = {"</script><script>alert(1)</script>",
                                               "<!--<script>",
                                               "</style><img src=x onerror=alert(1)>",
                                               "javascript:alert(1)",
                                               "\" onmouseover=\"alert(1)",
                                               "' autofocus onfocus='alert(1)",
                                               "</title></svg></table><iframe src=//x>",
                                               "]]>&lt;&#60;",
                                               "{{x}}${x}`x`",
                                               "\xE2\x80\xA8\xE2\x80\xA9\xE2\x80\xAE",
                                               "\xED\xA0\x80\xED\xB0\x80",
                                               "\xFF\xFE\xC3(",
                                               "\\u003cb\\x3c"};

std::string hostileLog() {
    std::string text =
        "\"VEKDB:Rev 1\"\n\"Project:</title><script>alert(1)</script>\"\n"
        "\"Day:<b onclick=x>\"\n\"FPS:24\"\n\"VEKDB\"\n\"9\",\"9\",\"9\",\"9\",\"9\"\n"
        "\"text\",\"text\",\"text\",\"timecode\",\"timecode\"\n"
        "\"Reel\",\"Scene\",\"Take\",\"Start time\",\"End time\"\n";
    int second = 10;
    for (std::string cell : hostileTexts) {
        for (std::size_t at = cell.find('"'); at != cell.npos; at = cell.find('"', at + 2)) {
            cell.insert(at, 1, '"');
        }
        const std::string quoted = "\"" + cell + "\"";
        const std::string time = "\"01:00:" + std::to_string(second++) + ":";
        text += quoted + "," + quoted + "," + quoted + "," + time + "00\"," + time + "12\"\n";
    }
    return text;
}

// The script's data of the log with this number.
nlohmann::json dataOf(const std::string& page, int number = 1) {
    std::string rest = page;
    for (int i = 1; i < number; ++i) rest = rest.substr(rest.find("<script type=") + 1);
    return nlohmann::json::parse(between(rest, "<script type=\"application/json\">", "</script>"));
}

}  // namespace

TEST(Report, TheDailiesMakeAPageThatCanBeMailed) {
    WorkFolder folder;
    const std::string page = pageOf(folder, {"samples/dailies.vek"});
    EXPECT_LT(page.size(), 300'000u);
    for (const char* part :
         {"<h1><bdi>The Long Platform</bdi></h1>", "Day 12 of 31", "<dd>300</dd>", "<dd>17</dd>",
          "<dd>01:59:27:03</dd>", "<dd>10751+03</dd>", "<dd>105</dd>",
          "What a check finds: no problem", ">Timeline</h3>", ">Coverage</h3>",
          ">Running time by Reel</h3>", ">Running time by Scene</h3>", "00:06:15:21, 14 clips"}) {
        EXPECT_THAT(page, HasSubstr(part));
    }
    EXPECT_EQ(countOf(page, "<tr id="), 300u);
    EXPECT_EQ(countOf(page, " class=tagged>"), 105u);
}

TEST(Report, ThePolicyNamesTheVeryBytesOfStyleAndScript) {
    WorkFolder folder;
    const std::string page = pageOf(folder, {"samples/docs.vek"});
    const std::string policy = between(page, "Content-Security-Policy\" content=\"", "\"");
    const std::string style = between(page, "<style>", "</style>");
    const std::string script = between(page, "<script>", "</script>");
    EXPECT_GT(style.size(), 1000u);
    EXPECT_GT(script.size(), 1000u);
    EXPECT_EQ(policy, "default-src 'none'; script-src " + sha256Of(folder, script) +
                          "; style-src " + sha256Of(folder, style) +
                          "; base-uri 'none'; form-action 'none'");
    EXPECT_EQ(countOf(page, "<script>"), 1u);
    EXPECT_EQ(countOf(page, "<style>"), 1u);
    EXPECT_THAT(page, Not(HasSubstr(" style=")));
}

TEST(Report, ThePageAsksForNothingElsewhere) {
    WorkFolder folder;
    const std::string page = pageOf(folder, {"samples/dailies.vek"});
    for (const char* part : {"http:", "https:", " src=", "<link", "url(", "@import", "fetch("}) {
        EXPECT_THAT(page, Not(HasSubstr(part)));
    }
}

TEST(Report, TheSameLogMakesTheSamePage) {
    WorkFolder folder;
    const std::string first = pageOf(folder, {"samples/dailies.vek"});
    EXPECT_EQ(first, pageOf(folder, {"samples/dailies.vek"}));
}

TEST(Report, NothingInALogBecomesMarkup) {
    WorkFolder folder;
    folder.write("bad.vek", hostileLog());
    for (const char* columns : {"--all", "--lanes=Take"}) {
        const std::string page = pageOf(folder, {"bad.vek", columns, "--columns=Scene,Take,Reel"});
        EXPECT_THAT(elementsOf(page), IsSubsetOf(ownElements));
        EXPECT_EQ(countOf(page, "<script"), 2u);
        EXPECT_EQ(countOf(page, "</script"), 2u);
        EXPECT_EQ(countOf(page, "<!--"), 0u);
        EXPECT_EQ(countOf(page, "<title>"),
                  1 + countOf(page, "<a href=\"#r1-") - countOf(page, "<li><a href=\"#r1-"));
        const std::string markup = page.substr(0, page.find("<script"));
        EXPECT_FALSE(
            std::regex_search(markup, std::regex("<[^>\"']*(\"[^\"]*\"[^>\"']*)*\\son\\w+=")));
    }
}

TEST(Report, EveryByteOfACellIsInThePage) {
    WorkFolder folder;
    folder.write("bad.vek", hostileLog());
    const nlohmann::json data = [&] {
        const std::string page = pageOf(folder, {"bad.vek"});
        // A lone surrogate stands for a byte that is no character; this reader takes none.
        return nlohmann::json::parse(
            std::regex_replace(between(page, "<script type=\"application/json\">", "</script>"),
                               std::regex("\\\\u(dc)"), "\\u00ab"));
    }();
    std::string values = data["columns"][0]["values"].dump();
    for (const char* part : {"</script>", "<!--", "javascript:", "onmouseover", "\\\\u003cb",
                             "\xC2\xAB"
                             "ff"
                             "\xC2\xAB"
                             "fe"
                             "\xC2\xAB"
                             "c3("}) {
        EXPECT_THAT(values, HasSubstr(part));
    }
}

TEST(Report, ACellOfAMegabyteIsCutInTheTableAndWholeInTheData) {
    WorkFolder folder;
    folder.write("long.csv", "Scene,Notes\n1," + std::string(1'000'000, 'x') + "\n");
    const std::string page = pageOf(folder, {"long.csv"});
    EXPECT_THAT(page, HasSubstr("(999600 more bytes)"));
    EXPECT_LT(page.size(), 1'080'000u);
    EXPECT_EQ(dataOf(page)["columns"][1]["values"][0].get<std::string>().size(), 1'000'000u);
}

TEST(Report, AZeroByteIsWrittenOut) {
    WorkFolder folder;
    folder.write("zero.json", "[{\"Scene\":\"1\",\"Notes\":\"a\\u0000b\"}]");
    const std::string page = pageOf(folder, {"zero.json"});
    EXPECT_EQ(page.find('\0'), page.npos);
    EXPECT_THAT(page, HasSubstr("a\\x00b"));
}

TEST(Report, OnlyTheFirstRowsOfALongLogStandThereWithoutScript) {
    WorkFolder folder;
    std::string text = "Scene,Take\n";
    for (int row = 1; row <= 1500; ++row) text += "1," + std::to_string(row) + "\n";
    folder.write("long.csv", text);
    const std::string page = pageOf(folder, {"long.csv"});
    EXPECT_EQ(countOf(page, "<tr id="), 1000u);
    EXPECT_THAT(page, HasSubstr("The first 1000 of 1500 rows stand here"));
    EXPECT_EQ(dataOf(page)["rows"], 1500);
    EXPECT_EQ(dataOf(page)["columns"][1]["values"].size(), 1500u);
}

TEST(Report, OnlyTheFirstColumnsOfAVeryWideLogAreShownUnasked) {
    WorkFolder folder;
    std::string names = "c0", values = "v";
    for (int i = 1; i < 1000; ++i) {
        names += ",c" + std::to_string(i);
        values += ",v";
    }
    folder.write("wide.csv", names + "\n" + values + "\n");
    const std::string page = pageOf(folder, {"wide.csv"});
    EXPECT_EQ(countOf(page, "<th scope=\"col\">"), 257u);
    EXPECT_THAT(page, HasSubstr("The first 256 of 1000 columns stand here"));
    EXPECT_EQ(dataOf(page)["columns"].size(), 1000u);
    EXPECT_EQ(dataOf(page)["isFieldMap"], false);
    const std::string all = pageOf(folder, {"wide.csv", "--all"});
    EXPECT_EQ(countOf(all, "<th scope=\"col\">"), 1001u);
    EXPECT_EQ(dataOf(all)["isFieldMap"], true);
}

TEST(Report, WhatACheckFindsIsToldWithItsRows) {
    WorkFolder folder;
    folder.write("odd.csv", "Reel,Start,End\nA,01:00:10:00,01:00:05:00\nA,01:00:20:00,x\n");
    const std::string page = pageOf(folder, {"odd.csv"});
    EXPECT_THAT(page, HasSubstr("What a check finds: 2 problems"));
    EXPECT_THAT(page, HasSubstr("<a href=\"#r1-1\">row 1</a>, line 2, <bdi>End</bdi>"));
    EXPECT_THAT(page, HasSubstr("expected a timecode such as 01:00:00:00"));
}

TEST(Report, SeveralLogsHaveASwitchAndTotals) {
    WorkFolder folder;
    const std::string page = pageOf(folder, {"samples/docs.vek", "samples/dailies.vek"});
    EXPECT_THAT(page, HasSubstr("<nav class=\"logs\""));
    EXPECT_THAT(page, HasSubstr("<a href=\"#log-2\">"));
    EXPECT_THAT(between(page, "<tfoot>", "</tfoot>"),
                HasSubstr("<td>306</td><td>21</td><td>306</td><td>02:02:25</td>"));
    EXPECT_THAT(page, HasSubstr("several frame rates"));
    EXPECT_EQ(dataOf(page, 2)["rows"], 300);
}

TEST(Report, LogsOfOneRateAddTheirTimesUpInFrames) {
    WorkFolder folder;
    const std::string page = pageOf(folder, {"samples/docs.vek", "samples/docs.vek"});
    EXPECT_THAT(between(page, "<tfoot>", "</tfoot>"),
                HasSubstr("<td>12</td><td>4</td><td>12</td><td>00:05:56:10</td>"));
}

TEST(Report, TheFieldMapSaysWhichColumnsTheTableHas) {
    WorkFolder folder;
    const auto heads = [&](std::vector<std::string> words) {
        return countOf(between(pageOf(folder, words), "<thead>", "</thead>"), "<th scope=\"col\">");
    };
    EXPECT_EQ(heads({"samples/dailies.vek"}), 13u);
    EXPECT_EQ(heads({"samples/dailies.vek", "--all"}), 31u);
    EXPECT_EQ(heads({"samples/dailies.vek", "--columns", "Take,Reel"}), 3u);
}

TEST(Report, OnlyClipsOfATimelineAreCountedAndDrawn) {
    WorkFolder folder;
    folder.write("t.csv",
                 "Kind,Place,Scene,Take,Reel,Source In,Source Out,Record In,Record Out,FPS\n"
                 "Track,1,,,,,,00:00:00:00,00:00:02:00,\n"
                 "Clip,1.1,7,1,A,01:00:00:00,01:00:01:00,00:00:00:00,00:00:01:00,24\n"
                 "Marker,1.1.1,8,1,A,01:00:00:00,01:00:00:01,00:00:00:00,00:00:00:01,24\n"
                 "Transition,1.2,,,,,,00:00:00:20,00:00:01:04,\n"
                 "Clip,1.3,7,2,A,,,00:00:01:00,00:00:02:00,24\n"
                 "Part,1.3.1,7,3,B,02:00:00:00,02:00:01:00,,,24\n");
    const std::string page = pageOf(folder, {"t.csv", "--fps", "24"});
    EXPECT_THAT(page, HasSubstr("<dt>Clips</dt><dd>2</dd>"));
    EXPECT_THAT(page, HasSubstr("4 rows that are no clips, by its Kind, not counted"));
    EXPECT_THAT(page, HasSubstr("Timeline of 1 lane"));
    EXPECT_THAT(page, HasSubstr("1 clip without a start timecode"));
    EXPECT_THAT(page, HasSubstr("Coverage: 1 scene against 2 takes"));
    EXPECT_THAT(page, Not(HasSubstr("scene 7, take 3")));
}

TEST(Report, RatesThatAreNearEachOtherHaveNoFramesInCommon) {
    WorkFolder folder;
    const char* const head = "Heading\nFIELD_DELIM\tTABS\nFPS\t";
    const char* const rest = "\n\nColumn\nName\tStart\tEnd\n\nData\nA\t01:00:00:00\t02:00:00:00\n";
    for (const char* rate : {"24", "23.976"}) {
        folder.write(std::string(rate) + ".ale", std::string(head) + rate + rest);
    }
    const std::string page = pageOf(folder, {"24.ale", "23.976.ale"});
    EXPECT_THAT(page, HasSubstr("several frame rates"));
    EXPECT_THAT(between(page, "<th scope=\"row\">All</th>", "</tr>"), HasSubstr("02:00:04<"));
}
