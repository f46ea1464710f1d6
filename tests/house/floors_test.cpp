#include <gmock/gmock.h>

#include <algorithm>
#include <optional>
#include <regex>
#include <set>

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

struct Room {
    std::string_view name;
    std::vector<std::string_view> mayKnow;  // besides itself, the public headers and the host floor
};

// The rooms of the table's floor and the arrows between them; docs/architecture.md draws them.
const std::vector<Room>& rooms() {
    static const std::vector<Room> all = {
        {"bytes", {}},
        {"record", {"bytes"}},
        {"lines", {"bytes", "record"}},
        {"columns", {}},
        {"order", {"record"}},
        {"query", {"columns", "record"}},
        {"rows", {"record"}},
        {"table", {"bytes", "record", "lines", "columns", "order", "query", "rows"}},
        {"edits", {"columns", "record", "table"}},
    };
    return all;
}

// The rooms that all formats share, each below those that know it; docs/architecture.md draws them.
const std::vector<Room>& sharedRooms() {
    static const std::vector<Room> all = {
        {"text", {}},
        {"input", {}},
        {"packed", {"input", "text"}},
        {"log", {"input", "text"}},
        {"timecode", {"log", "text"}},
        {"choosing", {"log", "text", "timecode"}},
        {"comparing", {"choosing", "log", "timecode"}},
        {"changing", {"choosing", "comparing", "input", "log", "text", "timecode"}},
        {"reading", {"input", "log", "packed", "text"}},
        {"writing", {"choosing", "input", "log", "packed", "text", "timecode"}},
        {"summing", {"log", "text", "timecode"}},
        {"checking", {"input", "log", "text", "timecode", "writing"}},
        {"saving", {"input", "log", "packed", "reading", "text", "writing"}},
        {"face",
         {"changing", "choosing", "comparing", "input", "log", "reading", "saving", "text",
          "writing"}},
    };
    return all;
}

// A room for each format, and the formats that it is made of.
const std::vector<Room>& roomsOfFormats() {
    static const std::vector<Room> all = {
        {"table_file", {}},
        {"delimited", {}},
        {"ale", {"delimited"}},
        {"edl", {}},
        {"json", {}},
        {"xml", {}},
        {"timeline", {"edl", "json", "xml"}},
        {"workbook", {}},
        {"pages", {}},
        {"columnar", {"json"}},
    };
    return all;
}

const Room* roomIn(const std::vector<Room>& rooms, const std::string& floor,
                   std::string_view path) {
    for (const Room& room : rooms) {
        if (path.starts_with(floor + std::string(room.name) + "/")) {
            return &room;
        }
    }
    return nullptr;
}

// The room of a path under src/vekdb/ or tests/vekdb/, or nothing.
const Room* roomOf(std::string_view path) {
    const Room* room = roomIn(rooms(), "src/vekdb/", path);
    return room != nullptr ? room : roomIn(rooms(), "tests/vekdb/", path);
}

const Room* sharedRoomOf(std::string_view path) {
    return roomIn(sharedRooms(), "src/formats/", path);
}

// Public headers that are the table's: a room below it must do without them.
bool isTablesHeader(std::string_view path) {
    static const std::set<std::string_view> known = {
        "include/vekdb/edit_log.h", "include/vekdb/table.h", "include/vekdb/text_rows.h",
        "include/vekdb/vdb_base.h"};
    return known.contains(path);
}

bool knowsTheTable(const Room& room) {
    return room.name == "table" ||
           std::find(room.mayKnow.begin(), room.mayKnow.end(), "table") != room.mayKnow.end();
}

const Room* roomOfAFormat(std::string_view path) {
    return roomIn(roomsOfFormats(), "src/formats/", path);
}

bool mayKnow(const Room& from, const Room& to) {
    return to.name == from.name ||
           std::find(from.mayKnow.begin(), from.mayKnow.end(), to.name) != from.mayKnow.end();
}

bool mayInclude(const Room& from, std::string_view target) {
    const Room* to = roomOf(target);
    if (to == nullptr) {
        return knowsTheTable(from) || !isTablesHeader(target);
    }
    return mayKnow(from, *to);
}

// What of the formats' floor stands in no room is known to all, but what there is of formats only
// to rooms that know of logs.
bool mayShare(const Room& from, std::string_view target) {
    const Room* to = sharedRoomOf(target);
    if (to != nullptr) {
        return mayKnow(from, *to);
    }
    const bool isBelowLogs =
        from.name != "log" && !mayKnow(from, *sharedRoomOf("src/formats/log/"));
    return !isBelowLogs || target != "src/formats/formats.h";
}

