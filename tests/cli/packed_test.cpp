#include <gtest/gtest.h>

#include "cli/program.h"

TEST(PackedFiles, AreReadAndWrittenBackPacked) {
    WorkFolder folder;
    folder.write("a.csv", "Name;Take\nA;1\n");
    EXPECT_EQ(shell(folder, "gzip a.csv && gzip -c samples/docs.vek > b.vek.gz").exitCode, 0);
    EXPECT_NE(runVekLine(folder, "info a.csv.gz").output.find("Packed      gzip\n"),
              std::string::npos);
    EXPECT_EQ(runVekLine(folder, "set a.csv.gz Take=2 --every").exitCode, 0);
    EXPECT_EQ(shell(folder, "gzip -dc a.csv.gz").output, "Name;Take\nA;2\n");
    EXPECT_EQ(runVekLine(folder, "diff samples/docs.vek b.vek.gz").exitCode, 0);
    EXPECT_EQ(runVekLine(folder, "set b.vek.gz Scene=99 --every").exitCode, 0);
    EXPECT_NE(shell(folder, "gzip -dc b.vek.gz").output.find("\"A001\",\"99\""), std::string::npos);
}

TEST(PackedFiles, CopiesArePackedWhereTheirNameSaysSo) {
    WorkFolder folder;
    folder.write("a.csv", "Name;Take\nB;1\nA;2\n");
    EXPECT_EQ(shell(folder, "gzip -k a.csv").exitCode, 0);
    EXPECT_EQ(runVekLine(folder, "sort a.csv.gz --by Name -o plain.csv").exitCode, 0);
    EXPECT_EQ(folder.read("plain.csv"), "Name;Take\nA;2\nB;1\n");
    EXPECT_EQ(runVekLine(folder, "set a.csv Take=9 --every -o set.csv.GZ").exitCode, 0);
    EXPECT_EQ(shell(folder, "gzip -dc < set.csv.GZ").output, "Name;Take\nB;9\nA;9\n");
    EXPECT_EQ(runVekLine(folder, "convert a.csv made.ale.gz --to csv").exitCode, 0);
    EXPECT_EQ(shell(folder, "gzip -dc made.ale.gz").output, "Name,Take\nB,1\nA,2\n");
    EXPECT_EQ(shell(folder, "cp a.csv named.csv.gz").exitCode, 0);
    EXPECT_EQ(runVekLine(folder, "set named.csv.gz Take=3 --where Name==A").exitCode, 0);
    EXPECT_EQ(folder.read("named.csv.gz"), "Name;Take\nB;1\nA;3\n");
}

TEST(PackedFiles, AreMadeInTheFormatOfTheEndingUnderTheirOwn) {
    WorkFolder folder;
    const std::string csv = runVekLine(folder, "convert samples/docs.vek - --to csv").output;
    const std::string heading = csv.substr(0, csv.find_first_of("\r\n"));
    for (const char* line : {"set samples/docs.vek Scene=99 --every -o out.csv.gz",
                             "sort samples/docs.vek --by Scene -o out.csv.gz",
                             "convert samples/docs.vek out.csv.gz"}) {
        const Finish made = runVekLine(folder, line);
        EXPECT_EQ(made.exitCode, 0) << line << made.errors;
        const std::string text = shell(folder, "gzip -dc < out.csv.gz && rm out.csv.gz").output;
        EXPECT_TRUE(text.starts_with(heading)) << line << text;
    }
    EXPECT_EQ(runVekLine(folder, "convert samples/docs.vek b.json.GZ").exitCode, 0);
    EXPECT_TRUE(shell(folder, "gzip -dc < b.json.GZ").output.starts_with("["));
    EXPECT_EQ(runVekLine(folder, "convert samples/docs.vek b.gz").exitCode, 2);
    EXPECT_EQ(runVekLine(folder, "info b.json.GZ --max-bytes 18446744073709551615").exitCode, 0);
}

TEST(PackedFiles, HoldWhatIsPrintedIntoThem) {
    WorkFolder folder;
    for (const char* line : {"report samples/docs.vek", "show samples/docs.vek",
                             "find -l Scene=12 samples/docs.vek"}) {
        const std::string printed = runVekLine(folder, line).output;
        EXPECT_EQ(runVekLine(folder, std::string(line) + " -o out.gz").exitCode, 0) << line;
        EXPECT_EQ(shell(folder, "gzip -dc < out.gz && rm out.gz").output, printed) << line;
    }
}

