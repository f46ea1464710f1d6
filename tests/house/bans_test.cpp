#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "house/source_tree.h"

using testing::IsEmpty;

namespace {

using Files = std::vector<const SourceFile*>;

Files without(Files files, std::string_view path) {
    std::erase_if(files, [&](const SourceFile* file) { return file->path == path; });
    return files;
}

bool isNamePart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

struct Name {
    std::string_view whole;  // with the scopes it is written with
    std::size_t at;
    bool called;

    std::string_view last() const { return whole.substr(whole.rfind(':') + 1); }
};

Name nameAt(std::string_view code, std::size_t at) {
    std::size_t end = at;
    while (end < code.size() && (isNamePart(code[end]) || code[end] == ':')) {
        ++end;
    }
    std::size_t next = code.find_first_not_of(' ', end);
    return {code.substr(at, end - at), at, next != code.npos && code[next] == '('};
}

// Where code, not comments or literals, has a name that `wanted` picks.
template <class Wanted>
std::vector<std::string> namesWhere(Wanted wanted, const Files& files) {
    std::vector<std::string> found;
    for (const SourceFile* file : files) {
        std::string code = codeOnly(file->text);
        std::size_t line = 0;
        for (std::size_t i = 0; i < code.size(); ++i) {
            line += code[i] == '\n' ? 1 : 0;
            if (!isNamePart(code[i])) {
                continue;
            }
            Name name = nameAt(code, i);
            if (wanted(name)) {
                found.push_back(file->at(line) + " " + std::string(name.whole));
            }
            i += name.whole.size() - 1;
        }
    }
    return found;
}

using Words = std::set<std::string_view>;

std::vector<std::string> callsOf(const Words& banned, const Files& files) {
    return namesWhere([&](const Name& name) { return name.called && banned.contains(name.last()); },
                      files);
}

std::vector<std::string> usesOf(const Words& banned, const Files& files) {
    return namesWhere([&](const Name& name) { return banned.contains(name.last()); }, files);
}

// Where a line, comments and all, holds one of the words.
std::vector<std::string> mentionsOf(const std::vector<std::string>& words) {
    std::vector<std::string> found;
    for (const SourceFile& file : allSources()) {
        for (std::size_t i = 0; i < file.lines.size(); ++i) {
            for (const std::string& word : words) {
                if (file.lines[i].find(word) != std::string_view::npos) {
                    found.push_back(file.at(i) + " " + word);
                }
            }
        }
    }
    return found;
}

}  // namespace

TEST(Bans, TheSearchSeesCodeAndNotCommentsOrLiterals) {
    EXPECT_EQ(codeOnly("a // b\nc"), "a     \nc");
    EXPECT_EQ(codeOnly("a /* b */ c"), "a         c");
    EXPECT_EQ(codeOnly("f(\"x\\\"y\", 'z', 1'000)"), "f(      ,    , 1'000)");
    EXPECT_EQ(codeOnly("R\"(\"')\";"), "       ;");
}

TEST(Bans, ACallIsFoundByTheLastPartOfItsName) {
    SourceFile file{"a.cpp", "int x;\n  std::exit (1); // exit(2)\n", {}};
    EXPECT_THAT(callsOf({"exit"}, {&file}), testing::ElementsAre("a.cpp:2 std::exit"));
    EXPECT_THAT(callsOf({"x"}, {&file}), IsEmpty());
}

TEST(Bans, TheTreeIsThere) {
    EXPECT_GE(librarySources().size(), 20u);
}

TEST(Bans, OnlyTheDiagnosticsSinksPrint) {
    auto files = without(librarySources(), "src/host/diagnostics.cpp");
    EXPECT_THAT(callsOf({"printf", "fprintf", "vprintf", "vfprintf", "dprintf", "puts", "fputs",
                         "putchar", "fputc", "perror"},
                        files),
                IsEmpty());
    EXPECT_THAT(usesOf({"stdout", "stderr", "cout", "cerr", "clog", "STDOUT_FILENO"}, files),
                IsEmpty());
}

TEST(Bans, TheLibraryNeverEndsTheProcess) {
    EXPECT_THAT(callsOf({"abort", "exit", "_exit", "_Exit", "quick_exit", "terminate", "raise",
                         "kill", "__builtin_trap"},
                        librarySources()),
                IsEmpty());
}

TEST(Bans, TheLibraryNeverTouchesTheHostsSignalsLocaleOrEnvironment) {
    EXPECT_THAT(callsOf({"signal", "sigaction", "setlocale", "putenv", "setenv", "chdir", "umask",
                         "sigprocmask", "isatty", "ioctl"},
                        librarySources()),
                IsEmpty());
    // While bytes are written, a signal of that write waits for its own thread and is taken off.
    const auto files = without(librarySources(), "src/host/posix/replacing/byte_copy.cpp");
    EXPECT_THAT(callsOf({"pthread_sigmask"}, files), IsEmpty());
}

