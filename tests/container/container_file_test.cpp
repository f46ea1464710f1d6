#include <vekdb/container/container_file.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include <vekdb/host/os.h>
#include "host/posix/file_io.h"
#include "testing/capture_diagnostics.h"
#include "testing/print_strings.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

using Reader = QuorContainerFile::Reader;
using Writer = QuorContainerFile::Writer;
using String = LightweightString<char>;
using WideString = LightweightString<wchar_t>;
using testing_support::TempDir;

Cookie cookieOf(unsigned char number, unsigned char type = 'M') {
    Cookie cookie;
    cookie.uuid.bytes[0] = number;
    cookie.type = type;
    return cookie;
}

DBFieldDesc* binColumns() {
    static DBFieldDesc columns[] = {{"Cookie", DBFieldTypes::text},
                                    {"X", DBFieldTypes::numeric},
                                    {"Colour", DBFieldTypes::text},
                                    {}};
    return columns;
}

DBFieldDesc* columnsWithoutCookie() {
    static DBFieldDesc columns[] = {{"X", DBFieldTypes::numeric}, {}};
    return columns;
}

/// Passes the calls on and keeps what was asked for, in order.
class RecordingFiles final : public iFileService {
public:
    RecordingFiles() : before_(OS()->setFileService(this)) {}
    ~RecordingFiles() { OS()->setFileService(before_); }
    RecordingFiles(const RecordingFiles&) = delete;
    RecordingFiles& operator=(const RecordingFiles&) = delete;

    bool deleteFile(const WideString& path) override {
        calls.push_back("delete " + nameOf(path));
        return !refuseDeletion && before_->deleteFile(path);
    }
    bool moveFile(const WideString& from, const WideString& to, bool replace) override {
        calls.push_back("move " + nameOf(from) + " to " + nameOf(to) +
                        (replace ? " replacing" : ""));
        return before_->moveFile(from, to, replace);
    }

    std::vector<std::string> calls;
    bool refuseDeletion = false;

private:
    static std::string nameOf(const WideString& path) {
        return std::filesystem::path(toUTF8(path).c_str()).filename().string();
    }

    iFileService* before_;
};

struct Container : testing::Test {
    Container() : path(folder.widePath("bin.rak")) {}

    void saveItems(std::vector<Cookie> cookies) {
        Writer writer(binColumns());
        writer.setName("Rushes");
        for (const Cookie& cookie : cookies) writer.addItem(cookie);
        writer.save(path);
    }

    testing_support::CaptureDiagnostics said;
    TempDir folder;
    WideString path;
};

// --- keys and cookies of files

TEST(ContainerFile, KeysOfTheFixedAttributes) {
    EXPECT_STREQ("Name", QuorContainerFile::getNameParamKey().c_str());
    EXPECT_STREQ("Permanent", QuorContainerFile::getPermanentParamKey().c_str());
}

TEST(ContainerFile, ThePathsEndingSaysTheCookiesType) {
    const std::string name = cookieOf(7, 'Q').asString(false).c_str();
    auto cookieAt = [&](const std::string& ending) {
        const std::string path = "/bins/" + name + ending;
        return QuorContainerFile::getCookieFromFilename(fromUTF8(String(path.c_str())));
    };
    for (const char* ending : {".MSG", ".msg", ".mSg", ".sg"}) {
        EXPECT_EQ(cookieOf(7, 'M'), cookieAt(ending)) << ending;
    }
    for (const char* ending : {".rak", ".RAK", ".brak"}) {
        EXPECT_EQ(cookieOf(7, 'B'), cookieAt(ending)) << ending;
    }
    for (const char* ending : {"", ".ra", ".gs", ".log"}) {
        EXPECT_EQ(cookieOf(7, 'Q'), cookieAt(ending)) << ending;
    }
}

TEST(ContainerFile, TheEndingNeedsNoDot) {
    EXPECT_EQ('M', QuorContainerFile::getCookieFromFilename(L"foosg").type);
    EXPECT_EQ('B', QuorContainerFile::getCookieFromFilename(L"bedrak").type);
    EXPECT_EQ('I', QuorContainerFile::getCookieFromFilename(L"foo").type);
    EXPECT_EQ('I', QuorContainerFile::getCookieFromFilename(WideString()).type);
}

// --- writing

