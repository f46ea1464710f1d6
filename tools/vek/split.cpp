
#include <algorithm>
#include <deque>
#include <filesystem>
#include <unordered_map>
#include <unordered_set>

#include <vekdb/column_sizes.h>
#include "formats/changing/cell_template.h"
#include "formats/changing/file_names.h"
#include "formats/formats.h"
#include "formats/input/input.h"
#include "formats/log/source.h"
#include "tools/vek/cli/choosing.h"
#include "tools/vek/cli/grid.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/pieces.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/terminal.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostFiles = 1000;
constexpr std::size_t mostTold = 20;
constexpr std::size_t mostLossy = 3;  // files whose losses are told one by one

void requireFew(const Pieces& pieces, const Args& args) {
    const std::size_t most = args.number("max-files", mostFiles);
    if (pieces.size() <= most) return;
    throw Failure{wrongUsage,
                  concat("split: ", std::to_string(pieces.size()), " values, expected at most ",
                         std::to_string(most), " files; --max-files says how many may be")};
}

// Gives the files their names, and tells where a value cannot stand in one as it is.
class Naming {
public:
    Naming(const Log& log, const std::string& output, const std::vector<unsigned>& columns)
        : log_(log), columns_(columns), template_(log, output) {
        for (const CellTemplate::Part& part : template_.parts()) check(part);
        const bool namesOne =
            std::any_of(template_.parts().begin(), template_.parts().end(),
                        [](const CellTemplate::Part& part) { return part.column != noColumn; });
        if (!namesOne) refuseOneName(output);
    }

    void name(Pieces& pieces) {
        for (Piece& piece : pieces) name(piece);
        if (told_ > mostTold) {
            say(concat(log_.name, ": ", std::to_string(told_ - mostTold), " more like these"));
        }
    }

private:
    [[noreturn]] void refuseOneName(const std::string& output) const {
        throw Failure{wrongUsage,
                      concat("split: ", inQuotes(output),
                             " is one name for all files, expected a column of --by in braces: {",
                             log_.columnName(columns_.front()), "}")};
    }

    void check(const CellTemplate::Part& part) const {
        if (part.isNumber) throw Failure{wrongUsage, "split: {#} has no place in a file's name"};
        const bool isKnown = part.column == noColumn || std::find(columns_.begin(), columns_.end(),
                                                                  part.column) != columns_.end();
        if (isKnown) return;
        throw Failure{wrongUsage, concat("split: {", log_.columnName(part.column),
                                         "} differs from row to row of a file, expected a column "
                                         "of --by")};
    }

    void name(Piece& piece) {
        const unsigned row = piece.rows.front();
        std::string values;
        for (unsigned column : columns_) {
            values += concat(values.empty() ? "" : ", ", inQuotes(log_.cell(row, column)));
        }
        const FileName name = fileNameOf(row);
        piece.path = names_.freeOne(name.path);
        const bool isAsMeant = name.isAsMeant && piece.path == name.path;
        if (!isAsMeant && ++told_ <= mostTold) {
            say(concat(log_.name, ": rows of ", values, " go to ", piece.path));
        }
    }

    FileName fileNameOf(unsigned row) const {
        FileNameBuilder builder;
        for (const CellTemplate::Part& part : template_.parts()) {
            builder.addText(part.text);
            if (part.column == noColumn) continue;
            std::string value;
            CellTemplate::addCell(value, part, log_.cell(row, part.column));
            builder.addValue(value);
        }
        return builder.take();
    }

