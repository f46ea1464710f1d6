#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace {

struct Outcome {
    bool compiles;
    std::string said;
};

// What the compiler that built this test makes of the file of mistakes.
Outcome compileWith(int misuse) {
    std::string command =
        VEKDB_COMPILER " -std=c++20 -fsyntax-only -I" VEKDB_SOURCE_DIR "/include -DMISUSE=" +
        std::to_string(misuse) + " " VEKDB_SOURCE_DIR "/tests/house/misuse/misuse.cpp 2>&1";
    std::FILE* pipe = popen(command.c_str(), "r");
    Outcome outcome{false, {}};
    char piece[4096];
    while (std::size_t got = std::fread(piece, 1, sizeof piece, pipe)) {
        outcome.said.append(piece, got);
    }
    int status = pclose(pipe);
    outcome.compiles = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return outcome;
}

struct Misuse {
    int number;
    const char* name;
    const char* reason;
};

std::ostream& operator<<(std::ostream& out, const Misuse& misuse) {
    return out << misuse.name;
}

constexpr const char* deleted = "deleted";
constexpr const char* noConversion = "conver|no matching|cannot init";

}  // namespace

class MisuseTest : public testing::TestWithParam<Misuse> {};

TEST_P(MisuseTest, DoesNotCompile) {
    Outcome outcome = compileWith(GetParam().number);
    EXPECT_FALSE(outcome.compiles);
    EXPECT_THAT(outcome.said, testing::ContainsRegex(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    Caught, MisuseTest,
    testing::Values(
        Misuse{1, "CopyingATable", deleted}, Misuse{2, "AssigningATable", deleted},
        Misuse{3, "AddingACharacterAsANumber", deleted},
        Misuse{4, "TextWhereACookieIsWanted", noConversion},
        Misuse{5, "ALiteralWhereACookieIsWanted", noConversion},
        Misuse{6, "ACookieFromText", noConversion}, Misuse{7, "ARecordFromANumber", noConversion},
        Misuse{8, "APointerFromAString", noConversion}, Misuse{9, "ReachingIntoARecord", "private"},
        Misuse{10, "MovingATable", deleted}, Misuse{11, "MakingTheInterface", "abstract"},
        Misuse{12, "ChangingAConstTable", "const"},
        Misuse{13, "OpeningAFileWithoutALimit", noConversion},
        Misuse{14, "ACharacterForAType", noConversion},
        Misuse{15, "AWideLiteralInARecord", deleted}, Misuse{16, "AUtf8LiteralInARecord", deleted},
        Misuse{17, "ACharacterInARecord", deleted}, Misuse{18, "AWideLiteralInATable", deleted},
        Misuse{19, "AUtf16LiteralInATable", deleted}, Misuse{20, "ACharacterInATable", deleted},
        Misuse{21, "ACharacterInAView", deleted}, Misuse{22, "AUtf8LiteralInAView", deleted},
        Misuse{23, "AWideLiteralThroughTheInterface", deleted},
        Misuse{24, "APointerInATable", deleted}),
    [](const auto& info) { return info.param.name; });

TEST(Misuse, TheFileWithoutAMistakeCompiles) {
    Outcome outcome = compileWith(0);
    EXPECT_TRUE(outcome.compiles) << outcome.said;
}

TEST(Misuse, EveryMistakeOfTheFileIsTried) {
    EXPECT_TRUE(compileWith(25).compiles) << "a mistake above the last known one";
}