TEST(ContainerWriter, AnItemIsARecordWithItsCookie) {
    Writer writer(binColumns());
    dbrecord* item = writer.addItem(cookieOf(1));
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(1u, writer.get_num_records());
    EXPECT_EQ(item, writer.get_record(0));
    EXPECT_EQ(cookieOf(1).asString(true), item->getField(0));
    item->set_field(1, 5);
    EXPECT_STREQ("5", writer.getField(0, 1).c_str());
}

TEST(ContainerWriter, ACookieThatNamesNothingIsNotAdded) {
    Writer writer(binColumns());
    EXPECT_EQ(nullptr, writer.addItem(cookieOf(1, 'I')));
    EXPECT_EQ(nullptr, writer.addItem(Cookie()));
    EXPECT_EQ(0u, writer.get_num_records());
}

TEST(ContainerWriter, WhileOnlyTaggedRowsAreShownNothingIsAdded) {
    Writer writer(binColumns());
    writer.set_show_tags_only(1);
    EXPECT_EQ(nullptr, writer.addItem(cookieOf(1)));
    writer.set_show_tags_only(0);
    EXPECT_EQ(0u, writer.get_num_records());
}

TEST(ContainerWriter, WithoutACookieColumnTheRecordStaysEmpty) {
    Writer writer(columnsWithoutCookie());
    dbrecord* item = writer.addItem(cookieOf(1));
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(1u, writer.get_num_records());
    EXPECT_TRUE(item->is_blank());
    EXPECT_FALSE(item->get_changed());
}

TEST(ContainerWriter, TheCookieColumnIsTheOneFoundAtConstruction) {
    Writer writer(columnsWithoutCookie());
    writer.addField({"Cookie", DBFieldTypes::text});
    EXPECT_TRUE(writer.addItem(cookieOf(1))->is_blank());
}

TEST(ContainerWriter, AttributesAreParameters) {
    Writer writer(binColumns());
    writer.setName("Rushes");
    writer.setPermanent(true);
    writer.setAttrib("Owner", "me");
    EXPECT_STREQ("Rushes", writer.get_param_val("Name"));
    EXPECT_STREQ("true", writer.get_param_val("Permanent"));
    EXPECT_STREQ("me", writer.get_param_val("Owner"));
    writer.setPermanent(false);
    EXPECT_STREQ("false", writer.get_param_val("Permanent"));
    writer.setAttrib(String(), "nothing");
    EXPECT_EQ(4u, writer.get_num_params());  // with "VEKDB"
}

TEST_F(Container, SavingWhereNothingIsWritesTheFileItself) {
    RecordingFiles files;
    Writer writer(binColumns());
    writer.setName("Rushes");
    writer.save(path);
    EXPECT_TRUE(files.calls.empty());
    EXPECT_EQ(std::vector<std::string>{"bin.rak"}, folder.names());
    EXPECT_EQ(path, writer.get_filename());
}

TEST_F(Container, SavingOverAFileIsOneDeleteAndOneMoveInThatOrder) {
    saveItems({cookieOf(1)});
    RecordingFiles files;
    Writer writer(binColumns());
    writer.setName("Selects");
    writer.save(path);
    EXPECT_EQ((std::vector<std::string>{"delete bin.rak", "move bin.rak.tmp to bin.rak"}),
              files.calls);
    EXPECT_EQ(std::vector<std::string>{"bin.rak"}, folder.names());
    EXPECT_EQ(path + L".tmp", writer.get_filename());
    EXPECT_STREQ("Selects", Reader(path, false).getName().c_str());
}

TEST_F(Container, TheOldFileGoesThoughTheTemporaryOneCouldNotBeWritten) {
    saveItems({cookieOf(1)});
    std::filesystem::create_directory(folder.file("bin.rak.tmp"));
    RecordingFiles files;
    saveItems({cookieOf(2)});
    EXPECT_EQ((std::vector<std::string>{"delete bin.rak", "move bin.rak.tmp to bin.rak"}),
              files.calls);
    EXPECT_FALSE(folder.has("bin.rak"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.file("bin.rak.tmp")));
}

TEST_F(Container, WhereTheOldFileCannotBeDeletedTheMoveIsAskedForAndTheOldOneStays) {
    saveItems({cookieOf(1)});
    RecordingFiles files;
    files.refuseDeletion = true;
    saveItems({cookieOf(2)});
    EXPECT_EQ((std::vector<std::string>{"delete bin.rak", "move bin.rak.tmp to bin.rak"}),
              files.calls);
    EXPECT_TRUE(Reader(path, false).contains(cookieOf(1)));
    EXPECT_TRUE(Reader(path + L".tmp", false).contains(cookieOf(2)));
}

