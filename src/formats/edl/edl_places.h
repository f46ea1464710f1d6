#pragma once

#include <initializer_list>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "formats/timecode/clip_columns.h"
#include "formats/timecode/range_names.h"
#include "formats/writing/writers.h"

namespace vek::formats {

/// Where a sheet, which outlives it, keeps what an edit list needs: places of its columns, noColumn
/// for none.
class EdlPlaces {
public:
    explicit EdlPlaces(const Sheet& sheet);

    /// Whether these are the columns of an edit list, so that nothing is to be made up.
    bool isEdl() const { return isEdl_; }

    /// Those that became no part of an event.
    std::vector<unsigned> others() const;

    unsigned event, reel, track, kind, length, clipName, toClipName, counting, blanks;
    // Of a timeline's rows.
    unsigned rowKind = noColumn, marker = noColumn, color = noColumn, note = noColumn,
             rate = noColumn, transition = noColumn, enabled = noColumn;
    RangeColumns source, record;
    std::vector<unsigned> comments;
    std::vector<unsigned> before;

private:
    bool has(const std::string& name) const { return find(name) != noColumn; }
    unsigned find(const std::string& name) const;
    unsigned take(std::initializer_list<const char*> names);
    unsigned take(std::span<const char* const> names);
    RangeColumns take(const RangeColumns& columns);
    RangeColumns edlPair(const RangeName& names) const;
    void takeComments(std::string (*nameOf)(std::size_t), std::vector<unsigned>& to);
    void takeTimeline();

    const Sheet& sheet_;
    bool isEdl_ = false;
    std::set<unsigned> taken_;
};

}  // namespace vek::formats
