#include <vekdb/sort.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>

#include <vekdb/host/strxcmp.h>
#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "testing/tables.h"
#include "vekdb/order/record_key.h"
#include "vekdb/order/record_sort.h"

namespace {

using Values = std::vector<std::string>;
using Rows = std::vector<Values>;

std::unique_ptr<vekdb> tableOf(const std::vector<DBFieldDesc>& columns, const Rows& rows) {
    auto table = std::make_unique<vekdb>(columns);
    for (const Values& values : rows) {
        unsigned row = table->add_records(1);
        for (unsigned i = 0; i < values.size(); ++i) {
            table->get_record(row)->setField(static_cast<unsigned short>(i), values[i].c_str());
        }
    }
    return table;
}

std::unique_ptr<vekdb> oneColumn(const Values& values,
                                 DBFieldTypes::eType type = DBFieldTypes::text) {
    Rows rows;
    for (const std::string& value : values) rows.push_back({value});
    return tableOf({{"A", type}}, rows);
}

Values sorted(const Values& values, int direction = 1, int offset = 0, int forceNormal = 0,
              DBFieldTypes::eType type = DBFieldTypes::text) {
    auto table = oneColumn(values, type);
    table->set_sort_offset(offset);
    table->sort(direction, forceNormal);
    return columnOf(*table, 0);
}

Values sortedTimecodes(const Values& values) {
    return sorted(values, 1, 0, 0, DBFieldTypes::timecode);
}

int compare(vekdb& table, unsigned a, unsigned b,
            int (*routine)(const void*, const void*) = dbr_cmp) {
    const dbrecord* x = table.get_record(a);
    const dbrecord* y = table.get_record(b);
    return routine(&x, &y);
}

// --- what sortPrepare sets up

TEST(SortPrepare, FillsTheProcessWideState) {
    vekdb table({{"A", DBFieldTypes::text}, {"B", DBFieldTypes::timecode}});
    int list[] = {1, 0, -1};
    table.set_sortfields(list);
    table.set_sort_offset(7);
    comco = 5;
    EXPECT_EQ(list, table.sortPrepare(1, 3));
    EXPECT_EQ(7, s_off);
    EXPECT_EQ(0, comco);
    EXPECT_EQ(list, cmp_fields);
    EXPECT_EQ(3, force_normal_sort);
    EXPECT_EQ(1, timecode_field);
}

TEST(SortPrepare, WithoutATimecodeColumnInTheListThereIsNone) {
    vekdb table({{"A", DBFieldTypes::text}, {"B", DBFieldTypes::timecode}});
    table.sortPrepare(1, 0);
    EXPECT_EQ(-1, timecode_field);
    EXPECT_EQ(0, s_off);
}

TEST(SortPrepare, DirectionIsNotUsed) {
    vekdb table(textColumns({"A"}));
    table.set_sortfield(0);
    const int* up = table.sortPrepare(1, 0);
    EXPECT_EQ(up, table.sortPrepare(-1, 0));
    EXPECT_EQ(0, up[0]);
    EXPECT_EQ(-1, up[1]);
}

TEST(SortPrepare, ListPastTheLastColumnIsCutInTheCallersArray) {
    vekdb table(textColumns({"A", "B"}));
    int list[] = {1, 2, 0, -1};
    table.set_sortfields(list);
    table.sortPrepare(1, 0);
    EXPECT_EQ((std::vector{1, -1, 0, -1}), std::vector(list, list + 4));
}

TEST(SortPrepare, WalksOnPastEntriesItCutsAndFindsATimecodeColumnThere) {
    vekdb table(
        {{"A", DBFieldTypes::text}, {"B", DBFieldTypes::text}, {"C", DBFieldTypes::timecode}});
    int list[] = {0, 99, 2, 98, -1};
    table.set_sortfields(list);
    table.sortPrepare(1, 0);
    EXPECT_EQ((std::vector{0, -1, 2, -1, -1}), std::vector(list, list + 5));
    EXPECT_EQ(2, timecode_field);
}

TEST(SortPrepare, LastTimecodeColumnOfTheListWinsAndCompactOnesNever) {
    vekdb table({{"A", DBFieldTypes::timecode},
                 {"B", DBFieldTypes::timecode},
                 {"C", DBFieldTypes::timecode_s}});
    int list[] = {1, 0, 2, -1};
    table.set_sortfields(list);
    table.sortPrepare(1, 0);
    EXPECT_EQ(0, timecode_field);
}

TEST(SortPrepare, ATableWithoutColumnsCutsItsOwnListForGood) {
    vekdb table(static_cast<const DBFieldDesc*>(nullptr));
    table.sort(1, 0);
    table.addField({"A", DBFieldTypes::text});
    addRow(table, {"b"});
    addRow(table, {"a"});
    table.sort(1, 0);
    EXPECT_EQ((Values{"b", "a"}), columnOf(table, 0));
    table.set_sortfield(0);
    table.sort(1, 0);
    EXPECT_EQ((Values{"a", "b"}), columnOf(table, 0));
}

// --- the settings

TEST(SortSettings, SortfieldIsTheOnlySortColumn) {
    auto table = tableOf(textColumns({"A", "B"}), {{"1", "b"}, {"2", "a"}, {"3", "b"}});
    table->set_sortfield(1);
    table->sort(1, 0);
    EXPECT_EQ((Values{"2", "1", "3"}), columnOf(*table, 0));
}

TEST(SortSettings, SortfieldsKeepsTheCallersListAndSeesItChange) {
    auto table = tableOf(textColumns({"A", "B"}), {{"1", "b"}, {"2", "a"}});
    int list[] = {0, -1};
    table->set_sortfields(list);
    list[0] = 1;
    table->sort(1, 0);
    EXPECT_EQ((Values{"2", "1"}), columnOf(*table, 0));
}

TEST(SortSettings, SecondColumnDecidesWhereTheFirstIsEqual) {
    auto table = tableOf(textColumns({"A", "B"}), {{"x", "2"}, {"w", "3"}, {"X", "1"}});
    int list[] = {0, 1, -1};
    table->set_sortfields(list);
    table->sort(1, 0);
    EXPECT_EQ((Values{"3", "1", "2"}), columnOf(*table, 1));
}

TEST(SortSettings, NullListSortsByNothing) {
    auto table = oneColumn({"b", "a"});
    table->set_sortfields(nullptr);
    table->sort(1, 0);
    EXPECT_EQ((Values{"b", "a"}), columnOf(*table, 0));
}

TEST(SortSettings, NegativeColumnSortsByNothing) {
    auto table = oneColumn({"b", "a"});
    table->set_sortfield(-1);
    table->sort(1, 0);
    EXPECT_EQ((Values{"b", "a"}), columnOf(*table, 0));
}

// --- ascending

TEST(SortAscending, OrdersAsPeopleReadByDefault) {
    EXPECT_EQ((Values{"2", "10", "10a", "10B", "b"}), sorted({"10B", "b", "10", "2", "10a"}));
}

TEST(SortAscending, NumbersThatReadAlikeAreToldApartByTheirZeros) {
    for (int rows : {1, 30}) {  // few rows, and so many that keys are prepared
        Values values;
        for (int i = 0; i < rows; ++i) values.insert(values.end(), {"a1", "a01", "a00", "a0", "a"});
        Values expected = values;
        std::stable_sort(expected.begin(), expected.end(), [](const auto& a, const auto& b) {
            return strxcmp(a.c_str(), b.c_str()) < 0;
        });
        EXPECT_EQ(expected, sorted(values));
    }
}

TEST(SortAscending, TheZerosOfEveryNumberCount) {
    Values values;
    for (int i = 0; i < 30; ++i) {
        values.insert(values.end(), {"01 1 1", "01 1 0001", "01 01 1", "01 01 01"});
    }
    Values expected = values;
    std::stable_sort(expected.begin(), expected.end(), [](const auto& a, const auto& b) {
        return strxcmp(a.c_str(), b.c_str()) < 0;
    });
    EXPECT_EQ(expected, sorted(values));
}

TEST(SortAscending, IsTheDirectionThatIsNotNegative) {
    for (int rows : {1, 30}) {  // few rows, and so many that keys are prepared
        Values values;
        for (int i = 0; i < rows; ++i) values.insert(values.end(), {"b", "c", "a"});
        Values expected = values;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(expected, sorted(values, 0));
    }
}

TEST(SortAscending, ForcedNormalIgnoresCaseAndReadsNoNumbers) {
    EXPECT_EQ((Values{"10", "2", "a", "B"}), sorted({"B", "2", "a", "10"}, 1, 0, 1));
}

TEST(SortAscending, LeadingWhiteSpaceIsSkipped) {
    EXPECT_EQ((Values{"\t a", "b", "  c"}), sorted({"  c", "b", "\t a"}));
}

TEST(SortAscending, EmptyValuesGoLastAndSoDoThoseOfWhiteSpaceOnly) {
    auto table = tableOf(textColumns({"A", "B"}), {{"", "1"}, {"b", "2"}, {"  ", "3"}, {"a", "4"}});
    table->sort(1, 0);
    EXPECT_EQ((Values{"4", "2", "1", "3"}), columnOf(*table, 1));
}

TEST(SortAscending, BlankRecordsEndUpAfterAllOthers) {
    auto table = tableOf(textColumns({"A", "B"}), {{"", ""}, {"", "x"}, {"a", ""}});
    table->sort(1, 0);
    EXPECT_EQ((Values{"a", "", ""}), columnOf(*table, 0));
    EXPECT_EQ((Values{"", "x", ""}), columnOf(*table, 1));
}

TEST(SortAscending, BlankRecordsGoLastEvenWithNoSortColumn) {
    auto table = tableOf(textColumns({"A"}), {{""}, {"b"}, {""}, {"a"}});
    table->set_sortfield(-1);
    table->sort(1, 0);
    EXPECT_EQ((Values{"b", "a", "", ""}), columnOf(*table, 0));
}

TEST(SortAscending, TwoEmptyValuesCompareEqualWhateverTheSecondColumnHolds) {
    auto table = tableOf(textColumns({"A", "B"}), {{"", "z"}, {"", "a"}});
    int list[] = {0, 1, -1};
    table->set_sortfields(list);
    table->sortPrepare(1, 0);
    EXPECT_EQ(0, compare(*table, 0, 1));
    table->sort(1, 0);
    EXPECT_EQ((Values{"z", "a"}), columnOf(*table, 1));
}

TEST(SortAscending, EmptyInALaterColumnComesBehindWhereTheFirstIsEqual) {
    auto table = tableOf(textColumns({"A", "B"}), {{"x", ""}, {"x", "b"}, {"x", "a"}});
    int list[] = {0, 1, -1};
    table->set_sortfields(list);
    table->sort(1, 0);
    EXPECT_EQ((Values{"a", "b", ""}), columnOf(*table, 1));
}

TEST(SortAscending, MissingValuesCountAsEmpty) {
    auto table = tableOf(textColumns({"A", "B"}), {{"1", ""}, {"2", "a"}});
    const int unread = 0;
    table->get_record(0)->resizeRecord(1, &unread, false);
    table->set_sortfield(1);
    table->sortPrepare(1, 0);
    EXPECT_GT(compare(*table, 0, 1), 0);
    EXPECT_GT(compare(*table, 0, 1, dbr_backcmp), 0);
}

TEST(SortAscending, RowsThatCompareEqualKeepTheirOrder) {
    auto table = tableOf(textColumns({"A", "B"}), {{"x", "3"}, {"X", "1"}, {"x", "2"}});
    table->sort(1, 0);
    EXPECT_EQ((Values{"3", "1", "2"}), columnOf(*table, 1));
    table->sort(-1, 0);
    EXPECT_EQ((Values{"3", "1", "2"}), columnOf(*table, 1));
}

// --- timecode

TEST(SortTimecode, SeparatorOfTheFramesIsIgnored) {
    auto table = oneColumn({"01:00:00:10", "01:00:00;10"}, DBFieldTypes::timecode);
    table->sortPrepare(1, 0);
    EXPECT_EQ(0, compare(*table, 0, 1));
    EXPECT_EQ((Values{"01:00:00;09", "01:00:00:10", "01:00:00;11"}),
              sortedTimecodes({"01:00:00;11", "01:00:00:10", "01:00:00;09"}));
}

TEST(SortTimecode, OfAColumnThatIsNotTheRuleHoldsNot) {
    auto table = oneColumn({"01:00:00:10", "01:00:00;10"}, DBFieldTypes::timecode_s);
    table->sortPrepare(1, 0);
    EXPECT_LT(compare(*table, 0, 1), 0);
}

TEST(SortTimecode, IgnoresCaseInFrontAndBehind) {
    auto table = oneColumn({"ABCDEFGH:XY", "abcdefgh;xy"}, DBFieldTypes::timecode);
    table->sortPrepare(1, 0);
    EXPECT_EQ(0, compare(*table, 0, 1));
}

TEST(SortTimecode, ShortValuesHaveAnEmptyTail) {
    EXPECT_EQ((Values{"01:00", "01:00:00", "01:00:00:00", "01:00:01"}),
              sortedTimecodes({"01:00:01", "01:00:00:00", "01:00", "01:00:00"}));
    auto table = oneColumn({"01:00:00", "01:00:00:"}, DBFieldTypes::timecode);
    table->sortPrepare(1, 0);
    EXPECT_EQ(0, compare(*table, 0, 1));
}

TEST(SortTimecode, TheOffsetDoesNotTouchIt) {
    auto table = oneColumn({"01:00:00:10", "02:00:00:09"}, DBFieldTypes::timecode);
    table->set_sort_offset(-2);
    table->sort(1, 0);
    EXPECT_EQ((Values{"01:00:00:10", "02:00:00:09"}), columnOf(*table, 0));
}

// --- offset

TEST(SortOffset, NegativeComparesTheEndsOfValues) {
    EXPECT_EQ((Values{"xyz11", "abc12"}), sorted({"abc12", "xyz11"}, 1, -2));
}

TEST(SortOffset, PositiveSkipsCharacters) {
    EXPECT_EQ((Values{"BBapple", "AAzebra"}), sorted({"AAzebra", "BBapple"}, 1, 2));
}

TEST(SortOffset, PositiveHoldsInAForcedSortToo) {
    EXPECT_EQ((Values{"BBapple", "AAzebra"}), sorted({"AAzebra", "BBapple"}, 1, 2, 1));
}

TEST(SortOffset, NegativeIsIgnoredInAForcedSort) {
    EXPECT_EQ((Values{"abc12", "xyz11"}), sorted({"xyz11", "abc12"}, 1, -2, 1));
}

TEST(SortOffset, BeyondAValueLeavesAnEmptyTextThatSortsFirst) {
    EXPECT_EQ((Values{"zz", "abcd"}), sorted({"abcd", "zz"}, 1, 3));
    EXPECT_EQ((Values{"zz", "bcd"}), sorted({"bcd", "zz"}, 1, -3));
    EXPECT_EQ((Values{"b", "a"}), sorted({"b", "a"}, 1, INT_MIN));
    EXPECT_EQ((Values{"b", "a"}), sorted({"b", "a"}, 1, INT_MAX));
}

TEST(SortOffset, CountsBehindTheLeadingWhiteSpace) {
    EXPECT_EQ((Values{"   xa", "xb"}), sorted({"xb", "   xa"}, 1, 1));
}

TEST(SortOffset, ComparesPlainlyNotAsPeopleRead) {
    EXPECT_EQ((Values{"x10", "x2"}), sorted({"x2", "x10"}, 1, 1));
}

// --- descending

TEST(SortDescending, IsPlainComparisonTurnedRound) {
    EXPECT_EQ((Values{"c", "B", "a"}), sorted({"a", "c", "B"}, -1));
    EXPECT_EQ((Values{"2", "10"}), sorted({"10", "2"}, -1));
}

TEST(SortDescending, SkipsNoWhiteSpace) {
    EXPECT_EQ((Values{"a", " b"}), sorted({" b", "a"}, -1));
}

TEST(SortDescending, BlankRecordsGoWhereTheirEmptyTextSorts) {
    auto table = tableOf(textColumns({"A", "B"}), {{"", ""}, {"a", ""}, {"", "x"}});
    table->sort(-1, 0);
    EXPECT_EQ((Values{"a", "", ""}), columnOf(*table, 0));
    EXPECT_EQ((Values{"", "", "x"}), columnOf(*table, 1));  // equal rows as they were
}

TEST(SortDescending, EmptyValuesDoNotEndTheComparison) {
    auto table = tableOf(textColumns({"A", "B"}), {{"", "a"}, {"", "z"}});
    int list[] = {0, 1, -1};
    table->set_sortfields(list);
    table->sort(-1, 0);
    EXPECT_EQ((Values{"z", "a"}), columnOf(*table, 1));
}

TEST(SortDescending, KnowsNeitherTimecodeNorOffset) {
    auto table = oneColumn({"01:00:00:10", "01:00:00;10"}, DBFieldTypes::timecode);
    table->sortPrepare(-1, 0);
    EXPECT_GT(compare(*table, 0, 1, dbr_backcmp), 0);
    EXPECT_EQ((Values{"b1", "a2"}), sorted({"a2", "b1"}, -1, 1));
}

TEST(SortDescending, WithoutASortColumnEverythingIsEqual) {
    auto table = oneColumn({"", "b", "a"});
    table->set_sortfield(-1);
    table->sort(-1, 0);
    EXPECT_EQ((Values{"", "b", "a"}), columnOf(*table, 0));
}

// --- the comparison count

TEST(SortCount, GoesUpByOneForEveryCallOfEitherRoutine) {
    auto table = tableOf(textColumns({"A"}), {{"a"}, {"b"}, {""}});
    table->sortPrepare(1, 0);
    compare(*table, 0, 1);
    EXPECT_EQ(1, comco);
    compare(*table, 0, 2);  // decided by the blank record
    EXPECT_EQ(2, comco);
    compare(*table, 0, 1, dbr_backcmp);
    EXPECT_EQ(3, comco);
}

TEST(SortCount, CountsTheComparisonsOfASort) {
    for (int direction : {1, -1}) {
        for (int rows : {2, 1000}) {
            Values values(static_cast<std::size_t>(rows), "x");
            sorted(values, direction);
            EXPECT_GE(comco, rows - 1);
        }
    }
    sorted({"x"});
    EXPECT_EQ(0, comco);
}

TEST(SortCount, PreparedKeysCountAsOneForEachRowButTheFirst) {
    Values values;
    for (int i = 0; i < 1000; ++i) values.push_back(std::to_string(i * 7919 % 1000));
    sorted(values);
    EXPECT_EQ(999, comco);
}

// --- the table around it

struct SeesPreparation : vekdb {
    using vekdb::vekdb;
    int* sortPrepare(int direction, int forceNormal) override {
        calls.push_back({direction, forceNormal});
        return vekdb::sortPrepare(direction, forceNormal);
    }
    std::vector<std::pair<int, int>> calls;
};

TEST(TableSort, GoesThroughTheInterfaceToPrepare) {
    SeesPreparation table(textColumns({"A"}));
    table.sort(-1, 4);
    ASSERT_EQ(1u, table.calls.size());
    EXPECT_EQ(std::pair(-1, 4), table.calls[0]);
}

TEST(TableSort, OrdersHiddenRowsTooAndIndexesTheTaggedOnesAnew) {
    auto table = oneColumn({"d", "c", "b", "a"});
    table->set_tag(0, 1);
    table->set_tag(2, 1);
    table->set_show_tags_only(1);
    EXPECT_EQ((Values{"d", "b"}), columnOf(*table, 0));
    table->sort(1, 0);
    EXPECT_EQ((Values{"b", "d"}), columnOf(*table, 0));
    table->set_show_tags_only(0);
    EXPECT_EQ((Values{"a", "b", "c", "d"}), columnOf(*table, 0));
}

TEST(TableSort, MovesRecordsWithoutChangingThem) {
    auto table = oneColumn({"b", "a"});
    table->clear_changed();
    const dbrecord* b = table->get_record(0);
    table->sort(1, 0);
    EXPECT_EQ(b, table->get_record(1));
    EXPECT_FALSE(table->get_modified());
    EXPECT_FALSE(b->get_changed());
}

TEST(TableSort, AnEmptyTableAndOneRowAreSorted) {
    vekdb nothing;
    nothing.sort(1, 0);
    EXPECT_EQ(0u, nothing.get_num_records());
    EXPECT_EQ((Values{"a"}), sorted({"a"}));
}

TEST(TableSort, SortsAfterDeletions) {
    auto table = oneColumn({"c", "x", "b", "x", "a"});
    table->delete_records(1, 1);
    table->delete_records(2, 1);
    table->sort(1, 0);
    EXPECT_EQ((Values{"a", "b", "c"}), columnOf(*table, 0));
}

// --- a plain model of the comparison

std::string trimmed(std::string text) {
    while (!text.empty() && std::string(" \t\n\v\f\r").find(text[0]) != std::string::npos) {
        text.erase(0, 1);
    }
    return text;
}

std::string lower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

int sign(int number) {
    return (number > 0) - (number < 0);
}

int modelText(const std::string& a, const std::string& b) {
    return lower(a).compare(lower(b));
}

struct Settings {
    std::vector<int> columns;
    std::vector<DBFieldTypes::eType> types;
    int offset = 0;
    int forceNormal = 0;
    int direction = 1;

