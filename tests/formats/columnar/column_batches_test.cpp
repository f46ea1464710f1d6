#include "formats/columnar/column_batches.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "testing/logs.h"

using testing::ElementsAre;
using testing_support::logOf;
using namespace vek::formats;

namespace {

struct Written {
    std::vector<ColumnBatch> batches;
    std::string bytes;
    Losses losses;
};

Written writtenOf(const std::string& text) {
    const Log log = logOf(text);
    ScratchFile file;
    Written written;
    written.batches = writeBatches(wholeSheet(log), file, "out", written.losses);
    char piece[256];
    while (const std::size_t got = file.read(written.bytes.size(), piece, sizeof piece))
        written.bytes.append(piece, got);
    return written;
}

std::string endsOf(const std::vector<std::int32_t>& ends) {
    return {reinterpret_cast<const char*>(ends.data()), ends.size() * sizeof(std::int32_t)};
}

}  // namespace

TEST(ColumnBatches, HaveForEachColumnWhereItsCellsEndAndThenTheirBytes) {
    const Written written = writtenOf("A,B\none,x\n,yy\n");
    ASSERT_EQ(1u, written.batches.size());
    EXPECT_EQ(2u, written.batches[0].rows);
    EXPECT_THAT(written.batches[0].bytes, ElementsAre(3, 3));
    EXPECT_EQ(endsOf({0, 3, 3}) + "one" + endsOf({0, 1, 3}) + "xyy", written.bytes);
    EXPECT_EQ(0u, written.losses.count());
}

TEST(ColumnBatches, AreOneWhereThereIsNoRow) {
    const Written written = writtenOf("A,B\n");
    ASSERT_EQ(1u, written.batches.size());
    EXPECT_EQ(0u, written.batches[0].rows);
}

TEST(ColumnBatches, AreSeveralOfManyRows) {
    std::string text = "A\n";
    for (int i = 0; i < 70000; ++i) text += "x\n";
    const Written written = writtenOf(text);
    ASSERT_EQ(2u, written.batches.size());
    EXPECT_EQ(70000u, written.batches[0].rows + written.batches[1].rows);
}
