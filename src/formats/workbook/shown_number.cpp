#include "formats/workbook/shown_number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "formats/workbook/decimal_digits.h"

namespace vek::formats {

namespace {

using Kind = FormatToken::Kind;
using Tokens = std::vector<FormatToken>;

bool isDigit(const FormatToken& token) {
    return token.kind == Kind::digit;
}

std::size_t countDigits(Tokens::const_iterator from, Tokens::const_iterator to) {
    return static_cast<std::size_t>(std::count_if(from, to, isDigit));
}

// What stands for a digit that is not there.
std::string_view padding(const FormatToken& place) {
    return place.text == "0" ? "0" : place.text == "?" ? " " : "";
}

// How the digits of a format are laid out.
struct Layout {
    explicit Layout(const Tokens& tokens) : tokens(tokens) {
        const auto ofKind = [&](Kind kind) {
            return std::find_if(tokens.begin(), tokens.end(),
                                [kind](const FormatToken& token) { return token.kind == kind; });
        };
        exponent = ofKind(Kind::exponent);
        point = std::min(ofKind(Kind::point), exponent);
        wholeDigits = countDigits(tokens.begin(), point);
        decimals = countDigits(point, exponent);
        percents = std::count_if(tokens.begin(), tokens.end(), [](const FormatToken& token) {
            return token.kind == Kind::percent;
        });
        readCommas();
    }

    // Commas between digits part thousands, those behind the last one divide by a thousand each.
    void readCommas() {
        std::size_t before = 0;
        std::ptrdiff_t waiting = 0;
        for (auto token = tokens.begin(); token != exponent; ++token) {
            if (isDigit(*token)) {
                isGrouped = isGrouped || (waiting > 0 && before > 0 && token < point);
                ++before;
                waiting = 0;
            } else if (token->kind == Kind::comma && before > 0) {
                ++waiting;
            } else if (token->kind == Kind::point) {
                thousands += waiting;
                waiting = 0;
            }
        }
        thousands += waiting;
    }

    const Tokens& tokens;
    Tokens::const_iterator exponent;
    Tokens::const_iterator point;
    std::size_t wholeDigits = 0;
    std::size_t decimals = 0;
    std::ptrdiff_t percents = 0;
    std::ptrdiff_t thousands = 0;
    bool isGrouped = false;
};

// Writes the digits in front of the point, those that have no place of their own at the first.
class WholeDigits {
public:
    WholeDigits(std::string digits, const Layout& layout)
        : digits_(std::move(digits)), places_(layout.wholeDigits), isGrouped_(layout.isGrouped) {}

    void add(const FormatToken& place, std::string& to) {
        const std::size_t right = places_ - 1 - next_;  // places behind this one
        if (next_++ == 0) {
            for (std::size_t i = digits_.size(); i > right + 1; --i) addDigit(i - 1, to);
        }
        if (right < digits_.size()) return addDigit(right, to);
        to += padding(place);
        if (place.text == "0") group(right, to);
    }

private:
    void addDigit(std::size_t right, std::string& to) {
        to += digits_[digits_.size() - 1 - right];
        group(right, to);
    }

    void group(std::size_t right, std::string& to) const {
        if (isGrouped_ && right > 0 && right % 3 == 0) to += ',';
    }

    std::string digits_;
    std::size_t places_;
    std::size_t next_ = 0;
    bool isGrouped_;
};

// Writes the digits behind the point; zeros at the end only where the format has them.
class Decimals {
public:
    Decimals(std::string digits) : digits_(std::move(digits)) {
        filled_ = digits_.find_last_not_of('0') + 1;
    }

