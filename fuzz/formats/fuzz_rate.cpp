// Any bytes as a frame rate, a timecode and a keycode of the formats: what is read, written and
// read again is the same.

#include <vekdb/formats/keycode.h>
#include <vekdb/formats/timecode.h>
#include "target.h"

namespace {

std::string checkRate(std::string_view text) {
    const auto rate = vek::parseFrameRate(text);
    if (!rate) return {};
    const auto again = vek::parseFrameRate(vek::rateText(*rate));
    if (!again || !again->isAsFastAs(*rate) || again->counting != rate->counting) {
        return "another frame rate: " + vek::rateText(*rate);
    }
    return rate->frames() > 0 && rate->seconds() > 0 ? "" : "a frame rate of nothing";
}

std::string checkTimecode(const vek::Timecode& code, int nominal) {
    if (!vek::isCounted(code, nominal)) return {};
    const std::int64_t frames = vek::framesOf(code, nominal);
    const bool drops = code.dropFrame && vek::canDropFrames(nominal);
    const auto again = vek::parseTimecode(vek::timecodeText(frames, nominal, drops));
    const bool isDay = frames < vek::framesInDay(nominal, drops);
    return isDay && (!again || again->order() != code.order()) ? "another timecode" : "";
}

std::string checkKeycode(std::string_view text) {
    const auto code = vek::parseKeycode(text);
    if (!code) return {};
    for (const char* name : {"35", "35-4", "35-3", "35-2", "16", "65"}) {
        const vek::Gauge* gauge = vek::gaugeNamed(name);
        const auto length = vek::perforationsBetween(*code, *code, *gauge);
        if (!length || *length != 0) return "a keycode that is not where it is";
    }
    return {};
}

std::string check(std::string_view text) {
    std::string wrong = checkRate(text) + checkKeycode(text);
    if (const auto code = vek::parseTimecode(text)) {
        for (int nominal : {24, 25, 30, 48, 50, 60}) wrong += checkTimecode(*code, nominal);
    }
    return wrong;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::require(check(fuzz::textOf(data, size)));
    return 0;
}
