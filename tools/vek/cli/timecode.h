#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Arithmetic of the two ways that film counts: timecodes and keycodes.
namespace vek {

/// A timecode as it is written. Timecodes of one rate compare by their parts in order, drop
/// frame or not, so nothing needs to know the rate to compare them.
struct Timecode {
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    int frames = 0;
    bool dropFrame = false;

    auto order() const { return ((hours * 60LL + minutes) * 60 + seconds) * 1000 + frames; }
};

/// HH:MM:SS:FF (any of : ; . , between the pairs, one or two digits of hours) or the eight digits
/// of the compact form; nothing for any other text.
std::optional<Timecode> parseTimecode(std::string_view text);

/// A frame rate: what a second is called (`nominal`: 24, 25, 30, ...), and what it is.
struct FrameRate {
    int nominal = 0;
    double exact = 0;
};

/// "24", "23.98", "23.976", "29.97", "29.97 DF"; nothing for any other text.
std::optional<FrameRate> parseFrameRate(std::string_view text);

/// Frames from 00:00:00:00. Drop-frame timecodes leave out two numbers at 30 (four at 60) at
/// the start of every minute but each tenth.
std::int64_t framesOf(const Timecode& code, int nominal);
/// The way back; the text has a semicolon before the frames when `dropFrame`.
std::string timecodeText(std::int64_t frames, int nominal, bool dropFrame);

/// The frame count of a keycode, "KJ 230004 0213+08" or "KX654321-0000+00": feet times
/// `framesPerFoot` plus frames. Nothing when the text does not end in feet+frames.
std::optional<std::int64_t> keycodeFrames(std::string_view text, int framesPerFoot);

/// What stands in front of a keycode's feet: two with the same are on one roll.
std::string_view keycodeRoll(std::string_view text);

}  // namespace vek
