// The tour in docs/browse.md: its keys are pressed, and its screens must be what is seen then.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "formats/reading/open_log.h"
#include "testing/temp_dir.h"
#include "tools/vek/browse/browser.h"

namespace fs = std::filesystem;

namespace {

class Tour {
public:
    Tour() : before_(fs::current_path()) {
        fs::copy(fs::path(VEKDB_SOURCE_DIR) / "samples/docs.vek", folder_.file("docs.vek"));
        fs::current_path(folder_.path());
        browser_.add(vek::formats::openLog("docs.vek", {}), vek::browse::markOf("docs.vek"));
    }
    ~Tour() { fs::current_path(before_); }

    // The words between backticks; those of several letters that are no key are typed.
    void press(const std::string& line) {
        for (std::size_t at = line.find('`'); at != line.npos; at = line.find('`', at)) {
            const std::size_t end = line.find('`', at + 1);
            pressWord(line.substr(at + 1, end - at - 1));
            at = end + 1;
        }
    }

    std::string screen() { return textOf(browser_.picture(72, 12)); }

private:
    void pressWord(const std::string& word) {
        if (word == "Enter" || vek::browse::entryOf(word) != nullptr) return pressKey(word);
        for (char c : word) pressKey(std::string(1, c));
    }
    void pressKey(const std::string& key) {
        browser_.press(key);
        while (browser_.isBusy()) browser_.work();
    }

    fs::path before_;
    testing_support::TempDir folder_;
    vek::browse::Browser browser_{vek::formats::Opening()};
};

std::string keyList() {
    std::string text;
    for (const std::string& line : vek::browse::keyHelp()) text += line + "\n";
    return text;
}

// The page with its screens and its list of keys made anew.
std::string made(const std::string& page) {
    Tour tour;
    std::istringstream lines(page);
    std::string out;
    bool isInBlock = false;
    for (std::string line; std::getline(lines, line);) {
        if (line == "```" && isInBlock) isInBlock = false;
        if (isInBlock) continue;
        out += line + "\n";
        if (line.starts_with("Keys: ")) tour.press(line);
        isInBlock = line == "```screen" || line == "```keys";
        if (line == "```screen") out += tour.screen();
        if (line == "```keys") out += keyList();
    }
    return out;
}

}  // namespace

TEST(BrowseTour, ShowsTheScreensAndKeysThatThereAre) {
    std::ifstream file(fs::path(VEKDB_SOURCE_DIR) / "docs/browse.md", std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(page, made(page));
}
