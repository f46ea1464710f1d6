#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Arithmetic of timecodes, in whole numbers throughout. `nominal` is a rate in frames a second:
/// 24, 25, 30, 60. Texts are read in every form that logs have; nothing is owned or kept.
namespace vek {

/// A timecode as it is written. Timecodes of one rate compare by their parts in order, drop
/// frame or not, so nothing needs to know the rate to compare them.
struct Timecode {
    int hours = 0;           ///< above 23 past midnight
    int minutes = 0;         ///< below 60
    int seconds = 0;         ///< below 60
    int frames = 0;          ///< as written, which may be above the rate
    bool dropFrame = false;  ///< written with a semicolon

    /// How far `order` goes on in an hour.
    static constexpr long long ordersInHour = 3600LL * 1000;

    /// A number that is greater for a later timecode.
    auto order() const { return ((hours * 60LL + minutes) * 60 + seconds) * 1000 + frames; }
};

/// HH:MM:SS:FF (any of : ; . , between the pairs, one or two digits of hours) or the eight digits
/// of the compact form; nothing for any other text.
std::optional<Timecode> parseTimecode(std::string_view text);

/// Whether a text says that timecodes drop frames. Without a word the semicolon decides.
enum class Counting { unsaid, dropFrame, nonDrop };

/// A frame rate: how many frame numbers a second has (`nominal`: 24, 25, 30, ...), and whether it
/// runs slower by 1000/1001, as 23.976 and 29.97 do.
struct FrameRate {
    int nominal = 0;                       ///< frame numbers in a second
    bool isSlowed = false;                 ///< by 1000/1001
    Counting counting = Counting::unsaid;  ///< what the text said of drop-frame

    /// Frames in `seconds()` seconds: 30000 in 1001, or 25 in 1.
    std::int64_t frames() const { return isSlowed ? nominal * std::int64_t{1000} : nominal; }
    std::int64_t seconds() const { return isSlowed ? 1001 : 1; }
    /// Whether both run alike, however they count.
    bool isAsFastAs(const FrameRate& other) const {
        return nominal == other.nominal && isSlowed == other.isSlowed;
    }
};

/// "24", "23.98", "23.976", "23,976", "24000/1001", "29.97 DF", "59.94ndf", "25 fps"; nothing
/// for any other text, and nothing for drop-frame at a rate that has no such counting.
std::optional<FrameRate> parseFrameRate(std::string_view text);

/// "29.97df": what parseFrameRate reads as this rate.
std::string rateText(const FrameRate& rate);

/// Drop-frame counting is there for 29.97, 59.94 and the like.
bool canDropFrames(int nominal);

/// Frame numbers that drop-frame counting leaves out at the start of most minutes: 2 at 30, 4 at
/// 60, 0 where there is no such counting.
int droppedEachMinute(int nominal);

/// Whether a timecode names a frame: below the rate, and none that drop-frame counting leaves out.
bool isCounted(const Timecode& code, int nominal);

/// Frames from 00:00:00:00. Drop-frame timecodes leave out their numbers at the start of every
/// minute but each tenth.
std::int64_t framesOf(const Timecode& code, int nominal);
/// The way back; the text has a semicolon before the frames when `dropFrame` and the rate has such
/// counting. "" for a rate or a number of frames that is none.
std::string timecodeText(std::int64_t frames, int nominal, bool dropFrame);

/// Frames in 24 hours.
std::int64_t framesInDay(int nominal, bool dropFrame);

/// Whether a clip ends past midnight: its end is before its start by the clock, and it is shorter
/// than 12 hours that way. One that starts past midnight already, at 24:00:00:00 or behind, does
/// not.
bool isOverMidnight(const Timecode& start, const Timecode& end);

/// Frames from start to end, past midnight where that makes the clip shorter than 12 hours;
/// nothing for an end before its start. Both count alike, drop-frame when one of them does.
std::optional<std::int64_t> framesBetween(Timecode start, Timecode end, int nominal);

}  // namespace vek
