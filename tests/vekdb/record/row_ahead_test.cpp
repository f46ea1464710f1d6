// What a pass over the rows fetches ahead stays within the rows it is given.
#include "vekdb/record/row_ahead.h"

#include <gtest/gtest.h>

#include <vector>

#include "testing/tables.h"

namespace {

TEST(RowAhead, PassesOverRowsWithoutARecord) {
    dbrecord record(1);
    record.setField(0, "value");
    std::vector<dbrecord*> records(200);
    for (std::size_t i = 0; i < records.size(); i += 3) records[i] = &record;
    const RecordRun piece{records.data(), static_cast<unsigned>(records.size())};
    for (unsigned row = 0; row < piece.count; ++row) RowAhead::fetchValue(piece, row, 0);
    EXPECT_STREQ("value", record.get_field(0));
}

TEST(RowAhead, LooksAtNothingBehindTheLastRow) {
    dbrecord record(1);
    for (std::size_t rows = 0; rows < 120; ++rows) {
        const std::vector<dbrecord*> records(rows, &record);
        const RecordRun piece{records.data(), static_cast<unsigned>(rows)};
        for (unsigned row = 0; row < piece.count; ++row) RowAhead::fetchValue(piece, row, 0);
    }
    EXPECT_FALSE(record.get_changed());
}

}  // namespace
