#include "tools/vek/convert/partition.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>

#include "formats/formats.h"
#include "formats/reading/table_builder.h"
#include "formats/text/text_lines.h"
#include "formats/text/written_names.h"
#include "tools/vek/cli/column_keys.h"
#include "tools/vek/cli/log_files.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/pieces.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/convert/agreement.h"
#include "tools/vek/convert/partition_folder.h"

namespace vek::convert {

namespace {

namespace fs = std::filesystem;

// What is read before it is written, so that memory is bounded however many logs there are.
constexpr std::size_t usualBatch = std::size_t{512} << 20;
constexpr std::size_t mostLossy = 3;

struct Wish {
    std::string folder;
    std::vector<std::string> names;  ///< of the columns
    Format target = Format::csv;
    std::size_t batch = usualBatch;
};

Wish wishFrom(const Args& args) {
    if (!args.has("output")) {
        throw Failure{wrongUsage, "convert: --partition writes into a folder, expected -o FOLDER"};
    }
    if (!args.has("to")) {
        throw Failure{wrongUsage,
                      "convert: into which format? --partition needs --to, such as --to jsonl"};
    }
    Wish wish{args.text("output"),
              {},
              targetNamed(args.text("to")),
              args.number("part-size", usualBatch)};
    const std::string names = args.text("partition");
    for (std::string_view name : splitNames(names)) {
        wish.names.emplace_back(trimmed(name));
    }
    styleFrom(args, wish.target);
    return wish;
}

// The rows of several logs behind each other: a column for all that are one, empty in the rows of
// logs that have none such. First those that make the folders.
class Batch {
public:
    explicit Batch(const std::vector<std::string>& titles)
        : titles_(titles), builder_(log_, std::vector<std::string>()) {
        log_.path = log_.name = "the rows of several logs";
        log_.opening.terms = &programTerms();
    }

    void add(const Log& log, const std::vector<unsigned>& partition) {
        const std::vector<std::size_t> places = placesOf(log, partition);
        std::vector<std::string_view> from(log.columnCount());
        std::vector<std::string_view> to(titles_.size());
        sources_.parts.push_back({rows_, log.name});
        rows_ += log.rowCount();
        for (unsigned row = 0; row < log.rowCount(); ++row) {
            log.cells(row, from);
            for (std::size_t i = 0; i < from.size(); ++i) to[places[i]] = from[i];
            builder_.addWholeRow(log.lineOf(row), to.data(), to.size(), {});
        }
        agreement_.add(log, places);
        bytes_ += log.bytesRead;
    }

    std::size_t bytes() const { return bytes_; }

    const Log& finish() {
        builder_.setColumns(titles_);
        builder_.finish();
        agreement_.give(log_);
        return log_;
    }

    const RowSources& sources() const { return sources_; }
    const Agreement& agreement() const { return agreement_; }

private:
    // Where each column of the log goes.
    std::vector<std::size_t> placesOf(const Log& log, const std::vector<unsigned>& partition) {
        std::vector<std::size_t> places(log.columnCount());
        for (unsigned column = 0; column < places.size(); ++column) {
            const auto at = std::find(partition.begin(), partition.end(), column);
            const bool isOne = at != partition.end();
            places[column] =
                isOne ? static_cast<std::size_t>(at - partition.begin()) : placeOf(log, column);
        }
        return places;
    }

    std::size_t placeOf(const Log& log, unsigned column) {
        const auto [known, isNew] = known_.try_emplace(keyOf(log, column), titles_.size());
        if (isNew) titles_.push_back(log.columnName(column));
        return known->second;
    }

