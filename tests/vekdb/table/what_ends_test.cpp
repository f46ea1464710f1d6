#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <vekdb/host/text_search.h>
#include "testing/table_files.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

// What lives until when: what docs/lifetimes.md says of tables.

namespace {

using testing_support::headerAnd;
using testing_support::joined;
using testing_support::TempDir;

struct WhatEnds : testing::Test {
    WhatEnds() {
        folder.write("log.vek",
                     joined(headerAnd({"A", "B", "C"}, {R"("a0","b0","c0")", R"("a1","b1","c1")",
                                                        R"("a2","b2","c2")"})));
        table = std::make_unique<vekdb>(folder.widePath("log.vek"), 1000, true);
    }

    TempDir folder;
    std::unique_ptr<vekdb> table;
};

}  // namespace

TEST_F(WhatEnds, ARecordStaysWhereItIsWhileOtherRowsComeAndGo) {
    const dbrecord* const kept = table->get_record(1);
    table->insert_records(0, 3000);
    EXPECT_EQ(kept, table->get_record(3001));
    table->delete_records(0, 3001);
    EXPECT_EQ(kept, table->get_record(0));
    table->set_sortfield(0);
    table->sort(-1, 0);
    EXPECT_EQ(kept, table->get_record(1));
    EXPECT_STREQ("b1", kept->get_field(1));
}

TEST_F(WhatEnds, AStringOutlivesItsValueItsRowAndItsTable) {
    const LightweightString<char> first = table->getField(0, 0);
    const LightweightString<char> second = table->getField(1, 0);
    table->set_field(0, 0, "another");
    table->delete_records(1, 1);
    table.reset();
    EXPECT_STREQ("a0", first.c_str());
    EXPECT_STREQ("a1", second.c_str());
}

TEST_F(WhatEnds, AValuesTextStaysWhereItIsWhileOtherValuesChange) {
    dbrecord* const record = table->get_record(1);
    const char* const text = record->get_field(1);
    const std::string_view view = record->fieldView(1);
    const std::string longer(3000, 'x');
    for (const char* other : {"x", "longer than it was", longer.c_str(), ""}) {
        record->set_field(0, other);
        record->set_field(2, other);
        table->set_field(0, 1, other);
    }
    EXPECT_EQ(text, record->get_field(1));
    EXPECT_EQ("b1", view);
}

TEST_F(WhatEnds, ARecordOfNoTableOutlivesTheOneThatMadeIt) {
    const std::unique_ptr<dbrecord> own(table->make_dummy_record());
    own->set_field(0, "mine");
    table.reset();
    EXPECT_EQ(nullptr, own->get_container());
    EXPECT_STREQ("mine", own->get_field(0));
}

TEST_F(WhatEnds, AQueryDoesNotNeedTheRecordItWasAskedWith) {
    auto query = std::unique_ptr<dbrecord>(table->make_dummy_record());
    query->set_field(0, "a1");
    table->set_query(query.get());
    query.reset();
    EXPECT_EQ(0u, table->match_record(0));
    EXPECT_EQ(1u, table->match_record(1));
}

TEST_F(WhatEnds, AParametersTextStaysWhileOthersAreSet) {
    table->add_param("Project", "Night shoot");
    const char* const text = table->get_param_val("Project");
    for (int i = 0; i < 30; ++i) table->add_param(std::to_string(i).c_str(), "x");
    EXPECT_EQ(text, table->get_param_val("project"));
    EXPECT_STREQ("Night shoot", text);
}

TEST_F(WhatEnds, ASortListStaysTheCallers) {
    int list[] = {1, -1};
    table->set_sortfields(list);
    table->sort(-1, 0);
    list[0] = 0;
    table->set_field(0, 0, "z");
    table->sort(-1, 0);
    EXPECT_EQ((std::vector<std::string>{"z", "a1", "a0"}), columnOf(*table, 0));
}

TEST_F(WhatEnds, FreeingATableEndsItsRowsAndLeavesStringsAlone) {
    const LightweightString<char> text = table->getField(2, 2);
    table->free();
    EXPECT_EQ(0u, table->get_num_records());
    EXPECT_FALSE(table->get_valid());
    EXPECT_STREQ("c2", text.c_str());
}
