// Feeds files, or all files of a folder, to a fuzz target: how the ordinary tests run them. With
// FUZZ_SECONDS in the environment it goes on for so long with variants of them, made without
// looking at the code that they run through; what ends the process is left in the file "finding".

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "target.h"

namespace fs = std::filesystem;

namespace {

using Inputs = std::vector<std::string>;

const std::string* current = nullptr;

void run(const std::string& bytes) {
    current = &bytes;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

void keepFinding(int signal) {
    std::ofstream("finding", std::ios::binary) << *current;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void replay(const fs::path& path, Inputs& inputs) {
    std::ifstream file(path, std::ios::binary);
    inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    std::printf("%s: %zu bytes\n", path.filename().string().c_str(), inputs.back().size());
    std::fflush(stdout);
    run(inputs.back());
}

void replayAll(const fs::path& path, Inputs& inputs) {
    if (!fs::is_directory(path)) {
        replay(path, inputs);
        return;
    }
    for (const auto& entry : fs::directory_iterator(path)) {
        replayAll(entry.path(), inputs);
    }
}

// Makes variants: bytes changed, pieces taken away, doubled, exchanged between inputs.
class Variants {
public:
    explicit Variants(const Inputs& inputs) : inputs_(inputs) {}

    std::string next() {
        std::string text = any();
        for (std::size_t left = 1 + below(6); left > 0; --left) {
            change(text);
        }
        return text.substr(0, longest);
    }

private:
    static constexpr std::size_t longest = 8192;

    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : random_() % limit; }
    const std::string& any() { return inputs_[below(inputs_.size())]; }

    void change(std::string& text) {
        static constexpr std::string_view common("\"\\,;:\n\r\t =<>[]{}#|-0129\0\xff\xc3\xa9", 29);
        const std::size_t at = below(text.size() + 1);
        switch (below(6)) {
            case 0:
                text.insert(at, 1, common[below(common.size())]);
                return;
            case 1:
                text.erase(at, below(1 + text.size() / 4));
                return;
            case 2:
                text.insert(at, text.substr(below(text.size() + 1), below(40)));
                return;
            case 3: {
                const std::string& other = any();
                text.insert(at, other.substr(below(other.size() + 1), below(60)));
                return;
            }
            case 4:
                if (at < text.size()) text[at] = common[below(common.size())];
                return;
            default:
                if (at < text.size()) text[at] = static_cast<char>(below(256));
        }
    }

    const Inputs& inputs_;
    std::mt19937_64 random_{std::random_device{}()};
};

std::size_t runVariants(const Inputs& inputs, int seconds) {
    for (int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGILL, SIGBUS}) std::signal(signal, keepFinding);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    Variants variants(inputs);
    std::size_t count = 0;
    while (std::chrono::steady_clock::now() < end) {
        const std::string variant = variants.next();
        run(variant);
        ++count;
    }
    return count;
}

}  // namespace

int main(int, char** arguments) {
    Inputs inputs;
    while (*++arguments) {
        replayAll(*arguments, inputs);
    }
    std::printf("%zu inputs\n", inputs.size());
    const char* seconds = std::getenv("FUZZ_SECONDS");
    if (seconds != nullptr && !inputs.empty()) {
        std::printf("%zu variants\n", runVariants(inputs, std::atoi(seconds)));
    }
    return inputs.empty() ? 1 : 0;
}
