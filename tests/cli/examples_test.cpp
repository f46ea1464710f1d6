#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "cli/program.h"
#include "cli/terminal.h"

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A folder in which the examples can be run: "vek" is on the path, and the logs they name exist.
class ExampleFolder : public WorkFolder {
public:
    ExampleFolder() {
        fs::create_symlink(VEK_PROGRAM, path() / "vek");
        std::string docs = contentOf(fs::path(VEKDB_SOURCE_DIR) / "samples/docs.vek");
        for (const char* name : {"log.vek", "old.vek", "day1.vek", "day2.vek"}) write(name, docs);
        write("new.vek", docs);
        write("docs.csv", "Reel,Take\nA001,1\n");
        write("sound.csv", "Reel,Name\nA001,x\n");
        write("fixes.csv", "Reel,Name\nA001,y\n");
        write("new.csv", "Reel,Name\nA001,y\n");
        write("bin.vek",
              "\"VEKDB:Rev 1\"\n\"Name:Bin\"\n\"VEKDB\"\n\"4\"\n\"text\"\n\"Cookie\"\n"
              "\"975835ddbfc8460f987bbcbec3f2827900004d\"\n");
    }

    Finish shell(const std::string& line) const { return run(*this, shellStart(line)); }

private:
    static Start shellStart(const std::string& line) {
        Start start;
        start.words = {"/bin/sh", "-c", "PATH=.:$PATH; " + line};
        return start;
    }
};

std::vector<std::string> commandNames() {
    WorkFolder folder;
    Finish help = runVek(folder, {"--help"});
    std::vector<std::string> names;
    std::istringstream in(help.output.substr(help.output.find("Commands:\n") + 10));
    for (std::string line; std::getline(in, line) && !line.empty();) {
        names.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
    return names;
}

// The lines below "Examples:" that are commands.
std::vector<std::string> examplesOf(const std::string& help) {
    std::vector<std::string> lines;
    std::istringstream in(help.substr(help.find("Examples:\n") + 10));
    for (std::string line; std::getline(in, line) && !line.empty();) {
        if (line.starts_with("  vek ")) lines.push_back(line.substr(2));
    }
    return lines;
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) {
    return info.param;
}

// What needs a terminal gets one, and is closed by its key.
void closeInTerminal(const WorkFolder& folder, const std::string& line) {
    Terminal terminal(folder, shellWords(line));
    terminal.waitFor("q close");
    terminal.type("qq");
    EXPECT_EQ(0, terminal.finish()) << line;
}

}  // namespace

class HelpExamples : public testing::TestWithParam<std::string> {};

TEST_P(HelpExamples, AllRun) {
    ExampleFolder folder;
    Finish help = runVek(folder, {GetParam(), "--help"});
    ASSERT_EQ(help.exitCode, 0);
    std::vector<std::string> lines = examplesOf(help.output);
    EXPECT_FALSE(lines.empty());
    for (const std::string& line : lines) {
        ExampleFolder fresh;
        bool builds = GetParam() == "container" && line.find("create") != std::string::npos;
        if (builds) fs::remove(fresh.path() / "bin.vek");
        bool needsName = line.find("--key Name") != std::string::npos;
        if (needsName) fresh.shell("for f in *.vek; do vek column add $f Name; done");
        if (line.starts_with("vek browse")) {
            closeInTerminal(fresh, line);
            continue;
        }
        Finish finish = fresh.shell(line);
        EXPECT_TRUE(finish.exitCode == 0 || finish.exitCode == 1) << line << finish.errors;
        EXPECT_EQ(finish.errors.find("--help"), std::string::npos) << line << finish.errors;
    }
}

INSTANTIATE_TEST_SUITE_P(Vek, HelpExamples, testing::ValuesIn(commandNames()), nameOf);

