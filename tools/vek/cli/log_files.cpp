#include "tools/vek/cli/log_files.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <system_error>

#include <vekdb/formats/format.h>
#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/input/read_errors.h"
#include "formats/reading/documents.h"
#include "formats/text/text_lines.h"
#include "tools/vek/cli/say.h"

namespace vek {

namespace {

namespace fs = std::filesystem;

// Whether files of a folder are looked into, by what they are called.
class Endings {
public:
    explicit Endings(const Args& args) {
        if (args.has("from")) only_ = formatNamed(args.text("from"));
        // The library's own kind of CSV has no ending of its own.
        if (only_ == Format::plainCsv) only_ = Format::csv;
    }

    bool take(const std::string& path) const {
        const std::optional<Format> format = formatOfPath(path);
        return format && canRead(*format) && (!only_ || *format == *only_);
    }

private:
    std::optional<Format> only_;
};

bool isOfPrograms(const std::string& name) {
    return name.starts_with('.') || name.starts_with("~$") || name.starts_with('#');
}

struct Entry {
    std::string path;
    fs::directory_entry entry;
};

// Looks through folders, each of them once: those that links lead to when all others are done.
class Walk {
public:
    explicit Walk(const Endings& endings) : endings_(endings) {}

    void add(const std::string& path) {
        std::error_code error;
        if (path == "-" || !fs::is_directory(path, error)) return files_.paths.push_back(path);
        if (isDocumentFolder(path)) return files_.paths.push_back(pathOfDocument(path));
        enter(path, fs::canonical(path, error));
    }

    LogFiles take() {
        for (std::size_t i = 0; i < links_.size(); ++i) follow(links_[i]);
        return std::move(files_);
    }

private:
    // `real` is where the folder stands without links.
    void enter(const std::string& path, const fs::path& real) {
        if (!seen_.insert(real.native()).second) return;
        for (const Entry& one : entriesOf(path)) take(one, real);
    }

    void follow(const std::string link) {
        std::error_code error;
        const fs::path real = fs::canonical(link, error);
        if (!error) enter(link, real);
    }

    void take(const Entry& one, const fs::path& folder) {
        std::error_code error;
        const bool isLink = one.entry.is_symlink(error);
        if (one.entry.is_directory(error)) {
            if (isLink) return links_.push_back(one.path);
            return enter(one.path, folder / one.entry.path().filename());
        }
        if (endings_.take(one.path) && one.entry.is_regular_file(error)) {
            files_.paths.push_back(one.path);
        }
    }

    std::vector<Entry> entriesOf(const std::string& folder) {
        std::vector<Entry> entries;
        std::error_code error;
        fs::directory_iterator at(folder, error);
        for (; !error && at != fs::directory_iterator(); at.increment(error)) {
            const std::string name = at->path().filename().native();
            if (isOfPrograms(name)) continue;
            entries.push_back({concat(folder, folder.ends_with('/') ? "" : "/", name), *at});
        }
        if (error) tell(folder, error);
        std::sort(entries.begin(), entries.end(),
                  [](const Entry& a, const Entry& b) { return a.path < b.path; });
        return entries;
    }

    void tell(const std::string& folder, const std::error_code& error) {
        files_.areAll = false;
        try {
            refuseReading(folder, error.value());
        } catch (const Failure& failure) {
            sayFailure(failure.text);
        }
    }

    const Endings& endings_;
    LogFiles files_;
    std::set<std::string> seen_;
    std::vector<std::string> links_;
};

}  // namespace

LogFiles logFilesIn(const std::vector<std::string>& paths, const Args& args) {
    const Endings endings(args);
    Walk walk(endings);
    for (const std::string& path : paths) walk.add(path);
    return walk.take();
}

std::vector<std::string> pathsOfList(const std::string& list) {
    Input input(list);
    const std::string_view text = input.text();
    const bool hasZeros = text.find('\0') != std::string_view::npos;
    std::vector<std::string> paths;
    for (std::string_view one : split(text, hasZeros ? '\0' : '\n')) {
        if (!hasZeros && one.ends_with('\r')) one.remove_suffix(1);
        if (!one.empty()) paths.emplace_back(one);
    }
    return paths;
}

Option filesFromOption() {
    return {"--files-from", "FILE",
            "the files and folders of this list, too: a name a line, or each ended by a zero byte; "
            "- for standard input"};
}

LogFiles logFilesFrom(std::vector<std::string> paths, const Args& args) {
    if (args.has("files-from")) {
        std::vector<std::string> listed = pathsOfList(args.text("files-from"));
        std::move(listed.begin(), listed.end(), std::back_inserter(paths));
    }
    return logFilesIn(paths, args);
}

}  // namespace vek