    Log log_;
    std::vector<std::string> titles_;
    std::unordered_map<std::string, std::size_t> known_;
    TableBuilder builder_;
    Agreement agreement_;
    RowSources sources_;
    unsigned rows_ = 0;
    std::size_t bytes_ = 0;
};

bool isEmptyOrAbsent(const std::string& folder) {
    std::error_code error;
    if (!fs::exists(fs::symlink_status(folder, error))) return true;
    const bool isEmpty = fs::is_directory(folder, error) && fs::is_empty(folder, error);
    return isEmpty && !error;
}

// What stands behind "part-"; nothing where that is no number, or one beyond those of any dataset.
std::optional<std::size_t> numberOfPart(std::string_view name) {
    constexpr std::string_view front = "part-";
    if (!name.starts_with(front)) return {};
    std::uint32_t number = 0;
    name.remove_prefix(front.size());
    const auto read = std::from_chars(name.data(), name.data() + name.size(), number);
    return read.ec == std::errc() ? std::optional<std::size_t>(number) : std::nullopt;
}

// The number behind the last part that stands anywhere in the folder.
std::size_t nextPart(const std::string& folder) {
    std::size_t next = 0;
    std::error_code error;
    fs::recursive_directory_iterator at(folder, error);
    for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        const std::string name = at->path().filename().native();
        if (const auto number = numberOfPart(name)) next = std::max(next, *number + 1);
    }
    if (error) throw Failure{unreadable, concat(folder, ": ", error.message())};
    return next;
}

// The column of the folders that stand in a folder, "" where there are none.
std::string columnOfFolders(const std::string& folder) {
    std::error_code error;
    fs::directory_iterator at(folder, error);
    for (; !error && at != fs::directory_iterator(); at.increment(error)) {
        const std::string name = at->path().filename().native();
        const std::size_t equals = name.find('=');
        if (equals != std::string::npos) return name.substr(0, equals);
    }
    return {};
}

std::size_t firstPart(const Wish& wish, const Args& args) {
    if (isEmptyOrAbsent(wish.folder)) return 0;
    if (args.has("append")) return nextPart(wish.folder);
    throw Failure{
        unwritable,
        concat(wish.folder, ": is there already and holds something, nothing is written; ",
               args.has("overwrite") ? "--overwrite is for single files; " : "",
               "--append adds to the parts that are there, or name another folder")};
}

// The folders in which a file is to stand. Those that were not there go again where it is not
// written, as a folder that holds something is no place for a dataset.
class NewFolders {
public:
    explicit NewFolders(const std::string& path) {
        std::error_code error;
        for (fs::path folder = fs::path(path).parent_path();
             !folder.empty() && !fs::exists(folder, error); folder = folder.parent_path()) {
            made_.push_back(folder);
        }
        makeFolderOf(path);
    }
    ~NewFolders() {
        std::error_code error;
        for (const fs::path& folder : made_) {
            if (!fs::remove(folder, error)) return;
        }
    }
    NewFolders(const NewFolders&) = delete;
    NewFolders& operator=(const NewFolders&) = delete;

    void keep() { made_.clear(); }

private:
    std::vector<fs::path> made_;  // the innermost first
};

// Writes batches of rows, a file of each for every value.
class Partition {
public:
    Partition(const Wish& wish, const Args& args)
        : wish_(wish), args_(args), part_(firstPart(wish, args)), isDry_(args.has("dry-run")) {}

    /// A log that has no such columns is left out, and told.
    void read(const std::string& path) {
        try {
            const Log log = readLog(path, args_);
            add(log);
            if (!log.notRead.empty()) result_ = exitCodeOf(unreadable);
        } catch (const Failure& failure) {
            if (failure.kind != unreadable && !isMissing_) throw;
            isMissing_ = false;
            sayFailure(failure.text + "; it is left out");
            result_ = std::max(result_, exitCodeOf(failure.kind));
        }
    }

    int end() {
        flush();
        if (logs_ == 0) throw Failure{unreadable, "convert: no log is left, nothing is written"};
        if (isDry_) tellPlan();
        tellDisagreed();
        if (lossy_ > mostLossy) {
            say(concat("convert: ", counted(lossy_ - mostLossy, "more file"), " with such losses"));
        }
        say(concat("convert: ", counted(rows_, "row"), " of ", counted(logs_, "log"), " in ",
                   counted(files_, "file"), isDry_ ? " would be written" : " written"));
        return result_;
    }

private:
    void add(const Log& log) {
        isMissing_ = true;
        std::vector<unsigned> columns;
        for (const std::string& name : wish_.names) columns.push_back(log.requireColumn(name));
        isMissing_ = false;
        requireEachOnce(log, columns, "convert: --partition");
        if (titles_.empty()) name(log, columns);
        if (!batch_) batch_.emplace(titles_);
        batch_->add(log, columns);
        rows_ += log.rowCount();
        ++logs_;
        if (batch_->bytes() >= wish_.batch) flush();
    }

    // Folders that are there say how the columns are written.
    void name(const Log& log, const std::vector<unsigned>& columns) {
        for (unsigned column : columns) titles_.push_back(log.columnName(column));
        const std::string known = part_ == 0 ? std::string() : columnOfFolders(wish_.folder);
        if (known.empty()) return;
        const std::string folder = partitionFolder(titles_.front(), "");
        if (!sameText(known, folder.substr(0, folder.find('=')))) {
            throw Failure{wrongUsage, concat(wish_.folder, ": has folders for each ",
                                             inQuotes(known), ", not for each ",
                                             inQuotes(titles_.front()), "; nothing is written")};
        }
        if (known != folder.substr(0, known.size())) titles_.front() = known;
    }

    void flush() {
        if (!batch_) return;
        const Log& log = batch_->finish();
        std::vector<unsigned> columns(titles_.size());
        for (unsigned i = 0; i < columns.size(); ++i) columns[i] = i;
        if (log.columnCount() == columns.size()) {
            throw Failure{wrongUsage,
                          "convert: no column is left beside those of --partition, nothing is "
                          "written"};
        }
        VDBView all(log.table.get());
        all->displayAllRecords();
        noteDisagreed(log);
        Pieces pieces = piecesOf(log, all, columns);
        for (Piece& piece : pieces) piece.path = pathOf(log, piece);
        for (const Piece& piece : pieces) isDry_ ? plan(piece) : writeOrTell(log, piece);
        ++part_;
        batch_.reset();
    }

