#include <gmock/gmock.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <vekdb/arrow/arrow.h>
#include <vekdb/host/text_util.h>
#include "arrow/export_batch.h"
#include "arrow/picture.h"
#include "arrow/reading.h"
#include "testing/failing_allocator.h"
#include "testing/random.h"
#include "testing/temp_dir.h"
#include "testing/views.h"

using arrow_testing::Contents;
using arrow_testing::contentsOf;
using arrow_testing::Pairs;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

Contents exported(const VDBBase& source, const ArrowExport& how = {}) {
    ArrowArrayStream stream = exportArrow(source, how);
    return contentsOf(stream);
}

std::unique_ptr<vekdb> clips() {
    auto table = std::make_unique<vekdb>(std::vector<DBFieldDesc>{
        {"Name", DBFieldTypes::text}, {"Start", DBFieldTypes::timecode}, {"Take", {}}});
    table->add_param("VEKDB", "Rev 1");
    addRow(*table, {"Kitchen", "01:00:00:00", "1"});
    addRow(*table, {"Hall, \"wide\"", "01:00:10:05", ""});
    addRow(*table, {"", "", "3"});
    return table;
}

// Released where a test ends early, too.
class Stream {
public:
    explicit Stream(const VDBBase& source, const ArrowExport& how = {})
        : stream_(exportArrow(source, how)) {}
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream() { release(); }

    ArrowArrayStream* operator->() { return &stream_; }
    ArrowArrayStream* get() { return &stream_; }
    ArrowArray next() {
        ArrowArray batch = {};
        EXPECT_EQ(stream_.get_next(&stream_, &batch), 0);
        return batch;
    }
    void release() {
        if (stream_.release != nullptr) stream_.release(&stream_);
    }

private:
    ArrowArrayStream stream_;
};

std::string firstCell(const ArrowArray& column) {
    const auto* places = static_cast<const std::int32_t*>(column.buffers[1]);
    const auto* bytes = static_cast<const char*>(column.buffers[2]);
    return {bytes, static_cast<std::size_t>(places[1])};
}

// The rows of each batch where places count 8 bytes of text, and the cell that was refused.
struct Counted {
    std::vector<std::int64_t> batches;
    std::optional<ArrowLongCell> refused;
};

Counted countedToEight(const VDBBase& source, ArrowBytes bytes) {
    const ArrowPicture picture = pictureOf(source, false);
    ArrowBatches batches(picture, {.bytes = bytes}, 8);
    Counted counted;
    try {
        while (!batches.isAtEnd()) {
            ArrowArray batch = {};
            batches.make(batch);
            counted.batches.push_back(batch.length);
            batch.release(&batch);
        }
    } catch (const ArrowLongCell& cell) {
        counted.refused = cell;
    }
    return counted;
}

}  // namespace

TEST(ArrowExport, GivesAColumnOfTextsForEachField) {
    const Contents contents = exported(*clips());
    EXPECT_THAT(contents.faults, IsEmpty());
    ASSERT_EQ(contents.fields.size(), 3u);
    EXPECT_EQ(contents.fields[1].name, "Start");
    for (const auto& field : contents.fields) EXPECT_EQ(field.format, "u");
    EXPECT_THAT(contents.rows, ElementsAre(ElementsAre("Kitchen", "01:00:00:00", "1"),
                                           ElementsAre("Hall, \"wide\"", "01:00:10:05", ""),
                                           ElementsAre("", "", "3")));
}

TEST(ArrowExport, TellsTypesOfColumnsAndParametersInMetadata) {
    auto table = clips();
    table->add_param("Show", "Night Train");
    table->add_param("Show", "Night Train");
    const Contents contents = exported(*table);
    EXPECT_THAT(contents.fields[1].metadata, ElementsAre(Pair("vekdb.type", "timecode")));
    EXPECT_THAT(contents.metadata, testing::Contains(Pair("vekdb.parameter:Show", "Night Train")));
    EXPECT_EQ(contents.metadata.size(), table->get_num_params());
}

