#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "formats/input/input.h"
#include "formats/log/source.h"

using namespace vek::formats;

namespace {

constexpr std::size_t pieceSize = 100;
constexpr std::size_t pieces = 30000;

std::string pieceNumbered(std::size_t i) {
    std::string piece = std::to_string(i);
    piece.resize(pieceSize, '.');
    return piece;
}

std::string allPieces() {
    std::string text;
    for (std::size_t i = 0; i < pieces; ++i) text += pieceNumbered(i);
    return text;
}

bool holds(SourceReader& reader, std::size_t piece) {
    const std::uint64_t begin = piece * pieceSize;
    return reader.read({begin, begin + pieceSize}) == pieceNumbered(piece);
}

// By all calls of this process.
std::size_t bytesReadSoFar() {
    std::ifstream counts("/proc/self/io");
    std::string name;
    std::size_t bytes = 0;
    counts >> name >> bytes;
    return bytes;
}

class SourceReaderTest : public ::testing::Test {
protected:
    void SetUp() override { input_.keep(); }

    const std::string text_ = allPieces();
    Input input_{"log.csv", text_, {}};
};

}  // namespace

TEST_F(SourceReaderTest, GivesThePiecesInTheirOrderAndInAnyOther) {
    SourceReader reader(input_);
    for (std::size_t i = 0; i < pieces; ++i) ASSERT_TRUE(holds(reader, i)) << i;
    for (std::size_t i = pieces; i-- > 0;) ASSERT_TRUE(holds(reader, i)) << i;
    for (std::size_t i = 0; i < pieces; ++i) ASSERT_TRUE(holds(reader, i * 7919 % pieces)) << i;
}

TEST_F(SourceReaderTest, DoesNotReadTheSourceOverAndOverForPiecesInNoOrder) {
    const std::size_t before = bytesReadSoFar();
    ASSERT_NE(before, 0u);
    SourceReader reader(input_);
    for (std::size_t i = pieces; i-- > 0;) ASSERT_TRUE(holds(reader, i)) << i;
    EXPECT_LT(bytesReadSoFar() - before, 10 * text_.size());
}

TEST(RowPlaces, AreKeptAlsoBeyondFourGigabytes) {
    const std::vector<Range> rows = {{10, 20},
                                     {20, 0xFFFFFFF0},
                                     {0xFFFFFFF0, 0x100000005},
                                     {0x100000005, 0x100000009},
                                     {0x300000000, 0x500000001},
                                     {0x500000001, 0x500000002}};
    RowPlaces places;
    places.beginAt(10);
    for (const Range& row : rows) places.add(row);
    places.endAt(0x700000000);
    ASSERT_EQ(places.count(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(places.row(i).begin, rows[i].begin) << i;
        EXPECT_EQ(places.row(i).end, rows[i].end) << i;
    }
    EXPECT_EQ(places.gapBefore(4).begin, 0x100000009u);
    EXPECT_EQ(places.gapBefore(4).end, 0x300000000u);
    EXPECT_EQ(places.gapBefore(6).begin, 0x500000002u);
    EXPECT_EQ(places.size(), 0x700000000u);
}