    const Log& log_;
    const std::vector<unsigned>& columns_;
    CellTemplate template_;
    FreeNames names_;
    std::size_t told_ = 0;
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

void requireFolder(const std::string& path) {
    const std::string folder = folderOf(path);
    if (isThere(folder)) return;
    throw Failure{unwritable, concat(path, ": there is no folder ", folder,
                                     ", nothing is written; make the folder first")};
}

// Whether a file can be made where none is, its folder says for all of them.
void requireAllWritable(const Pieces& pieces) {
    std::unordered_set<std::string> folders;
    for (const Piece& piece : pieces) {
        std::error_code ignored;
        const bool isFree =
            fs::symlink_status(piece.path, ignored).type() == fs::file_type::not_found;
        if (!isFree || folders.insert(folderOf(piece.path)).second) requireWritable(piece.path);
    }
}

using Places = std::unordered_map<std::string, const std::string*>;

// Where a file is another one's backup, one of the two would be lost.
void requireOwnBackups(const Pieces& pieces, const Places& places) {
    for (const Piece& piece : pieces) {
        const auto other = places.find(placeOf(piece.path + ".bak"));
        if (other == places.end() || !isTaken(piece.path)) continue;
        throw Failure{unwritable, concat(*other->second,
                                         ": is to be written, and --backup would "
                                         "keep the old ",
                                         piece.path, " there; nothing is written")};
    }
}

// Everything that can be known to go wrong is known before the first file is written.
void requireFree(const Log& log, const Pieces& pieces, const Args& args) {
    const bool overwrites = args.has("overwrite");
    std::size_t count = 0;
    Places places;
    std::unordered_set<std::string> folders;
    for (const Piece& piece : pieces) {
        if (folders.insert(folderOf(piece.path)).second) requireFolder(piece.path);
        const auto [other, isNew] = places.try_emplace(placeOf(piece.path), &piece.path);
        if (!isNew) {
            throw Failure{unwritable, concat(*other->second, " and ", piece.path,
                                             " are one file, nothing is written; name another "
                                             "folder")};
        }
        if (!isTaken(piece.path)) continue;
        if (isSameFile(piece.path, log.path)) {
            throw Failure{unwritable,
                          piece.path + ": is the log that is split; nothing is written"};
        }
        if (args.has("backup")) requireNoBackupOver({log.path}, piece.path);
        if (!overwrites && ++count <= mostTold) sayFailure(piece.path + ": is there already");
    }
    if (args.has("backup")) requireOwnBackups(pieces, places);
    if (count == 0) return;
    throw Failure{unwritable, concat(counted(count, "file is", "files are"),
                                     " there already, nothing is written; --overwrite replaces "
                                     "them")};
}

// A file as it is to be written, all of it in memory.
struct Draft {
    Printout out;
    Losses losses;
};

// Whatever a format refuses of some row is found before anything is written.
class Writer {
public:
    Writer(const Log& log, const Args& args, Format target)
        : log_(log),
          args_(args),
          target_(target),
          backsUp_(args.has("backup")),
          sizes_(*log.table) {}

    /// Says and refuses what would be said and refused, one file after the other.
    void tryOut(const Pieces& pieces) {
        holdTextFor(pieces);
        for (const Piece& piece : pieces) {
            prepare(piece);
            finish(piece, drafts_.back());
            drafts_.clear();
        }
        tellMoreLossy();
    }

    void write(const Pieces& pieces) {
        holdTextFor(pieces);
        for (const Piece& piece : pieces) prepare(piece);
        std::size_t written = 0;
        try {
            for (; written < pieces.size(); ++written) {
                finish(pieces[written], drafts_.front());
                drafts_.pop_front();
            }
        } catch (const Failure& failure) {
            throw Failure{failure.kind,
                          concat(failure.text, "; ", std::to_string(written), " of ",
                                 counted(pieces.size(), "file"), " were written before")};
        }
        tellMoreLossy();
    }

private:
    void tellMoreLossy() const {
        if (lossy_ <= mostLossy) return;
        say(concat(log_.name, ": ", counted(lossy_ - mostLossy, "more file"), " with such losses"));
    }

    Printout outputFor(const Piece& piece) const {
        if (args_.has("dry-run")) return Printout::trial(piece.path);
        return Printout::late(
            piece.path, [this, &piece] { return heldFor(piece); },
            backsUp_ && args_.has("overwrite"));
    }

    // Each of many files would read far more around its rows than they are.
    void holdTextFor(const Pieces& pieces) const {
        constexpr std::size_t few = 16;
        if (pieces.size() > few && log_.source) log_.source->input->textAgain();
    }

    void prepare(const Piece& piece) {
        Draft& draft = drafts_.emplace_back(Draft{outputFor(piece), {}});
        InPlace now(log_, piece.rows);
        now.isPiece = true;
        writeCopy(now, target_, args_, draft.out, draft.losses);
    }

    Held heldFor(const Piece& piece) const {
        if (!args_.has("overwrite")) return holdNewFile(piece.path);
        return backsUp_ && isThere(piece.path) ? holdFile(piece.path) : nullptr;
    }

