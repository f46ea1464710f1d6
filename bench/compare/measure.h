#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

// What the participants written in C++ share: their command line, the clock, the memory they
// hold, and the one line that they answer with.

namespace compare {

struct Request {
    std::string work;
    std::string input;    // the log, or for work that makes its own table the number of rows
    std::string result;   // where the answer's rows go, for the check; empty: nowhere
    std::string scratch;  // where work that writes may write
    unsigned repeat = 1;  // how often work that changes nothing is timed
};

inline Request request(int count, char** arguments) {
    Request request;
    for (int i = 1; i + 1 < count; i += 2) {
        std::string option = arguments[i];
        std::string value = arguments[i + 1];
        if (option == "--repeat") {
            request.repeat = static_cast<unsigned>(std::atoi(value.c_str()));
        }
        (option == "--work"      ? request.work
         : option == "--input"   ? request.input
         : option == "--result"  ? request.result
         : option == "--scratch" ? request.scratch
                                 : option) = value;
    }
    return request;
}

inline std::uint64_t residentBytes() {
    unsigned long long all = 0;
    unsigned long long resident = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    int read = file ? std::fscanf(file, "%llu %llu", &all, &resident) : 0;
    if (file) {
        std::fclose(file);
    }
    return read == 2 ? resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
}

inline std::uint64_t peakBytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

struct Answer {
    std::uint64_t rows = 0;
    std::uint64_t resident = 0;  // what the work added; 0 when it was not looked at
    std::vector<long long> nanoseconds;
};

// On a machine that others keep busy the time that the processor was at work tells more.
inline clockid_t theClock() {
    return std::getenv("COMPARE_PROCESSOR") != nullptr ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC;
}

inline long long nanosecondsNow() {
    timespec now{};
    clock_gettime(theClock(), &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

// Times the work once and keeps the time. A function of its own, by whose name a profiler can
// tell the work from what prepares it.
template <class Work>
[[gnu::noinline]] void timed(Answer& answer, Work work) {
    const long long start = nanosecondsNow();
    work();
    answer.nanoseconds.push_back(nanosecondsNow() - start);
}

inline void print(const Answer& answer, const char* version) {
    std::printf("{\"version\":\"%s\",\"threads\":1,\"rows\":%llu,", version,
                static_cast<unsigned long long>(answer.rows));
    std::printf("\"resident\":%llu,\"peak\":%llu,\"ns\":[",
                static_cast<unsigned long long>(answer.resident),
                static_cast<unsigned long long>(peakBytes()));
    for (std::size_t i = 0; i < answer.nanoseconds.size(); ++i) {
        std::printf("%s%lld", i > 0 ? "," : "", answer.nanoseconds[i]);
    }
    std::puts("]}");
}

[[noreturn]] inline void fail(const std::string& why) {
    std::fprintf(stderr, "compare: %s\n", why.c_str());
    std::exit(1);
}

}  // namespace compare
