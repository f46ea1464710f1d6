#include <gmock/gmock.h>

#include <optional>
#include <string>

#include <vekdb/formats/log.h>

using testing::HasSubstr;

namespace {

constexpr const char* text =
    "Reel,Scene,Take,\"Notes, all\",Tag\nB,12,2,x,1\nA,12,10,y,0\nA,7,1,x,1\nB,7,,,\n";

// The takes of the rows that are meant, in their order.
std::string takes(const vek::Choice& choice) {
    auto rows = vek::openText(text, "day.csv")->choose(choice);
    if (!rows) return rows.reason().text();
    std::string out;
    for (vek::Row row : *rows) out += std::string(row["Take"]) + ",";
    return out;
}

}  // namespace

TEST(Choosing, TakesConditionsAsText) {
    EXPECT_EQ(takes("Scene=12"), "2,10,");
    EXPECT_EQ(takes(vek::Choice("Scene=12").where("Take>2")), "10,");
    EXPECT_EQ(takes(vek::Choice("Take==2").where("Take==1").any()), "2,1,");
}

TEST(Choosing, TakesConditionsThatAreBuilt) {
    EXPECT_EQ(takes(vek::Choice().where("Take", vek::Operator::greater, "2")), "10,");
    EXPECT_EQ(takes(vek::Choice().where("Take", vek::Operator::empty)), ",");
    EXPECT_EQ(takes(vek::Choice().where("Notes, all", vek::Operator::equal, "x")), "2,1,");
    EXPECT_EQ(takes(vek::Choice().where("Take", vek::Operator::matches, "^1")), "10,1,");
}

TEST(Choosing, OrdersByTextAndByNames) {
    EXPECT_EQ(takes(vek::Choice().order("Reel,Take")), "1,10,2,,");
    EXPECT_EQ(takes(vek::Choice().order(std::vector<std::string>{"Notes, all", "Take"})),
              "1,2,10,,");
    EXPECT_EQ(takes(vek::Choice().order("Take").reverse()), ",10,2,1,");
}

TEST(Choosing, CutsAPageAndTellsHowManyThereWere) {
    auto log = vek::openText(text, "day.csv");
    auto rows = log->choose(vek::Choice().order("Take").offset(1).limit(2));
    EXPECT_EQ(rows->size(), 2u);
    EXPECT_EQ(rows->matched(), 4u);
    EXPECT_EQ(rows->at(0)["Take"], "2");
    EXPECT_EQ(log->choose(vek::Choice().offset(9).limit(static_cast<std::size_t>(-1)))->size(), 0u);
    EXPECT_EQ(log->choose(vek::Choice().offset(1).limit(static_cast<std::size_t>(-1)))->size(), 3u);
}

TEST(Choosing, FindsTaggedUniqueAndRepeatedRows) {
    EXPECT_EQ(takes(vek::Choice().tagged()), "2,1,");
    EXPECT_EQ(takes(vek::Choice().unique("Reel")), "2,10,");
    EXPECT_EQ(takes(vek::Choice().duplicates("Notes, all")), "2,1,");
}

TEST(Choosing, CountsNoRowsThatWentOut) {
    auto log = vek::openText("Reel,Take\nA,1\nA,2\nB,3\nB,4\nC,5\n", "day.csv");
    ASSERT_TRUE(log);
    ASSERT_TRUE(log->removeRows(*log->choose(vek::Choice("Take==1").where("Take==4").any())));
    auto unique = log->choose(vek::Choice().unique("Reel"));
    ASSERT_TRUE(unique);
    ASSERT_EQ(unique->size(), 3u);
    EXPECT_EQ(unique->at(0)["Take"], "2");
    EXPECT_EQ(log->choose(vek::Choice().duplicates("Reel"))->size(), 0u);
    EXPECT_EQ(log->choose(vek::Choice().order("Take").reverse())->at(2)["Take"], "2");
}

TEST(Choosing, SaysWhatCannotBeLookedUp) {
    EXPECT_THAT(takes("Sceen=12"), HasSubstr("did you mean Scene?"));
    EXPECT_THAT(takes("nothing"), HasSubstr("is no condition"));
    EXPECT_THAT(takes("Take~("), HasSubstr("is no regular expression"));
    EXPECT_THAT(takes(vek::Choice().at("noon")), HasSubstr("noon"));
    EXPECT_THAT(takes(vek::Choice().order("Reel,Nothing")), HasSubstr("Nothing"));
}

TEST(Choosing, AViewKeepsAliveWhatItShows) {
    std::optional<vek::Result<vek::Log>> log(vek::openText(text, "day.csv"));
    vek::View rows = *(*log)->choose("Scene=7");
    vek::Row row = rows.at(0);
    log.reset();
    EXPECT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows.at(0)["Take"], "1");
    std::string out;
    EXPECT_TRUE(rows.write(out, vek::Format::tsv));
    rows = *vek::openText("A\n1\n", "a.csv")->choose();
    EXPECT_EQ(row["Reel"], "A");
}

TEST(Choosing, AnswersPlacesThatAreNotThereWithNothing) {
    auto log = vek::openText(text, "day.csv");
    EXPECT_EQ(log->at(4)["Take"], "");
    EXPECT_EQ(log->choose()->at(9)["Take"], "");
    EXPECT_EQ(log->at(0)["Nothing"], "");
    EXPECT_EQ(log->at(0).at(99), "");
    EXPECT_EQ(log->column("Take")->at(99), "");
}
