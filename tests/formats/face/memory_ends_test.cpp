// Memory ends at every allocation of every operation on logs: once, and for good until the
// operation is over. It is answered as what it is, a log that was to be changed is as it was, no
// memory is lost, and the same operation gets through afterwards. VEKDB_TEST_WHOLE tries them all.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <vekdb/formats/comparing.h>
#include <vekdb/formats/log.h>
#include <vekdb/table.h>
#include "host/disk_flush.h"
#include "testing/failing_allocator.h"
#include "testing/quiet.h"
#include "testing/temp_dir.h"

namespace {

using testing_support::CountingAllocator;
using testing_support::FailingAllocator;
using testing_support::Quiet;
using testing_support::TempDir;
using vek::Choice;
using vek::Format;
using vek::Log;
using vek::Reason;

constexpr const char* csv =
    "Name,Take,Start,End,Notes,Tag\n"
    "a name that has no room in a short text,1,01:00:00:00,01:00:10:00,\"a \"\"quoted\"\" one\",1\n"
    "A002,2,01:00:10:00,01:00:20:00,,\n"
    "A003,10,,,see the notes of the day before this one,0\n"
    "A002,3,01:00:40:00,01:01:00:00,x,1\n";

// One text of each format that is read.
struct Sample {
    Format format;
    std::string text;
};

std::string samplesOf(Format format) {
    std::string text;
    vek::SaveOptions options;
    options.rate = "25";
    EXPECT_TRUE(vek::openText(csv, "day.csv")->write(text, format, options)) << nameOf(format);
    return text;
}

std::vector<Sample> madeSamples() {
    std::vector<Sample> samples = {{Format::plainCsv, csv}};
    for (Format format : {Format::table, Format::csv, Format::tsv, Format::json, Format::jsonl,
                          Format::ale, Format::otio, Format::xlsx}) {
        samples.push_back({format, samplesOf(format)});
    }
    samples.push_back({Format::edl,
                       "TITLE: day\nFCM: NON-DROP FRAME\n001  A001 V C 01:00:00:00 01:00:01:00 "
                       "02:00:00:00 02:00:01:00\n* FROM CLIP NAME: a name that is quite long\n"});
    samples.push_back(
        {Format::fcpxml,
         "<?xml version=\"1.0\"?><!DOCTYPE fcpxml><fcpxml version=\"1.9\"><resources><format "
         "id=\"r1\" frameDuration=\"1/25s\"/><asset id=\"r2\" name=\"A001\" start=\"0s\" "
         "duration=\"10s\" format=\"r1\"/></resources><library><event><project "
         "name=\"p\"><sequence format=\"r1\"><spine><asset-clip ref=\"r2\" name=\"a clip of a "
         "long name\" offset=\"0s\" start=\"1s\" duration=\"2s\"/></spine></sequence></project>"
         "</event></library></fcpxml>"});
    return samples;
}

const std::vector<Sample>& samples() {
    static const std::vector<Sample> all = madeSamples();
    return all;
}

// Everything that can be seen of a log.
std::string pictureOf(const Log& log) {
    std::string picture;
    for (vek::Column column : log.columns()) picture += column.name() + '|';
    for (vek::Row row : log) {
        picture += row.isTagged() ? "\n*" : "\n ";
        for (std::string_view cell : row) picture.append(cell) += '|';
    }
    for (const vek::Parameter& entry : log.parameters()) {
        picture += '\n' + entry.name + '=' + entry.value;
    }
    return picture;
}

Log renamedOne() {
    Log log = *vek::openText("Name,a name that is quite long\n1,2\n", "renamed.csv");
    EXPECT_TRUE(log.renameColumn(log.columns().at(1), "B"));
    return log;
}

struct World {
    explicit World(const TempDir& folder, bool hasFiles) : path(folder.file("day.csv").string()) {
        if (hasFiles) {
            folder.write("day.csv", csv);
            folder.write("out.csv", "older");
        }
    }