TEST(ArrowExport, AViewGivesItsRowsInItsOrderWithItsOwnParameters) {
    auto table = clips();
    VDBView view(table.get());
    view->append(2);
    view->append(0);
    view->add_param("Choice", "best");
    const Contents contents = exported(*view);
    EXPECT_THAT(contents.faults, IsEmpty());
    EXPECT_THAT(contents.column(2), ElementsAre("3", "1"));
    EXPECT_THAT(contents.metadata, testing::Contains(Pair("vekdb.parameter:Choice", "best")));
}

TEST(ArrowExport, OnlyRowsThatAreShownAreHandedOver) {
    auto table = clips();
    table->set_tag(1, 1);
    table->set_show_tags_only(1);
    EXPECT_THAT(exported(*table).column(1), ElementsAre("01:00:10:05"));
}

TEST(ArrowExport, ASourceWithoutColumnsOrRowsIsAStreamWithoutBatches) {
    for (const auto& table : {std::make_unique<vekdb>(), namedTable({})}) {
        const Contents contents = exported(*table);
        EXPECT_THAT(contents.faults, IsEmpty());
        EXPECT_EQ(contents.error, 0);
        EXPECT_THAT(contents.batches, IsEmpty());
    }
    EXPECT_THAT(exported(VDBViewRep(nullptr)).fields, IsEmpty());
}

TEST(ArrowExport, TagsStandInAColumnOfTheirOwn) {
    auto table = numberedTable(19);
    table->set_tag(1, 7);
    table->set_tag(18, 1);
    const Contents flags = exported(*table, {.tags = ArrowTags::flags});
    EXPECT_THAT(flags.faults, IsEmpty());
    EXPECT_EQ(flags.fields[1].name, "Tag");
    EXPECT_EQ(flags.fields[1].format, "b");
    EXPECT_THAT(flags.fields[1].metadata, ElementsAre(Pair("vekdb.tag", "flags")));
    for (std::size_t i = 0; i < 19; ++i) {
        EXPECT_EQ(flags.rows[i][1], i == 1 || i == 18 ? "true" : "false") << i;
    }
    const Contents numbers = exported(*table, {.tags = ArrowTags::numbers});
    EXPECT_EQ(numbers.rows[1][1], "7");
    EXPECT_EQ(numbers.fields[1].format, "C");
    EXPECT_THAT(numbers.faults, IsEmpty());
}

TEST(ArrowExport, TagsOfAViewAreTheViews) {
    auto table = numberedTable(3);
    table->set_tag(0, 1);
    VDBView view(table.get());
    view->buildIndex();
    view->set_tag(2, 1);
    EXPECT_THAT(exported(*view, {.tags = ArrowTags::flags}).column(1),
                ElementsAre("false", "false", "true"));
}

TEST(ArrowExport, TheColumnOfTagsTakesANameThatNoOtherHas) {
    vekdb table(textColumns({"Tag", "Tag2"}));
    addRow(table, {"a", "b"});
    EXPECT_EQ(exported(table, {.tags = ArrowTags::flags}).fields[2].name, "Tag3");
}

TEST(ArrowExport, BatchesAreBoundedInRowsAndInBytes) {
    auto table = namedTable({"aaaa", "bbbb", "cccccccccc", "dd", "ee", "ff", "gg"});
    EXPECT_THAT(exported(*table, {.rowsPerBatch = 3}).batches, ElementsAre(3, 3, 1));
    const Contents bounded = exported(*table, {.bytesPerBatch = 8});
    EXPECT_THAT(bounded.faults, IsEmpty());
    EXPECT_THAT(bounded.batches, ElementsAre(2, 1, 4));
    EXPECT_THAT(bounded.column(0),
                ElementsAre("aaaa", "bbbb", "cccccccccc", "dd", "ee", "ff", "gg"));
    EXPECT_THAT(exported(*table, {.rowsPerBatch = 0}).batches.size(), 7u);
}

