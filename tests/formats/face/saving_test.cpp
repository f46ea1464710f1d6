#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>

#include <vekdb/formats/log.h>
#include "testing/temp_dir.h"

using testing::HasSubstr;
using testing::SizeIs;

using testing_support::TempDir;

namespace {

constexpr const char* csv = "Scene,Notes\n12,good\n7,\n";

class Pieces : public vek::Sink {
public:
    explicit Pieces(bool takes = true) : takes_(takes) {}
    bool write(std::string_view text) noexcept override {
        text_ += text;
        return takes_;
    }
    const std::string& text() const { return text_; }

private:
    bool takes_;
    std::string text_;
};

}  // namespace

namespace {

// While in scope, no file becomes longer than so many bytes.
class LimitedFiles {
public:
    explicit LimitedFiles(rlim_t size) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit = {size, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    LimitedFiles(const LimitedFiles&) = delete;
    LimitedFiles& operator=(const LimitedFiles&) = delete;
    ~LimitedFiles() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

private:
    void (*handler_)(int);
    rlimit before_ = {};
};

}  // namespace

TEST(SavingLogs, SavesAfterADiskWasFull) {
    TempDir folder;
    folder.write("day.csv", csv);
    auto log = vek::openToChange(folder.file("day.csv").string());
    ASSERT_TRUE(log) << log.reason().text();
    ASSERT_TRUE(log->set(log->at(1), "Notes", "print"));
    {
        const LimitedFiles full(4);
        EXPECT_FALSE(log->save());
        EXPECT_EQ(folder.read("day.csv"), csv);
    }
    EXPECT_TRUE(log->save());
    EXPECT_EQ(folder.read("day.csv"), "Scene,Notes\n12,good\n7,print\n");
}

TEST(SavingLogs, ChangesAFileInPlace) {
    TempDir folder;
    folder.write("day.csv", csv);
    const std::string path = folder.file("day.csv").string();
    auto log = vek::openToChange(path);
    ASSERT_TRUE(log) << log.reason().text();
    ASSERT_TRUE(log->set(log->at(1), "Notes", "late"));
    auto saved = log->save(true);
    ASSERT_TRUE(saved) << saved.reason().text();
    EXPECT_TRUE(saved->isWhole());
    EXPECT_EQ(folder.read("day.csv"), "Scene,Notes\n12,good\n7,late\n");
    EXPECT_EQ(folder.read("day.csv.bak"), csv);
}

TEST(SavingLogs, TouchesNoFileThatWouldBeTheSame) {
    TempDir folder;
    folder.write("day.csv", csv);
    const auto before = std::filesystem::last_write_time(folder.file("day.csv"));
    auto log = vek::openToChange(folder.file("day.csv").string());
    ASSERT_TRUE(log->save(true));
    EXPECT_EQ(before, std::filesystem::last_write_time(folder.file("day.csv")));
    EXPECT_FALSE(std::filesystem::exists(folder.file("day.csv.bak")));
}

TEST(SavingLogs, LetsGoOfTheFileThatWasSaved) {
    TempDir folder;
    folder.write("day.csv", csv);
    auto log = vek::openToChange(folder.file("day.csv").string());
    ASSERT_TRUE(log->set(log->at(1), "Notes", "late"));
    ASSERT_TRUE(log->save());
    EXPECT_EQ(log->save().reason().kind, vek::Reason::wrongUsage);
    auto again = vek::openToChange(folder.file("day.csv").string());
    ASSERT_TRUE(again->set(again->at(0), "Notes", "early"));
    ASSERT_TRUE(again->removeRows(*again->choose("Scene=7")));
    auto saved = again->save();
    ASSERT_TRUE(saved) << saved.reason().text();
    EXPECT_EQ(folder.read("day.csv"), "Scene,Notes\n12,early\n");
}

TEST(SavingLogs, LetsGoOfAFileThatIsNotToBeSaved) {
    const char* timeline = R"({"OTIO_SCHEMA": "Timeline.1", "name": "x",
        "tracks": {"OTIO_SCHEMA": "Stack.1", "children": []}})";
    TempDir folder;
    folder.write("day.csv", csv);
    auto log = vek::openToChange(folder.file("day.csv").string());
    ASSERT_TRUE(log);
    EXPECT_TRUE(log->canBeSaved());
    log->letGo();
    EXPECT_EQ(log->save().reason().kind, vek::Reason::wrongUsage);
    EXPECT_TRUE(vek::openToChange(folder.file("day.csv").string()));
    EXPECT_FALSE(vek::openText(timeline, "x.otio")->canBeSaved());
}