    std::string path;
    Log log = *vek::openText(csv, "day.csv");
    Log mapped = *vek::openText(
        "\"VEKDB:Rev 1\"\n\"V5_FIELD_MAP:2 -1\"\n\"Day:1\"\n\"VEKDB\"\n\"4\",\"4\"\n"
        "\"text\",\"text\"\n\"Name\",\"Take\"\n\"A\",\"1\"\n",
        "mapped.vek");
    Log other = *vek::openText("Name,Take\nA002,2\nB001,1\n", "other.csv");
    Log twins = *vek::openText("Reel,a name that is quite long,Reel,,\n1,2,3,4,5\n", "twins.csv");
    Log renamed = renamedOne();
    std::string outPath = std::string(path).replace(path.rfind("day"), 3, "out");
    std::string packedPath = outPath + ".gz";
};

std::string pictureOf(const World& world) {
    return pictureOf(world.log) + pictureOf(world.other) + pictureOf(world.twins) +
           pictureOf(world.renamed) + pictureOf(world.mapped) +
           world.mapped.table().get_param_val("V5_FIELD_MAP");
}

template <class T>
Reason reasonOf(const vek::Result<T>& result) {
    return result ? Reason{} : result.reason();
}

struct Job {
    std::string name;
    Reason (*run)(World& world);
    bool isOnFiles = false;
    bool mayStopOnTheWay = false;
};

Reason changeFile(World& world) {
    auto log = vek::openToChange(world.path);
    if (!log) return log.reason();
    auto changed = log->set(log->at(1), "Notes", "a note that is longer than a short text is");
    return changed ? reasonOf(log->save(true)) : changed.reason();
}

Reason removeChosen(World& world) {
    auto chosen = world.log.choose(Choice().limit(2));
    return chosen ? reasonOf(world.log.removeRows(*chosen)) : chosen.reason();
}

Reason replaceInChosen(World& world) {
    auto chosen = world.log.choose();
    if (!chosen) return chosen.reason();
    return reasonOf(world.log.replaceText(*chosen, "", "A00", "another text of some length "));
}

// A choice takes memory where it is built, and throws there as texts do.
Reason choose(const Log& log, Choice (*build)()) {
    Choice choice;
    try {
        choice = build();
    } catch (const std::bad_alloc&) {
        return {Reason::outOfMemory};
    }
    return reasonOf(log.choose(choice));
}

Choice byParts() {
    return Choice().where("Notes", vek::Operator::empty).where("Name=A").any();
}

const std::vector<Job> jobs = {
    {"open a file", [](World& w) { return reasonOf(vek::open(w.path)); }, true},
    {"change a file", changeFile, true},
    {"choose by text", [](World& w) { return choose(w.log, [] { return Choice("Name=a0"); }); }},
    {"choose by number", [](World& w) { return choose(w.log, [] { return Choice("Take>=2"); }); }},
    {"choose by timecode",
     [](World& w) { return choose(w.log, [] { return Choice("Start<01:00:30:00"); }); }},
    {"choose by parts", [](World& w) { return choose(w.log, byParts); }},
    {"choose a time",
     [](World& w) { return choose(w.log, [] { return Choice().at("01:00:15:00"); }); }},
    {"choose tagged rows",
     [](World& w) { return choose(w.log, [] { return Choice().tagged().limit(1).offset(1); }); }},
    {"choose in order",
     [](World& w) { return choose(w.log, [] { return Choice().order("Name,Take").reverse(); }); }},
    {"choose unique values",
     [](World& w) { return choose(w.log, [] { return Choice().unique("Name"); }); }},
    {"choose duplicates",
     [](World& w) { return choose(w.log, [] { return Choice().duplicates("Name"); }); }},
    {"set a cell",
     [](World& w) {
         return reasonOf(w.log.set(w.log.at(2), "Take", "a text of more than sixteen bytes"));
     }},
    {"replace text", replaceInChosen, false, true},
    {"tag a row", [](World& w) { return reasonOf(w.log.setTagged(w.log.at(1), true)); }},
    {"tag a row of a log without tags",
     [](World& w) { return reasonOf(w.other.setTagged(w.other.at(1), true)); }, false, true},
    {"add a column to a log with a field map",
     [](World& w) { return reasonOf(w.mapped.addColumn("a column of quite a long name")); }, false,
     true},
    {"remove a column of a log with a field map",
     [](World& w) { return reasonOf(w.mapped.removeColumn(w.mapped.columns().at(0))); }, false,
     true},
    {"rename a column of a log with a field map",
     [](World& w) {
         return reasonOf(w.mapped.renameColumn(w.mapped.columns().at(0), "a name that is long"));
     },
     false, true},
    {"add a row", [](World& w) { return reasonOf(w.log.addRow()); }},
    {"remove rows", removeChosen},
    {"add a column",
     [](World& w) { return reasonOf(w.log.addColumn("a column of quite a long name")); }},
    {"find a column of a cell",
     [](World& w) {
         const bool isFound = w.log.at(0)["take"] == "1" && w.log.at(0)["no such column"].empty();
         return Reason{isFound && w.log.at(0).isTagged() ? Reason::none : Reason::unreadable};
     }},
    {"remove a column",
     [](World& w) { return reasonOf(w.log.removeColumn(w.log.columns().at(1))); }},
    {"rename a column",
     [](World& w) {
         return reasonOf(w.log.renameColumn(w.log.columns().at(1), "another name that is long"));
     }},
    {"remove a column of a name that another one has",
     [](World& w) { return reasonOf(w.twins.removeColumn(w.twins.columns().at(2))); }},
    {"remove a column without a name",
     [](World& w) { return reasonOf(w.twins.removeColumn(w.twins.columns().at(3))); }},
    {"add a column of a name that another one had",
     [](World& w) { return reasonOf(w.renamed.addColumn("a name that is quite long")); }, false,
     true},
    {"read a cell by a number behind a name",
     [](World& w) {
         const bool isFound = w.twins.at(0)["Reel#2"] == "3" && w.twins.at(0)["Reel"].empty();
         return Reason{isFound ? Reason::none : Reason::unreadable};
     }},
    {"rename a column of a name that another one has",
     [](World& w) {
         return reasonOf(w.twins.renameColumn(w.twins.columns().at(0), "a name that is long"));
     }},
    {"set a parameter",
     [](World& w) { return reasonOf(w.log.setParameter("Project", "a value that is quite long")); },
     false, true},
    {"replace a parameter",
     [](World& w) { return reasonOf(w.mapped.setParameter("Day", "a value that is quite long")); },
     false, true},
    {"save as another file", [](World& w) { return reasonOf(w.log.saveAs(w.outPath)); }, true},
    {"save as a packed file", [](World& w) { return reasonOf(w.log.saveAs(w.packedPath)); }, true},
    {"compare", [](World& w) { return reasonOf(vek::compare(w.log, w.other, "")); }},
    {"compare by a key", [](World& w) { return reasonOf(vek::compare(w.log, w.other, "Take")); }},
};

class MemoryEnds : public testing::Test {
protected:
    static void SetUpTestSuite() { DiskFlush::isOn = false; }
    static void TearDownTestSuite() {
        DiskFlush::isOn = true;
        std::printf("%u failures of memory in operations on logs\n", points_);
    }

