#include <gtest/gtest.h>

#include <ctime>
#include <memory>

#include <vekdb/host/text_file.h>
#include "testing/tables.h"

namespace {

TEST(RecordContainer, IsModifiedByAChangeAndStampedByAReading) {
    vekdb table(textColumns({"A", "B"}));
    table.add_records(1);
    dbrecord& record = *table.get_record(0);
    EXPECT_FALSE(table.get_modified());
    record.set_field(0, "a");
    EXPECT_TRUE(table.get_modified());
    EXPECT_EQ(0, table.get_modification_time());

    table.clear_changed();
    const std::time_t before = std::time(nullptr);
    TextFile file;
    file.appendLine("\"a\"");
    record.read(file);
    EXPECT_TRUE(table.get_modified());
    EXPECT_LE(before, table.get_modification_time());
}

TEST(RecordContainer, IsAnsweredWithoutALookAtATableThatMayBeGone) {
    dbrecord record(1);
    const auto table = std::make_unique<vekdb>();
    record.set_container(table.get());
    EXPECT_EQ(table.get(), record.get_container());
    record.set_container(nullptr);
    EXPECT_EQ(nullptr, record.get_container());
}

}  // namespace
