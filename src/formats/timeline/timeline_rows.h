#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/reading/readers.h"
#include "formats/reading/table_builder.h"
#include "formats/text/name_list.h"
#include "formats/timecode/exact_time.h"
#include "formats/timecode/timeline_columns.h"

/// What the readers of timelines share: rows of cells by the names of their columns, and times
/// as timecodes.
namespace vek::formats {

/// The column of the moments themselves, where times in a column are between two frames.
std::string exactTimeColumn(std::string_view column);

class TimelineRows {
public:
    /// `bytes` is the size of what is read.
    TimelineRows(Log& log, std::size_t bytes, bool hasRecord);

    /// The columns of a log that became a timeline, in their order, and the names it has for
    /// those that every timeline has. Rows come in the order of their numbers then.
    void restore(std::vector<std::string> columns,
                 std::unordered_map<std::string, std::string> names);
    bool isRestored() const { return isRestored_; }

    void begin(std::size_t line);
    /// A row of the log that became a timeline: only columns of that log are set.
    void beginOwn(std::size_t line, std::size_t number);
    void set(std::string_view column, std::string_view text);
    void clear(std::string_view column);
    /// A cell that the row has had, by its column's own name.
    void setOwnCell(std::string_view column, std::string_view text);
    /// How fast the source of the row runs; one of the log said so itself, if it was said.
    void setRate(const FrameRate& rate);
    /// Where the row has nothing in the column yet.
    bool setIfEmpty(std::string_view column, std::string_view text);
    /// The frame at a time, and the exact time beside it where no frame begins there.
    void setTime(const char* column, const ExactTime& time, const FrameRate& rate, bool drops);
    void end();

    /// Leaves out what says nothing; the other keeps all that a log had.
    void parameter(std::size_t line, std::string_view name, std::string_view value);
    void restoreParameter(std::size_t line, std::string_view name, std::string_view value);
    void problem(std::size_t line, std::string found, std::string expected, std::string outcome);
    void finish();

private:
    struct Row {
        std::size_t number;
        std::size_t line;
        std::vector<std::string> cells;
    };

    void tellBetweenFrames();
    std::size_t columnFor(std::string_view column);
    std::size_t columnForTime(std::string_view column);
    std::string& cell(std::size_t column);
    void add(const Row& row);

    Log& log_;
    TableBuilder builder_;
    std::size_t bytes_;
    NameList names_;
    std::unordered_map<std::string, std::string> ownNames_;
    bool isRestored_ = false;
    bool isOwn_ = false;  // the row
    Row row_{};
    std::size_t used_ = 0;  // cells of it
    std::vector<Row> waiting_;
    std::vector<std::string_view> views_;
    std::size_t rowCount_ = 0;
    std::string betweenFrames_;  // times of the row, for the message
};

}  // namespace vek::formats
