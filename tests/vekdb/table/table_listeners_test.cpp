// What listeners may do to a table while it tells them something.
#include <gtest/gtest.h>

#include <vekdb/host/cookie.h>
#include <vekdb/table.h>
#include "testing/tables.h"

namespace {

constexpr unsigned none = 0xFFFFFFFF;
using Texts = std::vector<std::string>;

Quor::Ptr<vekdb> sharedTable(unsigned rows) {
    Quor::Ptr<vekdb> table(new vekdb(textColumns({"Name"})));
    for (unsigned i = 0; i < rows; ++i) {
        const char name[2] = {static_cast<char>('a' + i), '\0'};
        addRow(*table, {name});
    }
    table->clear_changed();
    return table;
}

TEST(TableListener, MayLetGoOfTheTableWhileRowsAreDeleted) {
    Quor::Ptr<vekdb> table = sharedTable(5);
    vekdb* const notHeld = table.get();
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) { table.reset(); });
    notHeld->delete_records(1, 2);
    EXPECT_FALSE(table);
}

TEST(TableListener, MayLetGoOfTheTableAndThrow) {
    Quor::Ptr<vekdb> table = sharedTable(5);
    vekdb* const notHeld = table.get();
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) {
        table.reset();
        throw 7;
    });
    EXPECT_THROW(notHeld->delete_records(1, 2), int);
}

TEST(TableListener, MayLetGoOfTheTableWhileTaggedRowsAreDeleted) {
    Quor::Ptr<vekdb> table = sharedTable(5);
    for (unsigned row : {0u, 2u, 4u}) table->set_tag(row, 1);
    vekdb* const notHeld = table.get();
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) { table.reset(); });
    EXPECT_EQ(1u, notHeld->delete_tagged_records());
    EXPECT_FALSE(table);
}

TEST(TableListener, MayLetGoOfTheTableAtTheLastRun) {
    Quor::Ptr<vekdb> table = sharedTable(3);
    table->set_tag(2, 1);
    vekdb* const notHeld = table.get();
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) { table.reset(); });
    EXPECT_EQ(1u, notHeld->delete_tagged_records());
}

TEST(TableListener, MayLetGoOfTheTableWhenChangesAreTold) {
    Quor::Ptr<vekdb> table = sharedTable(1);
    vekdb* const notHeld = table.get();
    const WhenTold told(*table, "recordsChanged", [&](const NotifyMsg&) { table.reset(); });
    notHeld->beginUpdate();
    notHeld->addToUpdate(Cookie());
    notHeld->endUpdate();
    EXPECT_FALSE(table);
}

TEST(TableListener, MayDeleteMoreRows) {
    const Quor::Ptr<vekdb> table = sharedTable(6);
    NoticeTexts deleted(*table, "recordsDeleted");
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) {
        if (table->get_num_records() > 2) table->delete_records(0, 1);
    });
    table->delete_records(4, 2);
    EXPECT_EQ((Texts{"c", "d"}), columnOf(*table, 0));
    EXPECT_EQ((Texts{"4 5 ", "0 ", "0 "}), deleted.texts);
    EXPECT_TRUE(table->get_modified());
}

TEST(TableListener, MayAddAndInsertRowsWhileTaggedOnesAreDeleted) {
    const Quor::Ptr<vekdb> table = sharedTable(5);
    for (unsigned row : {0u, 3u}) table->set_tag(row, 1);
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) {
        table->add_records(1);
        table->insert_records(0, 1);
    });
    EXPECT_EQ(2u, table->delete_tagged_records());
    EXPECT_EQ((Texts{"", "", "b", "c", "e", "", ""}), columnOf(*table, 0));
}

TEST(TableListener, MayEmptyTheTableWhileTaggedRowsAreDeleted) {
    const Quor::Ptr<vekdb> table = sharedTable(5);
    for (unsigned row : {0u, 3u}) table->set_tag(row, 1);
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) { table->free(); });
    EXPECT_EQ(1u, table->delete_tagged_records());
    EXPECT_EQ(0u, table->get_num_records());
    EXPECT_FALSE(table->get_valid());
}

TEST(TableListener, MayShowOnlyTaggedRowsWhichEndsTheDeletions) {
    const Quor::Ptr<vekdb> table = sharedTable(5);
    for (unsigned row : {0u, 3u}) table->set_tag(row, 1);
    const WhenTold told(*table, "recordsDeleted",
                        [&](const NotifyMsg&) { table->set_show_tags_only(1); });
    table->delete_tagged_records();
    EXPECT_EQ((Texts{"d"}), columnOf(*table, 0));
    table->set_show_tags_only(0);
    EXPECT_EQ((Texts{"b", "c", "d", "e"}), columnOf(*table, 0));
}

TEST(TableListener, MayChangeTheColumns) {
    const Quor::Ptr<vekdb> table = sharedTable(4);
    const WhenTold told(*table, "recordsDeleted", [&](const NotifyMsg&) {
        table->addField({"Take", DBFieldTypes::text});
        table->removeField("Name");
    });
    table->delete_records(0, 1);
    EXPECT_EQ(1u, table->get_num_fields());
    EXPECT_EQ(1, table->get_record(2)->get_num_fields());
    EXPECT_EQ(none, table->get_fieldnum("Name"));
}

TEST(TableListener, MayCollectChangesAnew) {
    const Quor::Ptr<vekdb> table = sharedTable(1);
    unsigned notices = 0;
    const WhenTold told(*table, "recordsChanged", [&](const NotifyMsg&) {
        EXPECT_EQ(0u, table->get_update_depth());
        if (++notices > 1) return;
        table->beginUpdate();
        table->addToUpdate(Cookie());
        table->endUpdate();
    });
    table->beginUpdate();
    table->addToUpdate(Cookie());
    table->endUpdate();
    EXPECT_EQ(2u, notices);
}

}  // namespace
