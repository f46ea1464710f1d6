#include "tools/vek/browse/recovery.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <sstream>

#include <vekdb/host/own_file.h>

#include "formats/text/text_lines.h"

namespace fs = std::filesystem;

namespace vek::browse {

namespace {

constexpr std::string_view heading = "vek browse, edits not saved";

// Tabs separate the fields of a line; within one they, and what ends lines, are written out.
void addField(std::string& out, std::string_view field) {
    for (char c : field) {
        switch (c) {
            case '\\':
                out += "\\\\";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\0':
                out += "\\0";
                break;
            default:
                out += c;
        }
    }
}

std::string fieldOf(std::string_view written) {
    std::string out;
    for (std::size_t i = 0; i < written.size(); ++i) {
        const bool isEscape = written[i] == '\\' && i + 1 < written.size();
        if (!isEscape) {
            out += written[i];
            continue;
        }
        switch (written[++i]) {
            case 't':
                out += '\t';
                break;
            case 'n':
                out += '\n';
                break;
            case 'r':
                out += '\r';
                break;
            case '0':
                out += '\0';
                break;
            default:
                out += written[i];
        }
    }
    return out;
}

std::vector<std::string> fieldsOf(std::string_view line) {
    std::vector<std::string> fields;
    for (std::string_view piece : split(line, '\t')) fields.push_back(fieldOf(piece));
    return fields;
}

unsigned numberOf(const std::string& text) {
    unsigned number = EditLog::none;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string markLine(const FileMark& mark) {
    return concat(heading, "\t", std::to_string(mark.size), "\t", std::to_string(mark.time));
}

// Columns come at the end, go from there, and get other names.
void giveColumns(EditLog& edits, const std::vector<std::string>& fields) {
    const auto count = static_cast<unsigned>(fields.size() - 1);
    while (edits.table().get_num_fields() > count) {
        if (!edits.removeColumn(edits.table().get_num_fields() - 1)) return;
    }
    for (unsigned i = 0; i < count; ++i) {
        const std::string& name = fields[i + 1];
        if (i < edits.table().get_num_fields()) {
            edits.renameColumn(i, name.c_str());
        } else {
            edits.addColumn({cellText(name), DBFieldTypes::text});
        }
    }
}

void replayLine(EditLog& edits, const std::vector<std::string>& fields) {
    const std::string& kind = fields.front();
    if (kind == "set" && fields.size() == 4) {
        edits.set(numberOf(fields[1]), numberOf(fields[2]), fields[3]);
    } else if (kind == "insert" && fields.size() >= 2) {
        const std::vector<std::string_view> values(fields.begin() + 2, fields.end());
        edits.insertRow(numberOf(fields[1]), values.data(), values.size());
    } else if (kind == "delete" && fields.size() == 3) {
        edits.deleteRows(numberOf(fields[1]), numberOf(fields[2]));
    } else if (kind == "columns") {
        giveColumns(edits, fields);
    }
}

std::string recoveryPath(const std::string& logPath) {
    const fs::path path(logPath);
    return (path.parent_path() / ("." + path.filename().string() + ".vek-edits")).string();
}

bool isRegular(const std::string& path) {
    std::error_code error;
    return fs::is_regular_file(fs::symlink_status(path, error));
}

// What somebody else put there, or a link leads to, are no edits of this user's.
bool isOwn(const std::string& path) {
    return openOwnFile(path.c_str()).descriptor() >= 0;
}

std::string textOf(const OpenFile& file) {
    constexpr std::size_t piece = std::size_t{1} << 16;
    std::string text;
    for (std::size_t got = piece; got > 0;) {
        const std::size_t size = text.size();
        text.resize(size + piece);
        if (file.readAt(size, text.data() + size, piece, got) != 0) got = 0;
        text.resize(size + got);
    }
    return text;
}

bool isLocked(const std::string& path) {
    if (!isRegular(path)) return false;
    const OpenFile file = OpenFile::at(path.c_str());
    return file.error() == 0 && file.lock() == EWOULDBLOCK;
}

}  // namespace

std::optional<FileMark> markOf(const std::string& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) return {};
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) return {};
    const auto time = fs::last_write_time(path, error);
    if (error) return {};
    return FileMark{size, static_cast<long long>(time.time_since_epoch().count())};
}

Recovery::Recovery(const std::string& logPath)
    : path_(recoveryPath(logPath)), asidePath_(path_ + "~") {}

