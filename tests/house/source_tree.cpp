#include "house/source_tree.h"

#include <algorithm>
#include <fstream>
#include <initializer_list>
#include <iterator>

namespace fs = std::filesystem;

namespace {

std::vector<std::string_view> splitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::size_t end = std::min(text.find('\n'), text.size());
        lines.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

bool isSource(const fs::path& path) {
    return path.extension() == ".h" || path.extension() == ".cpp";
}

void collect(const std::string& folder, std::vector<SourceFile>& files) {
    if (!fs::exists(sourceRoot() / folder)) {
        return;
    }
    for (const auto& entry : fs::recursive_directory_iterator(sourceRoot() / folder)) {
        if (entry.is_regular_file() && isSource(entry.path())) {
            files.push_back({fs::relative(entry.path(), sourceRoot()).generic_string(),
                             readFile(entry.path()),
                             {}});
        }
    }
}

std::vector<SourceFile> collectAll(std::initializer_list<const char*> folders) {
    std::vector<SourceFile> files;
    for (const char* folder : folders) collect(folder, files);
    std::sort(files.begin(), files.end(),
              [](const SourceFile& a, const SourceFile& b) { return a.path < b.path; });
    for (SourceFile& file : files) {
        file.lines = splitLines(file.text);
    }
    return files;
}

// How far the literal or comment that begins at `at` reaches; 0 when none begins there.
std::size_t quietLength(std::string_view text, std::size_t at) {
    std::string_view rest = text.substr(at);
    if (rest.starts_with("//")) {
        return std::min(rest.find('\n'), rest.size());
    }
    if (rest.starts_with("/*")) {
        return std::min(rest.find("*/"), rest.size() - 2) + 2;
    }
    if (rest.starts_with("R\"(")) {
        return std::min(rest.find(")\""), rest.size() - 2) + 2;
    }
    bool digitSeparator = rest.starts_with('\'') && at > 0 && isxdigit(text[at - 1]);
    if (digitSeparator || (!rest.starts_with('"') && !rest.starts_with('\''))) {
        return 0;
    }
    std::size_t end = 1;
    while (end < rest.size() && rest[end] != rest[0]) {
        end += rest[end] == '\\' ? 2 : 1;
    }
    return std::min(end + 1, rest.size());
}

}  // namespace

fs::path sourceRoot() {
    return VEKDB_SOURCE_DIR;
}

std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

const std::vector<SourceFile>& allSources() {
    static const std::vector<SourceFile>& files = *new std::vector<SourceFile>(
        collectAll({"include", "src", "tools", "tests", "bench", "fuzz", "examples"}));
    return files;
}

const std::vector<SourceFile>& bindingSources() {
    static const std::vector<SourceFile>& files =
        *new std::vector<SourceFile>(collectAll({"bindings"}));
    return files;
}

const std::vector<std::string>& floors() {
    static const std::vector<std::string> names = {"host",      "vekdb", "support", "views",
                                                   "container", "arrow", "formats"};
    return names;
}

std::vector<const SourceFile*> sourcesOf(std::string_view folder) {
    std::vector<const SourceFile*> found;
    for (const SourceFile& file : allSources()) {
        if (file.folder() == folder) {
            found.push_back(&file);
        }
    }
    return found;
}

std::vector<const SourceFile*> librarySources() {
    std::vector<const SourceFile*> found;
    for (const std::string& floor : floors()) {
        auto files = sourcesOf(floor);
        found.insert(found.end(), files.begin(), files.end());
    }
    return found;
}

bool isPublicHeader(const SourceFile& file) {
    return file.isHeader() && file.path.starts_with("include/vekdb/");
}

std::string SourceFile::folderOf(std::string_view path) {
    if (path.starts_with("src/")) {
        path.remove_prefix(std::string_view("src/").size());
    } else if (path.starts_with("include/vekdb/")) {
        path.remove_prefix(std::string_view("include/vekdb/").size());
        if (path.find('/') == std::string_view::npos) {
            return "vekdb";
        }
    }
    return std::string(path.substr(0, path.find('/')));
}

std::string codeOnly(std::string_view text) {
    std::string code(text);
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = quietLength(text, at);
        for (std::size_t i = at; i < at + length; ++i) {
            code[i] = code[i] == '\n' ? '\n' : ' ';
        }
        at += std::max<std::size_t>(length, 1);
    }
    return code;
}
