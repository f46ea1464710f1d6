#include <gmock/gmock.h>

#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "formats/failure.h"
#include "formats/input/input.h"
#include "formats/packed/packed.h"
#include "formats/writing/output.h"

using testing::ElementsAre;
using testing::HasSubstr;
using namespace vek::formats;

namespace {

// Keeps the pieces that a sink was given.
class Pieces : public OutputSink {
public:
    explicit Pieces(std::vector<std::string>& pieces) : pieces_(pieces) {}
    void take(std::string_view piece) override { pieces_.emplace_back(piece); }
    std::vector<std::string> end() override { return {"ended"}; }
    std::size_t pieceSize() const override { return 8; }

private:
    std::vector<std::string>& pieces_;
};

}  // namespace

TEST(Output, KeepsAllWhereThereIsNoSink) {
    Output out("text");
    out.line("a");
    out.write("b");
    out.close();
    EXPECT_EQ(out.take(), "a\nb");
}

TEST(Output, HandsOnPiecesOfManyTextsAndTheRestAtTheEnd) {
    std::vector<std::string> pieces;
    Output out("pieces", std::make_unique<Pieces>(pieces));
    for (const char* text : {"12", "345", "678", "9"}) out.write(text);
    EXPECT_THAT(pieces, ElementsAre("12345678"));
    EXPECT_THAT(out.close(), ElementsAre("ended"));
    EXPECT_THAT(pieces, ElementsAre("12345678", "9"));
}

TEST(Output, HandsOnAnEncodedTextAsAWhole) {
    std::vector<std::string> pieces;
    Output out("pieces", std::make_unique<Pieces>(pieces));
    out.encode("UTF-16LE", false);
    out.write("caf\xC3\xA9, and more");
    out.close();
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].substr(0, 8), std::string("c\0a\0f\0\xE9\0", 8));
}

// No more than a piece is held, however much is written.
TEST(Output, PacksPiecesOnTheirWay) {
    std::vector<std::string> pieces;
    Output out("pieces", std::make_unique<Pieces>(pieces));
    out.encode("", true);
    out.encode("", false);
    out.encode("", true);  // what was said last is meant
    std::string text;
    for (unsigned i = 0; i < 100000; ++i) {
        const std::string number = std::to_string(i * 2654435761u);
        out.line(number);
        text += number + "\n";
    }
    EXPECT_GT(pieces.size(), 2u);
    EXPECT_THAT(out.close(), ElementsAre("ended"));
    const std::string whole = std::accumulate(pieces.begin(), pieces.end(), std::string());
    const auto back = unpacked(whole, "pieces", Opening());
    EXPECT_EQ(std::string_view(back->data(), back->size()), text);
    EXPECT_EQ(whole, packed(text));
}

TEST(Output, PacksWhatIsInAnotherEncoding) {
    std::vector<std::string> pieces;
    Output out("pieces", std::make_unique<Pieces>(pieces));
    out.encode("UTF-16LE", true);
    out.write("caf\xC3\xA9, and more");
    out.close();
    const std::string whole = std::accumulate(pieces.begin(), pieces.end(), std::string());
    const auto back = unpacked(whole, "pieces", Opening());
    EXPECT_EQ(std::string(back->data(), 8), std::string("c\0a\0f\0\xE9\0", 8));
}

TEST(Output, PacksNothingAsATextOfNothing) {
    std::vector<std::string> pieces;
    Output out("pieces", std::make_unique<Pieces>(pieces));
    out.encode("", true);
    out.close();
    EXPECT_EQ(std::accumulate(pieces.begin(), pieces.end(), std::string()), packed(""));
}

TEST(Output, SaysWhichLineAnEncodingCannotHold) {
    Output out("day.csv");
    out.encode("WINDOWS-1252", false);
    out.write("a\nb\xE2\x98\x83\n");
    try {
        out.close();
        FAIL() << "a snowman in an encoding without one";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind, unwritable);
        EXPECT_THAT(failure.text, HasSubstr("day.csv:2: "));
    }
}

TEST(Output, RefusesMoreThanItsLimit) {
    Output out("small");
    out.limit({8, 0}, ownTerms);
    out.write("12345678");
    try {
        out.write("9");
        FAIL() << "a ninth byte";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.kind, unwritable);
        EXPECT_THAT(failure.text, HasSubstr("more than 8 bytes"));
    }
}

TEST(Output, CopiesPiecesOfAFileThatWasRead) {
    Input input("day.csv", std::string_view("Scene,Take\n12,3\n"), {});
    input.keep();
    Output out("text");
    out.copy(input, {11, 16});
    out.copy(input, {0, 5});
    EXPECT_EQ(out.take(), "12,3\nScene");
}
