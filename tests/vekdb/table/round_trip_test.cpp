#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/disk_flush.h"
#include "testing/capture_diagnostics.h"
#include "testing/random.h"
#include "testing/table_files.h"
#include "testing/temp_dir.h"

namespace {

using testing_support::CaptureDiagnostics;
using testing_support::errorOf;
using testing_support::Random;
using testing_support::rowsOf;
using testing_support::Strings;
using testing_support::TempDir;

// Nothing waits for the disk, so that there can be many trips.
struct RoundTrip : testing::Test {
    RoundTrip() { DiskFlush::isOn = false; }
    ~RoundTrip() override { DiskFlush::isOn = true; }
};

// What the format keeps: no blanks at the edges, no carriage return, no backslash before an n.
std::string keptValue(Random& random) {
    if (random.oneIn(4)) return "";
    std::string value = random.text("ab\",: x\n\x01\x1F\x7F\xA0\xC3", random.oneIn(50) ? 4000 : 12);
    return "<" + value + ">";
}

std::string keptName(Random& random, unsigned column) {
    return random.text("abc xyz,:", 10) + "_" + std::to_string(column);
}

void fill(vekdb& table, Random& random) {
    table.add_param("Project", ("p" + random.text("abc: ,", 20) + "p").c_str());
    table.add_records(static_cast<int>(random.below(40)));
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        for (unsigned field = 0; field < table.get_num_fields(); ++field) {
            table.setField(row, field, keptValue(random).c_str());
        }
    }
}

std::vector<DBFieldDesc> randomColumns(Random& random) {
    std::vector<DBFieldDesc> fields(1 + random.below(6));
    for (unsigned i = 0; i < fields.size(); ++i) {
        fields[i].name = keptName(random, i).insert(0, 1, 'n').c_str();
        fields[i].type = static_cast<DBFieldTypes::eType>(random.pick(std::string("aAtTdDMflncz")));
    }
    return fields;
}

void expectSame(const vekdb& a, const vekdb& b) {
    ASSERT_EQ(rowsOf(a), rowsOf(b));
    ASSERT_EQ(a.get_num_fields(), b.get_num_fields());
    for (unsigned i = 0; i < a.get_num_fields(); ++i) {
        ASSERT_STREQ(a.get_fieldname(i), b.get_fieldname(i));
        ASSERT_EQ(a.get_field_type(i), b.get_field_type(i));
    }
    ASSERT_EQ(a.get_num_params(), b.get_num_params());
    for (unsigned i = 0; i < a.get_num_params(); ++i) {
        ASSERT_STREQ(a.get_param_name(i), b.get_param_name(i));
        ASSERT_STREQ(a.get_param_text(i), b.get_param_text(i));
    }
    ASSERT_EQ(errorOf(a), errorOf(b));
}

// A few edits of the kinds that change how a loaded record keeps its values.
void edit(vekdb& table, Random& random) {
    for (std::size_t edits = random.below(20); edits > 0 && table.get_num_records() > 0; --edits) {
        const auto row = static_cast<unsigned>(random.below(table.get_num_records()));
        const auto field = static_cast<unsigned>(random.below(table.get_num_fields()));
        switch (random.below(5)) {
            case 0:
                table.delete_records(row, 1);
                break;
            case 1:
                table.insert_records(row, 1);
                break;
            case 2:
                table.copy_record(row, &table, 0);
                break;
            default:
                table.setField(row, field, keptValue(random).c_str());
        }
    }
}

TEST_F(RoundTrip, WhatWasSavedIsWhatLoads) {
    Random random;
    const TempDir folder;
    const CaptureDiagnostics said;
    for (int i = 0; i < 150; ++i) {
        vekdb table(randomColumns(random));
        table.set_filename(folder.widePath("log"));
        fill(table, random);
        ASSERT_EQ(static_cast<int>(table.get_num_records()), table.save_text());
        vekdb loaded(folder.widePath("log"), 1 << 30, true);
        ASSERT_TRUE(loaded.get_valid());
        expectSame(table, loaded);
    }
}

TEST_F(RoundTrip, EditedTablesKeepTheirEdits) {
    Random random;
    const TempDir folder;
    const CaptureDiagnostics said;
    vekdb first(randomColumns(random));
    first.set_filename(folder.widePath("log"));
    fill(first, random);
    first.save_text();
    for (int i = 0; i < 100; ++i) {
        vekdb table(folder.widePath("log"), 1 << 30, true);
        edit(table, random);
        table.save_text();
        vekdb loaded(folder.widePath("log"), 1 << 30, true);
        expectSame(table, loaded);
    }
}

