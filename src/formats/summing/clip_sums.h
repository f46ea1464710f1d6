#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <vekdb/formats/keycode.h>
#include "formats/log/log.h"
#include "formats/summing/text_numbers.h"
#include "formats/timecode/clip_columns.h"
#include "formats/timecode/counting.h"

/// Clips, scenes, takes, running time and footage, added up by the values of columns.
namespace vek::formats {

/// Where a log keeps what the sums are made of.
struct ClipPlaces {
    unsigned scene;
    unsigned take;
    RangeColumns time;
    RangeColumns keycode;

    explicit ClipPlaces(const Log& log);
};

struct ClipRates {
    LogCounting counting;
    const Gauge& gauge;

    int nominal() const { return counting.nominal(); }  ///< 0 where it is not known
};

/// Frames that run at several rates, each counted by itself, as their sum is exact then. It is the
/// number of frames that are begun at the rate of the log.
class RunningFrames {
public:
    void add(std::int64_t frames, const FrameRate& own, const FrameRate& ofLog);
    void add(const RunningFrames& other);
    operator std::int64_t() const;

private:
    struct Part {
        FrameRate rate;
        std::int64_t frames = 0;
    };
    FrameRate rate_;
    std::vector<Part> parts_;
};

/// What one row adds to the sums of its group.
struct ClipFacts {
    std::string_view scene;
    std::uint64_t sceneHash = 0;  ///< of one that is not empty
    bool isTake = false;
    bool isUntimed = false;
    bool hasNoFrame = false;  ///< a time that the rate does not have
    bool dropFrame = false;
    bool isUnfilmed = false;
    std::int64_t frames = 0;
    FrameRate rate;       ///< of these frames
    FrameRate rateOfLog;  ///< none where the clip was not timed
    std::int64_t perforations = 0;
};

/// The sums over the rows of one group. The log must outlive them.
struct ClipSums {
    std::size_t clips = 0;
    TextNumbers scenes;  ///< of the log's own cells
    std::size_t takes = 0;
    RunningFrames frames;
    std::size_t untimed = 0;
    std::size_t noFrames = 0;  ///< of these, for a time that the rate does not have
    bool dropFrame = false;
    std::int64_t perforations = 0;
    std::size_t unfilmed = 0;
};

void addTo(ClipSums& sums, const ClipFacts& clip);
void addTo(ClipSums& total, const ClipSums& sums);

struct ClipGroup {
    std::string name;
    ClipSums sums;
};

/// In people's order of their names.
using ClipGroups = std::vector<ClipGroup>;

/// Works out what rows add. Log and rates must outlive it.
class ClipCounter {
public:
    ClipCounter(const Log& log, const ClipRates& rates);

    /// Whether a row is one. Of a timeline others are tracks, markers, transitions and the angles
    /// of a multicam clip.
    bool isClip(unsigned row) const;

    ClipFacts clip(unsigned row) const;
    const ClipPlaces& places() const { return places_; }

private:
    void readTime(unsigned row, const dbrecord& cells, ClipFacts& clip) const;
    void readFilm(const dbrecord& cells, ClipFacts& clip) const;

    const Log& log_;
    const ClipRates& rates_;
    ClipPlaces places_;
    unsigned kind_;  // where a timeline says what its rows are
};

/// The groups of each of the columns, with its name.
using ClipTables = std::vector<std::pair<std::string, ClipGroups>>;
ClipTables tablesOf(const ClipCounter& counter, const Log& log, const std::vector<unsigned>& rows,
                    const std::vector<unsigned>& columns);

/// The columns whose groups people ask for first, reels and scenes, as far as the log has them.
std::vector<unsigned> clipGroupColumns(const Log& log);

}  // namespace vek::formats
