#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "formats/choosing/select.h"
#include "formats/log/log.h"
#include "formats/reading/opening.h"
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

struct Answer {
    bool isAsked = false;
    std::string failure;            ///< why it could not be read
    std::vector<std::string> told;  ///< what is wrong with it
    bool isWhole = true;            ///< false where rows of it could not be read
    std::size_t bytes = 0;
    std::size_t rows = 0;
    std::string name;
    std::vector<Missing> conditions;
    std::vector<Missing> columns;
    std::size_t count = 0;  ///< of the rows that match
    std::vector<FoundColumn> has;

    std::size_t foundCount() const { return numbers_.size(); }
    FoundRow found(std::size_t row) const { return {numbers_[row], tags_[row]}; }
    std::string_view cell(std::size_t row, std::size_t column) const;
    /// Its cells are added behind it.
    void addRow(FoundRow row);
    void addCell(std::string_view cell);
    /// Room for so many rows of the columns that it has, and for the bytes of their cells: memory
    /// for no more than will come.
    void reserve(std::size_t rows, std::size_t bytes);
    /// Leaves out what was found, once it stands elsewhere.
    void drop();

private:
    std::size_t endOf(std::size_t cell) const;

    // Of each row and cell, so small.
    std::vector<std::uint32_t> numbers_;
    std::vector<bool> tags_;
    std::string text_;                 // of all cells, row by row
    std::vector<std::uint32_t> ends_;  // the lower half of where each ends
    std::vector<std::size_t> turns_;   // the first cells for which the upper half is one more
};

/// Asks log after log; one for each thread. Nothing that all logs have in common is made anew for
/// each of them.
class Search {
public:
    Search(const Question& question, Opening opening);

    /// A Failure where something is wrong with the question itself.
    Answer ask(const std::string& path);

private:
    Selection selectionFor(const Log& log, Answer& answer) const;
    void addRows(const Log& log, const VDBView& view, Answer& answer) const;
    std::vector<unsigned> columnsOf(const Log& log, Answer& answer) const;

    const Question& question_;
    Opening opening_;
    Regexes regexes_;
};

}  // namespace vek::find