std::vector<std::string> wrongShares(const SourceFile& file) {
    std::vector<std::string> wrong;
    const Room* room = sharedRoomOf(file.path);
    for (const Include& include : includesOf(file)) {
        if (room != nullptr && !mayShare(*room, include.target)) {
            wrong.push_back(include.where + " includes " + include.target);
        }
    }
    return wrong;
}

std::vector<std::string> wrongIncludesOf(const SourceFile& file) {
    std::vector<std::string> wrong;
    const Room* room = roomOf(file.path);
    for (const Include& include : includesOf(file)) {
        if (room != nullptr && !mayInclude(*room, include.target)) {
            wrong.push_back(include.where + " includes " + include.target);
        }
    }
    return wrong;
}

SourceFile fileWith(const char* path, std::string_view line) {
    return {path, std::string(line), {line}};
}

// The program is the first user of the formats, and knows them from inside.
bool isOwnFloorOf(const SourceFile& file, const Include& include) {
    return file.folder() == "tools" && include.target.starts_with("src/formats/");
}

// What alone is there for those who measure, and no application may turn off.
bool isForMeasuring(const SourceFile& file, const Include& include) {
    return file.folder() == "bench" && include.target == "src/host/disk_flush.h";
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

TEST(Floors, EverySourceOfTheTablesFloorStandsInARoom) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("vekdb")) {
        if (file->path.starts_with("src/") && roomOf(file->path) == nullptr) {
            wrong.push_back(file->path);
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, ARoomIncludesOnlyFromTheRoomsItMayKnow) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("vekdb")) {
        const auto found = wrongIncludesOf(*file);
        wrong.insert(wrong.end(), found.begin(), found.end());
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, AWrongIncludeOfARoomIsSeen) {
    for (const char* line : {"#include \"vekdb/rows/rows.h\"", "#include <vekdb/table.h>",
                             "#include \"vekdb/table/table_parts.h\""}) {
        EXPECT_EQ(1u, wrongIncludesOf(fileWith("src/vekdb/query/x.cpp", line)).size()) << line;
    }
    for (const char* line :
         {"#include \"vekdb/columns/column_list.h\"", "#include <vekdb/record.h>"}) {
        EXPECT_THAT(wrongIncludesOf(fileWith("src/vekdb/query/x.cpp", line)), IsEmpty());
    }
}

