#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "cli/program.h"

namespace {

using json = nlohmann::ordered_json;

// Of what formats are made, and what they find out about a file.
const std::string pieces[] = {"Heading",
                              "Column",
                              "Data",
                              "VEKDB",
                              "VEKDB:",
                              "VEKDB:Rev 1",
                              "TITLE: x",
                              "FCM: DROP FRAME",
                              "OTIO_SCHEMA",
                              "{",
                              "[",
                              "<fcpxml",
                              "a;b",
                              ";",
                              "|",
                              "\t",
                              ",",
                              "\"",
                              "\"\"",
                              "\n",
                              "\r",
                              "\r\n",
                              "\xef\xbb\xbf",
                              " ",
                              "",
                              "=1+1",
                              "\x1f",
                              "\x0b",
                              "\xc3\xa9",
                              "\xc3\xbf\xc3\xbe",
                              "x",
                              "01:00:00:00",
                              "FPS",
                              "FIELD_DELIM",
                              "COMMAS",
                              "Name",
                              "Tag",
                              "V5_FIELD_MAP",
                              "Comments",
                              "\\",
                              "\\n",
                              "\\\n",
                              " b",
                              "b ",
                              "1.10",
                              "{\"OTIO_SCHEMA\": \"Timeline.1\"}",
                              "[1]",
                              "Extra 1",
                              "Name#2",
                              "x\ny",
                              "&Name"};

class Logs {
public:
    explicit Logs(unsigned seed) : random_(seed) {}

    json next() {
        std::vector<std::string> names;
        for (std::size_t i = 1 + below(4); i > 0; --i) {
            const std::string name = text();
            if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
        }
        json rows = json::array();
        for (std::size_t i = 1 + below(4); i > 0; --i) {
            json row = json::object();
            for (const std::string& name : names) row[name] = text();
            rows.push_back(row);
        }
        return rows;
    }

    std::string text() {
        std::string out;
        for (std::size_t i = below(3) == 0 ? below(4) : 1; i > 0; --i) {
            out += pieces[below(std::size(pieces))];
        }
        return out;
    }

private:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    std::mt19937 random_;
};

// Events of an edit list, with texts of all kinds where it has room for texts.
json events(Logs& logs) {
    json rows = json::array();
    for (unsigned second = 0; second < 3; ++second) {
        const std::string in = "01:00:0" + std::to_string(second) + ":00";
        const std::string out = "01:00:0" + std::to_string(second + 1) + ":00";
        rows.push_back({{"Event", "00" + std::to_string(second + 1)},
                        {"Reel", second == 0 ? "A001" : logs.text()},
                        {"Track", "V"},
                        {"Kind", "C"},
                        {"Length", ""},
                        {"Source In", in},
                        {"Source Out", out},
                        {"Record In", in},
                        {"Record Out", out},
                        {"Clip Name", logs.text()},
                        {"To Clip Name", logs.text()},
                        {"Comments", second == 1 ? "" : logs.text()}});
    }
    return rows;
}

// VEK_ROUND_TRIPS says how many when somebody has the time for more.
unsigned logsWanted() {
    const char* wanted = std::getenv("VEK_ROUND_TRIPS");
    return wanted == nullptr ? 4 : static_cast<unsigned>(std::strtoul(wanted, nullptr, 10));
}

// What is asked of the log for editing systems tells of nothing that was lost.
bool tellsALoss(const std::string& errors) {
    for (std::size_t at = 0; at < errors.size();) {
        const std::size_t end = std::min(errors.find('\n', at), errors.size());
        const std::string line = errors.substr(at, end - at);
        if (line.find("editing systems expect") == std::string::npos) return true;
        at = end + 1;
    }
    return false;
}

json rowsOf(const WorkFolder& folder, const std::string& file) {
    const Finish finish = runVek(folder, {"convert", file, "-", "--to", "json", "--quiet"});
    EXPECT_EQ(finish.exitCode, 0) << file << ": " << finish.errors;
    return json::parse(finish.output, nullptr, false);
}

std::string parameterOf(const WorkFolder& folder, const std::string& file,
                        const std::string& name) {
    const Finish finish = runVek(folder, {"param", "get", file, name});
    const std::string& text = finish.output;
    return text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
}

void expectBack(const WorkFolder& folder, const std::string& file, const json& rows) {
    const Finish finish = runVek(folder, {"convert", "in.json", file, "--fps", "25"});
    const bool isWritten = finish.exitCode == 0;
    ASSERT_TRUE(isWritten || finish.exitCode == 4) << finish.errors;
    if (!isWritten || tellsALoss(finish.errors)) return;
    EXPECT_EQ(rowsOf(folder, file), rows) << file << ":\n" << folder.read(file);
}

}  // namespace

