#include <gtest/gtest.h>

#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "testing/tables.h"

namespace {

using Values = std::vector<std::string>;

TEST(ViewMerging, AViewIsASourceOfTheRowsThatItShowsInItsOrder) {
    vekdb log(textColumns({"Reel", "Scene"}));
    addRow(log, {"A1", "2"});
    addRow(log, {"A2", "3"});
    addRow(log, {"A3", "1"});
    VDBView view(&log);
    view->displayRecordsAt(2, 1, 0);
    view->displayRecordsAt(0, 1, 1);
    vekdb target(textColumns({"scene", "Reel", "Notes"}));
    EXPECT_EQ(1, target.merge_all_matching(view.get()));
    EXPECT_EQ(columnOf(*view, 0), columnOf(target, 1));
    EXPECT_EQ(columnOf(*view, 1), columnOf(target, 0));
    EXPECT_EQ(2u, target.get_num_records());
    EXPECT_EQ(3u, log.get_num_records());
}

TEST(ViewMerging, ATableMergesAViewOfItself) {
    vekdb log(textColumns({"Reel"}));
    addRow(log, {"A1"});
    addRow(log, {"A2"});
    VDBView view(&log);
    view->displayRecordsAt(1, 1, 0);
    EXPECT_EQ(1, log.merge_all_matching(view.get()));
    EXPECT_EQ((Values{"A1", "A2", "A2"}), columnOf(log, 0));
}

}  // namespace