TEST(PackedFiles, AndThoseInOtherEncodingsAreChangedWhateverTheirSize) {
    WorkFolder folder;
    std::string text = "a,b\n";
    while (text.size() < 2500000) text += "1,2\n";
    folder.write("a.csv", text);
    EXPECT_EQ(shell(folder, "iconv -f UTF-8 -t UTF-16 a.csv > u.csv; gzip a.csv").exitCode, 0);
    EXPECT_EQ(runVekLine(folder, "set u.csv a=7 --every").exitCode, 0);
    EXPECT_EQ(runVekLine(folder, "set a.csv.gz a=7 --every").exitCode, 0);
    EXPECT_EQ(runVekLine(folder, "diff u.csv a.csv.gz").exitCode, 0);
}

TEST(PackedFiles, SeveralBehindOneAnotherAreOneText) {
    WorkFolder folder;
    const std::string make = "(printf 'Name\\nA\\n' | gzip; printf 'B\\n' | gzip) > a.csv.gz";
    EXPECT_EQ(shell(folder, make).exitCode, 0);
    EXPECT_EQ(runVekLine(folder, "convert a.csv.gz - --to csv").output, "Name\nA\nB\n");
}

TEST(PackedFiles, CutBehindEveryByteTheyAreRefused) {
    WorkFolder folder;
    EXPECT_EQ(shell(folder, "printf 'Name,Take\\nA,1\\n' | gzip > whole.gz").exitCode, 0);
    const std::string whole = folder.read("whole.gz");
    for (std::size_t size = 3; size < whole.size(); ++size) {
        folder.write("a.csv.gz", std::string_view(whole).substr(0, size));
        const Finish finish = runVekLine(folder, "info a.csv.gz");
        ASSERT_EQ(finish.exitCode, 3) << size;
        ASSERT_NE(finish.errors.find("expected a whole file of gzip"), std::string::npos)
            << finish.errors;
    }
    folder.write("a.csv.gz", whole + "x");
    EXPECT_EQ(runVekLine(folder, "info a.csv.gz").exitCode, 3);
}

TEST(PackedFiles, BombsEndAtAStatedRatioOrWhereAPersonSays) {
    WorkFolder folder;
    EXPECT_EQ(shell(folder, "head -c 100000000 /dev/zero | tr '\\0' a | gzip > a.csv.gz").exitCode,
              0);
    const Finish ratio = runVekLine(folder, "info a.csv.gz");
    EXPECT_EQ(ratio.exitCode, 3);
    EXPECT_NE(ratio.errors.find("unpacks to more than 86"), std::string::npos) << ratio.errors;
    const Finish said = runVekLine(folder, "info a.csv.gz --max-bytes 1000000");
    EXPECT_EQ(said.exitCode, 3);
    EXPECT_NE(said.errors.find("unpacks to more than 1000000 bytes"), std::string::npos)
        << said.errors;
    EXPECT_EQ(runVekLine(folder, "info a.csv.gz --max-bytes 200000000").exitCode, 0);
}

// Whose size is found out first, because the beginning of it promises no honest log.
TEST(PackedFiles, ThatUnpackToVeryMuchAreReadWhereThatIsAllowed) {
    WorkFolder folder;
    const std::string make =
        "(printf 'Name\\n' | gzip; head -c 30000000 /dev/zero | tr '\\0' a | gzip; "
        "printf '\\nB\\n' | gzip) > a.csv.gz";
    EXPECT_EQ(shell(folder, make).exitCode, 0);
    const std::string info = runVekLine(folder, "info a.csv.gz").output;
    EXPECT_NE(info.find("Rows        2\n"), std::string::npos) << info;
    EXPECT_EQ(runVekLine(folder, "convert a.csv.gz - --to csv").output.size(), 30000008u);
    folder.write("cut.csv.gz", folder.read("a.csv.gz").substr(0, 20000));
    EXPECT_EQ(runVekLine(folder, "info cut.csv.gz").exitCode, 3);
}