TEST(SavingLogs, LeavesAFileThatSomebodyElseChangedMeanwhile) {
    TempDir folder;
    folder.write("day.csv", csv);
    auto log = vek::openToChange(folder.file("day.csv").string());
    ASSERT_TRUE(log->set(log->at(0), "Notes", "mine"));
    folder.write("day.csv", "Scene,Notes\n99,theirs\n");
    auto saved = log->save();
    EXPECT_EQ(saved.reason().kind, vek::Reason::unwritable);
    EXPECT_EQ(folder.read("day.csv"), "Scene,Notes\n99,theirs\n");
    EXPECT_FALSE(vek::openToChange(folder.file("day.csv").string())) << "it is still held";
}

TEST(SavingLogs, SaysThatTheFileIsGone) {
    TempDir folder;
    folder.write("day.csv", csv);
    auto log = vek::openToChange(folder.file("day.csv").string());
    ASSERT_TRUE(log->set(log->at(0), "Notes", "mine"));
    std::filesystem::remove(folder.file("day.csv"));
    const std::string text = log->save().reason().text();
    EXPECT_THAT(text, HasSubstr("was deleted"));
    EXPECT_THAT(text, testing::Not(HasSubstr("command")));
    EXPECT_FALSE(folder.has("day.csv"));
}

TEST(SavingLogs, OpensNoLogToBeChangedThatCannotBe) {
    TempDir folder;
    const std::string path = folder.file("day.xlsx").string();
    ASSERT_TRUE(vek::openText(csv, "day.csv")->saveAs(path));
    const auto log = vek::openToChange(path);
    ASSERT_FALSE(log);
    EXPECT_EQ(log.reason().kind, vek::Reason::wrongUsage);
    EXPECT_THAT(log.reason().text(), HasSubstr("a workbook is not changed in place"));
}

TEST(SavingLogs, SaysThatMoreWasWrittenThanAllowed) {
    vek::SaveOptions options;
    options.maxBytes = 10;
    std::string text;
    EXPECT_EQ(vek::openText(csv)->write(text, vek::Format::csv, options).reason().text(),
              "text: more than 10 bytes, expected no more; maxBytes allows more");
}

TEST(SavingLogs, SaysWhatIsNoFrameRate) {
    vek::Log log = *vek::openText("Name,Start,End\na,01:00:00:00,01:00:01:00\n", "day.csv");
    ASSERT_TRUE(log.setParameter("FPS", "24"));
    vek::SaveOptions options;
    options.rate = "abc";
    for (vek::Format format : {vek::Format::edl, vek::Format::ale, vek::Format::otio}) {
        std::string text;
        const auto saved = log.write(text, format, options);
        EXPECT_EQ(saved.reason().kind, vek::Reason::wrongUsage);
        EXPECT_EQ(saved.reason().text(), "rate \"abc\", expected one such as 24 or 29.97df");
    }
    std::string text;
    EXPECT_TRUE(log.write(text, vek::Format::csv, options));
}

TEST(SavingLogs, SavesNoLogInPlaceThatWasOpenedToBeRead) {
    TempDir folder;
    folder.write("day.csv", csv);
    auto log = vek::open(folder.file("day.csv").string());
    EXPECT_EQ(log->save().reason().kind, vek::Reason::wrongUsage);
    EXPECT_EQ(vek::openText(csv)->save().reason().kind, vek::Reason::wrongUsage);
}

TEST(SavingLogs, TakesTheFormatOfTheEnding) {
    TempDir folder;
    auto log = vek::openText(csv, "day.csv");
    ASSERT_TRUE(log->saveAs(folder.file("day.jsonl").string()));
    EXPECT_EQ(folder.read("day.jsonl"),
              "{\"Scene\": \"12\", \"Notes\": \"good\"}\n{\"Scene\": \"7\", \"Notes\": \"\"}\n");
    auto saved = log->saveAs(folder.file("day.doc").string());
    EXPECT_EQ(saved.reason().kind, vek::Reason::wrongUsage);
    EXPECT_THAT(saved.reason().expected, HasSubstr(".csv"));
    EXPECT_TRUE(log->saveAs(folder.file("day.doc").string(), vek::Format::tsv));
}

TEST(SavingLogs, SaysWhyAFileIsNotWritten) {
    TempDir folder;
    auto saved = vek::openText(csv)->saveAs(folder.file("no/day.csv").string());
    EXPECT_EQ(saved.reason().kind, vek::Reason::unwritable);
    EXPECT_THAT(saved.reason().text(), HasSubstr("make its folder first"));
}

