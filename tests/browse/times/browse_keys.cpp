// How long each key of `vek browse` keeps the next one waiting, in a log of a person's own:
//     browse_keys LOG
// A key is pressed, then the screen is drawn, and while there is work left a slice of it is done
// and the screen drawn again, as a terminal has it. The longest of these steps is what a key may
// have to wait; all together they are what the key takes. Times are the processor's.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "formats/log/log.h"
#include "formats/reading/open_log.h"
#include "tools/vek/browse/browser.h"
#include "tools/vek/browse/recovery.h"

using namespace vek::browse;

namespace {

constexpr std::size_t width = 80;
constexpr std::size_t height = 24;

// Of the processor, so that other work of the machine does not count.
double now() {
    return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

class Timed {
public:
    explicit Timed(Browser& browser) : browser_(browser) {}

    double longest = 0;
    double whole = 0;

    void press(const std::string& key) {
        step([&] { browser_.press(key); });
        while (browser_.isBusy()) step([&] { browser_.work(); });
        browser_.takeCommand();
    }
    // Keys between blanks.
    void pressAll(const std::string& keys) {
        std::size_t at = 0;
        while (at < keys.size()) {
            const std::size_t end = std::min(keys.find(' ', at), keys.size());
            press(keys.substr(at, end - at));
            at = end + 1;
        }
    }
    void type(const std::string& text) {
        for (char c : text) press(std::string(1, c));
        press("Enter");
    }

private:
    template <class Work>
    void step(Work work) {
        const double begin = now();
        work();
        browser_.picture(width, height);
        const double took = now() - begin;
        longest = std::max(longest, took);
        whole += took;
    }

    Browser& browser_;
};

// What is pressed before a key, what is typed behind it, and what brings the log back.
struct Way {
    std::string before;
    std::string typed;
    std::string after;
};

Way wayOf(const KeyEntry& entry, const std::string& folder) {
    static const std::map<Act, Way> ways = {
        {Act::up, {"G", "", ""}},
        {Act::pageUp, {"G", "", ""}},
        {Act::halfUp, {"G", "", ""}},
        {Act::first, {"G", "", ""}},
        {Act::goToRow, {"", "999999", ""}},
        {Act::goToTimecode, {"", "23:59:59:23", ""}},
        {Act::findForward, {"g", "no such text", ""}},
        {Act::findBack, {"g", "no such text", ""}},
        {Act::filterByCondition, {"", "Take>=9", "Backspace"}},
        {Act::filterByValue, {"", "", "Backspace"}},
        {Act::filterByTags, {"", "", "Backspace"}},
        {Act::unfilter, {"F", "", ""}},
        {Act::sortUp, {"", "", ""}},
        {Act::sortAlso, {"s l", "", "_"}},
        {Act::mark, {"g v", "", "Esc"}},
        {Act::last, {"g v", "", "Esc"}},
        {Act::tag, {"g v G", "", "u Esc"}},
        {Act::tagByCondition, {"", "", "u"}},
        {Act::untagByCondition, {"", "Take>=2", "u"}},
        {Act::invertTags, {"", "", "u"}},
        {Act::edit, {"", "x", "u"}},
        {Act::editTagged, {"", "x", "u"}},
        {Act::insertBelow, {"g", "", "u"}},
        {Act::insertAbove, {"g", "", "u"}},
        {Act::deleteRows, {"g v G", "", "u Esc"}},
        {Act::deleteTagged, {"", "", "u"}},
        {Act::rename, {"", "x", "u"}},
        {Act::undo, {"D", "", ""}},
        {Act::redo, {"D u", "", "u"}},
        {Act::hide, {"", "", "A"}},
        {Act::save, {"e x Enter", "", "u"}},
        {Act::command, {"", "info", ""}},
        {Act::help, {"", "", "Esc"}},
        {Act::card, {"", "", "c"}},
    };
    if (entry.act == Act::saveAs) return {"", folder + "/all.csv", ""};
    if (entry.act == Act::saveShown) return {"", folder + "/shown.csv", ""};
    if (entry.act == Act::open) return {"", folder + "/small.csv", "q"};
    const auto found = ways.find(entry.act);
    return found == ways.end() ? Way{} : found->second;
}

bool endsTheProgram(Act act) {
    return act == Act::quit || act == Act::leave;
}

std::string spaced(std::string_view name) {
    return name == "|" ? "\\|" : std::string(name);
}

void print(const KeyEntry& entry, const Timed& timed) {
    std::string keys;
    for (std::string_view key : entry.keys) {
        if (!keys.empty()) keys += ' ';
        keys += "`" + spaced(key) + "`";
    }
    std::printf("| %s | %s | %.0f ms | %.0f ms |\n", keys.c_str(), entry.does, timed.longest,
                timed.whole);
    std::fflush(stdout);
}

void measure(Browser& browser, const KeyEntry& entry, const std::string& folder) {
    const Way way = wayOf(entry, folder);
    Timed around(browser);
    around.pressAll(way.before);
    Timed timed(browser);
    timed.press(std::string(entry.keys.front()));
    if (!way.typed.empty()) timed.type(way.typed);
    if (entry.act == Act::tagByCondition) timed.press("Enter");
    print(entry, timed);
    around.pressAll(way.after);
}

}  // namespace

int main(int count, char** words) {
    if (count < 2) {
        std::fprintf(stderr, "browse_keys: needs a log\n");
        return 2;
    }
    const std::string folder = std::filesystem::path(words[1]).parent_path().string();
    std::FILE* small = std::fopen((folder + "/small.csv").c_str(), "w");
    if (small != nullptr) {
        std::fputs("Name\na\n", small);
        std::fclose(small);
    }
    for (const char* made : {"/all.csv", "/shown.csv"}) std::filesystem::remove(folder + made);
    ::mallopt(M_MXFAST, 0);  // as the program does
    Browser browser{vek::formats::Opening()};
    const double begin = now();
    browser.add(vek::formats::openLog(words[1], {}), vek::browse::markOf(words[1]));
    browser.picture(width, height);
    std::printf(
        "opened within %.0f ms\n\n| keys | | longest wait | in all |\n| --- | --- | --: | "
        "--: |\n",
        now() - begin);
    Timed before(browser);
    for (int i = 2; i < count; ++i) before.pressAll(words[i]);
    for (const KeyEntry& entry : keyTable()) {
        if (!endsTheProgram(entry.act)) measure(browser, entry, folder);
    }
    return 0;
}