    int timecodeColumn() const {
        int found = -1;
        for (int column : columns) {
            if (types[static_cast<std::size_t>(column)] == DBFieldTypes::timecode) found = column;
        }
        return found;
    }
};

int modelValues(const std::string& a, const std::string& b, int column, const Settings& settings) {
    if (column == settings.timecodeColumn()) {
        auto digits = [](const std::string& text) {
            std::string head = text.substr(0, 8);
            head.resize(8);
            return head + (text.size() > 9 ? text.substr(9) : "");
        };
        return modelText(digits(a), digits(b));
    }
    const int offset = settings.offset;
    if (offset == 0 && settings.forceNormal == 0) return strxcmp(a.c_str(), b.c_str());
    auto part = [&](const std::string& text) -> std::string {
        const auto size = static_cast<int>(text.size());
        if (offset > 0) return offset < size ? text.substr(static_cast<unsigned>(offset)) : "";
        if (settings.forceNormal != 0) return text;
        return -offset > size ? "" : text.substr(static_cast<unsigned>(size + offset));
    };
    return modelText(part(a), part(b));
}

bool isBlank(const Values& row) {
    return std::all_of(row.begin(), row.end(), [](const auto& value) { return value.empty(); });
}

int modelAscending(const Values& a, const Values& b, const Settings& settings) {
    if (isBlank(a) || isBlank(b)) return isBlank(a) - isBlank(b);
    for (int column : settings.columns) {
        const std::string x = trimmed(a[static_cast<std::size_t>(column)]);
        const std::string y = trimmed(b[static_cast<std::size_t>(column)]);
        if (x.empty() && y.empty()) return 0;
        if (x.empty()) return 1;
        if (y.empty()) return -1;
        if (int order = modelValues(x, y, column, settings); order != 0) return order;
    }
    return 0;
}

int modelCompare(const Values& a, const Values& b, const Settings& settings) {
    if (settings.direction >= 0) return modelAscending(a, b, settings);
    for (int column : settings.columns) {
        const auto i = static_cast<std::size_t>(column);
        if (int order = modelText(a[i], b[i]); order != 0) return -order;
    }
    return 0;
}

// --- random tables

class RandomTables {
public:
    unsigned below(unsigned n) { return static_cast<unsigned>(random_.below(n)); }