// What takes lines apart, compares rows and asks them is tried on records of its own.
TEST(Floors, LinesOrderAndQueryAreTestedWithoutATable) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("tests")) {
        for (const char* room : {"lines", "order", "query"}) {
            if (!file->path.starts_with(std::string("tests/vekdb/") + room + "/")) {
                continue;
            }
            const auto found = wrongIncludesOf(*file);
            wrong.insert(wrong.end(), found.begin(), found.end());
            for (const char* helper : {"testing/tables.h", "testing/table_files.h"}) {
                if (file->text.find(helper) != std::string::npos) {
                    wrong.push_back(file->path + " includes " + helper);
                }
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, WhatTheFormatsShareIncludesOnlyFromRoomsBelow) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("formats")) {
        const auto found = wrongShares(*file);
        wrong.insert(wrong.end(), found.begin(), found.end());
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, AWrongIncludeOfASharedRoomIsSeen) {
    for (const char* line :
         {"#include \"formats/reading/readers.h\"", "#include \"formats/saving/file_sink.h\""}) {
        EXPECT_EQ(1u, wrongShares(fileWith("src/formats/log/x.cpp", line)).size()) << line;
    }
    for (const char* line : {"#include \"formats/log/log.h\"", "#include \"formats/formats.h\""}) {
        EXPECT_EQ(1u, wrongShares(fileWith("src/formats/text/x.h", line)).size()) << line;
    }
    for (const char* line : {"#include \"formats/log/log.h\"", "#include \"formats/formats.h\"",
                             "#include \"formats/failure.h\""}) {
        EXPECT_THAT(wrongShares(fileWith("src/formats/reading/x.cpp", line)), IsEmpty());
    }
}

// A room knows none that knows it, over whichever others.
TEST(Floors, TheSharedRoomsStandOnEachOther) {
    std::vector<std::string> wrong;
    std::set<std::string_view> below;
    for (const Room& room : sharedRooms()) {
        for (std::string_view known : room.mayKnow) {
            if (!below.contains(known)) {
                wrong.push_back(std::string(room.name) + " knows " + std::string(known));
            }
        }
        below.insert(room.name);
    }
    EXPECT_THAT(wrong, IsEmpty());
}

// A new format changes nothing of what all share.
TEST(Floors, WhatTheFormatsShareKnowsNoSingleFormat) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("formats")) {
        if (sharedRoomOf(file->path) == nullptr) continue;
        for (const Include& include : includesOf(*file)) {
            if (roomOfAFormat(include.target) != nullptr) {
                wrong.push_back(include.where + " includes " + include.target);
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, AFormatKnowsOnlyThoseItIsMadeOf) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("formats")) {
        const Room* from = roomOfAFormat(file->path);
        if (from == nullptr) continue;
        for (const Include& include : includesOf(*file)) {
            const Room* to = roomOfAFormat(include.target);
            if (to != nullptr && !mayKnow(*from, *to)) {
                wrong.push_back(include.where + " includes " + include.target);
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, EverySourceOfTheFormatsStandsInARoomThatIsKnown) {
    std::vector<std::string> wrong;
    for (const SourceFile* file : sourcesOf("formats")) {
        const bool isInARoom = std::count(file->path.begin(), file->path.end(), '/') > 2;
        if (!file->path.starts_with("src/") || !isInARoom) continue;
        if (sharedRoomOf(file->path) == nullptr && roomOfAFormat(file->path) == nullptr) {
            wrong.push_back(file->path);
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

TEST(Floors, OnlyOneRoomOfTheHostAsksTheOperatingSystem) {
    static const std::set<std::string_view> ofTheTerminal = {"tools/vek/cli/terminal.h",
                                                             "tools/vek/cli/terminal.cpp"};
    static const std::regex system(
        "#\\s*include\\s*<(sys/|net/|arpa/"
        "|aio\\.h|dirent\\.h|dlfcn\\.h|fcntl\\.h|langinfo\\.h|poll\\.h|"
        "pthread\\.h|pwd\\.h|sched\\.h|signal\\.h|csignal|spawn\\.h|termios\\.h|unistd\\.h)");
    std::vector<std::string> wrong;
    std::vector<const SourceFile*> files = librarySources();
    for (const SourceFile* file : sourcesOf("tools")) {
        if (file->path.starts_with("tools/vek/") && !ofTheTerminal.contains(file->path)) {
            files.push_back(file);
        }
    }
    for (const SourceFile* file : files) {
        for (std::size_t i = 0; i < file->lines.size(); ++i) {
            const auto& line = file->lines[i];
            if (!file->path.starts_with("src/host/posix/") &&
                std::regex_search(line.begin(), line.end(), system)) {
                wrong.push_back(file->at(i) + " " + std::string(line));
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
                    !include.target.starts_with("include/") && !isOwnFloorOf(*file, include) &&
                    !isForMeasuring(*file, include)) {
                    wrong.push_back(include.where + " includes " + include.target);
                }
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

// What of the formats' inside the tables of SQLite stand on besides public headers: a log that is
// written back by several statements at once, and the text of a timecode.
bool isNamedForBindings(const SourceFile& file, const Include& include) {
    static const std::set<std::string_view> named = {
        "src/formats/changing/file_names.h",  "src/formats/face/guarded.h",
        "src/formats/face/inside.h",          "src/formats/saving/file_sink.h",
        "src/formats/saving/prepared_file.h", "src/formats/timecode/timecode_form.h"};
    return file.path.starts_with("bindings/sqlite/") && named.contains(include.target);
}

TEST(Floors, BindingsUsePublicHeadersAndWhatIsNamedForThem) {
    EXPECT_FALSE(bindingSources().empty());
    std::vector<std::string> wrong;
    for (const SourceFile& file : bindingSources()) {
        for (const Include& include : includesOf(file)) {
            const bool isPublic = include.target.starts_with("include/");
            const bool isThere = findSource(include.target) != nullptr;
            const bool isOfTheProgram = include.target.starts_with("src/tools/");
            if ((isPublic != isThere || isOfTheProgram) && !isNamedForBindings(file, include)) {
                wrong.push_back(include.where + " includes " + include.target);
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}

// The formats read and write with well-kept libraries; the core, which a program may have without
// them, does not.
TEST(Floors, TheCoreStandsOnTheStandardLibraryAlone) {
    static const std::regex foreign(
        "#\\s*include\\s*<(CLI|nlohmann|utf8proc|re2|gtest|gmock|benchmark)");
    std::vector<std::string> wrong;
    for (const SourceFile* file : librarySources()) {
        if (file->folder() == "formats" && !isPublicHeader(*file)) {
            continue;
        }
        for (std::size_t i = 0; i < file->lines.size(); ++i) {
            if (std::regex_search(file->lines[i].begin(), file->lines[i].end(), foreign)) {
                wrong.push_back(file->at(i));
            }
        }
    }
    EXPECT_THAT(wrong, IsEmpty());
}