TEST(ContainerWriter, WhatStandsInTheTemporarysPlaceIsNeitherFollowedNorWrittenTo) {
    TempDir folder;
    const WideString path = folder.widePath("bin.rak");
    folder.write("target", "untouched");
    for (const bool isLink : {true, false}) {
        folder.write("bin.rak", "old");
        if (isLink) {
            std::filesystem::create_symlink("target", folder.file("bin.rak.tmp"));
        } else {
            std::filesystem::create_hard_link(folder.file("target"), folder.file("bin.rak.tmp"));
        }
        Writer writer(binColumns());
        writer.setName("Bin");
        writer.addItem(cookieOf(1));
        writer.save(path);
        EXPECT_EQ(folder.read("target"), "untouched");
        EXPECT_TRUE(Reader(path, false).contains(cookieOf(1)));
        EXPECT_FALSE(std::filesystem::is_symlink(folder.file("bin.rak")));
        EXPECT_EQ(folder.names(), (std::vector<std::string>{"bin.rak", "target"}));
    }
}

TEST(ContainerWriter, ASaveGivesNobodyElseAccess) {
    TempDir folder;
    using std::filesystem::perms;
    const WideString path = folder.widePath("bin.rak");
    for (const perms mode : {perms::owner_read | perms::owner_write,
                             perms::owner_read | perms::owner_write | perms::group_read}) {
        folder.write("bin.rak", "old");
        std::filesystem::permissions(folder.file("bin.rak"), mode);
        Writer writer(binColumns());
        writer.setName("Bin");
        writer.save(path);
        EXPECT_EQ(std::filesystem::status(folder.file("bin.rak")).permissions(), mode);
    }
}

TEST(ContainerWriter, ASaveThatFailsLeavesNoEmptyFile) {
    TempDir folder;
    folder.write("bin.rak", "old");
    const FileIO::SystemCalls before = FileIO::systemCalls();
    FileIO::systemCalls().write = [](int, const void*, std::size_t) {
        errno = ENOSPC;
        return ssize_t{-1};
    };
    Writer writer(binColumns());
    writer.setName("Bin");
    writer.save(folder.widePath("bin.rak"));
    FileIO::systemCalls() = before;
    EXPECT_EQ(folder.names(), std::vector<std::string>());
}

TEST_F(Container, WithoutAnAttributeItIsWrittenButCannotBeRead) {
    Writer writer(binColumns());
    writer.addItem(cookieOf(1));
    writer.save(path);
    EXPECT_TRUE(folder.has("bin.rak"));
    EXPECT_FALSE(Reader(path, false).valid());
}

TEST_F(Container, AFolderAtThePathIsNoFileToReplace) {
    std::filesystem::create_directory(folder.file("bin.rak"));
    RecordingFiles files;
    saveItems({cookieOf(1)});
    EXPECT_TRUE(files.calls.empty());
    EXPECT_TRUE(std::filesystem::is_directory(folder.file("bin.rak")));
}

// --- reading

TEST_F(Container, ReadsBackWhatWasWritten) {
    Writer writer(binColumns());
    writer.setName("Rushes \xC3\xA9");
    writer.setPermanent(true);
    writer.addItem(cookieOf(3))->set_field(1, "12abc");
    writer.addItem(cookieOf(1))->set_field(2, "red");
    writer.save(path);

    Reader reader(path, false);
    EXPECT_TRUE(reader.valid());
    EXPECT_STREQ("Rushes \xC3\xA9", reader.getName().c_str());
    EXPECT_EQ(WideString(L"Rushes \x00E9"), reader.getNameW());
    EXPECT_TRUE(reader.isPermanent());
    ASSERT_EQ(2u, reader.getNumItems());
    EXPECT_EQ(cookieOf(3), reader.getItem(0).getCookie());
    EXPECT_EQ(cookieOf(1), reader.getItem(1).getCookie());
    EXPECT_EQ(12, reader.getItem(0).getAttrib(1, 7));
    EXPECT_STREQ("red", reader.getItem(1).getAttrib(2).c_str());
}

TEST_F(Container, ReplacesWhatWasWritten) {
    saveItems({cookieOf(1), cookieOf(2)});
    saveItems({cookieOf(3)});
    Reader reader(path, false);
    ASSERT_EQ(1u, reader.getNumItems());
    EXPECT_EQ(cookieOf(3), reader.getItem(0).getCookie());
}

