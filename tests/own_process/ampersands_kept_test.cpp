#include <gtest/gtest.h>

#include <vekdb/host/config.h>
#include "testing/tables.h"

namespace {

TEST(AmpersandsKept, WhileTheSettingIsZeroAndItIsReadOnce) {
    setConfigInt("remove_fieldname_ampersands", 0);
    vekdb table(textColumns({"R&D"}));
    EXPECT_STREQ("R&D", table.get_fieldname(0));
    setConfigInt("remove_fieldname_ampersands", 1);
    EXPECT_TRUE(table.set_fieldname(0, "A&B"));
    EXPECT_STREQ("A&B", table.get_fieldname(0));
}

}  // namespace