    Settings settings(unsigned columns) {
        Settings made;
        for (unsigned i = 0; i < columns; ++i) {
            made.types.push_back(below(3) == 0 ? DBFieldTypes::timecode : DBFieldTypes::text);
        }
        for (unsigned i = below(6); i > 0; --i) {
            made.columns.push_back(static_cast<int>(below(columns)));
        }
        made.offset = below(2) == 0 ? 0 : static_cast<int>(below(9)) - 4;
        made.forceNormal = below(3) == 0;
        made.direction = below(3) == 0 ? -1 : 1;
        return made;
    }

    Rows rows(unsigned columns, unsigned count) {
        const unsigned kind = below(7);
        shared_.clear();
        for (int i = 0; i < 6; ++i) shared_.push_back(any(20) + any(below(2) * 60));
        Rows made;
        for (unsigned i = 0; i < count; ++i) {
            Values row;
            for (unsigned c = 0; c < columns; ++c) row.push_back(value(kind));
            made.push_back(std::move(row));
        }
        return made;
    }

    std::string value(unsigned kind) {
        if (below(6) == 0) return below(3) == 0 ? "  " : "";
        switch (kind) {
            case 0:
                return characters("aAbB0012 :", below(6));
            case 1:
                return timecode();
            case 2:  // longer than a key, and different only behind its end
                return std::string(40 + below(2) * 40, 'x') + characters("ab", 3);
            case 3:
                return characters("019a", 1 + below(4)) + std::string(below(3) * 60, '0') +
                       std::to_string(below(3));
            case 4:
                return any(below(5));
            case 5:  // long ones that many rows share
                return shared_[below(6)];
            default:
                return shared_[below(6)] + characters("ab", below(3));
        }
    }

private:
    std::string characters(std::string_view from, unsigned n) {
        std::string made;
        while (n-- > 0) made += from[below(static_cast<unsigned>(from.size()))];
        return made;
    }