    // Formats other than a table file have no types to lose.
    void noteDisagreed(const Log& log) {
        const Agreement& agreement = batch_->agreement();
        lostParameters_.insert(agreement.parameters().begin(), agreement.parameters().end());
        if (wish_.target == Format::table) lostTypes_.merge(agreement.columns(log));
    }

    void tellDisagreed() const {
        const bool hasParameters = !lostParameters_.empty();
        const bool hasTypes = !lostTypes_.empty();
        if (!hasParameters && !hasTypes) return;
        say(concat("convert: the logs do not agree on ",
                   hasParameters ? concat("the parameters ", listed(lostParameters_)) : "",
                   hasParameters && hasTypes ? " and " : "",
                   hasTypes ? concat("the types of ", listed(lostTypes_)) : "", "; the files have ",
                   hasParameters ? "no such parameters" : "",
                   hasParameters && hasTypes ? " and " : "",
                   hasTypes ? "texts in these columns" : ""));
    }

    static std::string listed(const std::set<std::string>& names) {
        std::string text;
        for (const std::string& name : names) {
            text += concat(text.empty() ? "" : ", ", inQuotes(name));
        }
        return text;
    }

    std::string pathOf(const Log& log, const Piece& piece) const {
        std::string path = wish_.folder;
        for (unsigned i = 0; i < titles_.size(); ++i) {
            const std::string folder = partitionFolder(titles_[i], log.cell(piece.rows.front(), i));
            requireShort(folder, titles_[i]);
            path += concat(path.ends_with('/') ? "" : "/", folder);
        }
        char name[32];
        std::snprintf(name, sizeof name, "/part-%05zu", part_);
        return concat(path, name, endingOf(wish_.target));
    }

    void requireShort(const std::string& folder, const std::string& title) const {
        if (folder.size() <= longestFolder) return;
        throw Failure{unwritable,
                      concat("convert: a value of ", inQuotes(title), " makes a folder's name of ",
                             std::to_string(folder.size()), " bytes, expected at most ",
                             std::to_string(longestFolder), ": ", inQuotes(folder), "; ",
                             std::to_string(files_),
                             " files were written before; choose another "
                             "column")};
    }

    void plan(const Piece& piece) {
        requireMakeable(piece.path);
        ++files_;
        planned_.push_back({piece.path, piece.rows.size()});
    }

    void writeOrTell(const Log& log, const Piece& piece) {
        try {
            write(log, piece);
        } catch (const Failure& failure) {
            throw Failure{failure.kind, concat(failure.text, "; ", counted(files_, "file"),
                                               files_ == 1 ? " was" : " were", " written before")};
        }
    }

    void write(const Log& log, const Piece& piece) {
        NewFolders folders(piece.path);
        // Where the file system takes folders for one that differ in case.
        if (isTaken(piece.path)) {
            throw Failure{unwritable,
                          concat(piece.path,
                                 ": is there already, by another value whose name is the same "
                                 "here; write into a folder that tells a from A")};
        }
        Printout out(piece.path, holdNewFile(piece.path));
        Losses losses;
        writeSheet({log, viewOf(log, piece.rows), otherColumns(log), &batch_->sources()},
                   wish_.target, styleFrom(args_, wish_.target), out, losses);
        out.close();
        folders.keep();
        ++files_;
        if (losses.count() > 0 && ++lossy_ <= mostLossy) tellLosses(losses, out.name());
    }

    std::vector<unsigned> otherColumns(const Log& log) const {
        std::vector<unsigned> columns = allColumns(log);
        columns.erase(columns.begin(),
                      columns.begin() + static_cast<std::ptrdiff_t>(titles_.size()));
        return columns;
    }

    void tellPlan() const { printPlan(planned_, args_); }

    const Wish& wish_;
    const Args& args_;
    std::size_t part_;
    bool isDry_;
    bool isMissing_ = false;           // while a log is asked for its columns
    std::vector<std::string> titles_;  // of the columns that make the folders
    std::optional<Batch> batch_;
    std::vector<PlannedFile> planned_;
    std::size_t logs_ = 0;
    std::size_t rows_ = 0;
    std::size_t files_ = 0;
    std::size_t lossy_ = 0;
    std::set<std::string> lostParameters_, lostTypes_;
    int result_ = done;
};

}  // namespace

int partitionLogs(const std::vector<std::string>& paths, const Args& args) {
    const Wish wish = wishFrom(args);
    const LogFiles files = logFilesIn(paths, args);
    Args each = args;
    each.set("IN", files.paths);
    Partition partition(wish, each);
    for (const std::string& path : files.paths) partition.read(path);
    const int result = partition.end();
    return files.areAll ? result : exitCodeOf(unreadable);
}

std::vector<Option> partitionOptions() {
    return {
        {"--partition", "A,B",
         "a folder COLUMN=value for each value of this column, or of several, below that of -o"},
        {"--append", "", "with --partition: add to the parts that are in the folder"},
        {"--part-size", "N",
         "with --partition: begin another file of each value behind so many bytes read; 512 MiB "
         "as a rule"},
    };
}

}  // namespace vek::convert
