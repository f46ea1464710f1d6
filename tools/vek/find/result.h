#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tools/vek/find/search.h"

namespace vek::find {

/// The rows that were found in all logs, in the logs' order, as one table: a column for all that
/// have one key, empty where a log has none such.
class Result {
public:
    /// At most `limit` rows, 0 for all. The answers outlive this.
    Result(const std::vector<Answer>& answers, const std::vector<std::string>& names,
           std::size_t limit);

    std::size_t rowCount() const { return rowCount_; }
    std::size_t columnCount() const { return titles_.size(); }
    const std::string& title(std::size_t column) const { return titles_[column]; }
    /// Whether a log that has rows here has the column.
    bool isKnown(std::size_t column) const { return isKnown_[column]; }
    std::string_view fileOf(std::size_t row) const { return answers_[answerOf(row)].name(); }
    /// Which of the answers a row is of; those of one stand together.
    std::size_t answerOf(std::size_t row) const { return partOf(row).answer; }
    FoundRow row(std::size_t row) const;
    std::string_view cell(std::size_t row, std::size_t column) const;

private:
    // The rows of an answer, and the first of them here.
    struct Part {
        std::size_t answer;
        std::size_t first;
    };

    const Part& partOf(std::size_t row) const;
    void add(std::size_t number, std::size_t limit);
    std::size_t columnOf(const FoundColumn& column);

    const std::vector<Answer>& answers_;
    std::vector<Part> parts_;
    std::size_t rowCount_ = 0;
    mutable std::size_t lastPart_ = 0;  // most rows are of the one that was asked last
    std::vector<std::string> titles_;
    std::vector<bool> isKnown_;
    std::unordered_map<std::string, std::size_t> columns_;  // by their keys
    std::vector<std::vector<std::size_t>> placesIn_;        // of a column in each answer, from 1 on
};

}  // namespace vek::find
