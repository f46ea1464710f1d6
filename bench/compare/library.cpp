// This library as a participant of bench/compare/run: one work item a run, answered as one
// line of JSON. Uses one thread.
//     compare_library --work WORK --input LOG|ROWS [--result FILE] [--scratch FILE] [--repeat N]

#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include <vekdb/host/cookie.h>
#include <vekdb/host/cookie_containers.h>
#include <vekdb/support/version.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "host/disk_flush.h"
#include "measure.h"
#include "view_work.h"

using compare::Answer;
using compare::fail;
using compare::Request;
using compare::timed;

namespace {

LightweightString<wchar_t> wide(const std::string& path) {
    return LightweightString<wchar_t>(std::wstring(path.begin(), path.end()).c_str());
}

unsigned column(const VDBBase& table, const char* name) {
    unsigned found = table.get_fieldnum(name);
    if (found >= table.get_num_fields()) {
        fail(std::string("no column ") + name);
    }
    return found;
}

using Table = std::unique_ptr<vekdb>;

Table load(const std::string& path) {
    auto table = std::make_unique<vekdb>(wide(path), INT_MAX, true);
    if (!table->get_valid()) {
        fail("cannot load " + path);
    }
    return table;
}

// A table writes its tags into the column "Tag" when it is saved. With the tags as the column
// has them the file comes out as it went in.
void takeTagsFromColumn(vekdb& table) {
    unsigned tag = column(table, "Tag");
    unsigned rows = table.get_num_records();
    for (unsigned row = 0; row < rows; ++row) {
        table.set_tag(row, table.get_record(row)->fieldView(tag) == "1");
    }
}

// Writes the answer's rows for the check; not timed.
void keepRows(vekdb& table, const Request& request) {
    if (request.result.empty()) {
        return;
    }
    takeTagsFromColumn(table);
    table.set_filename(wide(request.result));
    if (table.save_text() == 0) {
        fail("cannot save " + request.result);
    }
}

void keepTagged(vekdb& table, const Request& request) {
    if (request.result.empty()) {
        return;
    }
    table.set_filename(wide(request.result));
    if (table.save_tags() == 0) {
        fail("cannot save " + request.result);
    }
}

// --- the floor: what nobody who reads the file can do without

std::size_t sizeOf(std::FILE* file) {
    struct stat about {};
    fstat(fileno(file), &about);
    return static_cast<std::size_t>(about.st_size);
}

// In pages as large as the system gives, so that the floor lies as low as it can.
unsigned char* largePages(std::size_t size) {
    constexpr std::size_t page = std::size_t(2) << 20;
    std::size_t whole = (size + page - 1) / page * page;
    void* block = std::aligned_alloc(page, whole);
    madvise(block, whole, MADV_HUGEPAGE);
    return static_cast<unsigned char*>(block);
}

std::uint64_t readAndLook(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        fail("cannot read " + path);
    }
    std::setvbuf(file, nullptr, _IONBF, 0);
    std::size_t size = sizeOf(file);
    unsigned char* bytes = largePages(size);
    std::size_t length = std::fread(bytes, 1, size, file);
    std::uint64_t lines = 0;
    for (std::size_t i = 0; i < length; ++i) {
        lines += bytes[i] == '\n';
    }
    std::free(bytes);
    std::fclose(file);
    return lines;
}

Answer floorWork(const Request& request) {
    Answer answer;
    timed(answer, [&] { answer.rows = readAndLook(request.input); });
    return answer;
}

// --- the work that the peers do too

Answer loadWork(const Request& request) {
    Answer answer;
    std::uint64_t before = compare::residentBytes();
    Table table;
    timed(answer, [&] { table = load(request.input); });
    answer.resident = compare::residentBytes() - before;
    answer.rows = table->get_num_records();
    keepRows(*table, request);
    return answer;
}

