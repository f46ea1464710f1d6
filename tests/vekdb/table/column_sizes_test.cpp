#include <vekdb/column_sizes.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <vekdb/host/text_file.h>
#include <vekdb/table.h>

namespace {

class SizesOfATable : public testing::Test {
protected:
    SizesOfATable() { table.set_field(table.add_records(1), 0, "four"); }

    std::string widths() const {
        TextFile header;
        table.save_column_header(header, false);
        return std::string(header.line(1));
    }

    vekdb table{std::vector<DBFieldDesc>{{LightweightString<char>("a"), DBFieldTypes::text},
                                         {LightweightString<char>("b"), DBFieldTypes::text}}};
};

}  // namespace

TEST_F(SizesOfATable, AreThoseThatItHasWithoutThem) {
    const std::string without = widths();
    const ColumnSizes sizes(table);
    EXPECT_EQ(widths(), without);
    EXPECT_EQ(table.get_fieldsize(0), 4u);
    EXPECT_EQ(table.get_fieldsize(1), 0u);
    EXPECT_EQ(table.get_fieldsize(2), 0u);
}

// What shows that no row is looked at: a value that must not be set meanwhile counts only then.
TEST_F(SizesOfATable, AreFoundOnceAndForgottenAtTheEnd) {
    {
        const ColumnSizes sizes(table);
        const ColumnSizes again(table);
        table.set_field(0, 1, "longer");
        EXPECT_EQ(table.get_fieldsize(1), 0u);
    }
    EXPECT_EQ(table.get_fieldsize(1), 6u);
}

TEST_F(SizesOfATable, AreThoseOfTheOneThatWasMadeFirst) {
    const ColumnSizes sizes(table);
    table.set_field(0, 1, "longer");
    { const ColumnSizes again(table); }
    EXPECT_EQ(table.get_fieldsize(1), 0u);
}