TEST_F(Container, AHeaderHasAttributesAndColumnsButNoItems) {
    saveItems({cookieOf(1)});
    Reader reader(path, true);
    EXPECT_TRUE(reader.valid());
    EXPECT_EQ(0u, reader.getNumItems());
    EXPECT_STREQ("Rushes", reader.getName().c_str());
    EXPECT_EQ(2, reader.getItemAttribIndex("Colour"));
    EXPECT_FALSE(reader.contains(cookieOf(1)));
}

TEST_F(Container, ItsOwnCookieIsThatOfTheFilesName) {
    const Cookie cookie = cookieOf(9, 'Q');
    const std::string name = std::string(cookie.asString(false).c_str()) + ".rak";
    path = folder.widePath(name);
    saveItems({});
    EXPECT_EQ(cookie, Reader(path, false).getCookie());
    EXPECT_EQ(Cookie(), Reader(folder.widePath("missing.rak"), false).getCookie());
}

TEST_F(Container, AnAbsentOrEmptyAttributeGivesTheDefault) {
    Writer writer(binColumns());
    writer.setAttrib("Empty", "");
    writer.setAttrib("Number", "12abc");
    writer.setAttrib("Fraction", "2.5x");
    writer.setAttrib("Word", "abc");
    writer.save(path);
    Reader reader(path, false);
    EXPECT_EQ(7, reader.getAttrib("Absent", 7));
    EXPECT_EQ(7, reader.getAttrib("Empty", 7));
    EXPECT_EQ(12, reader.getAttrib("Number", 7));
    EXPECT_EQ(0, reader.getAttrib("Word", 7));
    EXPECT_EQ(7.5, reader.getAttrib("Absent", 7.5));
    EXPECT_EQ(7.5, reader.getAttrib("Empty", 7.5));
    EXPECT_EQ(2.5, reader.getAttrib("Fraction", 7.5));
    EXPECT_TRUE(reader.getAttrib("Absent").empty());
    EXPECT_STREQ("12abc", reader.getAttrib("number").c_str());
}

TEST_F(Container, IsPermanentOnlyWhereTheAttributeSaysSo) {
    for (auto [value, expected] : {std::pair{"true", true},
                                   {"T", true},
                                   {"1", true},
                                   {"false", false},
                                   {"perhaps", false},
                                   {"", false}}) {
        Writer writer(binColumns());
        writer.setAttrib("Permanent", value);
        writer.save(path);
        EXPECT_EQ(expected, Reader(path, true).isPermanent()) << value;
    }
    saveItems({});
    EXPECT_FALSE(Reader(path, true).isPermanent());
}

TEST_F(Container, ContainsTheCookiesOfItsItems) {
    saveItems({cookieOf(1), cookieOf(2), cookieOf(2), cookieOf(3)});
    Reader reader(path, false);
    EXPECT_TRUE(reader.contains(cookieOf(1)));
    EXPECT_TRUE(reader.contains(cookieOf(2)));
    EXPECT_TRUE(reader.contains(cookieOf(3)));
    EXPECT_FALSE(reader.contains(cookieOf(4)));
    EXPECT_FALSE(reader.contains(cookieOf(1, 'B')));
    EXPECT_FALSE(reader.contains(Cookie()));
}

TEST_F(Container, ContentsAreASetOfTheCookies) {
    saveItems({cookieOf(3), cookieOf(1), cookieOf(3)});
    CookieSet contents = Reader(path, false).getContents();
    ASSERT_EQ(2u, contents.size());
    EXPECT_TRUE(contents.contains(cookieOf(1)));
    EXPECT_TRUE(contents.contains(cookieOf(3)));
}

TEST_F(Container, CookiesThatDoNotParseReadAsTheDefaultOne) {
    Writer writer(binColumns());
    writer.setName("Rushes");
    writer.addItem(cookieOf(1))->set_field(0, "garbage");
    writer.addItem(cookieOf(2))->set_field(0, "");
    writer.save(path);
    Reader reader(path, false);
    EXPECT_EQ(Cookie(), reader.getItem(0).getCookie());
    EXPECT_TRUE(reader.contains(Cookie()));
    EXPECT_EQ(1u, reader.getContents().size());
}