// The rows come one piece after the other, by this thread alone.
Answer loadInTurnWork(const Request& request) {
    OS()->setReadsAhead(false);
    return loadWork(request);
}

// What is behind the roads from file to file that copy and join tables.
void saveAs(vekdb& table, const std::string& path) {
    table.set_filename(wide(path));
    if (table.save_text() == 0) {
        fail("cannot save " + path);
    }
}

Answer loadAndSaveWork(const Request& request) {
    Answer answer;
    Table table = load(request.input);
    saveAs(*table, request.scratch);
    answer.rows = table->get_num_records();
    return answer;
}

// The second log of the roads stands beside the first: LOG-a.vek and LOG-b.vek.
Answer loadAndSaveBothWork(const Request& request) {
    Answer answer = loadAndSaveWork(request);
    std::string second = request.input;
    second.at(second.rfind("-a.") + 1) = 'b';
    Table table = load(second);
    saveAs(*table, request.scratch + ".second");
    answer.rows += table->get_num_records();
    return answer;
}

Answer saveWork(const Request& request) {
    Answer answer;
    Table table = load(request.input);
    takeTagsFromColumn(*table);
    table->set_filename(wide(request.result.empty() ? request.scratch : request.result));
    timed(answer, [&] { answer.rows = static_cast<unsigned>(table->save_text()); });
    return answer;
}

Answer queryWork(const Request& request, std::initializer_list<const char* const*> terms) {
    Answer answer;
    Table table = load(request.input);
    std::unique_ptr<dbrecord> query(table->make_dummy_record());
    for (const char* const* term : terms) {
        query->set_field(static_cast<int>(column(*table, term[0])), term[1]);
    }
    for (unsigned i = 0; i < request.repeat; ++i) {
        timed(answer, [&] {
            table->set_query(query.get());
            answer.rows = table->tag_matching_records(0);
        });
    }
    keepTagged(*table, request);
    return answer;
}

Answer containsWork(const Request& request) {
    const char* const description[] = {"Description", "dolly"};
    const char* const reel[] = {"Reel", "A1"};
    return queryWork(request, {description, reel});
}

Answer rangeWork(const Request& request) {
    const char* const time[] = {"Start time", "02:05:30:00"};
    return queryWork(request, {time});
}

Answer sortWork(const Request& request, int forceNormal) {
    Answer answer;
    Table table = load(request.input);
    int fields[] = {static_cast<int>(column(*table, "Scene")),
                    static_cast<int>(column(*table, "Start time")), -1};
    timed(answer, [&] {
        table->set_sortfields(fields);
        table->sort(1, forceNormal);
    });
    answer.rows = table->get_num_records();
    keepRows(*table, request);
    return answer;
}

// Of plain characters, as every peer sorts.
Answer sortPlainWork(const Request& request) {
    return sortWork(request, 1);
}

// As people read, where scene 9 comes before scene 10: what a user of the library gets.
Answer sortPeopleWork(const Request& request) {
    return sortWork(request, 0);
}

void tagEverySecond(VDBBase& source) {
    unsigned rows = source.get_num_records();
    for (unsigned row = 1; row < rows; row += 2) {
        source.set_tag(row, 1);
    }
}

Answer deleteWork(const Request& request) {
    Answer answer;
    Table table = load(request.input);
    timed(answer, [&] {
        tagEverySecond(*table);
        table->delete_tagged_records();
    });
    answer.rows = table->get_num_records();
    keepRows(*table, request);
    return answer;
}

// --- the rows of another table

Answer addTableWork(const Request& request) {
    Answer answer;
    Table table = load(request.input);
    Table other = load(request.input);
    timed(answer, [&] { table->add_vekdb(other.get()); });
    answer.rows = table->get_num_records();
    return answer;
}

Answer mergeSameWork(const Request& request) {
    Answer answer;
    Table table = load(request.input);
    Table other = load(request.input);
    timed(answer, [&] { table->merge_all_matching(other.get()); });
    answer.rows = table->get_num_records();
    return answer;
}

