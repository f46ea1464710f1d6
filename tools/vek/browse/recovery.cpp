#include "tools/vek/browse/recovery.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <sstream>

#include <vekdb/host/own_file.h>

#include "formats/text/text_lines.h"
#include "tools/vek/browse/held_file.h"

namespace fs = std::filesystem;

namespace vek::browse {

namespace {

constexpr std::string_view heading = "vek browse, edits not saved";
constexpr unsigned mostNames = 1000;

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

bool isInUse(const std::string& path) {
    return HeldFile(path).state() == HeldFile::State::inUse;
}

bool hasText(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    return !error && size > 0;
}

bool isThere(const std::string& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
}

// Whether it is one of the names that stand beside a first one: with a number, and set aside.
bool isNameOf(std::string_view name, std::string_view first) {
    if (!name.starts_with(first)) return false;
    name.remove_prefix(first.size());
    if (name.ends_with('~')) name.remove_suffix(1);
    if (name.empty()) return true;
    const std::string_view digits = name.substr(1);
    return name[0] == '-' && !digits.empty() &&
           digits.find_first_not_of("0123456789") == std::string_view::npos;
}

std::vector<std::string> namesOf(const std::string& first) {
    const fs::path path(first);
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    std::vector<std::string> found;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (!isNameOf(name, path.filename().string())) continue;
        found.push_back((path.parent_path() / name).string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

// What was set aside is whole; what was written down anew of it may not be.
void putBack(const std::string& aside, const std::string& first) {
    const HeldFile whole(aside);
    if (whole.state() != HeldFile::State::held) return;
    std::string path = aside.substr(0, aside.size() - 1);
    const HeldFile half(path);
    const bool isHalf = half.state() == HeldFile::State::held;
    for (unsigned number = 2; !isHalf && isThere(path) && number <= mostNames; ++number) {
        path = first + "-" + std::to_string(number);
    }
    std::error_code ignored;
    if (isHalf || !isThere(path)) fs::rename(aside, path, ignored);
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

// The first has no number.
std::string Recovery::nameOf(unsigned number) const {
    const fs::path path(logPath_);
    std::string name = "." + path.filename().string() + ".vek-edits";
    if (number > 1) name += "-" + std::to_string(number);
    return (path.parent_path() / name).string();
}

// One in which nothing is yet is being made; its maker was killed where nobody has it locked, and
// else sees that it went.
std::vector<Recovery::Other> Recovery::others() const {
    const std::string first = nameOf(1);
    for (const std::string& path : namesOf(first)) {
        if (path.ends_with('~')) putBack(path, first);
    }
    std::vector<Other> found;
    for (const std::string& path : namesOf(first)) {
        if (path == path_ || path.ends_with('~')) continue;
        const HeldFile file(path);
        std::error_code ignored;
        if (file.isEmpty()) fs::remove(path, ignored);
        if (file.state() == HeldFile::State::none || !hasText(path)) continue;
        found.push_back({path, file.state() == HeldFile::State::inUse || isInUse(path + "~")});
    }
    return found;
}

const OpenFile& Recovery::setAside(const std::string& path) {
    HeldFile file(path);
    if (file.state() == HeldFile::State::none) {
        throw Failure{unwritable, path + ": is gone, or not yours"};
    }
    if (file.state() == HeldFile::State::inUse) {
        throw Failure{unwritable, path + ": another vek browse has these edits now"};
    }
    fs::rename(path, path + "~");
    aside_ = file.take();
    asidePath_ = path + "~";
    path_ = path;
    return aside_;
}

void Recovery::dropAside() {
    if (leadsTo(asidePath_, aside_.descriptor())) fs::remove(asidePath_);
    aside_ = OpenFile();
}

bool Recovery::fits(const std::string& path, const FileMark& mark) {
    std::istringstream file(textOf(openOwnFile(path.c_str())));
    std::string first;
    return std::getline(file, first) && first == markLine(mark);
}

void Recovery::drop(const std::string& path) {
    const HeldFile file(path);
    std::error_code ignored;
    if (file.state() == HeldFile::State::held) fs::remove(path, ignored);
}

Recovery::Replay::Replay(const OpenFile& file, EditLog& edits)
    : file_(textOf(file)), edits_(edits), step_(edits) {
    std::getline(file_, line_);
}

// A last line without an end was being written when the program ended.
std::size_t Recovery::Replay::step() {
    if (!std::getline(file_, line_) || file_.eof()) return 0;
    replayLine(edits_, fieldsOf(line_));
    ++count_;
    return line_.size() + 1;
}

// Made anew and never followed: whatever stands there already is not ours. It is its owner's alone
// from the first moment on.
bool Recovery::create(const std::string& path) {
    file_.reset(makeOwnFile(path.c_str()));
    if (file_ == nullptr) return false;
    if (!holdNew(path, ::fileno(file_.get()))) {
        file_.reset();
        errno = EEXIST;
        return false;
    }
    path_ = path;
    line({markLine(*mark_)});
    return true;
}

void Recovery::open() {
    if (file_ != nullptr || !mark_ || !trouble_.empty()) return;
    if (!path_.empty() && create(path_)) return;
    path_.clear();
    errno = EEXIST;
    for (unsigned number = 1; errno == EEXIST && number <= mostNames; ++number) {
        if (create(nameOf(number))) return;
    }
    check(false);
}

void Recovery::check(bool isWell) {
    if (isWell) return;
    trouble_ = concat(path_.empty() ? nameOf(1) : path_, ": ", std::strerror(errno),
                      "; what is edited is lost if the program ends before it is saved");
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
    if (file_ == nullptr) return;
    std::error_code ignored;
    if (leadsTo(path_, ::fileno(file_.get()))) fs::remove(path_, ignored);
    file_.reset();
    path_.clear();
}

}  // namespace vek::browse
