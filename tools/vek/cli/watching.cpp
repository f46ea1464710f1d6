#include "tools/vek/cli/watching.h"

#include <filesystem>

#include <vekdb/host/file_watch.h>
#include <vekdb/host/keyed_hash.h>
#include "tools/vek/cli/say.h"

namespace vek {

namespace {

std::uint64_t hashOf(const std::vector<std::string_view>& cells) {
    std::string key;
    for (std::string_view cell : cells) {
        key += std::to_string(cell.size());
        key += ':';
        key += cell;
    }
    return Quor::keyedHash(key);
}

constexpr int standardOutput = 1;

[[noreturn]] void refuse(const std::string& path, const char* what) {
    throw Failure{wrongUsage, concat("show: --watch follows a file, which can be read again, and ",
                                     inQuotes(path), " is ", what)};
}

// A file that is not there is told by who reads it.
void requireFile(const std::string& path) {
    if (path == "-") refuse(path, "standard input; write it to a file first");
    std::error_code ignored;
    const auto kind = std::filesystem::status(path, ignored).type();
    using std::filesystem::file_type;
    if (kind == file_type::fifo) refuse(path, "a pipe; write what it gives to a file first");
    if (kind == file_type::directory) refuse(path, "a folder; name a file in it");
    const bool isDevice = kind == file_type::character || kind == file_type::block;
    if (isDevice || kind == file_type::socket) refuse(path, "a device");
}

// Follows one file; says once what is wrong with it.
class Following {
public:
    Following(const std::string& path, const Follower& follower)
        : path_(path), follower_(follower), watch_(path.c_str()) {}

    int run() {
        follower_.show(follower_.read());
        for (;;) {
            const FileWatch::Event event = watch_.wait(standardOutput);
            if (event == FileWatch::eClosed) return done;
            const bool isRest = event == FileWatch::eNothing && !follower_.isOutdated();
            isRest ? follower_.rest() : showAgain();
        }
    }

private:
    void showAgain() {
        if (!watch_.isThere()) return tell(path_ + ": is gone; waiting for it to come back");
        try {
            follower_.show(follower_.read());
            told_.clear();
        } catch (const Failure& failure) {
            // What is written may have nobody who reads it any more.
            if (failure.kind != unreadable && failure.kind != wrongUsage) throw;
            tell(failure.text + " (waiting for it to change)");
        }
    }

    void tell(const std::string& text) {
        if (text != told_) sayFailure(text);
        told_ = text;
    }

    const std::string& path_;
    const Follower& follower_;
    FileWatch watch_;
    std::string told_;
};

}  // namespace

void NewRows::look(const Log& log) {
    std::vector<std::string> columns = log.columnNames();
    hasOtherColumns_ = columns != columns_;
    if (hasOtherColumns_) counts_.clear();
    columns_ = std::move(columns);
    isNew_.assign(log.rowCount(), false);
    std::unordered_map<std::uint64_t, std::uint32_t> counts;
    std::vector<std::string_view> cells(columns_.size());
    const unsigned count = log.rowCount() - (log.endsInLine && log.rowCount() > 0 ? 1 : 0);
    for (unsigned row = 0; row < count; ++row) {
        log.cells(row, cells);
        const std::uint64_t hash = hashOf(cells);
        const auto known = counts_.find(hash);
        isNew_[row] = ++counts[hash] > (known == counts_.end() ? 0 : known->second);
    }
    counts_ = std::move(counts);
}

int follow(const std::string& path, const Follower& follower) {
    requireFile(path);
    sayEachOnce();
    return Following(path, follower).run();
}

}  // namespace vek
