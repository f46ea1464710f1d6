#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include "model/budget.h"
#include "model/script.h"
#include "model/side_by_side.h"
#include "testing/deferral.h"

// Random scripts are run against the library and against the plain model, and everything that
// can be seen is compared after every step: rows, tags, the tag bytes behind the last row,
// capacities, results, and notices in their order with what a listener can read in them.
//
// Of the scripts one half defers removals at once, so that small views do, and the other as the
// library does by itself. VEKDB_MODEL_SCRIPT, a line printed by a failure, is run both ways
// instead of random scripts.

namespace {

using namespace script;

using Weights = std::vector<Weight>;

const Weights tableWeights = {
    {Op::addRows, 4},          {Op::insertRows, 4},       {Op::deleteRows, 5},
    {Op::deleteTaggedRows, 3}, {Op::setRowTag, 12},       {Op::invertRowTag, 5},
    {Op::setAllRowTags, 1},    {Op::invertAllRowTags, 2}, {Op::showTagsOnly, 5},
    {Op::setValue, 12},        {Op::setEqualValue, 4},    {Op::setCookie, 3},
    {Op::copyRow, 2},          {Op::sortTable, 6},        {Op::sortField, 3},
    {Op::sortFields, 3},       {Op::sortOffset, 2},       {Op::query, 4},
    {Op::tagMatchingRows, 5},  {Op::tagAllDifferent, 2},  {Op::findFirst, 4},
    {Op::rowByIdentity, 4},    {Op::beginUpdate, 1},      {Op::addToUpdate, 2},
    {Op::endUpdate, 2},        {Op::addColumn, 2},        {Op::removeColumn, 1},
    {Op::renameColumn, 1},     {Op::setType, 1},          {Op::parameter, 3},
    {Op::clearChanged, 2},     {Op::rowNumbers, 5},       {Op::copyTable, 1},
    {Op::mergeTables, 1},      {Op::listen, 2},           {Op::stopListening, 1},
};

const Weights viewWeights = {
    {Op::addRows, 3},
    {Op::insertRows, 3},
    {Op::deleteRows, 10},
    {Op::deleteTaggedRows, 4},
    {Op::setRowTag, 8},
    {Op::invertAllRowTags, 1},
    {Op::showTagsOnly, 1},
    {Op::setValue, 5},
    {Op::setCookie, 2},
    {Op::sortTable, 2},
    {Op::sortFields, 1},
    {Op::query, 3},
    {Op::foreignNotice, 1},
    {Op::parameter, 1},
    {Op::newView, 6},
    {Op::newStackedView, 8},
    {Op::restack, 2},
    {Op::rebind, 1},
    {Op::dropView, 2},
    {Op::copyView, 3},
    {Op::tagSubview, 3},
    {Op::copyWithNewBase, 1},
    {Op::convert, 1},
    {Op::listen, 3},
    {Op::stopListening, 2},
    {Op::append, 4},
    {Op::buildIndex, 4},
    {Op::clearView, 1},
    {Op::sizeIndex, 1},
    {Op::viewParameter, 1},
    {Op::parametersFrom, 1},
    {Op::viewSetTag, 16},
    {Op::viewInvertTag, 8},
    {Op::tagAll, 2},
    {Op::invertAllTags, 3},
    {Op::tagMatches, 4},
    {Op::tagDuplicatesOrdered, 2},
    {Op::tagDuplicates, 3},
    {Op::viewTagAllDifferent, 1},
    {Op::tagBase, 3},
    {Op::displayAt, 8},
    {Op::displayMatch, 3},
    {Op::displayCookies, 5},
    {Op::displayCookieSet, 1},
    {Op::displayTagged, 4},
    {Op::displayAll, 10},
    {Op::displayAllWithBaseTags, 2},
    {Op::displayAllWithTagField, 2},
    {Op::displayAllFrom, 5},
    {Op::insertBlank, 5},
    {Op::viewAddRecords, 3},
    {Op::viewDelete, 8},
    {Op::viewDeleteTagged, 5},
    {Op::viewRemove, 8},
    {Op::removeTagged, 5},
    {Op::removeNonTagged, 3},
    {Op::removeFromBase, 5},
    {Op::viewDeleteTaggedRecords, 2},
    {Op::viewShowTagsOnly, 1},
    {Op::viewSort, 5},
    {Op::viewSortField, 3},
    {Op::viewQuery, 1},
    {Op::viewSetValue, 3},
    {Op::viewSetCookie, 1},
    {Op::viewQuestions, 6},
};

// Deleting and removing, next to nothing else, with few listeners: where the library takes
// many rows out at once.
const Weights deletionWeights = {
    {Op::addRows, 1},
    {Op::deleteRows, 10},
    {Op::deleteTaggedRows, 12},
    {Op::setRowTag, 12},
    {Op::invertAllRowTags, 3},
    {Op::newView, 6},
    {Op::newStackedView, 8},
    {Op::dropView, 1},
    {Op::listen, 1},
    {Op::stopListening, 3},
    {Op::append, 3},
    {Op::viewSetTag, 20},
    {Op::viewInvertTag, 10},
    {Op::invertAllTags, 4},
    {Op::tagBase, 5},
    {Op::displayAt, 6},
    {Op::displayAll, 12},
    {Op::displayAllFrom, 3},
    {Op::viewDelete, 10},
    {Op::viewDeleteTagged, 12},
    {Op::viewRemove, 8},
    {Op::removeTagged, 12},
    {Op::removeNonTagged, 6},
    {Op::removeFromBase, 8},
    {Op::viewSort, 3},
    {Op::viewShowTagsOnly, 1},
    {Op::insertBlank, 2},
};

// Takes out every step, and every row at the start, that the difference does not need.
Script minimised(Script script) {
    for (bool smaller = true; smaller;) {
        smaller = false;
        for (std::size_t i = script.steps.size(); i-- > 0;) {
            Script fewer = script;
            fewer.steps.erase(fewer.steps.begin() + static_cast<long>(i));
            if (runBoth(fewer)) {
                std::swap(script, fewer);
                smaller = true;
            }
        }
        Script lower = script;
        if (--lower.rows >= 0 && runBoth(lower)) {
            std::swap(script, lower);
            smaller = true;
        }
    }
    return script;
}

std::string report(const Script& script) {
    const Script least = minimised(script);
    const std::optional<Difference> difference = runBoth(least, true);
    std::ostringstream text;
    text << "replay with VEKDB_MODEL_SCRIPT='" << asText(least) << "'\nat step " << difference->step
         << " of " << least.steps.size() << "\n--- library\n"
         << difference->library << "\n--- model\n"
         << difference->model;
    return text.str();
}

int startingRows(Random& random) {
    const auto choice = static_cast<int>(random() % 100);
    return choice < 75 ? choice % 13 : 15 + choice % 60;
}

void expectNoDifference(const Script& script, const std::string& name) {
    ASSERT_FALSE(runBoth(script)) << name << ", " << report(script);
}

void expectNoDifferenceInSmallBlocks(const Script& script, const std::string& name) {
    const DeferralFrom atOnce(1, 0);
    const SmallBlocks small;
    expectNoDifference(script, name + " in small blocks, deferring at once");
}

void runScripts(const Weights& weights, int steps, double seconds) {
    if (const char* line = std::getenv("VEKDB_MODEL_SCRIPT")) {
        expectNoDifference(fromText(line), "script");
        expectNoDifferenceInSmallBlocks(fromText(line), "script");
        return;
    }
    Budget budget(seconds, 100);
    while (budget.goesOn() && !testing::Test::HasFatalFailure()) {
        const std::uint64_t seed = budget.nextSeed();
        Random random(seed);
        const Script script = randomScript(random, weights, startingRows(random), steps);
        const std::string name = "seed " + std::to_string(seed);
        if (seed % 4 == 0) {
            const SmallBlocks small;
            expectNoDifference(script, name + " in small blocks");
        } else if (seed % 2 == 0) {
            expectNoDifferenceInSmallBlocks(script, name);
        } else {
            expectNoDifference(script, name);
        }
    }
}

}  // namespace

TEST(RandomScripts, TablesDoWhatThePlainModelDoes) {
    runScripts(tableWeights, 40, 4);
}

TEST(RandomScripts, StacksOfViewsDoWhatThePlainModelDoes) {
    runScripts(viewWeights, 40, 8);
}

TEST(RandomScripts, DeletionsAndRemovalsDoWhatThePlainModelDoes) {
    runScripts(deletionWeights, 40, 4);
}

TEST(RandomScripts, ViewsWhoseTableGoesDoWhatThePlainModelDoes) {
    Weights weights = viewWeights;
    weights.push_back({Op::tableGoes, 8});
    runScripts(weights, 40, 2);
}
