#include <gtest/gtest.h>

#include <algorithm>

#include "cli/case_file.h"

namespace fs = std::filesystem;

namespace {

fs::path caseFolder() {
    return fs::path(VEKDB_SOURCE_DIR) / "tests/cli/cases";
}

void prepare(const WorkFolder& folder, const CaseFile& made) {
    for (const auto& [name, text] : made.files) folder.write(name, text);
    for (const auto& [name, target] : made.links) fs::create_symlink(target, folder.path() / name);
}

void expectStep(const WorkFolder& folder, const Step& step) {
    Finish finish = run(folder, step.start);
    EXPECT_EQ(finish.output, step.expected.output);
    EXPECT_EQ(finish.errors, step.expected.errors);
    EXPECT_EQ(finish.exitCode, step.expected.exitCode);
    for (const auto& [name, text] : step.after) EXPECT_EQ(folder.read(name), text) << name;
    for (const std::string& name : step.absent) EXPECT_FALSE(folder.has(name)) << name;
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param.substr(0, info.param.rfind('.'));
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return name;
}

}  // namespace

class Vek : public testing::TestWithParam<std::string> {};

TEST_P(Vek, DoesAsTheCaseSays) {
    CaseFile made = readCase(caseFolder() / GetParam());
    ASSERT_FALSE(made.steps.empty());
    WorkFolder folder;
    prepare(folder, made);
    for (const Step& step : made.steps) {
        std::string command;
        for (const std::string& word : step.start.words) command += word + " ";
        SCOPED_TRACE(command);
        expectStep(folder, step);
    }
}

INSTANTIATE_TEST_SUITE_P(Case, Vek, testing::ValuesIn(allCases(caseFolder())), testName);