TEST(ArrowExport, TextsAreLargeWhereABatchMayHoldMoreThanSmallOnesCan) {
    auto table = namedTable({"a", "", "bc"});
    const Contents contents =
        exported(*table, {.tags = ArrowTags::flags, .bytesPerBatch = std::uint64_t{1} << 31});
    EXPECT_THAT(contents.faults, IsEmpty());
    EXPECT_EQ(contents.fields[0].format, "U");
    EXPECT_THAT(contents.column(0), ElementsAre("a", "", "bc"));
    EXPECT_EQ(exported(*table, {.bytesPerBatch = 0x7FFFFFFF}).fields[0].format, "u");
    EXPECT_EQ(
        exported(*table, {.bytes = ArrowBytes::binary, .bytesPerBatch = std::uint64_t{1} << 40})
            .fields[0]
            .format,
        "Z");
}

TEST(ArrowExport, NoBatchHasMoreTextThanItsPlacesCount) {
    auto table = namedTable({"12345", "123", "\xFF\xFF", "\xFF", "1"});
    EXPECT_THAT(countedToEight(*table, ArrowBytes::binary).batches, ElementsAre(2, 3));
    EXPECT_THAT(countedToEight(*table, ArrowBytes::replace).batches, ElementsAre(1, 1, 1, 2));
}

TEST(ArrowExport, ACellThatPlacesDoNotCountIsRefused) {
    const auto tooLong = countedToEight(*namedTable({"12345678", "123456789"}), ArrowBytes::refuse);
    EXPECT_THAT(tooLong.batches, ElementsAre(1));
    ASSERT_TRUE(tooLong.refused);
    EXPECT_EQ(tooLong.refused->row, 1u);
    EXPECT_EQ(tooLong.refused->bytes, 9u);
    const auto grown = countedToEight(*namedTable({"a", "\xFF\xFF\xFF"}), ArrowBytes::replace);
    EXPECT_THAT(grown.batches, ElementsAre(1));
    ASSERT_TRUE(grown.refused);
    EXPECT_EQ(grown.refused->row, 1u);
    EXPECT_EQ(grown.refused->column, 0u);
    EXPECT_EQ(grown.refused->bytes, 9u);
}

TEST(ArrowExport, ACellThatIsNoUtf8RefusesItsBatchAndIsNamed) {
    auto table = namedTable({"good", "\xC3\xA9t\xC3\xA9", "caf\xE9"});
    const Contents contents = exported(*table, {.rowsPerBatch = 2});
    EXPECT_EQ(contents.error, EILSEQ);
    EXPECT_EQ(contents.rows.size(), 2u);
    EXPECT_THAT(contents.errorText, testing::HasSubstr("row 3, column 1 \"Name\": byte 4"));
    EXPECT_THAT(contents.errorText, testing::HasSubstr("0xE9"));
}

// The halves of a character in two cells are none, though they stand side by side in a batch.
TEST(ArrowExport, ACharacterAcrossTwoCellsIsNone) {
    auto table = namedTable({"x\xC3", "\xA9y"});
    EXPECT_EQ(exported(*table).error, EILSEQ);
}

TEST(ArrowExport, WhatIsNoUtf8IsReplacedOrHandedOverAsBinaryWhereAskedFor) {
    auto table = namedTable({"caf\xE9", "\xED\xA0\x80", "ok", "\xF4\x90\x80\x80", "\xC0\x80"});
    const Contents replaced = exported(*table, {.bytes = ArrowBytes::replace});
    EXPECT_THAT(replaced.faults, IsEmpty());
    EXPECT_EQ(replaced.rows[0][0], "caf\xEF\xBF\xBD");
    EXPECT_EQ(replaced.rows[2][0], "ok");
    const Contents binary = exported(*table, {.bytes = ArrowBytes::binary});
    EXPECT_THAT(binary.faults, IsEmpty());
    EXPECT_EQ(binary.fields[0].format, "z");
    EXPECT_THAT(binary.column(0),
                ElementsAre("caf\xE9", "\xED\xA0\x80", "ok", "\xF4\x90\x80\x80", "\xC0\x80"));
}