TEST(RoundTrips, GiveBackEveryTextOrTellOfItOrRefuse) {
    for (unsigned turn = 0; turn < logsWanted(); ++turn) {
        const WorkFolder folder;
        Logs logs(turn);
        folder.write("in.json", logs.next().dump());
        const json rows = rowsOf(folder, "in.json");
        for (const char* ending : {"vek", "csv", "tsv", "ale", "json", "jsonl", "otio"}) {
            expectBack(folder, std::string("out.") + ending, rows);
            ASSERT_FALSE(testing::Test::HasFailure()) << "turn " << turn;
        }
    }
}

TEST(RoundTrips, OfEventsGiveBackEveryTextOrTellOfItOrRefuse) {
    for (unsigned turn = 0; turn < logsWanted(); ++turn) {
        const WorkFolder folder;
        Logs logs(turn);
        folder.write("in.json", events(logs).dump());
        const json rows = rowsOf(folder, "in.json");
        for (const char* ending : {"edl", "vek", "ale", "otio"}) {
            expectBack(folder, std::string("out.") + ending, rows);
            ASSERT_FALSE(testing::Test::HasFailure()) << "turn " << turn;
        }
    }
}

TEST(RoundTrips, GiveBackEveryParameterOrTellOfItOrRefuse) {
    for (unsigned turn = 0; turn < logsWanted() / 2; ++turn) {
        const WorkFolder folder;
        Logs logs(turn);
        folder.write("in.json", events(logs).dump());
        runVek(folder, {"convert", "in.json", "in.vek", "--quiet"});
        std::map<std::string, std::string> given;
        for (const std::string& name : {std::string("TITLE"), logs.text(), logs.text()}) {
            const std::string value = logs.text();
            const Finish finish = runVek(folder, {"param", "set", "in.vek", name, value});
            // The field map is the table file's own, and the rate is asked for below.
            const bool isSpecial = name == "V5_FIELD_MAP" || name == "FPS";
            if (finish.exitCode != 0 || tellsALoss(finish.errors) || isSpecial) continue;
            given[name] = value;
            EXPECT_EQ(parameterOf(folder, "in.vek", name), value);
        }
        for (const char* ending : {"vek", "ale", "edl", "otio"}) {
            const std::string file = std::string("out.") + ending;
            const Finish finish = runVek(folder, {"convert", "in.vek", file, "--fps", "25"});
            if (finish.exitCode != 0 || tellsALoss(finish.errors)) continue;
            for (const auto& [name, value] : given) {
                EXPECT_EQ(parameterOf(folder, file, name), value)
                    << file << ", " << name << ", turn " << turn << ":\n"
                    << folder.read(file);
            }
        }
    }
}

TEST(RoundTrips, OfAChangedCellGiveItBackOrRefuse) {
    for (unsigned turn = 0; turn < logsWanted(); ++turn) {
        const WorkFolder folder;
        Logs logs(turn);
        folder.write("in.json", json::array({{{"Name", logs.text()}, {"Take", "1"}}}).dump());
        const std::string value = logs.text();
        if (value.find_first_of("{}") != std::string::npos) continue;
        for (const char* ending : {"vek", "csv", "tsv", "ale", "json", "jsonl"}) {
            const std::string file = std::string("log.") + ending;
            runVek(folder, {"convert", "in.json", file, "--quiet"});
            if (!folder.has(file)) continue;  // refused
            const std::string before = folder.read(file);
            const Finish finish = runVek(folder, {"set", file, "Name=" + value, "--every"});
            ASSERT_TRUE(finish.exitCode == 0 || folder.read(file) == before) << finish.errors;
            const bool isTold = finish.errors.find("changed\n") + 8 != finish.errors.size() ||
                                finish.errors.find('\n') + 1 != finish.errors.size();
            if (finish.exitCode != 0 || isTold) continue;
            EXPECT_EQ(rowsOf(folder, file)[0]["Name"], value) << file << ", turn " << turn;
        }
    }
}
