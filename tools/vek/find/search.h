#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "formats/choosing/select.h"
#include "formats/input/opening.h"
#include "formats/log/log.h"
#include "tools/vek/cli/command.h"

/// One log of many, asked for rows.
namespace vek::find {

/// What is asked of each log.
struct Question {
    std::vector<std::string> where;
    bool any = false;  ///< one condition is enough
    std::string at;
    bool tagged = false;
    enum class Columns { none, mapped, all, named } columns = Columns::mapped;
    std::vector<std::string> names;  ///< of the columns that are wanted, where they are named

    /// The conditions one by one, that of --at behind those of --where.
    std::size_t conditionCount() const { return where.size() + (at.empty() ? 0 : 1); }
};

struct FoundRow {
    std::uint32_t number;
    bool isTagged;
};

/// A column of what was found, or of what was asked for. What has the same key stands in one.
struct FoundColumn {
    std::string key;
    std::string title;
};

/// What a log has no columns for.
struct Missing {
    std::size_t place;  ///< of the condition, or of the column in the list of names
    std::string what;   ///< what was found, and what to do
    std::string text;   ///< the same with the file's name
};

/// Of many logs there is an answer for each, so it is small where nothing was found or told.
class Answer {
public:
    bool isAsked = false;
    bool isWhole = true;  ///< false where rows of it could not be read
    Format format = Format::table;
    std::size_t bytes = 0;
    std::size_t rows = 0;
    std::size_t count = 0;  ///< of the rows that match

    /// What is wrong with the log, and what it has no columns for.
    struct Remarks {
        std::string failure;  ///< why it could not be read
        std::vector<std::string> told;
        std::vector<Missing> conditions;
        std::vector<Missing> columns;
    };
    const Remarks& remarks() const;
    Remarks& remark();
    bool isRead() const { return isAsked && remarks().failure.empty(); }

    /// As the log calls itself; of one that is called by its path that path, which is not copied.
    std::string_view name() const { return ownName_.empty() ? name_ : std::string_view(ownName_); }
    void call(std::string_view path) { name_ = path; }
    void callOwn(const std::string& name);

    std::size_t foundCount() const { return found_ ? found_->numbers.size() : 0; }
    FoundRow found(std::size_t row) const { return {found_->numbers[row], found_->tags[row]}; }
    /// The columns that it has of what was found.
    const std::vector<FoundColumn>& has() const;
    std::string_view cell(std::size_t row, std::size_t column) const;
    void addColumn(FoundColumn column);
    /// Its cells are added behind it.
    void addRow(FoundRow row);
    void addCell(std::string_view cell);
    /// Room for so many rows of the columns that it has, and for the bytes of their cells: memory
    /// for no more than will come.
    void reserve(std::size_t rows, std::size_t bytes);
    /// Leaves out what was found, once it stands elsewhere.
    void drop();

private:
    // Of each row and cell, so small.
    struct Found {
        std::vector<FoundColumn> has;
        std::vector<std::uint32_t> numbers;
        std::vector<bool> tags;
        std::string text;                 // of all cells, row by row
        std::vector<std::uint32_t> ends;  // the lower half of where each ends
        std::vector<std::size_t> turns;   // the first cells for which the upper half is one more
    };

    std::size_t endOf(std::size_t cell) const;
    Found& found();

    std::string_view name_;
    std::string ownName_;
    std::unique_ptr<Remarks> remarks_;
    std::unique_ptr<Found> found_;
};

/// Asks log after log; one for each thread. Nothing that all logs have in common is made anew for
/// each of them.
class Search {
public:
    Search(const Question& question, Opening opening);

    /// A Failure where something is wrong with the question itself. The path outlives the answer.
    Answer ask(const std::string& path);

private:
    Selection selectionFor(const Log& log, Answer& answer) const;
    void addRows(const Log& log, const VDBView& view, const std::vector<unsigned>& columns,
                 Answer& answer) const;
    std::vector<unsigned> namedColumns(const Log& log, Answer& answer) const;
    std::vector<unsigned> addColumns(const Log& log, std::vector<unsigned> named,
                                     Answer& answer) const;

    const Question& question_;
    Opening opening_;
    Regexes regexes_;
};

}  // namespace vek::find
