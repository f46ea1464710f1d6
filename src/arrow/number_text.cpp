#include "arrow/number_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>

namespace {

constexpr std::size_t words = 8;
constexpr std::uint32_t billion = 1'000'000'000;
constexpr unsigned billionDigits = 9;

// A whole number of 256 bits, the lowest word first.
struct WideNumber {
    std::uint32_t word[words] = {};

    bool isZero() const {
        return std::all_of(std::begin(word), std::end(word), [](auto w) { return w == 0; });
    }
    void negate() {
        std::uint64_t carry = 1;
        for (std::uint32_t& w : word) {
            carry += static_cast<std::uint32_t>(~w);
            w = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }
    /// Divides it, and gives what is left over.
    std::uint32_t divide(std::uint32_t by) {
        std::uint64_t left = 0;
        for (std::size_t i = words; i-- > 0;) {
            left = left << 32 | word[i];
            word[i] = static_cast<std::uint32_t>(left / by);
            left %= by;
        }
        return static_cast<std::uint32_t>(left);
    }
};

// Widens the number; true where it is negative, and then it is made positive.
bool take(const void* from, std::size_t bytes, WideNumber& number) {
    const std::size_t count = bytes / sizeof(std::uint32_t);
    std::uint32_t read[words] = {};
    std::memcpy(read, from, bytes);
    if (std::endian::native == std::endian::big) std::reverse(read, read + count);
    const bool isNegative = read[count - 1] >> 31 != 0;
    std::fill(std::begin(number.word), std::end(number.word), isNegative ? ~0U : 0U);
    std::copy(read, read + count, number.word);
    if (isNegative) number.negate();
    return isNegative;
}

// Digits from the lowest to the highest, behind zeros at most; none for zero.
void appendDigitsBackwards(WideNumber number, std::string& out) {
    while (!number.isZero()) {
        std::uint32_t nine = number.divide(billion);
        for (unsigned i = 0; i < billionDigits; ++i, nine /= 10) {
            out += static_cast<char>('0' + nine % 10);
        }
    }
    while (out.ends_with('0')) out.pop_back();
}

template <class Number>
void write(Number number, std::string& out) {
    char text[32];
    const auto end = std::to_chars(std::begin(text), std::end(text), number).ptr;
    out.assign(text, end);
}

template <class Number>
void writeShortest(Number number, std::string& out) {
    constexpr Number large = Number(1e16);
    constexpr Number small = Number(1e-5);
    char text[64];
    const Number size = std::fabs(number);
    const bool isPlain = size == 0 || (size >= small && size < large);
    const auto end =
        isPlain ? std::to_chars(std::begin(text), std::end(text), number, std::chars_format::fixed)
                : std::to_chars(std::begin(text), std::end(text), number);
    out.assign(text, end.ptr);
}

}  // namespace

void writeInteger(std::int64_t number, std::string& out) {
    write(number, out);
}

void writeUnsigned(std::uint64_t number, std::string& out) {
    write(number, out);
}

void writeFloat(double number, std::string& out) {
    writeShortest(number, out);
}

void writeFloat(float number, std::string& out) {
    writeShortest(number, out);
}

float fromHalf(std::uint16_t bits) {
    const int exponent = bits >> 10 & 0x1F;
    const int fraction = bits & 0x3FF;
    const float sign = (bits & 0x8000) != 0 ? -1.0F : 1.0F;
    if (exponent == 0x1F) return sign * (fraction == 0 ? HUGE_VALF : std::nanf(""));
    if (exponent == 0) return sign * std::ldexp(static_cast<float>(fraction), -24);
    return sign * std::ldexp(static_cast<float>(fraction + 0x400), exponent - 25);
}

void writeDecimal(const void* number, std::size_t bytes, int digits, std::string& out) {
    WideNumber wide;
    const bool isNegative = take(number, bytes, wide);
    const bool isZero = wide.isZero();
    out.clear();
    if (digits < 0 && !isZero) out.assign(static_cast<std::size_t>(-digits), '0');
    appendDigitsBackwards(wide, out);
    const auto behind = static_cast<std::size_t>(std::max(digits, 0));
    if (out.size() <= behind) out.append(behind + 1 - out.size(), '0');
    if (behind > 0) out.insert(behind, 1, '.');
    if (isNegative) out += '-';
    std::reverse(out.begin(), out.end());
}
