#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "testing/deferral.h"
#include "testing/random.h"
#include "testing/views.h"
#include "views/ranked_set.h"
#include "views/view_index.h"

namespace {

using testing_support::Random;

TEST(RankedSet, CountsAndFindsAsAPlainListDoes) {
    Random random;
    for (std::uint32_t bound : {1u, 63u, 64u, 65u, 511u, 512u, 513u, 5000u}) {
        RankedSet set(bound);
        std::vector<std::uint32_t> plain(bound);
        for (std::uint32_t i = 0; i < bound; ++i) plain[i] = i;
        while (!plain.empty()) {
            ASSERT_EQ(plain.size(), set.size());
            const std::size_t at = random.below(plain.size());
            ASSERT_EQ(plain[at], set.nth(static_cast<std::uint32_t>(at)));
            ASSERT_EQ(at, set.countBelow(plain[at]));
            ASSERT_TRUE(set.contains(plain[at]));
            ASSERT_EQ(plain.size(), set.countBelow(bound));
            set.erase(plain[at]);
            ASSERT_FALSE(set.contains(plain[at]));
            plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(at));
            if (bound > 1000 && plain.size() > 20 && random.oneIn(2)) {
                set.erase(plain.back());
                plain.pop_back();
            }
        }
    }
}

// Two indexes that are given the same operations, of which one defers at once.
struct BothWays {
    template <class Operation>
    void each(Operation operation) {
        {
            const DeferralFrom plainOnly(DeferralFrom::never, 0);
            operation(plain);
        }
        const DeferralFrom atOnce(1, 0);
        operation(deferring);
    }
    // Reading settles after a while, so only some steps are compared in full.
    void expectSame(int step) {
        ASSERT_EQ(plain.count(), deferring.count()) << step;
        ASSERT_EQ(plain.capacity(), deferring.capacity()) << step;
        for (int i = 0; i < plain.count(); ++i) {
            ASSERT_EQ(plain.sourceRow(i), deferring.sourceRow(i)) << step << " row " << i;
            ASSERT_EQ(plain.tag(i), deferring.tag(i)) << step << " row " << i;
        }
        for (unsigned i = 0; i < plain.capacity(); ++i) {
            ASSERT_EQ(plain.slotTag(i), deferring.slotTag(i)) << step << " slot " << i;
        }
    }
    ViewIndex plain, deferring;
};

// As a view does it: every row that shows the target goes, one after the other; `stop` leaves
// the drop in the middle.
void dropAll(ViewIndex& index, unsigned target, int stop, std::vector<int>& places) {
    int row = index.lowerAbove(target, 0);
    while (row < index.count() && stop-- != 0) {
        index.remove(row, 1);
        places.push_back(row);
        row = index.lowerAbove(target, row);
    }
}

void fill(BothWays& both, Random& random) {
    const int rows = static_cast<int>(random.below(60));
    const bool identity = random.oneIn(3);
    for (int i = 0; i < rows; ++i) {
        const unsigned source = identity ? unsigned(i) : unsigned(random.below(rows + 5));
        const bool tag = random.oneIn(2);
        both.each([&](ViewIndex& index) {
            index.append(source);
            index.setTag(i, tag);
        });
    }
}

void randomStep(BothWays& both, Random& random) {
    const int count = both.plain.count();
    const int at = static_cast<int>(random.below(count + 1));
    switch (random.below(12)) {
        default: {
            const unsigned target = unsigned(random.below(count + 4)) - (random.oneIn(9) ? 5 : 0);
            const int stop = random.oneIn(10) ? static_cast<int>(random.below(2)) : -1;
            std::vector<int> plain, deferred;
            std::vector<int>* places = &plain;
            both.each([&](ViewIndex& index) {
                dropAll(index, target, stop, *places);
                places = &deferred;
            });
            EXPECT_EQ(plain, deferred);
            break;
        }
        case 0:
        case 1:
        case 2: {
            if (at == count) break;
            const int n = 1 + static_cast<int>(random.below(std::min(count - at, 4)));
            both.each([&](ViewIndex& index) { index.remove(at, n); });
            break;
        }
        case 3:
            both.each([&](ViewIndex& index) { index.setTag(at, true); });
            break;
        case 4:
            if (random.oneIn(4)) both.each([&](ViewIndex& index) { index.append(unsigned(at)); });
            break;
        case 5: {
            if (!random.oneIn(6)) break;
            both.each([&](ViewIndex& index) {
                int gap = index.openGap(at, 2);
                index.setSourceRow(gap, 7);
                index.setSourceRow(gap + 1, 8);
            });
            break;
        }
        case 6:
            if (random.oneIn(6)) both.each([&](ViewIndex& index) { index.invertTags(); });
            break;
        case 7:
            if (random.oneIn(6)) both.each([&](ViewIndex& index) { index.sizeFor(count); });
            break;
    }
}

TEST(DeferredRemovals, CannotBeToldFromRemovalsOneByOne) {
    Random random;
    for (int round = 0; round < 1500 && !testing::Test::HasFailure(); ++round) {
        BothWays both;
        fill(both, random);
        for (int step = 0; step < 40; ++step) {
            randomStep(both, random);
            ASSERT_EQ(both.plain.count(), both.deferring.count());
            ASSERT_EQ(both.plain.capacity(), both.deferring.capacity());
            if (random.oneIn(8)) both.expectSame(step);
        }
        both.expectSame(-1);
    }
}

