#include <gmock/gmock.h>

#include <filesystem>
#include <regex>
#include <set>

#include "house/source_tree.h"

using testing::ContainerEq;

namespace {

using Paths = std::set<std::string>;

Paths publicHeaders() {
    Paths paths;
    for (const SourceFile* file : librarySources()) {
        if (isPublicHeader(*file)) {
            paths.insert(file->path.substr(std::string_view("include/").size()));
        }
    }
    return paths;
}

// The guide's rows: a header in backticks first in a table row, and a text of its own.
Paths guidedHeaders() {
    std::string readme = readFile(sourceRoot() / "README.md");
    static const std::regex row("\\n\\| `<(vekdb/[a-z0-9_/]+\\.h)>`[^|]*\\| *[^| ][^|]*\\|");
    Paths paths;
    for (std::sregex_iterator match(readme.begin(), readme.end(), row), end; match != end;
         ++match) {
        paths.insert((*match)[1]);
    }
    return paths;
}

}  // namespace

TEST(HeaderGuide, TheReadmeListsEveryPublicHeaderAndNoOther) {
    EXPECT_THAT(guidedHeaders(), ContainerEq(publicHeaders()));
}

TEST(BuildGuide, TheReadmeNamesEveryOption) {
    std::set<std::string> options;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceRoot())) {
        const std::string path = entry.path().string().substr(sourceRoot().string().size());
        const bool isOfTheBuild =
            entry.path().filename() == "CMakeLists.txt" || entry.path().extension() == ".cmake";
        if (!isOfTheBuild || path.starts_with("/build")) continue;
        const std::string text = readFile(entry.path());
        static const std::regex option(R"((^|\n) *option\((VEKDB_[A-Z_]+))");
        for (std::sregex_iterator match(text.begin(), text.end(), option), end; match != end;
             ++match) {
            options.insert((*match)[2]);
        }
    }
    EXPECT_GT(options.size(), 5u);
    const std::string readme = readFile(sourceRoot() / "README.md");
    for (const std::string& name : options) {
        EXPECT_THAT(readme, testing::HasSubstr("`" + name + "`"));
    }
}

TEST(HeaderGuide, TheHeaderToReadFirstIsMarked) {
    EXPECT_THAT(readFile(sourceRoot() / "README.md"),
                testing::HasSubstr("| `<vekdb/table.h>` | **start here**"));
}
