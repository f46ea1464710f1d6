#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include <vekdb/table.h>

// What the benchmarks share: generated logs of every size, loaded tables, checks that come
// before the clock starts, and rates.

namespace bench {

// A generated log with this many rows; written on first use, removed when the program ends.
const std::string& logPath(std::int64_t rows);

// A path beside the generated logs that is removed with them.
std::string scratchPath(const std::string& name);

std::size_t fileSize(const std::string& path);
LightweightString<wchar_t> wide(const std::string& path);

std::unique_ptr<vekdb> loadLog(std::int64_t rows);

// The same table for every benchmark that leaves it as it was; only the last size is kept.
vekdb& sharedLog(std::int64_t rows);

unsigned column(const VDBBase& source, const char* name);

// False, and the benchmark ends with the text, when the answer is wrong.
bool check(benchmark::State& state, bool right, const char* wrong);

// Rows a second and, where bytes are given, megabytes a second.
void report(benchmark::State& state, std::int64_t rows, std::size_t bytes = 0);

// Times `work` on a thing that `prepare` makes anew for every run, outside the clock.
template <class Prepare, class Work>
void timeFresh(benchmark::State& state, Prepare prepare, Work work) {
    using Clock = std::chrono::steady_clock;
    for (auto run : state) {
        auto thing = prepare();
        auto start = Clock::now();
        work(*thing);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
    }
}

void ladder(benchmark::internal::Benchmark* benchmark);       // 10 thousand to 1 million rows
void freshLadder(benchmark::internal::Benchmark* benchmark);  // the same, for timeFresh

}  // namespace bench
