#include "formats/checking/problem_list.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using testing::ElementsAre;
using vek::Problem;
using vek::formats::ProblemList;

namespace {

Problem problemAt(std::size_t line, const std::string& found) {
    return {line, "Take", found, "a number", "it stays"};
}

std::vector<std::string> foundIn(const ProblemList& list) {
    std::vector<std::string> found;
    for (const Problem& problem : list) found.push_back(problem.found);
    return found;
}

}  // namespace

TEST(ProblemList, PutsThoseOfALineByTheirGroupsAndThenAsTheyCame) {
    ProblemList list;
    list.add(2, problemAt(7, "late group"));
    list.add(1, problemAt(9, "late line"));
    list.add(1, problemAt(7, "first"));
    list.add(1, problemAt(7, "second"));
    list.add(3, problemAt(2, "early line"));
    list.sort();
    EXPECT_THAT(foundIn(list),
                ElementsAre("early line", "first", "second", "late group", "late line"));
}

TEST(ProblemList, GivesEachBackAsItWas) {
    ProblemList list;
    EXPECT_TRUE(list.empty());
    Problem problem = problemAt(3, "x");
    problem.isDamage = true;
    list.add(0, problem);
    problem.line = 4;
    problem.isDamage = false;
    list.add(0, problem);
    ASSERT_EQ(2u, list.size());
    EXPECT_EQ(3u, list[0].line);
    EXPECT_EQ("Take", list[0].column);
    EXPECT_EQ("a number", list[0].expected);
    EXPECT_EQ("it stays", list[0].outcome);
    EXPECT_TRUE(list[0].isDamage);
    EXPECT_FALSE(list[1].isDamage);
}
