#include <gmock/gmock.h>

#include <algorithm>

#include "house/source_tree.h"

using testing::IsEmpty;

namespace {

constexpr std::size_t longestLine = 100;

template <class Wrong>
std::vector<std::string> linesWhere(Wrong wrong) {
    std::vector<std::string> found;
    for (const SourceFile& file : allSources()) {
        for (std::size_t i = 0; i < file.lines.size(); ++i) {
            if (wrong(file.lines[i])) {
                found.push_back(file.at(i));
            }
        }
    }
    return found;
}

}  // namespace

TEST(Style, SourcesAreAscii) {
    EXPECT_THAT(linesWhere([](std::string_view line) {
                    return std::any_of(line.begin(), line.end(),
                                       [](unsigned char c) { return c >= 128; });
                }),
                IsEmpty());
}

TEST(Style, LinesFitTheScreen) {
    EXPECT_THAT(linesWhere([](std::string_view line) { return line.size() > longestLine; }),
                IsEmpty());
}

TEST(Style, LinesHaveNoTabsNoCarriageReturnsAndNothingBehindTheirEnd) {
    EXPECT_THAT(linesWhere([](std::string_view line) {
                    return line.find_first_of("\t\r") != line.npos || line.ends_with(' ');
                }),
                IsEmpty());
}

TEST(Style, FilesEndWithOneNewline) {
    std::vector<std::string> wrong;
    for (const SourceFile& file : allSources()) {
        if (!file.text.ends_with('\n') || file.text.ends_with("\n\n")) {
            wrong.push_back(file.path);
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Style, HeadersAreReadOnce) {
    std::vector<std::string> wrong;
    for (const SourceFile& file : allSources()) {
        if (file.isHeader() &&
            std::find(file.lines.begin(), file.lines.end(), "#pragma once") == file.lines.end()) {
            wrong.push_back(file.path);
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}
