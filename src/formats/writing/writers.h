#pragma once

#include "formats/choosing/select.h"
#include "formats/log/log.h"
#include "formats/log/mapped_columns.h"
#include "formats/log/target.h"
#include "formats/writing/output.h"

/// Writers of logs. None changes a cell; what a format cannot hold is counted, to be said.
namespace vek::formats {

/// The logs that the rows of one came from, one behind the other, where they were put together.
struct RowSources {
    struct Part {
        unsigned first;  ///< row of it
        std::string name;
    };
    std::vector<Part> parts;

    const std::string& of(unsigned row) const;
};

/// What is to be written: rows of a log in the order of a view, some of its columns.
struct Sheet {
    const Log& log;
    VDBView view;
    std::vector<unsigned> columns;
    const RowSources* sources = nullptr;  ///< where the rows came from several logs

    unsigned rowCount() const { return view->get_num_records(); }
    const dbrecord& record(unsigned row) const { return *view->get_record(row); }
    std::string_view cell(unsigned row, unsigned place) const {
        return record(row).fieldView(columns[place]);
    }
    std::string name(unsigned place) const { return log.columnName(columns[place]); }
    std::size_t line(unsigned row) const { return log.lineOf(view->baseIndex(row)); }
    /// The log of which that is a line, for messages.
    const std::string& source(unsigned row) const {
        return sources == nullptr ? log.name : sources->of(view->baseIndex(row));
    }
};

/// All rows and columns of a log.
Sheet wholeSheet(const Log& log);

/// What a format could not hold. Kinds of loss are counted, with the first place of each.
class Losses {
public:
    void add(const std::string& what, const std::string& firstPlace);
    /// What is said in full, place by place: a row that is left out.
    void addEach(const std::string& message);
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
    TextForm form = {};           ///< of the CSV or TSV that this is a copy of
};

}  // namespace vek::formats
