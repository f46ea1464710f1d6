// Tables of several threads that share texts, identities and files: each thread has its own tables
// and views, and what they share is counted by all of them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <vekdb/host/cookie_containers.h>
#include <vekdb/table.h>
#include <vekdb/views/field_map.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "host/disk_flush.h"
#include "testing/quiet.h"
#include "testing/tables.h"
#include "testing/temp_dir.h"

namespace {

using testing_support::Quiet;
using testing_support::TempDir;

constexpr int threads = 4;
constexpr unsigned rows = 200;

// What all threads have copies of.
struct Shared {
    std::vector<LightweightString<char>> texts;
    CookieVec list;
    CookieSet set;
    FieldMap map;
    TempDir folder;
};

Cookie cookieOf(unsigned number) {
    const std::string digits = std::to_string(10000 + number).substr(1);
    return Cookie(("0123456789abcdef0123456789ab" + digits + "000041").c_str(), false);
}

void fill(Shared& shared) {
    for (unsigned i = 0; i < 50; ++i) {
        const std::string text = "a text that is shared by all threads " + std::to_string(i);
        shared.texts.emplace_back(text.c_str());
        shared.list.add(cookieOf(i));
        shared.set.add(cookieOf(i));
        shared.map.append(shared.texts.back(), i % 2 == 0);
    }
}

std::vector<DBFieldDesc> columns() {
    return textColumns({"Name", "Scene", "Notes", "Cookie", "Tag"});
}

void fillTable(vekdb& table, const Shared& shared) {
    table.add_param("Project", "Night");
    table.add_records(static_cast<int>(rows));
    for (unsigned row = 0; row < rows; ++row) {
        table.setField(row, 0, shared.texts[row % shared.texts.size()]);
        table.setField(row, 2, shared.texts[(row * 7) % shared.texts.size()]);
        table.set_field(row, cookieOf(row));
        table.set_tag(row, row % 3 == 0);
    }
}

// Sorts share how records compare, so that only one may run at a time.
void sortByName(vekdb& table) {
    static std::mutex oneAtATime;
    const std::lock_guard<std::mutex> lock(oneAtATime);
    table.set_sortfield(0);
    table.sort(1, 0);
}

void work(const Shared& shared, int number, bool& isRight) {
    const LightweightString<wchar_t> path =
        shared.folder.widePath("log" + std::to_string(number) + ".vek");
    vekdb table(columns());
    fillTable(table, shared);
    const VDBView view(&table);
    view->displayAllRecords();
    const CookieVec list = shared.list;
    const CookieSet set(list);
    view->displayRecordsAt(list, 0);
    sortByName(table);
    table.delete_records(3, 20);
    const FieldMap map(shared.map);
    table.set_filename(path);
    table.save_text();
    const vekdb again(path, 1 << 30, true);
    isRight = again.get_num_records() == rows - 20 && set.size() == shared.set.size() &&
              map.size() == shared.texts.size();
}

int rounds() {
    return std::getenv("VEKDB_TEST_WHOLE") != nullptr ? 200 : 3;
}

TEST(Threads, WithTablesOfTheirOwnShareTextsIdentitiesAndFieldMaps) {
    const Quiet quiet;
    DiskFlush::isOn = false;
    Shared shared;
    fill(shared);
    for (int round = 0; round < rounds(); ++round) {
        bool isRight[threads] = {};
        std::vector<std::thread> running;
        for (int i = 0; i < threads; ++i) {
            running.emplace_back([&, i] { work(shared, i, isRight[i]); });
        }
        for (std::thread& thread : running) thread.join();
        for (bool right : isRight) ASSERT_TRUE(right);
    }
    std::printf("%d rounds of %d threads\n", rounds(), threads);
    DiskFlush::isOn = true;
}

}  // namespace