bool Recovery::exists() const {
    return isOwn(path_);
}

bool Recovery::isInUse() {
    const bool isLockedNow =
        (file_ == nullptr && isLocked(path_)) || (!isAside() && isLocked(asidePath_));
    isAnothers_ = isAnothers_ || isLockedNow;
    return isLockedNow;
}

// What was set aside is whole; what was written down anew of it may not be.
void Recovery::restore() {
    if (!isOwn(asidePath_) || isInUse()) return;
    std::error_code ignored;
    fs::rename(asidePath_, path_, ignored);
}

void Recovery::setAside() {
    OpenFile file = openOwnFile(path_.c_str());
    if (file.descriptor() < 0) throw Failure{unwritable, path_ + ": is gone, or not yours"};
    if (file.lock() == EWOULDBLOCK) {
        throw Failure{unwritable, path_ + ": another vek browse has these edits now"};
    }
    aside_ = std::move(file);
    fs::rename(path_, asidePath_);
}

void Recovery::dropAside() {
    fs::remove(asidePath_);
    aside_ = OpenFile();
}

bool Recovery::fits(const FileMark& mark) const {
    std::istringstream file(textOf(openOwnFile(path_.c_str())));
    std::string first;
    return std::getline(file, first) && first == markLine(mark);
}

// A last line without an end was being written when the program ended.
std::size_t Recovery::replay(EditLog& edits) const {
    std::istringstream file(textOf(aside_));
    std::string line;
    std::getline(file, line);
    const EditLog::Step step(edits);
    std::size_t count = 0;
    while (std::getline(file, line) && !file.eof()) {
        replayLine(edits, fieldsOf(line));
        ++count;
    }
    return count;
}

// Made anew and never followed: whatever stands there already is not ours. It is its owner's alone
// from the first moment on.
void Recovery::open() {
    if (file_ != nullptr || !mark_ || !trouble_.empty()) return;
    file_.reset(makeOwnFile(path_.c_str()));
    if (file_ == nullptr) return check(false);
    isAnothers_ = false;
    // Without the lock, edits are offered to whoever opens the log.
    OpenFile::of(::fileno(file_.get())).lock();
    line({markLine(*mark_)});
}

void Recovery::check(bool isWell) {
    if (isWell) return;
    const int reason = errno;
    const std::string why =
        reason == EEXIST && isInUse() ? "another vek browse edits this log" : std::strerror(reason);
    trouble_ =
        concat(path_, ": ", why, "; what is edited is lost if the program ends before it is saved");
    file_.reset();
}

void Recovery::line(const std::vector<std::string_view>& fields) {
    if (file_ == nullptr) return;
    text_.clear();
    const bool isHeading = fields.size() == 1;
    for (std::string_view field : fields) {
        if (!text_.empty()) text_ += '\t';
        isHeading ? void(text_ += field) : addField(text_, field);
    }
    text_ += '\n';
    check(std::fwrite(text_.data(), 1, text_.size(), file_.get()) == text_.size());
}

void Recovery::cellChanged(const Log& log, unsigned row, unsigned column) {
    open();
    line({"set", std::to_string(row), std::to_string(column), log.cell(row, column)});
}

void Recovery::rowsInserted(const Log& log, unsigned first, unsigned count) {
    open();
    std::vector<std::string_view> cells(log.columnCount());
    for (unsigned row = first; row < first + count; ++row) {
        log.cells(row, cells);
        const std::string at = std::to_string(row);
        std::vector<std::string_view> fields = {"insert", at};
        fields.insert(fields.end(), cells.begin(), cells.end());
        line(fields);
    }
}

void Recovery::rowsDeleted(unsigned first, unsigned count) {
    open();
    line({"delete", std::to_string(first), std::to_string(count)});
}

void Recovery::columnsChanged(const Log& log) {
    open();
    std::vector<std::string> names = log.columnNames();
    std::vector<std::string_view> fields = {"columns"};
    fields.insert(fields.end(), names.begin(), names.end());
    line(fields);
}

void Recovery::flush() {
    if (file_ != nullptr) check(std::fflush(file_.get()) == 0);
}

void Recovery::remove() {
    trouble_.clear();
    if (isInUse() || isAnothers_) return;
    file_.reset();
    std::error_code ignored;
    if (isOwn(path_)) fs::remove(path_, ignored);
}

}  // namespace vek::browse
