#include "tools/vek/cli/log_head.h"

#include <algorithm>
#include <filesystem>

#include <vekdb/host/open_file.h>
#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/reading/open_log.h"
#include "formats/reading/readers.h"

namespace vek {

namespace {

constexpr int mostCuts = 16;
constexpr std::size_t mostOfWorkbook = 64 << 20;

struct Head {
    std::string text;
    bool isWhole = false;
};

// Nothing for devices and pipes, which may let one wait.
std::optional<Head> readHead(const std::string& path, std::size_t bytes) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return {};
    const OpenFile file = OpenFile::at(path.c_str());
    OpenFile::Kind kind = OpenFile::Kind::device;
    std::uint64_t size = 0;
    if (file.error() != 0 || file.look(kind, size) != 0) return {};
    Head head{std::string(std::min<std::uint64_t>(size, bytes), '\0'), size <= bytes};
    std::size_t got = 0;
    while (got < head.text.size()) {
        std::size_t more = 0;
        if (file.readAt(got, head.text.data() + got, head.text.size() - got, more) != 0) return {};
        if (more == 0) break;
        got += more;
    }
    head.text.resize(got);
    return head;
}

std::optional<Log> logOf(std::string_view text, const std::string& path, const Opening& opening) {
    try {
        Input input(path, text, opening);
        return openLog(input, path, opening);
    } catch (const Failure&) {
        return {};
    }
}

// A list of objects that ends behind one of its last ones.
std::optional<Log> logOfList(std::string text, const std::string& path, const Opening& opening) {
    for (int cuts = 0; cuts < mostCuts; ++cuts) {
        const std::size_t end = text.rfind('}');
        if (end == std::string::npos) return {};
        text.resize(end + 1);
        if (std::optional<Log> log = logOf(text + "]", path, opening)) return log;
        text.pop_back();
    }
    return {};
}

}  // namespace

std::optional<LogHead> headOfLog(const std::string& path, const Opening& opening,
                                 std::size_t bytes) {
    std::optional<Head> head = readHead(path, bytes);
    if (!head) return {};
    if (!head->isWhole) head->text.resize(head->text.rfind('\n') + 1);
    const bool isCutInHeading = head->text.empty() && bytes < bytesForValues;
    if (isCutInHeading) return headOfLog(path, opening, bytesForValues);
    std::optional<Log> log = logOf(head->text, path, opening);
    if (!log && !head->isWhole) log = logOfList(std::move(head->text), path, opening);
    if (!log) return {};
    return LogHead{std::move(*log), head->isWhole};
}

std::vector<std::string> sheetsOfWorkbook(const std::string& path, const Opening& opening) {
    const std::optional<Head> head = readHead(path, mostOfWorkbook);
    if (!head || !head->isWhole || !isWorkbook(head->text)) return {};
    try {
        Input input(path, head->text, opening);
        return sheetsOfXlsx(input, opening);
    } catch (const Failure&) {
        return {};
    }
}

}  // namespace vek
