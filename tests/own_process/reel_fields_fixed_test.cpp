#include <gtest/gtest.h>

#include <vekdb/host/config.h>
#include "testing/tables.h"

namespace {

TEST(ReelFieldsFixed, WhileTheSettingIsZeroAndItIsReadBeforeTheContainerIsLookedAt) {
    setConfigInt("dbv_reel_field_editable", 0);
    configb settings;
    EXPECT_EQ(0, dbrecord(1).update(&settings));
    setConfigInt("dbv_reel_field_editable", 1);

    vekdb table(textColumns({"Name", "Reel", "snd reel", "lab reel"}));
    addRow(table, {"Clip", "A001", "S01", "L01"});
    EXPECT_EQ(1, table.get_record(0)->update(&settings));
    EXPECT_STREQ("A001", settings.get("reelid").get().c_str());
    EXPECT_TRUE(settings.get("reelid1").get().empty());
}

}  // namespace
