#include "timecode_functions.h"

#include <charconv>

#include <vekdb/formats/keycode.h>
#include <vekdb/formats/timecode.h>
#include "formats/timecode/timecode_form.h"
#include "guard.h"

namespace vek::sql {

namespace {

using formats::inFormOf;

constexpr std::int64_t mostFrames = 1'000'000'000'000;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n\f\v";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == text.npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::string shown(sqlite3_value* value) {
    return sqlite3_value_type(value) == SQLITE_BLOB ? "a blob" : quoted(textOf(value));
}

[[noreturn]] void refuseValue(const char* function, sqlite3_value* value, const char* expected) {
    throw Refusal(std::string(function) + ": found " + shown(value) + ", expected " + expected);
}

// A rate that was not said is that of film, and of a timecode that drops frames that of video.
FrameRate rateOf(const char* function, int count, sqlite3_value** values, int place, bool drops) {
    if (count <= place) return drops ? FrameRate{30, true, Counting::dropFrame} : FrameRate{24};
    const std::optional<FrameRate> rate = parseFrameRate(textOf(values[place]));
    constexpr int fastestWritten = 100;  // two digits of frames
    if (!rate || rate->nominal > fastestWritten)
        refuseValue(function, values[place], "a rate such as 24, 25 or '29.97df'");
    return *rate;
}

std::optional<std::int64_t> wholeNumber(sqlite3_value* value) {
    if (sqlite3_value_type(value) == SQLITE_INTEGER) return sqlite3_value_int64(value);
    if (sqlite3_value_type(value) != SQLITE_TEXT) return {};
    std::string_view text = trimmed(textOf(value));
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

bool isNothing(int count, sqlite3_value** values) {
    for (int i = 0; i < count; ++i) {
        const int type = sqlite3_value_type(values[i]);
        if (type == SQLITE_NULL) return true;
        if (type == SQLITE_TEXT && trimmed(textOf(values[i])).empty()) return true;
    }
    return false;
}

struct Counted {
    Timecode code;
    FrameRate rate;

    std::int64_t frames() const { return framesOf(code, rate.nominal); }
};

// The timecode of the first value at the rate of the one at a place.
Counted countedOf(const char* function, int count, sqlite3_value** values, int ratePlace) {
    std::optional<Timecode> code;
    if (sqlite3_value_type(values[0]) == SQLITE_TEXT)
        code = parseTimecode(trimmed(textOf(values[0])));
    if (!code) refuseValue(function, values[0], "a timecode such as 01:00:00:00");
    const FrameRate rate = rateOf(function, count, values, ratePlace, code->dropFrame);
    if (rate.counting != Counting::unsaid) code->dropFrame = rate.counting == Counting::dropFrame;
    if (!canDropFrames(rate.nominal)) code->dropFrame = false;
    if (isCounted(*code, rate.nominal)) return {*code, rate};
    const std::string expected = "a frame that is there at " + rateText(rate);
    refuseValue(function, values[0], expected.c_str());
}

void tcFrames(sqlite3_context* context, int count, sqlite3_value** values) {
    answering(context, [&] {
        if (isNothing(count, values)) return;
        sqlite3_result_int64(context, countedOf("tc_frames", count, values, 1).frames());
    });
}

std::int64_t framesWithin(const char* function, sqlite3_value* value) {
    const std::optional<std::int64_t> frames = wholeNumber(value);
    if (frames && *frames <= mostFrames && *frames >= -mostFrames) return *frames;
    refuseValue(function, value, "a number of frames");
}

std::int64_t inDay(std::int64_t frames, std::int64_t day) {
    return (frames % day + day) % day;
}

void tcText(sqlite3_context* context, int count, sqlite3_value** values) {
    answering(context, [&] {
        if (isNothing(count, values)) return;
        const std::int64_t frames = framesWithin("tc_text", values[0]);
        const FrameRate rate = rateOf("tc_text", count, values, 1, false);
        const bool drops = rate.counting == Counting::dropFrame;
        const std::string text =
            timecodeText(inDay(frames, framesInDay(rate.nominal, drops)), rate.nominal, drops);
        if (text.empty()) refuseValue("tc_text", values[1], "a rate of at most 100 frames");
        answerText(context, text);
    });
}

// So many frames, as a number or as a timecode with a sign in front or none.
std::int64_t lengthOf(sqlite3_value* value, const Counted& counted) {
    const bool isText = sqlite3_value_type(value) == SQLITE_TEXT;
    std::string_view text = isText ? trimmed(textOf(value)) : std::string_view();
    const bool isBack = text.starts_with('-');
    if (isBack || text.starts_with('+')) text.remove_prefix(1);
    std::optional<Timecode> code = parseTimecode(text);
    if (!code || text.find_first_not_of("0123456789") == text.npos) {
        return framesWithin("tc_add", value);
    }
    code->dropFrame = counted.code.dropFrame;
    if (!isCounted(*code, counted.rate.nominal)) {
        const std::string expected = "a length that is there at " + rateText(counted.rate);
        refuseValue("tc_add", value, expected.c_str());
    }
    const std::int64_t frames = framesOf(*code, counted.rate.nominal);
    return isBack ? -frames : frames;
}

void tcAdd(sqlite3_context* context, int count, sqlite3_value** values) {
    answering(context, [&] {
        if (isNothing(count, values)) return;
        const Counted counted = countedOf("tc_add", count, values, 2);
        const bool drops = counted.code.dropFrame;
        const int nominal = counted.rate.nominal;
        const std::int64_t frames = counted.frames() + lengthOf(values[1], counted);
        const std::string text =
            timecodeText(inDay(frames, framesInDay(nominal, drops)), nominal, drops);
        answerText(context, inFormOf(textOf(values[0]), text));
    });
}

const Gauge* gaugeOf(sqlite3_value* value) {
    const std::string text(trimmed(textOf(value)));
    return gaugeNamed(text);
}

Keycode keycodeOf(sqlite3_value* value) {
    const std::optional<Keycode> code = parseKeycode(textOf(value));
    if (code) return *code;
    refuseValue("feet", value, "a number of frames or a keycode such as KJ 230004 0213+08");
}

std::int64_t perforationsOf(sqlite3_value* value, const Gauge& gauge) {
    if (const std::optional<std::int64_t> frames = wholeNumber(value)) {
        const bool isRight = *frames >= 0 && *frames <= mostFrames;
        if (!isRight) refuseValue("feet", value, "a number of frames of 0 or more");
        return *frames * gauge.perforationsPerFrame;
    }
    return keycodeOf(value).perforations(gauge);
}

std::int64_t perforationsFromTo(sqlite3_value** values, const Gauge& gauge) {
    const std::optional<std::int64_t> between =
        perforationsBetween(keycodeOf(values[0]), keycodeOf(values[1]), gauge);
    if (between) return *between;
    throw Refusal("feet: found " + shown(values[0]) + " and " + shown(values[1]) +
                  ", expected an end behind the start, on the same roll");
}

// feet(frames or keycode), feet(start, end), each with a gauge behind it or none.
void feet(sqlite3_context* context, int count, sqlite3_value** values) {
    answering(context, [&] {
        if (isNothing(count, values)) return;
        const Gauge* gauge = count > 1 ? gaugeOf(values[count - 1]) : nullptr;
        if (count == 3 && gauge == nullptr) {
            refuseValue("feet", values[2], "a gauge: 35, 35-4, 35-3, 35-2, 16 or 65");
        }
        const int codes = count - (gauge != nullptr ? 1 : 0);
        const Gauge& film = gauge != nullptr ? *gauge : *gaugeNamed("35");
        answerText(context, footageText(codes == 2 ? perforationsFromTo(values, film)
                                                   : perforationsOf(values[0], film),
                                        film));
    });
}

struct Function {
    const char* name;
    int fewest;
    int most;
    void (*call)(sqlite3_context*, int, sqlite3_value**);
};

constexpr Function functions[] = {
    {"tc_frames", 1, 2, tcFrames},
    {"tc_text", 1, 2, tcText},
    {"tc_add", 2, 3, tcAdd},
    {"feet", 1, 3, feet},
};

}  // namespace

int addTimecodeFunctions(sqlite3* db) {
    constexpr int kind = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    for (const Function& function : functions) {
        for (int count = function.fewest; count <= function.most; ++count) {
            const int result = sqlite3_create_function_v2(db, function.name, count, kind, nullptr,
                                                          function.call, nullptr, nullptr, nullptr);
            if (result != SQLITE_OK) return result;
        }
    }
    return SQLITE_OK;
}

}  // namespace vek::sql
