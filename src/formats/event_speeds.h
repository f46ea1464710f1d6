#pragma once

#include <string>
#include <vector>

#include "formats/log/log.h"

namespace vek::formats {

/// Where a log has the speeds of its events: in notes that name the reel and the start of the
/// source, which go along where these are changed.
class EventSpeeds {
public:
    explicit EventSpeeds(const Log& log);

    bool concern(unsigned column) const {
        return column != noColumn && (column == reel_ || column == sourceIn_);
    }

    struct Note {
        unsigned column = 0;
        std::string text;
    };
    /// The notes that are others where the cells of a row become `now`; those that become others
    /// by themselves stay so. `now` and `before` give the cell of a column.
    template <class Before, class Now>
    std::vector<Note> moved(Before before, Now now) const {
        std::vector<Note> notes;
        if (sourceIn_ == noColumn || reel_ == noColumn) return notes;
        for (unsigned column : notes_) {
            if (before(column) != now(column)) continue;
            std::string text = movedNote(now(column), {before(sourceIn_), before(reel_)},
                                         {now(sourceIn_), now(reel_)});
            if (text != now(column)) notes.push_back({column, std::move(text)});
        }
        return notes;
    }

private:
    struct Event {
        std::string_view sourceIn;
        std::string_view reel;
    };
    static std::string movedNote(std::string_view note, const Event& before, const Event& now);

    unsigned sourceIn_;
    unsigned reel_;
    std::vector<unsigned> notes_;
};

}  // namespace vek::formats
