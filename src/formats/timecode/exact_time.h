#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <vekdb/formats/timecode.h>

namespace vek::formats {

/// Seconds as a fraction, exact: timelines count in fractions such as 1001/30000 that no decimal
/// number holds. What does not fit 64 bits is not known, nor is what is made of it.
class ExactTime {
public:
    ExactTime() = default;
    ExactTime(std::int64_t over, std::int64_t under);

    /// "1001/30000s", "3600s", "2.5s", with or without the "s"; unknown for other texts.
    static ExactTime of(std::string_view text);
    static ExactTime ofFrames(std::int64_t frames, const FrameRate& rate);
    static ExactTime unknown();

    bool isKnown() const { return under_ != 0; }
    bool isNegative() const { return over_ < 0; }
    std::int64_t over() const { return over_; }
    std::int64_t under() const { return under_; }

    ExactTime operator+(const ExactTime& other) const;
    ExactTime operator-(const ExactTime& other) const;
    ExactTime operator*(const ExactTime& other) const;
    ExactTime operator/(const ExactTime& other) const;
    bool operator==(const ExactTime& other) const = default;
    bool operator<(const ExactTime& other) const;

    struct Frames {
        std::int64_t whole = 0;  ///< begun before or at the time
        bool isExact = false;    ///< the time is where a frame begins
    };
    /// Nothing for times that are not known.
    std::optional<Frames> frames(const FrameRate& rate) const;

private:
    std::int64_t over_ = 0;
    std::int64_t under_ = 1;  // 0 for what is not known
};

/// "1001/30000s", which `of` reads.
std::string fractionText(const ExactTime& time);

/// The rate of a frame that lasts so long, as "1001/30000s" says; nothing for other lengths.
std::optional<FrameRate> rateOfFrame(const ExactTime& length);

/// The rate that a number is meant for: 23.976 and 23.98 are 24000/1001.
std::optional<FrameRate> rateNear(double number);

}  // namespace vek::formats
