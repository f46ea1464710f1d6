// Every call that the program makes of the operating system fails, is interrupted, cut short, or is
// the last one that the program makes: whatever it was changing is old or new, it says so where it
// is not new, and nothing stays beside. VEKDB_TEST_WHOLE asks for all calls of all commands.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "cli/disturbed_run.h"

// The sanitizers make calls of their own, and do not outlive that those fail.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace {

using Files = std::map<std::string, std::string>;

// Every command that changes files, in every kind of save that it has.
constexpr const char* changes[] = {
    "vek set log.csv Take=9 --where Name==B --backup",
    "vek set log.vek Take=9 --where Name==B",
    "vek set log.ale Take=9 --where Name==B",
    "vek set log.json Take=9 --where Name==B",
    "vek set log.jsonl Take=9 --every",
    "vek set log.tsv Take=9 --every",
    "vek set link.csv Take=9 --every",
    "vek tag log.vek --where Name==B",
    "vek untag log.vek",
    "vek timecode shift log.csv 25 --fps 25",
    "vek delete log.csv --where Name==B",
    "vek column add log.csv Extra",
    "vek column remove log.vek Take",
    "vek column rename log.json Take Shot",
    "vek column order log.vek Take Name",
    "vek param set log.vek Day 2",
    "vek merge log.csv log.tsv -o log.csv",
    "vek convert log.csv log.vek",
    "vek convert log.csv new.json",
    "vek show log.csv --where Name==B -o out.csv",
    "vek sort log.csv --by Name --reverse",
    "vek dedupe twice.csv --by Name",
    "vek sample log.csv 1 --seed 7 -o some.csv",
    "vek split log.csv --by Name -o {Name}.csv",
    "vek append log.csv log.tsv",
    "vek container create new.rak 910a2debbeeb8da0f893a2ed71c1868f00004d",
};

bool isWholeRun() {
    return std::getenv("VEKDB_TEST_WHOLE") != nullptr;
}

void fill(const WorkFolder& folder) {
    folder.write("log.csv", "Name,Take,Start,End\nA,1,01:00:00:00,01:00:01:00\nB,\"2\",,\n");
    folder.write("log.tsv", "Name\tTake\nA\t1\nB\t2\n");
    folder.write("log.ale", "Heading\nFPS\t25\n\nColumn\nName\tTake\n\nData\nA\t1\nB\t2\n");
    folder.write("log.json",
                 "[{\"Name\": \"A\", \"Take\": 1},\n {\"Name\": \"B\", \"Take\": 2}]\n");
    folder.write("log.jsonl", "{\"Name\": \"A\", \"Take\": 1}\n{\"Name\": \"B\", \"Take\": 2}\n");
    folder.write("log.vek",
                 "\"VEKDB:Rev 1\"\n\"VEKDB\"\n\"4\",\"4\",\"4\"\n\"text\",\"text\",\"text\"\n"
                 "\"Name\",\"Take\",\"Tag\"\n\"A\",\"1\",\"1\"\n\"B\",\"2\",\"0\"\n");
    folder.write("twice.csv", "Name,Take\nA,1\nA,2\n");
    std::filesystem::create_symlink("log.csv", folder.path() / "link.csv");
}

Files filesOf(const WorkFolder& folder) {
    Files files;
    for (const std::string& name : folder.names()) files[name] = folder.read(name);
    return files;
}

