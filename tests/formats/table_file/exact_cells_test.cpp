#include "formats/table_file/exact_cells.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "formats/log/own_parameters.h"

namespace vek::formats {

namespace {

using testing::ElementsAre;

class ExactCells : public testing::Test {
protected:
    // All parameters but the revision.
    std::vector<std::string> notes() {
        std::vector<std::string> texts;
        for (unsigned i = 1; i < table_.get_num_params(); ++i) {
            texts.push_back(std::string(table_.get_param_name(i)) + ": " +
                            table_.get_param_text(i));
        }
        return texts;
    }

    vekdb table_{std::vector<DBFieldDesc>{{"A", DBFieldTypes::text}}};
};

TEST_F(ExactCells, AreNotedByRowAndColumn) {
    EXPECT_EQ(2u, noteExactCells(table_, {{2, 0, " a"}, {3, 11, "b;="}}));
    EXPECT_THAT(notes(), ElementsAre("vek exact cells: 3:1=%20a;4:12=b%3B%3D;"));
}

TEST_F(ExactCells, TakeThePlaceOfEarlierNotes) {
    noteExactCells(table_, {{0, 0, std::string(3900, 'x')}, {1, 0, std::string(3900, 'y')}});
    EXPECT_EQ(2u, notes().size());
    EXPECT_EQ(1u, noteExactCells(table_, {{0, 0, "z "}}));
    EXPECT_THAT(notes(), ElementsAre("vek exact cells: 1:1=z%20;", "vek exact cells 2: "));
}

TEST_F(ExactCells, AreNotedInOrderUntilOneHasNoRoom) {
    EXPECT_EQ(1u,
              noteExactCells(table_, {{0, 0, "a "}, {1, 0, std::string(4001, 'b')}, {2, 0, " c"}}));
    EXPECT_THAT(notes(), ElementsAre("vek exact cells: 1:1=a%20;"));
}

TEST_F(ExactCells, AreInParametersOfTheTableFilesOwn) {
    noteExactCells(table_, {{0, 0, std::string(3900, 'x')}, {1, 0, std::string(3900, 'y')}});
    for (unsigned i = 0; i < table_.get_num_params(); ++i) {
        EXPECT_TRUE(isTableFilesOwn(table_.get_param_name(i)));
    }
    EXPECT_TRUE(isTableFilesOwn("vekdb"));
    EXPECT_FALSE(isTableFilesOwn("Project"));
}

}  // namespace

}  // namespace vek::formats
