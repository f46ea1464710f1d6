#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <vekdb/table.h>
#include "formats/log/log.h"
#include "formats/log/parameter_text.h"

namespace vek::convert {

using formats::Log;

/// What the logs whose rows come together say alike of themselves: their parameters, and the types
/// of their columns.
class Agreement {
public:
    /// `places` are those of the log's columns among all.
    void add(const Log& log, const std::vector<std::size_t>& places);
    /// Gives the log of all rows what they agree on. Columns of which they say several types keep
    /// the one that their cells have.
    void give(Log& log) const;
    /// What they do not agree on, by name; columns only where they are texts for it.
    const std::set<std::string>& parameters() const { return lostParameters_; }
    std::set<std::string> columns(const Log& log) const;

private:
    using Type = DBFieldTypes::eType;

    void addParameters(const Log& log);
    void addTypes(const Log& log, const std::vector<std::size_t>& places);

    // Of a column; no one type where there were several.
    struct Said {
        std::optional<Type> type;
        bool isThere = false;
    };

    std::vector<formats::ParameterText> parameters_;
    std::set<std::string> lostParameters_;
    std::vector<Said> types_;
    std::size_t logs_ = 0;
};

}  // namespace vek::convert