// Another process can lock every file that is there.
void expectNoLocks(const WorkFolder& folder, const Files& files) {
    for (const auto& [name, text] : files) {
        const int file = ::open((folder.path() / name).c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(::flock(file, LOCK_EX | LOCK_NB), 0) << name;
        ::close(file);
    }
}

class Change {
public:
    explicit Change(const std::string& line) : line_(line), words_(shellWords(line)) {
        WorkFolder folder;
        fill(folder);
        old_ = filesOf(folder);
        const DisturbedRun run = runDisturbed(folder, words_, {});
        EXPECT_EQ(run.exitCode, 0) << line;
        calls_ = run.calls;
        done_ = filesOf(folder);
        EXPECT_NE(old_, done_) << line;
    }

    unsigned calls() const { return calls_; }

    // False when the call that was to be disturbed was not made.
    bool disturb(const Disturbance& disturbance) const {
        WorkFolder folder;
        fill(folder);
        const DisturbedRun run = runDisturbed(folder, words_, disturbance);
        if (!run.happened) return false;
        SCOPED_TRACE(line_ + ", disturbance " + std::to_string(disturbance.kind) + " of call " +
                     std::to_string(disturbance.at) + ", " + run.call);
        expectOldOrNew(filesOf(folder));
        expectTold(run, disturbance, filesOf(folder));
        expectClearedUp(folder, disturbance);
        expectNoLocks(folder, filesOf(folder));
        return true;
    }

private:
    bool isKnown(const std::string& name) const { return old_.count(name) + done_.count(name) > 0; }

    static bool holds(const Files& files, const std::string& name, const std::string& text) {
        const auto found = files.find(name);
        return found != files.end() && found->second == text;
    }

    void expectOldOrNew(const Files& files) const {
        for (const auto& [name, text] : files) {
            if (!isKnown(name)) continue;
            EXPECT_TRUE(holds(old_, name, text) || holds(done_, name, text)) << name << ":\n"
                                                                             << text;
        }
        for (const auto& [name, text] : old_)
            EXPECT_EQ(files.count(name), 1u) << name << " is gone";
    }

    void expectTold(const DisturbedRun& run, const Disturbance& disturbance,
                    const Files& files) const {
        const bool isKill = disturbance.kind >= Disturbance::isKilledBefore;
        if (isKill) {
            EXPECT_EQ(run.exitCode, 1000 + SIGKILL);
            return;
        }
        EXPECT_TRUE(run.exitCode >= 0 && run.exitCode <= 4) << run.exitCode;
        if (run.exitCode == 0) {
            for (const auto& [name, text] : done_) {
                EXPECT_TRUE(holds(files, name, text)) << name << " is reported done";
            }
        }
        const bool isHarmless =
            disturbance.kind == Disturbance::isHalved || disturbance.kind == Disturbance::isOneByte;
        if (isHarmless) {
            EXPECT_EQ(run.exitCode, 0);
        }
    }

    // What could not be removed, or was in the making when the process ended, is removed by the
    // next save in the folder; without either nothing is left at once.
    void expectClearedUp(const WorkFolder& folder, const Disturbance& disturbance) const {
        const bool isKill = disturbance.kind >= Disturbance::isKilledBefore;
        const bool mayLeave = isKill || disturbance.kind == Disturbance::fails ||
                              disturbance.kind == Disturbance::failsFromThere;
        if (mayLeave && !hasOnlyKnown(folder)) runDisturbed(folder, shellWords(nextSave), {});
        for (const std::string& name : folder.names()) {
            EXPECT_TRUE(isKnown(name)) << name << " is left";
        }
    }

    bool hasOnlyKnown(const WorkFolder& folder) const {
        const std::vector<std::string> names = folder.names();
        return std::all_of(names.begin(), names.end(),
                           [&](const std::string& name) { return isKnown(name); });
    }

    static constexpr const char* nextSave = "vek set log.csv Take=3 --every";

    std::string line_;
    std::vector<std::string> words_;
    Files old_;
    Files done_;
    unsigned calls_ = 0;
};

// All commands where there is time; otherwise the one of the longest way.
std::vector<Change> chosenChanges() {
    std::vector<Change> chosen;
    for (const char* line : changes) {
        if (isWholeRun() || chosen.empty()) chosen.emplace_back(line);
    }
    return chosen;
}

class Disturbed : public testing::Test {
protected:
    // Where nothing can be traced there is nothing to look at, which is said.
    static bool isPossible() {
        if (canDisturb()) return true;
        std::printf("this system lets no program be traced: nothing was tried\n");
        return false;
    }

    // Where there is no time for each call, every kind begins at another one.
    static constexpr unsigned stride = 5;
    static unsigned first(unsigned kind) { return isWholeRun() ? 1 : 1 + kind % stride; }

    static void atEachCall(Disturbance disturbance, const char* what) {
        if (!isPossible()) return;
        unsigned happened = 0;
        unsigned commands = 0;
        for (const Change& change : chosenChanges()) {
            ++commands;
            for (disturbance.at = first(disturbance.kind); disturbance.at <= change.calls();
                 disturbance.at += isWholeRun() ? 1 : stride) {
                happened += change.disturb(disturbance) ? 1 : 0;
                if (HasFailure()) return;
            }
        }
        EXPECT_GT(happened, 0u);
        std::printf("%u calls %s in %u commands\n", happened, what, commands);
    }
};

}  // namespace

TEST_F(Disturbed, ByACallThatFailsLeavesOldOrNew) {
    atEachCall({Disturbance::fails, 0, EIO}, "that failed");
    if (isWholeRun()) atEachCall({Disturbance::fails, 0, ENOSPC}, "that found no room");
    if (isWholeRun()) atEachCall({Disturbance::fails, 0, EACCES}, "that were refused");
}

TEST_F(Disturbed, ByCallsThatAllFailFromOneOnLeavesOldOrNew) {
    atEachCall({Disturbance::failsFromThere, 0, EIO}, "from which all failed");
}

TEST_F(Disturbed, ByACallThatIsInterruptedLeavesOldOrNew) {
    atEachCall({Disturbance::isInterrupted, 0, EINTR}, "that were interrupted");
}

TEST_F(Disturbed, ByAPieceThatIsCutShortGoesOnWithTheRest) {
    atEachCall({Disturbance::isHalved, 0, 0}, "that were cut short");
    if (!isPossible()) return;
    const Change change(changes[0]);
    EXPECT_TRUE(change.disturb({Disturbance::isOneByte, 1, 0}));
}

TEST_F(Disturbed, ByAKillBeforeACallLeavesOldOrNewAndTheNextSaveClearsUp) {
    atEachCall({Disturbance::isKilledBefore, 0, 0}, "before which it was killed");
}

TEST_F(Disturbed, ByAKillAfterACallLeavesOldOrNewAndTheNextSaveClearsUp) {
    atEachCall({Disturbance::isKilledAfter, 0, 0}, "after which it was killed");
}

#endif
