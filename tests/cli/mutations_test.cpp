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
    "vek sort FILE --by Name,Take",
    "vek sort FILE --by Name -o out.tsv --delimiter pipe",
    "vek dedupe FILE --keep last",
    "vek dedupe FILE --by Name -i --keep filled -o out.csv",
    "vek sample FILE 2 --every --seed 3",
    "vek sample FILE 50% --seed 7 -o out.vek",
    "vek split FILE --by Name -o {Name}.csv --overwrite",
    "vek split FILE --by Name,Take -o {Name|lower}_{Take}.ale --dry-run --fps 24",
    "vek append FILE OTHER",
    "vek append OTHER FILE -o out.ale",
    "vek append FILE FILE --dry-run",
    "vek timecode shift FILE 12 --fps 25",
    "vek timecode conform FILE 29.97df --fps 25 --round nearest --dry-run",
    "vek timecode duration FILE --fps 24 -o out.csv",
    "vek set FILE Name={#}{Take|trim} *~s/(.)/\\\\1\\\\1/g --every --dry-run",
    "vek column rename FILE s/a/b/g",
    "vek param list FILE",
    "vek info FILE --format json",
    "vek check FILE --format json",
    "vek stats FILE --by Name --format json",
    "vek convert FILE out.otio --fps 25",
    "vek convert FILE - --to markdown",
    "vek convert FILE - --to vekdb",
    "vek show FILE --format table --width 20",
    "vek show FILE --encoding utf-16",
    "vek convert FILE - --to csv --encoding macroman",
    "vek convert FILE - --to tsv --from csv --delimiter semicolon --skip-lines 1",
    "vek show FILE --from csv --no-header",
    "vek set FILE --from tsv --no-header --every 'Column 1=x'",
    "vek show FILE --from otio",
    "vek show FILE --from fcpxml",
    "vek show FILE --from ale",
    "vek show FILE --from edl",
    "vek show FILE --from plain-csv",
    "vek show FILE --from vekdb",
    "vek info FILE --from json",
};

constexpr const char* timeline =
    "{\"OTIO_SCHEMA\": \"Timeline.1\", \"name\": \"reel\", \"tracks\": {\"OTIO_SCHEMA\": "
    "\"Stack.1\", \"children\": [{\"OTIO_SCHEMA\": \"Track.1\", \"kind\": \"Video\", "
    "\"children\": [{\"OTIO_SCHEMA\": \"Clip.2\", \"name\": \"A\", \"source_range\": "
    "{\"start_time\": {\"rate\": 24, \"value\": 48}, \"duration\": {\"rate\": 24, \"value\": "
    "24}}, \"markers\": [{\"OTIO_SCHEMA\": \"Marker.2\", \"name\": \"m\", \"marked_range\": "
    "{\"start_time\": {\"rate\": 24, \"value\": 50}, \"duration\": {\"rate\": 24, \"value\": "
    "1}}}]}]}]}}";

constexpr const char* clips =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n<fcpxml version=\"1.11\">"
    "<resources><format id=\"r1\" frameDuration=\"1001/30000s\"/><asset id=\"r2\" name=\"V\" "
    "start=\"0s\" duration=\"10s\" format=\"r1\"/></resources><library><event name=\"D\"><project "
    "name=\"C\"><sequence format=\"r1\" tcStart=\"0s\" tcFormat=\"DF\"><spine><asset-clip "
    "ref=\"r2\" offset=\"0s\" name=\"A\" duration=\"60060/30000s\"><note>look</note><marker "
    "start=\"1001/30000s\" duration=\"1001/30000s\" value=\"here\"/></asset-clip><gap "
    "duration=\"1001/30000s\"/></spine></sequence></project></event></library></fcpxml>\n";

// Three lines of CSV, packed by gzip.
constexpr unsigned char packedLines[] = {0x1f, 0x8b, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x02, 0x03,
                                         0xf3, 0x4b, 0xcc, 0x4d, 0xd5, 0x09, 0x49, 0xcc, 0x4e, 0xe5,
                                         0x72, 0xd4, 0x31, 0xe4, 0x72, 0xd2, 0x31, 0xe2, 0x02, 0x00,
                                         0x93, 0x0a, 0x59, 0x58, 0x12, 0x00, 0x00, 0x00};

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
    {".csv", "\xef\xbb\xbfName;Take\r\nA;1\r\nB;\"2;3\"\r\n"},
    {".csv", "Name|Take|Notes\nA|1|caf\xe9\nB|2|x\n"},
    {".csv", std::string("\xff\xfeN\0,\0T\0\n\0A\0,\0B\0\n\0", 18)},
    {".csv", std::string(std::begin(packedLines), std::end(packedLines))},
    {".otio", timeline},
    {".fcpxml", clips},
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
