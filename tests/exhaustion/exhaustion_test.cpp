// Memory ends at every allocation of every operation: once, and for good until the operation is
// over. Nothing crashes or leaks, what is left fits together, views follow their table, and the
// same operation gets through afterwards. More rows: VEKDB_EXHAUSTION_ROWS.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "exhaustion/scenarios.h"
#include "host/disk_flush.h"
#include "testing/deferral.h"
#include "testing/failing_allocator.h"
#include "testing/quiet.h"

namespace exhaustion {

namespace {

using testing_support::CountingAllocator;
using testing_support::FailingAllocator;
using testing_support::Quiet;
using Failing = FailingAllocator::Failing;

struct Way {
    const char* name;
    Kind kind;
    int deferFrom;
    unsigned blockBits;
};

constexpr Way ways[] = {
    {"made in memory", Kind::made, 1, 2},
    {"loaded from a file", Kind::loaded, DeferralFrom::never, 2},
    {"showing tagged rows", Kind::taggedShown, DeferralFrom::never, RowBlocks::Fill::mostBits},
};

unsigned rowsOfWorlds() {
    const char* set = std::getenv("VEKDB_EXHAUSTION_ROWS");
    return set != nullptr ? static_cast<unsigned>(std::atoi(set)) : 24;
}

struct Outcome {
    bool fired = false;
    bool threw = false;
};

Outcome attempt(const Scenario& scenario, World& world, unsigned n, Failing failing) {
    FailingAllocator allocator(n, failing);
    Outcome outcome;
    try {
        scenario.run(world);
    } catch (const Quor::Exception::BadAlloc&) {
        outcome.threw = true;
    }
    outcome.fired = allocator.fired();
    return outcome;
}

// Records may be made where deleted ones stood, but not in scenarios that ask this.
std::vector<const dbrecord*> stillIn(const std::vector<const dbrecord*>& before,
                                     const vekdb& table) {
    const auto shown = shownBy(table);
    const std::set<const dbrecord*> alive(shown.begin(), shown.end());
    std::vector<const dbrecord*> left;
    std::copy_if(before.begin(), before.end(), std::back_inserter(left),
                 [&](const dbrecord* record) { return alive.count(record) > 0; });
    return left;
}

class Point {
public:
    Point(const Scenario& scenario, const Way& way) : scenario_(scenario), way_(way) {}

    // False when the operation asked for fewer allocations than n.
    bool fail(unsigned n, Failing failing) {
        World world(way_.kind, rowsOfWorlds());
        const std::string before = pictureOf(world);
        const auto shown = shownBy(*world.bystander);
        const Outcome outcome = attempt(scenario_, world, n, failing);
        if (!outcome.fired) {
            return false;
        }
        SCOPED_TRACE(std::string(scenario_.name) + ", " + way_.name + ", allocation " +
                     std::to_string(n) + (failing == Failing::once ? "" : " and all behind it"));
        EXPECT_EQ("", faultsOf(world));
        if (scenario_.after == After::asItWas && outcome.threw) {
            EXPECT_EQ(before, pictureOf(world));
        }
        if (scenario_.below == Below::stays && way_.kind != Kind::taggedShown) {
            EXPECT_EQ(stillIn(shown, *world.table), shownBy(*world.bystander));
        }
        retry(world, outcome.threw);
        return true;
    }

private:
    void retry(World& world, bool wanted) {
        if (wanted) {
            EXPECT_NO_THROW(scenario_.run(world));
        }
        EXPECT_EQ("", faultsOf(world));
        if (scenario_.after == After::asItWas) {
            EXPECT_EQ(done(), pictureOf(world));
        }
    }

    // What the operation makes of a world where memory lasts.
    const std::string& done() {
        if (!done_) {
            World world(way_.kind, rowsOfWorlds());
            scenario_.run(world);
            done_ = pictureOf(world);
        }
        return *done_;
    }

    const Scenario& scenario_;
    const Way& way_;
    std::optional<std::string> done_;
};

unsigned failEach(const Scenario& scenario, const Way& way) {
    unsigned points = 0;
    Point point(scenario, way);
    for (const Failing failing : {Failing::once, Failing::fromThereOn}) {
        for (unsigned n = 1; point.fail(n, failing) && !testing::Test::HasFailure(); ++n) {
            ++points;
        }
    }
    return points;
}

// Blocks that live on after a world and its operation failed and went.
long leftOf(const Scenario& scenario, const Way& way, unsigned n) {
    const CountingAllocator counting;
    {
        World world(way.kind, rowsOfWorlds());
        attempt(scenario, world, n, Failing::once);
    }
    return counting.liveBlocks();
}

class Exhaustion : public testing::TestWithParam<std::size_t> {
protected:
    static void SetUpTestSuite() { DiskFlush::isOn = false; }
    static void TearDownTestSuite() {
        DiskFlush::isOn = true;
        std::printf("%u failures of memory in %u operations\n", points_, operations_);
    }

    static inline unsigned points_ = 0;
    static inline unsigned operations_ = 0;
    const Quiet quiet_;
};

TEST_P(Exhaustion, LeavesAWorldThatFitsTogether) {
    const Scenario& scenario = scenarios()[GetParam()];
    ++operations_;
    for (const Way& way : ways) {
        const DeferralFrom deferral(way.deferFrom, 0);
        const SmallBlocks blocks(way.blockBits);
        points_ += failEach(scenario, way);
    }
}

TEST_P(Exhaustion, LosesNoMemory) {
    const Scenario& scenario = scenarios()[GetParam()];
    for (const Way& way : ways) {
        leftOf(scenario, way, 0);  // what is made once in a process is made now
        for (const unsigned n : {0u, 1u, 2u, 3u, 5u, 8u, 13u, 21u, 34u}) {
            EXPECT_EQ(0, leftOf(scenario, way, n)) << scenario.name << ", " << way.name << ' ' << n;
        }
    }
}

std::string nameOf(const testing::TestParamInfo<std::size_t>& info) {
    std::string name = std::to_string(info.param) + '_' + scenarios()[info.param].name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Every, Exhaustion, testing::Range(std::size_t{0}, scenarios().size()),
                         nameOf);

}  // namespace

}  // namespace exhaustion
