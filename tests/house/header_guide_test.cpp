#include <gmock/gmock.h>

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

TEST(HeaderGuide, TheHeaderToReadFirstIsMarked) {
    EXPECT_THAT(readFile(sourceRoot() / "README.md"),
                testing::HasSubstr("| `<vekdb/table.h>` | **start here**"));
}
