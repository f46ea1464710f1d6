#include "vekdb/order/record_sort.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include <vekdb/record.h>
#include <vekdb/sort.h>

namespace {

using testing::ElementsAre;

// The state of the comparison that a table's sort would prepare: by the first column.
class RecordSorts : public testing::Test {
protected:
    RecordSorts() : before_(cmp_fields) { cmp_fields = firstColumn_; }
    ~RecordSorts() override { cmp_fields = before_; }

    void make(const std::vector<const char*>& values) {
        for (const char* value : values) {
            made_.push_back(std::make_unique<dbrecord>(1));
            made_.back()->setField(0, value);
            records_.push_back(made_.back().get());
        }
    }

    std::vector<std::string> sorted(int direction) const {
        const SortItems order = orderOfRecords(records_.data(), records_.size(), direction);
        std::vector<std::string> values;
        for (std::size_t i = 0; i < records_.size(); ++i) {
            values.emplace_back(records_[order[i]]->fieldView(0));
        }
        return values;
    }

    std::vector<const dbrecord*> records_;

private:
    int firstColumn_[2] = {0, -1};
    int* before_;
    std::vector<std::unique_ptr<dbrecord>> made_;
};

TEST_F(RecordSorts, OrderUpAsPeopleReadAndDownByCharacters) {
    make({"take 10", "Take 9", "take 1"});
    EXPECT_THAT(sorted(1), ElementsAre("take 1", "Take 9", "take 10"));
    EXPECT_THAT(sorted(-1), ElementsAre("Take 9", "take 10", "take 1"));
}

TEST_F(RecordSorts, KeepTheOrderOfEqualsAlsoByKeys) {
    std::vector<std::string> values;
    for (int i = 0; i < 200; ++i) values.push_back(i % 2 == 0 ? "same" : "SAME");
    std::vector<const char*> texts;
    for (const std::string& value : values) texts.push_back(value.c_str());
    make(texts);
    EXPECT_EQ(values, sorted(1));
    EXPECT_EQ(values, sorted(-1));
}

TEST_F(RecordSorts, LeaveEntriesWithoutARecordWhereTheyAre) {
    make({"c", "b", "a"});
    SortEntry entries[] = {{records_[0], 0}, {nullptr, 1}, {records_[1], 2}, {records_[2], 3}};
    sortRecordEntries(entries, 4, 1);
    EXPECT_EQ(records_[2], entries[0].record);
    EXPECT_EQ(nullptr, entries[1].record);
    EXPECT_EQ(records_[1], entries[2].record);
    EXPECT_EQ(records_[0], entries[3].record);
}

}  // namespace
