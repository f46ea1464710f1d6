#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "formats/reading/open_log.h"
#include "testing/temp_dir.h"
#include "tools/vek/browse/browser.h"

/// A browser over a log in a folder of its own, driven by keys.
class Opened {
public:
    explicit Opened(const std::string& text, const std::string& name = "log.csv") : name_(name) {
        write(name, text);
        start();
    }

    void start() {
        browser = std::make_unique<vek::browse::Browser>(vek::formats::Opening());
        browser->add(vek::formats::openLog(path(), {}), vek::browse::markOf(path()));
    }
    /// As a program that is killed: nothing is closed.
    void forget() { browser.reset(); }

    std::string path() const { return folder.file(name_).string(); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder.file(name), std::ios::binary) << text;
    }
    std::string read(const std::string& name) const {
        std::ifstream file(folder.file(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string read() const { return read(name_); }
    bool has(const std::string& name) const { return std::filesystem::exists(folder.file(name)); }

    /// Keys between blanks; one that begins with "text:" is typed letter by letter.
    void press(const std::string& keys) {
        std::size_t at = 0;
        while (at < keys.size()) {
            const std::size_t end = std::min(keys.find(' ', at), keys.size());
            pressOne(keys.substr(at, end - at));
            at = end + 1;
        }
    }
    void type(const std::string& text) {
        for (char c : text) browser->press(std::string(1, c));
        settle();
    }
    void pressOne(const std::string& key) {
        browser->press(key);
        settle();
    }
    void settle() {
        while (browser->isBusy()) browser->work();
    }

    std::vector<std::string> shown(unsigned column = 0) {
        std::vector<std::string> cells;
        for (unsigned row : sheet().shownRows())
            cells.emplace_back(sheet().log().cell(row, column));
        return cells;
    }
    std::string screen(std::size_t width = 80, std::size_t height = 24) {
        return textOf(browser->picture(width, height));
    }
    vek::browse::Sheet& sheet() { return browser->sheet(); }

    testing_support::TempDir folder;
    std::unique_ptr<vek::browse::Browser> browser;

private:
    std::string name_;
};