    std::string any(unsigned n) {
        std::string made;
        while (n-- > 0) made += static_cast<char>(1 + below(255));
        return made;
    }

    std::string timecode() {
        std::string made = "0" + std::to_string(below(3)) + ":00:0" + std::to_string(below(3));
        return made + ":;"[below(2)] + "0" + std::to_string(below(3));
    }

    testing_support::Random random_;
    Values shared_;
};

std::vector<DBFieldDesc> columnsFor(const Settings& settings) {
    std::vector<DBFieldDesc> columns;
    for (DBFieldTypes::eType type : settings.types) {
        columns.push_back({LightweightString<char>(std::to_string(columns.size()).c_str()), type});
    }
    return columns;
}

Rows rowsOf(const vekdb& table) {
    Rows rows(table.get_num_records());
    for (unsigned row = 0; row < rows.size(); ++row) {
        for (unsigned i = 0; i < table.get_num_fields(); ++i) {
            rows[row].push_back(table.getField(row, i).c_str());
        }
    }
    return rows;
}

void apply(vekdb& table, const Settings& settings, std::vector<int>& list) {
    list = settings.columns;
    list.push_back(-1);
    table.set_sortfields(list.data());
    table.set_sort_offset(settings.offset);
}

TEST(RandomSort, GivesTheOrderOfThePlainModel) {
    RandomTables random;
    for (int round = 0; round < 400; ++round) {
        const unsigned columns = 1 + random.below(3);
        const Settings settings = random.settings(columns);
        Rows rows =
            random.rows(columns, random.below(2) == 0 ? random.below(40) : 40 + random.below(200));
        auto table = tableOf(columnsFor(settings), rows);
        std::vector<int> list;
        apply(*table, settings, list);
        table->sort(settings.direction, settings.forceNormal);
        std::stable_sort(rows.begin(), rows.end(), [&](const Values& a, const Values& b) {
            return modelCompare(a, b, settings) < 0;
        });
        ASSERT_EQ(rows, rowsOf(*table));
    }
}

// So many rows that every way of preparing keys is worth it; the second sort finds them in
// another order than they were made in.
TEST(RandomSort, OrdersManyRowsAndThenThemAnew) {
    RandomTables random;
    for (int round = 0; round < 14; ++round) {
        const unsigned columns = 2 + random.below(2);
        Settings settings = random.settings(columns);
        Rows rows = random.rows(columns, 1500 + random.below(1500));
        auto table = tableOf(columnsFor(settings), rows);
        for (int sort = 0; sort < 2; ++sort) {
            std::vector<int> list;
            apply(*table, settings, list);
            table->sort(settings.direction, settings.forceNormal);
            std::stable_sort(rows.begin(), rows.end(), [&](const Values& a, const Values& b) {
                return modelCompare(a, b, settings) < 0;
            });
            ASSERT_EQ(rows, rowsOf(*table));
            settings.columns = {static_cast<int>(random.below(columns)), 0};
            settings.direction = -settings.direction;
        }
    }
}

TEST(RandomSort, TheRoutinesAgreeWithThePlainModel) {
    RandomTables random;
    for (int round = 0; round < 60; ++round) {
        const unsigned columns = 1 + random.below(3);
        const Settings settings = random.settings(columns);
        const Rows rows = random.rows(columns, 15);
        auto table = tableOf(columnsFor(settings), rows);
        std::vector<int> list;
        apply(*table, settings, list);
        table->sortPrepare(1, settings.forceNormal);
        auto routine = settings.direction < 0 ? dbr_backcmp : dbr_cmp;
        for (unsigned a = 0; a < rows.size(); ++a) {
            for (unsigned b = 0; b < rows.size(); ++b) {
                ASSERT_EQ(sign(modelCompare(rows[a], rows[b], settings)),
                          sign(compare(*table, a, b, routine)));
            }
        }
    }
}

// --- keys

struct KeysOfTwo {
    KeysOfTwo(const KeyLayout& layout, const dbrecord& x, const dbrecord& y)
        : a(RecordKeyWriter(layout).write(x, bytes[0])),
          b(RecordKeyWriter(layout).write(y, bytes[1])),
          order(compareKeys(layout, a, b)) {}

