#include "log_source.h"

#include <charconv>
#include <utility>

#include <vekdb/formats/timecode.h>
#include <vekdb/host/file_replacement.h>
#include "formats/face/guarded.h"
#include "formats/face/inside.h"
#include "formats/saving/file_sink.h"
#include "formats/saving/prepared_file.h"
#include "guard.h"

namespace vek::sql {

namespace {

std::string expected(std::string_view name, const std::string& value, const char* what) {
    return "vek: " + std::string(name) + " is " + quoted(value) + ", expected " + what;
}

Format formatOf(const std::string& value) {
    const std::optional<Format> format = formatOfName(value);
    if (format && canRead(*format)) return *format;
    throw Refusal(expected("from", value,
                           "vekdb, csv, tsv, plain-csv, json, jsonl, ale, edl, otio, fcpxml or "
                           "xlsx"));
}

char delimiterOf(const std::string& value) {
    constexpr struct {
        std::string_view name;
        char mark;
    } known[] = {{"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"\\t", '\t'}, {"pipe", '|'}};
    for (const auto& delimiter : known) {
        if (value == delimiter.name) return delimiter.mark;
    }
    if (value.size() == 1) return value[0];
    throw Refusal(expected("delimiter", value, "comma, semicolon, tab, pipe or one character"));
}

std::size_t countOf(std::string_view name, const std::string& value) {
    std::size_t count = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), count);
    if (error == std::errc() && end == value.data() + value.size()) return count;
    throw Refusal(expected(name, value, "a number of 0 or more"));
}

bool isYes(std::string_view name, const std::string& value) {
    if (value == "1" || value == "yes" || value == "true" || value == "on") return true;
    if (value == "0" || value == "no" || value == "false" || value == "off") return false;
    throw Refusal(expected(name, value, "yes or no"));
}

std::string rateOf(const std::string& value) {
    const std::optional<FrameRate> rate = parseFrameRate(value);
    if (rate) return rateText(*rate);
    throw Refusal(expected("fps", value, "a rate such as 24 or 29.97df"));
}

}  // namespace

void FileWishes::take(std::string_view name, const std::string& value) {
    if (name == "path" || name == "file") {
        path = value;
    } else if (name == "from") {
        options.format = formatOf(value);
    } else if (name == "encoding") {
        options.encoding = value;
    } else if (name == "delimiter") {
        options.delimiter = delimiterOf(value);
    } else if (name == "sheet") {
        options.sheet = value;
    } else if (name == "skip_lines") {
        options.skippedLines = countOf(name, value);
    } else if (name == "no_header") {
        options.hasNoHeading = isYes(name, value);
    } else if (name == "max_bytes") {
        options.maxBytes = countOf(name, value);
    } else if (name == "max_cells") {
        options.maxCells = countOf(name, value);
    } else if (name == "fps") {
        rate = rateOf(value);
    } else if (name == "backup") {
        keepsOld = isYes(name, value);
    } else if (name == "read_only") {
        isReadOnly = isYes(name, value);
    } else {
        throw Refusal("vek: there is no option " + quoted(name) +
                      ", expected from, encoding, delimiter, sheet, skip_lines, no_header, fps, "
                      "backup, read_only, max_bytes or max_cells");
    }
}

FileSource::FileSource(FileWishes wishes) : wishes_(std::move(wishes)) {}
FileSource::~FileSource() = default;

std::string FileSource::backup() const {
    return wishes_.keepsOld ? formats::backupOf(path()) : std::string();
}

FileLook FileSource::stamp() const {
    return FileLook::at(path().c_str());
}

// What may never end, or ends once, is no table. What is not there at all the reader tells.
void FileSource::requireFile() const {
    const FileLook found = stamp();
    if (found.isRegular() || found.error != 0) return;
    throw Refusal(path() + ": is " + (found.isFolder() ? "a folder" : "a pipe or a device") +
                  ", expected a file, which can be read again");
}

Log FileSource::read() {
    requireFile();
    Result<Log> log = open(path(), wishes_.options);
    if (!log) throw Refusal(log.reason());
    return *log;
}

namespace {

// SQLite takes the whole transaction back, with what it changed in other tables, where a statement
// ends by SQLITE_IOERR. A file that cannot be held yet ends the statement alone: it may be given
// again, the more so where whoever had it has let go of it meanwhile.
int codeOfHolding(const Reason& reason, const std::string& path) {
    if (reason.kind != Reason::unwritable) return Refusal(reason).code;
    FileReplacement file;
    const bool isFree = file.find(path.c_str()) && file.hold(0);
    return isFree || file.trouble() == FileReplacement::eInUse ? SQLITE_BUSY : SQLITE_CANTOPEN;
}

}  // namespace

Log FileSource::readToChange() {
    if (wishes_.isReadOnly) {
        throw Refusal(SQLITE_READONLY, path() +
                                           ": is read only, as its table was made with "
                                           "read_only");
    }
    requireFile();
    Result<Log> log = openToChange(path(), wishes_.options);
    if (!log) throw Refusal(codeOfHolding(log.reason(), path()), log.reason().text());
    // Whoever held the file until now has put another in its place.
    held_ = stamp();
    return *log;
}

namespace {

// Does what may throw a Failure; a Refusal then.
template <class Work>
void trying(Work work) {
    const Result<void> done = vek::guarded([&]() -> Result<void> {
        work();
        return {};
    });
    if (!done) throw Refusal(done.reason());
}

void tell(const std::string& path, const Saved& saved) {
    for (const Loss& loss : saved.losses) {
        sqlite3_log(SQLITE_WARNING, "%s: %s: %llu, first %s", path.c_str(), loss.what.c_str(),
                    static_cast<unsigned long long>(loss.count), loss.firstPlace.c_str());
    }
    for (const std::string& note : saved.notes) sqlite3_log(SQLITE_WARNING, "%s", note.c_str());
}

}  // namespace

void FileSource::prepare(const Log& log, std::vector<unsigned> rows) {
    trying([&] {
        prepared_ = std::make_unique<formats::PreparedFile>(LogInside::of(log).log, std::move(rows),
                                                            wishes_.keepsOld);
        tell(path(), savedWith(prepared_->losses(), prepared_->notes()));
    });
}

void FileSource::requireReady() const {
    if (prepared_ == nullptr || stamp() == held_) return;
    throw Refusal(SQLITE_IOERR,
                  path() +
                      ": was changed by another program since it was read, so nothing is "
                      "written; look at it, and give the command again");
}

void FileSource::commit() {
    if (const auto prepared = std::exchange(prepared_, nullptr))
        trying([&] { prepared->commit(); });
}

void FileSource::giveUp() noexcept {
    prepared_.reset();
}

namespace {

std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\f\v";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == text.npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

// What is written between quotes in one of the ways that SQLite has, or as it stands.
std::string unquoted(std::string_view text) {
    if (text.size() < 2) return std::string(text);
    const char open = text.front();
    const char close = open == '[' ? ']' : open;
    const bool isQuoted =
        (open == '\'' || open == '"' || open == '`' || open == '[') && text.back() == close;
    if (!isQuoted) return std::string(text);
    std::string out;
    const std::string_view inner = text.substr(1, text.size() - 2);
    for (std::size_t i = 0; i < inner.size(); ++i) {
        out += inner[i];
        if (open != '[' && inner[i] == close && i + 1 < inner.size() && inner[i + 1] == close) ++i;
    }
    return out;
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

// The name in front of a sign =, "" where there is none.
std::string_view nameOf(std::string_view argument) {
    const std::size_t sign = argument.find('=');
    if (sign == argument.npos) return {};
    const std::string_view name = withoutBlanks(argument.substr(0, sign));
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    return name.find_first_not_of(letters) == name.npos ? name : std::string_view();
}

}  // namespace

FileWishes wishesOf(const std::vector<std::string_view>& arguments) {
    FileWishes wishes;
    for (std::string_view argument : arguments) {
        argument = withoutBlanks(argument);
        const std::string_view name = nameOf(argument);
        if (!name.empty()) {
            const std::size_t sign = argument.find('=');
            wishes.take(lower(name), unquoted(withoutBlanks(argument.substr(sign + 1))));
        } else if (wishes.path.empty()) {
            wishes.path = unquoted(argument);
        } else {
            throw Refusal("vek: found a second file " + quoted(argument) +
                          ", expected one, and options such as delimiter=';'");
        }
    }
    if (wishes.path.empty()) throw Refusal("vek: found no file, expected vek('dailies.vek')");
    return wishes;
}

}  // namespace vek::sql
