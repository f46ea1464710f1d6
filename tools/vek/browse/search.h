#pragma once

#include <optional>
#include <string>

#include <vekdb/host/text_search.h>
#include "tools/vek/browse/sheet.h"

namespace vek::browse {

/// Looks for a text in the cells that a sheet shows, a little at a time, so that a key is never
/// kept waiting. Goes round the end once.
class Search {
public:
    /// From a place on; its own row is looked at first where `fromHere` says so, and last where
    /// not.
    void begin(const std::string& text, unsigned from, bool isBack, bool fromHere);
    void stop() { isRunning_ = false; }
    bool isRunning() const { return isRunning_; }
    /// Looks at as many rows as a slice of time has room for; whether it is over.
    bool step(const Sheet& sheet);
    /// Where it was found, row and column of what is shown; nothing where it was not.
    struct Found {
        unsigned place;
        std::size_t column;
    };
    const std::optional<Found>& found() const { return found_; }
    const std::string& text() const { return text_; }
    bool isBack() const { return isBack_; }
    std::size_t percent(const Sheet& sheet) const;

private:
    bool look(const Sheet& sheet, unsigned place);

    std::string text_;
    TextSearch::Criterion criterion_;
    unsigned from_ = 0;
    unsigned done_ = 0;
    bool isBack_ = false;
    bool fromHere_ = false;
    bool isRunning_ = false;
    std::optional<Found> found_;
};

}  // namespace vek::browse