// As many rows as in the others, so that growing costs the same.
Answer mergeOtherWork(const Request& request) {
    Answer answer;
    Table other = load(request.input);
    std::vector<DBFieldDesc> fields;
    for (unsigned i = other->get_num_fields(); i > 0; --i) {
        fields.push_back({other->get_fieldname(i - 1), other->get_field_type(i - 1)});
    }
    vekdb table(fields);
    table.add_records(static_cast<int>(other->get_num_records()));
    timed(answer, [&] { table.merge_all_matching(other.get()); });
    answer.rows = table.get_num_records();
    return answer;
}

// --- through two views of all rows, the second stacked on the first

struct LogStack {
    explicit LogStack(const Request& request) : table(load(request.input)) {
        lower = VDBView(table.get());
        lower->displayAllRecords();
        upper = VDBView(table.get());
        upper->baseView(lower.get());
        upper->displayAllRecords();
    }

    Table table;
    VDBView lower;
    VDBView upper;
};

// A view writes its own tags into the column "Tag".
void keepRows(VDBViewRep& view, const Request& request) {
    if (request.result.empty()) {
        return;
    }
    unsigned tag = column(view, "Tag");
    for (unsigned row = 0; row < view.get_num_records(); ++row) {
        view.set_tag(row, view.get_record(row)->fieldView(tag) == "1");
    }
    if (view.saveAsText(wide(request.result), false) == 0) {
        fail("cannot save " + request.result);
    }
}

Answer viewSortWork(const Request& request) {
    Answer answer;
    LogStack stack(request);
    int field = static_cast<int>(column(*stack.table, view_work::sorted));
    timed(answer, [&] {
        stack.upper->set_sortfield(field);
        stack.upper->sort(1, 1);
    });
    answer.rows = stack.upper->get_num_records();
    keepRows(*stack.upper, request);
    return answer;
}

Answer viewFilterWork(const Request& request) {
    Answer answer;
    LogStack stack(request);
    std::unique_ptr<dbrecord> query(stack.table->make_dummy_record());
    query->set_field(static_cast<int>(column(*stack.table, view_work::searched)),
                     view_work::wanted);
    VDBView found;
    timed(answer, [&] {
        stack.lower->set_query(query.get());
        stack.lower->tagMatches(0);
        found = VDBView(stack.lower->newTagSubview());
        answer.rows = found->get_num_records();
    });
    keepRows(*found, request);
    return answer;
}

Answer viewDeleteWork(const Request& request) {
    Answer answer;
    LogStack stack(request);
    timed(answer, [&] {
        tagEverySecond(*stack.lower);
        stack.lower->deleteTagged();
    });
    answer.rows = stack.table->get_num_records();
    keepRows(*stack.table, request);
    return answer;
}

Answer viewSetWork(const Request& request) {
    Answer answer;
    LogStack stack(request);
    unsigned field = column(*stack.table, view_work::searched);
    view_work::SetCells cells(stack.table->get_num_records());
    std::vector<std::string> texts;
    for (unsigned i = 0; i < cells.count; ++i) {
        texts.push_back(view_work::newText(i));
    }
    timed(answer, [&] {
        for (unsigned i = 0; i < cells.count; ++i) {
            answer.rows += stack.upper->set_field(cells.row(i), field, texts[i].c_str());
        }
    });
    keepRows(*stack.table, request);
    return answer;
}

// What is read is looked at: its length and its first character.
Answer viewReadWork(const Request& request) {
    Answer answer;
    LogStack stack(request);
    unsigned rows = stack.upper->get_num_records();
    std::vector<unsigned> numbers;
    for (const char* name : view_work::readColumns(rows)) {
        numbers.push_back(column(*stack.table, name));
    }
    for (unsigned run = 0; run < request.repeat; ++run) {
        answer.rows = 0;
        timed(answer, [&] {
            for (unsigned row = 0; row < rows; ++row) {
                for (unsigned field : numbers) {
                    std::string_view value = stack.upper->get_record(row)->fieldView(field);
                    answer.rows += value.size();
                    answer.rows += value.empty() ? 0 : static_cast<unsigned char>(value[0]);
                }
            }
        });
    }
    keepRows(*stack.table, request);
    return answer;
}