TEST(ArrowExport, ANameThatIsNoUtf8IsReplacedAndKeptBesides) {
    vekdb table(
        textColumns({"R\xE9"
                     "el"}));
    const Contents contents = exported(table);
    EXPECT_THAT(contents.faults, IsEmpty());
    EXPECT_EQ(contents.fields[0].name,
              "R\xEF\xBF\xBD"
              "el");
    EXPECT_THAT(contents.fields[0].metadata, testing::Contains(Pair("vekdb.name",
                                                                    "R\xE9"
                                                                    "el")));
}

TEST(ArrowExport, TheStreamShowsTheSourceAsItWasWhateverBecomesOfIt) {
    auto table = clips();
    VDBView view(table.get());
    view->buildIndex();
    Stream ofTable(*table);
    Stream ofView(*view);
    table->set_field(0, 0u, "changed");
    table->sort(-1, 0);
    table->delete_records(0, 2);
    view = nullptr;
    table.reset();
    for (Stream* stream : {&ofTable, &ofView}) {
        ArrowArray batch = stream->next();
        ASSERT_EQ(batch.length, 3);
        EXPECT_EQ(firstCell(*batch.children[0]), "Kitchen");
        batch.release(&batch);
    }
}

// An edit of the same length is written where the value stands, unless somebody shares it.
TEST(ArrowExport, EditsInPlaceDoNotReachTheStream) {
    testing_support::TempDir folder;
    auto made = clips();
    made->set_filename(fromUTF8(folder.file("log.vek").c_str()));
    ASSERT_EQ(made->save_text(), 3);
    vekdb table(made->get_filename(), 100, true);
    ASSERT_EQ(table.get_num_records(), 3u);
    Stream stream(table);
    ASSERT_TRUE(table.set_field(0, 0u, "kITCHEN"));
    ArrowArray batch = stream.next();
    EXPECT_EQ(firstCell(*batch.children[0]), "Kitchen");
    EXPECT_STREQ(table.getField(0, 0).c_str(), "kITCHEN");
    batch.release(&batch);
}

TEST(ArrowExport, BatchesSchemasAndColumnsOutliveTheStreamInAnyOrder) {
    auto table = clips();
    Stream stream(*table);
    ArrowSchema schema = {};
    ASSERT_EQ(stream->get_schema(stream.get(), &schema), 0);
    ArrowArray batch = stream.next();
    stream.release();
    table.reset();

    ArrowArray taken = *batch.children[1];
    batch.children[1]->release = nullptr;
    batch.release(&batch);
    EXPECT_EQ(batch.release, nullptr);
    EXPECT_EQ(firstCell(taken), "01:00:00:00");

    ArrowSchema field = *schema.children[2];
    schema.children[2]->release = nullptr;
    schema.release(&schema);
    EXPECT_STREQ(field.name, "Take");
    field.release(&field);
    taken.release(&taken);
    EXPECT_EQ(taken.release, nullptr);
}

TEST(ArrowExport, AStreamThatWasMovedWorksAtItsNewPlace) {
    auto table = clips();
    ArrowArrayStream first = exportArrow(*table);
    auto moved = std::make_unique<ArrowArrayStream>(first);
    first.release = nullptr;
    EXPECT_EQ(contentsOf(*moved).rows.size(), 3u);
}

TEST(ArrowExport, TheSchemaIsTheSameHoweverOftenItIsAskedForAndTheEndStays) {
    auto table = clips();
    Stream stream(*table);
    for (int i = 0; i < 3; ++i) {
        ArrowSchema schema = {};
        ASSERT_EQ(stream->get_schema(stream.get(), &schema), 0);
        EXPECT_EQ(schema.n_children, 3);
        schema.release(&schema);
    }
    ArrowArray batch = stream.next();
    batch.release(&batch);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(stream.next().release, nullptr);
    EXPECT_EQ(stream->get_last_error(stream.get()), nullptr);
}

