#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "formats/changing/merger.h"
#include "testing/logs.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using testing_support::logOf;
using namespace vek::formats;

namespace {

// Joins logs, and keeps what is told.
class Joined {
public:
    explicit Joined(std::string_view text, Merger::Prefer prefer = Merger::Prefer::report)
        : log(logOf(text, "first.csv")),
          merger(
              log, prefer,
              [this](const Merger::Conflict& conflict) { conflicts.push_back(conflict); },
              [this](const std::string& note) { notes.push_back(note); }) {}

    std::vector<std::string> row(unsigned row) const {
        std::vector<std::string> cells;
        for (unsigned i = 0; i < log.columnCount(); ++i) cells.emplace_back(log.cell(row, i));
        return cells;
    }

    Log log;
    std::vector<Merger::Conflict> conflicts;
    std::vector<std::string> notes;
    Merger merger;
};

}  // namespace

TEST(Merger, PutsRowsBehindTheOthersByTheNamesOfTheirColumns) {
    Joined joined("Name,Take\na,1\n");
    joined.merger.add(logOf("take,Reel\n2,A001\n"));
    ASSERT_EQ(joined.log.rowCount(), 2u);
    EXPECT_THAT(joined.log.columnNames(), ElementsAre("Name", "Take", "Reel"));
    EXPECT_THAT(joined.row(0), ElementsAre("a", "1", ""));
    EXPECT_THAT(joined.row(1), ElementsAre("", "2", "A001"));
    EXPECT_THAT(joined.conflicts, IsEmpty());
}

TEST(Merger, FillsEmptyCellsOfTheRowThatHasTheKey) {
    Joined joined("Name,Take\na,\nb,2\n");
    joined.merger.useKey("Name");
    joined.merger.add(logOf("Name,Take\na,1\nc,3\n"));
    ASSERT_EQ(joined.log.rowCount(), 3u);
    EXPECT_THAT(joined.row(0), ElementsAre("a", "1"));
    EXPECT_THAT(joined.row(2), ElementsAre("c", "3"));
}

TEST(Merger, TellsTwoValuesForOneCellAndKeepsTheFirst) {
    Joined joined("Name,Take\na,1\n");
    joined.merger.useKey("Name");
    joined.merger.add(logOf("Name,Take\na,2\n", "second.csv"));
    EXPECT_THAT(joined.row(0), ElementsAre("a", "1"));
    ASSERT_THAT(joined.conflicts, SizeIs(1));
    const Merger::Conflict& conflict = joined.conflicts[0];
    EXPECT_EQ(conflict.kind, Merger::Conflict::cell);
    EXPECT_EQ(conflict.value, "2");
    EXPECT_EQ(conflict.kept, "1");
    EXPECT_THAT(worded(conflict), HasSubstr("second.csv:2:Take"));
}

TEST(Merger, TakesTheValueThatIsPreferred) {
    const auto taken = [](Merger::Prefer prefer) {
        Joined joined("Name,Take,Reel\na,1,A001\n", prefer);
        joined.merger.useKey("Name");
        joined.merger.add(logOf("Name,Take,Reel\na,2,\n"));
        EXPECT_THAT(joined.conflicts, IsEmpty());
        return joined.row(0);
    };
    EXPECT_THAT(taken(Merger::Prefer::first), ElementsAre("a", "1", "A001"));
    EXPECT_THAT(taken(Merger::Prefer::last), ElementsAre("a", "2", ""));
    EXPECT_THAT(taken(Merger::Prefer::filled), ElementsAre("a", "2", "A001"));
}

TEST(Merger, TellsAKeyThatOneLogHasTwiceAndKeepsBothRows) {
    Joined joined("Name,Take\na,1\na,2\n");
    joined.merger.useKey("Name");
    joined.merger.add(logOf("Name,Take\na,3\n"));
    EXPECT_EQ(joined.log.rowCount(), 3u);
    EXPECT_EQ(joined.merger.repeatedKeys(), 1u);
    EXPECT_EQ(joined.conflicts[0].kind, Merger::Conflict::key);
}

TEST(Merger, SaysWhichParametersDiffer) {
    Joined joined("Name\na\n");
    joined.log.setParameter("Project", "Day");
    Log other = logOf("Name\nb\n", "second.csv");
    other.setParameter("Project", "Night");
    other.setParameter("Unit", "2");
    joined.merger.add(other);
    EXPECT_THAT(joined.notes, ElementsAre(HasSubstr("parameter \"Project\" is \"Night\"")));
    EXPECT_EQ(joined.log.parameter("Unit"), "2");
}

TEST(Merger, RefusesLogsThatCountFramesDifferently) {
    Log ours = logOf("Start\n01:00:00:00\n");
    Log theirs = logOf("Start\n01:00:00:00\n");
    ours.setParameter("FPS", "24");
    theirs.setParameter("FPS", "25");
    try {
        requireSameCounting(ours, theirs);
        FAIL() << "24 and 25 frames a second in one log";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind, contradiction);
        EXPECT_THAT(failure.text, HasSubstr("joinsUnlike joins the logs all the same"));
    }
    theirs.setParameter("FPS", "24");
    EXPECT_NO_THROW(requireSameCounting(ours, theirs));
}