TEST(DeferredRemovals, ShowTheHalfDoneDropAsItStands) {
    BothWays both;
    for (unsigned source : {5u, 3u, 9u, 3u, 4u, 8u}) {
        both.each([&](ViewIndex& index) { index.append(source); });
    }
    both.each([](ViewIndex& index) {
        ASSERT_EQ(1, index.lowerAbove(3, 0));
        index.remove(1, 1);
        ASSERT_EQ(2, index.lowerAbove(3, 1));
        EXPECT_EQ(4u, index.sourceRow(0));
        EXPECT_EQ(8u, index.sourceRow(1));
        EXPECT_EQ(3u, index.sourceRow(2));
        EXPECT_EQ(4u, index.sourceRow(3));
        EXPECT_EQ(8u, index.sourceRow(4));
    });
    both.expectSame(0);
}

TEST(DeferredRemovals, AreNotTriedOnRowsFarApart) {
    BothWays both;
    for (unsigned source : {1u, 4000000000u, 3u}) {
        both.each([&](ViewIndex& index) { index.append(source); });
    }
    std::vector<int> places;
    both.each([&](ViewIndex& index) { dropAll(index, 1, -1, places); });
    both.expectSame(0);
    EXPECT_EQ((std::vector<int>{0, 0}), places);
}

// A table, views over it and stacked, and listeners that change them in the middle of a notice.
// Everything it does is drawn from the seed, so that two worlds of a seed do the same.
class MeddledStack {
public:
    explicit MeddledStack(std::uint64_t seed)
        : random_(seed), table_(numberedTable(random_.between(1, 40))) {
        addView(nullptr);
        addView(views_[0].get());
        addView(nullptr);
        addView(views_[1].get());
        for (int i = 0; i < random_.between(1, 3); ++i) {
            ears_.push_back(std::make_unique<Ear>(*random_.pick(views_), "recordsDeleted",
                                                  [this](const NotifyMsg& m) { hear(m); }));
        }
        ears_.push_back(std::make_unique<Ear>(*table_, "recordsDeleted",
                                              [this](const NotifyMsg& m) { hear(m); }));
    }

    std::string run() {
        for (int step = 0; step < 12; ++step) {
            try {
                depth_ = 0;
                change();
            } catch (const std::runtime_error&) {
                log_ += "!";
            }
            if (random_.oneIn(4)) readAll();
        }
        readAll();
        return log_;
    }

private:
    using Ear = WhenTold<std::function<void(const NotifyMsg&)>>;

    void addView(VDBViewRep* base) {
        VDBView view(table_.get());
        view->baseView(base);
        const int rows = static_cast<int>(view->source()->get_num_records());
        const bool all = random_.oneIn(2);
        for (int i = 0; i < rows; ++i) {
            view->append(all ? i : random_.between(0, rows + 1));
            view->set_tag(static_cast<unsigned>(i), random_.between(0, 1));
        }
        views_.push_back(view);
    }

    void hear(const NotifyMsg& message) {
        log_.append("<").append(message.text().c_str()).append(">");
        ++depth_;
        if (random_.oneIn(8)) readAll();
        if (random_.oneIn(12)) throw std::runtime_error("a listener's own");
        if (depth_ < 4 && random_.oneIn(3)) change();
        --depth_;
    }

    void change() {
        VDBViewRep& view = *random_.pick(views_);
        const int rows = static_cast<int>(view.get_num_records());
        const int at = random_.between(-1, rows);
        const int n = random_.between(0, 4);
        switch (random_.below(12)) {
            case 0:
                return view.deleteRecords(at, n);
            case 1:
                return view.remove(at, n);
            case 2:
                return view.removeRecordsFromBaseView(at, n);
            case 3:
                log_ += std::to_string(view.deleteTagged());
                return;
            case 4:
                log_ += std::to_string(view.removeTagged());
                return;
            case 5:
                return view.set_tag(static_cast<unsigned>(at), n);
            case 6:
                return view.invert_tag(static_cast<unsigned>(at));
            case 7:
                log_ += std::to_string(view.sourceRow(at));
                return;
            case 8:
                log_ += std::to_string(view.displayRecordsAt(at, n, at));
                return;
            case 9:
                if (random_.oneIn(3)) view.displayAllRecords();
                return;
            default:
                return table_->delete_records(static_cast<unsigned>(at), n);
        }
    }

    void readAll() {
        for (const VDBView& view : views_) {
            log_.append("[").append(rowsOf(*view)).append("|").append(tagsOf(*view)).append("|");
            for (unsigned i = 0; i < view->indexCapacity(); ++i) {
                log_ += std::to_string(view->slotTag(i));
            }
            log_ += "]";
        }
    }

    testing_support::Random random_;
    std::unique_ptr<vekdb> table_;
    std::vector<VDBView> views_;
    std::vector<std::unique_ptr<Ear>> ears_;
    std::string log_;
    int depth_ = 0;
};

TEST(DeferredRemovals, CannotBeToldByListenersThatMeddle) {
    Random random;
    for (int round = 0; round < 300; ++round) {
        const std::uint64_t seed = random.seed() + static_cast<std::uint64_t>(round);
        std::string plain, deferred;
        {
            const DeferralFrom plainOnly(DeferralFrom::never, 0);
            plain = MeddledStack(seed).run();
        }
        {
            const DeferralFrom atOnce(1, 0);
            deferred = MeddledStack(seed).run();
        }
        ASSERT_EQ(plain, deferred) << "round " << round;
    }
}

}  // namespace
