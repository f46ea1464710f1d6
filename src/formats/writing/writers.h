#pragma once

#include "formats/choosing/select.h"
#include "formats/log/log.h"
#include "formats/writing/output.h"

/// Writers of logs. None changes a cell; what a format cannot hold is counted, to be said.
namespace vek::formats {

/// The target that writes a format that was read; a Failure for formats that are only read.
Target targetOf(const Log& log);

/// What is to be written: rows of a log in the order of a view, some of its columns.
struct Sheet {
    const Log& log;
    VDBView view;
    std::vector<unsigned> columns;

    unsigned rowCount() const { return view->get_num_records(); }
    const dbrecord& record(unsigned row) const { return *view->get_record(row); }
    std::string_view cell(unsigned row, unsigned place) const {
        return record(row).fieldView(columns[place]);
    }
    std::string name(unsigned place) const { return log.columnName(columns[place]); }
    std::size_t line(unsigned row) const { return log.lineOf(view->baseIndex(row)); }
};

/// All rows and columns of a log.
Sheet wholeSheet(const Log& log);
std::vector<unsigned> allColumns(const Log& log);

/// What a target could not hold. Kinds of loss are counted, with the first place of each.
class Losses {
public:
    void add(const std::string& what, const std::string& firstPlace);
    /// What is said in full, place by place: a row that is left out.
    void addEach(const std::string& message);
    /// Says each kind once: "OUT: 3 cells lose blanks at their ends, first FILE:12:Scene".
    void tell(const std::string& output) const;
    std::size_t count() const;

    struct Kind {
        std::string what;
        std::string firstPlace;
        std::size_t count;
    };
    const std::vector<Kind>& kinds() const { return kinds_; }
    const std::vector<std::string>& messages() const { return messages_; }

private:
    std::vector<Kind> kinds_;
    std::vector<std::string> messages_;
};

/// What a person says of an ALE that the log does not.
struct AleWishes {
    std::string videoFormat = {};
    std::string audioFormat = {};
    std::string tracks = {};
    std::vector<std::string> map = {};  ///< "OLD=NEW", names of columns

    bool isAny() const {
        return !videoFormat.empty() || !audioFormat.empty() || !tracks.empty() || !map.empty();
    }
};

struct WriteStyle {
    LineEnd lineEnd = LineEnd::lf;
    bool byteOrderMark = false;
    std::string rate = {};    ///< of timecodes, where the log's own FPS is not meant
    bool shortReels = false;  ///< reels of edit lists in eight characters
    AleWishes ale = {};
    bool guardsFormulas = false;  ///< CSV and TSV: no cell is one for a spreadsheet
};

/// Whether a log of the format is changed in place.
bool isChangedInPlace(Format format);

/// Writes a log back into the file it came from, in its format, the old file kept as it was on
/// any failure. What was not changed stays as it came, byte for byte; where nothing was, nothing
/// is written. Standard input goes to standard output. `backup` keeps the old file beside it.
Losses saveInPlace(const Log& log, bool backup);
/// These rows alone, in this order.
Losses saveInPlace(const Log& log, const std::vector<unsigned>& rows, bool backup);
/// These rows into another file of the log's format; what was not changed as it came.
Losses saveCopy(const Log& log, const std::vector<unsigned>& rows, const std::string& path,
                const Held& held, bool backup);
/// With the columns in this order, for formats that have no other.
Losses saveColumnsInPlace(const Log& log, const std::vector<unsigned>& columns, bool backup);

}  // namespace vek::formats
