#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "cli/program.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

using Cells = std::vector<std::vector<std::string>>;

// The project's own files, and, on machines that have them, real ones from the field.
std::vector<fs::path> dataFolders() {
    std::vector<fs::path> folders = {fs::path(VEKDB_SOURCE_DIR) / "tests/cli/fixtures"};
    const char* given = std::getenv("VEKDB_FIELD_DATA");
    fs::path field =
        given != nullptr ? fs::path(given) : fs::path(VEKDB_SOURCE_DIR) / "../shared/data";
    if (fs::is_directory(field)) folders.push_back(fs::canonical(field));
    return folders;
}

std::vector<fs::path> dataFiles(const std::string& kind) {
    std::vector<fs::path> files;
    for (const fs::path& folder : dataFolders()) {
        for (const auto& entry : fs::directory_iterator(folder / kind)) {
            if (entry.path().extension() == "." + kind) files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Finish done(const WorkFolder& folder, const std::vector<std::string>& words) {
    Finish finish = runVek(folder, words);
    EXPECT_EQ(finish.exitCode, 0) << finish.errors;
    return finish;
}

json rowsOf(const WorkFolder& folder, const std::string& path) {
    json rows = json::parse(done(folder, {"convert", path, "-", "--to", "json"}).output);
    return rows;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.ends_with('\r')) line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> tabbed(const std::string& line) {
    std::vector<std::string> cells(1);
    for (char c : line) {
        if (c == '\t')
            cells.emplace_back();
        else
            cells.back() += c;
    }
    return cells;
}

// The rows of a log exchange file, read the plainest way: everything behind "Data".
Cells aleRows(const std::string& text) {
    Cells rows;
    bool isData = false;
    for (const std::string& line : linesOf(text)) {
        if (isData && !line.empty()) rows.push_back(tabbed(line));
        isData = isData || line == "Data";
    }
    return rows;
}

// Rows may be cut or run over in empty cells; nothing else counts as the same.
void expectSameCells(Cells wanted, Cells found) {
    ASSERT_EQ(found.size(), wanted.size());
    for (std::size_t row = 0; row < wanted.size(); ++row) {
        std::size_t width = std::max(wanted[row].size(), found[row].size());
        wanted[row].resize(width);
        found[row].resize(width);
        EXPECT_EQ(found[row], wanted[row]) << "row " << row + 1;
    }
}

// A line of an edit list that opens an event: a number, and four timecodes at its end.
bool isEvent(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
    if (words.size() < 8 || !std::isdigit(static_cast<unsigned char>(words[0][0]))) return false;
    return std::all_of(words.end() - 4, words.end(),
                       [](const std::string& word) { return word.size() == 11; });
}

std::vector<fs::path> filesOf(const char* kind) {
    std::vector<fs::path> files = dataFiles(kind);
    EXPECT_FALSE(files.empty()) << kind;
    return files;
}

}  // namespace

TEST(FieldData, CsvGivesTheRowsOfTheJsonBesideIt) {
    WorkFolder folder;
    for (const fs::path& path : filesOf("csv")) {
        SCOPED_TRACE(path.string());
        json wanted = json::parse(contentOf(fs::path(path).replace_extension(".json")));
        if (wanted.is_object()) wanted = json::array({wanted});
        json found = rowsOf(folder, path);
        // The telephone number is another one in the two files of this pair, in the source they
        // came from; the CSV's own stands.
        if (path.filename() == "location_coordinates.csv") {
            EXPECT_EQ(found.at(0).at("Contact Phone Number"), "2095257564");
            found[0]["Contact Phone Number"] = wanted.at(0).at("Contact Phone Number");
        }
        EXPECT_EQ(found, wanted);
    }
}

TEST(FieldData, CsvThroughATableFileChangesNoCell) {
    for (const fs::path& path : filesOf("csv")) {
        SCOPED_TRACE(path.string());
        WorkFolder folder;
        done(folder, {"convert", path, "log.vek"});
        done(folder, {"convert", "log.vek", "back.csv"});
        EXPECT_EQ(rowsOf(folder, "back.csv"), rowsOf(folder, path));
        EXPECT_EQ(rowsOf(folder, "log.vek"), rowsOf(folder, path));
    }
}

TEST(FieldData, AleRowsAreReadAsTheyStand) {
    for (const fs::path& path : filesOf("ale")) {
        SCOPED_TRACE(path.string());
        WorkFolder folder;
        done(folder, {"convert", path, "back.ale"});
        expectSameCells(aleRows(contentOf(path)), aleRows(folder.read("back.ale")));
    }
}

TEST(FieldData, AleThroughATableFileChangesNoCell) {
    for (const fs::path& path : filesOf("ale")) {
        SCOPED_TRACE(path.string());
        WorkFolder folder;
        done(folder, {"convert", path, "log.vek"});
        done(folder, {"convert", "log.vek", "back.ale"});
        expectSameCells(aleRows(contentOf(path)), aleRows(folder.read("back.ale")));
        done(folder, {"convert", "log.vek", "log.csv"});
        EXPECT_EQ(rowsOf(folder, "log.csv"), rowsOf(folder, "log.vek"));
        EXPECT_EQ(rowsOf(folder, "log.csv").size(), aleRows(contentOf(path)).size());
    }
}

TEST(FieldData, EditListsGiveARowForEveryEvent) {
    for (const fs::path& path : filesOf("edl")) {
        SCOPED_TRACE(path.string());
        WorkFolder folder;
        std::vector<std::string> lines = linesOf(contentOf(path));
        auto events = std::count_if(lines.begin(), lines.end(), isEvent);
        ASSERT_GT(events, 0);
        json rows = rowsOf(folder, path);
        EXPECT_EQ(rows.size(), static_cast<std::size_t>(events));
        done(folder, {"convert", path, "log.vek"});
        EXPECT_EQ(rowsOf(folder, "log.vek"), rows);
    }
}

// Every word of the file is somewhere in the rows or in the parameters.
TEST(FieldData, EditListsLoseNoWord) {
    for (const fs::path& path : filesOf("edl")) {
        SCOPED_TRACE(path.string());
        WorkFolder folder;
        std::string kept = done(folder, {"convert", path, "-", "--to", "csv"}).output +
                           done(folder, {"param", "list", path}).output;
        std::istringstream in(contentOf(path));
        for (std::string word; in >> word;) {
            bool isLabel = word.find(':') == word.size() - 1 || word.starts_with('*');
            bool isOfLabel = word == "FROM" || word == "TO" || word == "CLIP" || word == "NAME";
            if (isLabel || isOfLabel) continue;
            EXPECT_NE(kept.find(word), std::string::npos) << word;
        }
    }
}

TEST(FieldData, EditListsGoBackEqual) {
    for (const fs::path& path : filesOf("edl")) {
        SCOPED_TRACE(path);
        WorkFolder folder;
        done(folder, {"convert", path, "back.edl"});
        EXPECT_EQ(folder.read("back.edl"), contentOf(path));
        done(folder, {"convert", path, "table.vek"});
        done(folder, {"convert", "table.vek", "again.edl"});
        done(folder, {"diff", path, "again.edl"});
        EXPECT_EQ(done(folder, {"param", "list", path}).output,
                  done(folder, {"param", "list", "again.edl"}).output);
    }
}
