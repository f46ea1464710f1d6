// Whether a load made a row of every line, told by the table itself.
#include <gtest/gtest.h>

#include <string>

#include "testing/arrival.h"
#include "testing/random.h"
#include "testing/table_files.h"
#include "testing/temp_dir.h"

namespace {

using testing_support::ArrivalOf;
using testing_support::headerAnd;
using testing_support::joined;
using testing_support::Random;
using testing_support::Strings;
using testing_support::TempDir;

constexpr int all = 1 << 30;
constexpr unsigned headerLines = 5;

struct LoadedWhole : testing::Test {
    bool loads(const std::string& text, int most = all, const char* name = "log") {
        folder.write(name, text);
        return vekdb(folder.widePath(name), most, true).get_loaded_whole();
    }
    bool loadsLines(const Strings& lines, int most = all) {
        return loads(joined(headerAnd({"A", "B"}, lines)), most);
    }
    TempDir folder;
};

const std::string row = "\"a\",\"b\"";

TEST_F(LoadedWhole, IsAFileWhoseEveryLineIsARow) {
    EXPECT_TRUE(loadsLines({}));
    EXPECT_TRUE(loadsLines({row}));
    EXPECT_TRUE(loadsLines({row, "a,b", row}));
    EXPECT_TRUE(loads(joined(headerAnd({"A", "B"}, {})) + row));
}

TEST_F(LoadedWhole, IsNoFileThatStopsBeforeItsEnd) {
    EXPECT_FALSE(loadsLines({row, ""}));
    EXPECT_FALSE(loadsLines({row, "", row}));
    EXPECT_FALSE(loadsLines({row, "\"a\""}));
    EXPECT_FALSE(loadsLines({row, row + ",\"c\"", row}));
    EXPECT_FALSE(loads(joined(headerAnd({"A", "B"}, {row})) + " "));
}

TEST_F(LoadedWhole, IsNoFileOfWhichLinesArePassedOver) {
    EXPECT_FALSE(loadsLines({row, "\"VEKDB\",\"b\"", row, row, row}));
}

TEST_F(LoadedWhole, IsNoFileOfWhichAZeroByteHidesSomething) {
    EXPECT_FALSE(loadsLines({row, row + std::string("\0x", 2), row}));
    EXPECT_FALSE(loadsLines({row, std::string("a,b\0", 4)}));
}

TEST_F(LoadedWhole, CountsTheRowsThatWereAskedFor) {
    EXPECT_FALSE(loadsLines({row, row, row}, 2));
    EXPECT_TRUE(loadsLines({row, row, row}, 3));
    EXPECT_FALSE(loadsLines({row}, 0));
    EXPECT_TRUE(loadsLines({}, 0));
}

TEST_F(LoadedWhole, IsNothingThatWasNotLoaded) {
    EXPECT_FALSE(vekdb(nullptr).get_loaded_whole());
    EXPECT_FALSE(loads("no table"));
    EXPECT_FALSE(vekdb(folder.widePath("missing"), all, true).get_loaded_whole());
}

TEST_F(LoadedWhole, EndsWithTheTable) {
    folder.write("log", joined(headerAnd({"A", "B"}, {row})));
    vekdb table(folder.widePath("log"), all, true);
    table.free();
    EXPECT_FALSE(table.get_loaded_whole());
}

TEST_F(LoadedWhole, IsAPlainFileOfValuesWithAllItsLines) {
    EXPECT_TRUE(loads("A,B\na,b\nc\n", all, "log.csv"));
    EXPECT_TRUE(loads("A,B\n", all, "log.csv"));
    EXPECT_TRUE(loads("A,B\na,b\n\nc,d\n", all, "log.csv"));
    EXPECT_FALSE(loads("A,B\na,b\nc,d\n", 1, "log.csv"));
    EXPECT_FALSE(loads("", all, "log.csv"));
}

// A table may have an operation of its own to make rows, which makes none.
struct WithoutRows : vekdb {
    unsigned add_records(int) override { return 0xFFFFFFFF; }
};

TEST_F(LoadedWhole, IsNoPlainFileOfWhichALineBecameNoRow) {
    folder.write("log.csv", "A,B\na,b\n");
    WithoutRows table;
    table.set_filename(folder.widePath("log.csv"));
    table.loadFromFile(all, true);
    EXPECT_EQ(0u, table.get_num_records());
    EXPECT_FALSE(table.get_loaded_whole());
}

TEST_F(LoadedWhole, IsAFileOfAsManyLinesAsRowsHoweverItComes) {
    Random random;
    for (int i = 0; i < 300; ++i) {
        Strings lines(random.below(40), row);
        if (random.oneIn(2) && !lines.empty()) {
            const Strings odd = {"", "x", "\"VEKDB\",\"b\"", "a,b", std::string(5000, 'x')};
            lines[random.below(lines.size())] = random.pick(odd);
        }
        std::string text = joined(headerAnd({"A", "B"}, lines));
        if (random.oneIn(3)) text.pop_back();
        folder.write("log", text);
        TextFile file;
        ASSERT_TRUE(file.load(folder.widePath("log"), '\n', false));
        const int most = random.oneIn(4) ? random.between(-1, 30) : all;
        const ArrivalOf pieces(1 + random.below(300), random.oneIn(2) ? 1 : 1 << 20);
        const vekdb table(folder.widePath("log"), most, true);
        EXPECT_EQ(headerLines + table.get_num_records() == file.size(), table.get_loaded_whole())
            << text;
    }
}

}  // namespace
