#include "vekdb/lines/table_header.h"

#include <gmock/gmock.h>

#include "testing/lines.h"
#include "testing/quiet.h"

namespace {

using testing::ElementsAre;
using testing_support::Strings;

// Notes what it is told, one text each.
class Told final : public HeaderReceiver {
public:
    Strings all;

private:
    using Text = std::string;

    void beginParameters() override { all.push_back("parameters"); }
    void addParameter(std::string_view name, std::string_view value) override {
        all.push_back(Text(name) + "=" + Text(value));
    }
    void setRevision(int revision) override {
        all.push_back("revision " + std::to_string(revision));
    }
    unsigned announceColumns(std::size_t count) override {
        all.push_back(std::to_string(count) + " columns");
        return static_cast<unsigned>(count);
    }
    void makeColumns() override { all.push_back("made"); }
    void setType(unsigned column, DBFieldTypes::eType type) override {
        const char* name = vekdb_fieldtype_to_string(type);
        all.push_back(std::to_string(column) + " is " + (name != nullptr ? name : "unknown"));
    }
    void guessType(unsigned column, bool holdsTimecodes) override {
        all.push_back(std::to_string(column) + (holdsTimecodes ? " has timecodes" : " has none"));
    }
    void endTypes() override { all.push_back("types end"); }
    void setName(unsigned column, const char* name) override {
        all.push_back(std::to_string(column) + " " + name);
    }
    void refuse(int line) override { all.push_back("refused " + std::to_string(line)); }
};

class TableHeaders : public testing::Test {
protected:
    bool read(const Strings& lines, bool requireMagic = true) {
        const testing_support::Quiet quiet;
        TextFile file;
        for (const std::string& line : lines) file.appendLine(line.c_str());
        dbrecord line(24);
        return TableHeader(file, line, told_).readColumns(requireMagic);
    }

    Told told_;
};

TEST_F(TableHeaders, TellParametersThenTypesThenNames) {
    EXPECT_TRUE(read({"\"VEKDB:Rev 1\"", "\"FPS: 24\"", "\"VEKDB\"", "\"4\",\"12\"",
                      "\"text\",\"timecode\"", "\"Reel\",\"Start time\""}));
    EXPECT_THAT(told_.all, ElementsAre("parameters", "VEKDB=Rev 1", "revision 1", "FPS=24",
                                       "2 columns", "made", "0 is text", "1 is timecode",
                                       "types end", "0 Reel", "1 Start time"));
}

TEST_F(TableHeaders, GuessTypesByTheNamesWhereThereIsNoColumnHeader) {
    EXPECT_TRUE(read({"\"VEKDB:Rev 1\"", "\"Reel\",\"snd start\""}, false));
    EXPECT_THAT(told_.all,
                ElementsAre("parameters", "VEKDB=Rev 1", "revision 1", "2 columns", "made",
                            "0 has none", "1 has timecodes", "types end", "0 Reel", "1 snd start"));
}

TEST_F(TableHeaders, RefuseLinesThatDoNotFitTogether) {
    const Strings start = {"\"VEKDB:Rev 1\"", "\"VEKDB\"", "\"4\",\"12\""};
    Strings types = start;
    types.push_back("\"text\"");
    EXPECT_FALSE(read(types));
    EXPECT_EQ("refused 3", told_.all.back());
    Strings names = start;
    names.insert(names.end(), {"\"text\",\"text\"", "\"Reel\""});
    EXPECT_FALSE(read(names));
    EXPECT_EQ("refused 4", told_.all.back());
}

TEST_F(TableHeaders, RefuseWithoutAWordWhatDoesNotBeginWithParameters) {
    EXPECT_FALSE(read({"\"Reel\",\"Scene\""}));
    EXPECT_THAT(told_.all, ElementsAre("parameters"));
}

}  // namespace