TEST(Completions, BashTakesThemAndCompletes) {
    ExampleFolder folder;
    Start start;
    start.words = {"/bin/bash", "-c",
                   "PATH=$PWD:$PATH\n"
                   "source <(./vek completions bash)\n"
                   "complete_at() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); COMPREPLY=(); "
                   "_vek; echo \"${COMPREPLY[@]}\"; }\n"
                   "complete_at vek sh\n"
                   "complete_at vek show --colu\n"
                   "complete_at vek show --format m\n"
                   "complete_at vek column re\n"
                   "complete_at vek convert --to js\n"
                   "complete_at vek show log\n"
                   "complete_at vek show log.vek --sort St\n"};
    Finish finish = run(folder, start);
    EXPECT_EQ(finish.output,
              "show\n--columns\nmarkdown\nremove rename\njson jsonl\nlog.vek\nStart\\ time\n");
    EXPECT_EQ(finish.errors, "");
}

TEST(Completions, NameEveryCommandAndOption) {
    WorkFolder folder;
    const std::string names = runVek(folder, {"complete", "zsh", "--", ""}).output;
    for (const std::string& name : commandNames()) {
        EXPECT_NE(names.find("\n" + name + "\t"), std::string::npos) << name;
        const Finish help = runVek(folder, {name, "--help"});
        const Finish options = runVek(folder, {"complete", "zsh", "--", name, "-"});
        std::istringstream in(help.output.substr(help.output.find("\nOptions:")));
        for (std::string line; std::getline(in, line);) {
            const std::size_t at = line.find("--");
            const bool isTitle = at != std::string::npos && at <= 6 && line.starts_with("  ");
            if (!isTitle) continue;
            const std::string option = line.substr(at, line.find(' ', at) - at);
            EXPECT_NE(options.output.find("\n" + option + "\t"), std::string::npos)
                << name << " " << option;
        }
    }
}

TEST(Completions, DoNotWaitForAPipe) {
    WorkFolder folder;
    ASSERT_EQ(::mkfifo((folder.path() / "fifo").c_str(), 0600), 0);
    const Finish finish = runVek(folder, {"complete", "zsh", "--", "show", "fifo", "--sort", ""});
    EXPECT_EQ(finish.output, "part\n");
    EXPECT_EQ(finish.errors, "");
}

TEST(Completions, KnowTheColumnsOfALogWhoseHeadingIsLong) {
    WorkFolder folder;
    std::string text = "First";
    for (int i = 0; i < 50000; ++i) text += ",Column" + std::to_string(i);
    folder.write("wide.csv", text + "\n" + std::string(3 << 20, 'x') + "\n");
    const Finish finish = runVek(folder, {"complete", "zsh", "--", "sort", "wide.csv", "-b", "Fi"});
    EXPECT_EQ(finish.output, "part\nFirst\n");
}

TEST(Quiet, IsAnOptionOfEveryCommand) {
    WorkFolder folder;
    for (const std::string& name : commandNames()) {
        EXPECT_NE(runVek(folder, {name, "--help"}).output.find("-q, --quiet"), std::string::npos)
            << name;
    }
}

// Every option that a help text names is in the manual page, and the page has no line that the
// formatter would take for one of its own requests.
TEST(Man, HasEveryOptionOfEveryCommand) {
    WorkFolder folder;
    Finish page = runVek(folder, {"man"});
    ASSERT_EQ(page.exitCode, 0);
    for (const std::string& name : commandNames()) {
        EXPECT_NE(page.output.find(".SH \"vek " + name + "\"\n"), std::string::npos) << name;
        Finish help = runVek(folder, {name, "--help"});
        std::istringstream in(help.output);
        for (std::string word; in >> word;) {
            if (!word.starts_with("--") || word == "--help" || word.size() < 4) continue;
            std::string letters = "-abcdefghijklmnopqrstuvwxyz";
            std::string option = word.substr(0, word.find_first_not_of(letters));
            std::string escaped;
            for (char c : option) escaped += c == '-' ? std::string("\\-") : std::string(1, c);
            EXPECT_NE(page.output.find(escaped), std::string::npos) << name << " " << option;
        }
    }
    std::istringstream in(page.output);
    for (std::string line; std::getline(in, line);) {
        bool isRequest = line.starts_with(".SH ") || line.starts_with(".TP") ||
                         line.starts_with(".PP") || line.starts_with(".TH ");
        EXPECT_TRUE(isRequest || (!line.starts_with('.') && !line.starts_with('\''))) << line;
    }
}
