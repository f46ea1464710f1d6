#include "arrow/import_type.h"

#include <charconv>

namespace {

using Kind = ArrowType::Kind;

constexpr int mostDigits = 1000;

// A format that is one of these alone.
std::optional<ArrowType> plainType(std::string_view format) {
    static constexpr struct {
        std::string_view format;
        ArrowType type;
    } types[] = {
        {"n", {Kind::nulls}},
        {"b", {Kind::booleans}},
        {"c", {Kind::signedNumbers, 1}},
        {"C", {Kind::unsignedNumbers, 1}},
        {"s", {Kind::signedNumbers, 2}},
        {"S", {Kind::unsignedNumbers, 2}},
        {"i", {Kind::signedNumbers, 4}},
        {"I", {Kind::unsignedNumbers, 4}},
        {"l", {Kind::signedNumbers, 8}},
        {"L", {Kind::unsignedNumbers, 8}},
        {"e", {Kind::floats, 2}},
        {"f", {Kind::floats, 4}},
        {"g", {Kind::floats, 8}},
        {"u", {Kind::texts, 4}},
        {"z", {Kind::texts, 4}},
        {"U", {Kind::texts, 8}},
        {"Z", {Kind::texts, 8}},
        {"vu", {Kind::views, 16}},
        {"vz", {Kind::views, 16}},
        {"tdD", {Kind::days, 4}},
        {"tdm", {Kind::instants, 8, 3}},
        {"tts", {Kind::dayTimes, 4, 0}},
        {"ttm", {Kind::dayTimes, 4, 3}},
        {"ttu", {Kind::dayTimes, 8, 6}},
        {"ttn", {Kind::dayTimes, 8, 9}},
    };
    for (const auto& entry : types) {
        if (entry.format == format) return entry.type;
    }
    return std::nullopt;
}

// Takes a number off the front, with what parts it from the next.
bool takeNumber(std::string_view& text, int& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (text.starts_with(',') && text.size() > 1) text.remove_prefix(1);
    return true;
}

// "19,10" or "19,10,256": digits in all, digits of the fraction, bits.
std::optional<ArrowType> decimalType(std::string_view text) {
    int precision = 0;
    int scale = 0;
    int bits = 128;
    if (!takeNumber(text, precision) || text.empty() || !takeNumber(text, scale)) return {};
    if (!text.empty() && (!takeNumber(text, bits) || !text.empty())) return {};
    const bool isKnown = bits == 32 || bits == 64 || bits == 128 || bits == 256;
    if (!isKnown || scale > mostDigits || scale < -mostDigits) return {};
    return ArrowType{Kind::decimals, static_cast<unsigned>(bits) / 8, scale};
}

std::optional<ArrowType> fixedType(std::string_view text) {
    int bytes = 0;
    if (!takeNumber(text, bytes) || !text.empty() || bytes < 0) return {};
    return ArrowType{Kind::fixedTexts, static_cast<unsigned>(bytes)};
}

// "s:" and "m:Europe/Paris": the unit, and the zone where there is one.
std::optional<ArrowType> instantType(std::string_view text) {
    static constexpr std::string_view units = "smun";
    const std::size_t unit = text.empty() ? units.npos : units.find(text.front());
    if (unit == units.npos || text.size() < 2 || text[1] != ':') return {};
    return ArrowType{Kind::instants, 8, static_cast<int>(unit) * 3, text.size() > 2};
}

}  // namespace

std::optional<ArrowType> typeOfFormat(std::string_view format) {
    if (format.starts_with("d:")) return decimalType(format.substr(2));
    if (format.starts_with("w:")) return fixedType(format.substr(2));
    if (format.starts_with("ts")) return instantType(format.substr(2));
    return plainType(format);
}

int fewestBuffers(const ArrowType& type) {
    if (type.kind == Kind::nulls) return 0;
    return type.kind == Kind::texts || type.kind == Kind::views ? 3 : 2;
}
