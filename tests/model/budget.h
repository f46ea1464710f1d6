#pragma once

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>

/// How long a random test goes on: for its time, and for a number of rounds however slow they
/// are, so that it cannot pass by doing nothing. VEKDB_MODEL_SECONDS sets the time of each test,
/// VEKDB_MODEL_SEED the seed of the first round; the first seed is printed before it runs.
class Budget {
public:
    Budget(double seconds, std::uint64_t fewestRounds)
        : end_(std::chrono::steady_clock::now() + time(seconds)),
          fewest_(fewestRounds),
          first_(firstSeed()),
          seed_(first_) {
        std::cout << "first seed " << first_ << std::endl;
    }
    ~Budget() { std::cout << "rounds " << rounds() << std::endl; }

    bool goesOn() const { return rounds() < fewest_ || std::chrono::steady_clock::now() < end_; }
    std::uint64_t nextSeed() { return seed_++; }
    std::uint64_t rounds() const { return seed_ - first_; }

private:
    static std::chrono::nanoseconds time(double usual) {
        const char* seconds = std::getenv("VEKDB_MODEL_SECONDS");
        const double wanted = seconds != nullptr ? std::atof(seconds) : usual;
        return std::chrono::nanoseconds(static_cast<std::int64_t>(wanted * 1e9));
    }
    static std::uint64_t firstSeed() {
        const char* seed = std::getenv("VEKDB_MODEL_SEED");
        return seed != nullptr ? std::strtoull(seed, nullptr, 10) : std::random_device()();
    }

    std::chrono::steady_clock::time_point end_;
    std::uint64_t fewest_;
    std::uint64_t first_;
    std::uint64_t seed_;
};
