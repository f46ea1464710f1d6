#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// The project's own files, as the tests of the house read them.

struct SourceFile {
    std::string path;  // from the root, with forward slashes
    std::string text;
    std::vector<std::string_view> lines;

    std::string at(std::size_t line) const { return path + ":" + std::to_string(line + 1); }
    bool isHeader() const { return path.ends_with(".h"); }
    // The floor of the library that it stands on, else its topmost folder.
    std::string folder() const { return folderOf(path); }

    static std::string folderOf(std::string_view path);
};

// Where the project's root is, and the bytes of a file below it ("" when there is none).
std::filesystem::path sourceRoot();
std::string readFile(const std::filesystem::path& path);

// Every source (.h and .cpp) of the project; read once.
const std::vector<SourceFile>& allSources();

// The same of what makes the library one of another language's; read once.
const std::vector<SourceFile>& bindingSources();

// The library's floors, lowest first; the program stands on top of them.
const std::vector<std::string>& floors();

// Sources below a floor, or of any floor of the library.
std::vector<const SourceFile*> sourcesOf(std::string_view folder);
std::vector<const SourceFile*> librarySources();

// A header that callers may include.
bool isPublicHeader(const SourceFile& file);

// A source's lines with comments and the insides of literals blanked, so that a search sees
// code only.
std::string codeOnly(std::string_view text);