namespace {

// Written as the system's own, with nothing in front of the colons.
bool isSystems(const Name& name) {
    if (!name.called || name.at < 3) return false;
    const char* const before = name.whole.data() - 3;
    return std::string_view(before + 1, 2) == "::" && !isNamePart(*before);
}

// Files that ask the operating system for files.
std::set<std::string> askersForFiles(const Files& files) {
    static const Words calls = {
        "open",      "openat",    "creat",     "read",     "pread",  "write",     "pwrite",
        "close",     "fsync",     "stat",      "lstat",    "fstat",  "fstatat",   "readlink",
        "unlink",    "unlinkat",  "link",      "linkat",   "rename", "flock",     "fcntl",
        "dup",       "lseek",     "renameat",  "chmod",    "fchmod", "chown",     "fchown",
        "access",    "mkdir",     "fstatfs",   "readdir",  "mmap",   "ftruncate", "fallocate",
        "faccessat", "fdopendir", "fsetxattr", "fgetxattr"};
    std::set<std::string> askers;
    for (const SourceFile* file : files) {
        auto asks = [&](const Name& name) {
            return isSystems(name) && calls.contains(name.last());
        };
        const bool doesAsk = !namesWhere(asks, {file}).empty();
        if (doesAsk)
            askers.insert(file->path.starts_with("src/host/posix/") ? "src/host/posix/"
                                                                    : file->path);
    }
    return askers;
}

}  // namespace

// What is asked elsewhere no test can make fail in the process.
TEST(Bans, FilesAreAskedForInOneRoom) {
    EXPECT_THAT(askersForFiles(librarySources()), testing::ElementsAre("src/host/posix/"));
}

TEST(Bans, NothingUnboundedOrWithHiddenStateIsCalled) {
    EXPECT_THAT(callsOf({"strtok", "strcpy", "strcat", "sprintf", "vsprintf", "gets", "tmpnam",
                         "asctime", "alloca"},
                        librarySources()),
                IsEmpty());
}

TEST(Bans, NumbersOfAFileAreNotReadWithUndefinedOverflow) {
    EXPECT_THAT(callsOf({"atoi", "atol", "atoll", "sscanf"}, librarySources()), IsEmpty());
}

TEST(Bans, ViewsAreNotSortedByWhatNeedsAStrictWeakOrder) {
    auto needsStrictOrder = [](const Name& name) {
        static const Words banned = {"sort", "nth_element", "partial_sort"};
        return name.whole.starts_with("std::") && banned.contains(name.last());
    };
    EXPECT_THAT(namesWhere(needsStrictOrder, sourcesOf("views")), IsEmpty());
}

TEST(Bans, OnlyTheHostFloorAsksForMemoryAnotherWay) {
    Files files;
    for (const char* floor : {"vekdb", "support", "views", "container", "arrow"}) {
        for (const SourceFile* file : sourcesOf(floor)) {
            files.push_back(file);
        }
    }
    EXPECT_THAT(callsOf({"malloc", "calloc", "strdup"}, files), IsEmpty());
}

// Those of the formats answer with values of the standard library, strings above all.
TEST(Bans, PublicHeadersOfTheCoreStayLight) {
    std::vector<std::string> heavy;
    for (const SourceFile* file : librarySources()) {
        const bool isOfCore = isPublicHeader(*file) && file->folder() != "formats";
        for (std::size_t i = 0; isOfCore && i < file->lines.size(); ++i) {
            static const Words banned = {"#include <algorithm>", "#include <filesystem>",
                                         "#include <fstream>",   "#include <functional>",
                                         "#include <iostream>",  "#include <map>",
                                         "#include <regex>",     "#include <sstream>",
                                         "#include <string>",    "#include <unordered_map>"};
            if (banned.contains(file->lines[i])) {
                heavy.push_back(file->at(i) + " " + std::string(file->lines[i]));
            }
        }
    }
    EXPECT_THAT(heavy, IsEmpty());
}

TEST(Bans, NothingIsLeftForLater) {
    EXPECT_THAT(mentionsOf({"TO"
                            "DO",
                            "FIX"
                            "ME",
                            "X"
                            "XX:",
                            "HA"
                            "CK:"}),
                IsEmpty());
}

TEST(Bans, NoTestIsSwitchedOff) {
    EXPECT_THAT(mentionsOf({"DISABLED"
                            "_",
                            "GTEST"
                            "_SKIP",
                            "#if"
                            " 0"}),
                IsEmpty());
}
