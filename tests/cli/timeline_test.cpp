#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "cli/program.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

std::string times(std::string_view text, std::size_t count) {
    std::string out;
    for (std::size_t i = 0; i < count; ++i) out += text;
    return out;
}

void expectRefused(const Finish& finish, std::string_view about) {
    EXPECT_EQ(finish.exitCode, 3);
    EXPECT_NE(finish.errors.find(about), std::string::npos) << finish.errors;
}

// The project's own files, and real ones where there are any.
std::vector<fs::path> timelines(const std::string& kind) {
    std::vector<fs::path> files;
    const char* given = std::getenv("VEKDB_FIELD_DATA");
    const fs::path source(VEKDB_SOURCE_DIR);
    for (const fs::path& folder :
         {source / "tests/cli/fixtures", given ? fs::path(given) : source / "../shared/data"}) {
        if (!fs::is_directory(folder / kind)) continue;
        for (const auto& entry : fs::directory_iterator(folder / kind)) {
            files.push_back(fs::canonical(entry.path()));
        }
    }
    return files;
}

json rowsOf(const WorkFolder& folder, const std::string& path, json kinds) {
    const Finish finish = runVekLine(folder, "convert '" + path + "' - --to json");
    EXPECT_EQ(finish.exitCode, 0) << finish.errors;
    json rows = json::array();
    for (json& row : json::parse(finish.output)) {
        const bool isWanted = std::find(kinds.begin(), kinds.end(), row["Kind"]) != kinds.end();
        if (isWanted) rows.push_back(row);
    }
    return rows;
}

// A text cut behind every byte ends the program as any other file that is none.
void expectCutsRefused(const std::string& name, const std::string& text) {
    WorkFolder folder;
    for (std::size_t size = 1; size + 2 < text.size(); ++size) {
        folder.write(name, std::string_view(text).substr(0, size));
        const Finish finish = runVekLine(folder, "info " + name);
        ASSERT_EQ(finish.exitCode, 3) << size << "\n" << finish.errors;
        ASSERT_TRUE(finish.errors.starts_with("vek: " + name + ":")) << finish.errors;
    }
}

const std::string shortOtio =
    R"({"OTIO_SCHEMA":"Timeline.1","tracks":{"OTIO_SCHEMA":"Stack.1","children":[)"
    R"({"OTIO_SCHEMA":"Track.1","children":[{"OTIO_SCHEMA":"Clip.1","name":"\u00e9",)"
    R"("source_range":{"start_time":{"rate":24,"value":1e1},"duration":{"rate":24,"value":2}},)"
    R"("metadata":{"a":[1,{"b":null}]}}]}]}})";

const std::string shortFcpxml =
    "<fcpxml version='1.8'><!-- x --><resources><format id='r1' frameDuration='1/25s'/></resources>"
    "<event name='&#233;'><project><sequence format='r1'><spine><clip name='a' duration='1s'>"
    "<marker start='0s' value='m'/></clip></spine></sequence></project></event></fcpxml>";

}  // namespace

TEST(Timelines, CutBehindEveryByteTheyAreRefused) {
    expectCutsRefused("a.otio", shortOtio);
    expectCutsRefused("a.fcpxml", shortFcpxml);
}

TEST(Timelines, DepthWithoutEndIsRefusedOrTold) {
    WorkFolder folder;
    folder.write("a.otio", times("{\"a\":", 1000000));
    expectRefused(runVekLine(folder, "info a.otio"), "more than 256 values in one another");
    folder.write("b.otio", "{\"OTIO_SCHEMA\":\"Stack.1\",\"metadata\":{\"x\":" + times("[", 300) +
                               times("]", 300) + "}}");
    expectRefused(runVekLine(folder, "info b.otio"), "more than 256 values in one another");
    folder.write("c.fcpxml", "<fcpxml><project><sequence>" + times("<spine>", 50000) +
                                 times("</spine>", 50000) + "</sequence></project></fcpxml>");
    const Finish deep = runVekLine(folder, "info c.fcpxml");
    EXPECT_EQ(deep.exitCode, 0);
    EXPECT_NE(deep.errors.find("more than 200 elements in one another"), std::string::npos)
        << deep.errors;
}