    // False when the work asked for fewer allocations than n. What it is told, it must say.
    template <class Work>
    static bool fail(unsigned n, FailingAllocator::Failing failing, Work work, Reason& reason) {
        FailingAllocator allocator(n, failing);
        reason = work();
        return allocator.fired();
    }

    template <class Check>
    static void failEach(Check check) {
        for (auto failing :
             {FailingAllocator::Failing::once, FailingAllocator::Failing::fromThereOn}) {
            for (unsigned n = 1; check(n, failing) && !HasFailure(); n += step(n)) ++points_;
        }
    }

    // The first ones each and then some of them, where there is no time for all.
    static unsigned step(unsigned n) {
        static const bool isWholeRun = std::getenv("VEKDB_TEST_WHOLE") != nullptr;
        return isWholeRun || n < 24 ? 1 : 7;
    }

    static void expectMemoryNamed(const Reason& reason, const std::string& name, unsigned n) {
        EXPECT_TRUE(reason.kind == Reason::none || reason.kind == Reason::outOfMemory)
            << name << ", allocation " << n << ": " << reason.text();
    }

    void expectOldFiles(const std::string& name) const {
        EXPECT_EQ(folder_.read("day.csv"), csv) << name;
        EXPECT_EQ(folder_.read("out.csv"), "older") << name;
    }