    unsigned char bytes[2][RecordKey::largest];
    RecordKey a;
    RecordKey b;
    int order;
};

TEST(SortKey, DecidesAsTheRecordComparisonWhereItDecides) {
    unsigned decided = 0;
    RandomTables random;
    for (int round = 0; round < 100; ++round) {
        const unsigned columns = 1 + random.below(3);
        const Settings settings = random.settings(columns);
        auto table = tableOf(columnsFor(settings), random.rows(columns, 20));
        std::vector<int> list;
        apply(*table, settings, list);
        table->sortPrepare(1, settings.forceNormal);
        const bool descending = settings.direction < 0;
        auto routine = descending ? dbr_backcmp : dbr_cmp;
        const KeyLayout layout(descending);
        for (unsigned a = 0; a < 20; ++a) {
            for (unsigned b = 0; b < 20; ++b) {
                const KeysOfTwo keys(layout, *table->get_record(a), *table->get_record(b));
                if (keys.order == 0) {
                    ASSERT_EQ(keys.a.isCut(), keys.b.isCut());
                    if (keys.a.isCut()) continue;
                }
                ++decided;
                ASSERT_EQ(sign(compare(*table, a, b, routine)),
                          sign(descending ? -keys.order : keys.order));
            }
        }
    }
    EXPECT_GT(decided, 10000u);
}

TEST(SortKey, FoldsLettersAndNothingElseWhereverTheyStand) {
    auto table = oneColumn({"", ""});
    table->sortPrepare(-1, 0);
    const KeyLayout layout(true);
    const dbrecord& plain = *table->get_record(0);
    const dbrecord& folded = *table->get_record(1);
    for (unsigned length = 1; length < 20; ++length) {
        for (unsigned place = 0; place < length; ++place) {
            for (int byte = 1; byte < 256; ++byte) {
                std::string text(length, 'Q');
                text[place] = static_cast<char>(byte);
                table->setField(0, 0, text.c_str());
                table->setField(1, 0, lower(text).c_str());
                ASSERT_EQ(0, KeysOfTwo(layout, plain, folded).order) << text;
                const std::string other = lower(std::string(length, 'Q'));
                table->setField(1, 0, other.c_str());
                ASSERT_EQ(sign(lower(text).compare(other)),
                          sign(KeysOfTwo(layout, plain, folded).order))
                    << text;
            }
        }
    }
}

TEST(SortKey, TellsBytesApartThatDifferAsLettersOfAnotherCaseDo) {
    auto table = oneColumn({"", ""});
    table->sortPrepare(-1, 0);
    const KeyLayout layout(true);
    for (unsigned length : {1u, 7u, 8u, 9u, 17u}) {
        for (int byte = 1; byte < 256; ++byte) {
            const int other = byte ^ 0x20;
            if (other == 0) continue;
            std::string a(length, 'q');
            std::string b = a;
            a.back() = static_cast<char>(byte);
            b.back() = static_cast<char>(other);
            table->setField(0, 0, a.c_str());
            table->setField(1, 0, b.c_str());
            const KeysOfTwo keys(layout, *table->get_record(0), *table->get_record(1));
            ASSERT_EQ(sign(lower(a).compare(lower(b))), sign(keys.order)) << a;
        }
    }
}

// --- entries

std::vector<unsigned> positionsOf(const std::vector<SortEntry>& entries) {
    std::vector<unsigned> positions;
    for (const SortEntry& entry : entries) positions.push_back(entry.position);
    return positions;
}

TEST(SortEntries, EqualOnesComeInTheOrderOfTheirPositions) {
    for (unsigned count : {5u, 100u}) {
        auto table = oneColumn(Values(count, "same"));
        table->sortPrepare(1, 0);
        std::vector<SortEntry> entries;
        for (unsigned i = 0; i < count; ++i) {
            entries.push_back({table->get_record(i), (i * 37 + 11) % 101});
        }
        std::vector<unsigned> expected = positionsOf(entries);
        std::sort(expected.begin(), expected.end());
        sortRecordEntries(entries.data(), entries.size(), 1);
        EXPECT_EQ(expected, positionsOf(entries));
    }
}

TEST(SortEntries, RowsWithoutARecordKeepTheirPlacesAndTheOthersAreSortedAroundThem) {
    RandomTables random;
    for (int round = 0; round < 40; ++round) {
        const unsigned count = 2 + random.below(150);
        const int direction = random.below(2) == 0 ? 1 : -1;
        auto table = tableOf(textColumns({"A"}), random.rows(1, count));
        table->sortPrepare(direction, 0);
        std::vector<SortEntry> entries;
        for (unsigned i = 0; i < count; ++i) {
            entries.push_back({random.below(3) == 0 ? nullptr : table->get_record(i), i});
        }
        std::vector<SortEntry> present;
        for (const SortEntry& entry : entries) {
            if (entry.record != nullptr) present.push_back(entry);
        }
        sortRecordEntries(present.data(), present.size(), direction);
        std::vector<unsigned> expected = positionsOf(entries);
        auto next = present.begin();
        for (unsigned i = 0; i < count; ++i) {
            if (entries[i].record != nullptr) expected[i] = next++->position;
        }
        sortRecordEntries(entries.data(), count, direction);
        ASSERT_EQ(expected, positionsOf(entries));
    }
}

TEST(SortEntries, RowsWithoutARecordAloneStayAsTheyAre) {
    std::vector<SortEntry> entries;
    for (unsigned i = 0; i < 60; ++i) entries.push_back({nullptr, 59 - i});
    const std::vector<unsigned> before = positionsOf(entries);
    sortRecordEntries(entries.data(), entries.size(), 1);
    EXPECT_EQ(before, positionsOf(entries));
    sortRecordEntries(nullptr, 0, 1);
}

// --- exhausted memory

TEST(SortEntries, StandAsTheyDidWhenMemoryIsExhausted) {
    auto table = oneColumn({"c", "b", "a"});
    table->sortPrepare(1, 0);
    std::vector<SortEntry> entries;
    for (unsigned i = 0; i < 90; ++i) {
        entries.push_back({i % 7 == 0 ? nullptr : table->get_record(i % 3), i * 31 % 97});
    }
    const std::vector<unsigned> before = positionsOf(entries);
    const unsigned failures = testing_support::failEachAllocation(
        [&] { sortRecordEntries(entries.data(), entries.size(), 1); },
        [&] { ASSERT_EQ(before, positionsOf(entries)); });
    EXPECT_GT(failures, 1u);
    EXPECT_NE(before, positionsOf(entries));
}

TEST(TableSort, LeavesTheRowsAsTheyWereWhenMemoryIsExhausted) {
    Values values;
    for (int i = 0; i < 100; ++i) {
        values.push_back(std::string(70, 'x') + std::to_string(i * 7 % 100));
    }
    auto table = oneColumn(values);
    const unsigned failures = testing_support::failEachAllocation(
        [&] { table->sort(1, 0); }, [&] { ASSERT_EQ(values, columnOf(*table, 0)); });
    EXPECT_GT(failures, 1u);
    EXPECT_NE(values, columnOf(*table, 0));
}

}  // namespace