TEST(SavingLogs, PacksWhatIsNamedSoInTheFormatOfTheEndingInFrontOfThat) {
    TempDir folder;
    auto log = vek::openText(csv, "day.csv");
    for (const char* name : {"a.csv.gz", "a.ale.gz", "a.json.GZ", "a.vek.gz", "a.xlsx.gz"}) {
        const std::string path = folder.file(name).string();
        auto saved = log->saveAs(path);
        ASSERT_TRUE(saved) << saved.reason().text();
        EXPECT_TRUE(folder.read(name).starts_with("\x1F\x8B")) << name;
        vek::OpenOptions all;
        all.maxBytes = SIZE_MAX;
        auto back = vek::open(path, all);
        ASSERT_TRUE(back) << back.reason().text();
        EXPECT_EQ(back->format(), vek::formatOfPath(name)) << name;
        EXPECT_EQ(back->at(1)["Scene"], "7") << name;
    }
}

TEST(SavingLogs, TakesNoPathThatIsNone) {
    TempDir folder;
    folder.write("day.csv", csv);
    auto log = vek::openText(csv, "day.csv");
    const std::string cut = folder.file("day.csv").string() + std::string(1, '\0') + ".json";
    auto saved = log->saveAs(cut);
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.reason().kind, vek::Reason::unwritable);
    EXPECT_THAT(saved.reason().text(), HasSubstr("a zero byte in the path"));
    EXPECT_FALSE(log->choose()->saveAs(cut, vek::Format::json));
    EXPECT_EQ(folder.read("day.csv"), csv);
    EXPECT_EQ(log->saveAs("", vek::Format::csv).reason().kind, vek::Reason::unwritable);
    EXPECT_FALSE(std::filesystem::exists("./-"));
}

TEST(SavingLogs, WritesIntoASink) {
    Pieces pieces;
    ASSERT_TRUE(vek::openText(csv)->write(pieces, vek::Format::csv));
    EXPECT_EQ(pieces.text(), csv);
    Pieces full(false);
    EXPECT_EQ(vek::openText(csv)->write(full, vek::Format::csv).reason().kind,
              vek::Reason::unwritable);
}

TEST(SavingLogs, WritesChosenColumnsWithTheLineEndsThatAreAskedFor) {
    vek::SaveOptions options;
    options.columns = {"Notes", "scene"};
    options.lineEnds = vek::LineEnds::crlf;
    std::string text;
    ASSERT_TRUE(vek::openText(csv)->write(text, vek::Format::csv, options));
    EXPECT_EQ(text, "Notes,Scene\r\ngood,12\r\n,7\r\n");
    options.columns = {"nothing"};
    EXPECT_EQ(vek::openText(csv)->write(text, vek::Format::csv, options).reason().kind,
              vek::Reason::wrongUsage);
}

TEST(SavingLogs, SaysBeforehandWhatAFormatDoesNotHold) {
    auto log = vek::openText("A\n b \nc\n d\n", "x.csv");
    ASSERT_TRUE(log->setParameter("FPS", "24"));
    auto table = log->wouldLose(vek::Format::table);
    ASSERT_TRUE(table);
    ASSERT_THAT(table->losses, SizeIs(1));
    EXPECT_EQ(table->losses[0].count, 2u);
    EXPECT_EQ(table->losses[0].firstPlace, "x.csv:2:A");
    auto asCsv = log->wouldLose(vek::Format::csv);
    ASSERT_THAT(asCsv->losses, SizeIs(1));
    EXPECT_THAT(asCsv->losses[0].what, HasSubstr("parameter"));
}

TEST(SavingLogs, SaysWhichCellATableFileHasNoRoomFor) {
    auto log = vek::openText("A,B\n1,x\n", "x.csv");
    ASSERT_TRUE(log->set(log->at(0), "B", std::string(5000, 'x')));
    std::string text = "as it was";
    auto saved = log->write(text, vek::Format::table);
    EXPECT_EQ(saved.reason().kind, vek::Reason::unwritable);
    EXPECT_EQ(saved.reason().file, "x.csv");
    EXPECT_EQ(saved.reason().line, 2u);
    EXPECT_EQ(saved.reason().column, "B");
    EXPECT_THAT(saved.reason().expected, HasSubstr("4094"));
    EXPECT_EQ(text, "as it was");
}

TEST(SavingLogs, SaysThatAZeroByteWouldNotBeRead) {
    using std::string_view_literals::operator""sv;
    auto log = vek::openText("A\n1\n", "x.csv");
    ASSERT_TRUE(log->set(log->at(0), "A", "a\0b"sv));
    auto saved = log->wouldLose(vek::Format::csv);
    ASSERT_THAT(saved->losses, SizeIs(1));
    EXPECT_THAT(saved->losses[0].what, HasSubstr("zero byte"));
}

TEST(SavingLogs, RefusesFormatsThatAreOnlyRead) {
    std::string text;
    EXPECT_EQ(vek::openText(csv)->write(text, vek::Format::plainCsv).reason().kind,
              vek::Reason::wrongUsage);
}
