#include "tools/vek/cli/numbering.h"

#include <charconv>

namespace vek {

namespace {

constexpr std::size_t widestNumber = 100;

std::int64_t wholeNumber(const Args& args, const char* name) {
    std::int64_t number = 1;
    if (!args.has(name)) return number;
    const std::string text = args.text(name);
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size()) return number;
    throw Failure{wrongUsage, concat("--", name, " takes a whole number, not ", inQuotes(text))};
}

}  // namespace

std::string Numbering::next() {
    if (isUsedUp_) throw Failure{wrongUsage, "the numbers of {#} are used up, they have 64 bits"};
    std::string digits = std::to_string(number_);
    const std::size_t sign = number_ < 0 ? 1 : 0;
    if (digits.size() - sign < width_) digits.insert(sign, width_ + sign - digits.size(), '0');
    isUsedUp_ = __builtin_add_overflow(number_, step_, &number_);
    return digits;
}

std::vector<Option> numberingOptions() {
    return {
        {"--start", "N", "the first number of {#}; 1 as a rule"},
        {"--step", "N", "how far the numbers of {#} are apart; 1 as a rule"},
        {"--digits", "N", "zeros in front of {#} up to so many digits"},
    };
}

bool asksForNumbering(const Args& args) {
    return args.has("start") || args.has("step") || args.has("digits");
}

Numbering numberingFrom(const Args& args) {
    const std::size_t width = args.number("digits", 0);
    if (width > widestNumber) throw Failure{wrongUsage, "--digits takes at most 100"};
    return {wholeNumber(args, "start"), wholeNumber(args, "step"), width};
}

}  // namespace vek
