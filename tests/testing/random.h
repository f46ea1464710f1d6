#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

namespace testing_support {

// A seeded generator for random tests. The seed is VEKDB_TEST_SEED of the
// environment when that is set, else a fresh one; a test that fails while this
// is in scope prints it, so that the run can be repeated.
class Random {
public:
    Random() : Random(chosenSeed()) {}
    explicit Random(std::uint64_t seed)
        : seed_(seed),
          trace_(__FILE__, __LINE__, "VEKDB_TEST_SEED=" + std::to_string(seed)),
          engine_(seed) {}

    std::uint64_t seed() const { return seed_; }

    // 0 to n - 1; 0 for n = 0.
    std::size_t below(std::size_t n) { return n == 0 ? 0 : engine_() % n; }

    // low to high, both included.
    int between(int low, int high) {
        const auto count = static_cast<std::size_t>(std::int64_t(high) - low + 1);
        return static_cast<int>(low + static_cast<std::int64_t>(below(count)));
    }

    bool oneIn(std::size_t n) { return below(n) == 0; }

    template <class Container>
    const auto& pick(const Container& items) {
        return items[below(std::size(items))];
    }

    // Up to `longest` characters out of an alphabet.
    std::string text(std::string_view alphabet, std::size_t longest) {
        std::string made(below(longest + 1), ' ');
        for (char& c : made) {
            c = pick(alphabet);
        }
        return made;
    }

    // Up to `longest` bytes, any of them.
    std::string bytes(std::size_t longest) {
        std::string made(below(longest + 1), ' ');
        for (char& c : made) {
            c = static_cast<char>(below(256));
        }
        return made;
    }

private:
    static std::uint64_t chosenSeed() {
        const char* given = std::getenv("VEKDB_TEST_SEED");
        return given != nullptr ? std::strtoull(given, nullptr, 10) : std::random_device()();
    }

    std::uint64_t seed_;
    ::testing::ScopedTrace trace_;
    std::mt19937_64 engine_;
};

}  // namespace testing_support
