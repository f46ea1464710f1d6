#include <gmock/gmock.h>

#include <cstdlib>
#include <memory>

#include <vekdb/table.h>
#include "house/source_tree.h"
#include "testing/print_strings.h"
#include "testing/temp_dir.h"

using testing_support::TempDir;

namespace {

LightweightString<wchar_t> samplePath(const std::string& name) {
    std::string path = (sourceRoot() / "samples" / name).string();
    return fromUTF8(LightweightString<char>(path.c_str()));
}

std::unique_ptr<vekdb> loadSample(const std::string& name) {
    auto table = std::make_unique<vekdb>(samplePath(name), 10'000, true);
    dberror error;
    EXPECT_TRUE(table->get_valid());
    EXPECT_FALSE(table->read_error_info(error));
    return table;
}

// The text that a sample has when it is saved with the tags that its column shows.
std::string savedAgain(const std::string& name) {
    auto table = loadSample(name);
    unsigned tag = table->get_fieldnum("Tag");
    for (unsigned row = 0; row < table->get_num_records(); ++row) {
        table->set_tag(row, table->getField(row, tag) == "1" ? 1 : 0);
    }
    TempDir folder;
    table->set_filename(folder.widePath("saved.vek"));
    EXPECT_EQ(table->save_text(), static_cast<int>(table->get_num_records()));
    return folder.read("saved.vek");
}

}  // namespace

TEST(Samples, TheSmallOneIsAsTheLibraryWritesIt) {
    EXPECT_EQ(savedAgain("docs.vek"), readFile(sourceRoot() / "samples/docs.vek"));
}

TEST(Samples, TheDailiesAreAsTheLibraryWritesThem) {
    EXPECT_EQ(savedAgain("dailies.vek"), readFile(sourceRoot() / "samples/dailies.vek"));
}

TEST(Samples, TheDailiesAreWhatTheGeneratorWrites) {
    TempDir folder;
    std::string path = folder.file("dailies.vek").string();
    ASSERT_EQ(std::system((VEKDB_GENLOG " --dailies " + path).c_str()), 0);
    EXPECT_EQ(folder.read("dailies.vek"), readFile(sourceRoot() / "samples/dailies.vek"));
}

TEST(Samples, TheDailiesHaveAFieldMapThatNamesEveryColumnOnce) {
    auto table = loadSample("dailies.vek");
    EXPECT_EQ(table->get_num_records(), 300u);
    std::string map = table->get_param_val("V5_FIELD_MAP");
    std::vector<bool> named(table->get_num_fields());
    for (std::size_t at = 0; at < map.size();) {
        auto number = static_cast<std::size_t>(std::abs(std::atoi(map.c_str() + at)));
        ASSERT_TRUE(number > 0 && number <= named.size() && !named[number - 1]) << number;
        named[number - 1] = true;
        at = std::min(map.find(' ', at), map.size() - 1) + 1;
    }
    EXPECT_THAT(named, testing::Each(true));
}

TEST(Samples, TheQuotingOneReadsAsItsFirstColumnSays) {
    auto table = loadSample("quoting.vek");
    std::vector<std::pair<std::string, std::string>> rows;
    for (unsigned row = 0; row < table->get_num_records(); ++row) {
        rows.emplace_back(table->getField(row, 0).c_str(), table->getField(row, 1).c_str());
    }
    EXPECT_THAT(
        rows, testing::ElementsAre(testing::Pair("plain", "A001"),
                                   testing::Pair("comma inside quotes", "one, two,, three"),
                                   testing::Pair("doubled quote", "He said \"cut\""),
                                   testing::Pair("nothing but quotes", "\"\""),
                                   testing::Pair("backslash and n is a newline", "first\nsecond"),
                                   testing::Pair("newline at the end stays", "last\n"),
                                   testing::Pair("doubled backslash stays doubled", "C:\\\\new"),
                                   testing::Pair("backslash and another letter stay", "C:\\temp"),
                                   testing::Pair("backslash does not escape a quote", "tail\\"),
                                   testing::Pair("blanks at both ends go", "middle   stays"),
                                   testing::Pair("blanks alone are empty", ""),
                                   testing::Pair("bytes above 127 are kept",
                                                 "Caf\xE9 \xFC"
                                                 "ber \xFF"),
                                   testing::Pair("empty", ""), testing::Pair("not quoted", "A001"),
                                   testing::Pair("blank before a quote", "no"),
                                   testing::Pair("quote inside an unquoted value", "5 reel"),
                                   testing::Pair("text behind the closing quote", "abc"),
                                   testing::Pair("control character between values", "after a tab"),
                                   testing::Pair("comma at the end adds nothing", "a"),
                                   testing::Pair("empty without quotes", "")));
}

TEST(Samples, TheQuotingOneShowsWhatParametersMayHold) {
    auto table = loadSample("quoting.vek");
    EXPECT_STREQ(table->get_param_val("Path"), "C:\\dailies\\day 12");
    EXPECT_STREQ(table->get_param_val("Slate"), "12: night, exterior");
    EXPECT_STREQ(table->get_param_val("Unit"), "Second");
}