// --- what must not grow faster than its table: the input is a number of rows

Cookie identity(unsigned row) {
    Cookie cookie;
    cookie.type = cookieTypeM;
    std::uint64_t mixed = (row + 1) * 0x9E3779B97F4A7C15u;
    for (int i = 0; i < 8; ++i) {
        cookie.uuid.bytes[i] = static_cast<std::uint8_t>(mixed >> (8 * i));
        cookie.uuid.bytes[8 + i] = static_cast<std::uint8_t>(row >> (4 * i));
    }
    return cookie;
}

// Every reel holds sixty rows, spread over the table.
Table makeTable(unsigned rows) {
    std::vector<DBFieldDesc> fields = {{"Cookie", DBFieldTypes::text},
                                       {"Reel", DBFieldTypes::text}};
    auto table = std::make_unique<vekdb>(fields);
    table->add_records(static_cast<int>(rows));
    unsigned reels = rows / 60 + 1;
    for (unsigned row = 0; row < rows; ++row) {
        table->setField(row, 0, identity(row).asString(true));
        table->setField(row, 1, std::to_string(row % reels).c_str());
    }
    return table;
}

// A table and up to two views of all its rows, the second stacked on the first.
struct Stack {
    Stack(const Request& request, int views) : table(makeTable(rowsOf(request))) {
        for (int i = 0; i < views; ++i) {
            VDBView next(table.get());
            if (top) {
                next->baseView(top.get());
            }
            next->displayAllRecords();
            base = i == 0 ? next : base;
            top = next;
        }
    }

    static unsigned rowsOf(const Request& request) {
        return static_cast<unsigned>(std::atoi(request.input.c_str()));
    }

    Table table;
    VDBView base;
    VDBView top;
};

Answer deleteUnder(const Request& request, int views) {
    Answer answer;
    Stack stack(request, views);
    tagEverySecond(*stack.table);
    timed(answer, [&] { stack.table->delete_tagged_records(); });
    answer.rows = stack.table->get_num_records();
    return answer;
}

Answer deleteBareWork(const Request& request) {
    return deleteUnder(request, 0);
}

Answer deleteViewsWork(const Request& request) {
    return deleteUnder(request, 2);
}

Answer deleteThroughViewWork(const Request& request) {
    Answer answer;
    Stack stack(request, 1);
    tagEverySecond(*stack.top);
    timed(answer, [&] { stack.top->deleteTagged(); });
    answer.rows = stack.table->get_num_records();
    return answer;
}

Answer tagDuplicatesWork(const Request& request) {
    Answer answer;
    Stack stack(request, 1);
    int reel = static_cast<int>(column(*stack.table, "Reel"));
    timed(answer, [&] { answer.rows = stack.top->tagDuplicates(reel); });
    return answer;
}

Answer removeFrom(const Request& request, int views) {
    Answer answer;
    Stack stack(request, views);
    tagEverySecond(*stack.top);
    timed(answer, [&] { stack.top->removeSome(&VDBViewRep::tag); });
    answer.rows = stack.base->get_num_records();
    return answer;
}

Answer removeWork(const Request& request) {
    return removeFrom(request, 1);
}

Answer removeStackedWork(const Request& request) {
    return removeFrom(request, 2);
}

// Identities in another order than the rows; the factor shares no divisor with their number.
Answer displayListWork(const Request& request) {
    Answer answer;
    Stack stack(request, 0);
    VDBView view(stack.table.get());
    unsigned rows = Stack::rowsOf(request);
    CookieVec list;
    for (unsigned i = 0; i < rows; ++i) {
        list.push_back(identity(static_cast<unsigned>(i * 1000003ull % rows)));
    }
    timed(answer, [&] { answer.rows = static_cast<unsigned>(view->displayRecordsAt(list, 0)); });
    return answer;
}

