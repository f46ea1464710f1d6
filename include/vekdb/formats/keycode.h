#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Arithmetic of keycodes, the numbers along the edge of film: "KJ 230004 0213+08" or
/// "KX654321-0000+00", a roll, feet, and frames behind a plus.
namespace vek {

/// How a kind of film is divided. The feet of keycodes are counted by perforations, so a frame of
/// three or five perforations does not divide a foot evenly; differences are exact in
/// perforations.
struct Gauge {
    const char* name;          ///< what --gauge takes
    const char* title;         ///< for people
    int perforationsPerFoot;   ///< 64 on 35 mm film, for example
    int perforationsPerFrame;  ///< 4 where a frame is four perforations high

    /// Frames that begin within a foot, at most: 16, 22, 32, 40, 13.
    int mostFramesInFoot() const {
        return (perforationsPerFoot + perforationsPerFrame - 1) / perforationsPerFrame;
    }
};

/// The gauge of a name, 35, 35-4, 35-3, 35-2, 16 or 65; null for another one. It lives as long as
/// the process.
const Gauge* gaugeNamed(std::string_view name);

/// A keycode taken apart. It lives no longer than the text that it was read from.
struct Keycode {
    std::string_view roll;  ///< what stands in front of the feet, in the text that was read
    std::int64_t feet = 0;  ///< in front of the plus
    int frames = 0;         ///< behind it

    /// The place on the roll, counted in perforations.
    std::int64_t perforations(const Gauge& gauge) const {
        return feet * gauge.perforationsPerFoot + std::int64_t{frames} * gauge.perforationsPerFrame;
    }
};

/// Nothing when the text does not end in feet+frames. Blanks at the ends do not count.
std::optional<Keycode> parseKeycode(std::string_view text);

/// Perforations from start to end; nothing when they are on two rolls, or the end is before its
/// start, as it is where a roll has ended between them.
std::optional<std::int64_t> perforationsBetween(const Keycode& start, const Keycode& end,
                                                const Gauge& gauge);

/// "0053+13"-like: feet+frames, and ".1" behind them for perforations that make no frame.
std::string footageText(std::int64_t perforations, const Gauge& gauge);

}  // namespace vek