    static inline unsigned points_ = 0;
    const Quiet quiet_;
    const TempDir folder_;
};

TEST_F(MemoryEnds, InTheReadersOfEveryFormat) {
    for (const Sample& sample : samples()) {
        vek::OpenOptions options;
        options.format = sample.format;
        const std::string whole = pictureOf(*vek::openText(sample.text, "log", options));
        failEach([&](unsigned n, FailingAllocator::Failing failing) {
            const CountingAllocator counting;
            Reason reason;
            std::string read;
            const bool fired = fail(
                n, failing, [&] { return reasonOf(vek::openText(sample.text, "log", options)); },
                reason);
            expectMemoryNamed(reason, std::string(nameOf(sample.format)), n);
            reason = {};
            EXPECT_EQ(0, counting.liveBlocks()) << nameOf(sample.format) << " " << n;
            return fired;
        });
        EXPECT_EQ(whole, pictureOf(*vek::openText(sample.text, "log", options)));
    }
}

TEST_F(MemoryEnds, InTheWritersOfEveryFormat) {
    const Log log = *vek::openText(csv, "day.csv");
    for (Format format :
         {Format::table, Format::csv, Format::tsv, Format::json, Format::jsonl, Format::ale,
          Format::edl, Format::otio, Format::markdown, Format::html, Format::xlsx}) {
        vek::SaveOptions options;
        options.rate = "25";
        std::string whole;
        const Reason expected = reasonOf(log.write(whole, format, options));
        failEach([&](unsigned n, FailingAllocator::Failing failing) {
            Reason reason;
            std::string text;
            const bool fired = fail(
                n, failing, [&] { return reasonOf(log.write(text, format, options)); }, reason);
            if (reason.kind == expected.kind) {
                EXPECT_EQ(whole, text) << nameOf(format) << ", allocation " << n;
            } else {
                EXPECT_EQ(reason.kind, Reason::outOfMemory) << nameOf(format) << reason.text();
            }
            return fired;
        });
    }
}

TEST_F(MemoryEnds, InOperationsThatLeaveTheLogAsItWas) {
    for (const Job& job : jobs) {
        std::string done;
        {
            World world(folder_, job.isOnFiles);
            ASSERT_EQ(job.run(world).text(), "") << job.name;
            done = pictureOf(world);
        }
        failEach([&](unsigned n, FailingAllocator::Failing failing) {
            World world(folder_, job.isOnFiles);
            const std::string before = pictureOf(world);
            Reason reason;
            const bool fired = fail(
                n, failing, [&] { return job.run(world); }, reason);
            expectMemoryNamed(reason, job.name, n);
            const std::string after = pictureOf(world);
            if (reason.kind == Reason::none || !job.mayStopOnTheWay) {
                EXPECT_EQ(reason.kind == Reason::none ? done : before, after)
                    << job.name << ", allocation " << n;
            }
            if (reason.kind != Reason::none) {
                if (job.isOnFiles) expectOldFiles(job.name);
                if (!job.mayStopOnTheWay) {
                    EXPECT_EQ(job.run(world).text(), "") << job.name;
                    EXPECT_EQ(done, pictureOf(world)) << job.name;
                }
            }
            return fired;
        });
    }
}

TEST_F(MemoryEnds, LosesNoneOfIt) {
    for (const Job& job : jobs) {
        {
            World world(folder_, job.isOnFiles);
            job.run(world);
        }  // what is made once in a process is made now
        for (const unsigned n : {0u, 1u, 2u, 3u, 5u, 8u, 13u, 21u, 34u, 55u}) {
            const CountingAllocator counting;
            {
                World world(folder_, job.isOnFiles);
                Reason reason;
                fail(
                    n, FailingAllocator::Failing::once, [&] { return job.run(world); }, reason);
            }
            EXPECT_EQ(0, counting.liveBlocks()) << job.name << ", allocation " << n;
        }
    }
}

}  // namespace
