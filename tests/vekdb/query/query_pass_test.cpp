#include "vekdb/query/query_pass.h"

#include <gtest/gtest.h>

#include <vekdb/record.h>

namespace {

class QueryPasses : public testing::Test {
protected:
    QueryPasses() {
        for (const char* name : {"Reel", "Start time", "End time"}) {
            columns_.append({name, DBFieldTypes::text});
        }
        columns_.flagSpecialLabels();
    }

    void ask(unsigned column, const char* text) {
        std::vector<TextSearch::Criteria> criteria(columns_.count());
        criteria[column] =
            TextSearch::Criteria(TextSearch::Criterion(text, TextSearch::eMatchContains));
        query_.set(std::move(criteria));
    }

    bool matches(const char* reel, const char* start, const char* end) const {
        dbrecord record(3);
        record.setField(0, reel);
        record.setField(1, start);
        record.setField(2, end);
        const FindColumn find = [this](const char* name) { return columns_.find(name); };
        return QueryPass(query_, columns_, find).matches(record);
    }

    ColumnList columns_;
    Query query_;
};

TEST_F(QueryPasses, LetAllThroughWhereNothingIsAsked) {
    EXPECT_TRUE(matches("", "", ""));
}

TEST_F(QueryPasses, AskAColumnForWhatItHolds) {
    ask(0, "a0");
    EXPECT_TRUE(matches("A001", "", ""));
    EXPECT_FALSE(matches("B001", "", ""));
}

TEST_F(QueryPasses, AskAStartOrEndColumnForTheRangeOfBoth) {
    for (const unsigned column : {1u, 2u}) {
        ask(column, "01:00:05:00");
        EXPECT_TRUE(matches("", "01:00:00:00", "01:00:10:00"));
        EXPECT_FALSE(matches("", "01:00:06:00", "01:00:10:00"));
        EXPECT_FALSE(matches("", "01:00:00:00", "01:00:04:00"));
    }
}

}  // namespace