TEST(ArrowExport, ACallWithoutAPlaceToWriteToIsRefused) {
    auto table = clips();
    Stream stream(*table);
    EXPECT_EQ(stream->get_next(stream.get(), nullptr), EINVAL);
    EXPECT_STRNE(stream->get_last_error(stream.get()), nullptr);
    EXPECT_EQ(stream->get_schema(stream.get(), nullptr), EINVAL);
}

// What an engine does: reads and releases on threads of its own.
TEST(ArrowExport, AnotherThreadReadsWhileTheTableIsEdited) {
    auto table = numberedTable(2000);
    ArrowArrayStream stream = exportArrow(*table, {.rowsPerBatch = 100});
    Contents contents;
    std::thread reader([&] { contents = contentsOf(stream); });
    for (unsigned row = 0; row < 2000; ++row) table->set_field(row, 0u, "other");
    reader.join();
    ASSERT_EQ(contents.rows.size(), 2000u);
    EXPECT_EQ(contents.rows[1999][0], "r1999");
}

TEST(ArrowExport, RandomTablesComeOverWhole) {
    testing_support::Random random;
    for (int round = 0; round < 60; ++round) {
        std::vector<std::string> names;
        std::vector<DBFieldDesc> columns;
        for (std::size_t i = 0, n = random.below(9); i < n; ++i) {
            names.push_back("c" + std::to_string(i) + random.text("abc ,\"", 5));
            columns.push_back({names.back().c_str(), DBFieldTypes::text});
        }
        vekdb table(columns);
        std::vector<std::vector<std::string>> rows(random.below(300));
        for (auto& row : rows) {
            const unsigned at = table.add_records(1);
            for (unsigned i = 0; i < columns.size(); ++i) {
                row.push_back(random.oneIn(3) ? "" : random.text("xyz \"\t\n,;0123456789", 40));
                table.setField(at, i, LightweightString<char>(row.back().c_str()));
            }
        }
        ArrowExport how;
        how.rowsPerBatch = static_cast<std::uint32_t>(1 + random.below(200));
        how.bytesPerBatch = 1 + random.below(5000);
        const Contents contents = exported(table, how);
        ASSERT_THAT(contents.faults, IsEmpty());
        ASSERT_EQ(contents.fields.size(), names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            ASSERT_EQ(contents.fields[i].name, names[i]);
        }
        ASSERT_EQ(contents.rows, rows);
    }
}

TEST(ArrowExport, WhereMemoryEndsNothingIsLostAndNothingLeaks) {
    using testing_support::CountingAllocator;
    using testing_support::failEachAllocation;
    auto table = clips();
    CountingAllocator counting;
    const auto read = [&] {
        ArrowArrayStream stream = exportArrow(*table, {.tags = ArrowTags::flags});
        ArrowSchema schema = {};
        int error = stream.get_schema(&stream, &schema);
        if (error == 0) schema.release(&schema);
        if (error == ENOMEM) error = stream.get_schema(&stream, &schema) == 0 ? 0 : ENOMEM;
        if (schema.release != nullptr) schema.release(&schema);
        ArrowArray batch = {};
        error = error != 0 ? error : stream.get_next(&stream, &batch);
        if (error == ENOMEM) error = stream.get_next(&stream, &batch);
        if (batch.release != nullptr) batch.release(&batch);
        stream.release(&stream);
        if (error != 0) throw std::string("a call that was made again failed");
    };
    const unsigned failures =
        failEachAllocation(read, [&] { EXPECT_EQ(counting.liveBlocks(), 0); });
    EXPECT_GT(failures, 20u);
    EXPECT_EQ(counting.liveBlocks(), 0);
}
