#include <vekdb/host/row_numbers.h>

#include <gtest/gtest.h>

#include <climits>

#include <vekdb/host/notify.h>

namespace {

TEST(RowNumbers, AreKeptInTheirOrderHoweverMany) {
    RowNumbers rows;
    for (int row = 0; row < 1000; ++row) rows.append(999 - row);
    ASSERT_EQ(1000u, rows.size());
    for (int row = 0; row < 1000; ++row) EXPECT_EQ(999 - row, rows[static_cast<std::size_t>(row)]);
}

TEST(RowNumbers, TextHasABlankBehindEach) {
    RowNumbers rows;
    EXPECT_TRUE(rows.text().empty());
    rows.append(3);
    rows.append(-1);
    rows.append(INT_MIN);
    rows.append(INT_MAX);
    EXPECT_STREQ("3 -1 -2147483648 2147483647 ", rows.text().c_str());
}

TEST(NotifyMsgOfRows, HasTheirTextAndTheNumbersThemselves) {
    RowNumbers rows;
    rows.append(4);
    rows.append(5);
    const NotifyMsg message(rows);
    EXPECT_STREQ("4 5 ", message.text().c_str());
    EXPECT_EQ(&rows, message.rows());
    EXPECT_FALSE(message.object());
    NotifyMsgTokenIterator token(message);
    EXPECT_EQ("4", token.token());
    EXPECT_EQ("5", (++token).token());
}

TEST(NotifyMsgOfRows, CopiesHoldTheTextAndOutliveTheNumbers) {
    NotifyMsg assigned;
    Quor::Ptr<iObject> none;
    NotifyMsg copied("", none);
    {
        RowNumbers rows;
        rows.append(7);
        const NotifyMsg message(rows);
        assigned = message;
        copied = NotifyMsg(message);
    }
    EXPECT_STREQ("7 ", assigned.text().c_str());
    EXPECT_STREQ("7 ", copied.text().c_str());
    EXPECT_EQ(nullptr, assigned.rows());
    EXPECT_EQ(nullptr, copied.rows());
}

}  // namespace
