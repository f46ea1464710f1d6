#include "vekdb/bytes/value_cuts.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "testing/random.h"

namespace {

using testing_support::Random;

struct Cuts {
    std::string line;
    std::vector<std::uint16_t> places;  // and what stands behind them in memory

    bool operator==(const Cuts&) const = default;
};

constexpr std::uint16_t untouched = 0xABCD;

Cuts cutBy(CutValues* way, const std::string& line, const std::vector<std::uint64_t>& openings,
           std::size_t count) {
    Cuts cuts{line, std::vector<std::uint16_t>(count + 40, untouched)};
    std::uint16_t* const end = way(cuts.line.data(), openings.data(),
                                   static_cast<unsigned>(openings.size()), cuts.places.data());
    EXPECT_EQ(end, cuts.places.data() + count);
    return cuts;
}

void expectAllCutAlike(std::size_t words, const std::vector<std::size_t>& places) {
    const std::string line(words * 64, 'x');
    std::vector<std::uint64_t> openings(words);
    Cuts expected{line, std::vector<std::uint16_t>(places.size() + 40, untouched)};
    for (std::size_t i = 0; i < places.size(); ++i) {
        openings[places[i] / 64] |= std::uint64_t{1} << places[i] % 64;
        expected.line[places[i] - 2] = '\0';
        expected.places[i] = static_cast<std::uint16_t>(places[i]);
    }
    ASSERT_EQ(cutBy(cutValuesNarrowly, line, openings, places.size()), expected);
    ASSERT_EQ(cutBy(cutValues, line, openings, places.size()), expected);
    if (CutValues* const widest = cutValuesWidest()) {
        ASSERT_EQ(cutBy(widest, line, openings, places.size()), expected);
    }
}

}  // namespace

TEST(ValueCuts, OneIsMadeAtEveryPlaceOfALine) {
    for (std::size_t place = 2; place < 64 * 64; ++place) expectAllCutAlike(64, {place});
    expectAllCutAlike(1, {});
    expectAllCutAlike(0, {});
}

TEST(ValueCuts, AsCloseAsTheyCanStandAllAreMade) {
    for (std::size_t first : {2, 3, 4}) {
        std::vector<std::size_t> places;
        for (std::size_t place = first; place < 64 * 64; place += 3) places.push_back(place);
        expectAllCutAlike(64, places);
    }
}

TEST(ValueCuts, AnywhereAreTheSameInRegistersAndOneByOne) {
    Random random;
    for (int i = 0; i < 2000; ++i) {
        const std::size_t words = 1 + random.below(5);
        std::vector<std::size_t> places;
        for (std::size_t at = 2 + random.below(70); at < words * 64; at += 3 + random.below(70)) {
            places.push_back(at);
        }
        expectAllCutAlike(words, places);
    }
}
