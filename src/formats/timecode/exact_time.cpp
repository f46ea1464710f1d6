#include "formats/timecode/exact_time.h"

#include <charconv>
#include <cmath>
#include <limits>

#include <vekdb/host/text_util.h>

namespace vek::formats {

namespace {

__extension__ using Wide = __int128;

Wide commonDivisor(Wide a, Wide b) {
    if (a < 0) a = -a;
    while (b != 0) {
        const Wide rest = a % b;
        a = b;
        b = rest;
    }
    return a;
}

bool fits(Wide number) {
    return number <= std::numeric_limits<std::int64_t>::max() &&
           number >= std::numeric_limits<std::int64_t>::min() + 1;
}

ExactTime reduced(Wide over, Wide under) {
    if (under == 0) return ExactTime::unknown();
    if (under < 0) {
        over = -over;
        under = -under;
    }
    const Wide divisor = commonDivisor(over, under);
    over /= divisor;
    under /= divisor;
    if (!fits(over) || !fits(under)) return ExactTime::unknown();
    return {static_cast<std::int64_t>(over), static_cast<std::int64_t>(under)};
}

// A whole number with its sign.
std::optional<std::int64_t> wholeNumber(std::string_view text) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [at, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || at != end || text.empty()) return {};
    if (number == std::numeric_limits<std::int64_t>::min()) return {};
    return number;
}

// "2.50": the digits without the point, over as many powers of ten.
ExactTime ofDecimals(std::string_view text, std::size_t point) {
    const std::string_view decimals = text.substr(point + 1);
    std::string digits(text.substr(0, point));
    digits += decimals;
    const bool isPlain = decimals.find_first_not_of("0123456789") == std::string_view::npos;
    if (!isPlain || decimals.size() > 17) return ExactTime::unknown();
    const std::optional<std::int64_t> number = wholeNumber(digits);
    std::int64_t scale = 1;
    for (std::size_t i = 0; i < decimals.size(); ++i) scale *= 10;
    return number ? ExactTime(*number, scale) : ExactTime::unknown();
}

}  // namespace

ExactTime::ExactTime(std::int64_t over, std::int64_t under) : over_(over), under_(under) {
    if (under == 1 || under == 0) return;
    const Wide divisor = commonDivisor(over, under);
    const std::int64_t sign = under < 0 ? -1 : 1;
    over_ = static_cast<std::int64_t>(over / divisor) * sign;
    under_ = static_cast<std::int64_t>(under / divisor) * sign;
}

ExactTime ExactTime::unknown() {
    ExactTime time;
    time.under_ = 0;
    return time;
}

ExactTime ExactTime::of(std::string_view text) {
    if (text.ends_with('s')) text.remove_suffix(1);
    if (const std::size_t point = text.find('.'); point != std::string_view::npos) {
        return ofDecimals(text, point);
    }
    const std::size_t stroke = text.find('/');
    const std::optional<std::int64_t> over = wholeNumber(text.substr(0, stroke));
    if (stroke == std::string_view::npos) return over ? ExactTime(*over, 1) : unknown();
    const std::optional<std::int64_t> under = wholeNumber(text.substr(stroke + 1));
    return over && under ? reduced(*over, *under) : unknown();
}

ExactTime ExactTime::ofFrames(std::int64_t frames, const FrameRate& rate) {
    return reduced(Wide(frames) * rate.seconds(), rate.frames());
}

ExactTime ExactTime::operator+(const ExactTime& other) const {
    if (!isKnown() || !other.isKnown()) return unknown();
    const Wide divisor = commonDivisor(under_, other.under_);
    return reduced(Wide(over_) * (other.under_ / divisor) + Wide(other.over_) * (under_ / divisor),
                   Wide(under_) / divisor * other.under_);
}

ExactTime ExactTime::operator-(const ExactTime& other) const {
    if (!other.isKnown()) return unknown();
    return *this + ExactTime(-other.over_, other.under_);
}

ExactTime ExactTime::operator*(const ExactTime& other) const {
    return reduced(Wide(over_) * other.over_, Wide(under_) * other.under_);
}

ExactTime ExactTime::operator/(const ExactTime& other) const {
    if (!isKnown() || !other.isKnown()) return unknown();
    return reduced(Wide(over_) * other.under_, Wide(under_) * other.over_);
}

bool ExactTime::operator<(const ExactTime& other) const {
    return Wide(over_) * other.under_ < Wide(other.over_) * under_;
}

std::optional<ExactTime::Frames> ExactTime::frames(const FrameRate& rate) const {
    if (!isKnown()) return {};
    const Wide all = Wide(over_) * rate.frames();
    const Wide unit = Wide(under_) * rate.seconds();
    Wide whole = all / unit;
    const bool isExact = all % unit == 0;
    if (!isExact && all < 0) --whole;
    if (!fits(whole)) return {};
    return Frames{static_cast<std::int64_t>(whole), isExact};
}

std::string fractionText(const ExactTime& time) {
    std::string text = std::to_string(time.over());
    if (time.under() != 1) text += "/" + std::to_string(time.under());
    return text + "s";
}

std::optional<FrameRate> rateOfFrame(const ExactTime& length) {
    if (!length.isKnown() || length.over() <= 0) return {};
    if (length.over() == 1) return parseFrameRate(std::to_string(length.under()));
    // 1001/24000 and 1001/30000 do not come in smaller numbers, 1001/60000 neither.
    return parseFrameRate(std::to_string(length.under()) + "/" + std::to_string(length.over()));
}

std::optional<FrameRate> rateNear(double number) {
    if (!(number >= 1) || number > 1000) return {};
    const auto nominal = static_cast<int>(std::lround(number));
    if (std::abs(number - nominal) < 1e-9) return FrameRate{nominal};
    const std::optional<FrameRate> slowed = parseFrameRate(std::to_string(nominal) + "000/1001");
    const bool isNear = std::abs(number - nominal * 1000 / 1001.0) < 0.006;
    return isNear ? slowed : std::nullopt;
}

}  // namespace vek::formats
