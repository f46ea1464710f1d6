#include "vekdb/lines/record_loader.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

#include "testing/lines.h"
#include "testing/quiet.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::Strings;
using testing_support::valuesOf;

// Keeps the records whose first value is not "no".
class Received final : public RecordReceiver {
public:
    std::vector<Strings> rows() const {
        std::vector<Strings> rows;
        for (std::size_t i = 0; i + 1 < records_.size(); ++i)
            rows.push_back(valuesOf(*records_[i]));
        return rows;
    }

    bool keepsAll = true;
    std::vector<unsigned> refused;
    std::vector<std::size_t> expected;

private:
    dbrecord& first() override {
        records_.push_back(std::make_unique<dbrecord>(0));
        return *records_.back();
    }
    dbrecord& take(dbrecord& read) override {
        EXPECT_EQ(records_.back().get(), &read);
        return keepsAll || read.fieldView(0) != "no" ? first() : read;
    }
    bool takesAll() const override { return keepsAll; }
    void expect(std::size_t more) override { expected.push_back(more); }
    void refuse(unsigned records) override { refused.push_back(records); }

    std::vector<std::unique_ptr<dbrecord>> records_;  // the last one is open
};

class RecordLoaders : public testing::Test {
protected:
    unsigned load(const Strings& lines, unsigned columns, bool skipFirst = false,
                  unsigned most = 1000) {
        const testing_support::Quiet quiet;
        TextFile file;
        for (const std::string& line : lines) file.appendLine(line.c_str());
        TextLines text(file, TextLines::Mark::none);
        return RecordLoader(text, received_, columns, skipFirst).load(most);
    }

    Received received_;
};

TEST_F(RecordLoaders, HandOverALineEach) {
    EXPECT_EQ(2u, load({"\"a\",\"b\"", "\"c\",\"d\""}, 2));
    EXPECT_THAT(received_.rows(), ElementsAre(ElementsAre("a", "b"), ElementsAre("c", "d")));
    EXPECT_THAT(received_.refused, IsEmpty());
}

TEST_F(RecordLoaders, EndAtAnEmptyLineAndAtTheMostThatAreWanted) {
    EXPECT_EQ(1u, load({"\"a\"", " ", "\"b\""}, 1));
    EXPECT_EQ(1u, received_.rows().size());
    EXPECT_EQ(2u, load({"\"a\"", "\"b\"", "\"c\""}, 1, false, 2));
}

TEST_F(RecordLoaders, RefuseALineOfAnotherNumberOfValues) {
    EXPECT_EQ(1u, load({"\"a\",\"b\"", "\"c\""}, 2));
    EXPECT_THAT(received_.refused, ElementsAre(1u));
}

TEST_F(RecordLoaders, PassOverTheFirstLineAndAMagicLineWithItsTwo) {
    EXPECT_EQ(2u, load({"\"x\"", "\"a\"", "\"VEKDB\"", "\"1\"", "\"2\"", "\"b\""}, 1, true));
    EXPECT_THAT(received_.rows(), ElementsAre(ElementsAre("a"), ElementsAre("b")));
}

TEST_F(RecordLoaders, ReadIntoARecordAgainThatWasNotKept) {
    received_.keepsAll = false;
    EXPECT_EQ(3u, load({"\"no\"", "\"a\"", "\"no\""}, 1));
    EXPECT_THAT(received_.rows(), ElementsAre(ElementsAre("a")));
}

TEST_F(RecordLoaders, SayHowManyMoreAreToComeWhereAllAreKept) {
    const Strings lines(100, "\"abcdef\"");
    load(lines, 1);
    EXPECT_THAT(received_.expected, ElementsAre(84u));
    received_.keepsAll = false;
    load(lines, 1);
    EXPECT_EQ(1u, received_.expected.size());
}

}  // namespace
