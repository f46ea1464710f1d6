#include "formats/log/line_numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "testing/random.h"

using vek::formats::LineNumbers;

namespace {

LineNumbers numbersOf(const std::vector<std::uint32_t>& lines) {
    LineNumbers numbers;
    for (const std::uint32_t line : lines) numbers.push_back(line);
    return numbers;
}

void expectSame(const LineNumbers& numbers, const std::vector<std::uint32_t>& lines) {
    ASSERT_EQ(numbers.size(), lines.size());
    for (std::size_t row = 0; row < lines.size(); ++row) {
        ASSERT_EQ(numbers[row], lines[row]) << row;
    }
}

}  // namespace

TEST(LineNumbers, GiveBackLinesInWhateverOrderTheyCame) {
    for (const std::vector<std::uint32_t>& lines : {std::vector<std::uint32_t>{},
                                                    {7},
                                                    {2, 3, 4, 5},
                                                    {1, 1, 1, 1},
                                                    {2, 6, 10, 11, 12, 13, 2, 3, 4},
                                                    {9, 7, 5, 3, 4, 4, 0, 0, 0xFFFFFFFF, 0, 2},
                                                    {1, 2, 4, 8, 16, 32, 64}}) {
        expectSame(numbersOf(lines), lines);
    }
}

TEST(LineNumbers, ThatGrowAndShrinkHaveNoLineBehindThoseTheyHad) {
    LineNumbers numbers = numbersOf({2, 3, 4, 9, 14});
    numbers.resize(7);
    expectSame(numbers, {2, 3, 4, 9, 14, 0, 0});
    numbers.push_back(2);
    numbers.push_back(3);
    expectSame(numbers, {2, 3, 4, 9, 14, 0, 0, 2, 3});
    numbers.resize(4);
    numbers.push_back(14);
    expectSame(numbers, {2, 3, 4, 9, 14});
    numbers.resize(0);
    numbers.push_back(5);
    expectSame(numbers, {5});
}

TEST(LineNumbers, OfChanceAreFoundAgain) {
    testing_support::Random random;
    for (int round = 0; round < 200; ++round) {
        std::vector<std::uint32_t> lines;
        std::uint32_t line = 2;
        for (unsigned i = 0; i < 60; ++i)
            lines.push_back(line += static_cast<std::uint32_t>(random.below(3)));
        const LineNumbers numbers = numbersOf(lines);
        expectSame(numbers, lines);
        for (std::uint32_t wanted = 0; wanted < line + 2; ++wanted) {
            const auto at = std::lower_bound(lines.begin(), lines.end(), wanted) - lines.begin();
            ASSERT_EQ(numbers.firstFrom(wanted), static_cast<std::size_t>(at));
        }
    }
}
