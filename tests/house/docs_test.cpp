#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include <vekdb/support/version.h>
#include "house/source_tree.h"
#include "testing/temp_dir.h"

namespace fs = std::filesystem;

namespace {

struct Block {
    std::size_t line;
    std::string text;
};

// The fenced blocks of a language, in the document's order.
std::vector<Block> blocksOf(const std::string& document, const std::string& language) {
    std::vector<Block> blocks;
    std::istringstream lines(document);
    bool inside = false;
    bool wanted = false;
    std::string line;
    for (std::size_t number = 1; std::getline(lines, line); ++number) {
        if (line.starts_with("```")) {
            wanted = !inside && line == "```" + language;
            inside = !inside;
            if (wanted) {
                blocks.push_back({number, {}});
            }
        } else if (wanted) {
            blocks.back().text += line + "\n";
        }
    }
    return blocks;
}

struct Command {
    std::string text;
    std::string output;
};

// A session: lines that begin with "$ " are typed, what follows them is answered.
std::vector<Command> commandsOf(const std::string& session) {
    std::vector<Command> commands;
    std::istringstream lines(session);
    for (std::string line; std::getline(lines, line);) {
        bool continued = !commands.empty() && commands.back().text.ends_with('\\');
        if (continued && commands.back().output.empty()) {
            commands.back().text += "\n" + line;
        } else if (line.starts_with("$ ")) {
            commands.push_back({line.substr(2), {}});
        } else if (!commands.empty()) {
            commands.back().output += line + "\n";
        }
    }
    return commands;
}

// A folder with the samples in it, and the project's programs on the path.
class Session {
public:
    Session() {
        fs::copy(sourceRoot() / "samples", folder_.file("samples"), fs::copy_options::recursive);
    }

    std::string run(const std::string& command) {
        folder_.write("command", command + "\n");
        std::string shell = "cd '" + folder_.path().string() + "' && " + environment_ +
                            "sh ./command 2>&1 </dev/null";
        std::FILE* pipe = popen(shell.c_str(), "r");
        std::string output;
        char piece[4096];
        while (std::size_t got = std::fread(piece, 1, sizeof piece, pipe)) {
            output.append(piece, got);
        }
        pclose(pipe);
        return output;
    }

private:
    testing_support::TempDir folder_;
    std::string environment_ =
        "PATH=" VEKDB_BINARY_DIR "/tools/vek:" VEKDB_BINARY_DIR "/examples:" VEKDB_BINARY_DIR
        "/bench:$PATH LC_ALL=C.UTF-8 NO_COLOR=1 COLUMNS=100 ";
};

std::vector<std::string> documents() {
    std::vector<std::string> paths = {"README.md", "CHANGELOG.md", "CONTRIBUTING.md"};
    for (const auto& entry : fs::directory_iterator(sourceRoot() / "docs")) {
        if (entry.path().extension() == ".md") {
            paths.push_back("docs/" + entry.path().filename().string());
        }
    }
    return paths;
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) {
    std::string name = fs::path(info.param).stem().string();
    std::erase_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
    return name;
}

}  // namespace

class Documents : public testing::TestWithParam<std::string> {
protected:
    std::string text_ = readFile(sourceRoot() / GetParam());
};

TEST_P(Documents, IsThere) {
    EXPECT_FALSE(text_.empty());
}

// Shown as a plain pipe gets it.
TEST_P(Documents, EveryExampleGivesTheOutputThatIsShown) {
    Session session;
    for (const Block& block : blocksOf(text_, "console")) {
        for (const Command& command : commandsOf(block.text)) {
            EXPECT_EQ(session.run(command.text), command.output)
                << GetParam() << ":" << block.line << ": " << command.text;
        }
    }
}

TEST_P(Documents, EveryProgramShownIsOneOfTheExamples) {
    std::string all;
    for (const SourceFile* example : sourcesOf("examples")) {
        all += example->text;
    }
    for (const Block& block : blocksOf(text_, "cpp")) {
        EXPECT_NE(all.find(block.text), all.npos)
            << GetParam() << ":" << block.line << " stands in no file of examples/";
    }
}

// A line without its indentation: a document shows pieces of a file from their first line on.
static std::string flush(const std::string& text) {
    static const std::regex indentation("(^|\\n) +");
    return std::regex_replace(text, indentation, "$1");
}

// Built as a project of its own by the tests of consumers.
TEST(Embedding, TheProjectIsTheOneThatIsBuilt) {
    const std::string project = flush(readFile(sourceRoot() / "examples/embedding/CMakeLists.txt"));
    const auto blocks = blocksOf(readFile(sourceRoot() / "docs/embedding.md"), "cmake");
    EXPECT_EQ(2u, blocks.size());
    for (const Block& block : blocks) {
        EXPECT_NE(project.find(flush(block.text)), project.npos) << "line " << block.line;
    }
}