TEST_F(RoundTrip, SavingAgainWritesTheSameBytes) {
    Random random;
    const TempDir folder;
    const CaptureDiagnostics said;
    for (int i = 0; i < 50; ++i) {
        vekdb table(randomColumns(random));
        table.set_filename(folder.widePath("log"));
        fill(table, random);
        table.save_text();
        const std::string bytes = folder.read("log");
        vekdb(folder.widePath("log"), 1 << 30, true).save_text();
        ASSERT_EQ(bytes, folder.read("log"));
    }
}

// What the rows of two columns come back as, the first one's values of these sizes.
std::vector<Strings> loadedAgain(std::size_t first, std::size_t second) {
    const TempDir folder;
    const CaptureDiagnostics said;
    vekdb table(std::vector<DBFieldDesc>{{"A", DBFieldTypes::text}, {"B", DBFieldTypes::text}});
    table.add_param("Project", "p");
    table.add_records(1);
    table.set_field(0, 0, std::string(first, 'a').c_str());
    table.set_field(0, 1, std::string(second, 'b').c_str());
    table.set_filename(folder.widePath("log"));
    EXPECT_EQ(1, table.save_text());
    EXPECT_EQ(first, table.getField(0, 0).length());
    return rowsOf(vekdb(folder.widePath("log"), 1 << 30, true));
}

TEST_F(RoundTrip, ValuesComeBackUpToTheLengthThatTheHeaderNames) {
    const auto rows = [](std::size_t a, std::size_t b) {
        return std::vector<Strings>{{std::string(a, 'a'), std::string(b, 'b')}};
    };
    const std::vector<Strings> none;
    EXPECT_EQ(rows(4094, 4094), loadedAgain(4094, 4094));
    EXPECT_EQ(rows(1, 4095), loadedAgain(1, 4095));
    EXPECT_EQ(none, loadedAgain(1, 4096));
    EXPECT_EQ(none, loadedAgain(4095, 1));
    EXPECT_EQ(none, loadedAgain(5000, 1));
    EXPECT_EQ((std::vector<Strings>{{std::string(4095, 'a'), ",b"}}), loadedAgain(4096, 1));
}

std::unique_ptr<vekdb> savedAndLoaded(vekdb& table, const TempDir& folder) {
    table.set_filename(folder.widePath("again"));
    table.save_text();
    return std::make_unique<vekdb>(folder.widePath("again"), 1 << 30, true);
}

std::string damage(std::string bytes, Random& random) {
    bytes.resize(random.oneIn(2) ? bytes.size() : random.below(bytes.size() + 1));
    for (std::size_t n = random.below(4); n > 0 && !bytes.empty(); --n) {
        bytes[random.below(bytes.size())] = static_cast<char>(random.below(256));
    }
    return bytes;
}

// Whatever the bytes are, loading answers. What is lost is lost with the first save; what comes
// back from that stays.
TEST_F(RoundTrip, OfDamagedFilesWhatOnceCameBackStays) {
    Random random;
    const TempDir folder;
    const CaptureDiagnostics said;
    vekdb table(randomColumns(random));
    table.set_filename(folder.widePath("log"));
    fill(table, random);
    table.save_text();
    const std::string bytes = folder.read("log");
    unsigned compared = 0;
    for (int i = 0; i < 400; ++i) {
        folder.write("damaged", damage(bytes, random));
        vekdb damaged(folder.widePath("damaged"), 1 << 30, random.oneIn(2));
        if (!damaged.get_valid()) continue;
        const auto first = savedAndLoaded(damaged, folder);
        if (!first->get_valid()) continue;
        const auto second = savedAndLoaded(*first, folder);
        if (!second->get_valid()) continue;
        ++compared;
        ASSERT_EQ(rowsOf(*first), rowsOf(*second));
    }
    EXPECT_GT(compared, 0u);
}

TEST_F(RoundTrip, AFileCutAnywhereLoadsARunOfItsRows) {
    Random random;
    const TempDir folder;
    const CaptureDiagnostics said;
    vekdb table(randomColumns(random));
    table.set_filename(folder.widePath("log"));
    fill(table, random);
    table.save_text();
    const std::string bytes = folder.read("log");
    const std::vector<Strings> rows = rowsOf(table);
    for (std::size_t size = 0; size < bytes.size(); size += 1 + size / 200) {
        folder.write("cut", bytes.substr(0, size));
        const vekdb cut(folder.widePath("cut"), 1 << 30, true);
        const std::vector<Strings> found = rowsOf(cut);
        ASSERT_LE(found.size(), rows.size());
        for (std::size_t i = 0; i + 1 < found.size(); ++i) ASSERT_EQ(rows[i], found[i]);
    }
}

}  // namespace
