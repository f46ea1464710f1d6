#include <gtest/gtest.h>

#include <chrono>

#include "cli/program.h"

namespace {

std::string repeated(std::size_t count, std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) out += text;
    return out;
}

Finish runOn(const std::string& cell, const std::string& expression) {
    WorkFolder folder;
    folder.write("log.csv", "N\n" + cell + "\n");
    Start start;
    start.words = {"vek", "show", "log.csv", "--format", "csv", "--where", "N~" + expression};
    return run(folder, start);
}

}  // namespace

TEST(RegularExpression, OfManyNestedParenthesesMatches) {
    constexpr std::size_t depth = 50000;
    Finish finish = runOn("xay", repeated(depth, "(") + "a" + repeated(depth, ")"));
    EXPECT_EQ(finish.exitCode, 0) << finish.errors.substr(0, 200);
    EXPECT_EQ(finish.output, "N\nxay\n");
}

TEST(RegularExpression, WithManyOpenParenthesesIsRefusedInFewWords) {
    Finish finish = runOn("a", repeated(50000, "("));
    EXPECT_EQ(finish.exitCode, 2);
    EXPECT_TRUE(finish.errors.starts_with("vek: ")) << finish.errors.substr(0, 200);
    EXPECT_LT(finish.errors.size(), 500u);
}

// Trying one way after the other would take longer than the test may.
TEST(RegularExpression, TakesTimeInProportionToTheCell) {
    auto begin = std::chrono::steady_clock::now();
    for (const char* expression :
         {"(a*)*b", "(a|aa)+$b", "(.*)(.*)(.*)(.*)b", "(a?){500}a{500}b"}) {
        EXPECT_EQ(runOn(repeated(100000, "a"), expression).exitCode, 1) << expression;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}
