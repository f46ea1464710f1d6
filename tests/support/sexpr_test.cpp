#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <vekdb/host/grow_string.h>
#include <vekdb/support/sexpr.h>
#include "testing/tables.h"

namespace {

/// An element that shows when it is destroyed.
class Noted : public SExprElt {
public:
    Noted(const char* name, std::string& log) : SExprElt(columnReference), name_(name), log_(log) {}
    ~Noted() override { log_ += name_; }
    void asString(GrowString& out) const override { out.append(name_.c_str()); }

private:
    std::string name_;
    std::string& log_;
};

std::string text(const SExpr* list) {
    GrowString out;
    SExpr::print(list, out);
    return static_cast<const char*>(out);
}

std::unique_ptr<SExpr> listOfColumns(VDBBase& table) {
    return std::make_unique<SExpr>(new SExprRef(&table, 0),
                                   new SExpr(new SExprRef(&table, 1)));
}

}  // namespace

TEST(SExpr, ReferencesPrintTheNamesOfTheirColumns) {
    vekdb table(textColumns({"Reel", "Scene"}));
    const auto list = listOfColumns(table);
    EXPECT_EQ("(Reel Scene)", text(list.get()));
    GrowString out;
    out.append("fields: ");
    list->asString(out);
    EXPECT_STREQ("fields: (Reel Scene)", out);
}

TEST(SExpr, ReferencesFollowARename) {
    vekdb table(textColumns({"Reel", "Scene"}));
    const auto list = listOfColumns(table);
    table.set_fieldname(1, "Take");
    EXPECT_EQ("(Reel Take)", text(list.get()));
}

TEST(SExpr, AReferenceWithoutATablePrintsVoidref) {
    SExpr list(new SExprRef(nullptr, 3));
    EXPECT_EQ("(voidref)", text(&list));
}

TEST(SExpr, AReferenceWhoseTableWentPrintsVoidref) {
    auto table = std::make_unique<vekdb>(textColumns({"Reel", "Scene"}));
    const auto list = listOfColumns(*table);
    const auto* first = static_cast<SExprRef*>(list->element);
    EXPECT_EQ(table.get(), first->table());
    table.reset();
    EXPECT_EQ(nullptr, first->table());
    EXPECT_EQ("(voidref voidref)", text(list.get()));
}

TEST(SExpr, AReferenceToAColumnThatIsNotThereAddsNothing) {
    vekdb table(textColumns({"Reel"}));
    SExpr list(new SExprRef(&table, 7), new SExpr(new SExprRef(&table, 0)));
    EXPECT_EQ("( Reel)", text(&list));
}

TEST(SExpr, AnOperatorPrintsItsNameAndABlank) {
    SExpr list(new SExprOperator);
    EXPECT_EQ("(op )", text(&list));
}

TEST(SExpr, ListsAreElementsOfLists) {
    vekdb table(textColumns({"Reel", "Scene"}));
    SExpr list(new SExprOperator, new SExpr(listOfColumns(table).release()));
    EXPECT_EQ("(op  (Reel Scene))", text(&list));
}

TEST(SExpr, TheEmptyListPrintsParentheses) {
    EXPECT_EQ("()", text(nullptr));
}

TEST(SExpr, ACellWithoutAnElementPrintsNothing) {
    SExpr list(nullptr, new SExpr(nullptr));
    EXPECT_EQ("( )", text(&list));
}

TEST(SExpr, KindsTellListsFromReferences) {
    EXPECT_EQ(1, SExpr().kind);
    EXPECT_EQ(0, SExprRef(nullptr, 0).kind);
    EXPECT_EQ(2, SExprOperator().kind);
}

TEST(SExpr, ReversingTurnsTheChainInPlace) {
    std::string log;
    auto* third = new SExpr(new Noted("c", log));
    auto* second = new SExpr(new Noted("b", log), third);
    auto* first = new SExpr(new Noted("a", log), second);
    std::unique_ptr<SExpr> list(first->reverse());
    EXPECT_EQ(third, list.get());
    EXPECT_EQ("(c b a)", text(list.get()));
    EXPECT_EQ(nullptr, first->next);
}

TEST(SExpr, ReversingASingleCellReturnsIt) {
    SExpr cell(new SExprOperator);
    EXPECT_EQ(&cell, cell.reverse());
    EXPECT_EQ(nullptr, cell.next);
}

TEST(SExpr, ReversingTheEmptyListGivesTheEmptyList) {
    EXPECT_EQ(nullptr, SExpr::reverse(nullptr));
}

TEST(SExpr, BuildingAtTheFrontAndReversingRestoresTheOrder) {
    std::string log;
    SExpr* head = nullptr;
    for (const char* name : {"a", "b", "c"}) {
        head = new SExpr(new Noted(name, log), head);
    }
    std::unique_ptr<SExpr> list(SExpr::reverse(head));
    EXPECT_EQ("(a b c)", text(list.get()));
}

TEST(SExpr, DestroyingTheHeadDestroysElementsFirstToLast) {
    std::string log;
    delete new SExpr(new Noted("a", log), new SExpr(new Noted("b", log),
                                                    new SExpr(new Noted("c", log))));
    EXPECT_EQ("abc", log);
}

TEST(SExpr, AListOfAMillionCellsIsDestroyedWithoutADeepStack) {
    SExpr* head = nullptr;
    for (int i = 0; i < 1000000; ++i) {
        head = new SExpr(nullptr, head);
    }
    head = SExpr::reverse(head);
    ASSERT_NE(nullptr, head->next);
    delete head;
}

TEST(SExprIterator, WalksFromBeforeTheHeadAndStartsAgainBehindTheEnd) {
    SExpr list(nullptr, new SExpr(nullptr));
    SExprIterator it(&list);
    EXPECT_EQ(nullptr, it.current);
    EXPECT_EQ(&list, (++it).current);
    EXPECT_EQ(list.next, (++it).current);
    EXPECT_EQ(nullptr, (++it).current);
    EXPECT_EQ(&list, (++it).current);
}

TEST(SExprIterator, AnEmptyListHasNoSteps) {
    SExprIterator it(nullptr);
    EXPECT_EQ(nullptr, (++it).current);
    EXPECT_EQ(nullptr, (++it).current);
}