TEST(Changes, BeginWithTheVersionOfTheHeader) {
    const std::string changes = readFile(sourceRoot() / "CHANGELOG.md");
    static const std::regex heading("\n## ([0-9.]+)");
    std::smatch first;
    ASSERT_TRUE(std::regex_search(changes, first, heading));
    EXPECT_EQ(kVekdbVersion, first[1]);
}

TEST_P(Documents, EveryFileItNamesIsThere) {
    std::istringstream words(text_);
    for (std::string word; std::getline(words, word, '`');) {
        bool isPath = word.find('/') != word.npos && word.find_first_of(" \n*<>$") == word.npos &&
                      word.find('/') + 1 < word.size();
        std::string folder = word.substr(0, word.find('/'));
        if (isPath && fs::is_directory(sourceRoot() / folder) && !folder.empty()) {
            EXPECT_TRUE(fs::exists(sourceRoot() / word)) << GetParam() << " names " << word;
        }
    }
}

// "Suite.Name" of every test in the tree.
static std::set<std::string> testsOfTheTree() {
    static const std::regex head(R"(\nTEST(?:_[FP])?\((\w+),\s*(\w+)\))");
    std::set<std::string> names;
    for (const SourceFile* file : sourcesOf("tests")) {
        std::sregex_iterator match(file->text.begin(), file->text.end(), head);
        for (; match != std::sregex_iterator(); ++match) {
            names.insert((*match)[1].str() + "." + (*match)[2].str());
        }
    }
    return names;
}

class Promises : public testing::TestWithParam<const char*> {};

TEST_P(Promises, NameTestsThatAreThere) {
    static const std::regex name(R"(`([A-Z]\w+\.[A-Z]\w+|tests/cli/cases/[\w/]+\.case)`)");
    const std::set<std::string> tests = testsOfTheTree();
    std::istringstream lines(readFile(sourceRoot() / GetParam()));
    std::size_t promises = 0;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("| ") || line.starts_with("| Promise")) continue;
        ++promises;
        std::sregex_iterator match(line.begin(), line.end(), name);
        EXPECT_NE(match, std::sregex_iterator()) << "no test: " << line;
        for (; match != std::sregex_iterator(); ++match) {
            const std::string test = (*match)[1];
            const bool isThere =
                test.ends_with(".case") ? fs::exists(sourceRoot() / test) : tests.contains(test);
            EXPECT_TRUE(isThere) << GetParam() << " names " << test;
        }
    }
    EXPECT_GT(promises, 0u);
}

INSTANTIATE_TEST_SUITE_P(Pages, Promises,
                         testing::Values("docs/security.md", "docs/reliability.md",
                                         "docs/lifetimes.md"));

INSTANTIATE_TEST_SUITE_P(Docs, Documents, testing::ValuesIn(documents()), nameOf);

// What a newcomer is sent to must be there, and each room of the library be named.
TEST(Architecture, NamesPlacesThatExist) {
    static const std::regex place("`((?:src|include|tests|tools)/[A-Za-z0-9_/.]*)`");
    const std::string text = readFile(sourceRoot() / "docs/architecture.md");
    std::set<std::string> places;
    for (std::sregex_iterator it(text.begin(), text.end(), place), end; it != end; ++it) {
        places.insert((*it)[1]);
    }
    EXPECT_GT(places.size(), 30u);
    for (const std::string& path : places) {
        EXPECT_TRUE(fs::exists(sourceRoot() / path)) << path;
    }
}

TEST(Architecture, NamesEveryRoomOfTheLibrary) {
    const std::string text = readFile(sourceRoot() / "docs/architecture.md");
    for (const SourceFile* file : librarySources()) {
        if (!file->path.starts_with("src/") || file->folder() == "formats") {
            continue;
        }
        const std::string room = file->path.substr(0, file->path.rfind('/') + 1);
        EXPECT_NE(text.find("| `" + room + "` |"), std::string::npos) << room;
    }
}

TEST(DocumentBlocks, ASessionIsSplitIntoCommandsAndWhatTheyAnswer) {
    auto blocks = blocksOf("a\n```console\n$ one\nout\n$ two \\\n  more\n```\n```text\n$ no\n```\n",
                           "console");
    ASSERT_EQ(blocks.size(), 1u);
    auto commands = commandsOf(blocks[0].text);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(commands[0].output, "out\n");
    EXPECT_EQ(commands[1].text, "two \\\n  more");
}
