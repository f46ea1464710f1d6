#include "log_fixture.h"

#include <cstdlib>
#include <filesystem>
#include <map>

#include <vekdb/host/text_util.h>

#include <stdlib.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace bench {

namespace {

// The folder of the generated logs.
class Scratch {
public:
    Scratch() {
        std::string name = (fs::temp_directory_path() / "vekdb-bench-XXXXXX").string();
        folder_ = ::mkdtemp(name.data()) ? name : ".";
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() {
        for (const std::string& path : made_) {
            ::unlink(path.c_str());
        }
        ::rmdir(folder_.c_str());
    }

    std::string file(const std::string& name) {
        made_.push_back(folder_ + "/" + name);
        return made_.back();
    }

private:
    std::string folder_;
    std::vector<std::string> made_;
};

Scratch& scratch() {
    static Scratch folder;
    return folder;
}

std::string generate(std::int64_t rows) {
    std::string path = scratch().file(std::to_string(rows) + ".vek");
    std::string command = VEKDB_GENLOG " --rows " + std::to_string(rows) + " " + path;
    if (std::system(command.c_str()) != 0) {
        std::exit(1);
    }
    return path;
}

}  // namespace

const std::string& logPath(std::int64_t rows) {
    static std::map<std::int64_t, std::string> paths;
    auto found = paths.find(rows);
    return found != paths.end() ? found->second : paths.emplace(rows, generate(rows)).first->second;
}

std::string scratchPath(const std::string& name) {
    return scratch().file(name);
}

std::size_t fileSize(const std::string& path) {
    std::error_code error;
    auto size = fs::file_size(path, error);
    return error ? 0 : static_cast<std::size_t>(size);
}

LightweightString<wchar_t> wide(const std::string& path) {
    return fromUTF8(LightweightString<char>(path.c_str()));
}

std::unique_ptr<vekdb> loadLog(std::int64_t rows) {
    return std::make_unique<vekdb>(wide(logPath(rows)), static_cast<int>(rows), true);
}

vekdb& sharedLog(std::int64_t rows) {
    static std::int64_t held = 0;
    static std::unique_ptr<vekdb> table;
    if (held != rows) {
        table.reset();
        table = loadLog(rows);
        held = rows;
    }
    return *table;
}

unsigned column(const VDBBase& source, const char* name) {
    return source.get_fieldnum(name);
}

bool check(benchmark::State& state, bool right, const char* wrong) {
    if (!right) {
        state.SkipWithError(wrong);
    }
    return right;
}

void report(benchmark::State& state, std::int64_t rows, std::size_t bytes) {
    auto runs = static_cast<std::int64_t>(state.iterations());
    state.counters["rows/s"] =
        benchmark::Counter(static_cast<double>(rows * runs), benchmark::Counter::kIsRate);
    if (bytes > 0) {
        double megabytes = static_cast<double>(bytes) / 1e6 * static_cast<double>(runs);
        state.counters["MB/s"] = benchmark::Counter(megabytes, benchmark::Counter::kIsRate);
    }
}

void ladder(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
}

void freshLadder(benchmark::internal::Benchmark* benchmark) {
    ladder(benchmark);
    benchmark->UseManualTime()->Iterations(3);
}

}  // namespace bench
