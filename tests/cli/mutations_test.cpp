#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "cli/program.h"

namespace {

// FILE is a damaged log, OTHER another one.
constexpr const char* commands[] = {
    "vek show FILE",
    "vek show FILE --where Name=A --sort Take",
    "vek show FILE --where Name~(A|B)* --format ale",
    "vek show FILE --at 01:00:00:00 --format markdown",
    "vek show FILE --unique Name --format html",
    "vek show FILE --duplicates Name --format csv --guard-formulas",
    "vek info FILE",
    "vek check FILE",
    "vek convert FILE out.vek",
    "vek convert FILE out.csv",
    "vek convert FILE out.json",
    "vek convert FILE out.ale",
    "vek convert FILE out.edl --fps 25",
    "vek convert FILE - --to jsonl",
    "vek merge FILE OTHER",
    "vek merge FILE OTHER --key Name",
    "vek merge OTHER FILE --key Name --prefer last --yes --to csv",
    "vek diff FILE OTHER",
    "vek diff FILE OTHER --key Name",
    "vek stats FILE --fps 24",
    "vek tag FILE --where Name=A",
    "vek untag FILE",
    "vek set FILE Name=x --every",
    "vek set FILE Take=2 --where Name=A --dry-run",
    "vek delete FILE --where Name=A",
    "vek column add FILE X",
    "vek column remove FILE Name",
    "vek column rename FILE Name#2 N",
    "vek column order FILE Take Name",
    "vek param set FILE A b",
    "vek container list FILE",
};

struct Seed {
    const char* ending;
    std::string text;
};

const Seed seeds[] = {
    {".csv", "Name,Take\nA,1\nB,\"2,\n3\"\n"},
    {".csv", "A,a,,A\n1,2,3,4\n"},
    {".csv", "\"\"\ny\n"},
    {".tsv", "Name\tTake\nA\t1\n"},
    {".json", "[{\"Name\": \"A\", \"Take\": 1.10}, {\"Name\": \"B\", \"x\": null}]"},
    {".jsonl", "{\"Name\": \"A\"}\n{\"Take\": \"2\"}\n"},
    {".ale", "Heading\nFPS\t24\n\nColumn\nName\tStart\n\nData\nA\t01:00:00:00\n"},
    {".edl",
     "TITLE: x\nFCM: NON-DROP FRAME\n001  AX V C 01:00:00:00 01:00:01:00 02:00:00:00 02:00:01:00\n"
     "* FROM CLIP NAME: A\n"},
    {".vek",
     "\"VEKDB:Rev 1\"\n\"V5_FIELD_MAP:2 -1\"\n\"VEKDB\"\n\"4\",\"4\"\n\"text\",\"text\"\n"
     "\"Name\",\"Take\"\n\"A\",\"1\"\n\"B\",\"2\"\n"},
};

// What the formats themselves are made of, and what is near to it.
const std::string pieces[] = {"\"",
                              ",",
                              "\n",
                              "\r",
                              "\t",
                              "\\",
                              "\"\"",
                              "VEKDB",
                              "FPS",
                              "Tag",
                              "Column\n",
                              "Data\n",
                              "{",
                              "}",
                              "[",
                              ":",
                              "M2 A",
                              "-1",
                              "01:00:00:00",
                              "#2",
                              std::string(1, '\0'),
                              "\xff",
                              "\xef\xbb\xbf",
                              "\xe2\x80\xae",
                              "99999999999",
                              "0"};

class Mutator {
public:
    explicit Mutator(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    std::string damaged(std::string text) {
        for (std::size_t left = below(5); left > 0; --left) damage(text);
        return text;
    }

private:
    void damage(std::string& text) {
        std::size_t at = below(text.size() + 1);
        switch (below(5)) {
            case 0:
                text.insert(at, pieces[below(std::size(pieces))]);
                return;
            case 1:
                text.erase(at, below(40));
                return;
            case 2:
                text.insert(at, text.substr(below(text.size() + 1), below(60)));
                return;
            case 3:
                for (std::size_t i = below(60); i > 0; --i) text.insert(at, text.substr(at, 1));
                return;
            default:
                if (at < text.size()) text[at] = static_cast<char>(below(256));
        }
    }

    std::mt19937 random_;
};

// VEK_MUTATIONS says how many when somebody has the time for more.
unsigned runsWanted() {
    const char* wanted = std::getenv("VEK_MUTATIONS");
    return wanted == nullptr ? 400 : static_cast<unsigned>(std::strtoul(wanted, nullptr, 10));
}

std::string writeDamaged(const WorkFolder& folder, const std::string& name, Mutator& mutator) {
    const Seed& seed = seeds[mutator.below(std::size(seeds))];
    folder.write(name + seed.ending, mutator.damaged(seed.text));
    return name + seed.ending;
}

}  // namespace

TEST(DamagedLogs, EndEveryCommandWithOneOfItsOwnCodes) {
    WorkFolder folder;
    for (unsigned turn = 0; turn < runsWanted(); ++turn) {
        Mutator mutator(turn);
        std::string file = writeDamaged(folder, "file", mutator);
        std::string other = writeDamaged(folder, "other", mutator);
        std::string text = folder.read(file);
        Start start;
        start.words = shellWords(commands[turn % std::size(commands)]);
        for (std::string& word : start.words) {
            if (word == "FILE") word = file;
            if (word == "OTHER") word = other;
        }
        Finish finish = run(folder, start);
        ASSERT_TRUE(finish.exitCode >= 0 && finish.exitCode <= 4)
            << "turn " << turn << ", " << commands[turn % std::size(commands)] << " ended with "
            << finish.exitCode << "\n"
            << finish.errors << "\non:\n"
            << text;
    }
}