// The same through two views and on the table alone.
Answer through(const Request& request, int views, void (*work)(VDBBase& rows)) {
    Answer answer;
    Stack stack(request, views);
    VDBBase* rows = stack.table.get();
    if (views > 0) {
        rows = stack.top.get();
    }
    timed(answer, [&] { work(*rows); });
    answer.rows = stack.table->get_num_records();
    return answer;
}

void readAll(VDBBase& rows) {
    std::size_t seen = 0;
    for (unsigned row = 0; row < rows.get_num_records(); ++row) {
        seen += rows.getField(row, 1).view().size();
    }
    if (seen == 0) {
        fail("the rows are empty");
    }
}

void setAll(VDBBase& rows) {
    for (unsigned row = 0; row < rows.get_num_records(); ++row) {
        rows.set_field(row, 1, "a text in its place");
    }
}

constexpr unsigned singles = 10'000;

void insertSingly(VDBBase& rows) {
    std::minstd_rand random;
    for (unsigned i = 0; i < singles; ++i) {
        rows.insert_records(static_cast<unsigned>(random()) % rows.get_num_records(), 1);
    }
}

// Of few rows fewer: the upper of two views loses two or three for each that is deleted.
void deleteSingly(VDBBase& rows) {
    std::minstd_rand random;
    unsigned deletions = std::min(singles, rows.get_num_records() / 10);
    for (unsigned i = 0; i < deletions; ++i) {
        rows.delete_records(static_cast<unsigned>(random()) % rows.get_num_records(), 1);
    }
}

template <int views, void (*work)(VDBBase&)>
Answer throughWork(const Request& request) {
    return through(request, views, work);
}

struct Work {
    std::string_view name;
    Answer (*run)(const Request&);
};

constexpr Work works[] = {
    {"floor", floorWork},
    {"load", loadWork},
    {"load-in-turn", loadInTurnWork},
    {"load-save", loadAndSaveWork},
    {"load-both", loadAndSaveBothWork},
    {"add-table", addTableWork},
    {"merge-same", mergeSameWork},
    {"merge-other", mergeOtherWork},
    {"save", saveWork},
    {"contains", containsWork},
    {"range", rangeWork},
    {"sort", sortPlainWork},
    {"sort-people", sortPeopleWork},
    {"delete", deleteWork},
    {"delete-bare", deleteBareWork},
    {"delete-views", deleteViewsWork},
    {"delete-through-view", deleteThroughViewWork},
    {"tag-duplicates", tagDuplicatesWork},
    {"remove", removeWork},
    {"remove-stacked", removeStackedWork},
    {"display-list", displayListWork},
    {"view-sort", viewSortWork},
    {"view-filter", viewFilterWork},
    {"view-delete", viewDeleteWork},
    {"view-set", viewSetWork},
    {"view-read", viewReadWork},
    {"read-bare", throughWork<0, readAll>},
    {"read-views", throughWork<2, readAll>},
    {"set-bare", throughWork<0, setAll>},
    {"set-views", throughWork<2, setAll>},
    {"insert-bare", throughWork<0, insertSingly>},
    {"insert-views", throughWork<2, insertSingly>},
    {"delete-singly-bare", throughWork<0, deleteSingly>},
    {"delete-singly-views", throughWork<2, deleteSingly>},
};

}  // namespace

int main(int count, char** arguments) {
    Request request = compare::request(count, arguments);
    DiskFlush::isOn = false;
    OS()->setReadsAhead(true);
    for (const Work& work : works) {
        if (work.name == request.work) {
            compare::print(work.run(request), vekdbDllVersionStr());
            return 0;
        }
    }
    return 3;
}