    void finish(const Piece& piece, Draft& draft) {
        draft.out.close();
        if (draft.losses.count() > 0 && ++lossy_ <= mostLossy) tellLosses(draft.losses, piece.path);
    }

    const Log& log_;
    const Args& args_;
    Format target_;
    bool backsUp_;
    ColumnSizes sizes_;      // which the heading of each table file says, whatever rows it has
    std::size_t lossy_ = 0;  // files that could not take everything
    std::deque<Draft> drafts_;
};

Format wantedTarget(const Log& log, const Args& args) {
    if (args.has("to")) return targetNamed(args.text("to"));
    return targetFor(log, args.text("output"));
}

void requireWishes(const Args& args) {
    if (!args.has("by")) throw Failure{wrongUsage, "split: by which column? expected --by COLUMN"};
    if (args.has("output")) return;
    throw Failure{wrongUsage,
                  "split: into which files? expected -o NAME with the column in braces, such as "
                  "-o 'day_{Reel}.ale'"};
}

int run(const Args& args) {
    requireWishes(args);
    Selection selection = selectionFrom(args);
    Log log = readLogToCopy(args);
    requireWhole(log);
    const std::vector<unsigned> columns = columnList(log, args.text("by"));
    Naming naming(log, args.text("output"), columns);
    const Format target = wantedTarget(log, args);
    VDBView view = selectRows(log, selection).view;
    if (view->get_num_records() == 0) {
        say(log.name + ": no row matches, nothing is written");
        return found;
    }
    Pieces pieces = piecesOf(log, view, columns);
    requireFew(pieces, args);
    naming.name(pieces);
    requireFree(log, pieces, args);
    const std::string summary = concat(log.name, ": ", counted(view->get_num_records(), "row"),
                                       " in ", counted(pieces.size(), "file"));
    if (args.has("dry-run")) {
        requireAllWritable(pieces);
        for (const Piece& piece : pieces) {
            if (args.has("backup")) requireBackup(piece.path);
        }
        Writer(log, args, target).tryOut(pieces);
        std::vector<PlannedFile> plan;
        for (const Piece& piece : pieces) plan.push_back({piece.path, piece.rows.size()});
        printPlan(plan, args);
        say(summary + " would be written");
    } else {
        Writer(log, args, target).write(pieces);
        say(summary + " written");
    }
    return readingResult(log);
}

}  // namespace

Command splitCommand() {
    return {
        "split",
        "write a file for each value of a column",
        "Writes the rows of each value of a column, or of several, into a file of their own, in "
        "their order and with all columns and parameters; in the log's own format they have its "
        "delimiter, encoding and line ends. In the name {COLUMN} stands for the "
        "value, {COLUMN|upper} and the like for what a function of vek set makes of it, and {{ "
        "for a brace. Signs that are not safe in a name on every system (/ \\ : * ? \" < > |, "
        "control characters, a point or dash in front, blanks and points behind) become _, no "
        "value becomes none, and of names that are the same, case ignored, the second gets _2: "
        "each such name is told. Nothing is overwritten unless asked. What can be found wrong is "
        "found before the first file is written; should one fail then, it is told how many were "
        "written.",
        {{"vek split log.vek --by Reel -o 'day_{Reel}.vek'", "a file for each reel"},
         {"vek split log.vek --by Reel,Scene -o '{Reel}_{Scene|lower}.csv' --dry-run",
          "which files it would be"},
         {"vek split log.vek --by Reel -o 'tagged_{Reel}.ale' --tagged --fps 24",
          "the tagged rows alone"}},
        {{"FILE", "the log, or - for standard input"}},
        join(join({{"-b,--by", "A,B", "a file for each value of this column, or of several"},
                   {"-o,--output", "NAME", "the names of the files, columns in braces"},
                   {"--to", "FORMAT", "what to write; the ending of NAME as a rule", false,
                    writableFormats().c_str()},
                   {"--overwrite", "", "replace files that are there"},
                   {"--backup", "", "keep what is replaced, as FILE.bak"},
                   {"--max-files", "N", "refuse to write more files; 1000 as a rule"},
                   {"-n,--dry-run", "", "list the files, write nothing"},
                   fromOption()},
                  choosingOptions()),
             join(styleOptions(), screenOptions())),
        run,
    };
}

}  // namespace vek
