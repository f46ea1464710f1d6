#include <gmock/gmock.h>

#include <algorithm>
#include <optional>
#include <regex>

#include "house/source_tree.h"

using testing::IsEmpty;

namespace {

struct Include {
    std::string where;
    std::string target;  // from the root; the library's public headers are named in angles
};

std::vector<Include> includesOf(const SourceFile& file) {
    static const std::regex named("^\\s*#\\s*include\\s*(\"|<vekdb/)([^\">]+)[\">]");
    std::vector<Include> found;
    for (std::size_t i = 0; i < file.lines.size(); ++i) {
        std::match_results<std::string_view::const_iterator> match;
        if (!std::regex_search(file.lines[i].begin(), file.lines[i].end(), match, named)) {
            continue;
        }
        std::string folder = match[1] == "\"" ? "src/" : "include/vekdb/";
        found.push_back({file.at(i), folder + match[2].str()});
    }
    return found;
}

// A floor's height, or nothing for a folder that is no floor.
std::optional<std::size_t> heightOf(std::string_view path) {
    auto floor = std::find(floors().begin(), floors().end(), SourceFile::folderOf(path));
    if (floor == floors().end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(floor - floors().begin());
}

const SourceFile* findSource(const std::string& path) {
    for (const SourceFile& file : allSources()) {
        if (file.path == path) {
            return &file;
        }
    }
    return nullptr;
}

}  // namespace

TEST(Floors, AFileIncludesOnlyFromItsOwnFloorAndThoseBelow) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : librarySources()) {
        for (const Include& include : includesOf(*file)) {
            auto height = heightOf(include.target);
            if (!height || *height > *heightOf(file->path)) {
                wrong.push_back(include.where + " includes " + include.target);
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, EveryIncludeNamesAHeaderByItsWholePath) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : librarySources()) {
        for (const Include& include : includesOf(*file)) {
            if (!findSource(include.target)) {
                wrong.push_back(include.where + " includes " + include.target);
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, ThePublicHeadersLeanOnPublicHeadersOnly) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : librarySources()) {
        for (const Include& include : includesOf(*file)) {
            if (isPublicHeader(*file) && !include.target.starts_with("include/")) {
                wrong.push_back(include.where + " includes " + include.target);
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, ProgramsBenchesAndExamplesUsePublicHeadersOnly) {
    std::vector<std::string> wrong;
    for (const char* folder : {"tools", "bench", "examples"}) {
        for (const SourceFile* file : sourcesOf(folder)) {
            for (const Include& include : includesOf(*file)) {
                if (include.target.starts_with("include/") && !findSource(include.target)) {
                    wrong.push_back(include.where + " includes " + include.target);
                }
                if (heightOf(include.target) && findSource(include.target) &&
                    !include.target.starts_with("include/")) {
                    wrong.push_back(include.where + " includes " + include.target);
                }
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, TheLibraryStandsOnTheStandardLibraryAlone) {
    static const std::regex foreign(
        "#\\s*include\\s*<(CLI|nlohmann|utf8proc|re2|gtest|gmock|benchmark)");
    std::vector<std::string> wrong;
    for (const SourceFile* file : librarySources()) {
        for (std::size_t i = 0; i < file->lines.size(); ++i) {
            if (std::regex_search(file->lines[i].begin(), file->lines[i].end(), foreign)) {
                wrong.push_back(file->at(i));
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}