TEST_F(Container, AnItemThatDoesNotExistHasNoRecord) {
    saveItems({cookieOf(1)});
    Reader::Item item = Reader(path, false).getItem(1);
    EXPECT_EQ(Cookie(), item.getCookie());
    EXPECT_TRUE(item.getAttrib(0).empty());
    EXPECT_EQ(7, item.getAttrib(0, 7));
    EXPECT_EQ(7.5, item.getAttrib(0, 7.5));
}

TEST_F(Container, AttributesOfItemsAreReadByColumn) {
    Writer writer(binColumns());
    writer.setName("Rushes");
    writer.addItem(cookieOf(1))->set_field(1, "2.5");
    writer.save(path);
    Reader reader(path, false);
    Reader::Item item = reader.getItem(0);
    EXPECT_EQ(2, item.getAttrib(1, 7));
    EXPECT_EQ(2.5, item.getAttrib(1, 7.5));
    EXPECT_EQ(0, item.getAttrib(2, 7));  // empty, but there
    EXPECT_EQ(0.0, item.getAttrib(2, 7.5));
    EXPECT_EQ(7, item.getAttrib(3, 7));
    EXPECT_EQ(7.5, item.getAttrib(3, 7.5));
    EXPECT_TRUE(item.getAttrib(3).empty());
    EXPECT_EQ(2, item.getAttrib(0x10001, 7));  // columns count modulo 65,536
    EXPECT_EQ(7, item.getAttrib(static_cast<unsigned>(reader.getItemAttribIndex("absent")), 7));
}

TEST_F(Container, ColumnsOfItemsAreFoundIgnoringCase) {
    saveItems({});
    Reader reader(path, false);
    EXPECT_EQ(0, reader.getItemAttribIndex("cookie"));
    EXPECT_EQ(1, reader.getItemAttribIndex("x"));
    EXPECT_EQ(-1, reader.getItemAttribIndex("absent"));
    EXPECT_EQ(-1, reader.getItemAttribIndex(nullptr));
}

void expectNothingIn(const Reader& reader) {
    EXPECT_FALSE(reader.valid());
    EXPECT_TRUE(reader.getName().empty());
    EXPECT_TRUE(reader.getNameW().empty());
    EXPECT_EQ(7, reader.getAttrib("Name", 7));
    EXPECT_FALSE(reader.isPermanent());
    EXPECT_EQ(Cookie(), reader.getItem(0).getCookie());
    EXPECT_TRUE(reader.getItem(0).getAttrib(0).empty());
    EXPECT_EQ(-1, reader.getItemAttribIndex("X"));
    EXPECT_FALSE(reader.contains(cookieOf(1)));
    EXPECT_EQ(0u, reader.getContents().size());
}

TEST_F(Container, AFileThatIsNotThereIsNoContainer) {
    Reader reader(path, false);
    expectNothingIn(reader);
    EXPECT_EQ(0u, reader.getNumItems());
}

TEST_F(Container, AFileWithoutACookieColumnIsNoContainerButHasItsRecords) {
    Writer writer(columnsWithoutCookie());
    writer.setName("Rushes");
    writer.addItem(cookieOf(1))->set_field(0, "5");
    writer.save(path);
    Reader reader(path, false);
    expectNothingIn(reader);
    EXPECT_EQ(1u, reader.getNumItems());
}

TEST_F(Container, DamageAnywhereIsAnsweredNotFatal) {
    saveItems({cookieOf(1), cookieOf(2)});
    const std::string whole = folder.read("bin.rak");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        folder.write("bin.rak", whole.substr(0, length));
        Reader reader(path, false);
        EXPECT_LE(reader.getNumItems(), 2u);
        EXPECT_LE(reader.getContents().size(), 2u);
        reader.contains(cookieOf(2));
        for (unsigned i = 0; i <= reader.getNumItems(); ++i) reader.getItem(i).getAttrib(1, 0);
    }
}

TEST_F(Container, ADamagedLineEndsAValidContainerAndIsReported) {
    saveItems({cookieOf(1), cookieOf(2)});
    std::string text = folder.read("bin.rak");
    const std::size_t second = text.find(cookieOf(2).asString(false).c_str());
    ASSERT_NE(std::string::npos, second);
    folder.write("bin.rak", text.substr(0, second + 10));
    Reader reader(path, false);
    EXPECT_TRUE(reader.valid());
    EXPECT_EQ(1u, reader.getNumItems());
    dberror error;
    EXPECT_TRUE(reader.read_error_info(error));
}

}  // namespace