    void add(const FormatToken& place, std::string& to) {
        if (next_ < filled_ || place.text == "0") {
            to += digits_[next_];
        } else {
            to += padding(place);
        }
        ++next_;
    }

private:
    std::string digits_;
    std::size_t filled_ = 0;
    std::size_t next_ = 0;
};

void addExponent(Tokens::const_iterator token, Tokens::const_iterator end, std::ptrdiff_t exponent,
                 std::string& to) {
    to += 'E';
    if (exponent < 0) to += '-';
    if (exponent >= 0 && token->text.back() == '+') to += '+';
    std::string digits = std::to_string(std::abs(exponent));
    const std::size_t places = countDigits(token, end);
    if (digits.size() < places) digits.insert(0, places - digits.size(), '0');
    to += digits;
}

// Brings the digits to as many in front of the point as the format has, and answers the power of
// ten that is left.
std::ptrdiff_t scale(DecimalDigits& digits, const Layout& layout) {
    if (digits.digits.empty()) return 0;
    const auto wanted = static_cast<std::ptrdiff_t>(std::max<std::size_t>(layout.wholeDigits, 1));
    const auto exponentOf = [&](std::ptrdiff_t point) {
        std::ptrdiff_t exponent = point - 1;
        if (wanted == 1) return exponent;
        const std::ptrdiff_t rest = ((exponent % wanted) + wanted) % wanted;
        return exponent - rest;
    };
    std::ptrdiff_t exponent = exponentOf(digits.point);
    digits.point -= exponent;
    digits.round(static_cast<std::ptrdiff_t>(layout.decimals));
    const std::ptrdiff_t more = exponentOf(digits.point);
    digits.point -= more;
    return exponent + more;
}

std::string byPlaces(double value, const Layout& layout) {
    DecimalDigits digits = DecimalDigits::of(value);
    const Tokens& tokens = layout.tokens;
    std::ptrdiff_t exponent = 0;
    if (!digits.digits.empty()) digits.point += 2 * layout.percents - 3 * layout.thousands;
    if (layout.exponent != tokens.end()) {
        exponent = scale(digits, layout);
    } else {
        digits.round(static_cast<std::ptrdiff_t>(layout.decimals));
    }
    const std::string inFront = digits.whole();
    WholeDigits whole(inFront, layout);
    Decimals behind(digits.behind(layout.decimals));
    std::string text;
    for (auto token = tokens.begin(); token != tokens.end(); ++token) {
        // Where no place is in front of the point, digits that are not nought stand there all the
        // same.
        if (token == layout.point && layout.wholeDigits == 0) text += inFront;
        if (token->kind == Kind::exponent) {
            addExponent(token, tokens.end(), exponent, text);
        } else if (token->kind == Kind::general) {
            text += generalNumber(value);
        } else if (isDigit(*token)) {
            if (token < layout.point) whole.add(*token, text);
            if (token > layout.point && token < layout.exponent) behind.add(*token, text);
        } else if (token->kind != Kind::comma && token->kind != Kind::cellText) {
            text += token->text;
        }
    }
    return text;
}

struct Ratio {
    std::int64_t over = 0;
    std::int64_t under = 1;
};

// The fraction next to a number below one, of those with at most so large a denominator.
Ratio nearestRatio(double value, std::int64_t most) {
    Ratio best;
    double least = 2;
    for (std::int64_t under = 1; under <= most; ++under) {
        const auto over = std::llround(value * static_cast<double>(under));
        const double off =
            std::fabs(value - static_cast<double>(over) / static_cast<double>(under));
        if (off >= least) continue;
        least = off;
        best = {over, under};
    }
    return best;
}

// Figures that a format has behind a stroke are a denominator.
bool isFigure(const FormatToken& token) {
    return token.kind == Kind::literal && token.text.size() == 1 && token.text[0] >= '0' &&
           token.text[0] <= '9';
}

std::string textsOf(Tokens::const_iterator from, Tokens::const_iterator to) {
    std::string text;
    for (; from != to; ++from) {
        if (!isDigit(*from)) text += from->text;
    }
    return text;
}

// "# ?/?" and the like: places for a whole number, which stands apart, and for both parts of the
// rest; what stands around them is shown as it is.
struct RatioLayout {
    RatioLayout(const Tokens& tokens, Tokens::const_iterator slash)
        : over(slash), under(slash + 1) {
        while (over != tokens.begin() && isDigit(*(over - 1))) --over;
        while (under != tokens.end() && (isDigit(*under) || isFigure(*under))) ++under;
        const auto whole = std::find_if(tokens.begin(), over, isDigit);
        auto gap = over;
        while (gap != whole && !isDigit(*(gap - 1))) --gap;
        hasWhole = whole != over;
        isWholeShown =
            std::any_of(whole, gap, [](const FormatToken& token) { return token.text == "0"; });
        before = textsOf(tokens.begin(), whole);
        between = textsOf(gap, over);
        behind = textsOf(under, tokens.end());
    }

    Tokens::const_iterator over;   // where the part above the stroke begins
    Tokens::const_iterator under;  // where the one below it ends
    bool hasWhole = false;
    bool isWholeShown = false;  // also where it is nought
    std::string before;
    std::string between;
    std::string behind;
};

// The denominator that stands behind the stroke, or as many digits as one may have.
Ratio ratioFor(double value, Tokens::const_iterator from, Tokens::const_iterator to) {
    std::string written;
    for (; from != to; ++from) written += from->text;
    const std::size_t begin = std::min(written.find_first_of("123456789"), written.size());
    std::int64_t fixed = 0;
    std::from_chars(written.data() + begin, written.data() + written.size(), fixed);
    if (fixed > 0) return {std::llround(value * static_cast<double>(fixed)), fixed};
    return nearestRatio(value, written.size() <= 1 ? 9 : written.size() == 2 ? 99 : 999);
}

std::string asRatio(double value, const Tokens& tokens, Tokens::const_iterator slash) {
    const RatioLayout layout(tokens, slash);
    double whole = layout.hasWhole ? std::floor(value) : 0;
    Ratio ratio = ratioFor(value - whole, slash + 1, layout.under);
    if (layout.hasWhole && ratio.over == ratio.under) {
        whole += 1;
        ratio.over = 0;
    }
    const bool hasRatio = ratio.over != 0 || !layout.hasWhole;
    const bool showsWhole = layout.hasWhole && (whole > 0 || !hasRatio || layout.isWholeShown);
    std::string text = layout.before;
    if (showsWhole) text += generalNumber(whole);
    if (showsWhole && hasRatio) text += layout.between;
    if (hasRatio) text += std::to_string(ratio.over) + "/" + std::to_string(ratio.under);
    return text + layout.behind;
}

}  // namespace

std::string generalNumber(double value) {
    if (value == 0) return "0";
    char text[64];
    const auto [end, error] =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, 15);
    std::string made(text, end);
    std::replace(made.begin(), made.end(), 'e', 'E');
    return made;
}

std::string shownNumber(double value, const Tokens& tokens) {
    const auto slash = std::find_if(tokens.begin(), tokens.end(), [](const FormatToken& token) {
        return token.kind == Kind::slash;
    });
    constexpr double mostWithFraction = 1e15;
    if (slash != tokens.end() && value < mostWithFraction) return asRatio(value, tokens, slash);
    return byPlaces(value, Layout(tokens));
}

}  // namespace vek::formats