TEST(Timelines, FewBytesThatWouldTakeMuchMemoryAreRefused) {
    WorkFolder folder;
    folder.write("a.fcpxml", "<fcpxml>" + times("<a/>", 1000000) + "</fcpxml>");
    expectRefused(runVekLine(folder, "info a.fcpxml"), "more elements than");
    std::string sparse = "{\"OTIO_SCHEMA\":\"SerializableCollection.1\",\"children\":[";
    for (int i = 0; i < 60000; ++i) {
        sparse += (i > 0 ? ",{" : "{") + std::string("\"OTIO_SCHEMA\":\"Clip.1\",\"metadata\":{") +
                  "\"k" + std::to_string(i) + "\":1}}";
    }
    folder.write("b.otio", sparse + "]}");
    expectRefused(runVekLine(folder, "info b.otio"), "--max-cells allows more");
}

TEST(Timelines, TimesBeyondAllBoundsAreTold) {
    WorkFolder folder;
    folder.write("a.fcpxml",
                 "<fcpxml><event><clip duration='9223372036854775807/3s' "
                 "start='9223372036854775807/7s'/><clip start='1/0s' duration='-5s'/>"
                 "<clip start='-9223372036854775808s' duration='99999999999999999999s'/>"
                 "</event></fcpxml>");
    const Finish finish = runVekLine(folder, "convert a.fcpxml - --to csv");
    EXPECT_EQ(finish.exitCode, 0);
    EXPECT_NE(finish.errors.find("a time beyond all bounds"), std::string::npos) << finish.errors;
    EXPECT_NE(finish.errors.find("start=\"1/0s\", expected seconds"), std::string::npos)
        << finish.errors;
    folder.write("a.otio",
                 "{\"OTIO_SCHEMA\":\"Clip.1\",\"source_range\":{\"start_time\":{\"rate\":1e300,"
                 "\"value\":-1e300},\"duration\":{\"rate\":0,\"value\":1e18}}}");
    EXPECT_EQ(runVekLine(folder, "info a.otio").exitCode, 0);
}

TEST(Timelines, ClipsMarkersAndTransitionsComeBackFromATimelineThatWasMadeOfThem) {
    const json kept = {"Clip", "Marker", "Transition", "Title", "To Do", "Chapter", "Keyword"};
    for (const fs::path& path : timelines("otio")) {
        SCOPED_TRACE(path.string());
        WorkFolder folder;
        EXPECT_EQ(runVekLine(folder, "convert '" + path.string() + "' made.otio").exitCode, 0);
        json was = rowsOf(folder, path, kept);
        json is = rowsOf(folder, "made.otio", kept);
        EXPECT_FALSE(was.empty());
        EXPECT_EQ(is, was);
    }
}

TEST(Timelines, EveryTimelineBecomesAnEditList) {
    for (const char* kind : {"otio", "fcpxml"}) {
        for (const fs::path& path : timelines(kind)) {
            SCOPED_TRACE(path.string());
            WorkFolder folder;
            EXPECT_EQ(runVekLine(folder, "convert '" + path.string() + "' made.edl").exitCode, 0);
            EXPECT_EQ(runVekLine(folder, "stats made.edl --fps 30").exitCode, 0);
            EXPECT_NE(folder.read("made.edl").find("\n001  "), std::string::npos);
        }
    }
}

TEST(Timelines, ALogComesBackAsItWas) {
    WorkFolder folder;
    EXPECT_EQ(runVekLine(folder, "convert samples/docs.vek made.otio").exitCode, 0);
    const Finish diff = runVekLine(folder, "diff samples/docs.vek made.otio");
    EXPECT_EQ(diff.exitCode, 0) << diff.output;
    EXPECT_EQ(diff.output, "");
}
