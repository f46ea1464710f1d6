#include "exhaustion/scenarios.h"

#include <vekdb/host/config.h>
#include <vekdb/host/text_file.h>
#include <vekdb/row_choice.h>
#include <vekdb/support/sexpr.h>

namespace exhaustion {

namespace {

constexpr const char* longText = "another text that is too long to stand but in its own block";
constexpr int all = 1 << 30;
constexpr DBFieldDesc* noFields = nullptr;

using Text = LightweightString<char>;

LightweightString<wchar_t> fileNamed(const char* name) {
    return folder().widePath(name);
}

std::vector<TextSearch::Criteria> query() {
    std::vector<TextSearch::Criteria> criteria(7);
    criteria[0] = TextSearch::Criteria(TextSearch::Criterion("r1", TextSearch::eMatchContains));
    return criteria;
}

struct EverySecond final : RowChoice {
    void begin(vekdb&) override {}
    bool takes(const dbrecord&, bool) override { return ++seen % 2 == 0; }
    int seen = 0;
};

void readRecords(vekdb& table) {
    TextFile file;
    file.appendLine(Text("\"x\",\"1\",\"\",\"\",\"\",\"\",\"0\""));
    file.appendLine(
        Text("\"a \\\"long\\\" value with marks in it, quite long\",\"1\",\"\",\"\","
             "\"\",\"\",\"0\""));
    table.add_text(file, 0, all);
}

void readParameters(vekdb& table) {
    TextFile file;
    file.appendLine(Text("\"A parameter with a name that is long:and a long value with it\""));
    file.appendLine(Text("\"VEKDB\""));
    dbrecord header(0);
    table.read_params(file, header);
}

void setEveryKind(vekdb& table) {
    table.set_field(1, 1u, 77);
    table.set_field(2, 1u, 7.25);
    table.set_field(3, 1u, true);
    table.setField(4, 0, Text(longText));
}

void bracketChanges(vekdb& table) {
    table.beginUpdate();
    for (unsigned i = 0; i < 20; ++i) table.addToUpdate(cookieOf(i));
    table.endUpdate();
}

void exportRow(vekdb& table) {
    configb settings;
    table.update(&settings, 1);
}

void showByIdentity(World& w) {
    w.view->displayRecordsAt(w.list, 2);
    w.view->displayRecordsAt(w.set, -2);
    w.upper->displayRecordsAt(w.list, 0);
}

void copyViews(World& w) {
    const VDBView same = w.view.copy();
    const VDBView stacked = w.upper.copy();
    const VDBView apart = w.view.copyWithNewBaseView();
    const std::unique_ptr<vekdb> newTable(apart->table());
    const std::unique_ptr<vekdb> converted(Convert_VDBView_to_vekdb(w.upper));
}

void buildViews(World& w) {
    const char* const names[] = {"Scene", "Name", nullptr};
    const VDBView chosen(new VDBViewRep(w.table.get(), "Name,Scene\tNotes"));
    const VDBView listed(new VDBViewRep(w.table.get(), names));
    const VDBView tagged(w.view->newTagSubview());
}

void readContainer(World& w) {
    w.reader->getContents();
    w.reader->getAttrib("Name");
    w.reader->getItem(1).getAttrib(0);
    w.reader->getNameW();
    QuorContainerFile::Reader again(fileNamed("bin.vek"), false);
}

void printLists(World& w) {
    SExpr* list = nullptr;
    struct Owner {
        SExpr*& head;
        ~Owner() { delete head; }
    } owner{list};
    for (unsigned i = 0; i < 6; ++i) {
        auto element = std::make_unique<SExprRef>(w.table.get(), i);
        list = new SExpr(element.get(), list);
        element.release();
    }
    list = SExpr::reverse(list);
    GrowString text;
    for (int i = 0; i < 20; ++i) list->asString(text);
}

void walk(World& w) {
    for (++w.cursor; w.cursor.index() >= 0; ++w.cursor) w.cursor.record();
    w.cursor.set_index(0).findField("Name", "none of them");
    w.cursor.find(w.table->get_record(3));
}

void copyMap(World& w) {
    FieldMap map(w.map);
    map.append(longText, true);
    w.map = map;
}

void listen(World& w) {
    struct Ear {
        int hear(const NotifyMsg& message) {
            for (NotifyMsgTokenIterator token(message); token; ++token) last = *token;
            return 0;
        }
        Text last;
    } ear;
    const int type = NotifyMsgTypeDictionary::instance().intern("recordsDeleted");
    const auto guard = w.table->registerNotification(
        Quor::Ptr<Notifier::Callback>(new MethodCallback<Ear, NotifyMsg, int>(&ear, &Ear::hear)),
        type);
    w.table->delete_records(1, 18);
}

void sortBy(vekdb& table, int field, int direction) {
    table.set_sortfield(field);
    table.sort(direction, 0);
}

void loadAgain(World& w) {
    w.other->set_filename(w.table->get_filename());
    w.other->loadFromFile(all, true);
}

// Leaves a file to load, unless memory ends before.
void saveOther(World& w) {
    w.other->set_filename(fileNamed("other"));
    w.other->save_text();
}

constexpr After asItWas = After::asItWas;
constexpr After inPart = After::inPart;
constexpr Below stays = Below::stays;
constexpr Below moves = Below::moves;

const std::vector<Scenario> table = {
    {"add rows", inPart, stays, [](World& w) { w.table->add_records(600); }},
    {"insert rows", asItWas, moves, [](World& w) { w.table->insert_records(3, 40); }},
    {"delete rows", inPart, stays, [](World& w) { w.table->delete_records(2, 20); }},
    {"delete one row", inPart, stays, [](World& w) { w.table->delete_records(4, 1); }},
    {"delete all rows", inPart, stays, [](World& w) { w.table->delete_records(0, all); }},
    {"delete tagged rows", inPart, stays, [](World& w) { w.table->delete_tagged_records(); }},
    {"delete rows one by one", inPart, stays,
     [](World& w) {
         for (int i = 0; i < 12; ++i) w.table->delete_records(3, 1);
     }},
    {"copy a row", inPart, stays, [](World& w) { w.table->copy_record(1, w.other.get(), 3); }},
    {"copy a row onto itself", inPart, stays,
     [](World& w) { w.table->copy_record(3, w.table.get(), 3); }},
    {"copy a record", inPart, stays, [](World& w) { w.table->copy_record(2, &w.record); }},
    {"make a dummy record", asItWas, stays,
     [](World& w) {
         const std::unique_ptr<dbrecord> r(w.table->make_dummy_record());
         r->set_field(6, longText);
     }},
    {"show tagged rows", asItWas, stays, [](World& w) { w.other->set_show_tags_only(1); }},
    {"index tags after a deletion", inPart, stays,
     [](World& w) {
         w.other->index_tags();
         w.other->delete_records(0, 2);
         w.other->index_tags();
     }},
    {"add a parameter", inPart, stays,
     [](World& w) { w.table->add_param("A name that is too long for a short text", longText); }},
    {"replace a parameter", inPart, stays,
     [](World& w) { w.table->set_param_val("Project", longText); }},
    {"set a value", asItWas, stays, [](World& w) { w.table->set_field(1, 0u, longText); }},
    {"set values of each kind", inPart, stays, [](World& w) { setEveryKind(*w.table); }},
    {"set an identity", asItWas, stays, [](World& w) { w.table->set_field(1, cookieOf(700)); }},
    {"get values", asItWas, stays,
     [](World& w) {
         for (unsigned i = 0; i < 7; ++i) w.table->getField(0, i);
     }},
    {"get numbers", asItWas, stays,
     [](World& w) {
         int n;
         double d;
         bool b;
         w.table->in_field(1, 1, n);
         w.table->in_field(1, 1, d);
         w.table->in_field(1, 1, b);
     }},
    {"add a column", asItWas, stays,
     [](World& w) {
         w.table->addField({"A column whose name is long, very long", DBFieldTypes::text});
     }},
    {"remove a column", asItWas, stays, [](World& w) { w.table->removeField("Scene"); }},
    {"name a column", asItWas, stays,
     [](World& w) { w.table->set_fieldname(1, "A name with & that is too long to be short"); }},
    {"find a column", asItWas, stays,
     [](World& w) { w.table->get_fieldnum("a column that is not there at all"); }},
    {"compare columns", asItWas, stays, [](World& w) { w.table->sameColumns(w.other.get()); }},
    {"tell of changes", asItWas, stays, [](World& w) { bracketChanges(*w.table); }},
    {"export a row", asItWas, stays, [](World& w) { exportRow(*w.table); }},
    {"sort by text", asItWas, moves, [](World& w) { sortBy(*w.table, 0, -1); }},
    {"sort by timecode", asItWas, moves, [](World& w) { sortBy(*w.table, 2, 1); }},
    {"sort by a number", asItWas, moves, [](World& w) { sortBy(*w.table, 1, 1); }},
    {"find a value", asItWas, stays,
     [](World& w) {
         w.table->findFirst("Name", "r7", 0);
         w.table->findFirst("Cookie", "x", 2);
     }},
    {"find an identity", asItWas, stays, [](World& w) { w.table->getRowIndexByID(cookieOf(5)); }},
    {"set a query", asItWas, stays,
     [](World& w) {
         w.table->setQuery(query());
         w.table->tag_matching_records(1);
     }},
    {"ask by a record", inPart, stays,
     [](World& w) {
         w.table->set_query(&w.record);
         w.table->match_record(2);
         w.table->tag_matching_records(0);
     }},
    {"merge", inPart, stays, [](World& w) { w.table->merge_all_matching(w.other.get()); }},
    {"merge a view", inPart, stays, [](World& w) { w.other->merge_all_matching(w.upper.get()); }},
    {"append a table", inPart, stays, [](World& w) { w.table->add_vekdb(w.other.get()); }},
    {"tag all different", inPart, moves, [](World& w) { w.table->tag_all_different(1); }},
    {"copy with rows", asItWas, stays, [](World& w) { const vekdb copy(*w.table, 1); }},
    {"copy without parameters", asItWas, stays,
     [](World& w) { const vekdb copy(*w.table, noFields); }},
    {"build from descriptors", asItWas, stays,
     [](World&) {
         const vekdb made(std::vector<DBFieldDesc>(9, {longText, DBFieldTypes::text}));
     }},
    {"save", inPart, stays, [](World& w) { w.table->save_text(); }},
    {"save tagged rows", asItWas, stays, [](World& w) { w.table->save_tags(); }},
    {"save without a header", inPart, stays, [](World& w) { w.table->save_text_without_header(); }},
    {"load anew", inPart, stays,
     [](World& w) {
         saveOther(w);
         loadAgain(w);
     }},
    {"load chosen rows", inPart, stays,
     [](World& w) {
         EverySecond choice;
         saveOther(w);
         w.other->loadFromFile(choice, true);
     }},
    {"load behind the rows", inPart, stays,
     [](World& w) {
         saveOther(w);
         w.other->load_text(all);
     }},
    {"read records", inPart, stays, [](World& w) { readRecords(*w.other); }},
    {"read parameters", inPart, stays, [](World& w) { readParameters(*w.other); }},
    {"free", inPart, stays,
     [](World& w) {
         w.other->free();
         w.other->init();
         w.other->post_init();
     }},
};

const std::vector<Scenario> records = {
    {"copy", asItWas, stays, [](World& w) { const dbrecord copy(w.record); }},
    {"assign", inPart, stays, [](World& w) { w.record = *w.other->get_record(3); }},
    {"store", asItWas, stays, [](World& w) { w.record.set_field(0, longText); }},
    {"store a number", asItWas, stays, [](World& w) { w.record.set_field(4, 123456.75); }},
    {"store a shared value", asItWas, stays,
     [](World& w) { w.record.setField(1, Text(longText)); }},
    {"reach values", asItWas, stays,
     [](World& w) {
         for (unsigned short i = 0; i < 7; ++i) w.record.getField(i);
     }},
    {"remove a value", asItWas, stays, [](World& w) { w.record.removeField(1); }},
    {"resize", asItWas, stays,
     [](World& w) {
         const int widths = 0;
         w.record.resizeRecord(30, &widths, false);
         w.record.resizeRecord(3, &widths, false);
     }},
    {"write", asItWas, stays,
     [](World& w) {
         TextFile file;
         w.record.write(file);
     }},
    {"read", inPart, stays,
     [](World& w) {
         TextFile file;
         file.appendLine(Text("\"p\\nq long enough for a block of its own\",\"2\""));
         w.record.read(file);
     }},
};

const std::vector<Scenario> views = {
    {"build", asItWas, stays, buildViews},
    {"bind to another table", asItWas, stays, [](World& w) { w.top->vdb(w.other.get()); }},
    {"bind and stack anew", inPart, stays,
     [](World& w) {
         VDBView v(w.other.get());
         v->vdb(w.table.get());
         v->baseView(w.view.get());
         v->baseView(w.upper.get());
         v->displayAllRecords();
     }},
    {"choose columns", asItWas, stays, [](World& w) { w.view->fieldSpec("Scene,Notes,Name"); }},
    {"identity columns", asItWas, stays,
     [](World& w) {
         GrowString text;
         w.view->identityFieldSpec(text);
         w.view->asString(text);
     }},
    {"parameters from the table", asItWas, stays,
     [](World& w) {
         w.view->addParamsFrom(w.other.get());
         w.view->addParamsFrom(w.upper.get());
     }},
    {"set a parameter", asItWas, stays,
     [](World& w) { w.view->add_param("A name that is too long for a short text", longText); }},
    {"ask for a parameter", asItWas, stays,
     [](World& w) { w.view->get_param_val("A name that is asked for and not there"); }},
    {"size the index", asItWas, stays,
     [](World& w) {
         w.view->sizeIndexFor(500);
         w.view->sizeIndexFor(60);
     }},
    {"append", asItWas, stays, [](World& w) { w.view->append(2); }},
    {"append many", inPart, stays,
     [](World& w) {
         for (int i = 0; i < 50; ++i) w.view->append(2);
     }},
    {"build the index", inPart, stays, [](World& w) { w.view->buildIndex(); }},
    {"sort", asItWas, stays,
     [](World& w) {
         w.view->set_sortfield(0);
         w.view->sort(1, 0);
     }},
    {"sort a stacked view", asItWas, stays,
     [](World& w) {
         w.upper->set_sortfield(2);
         w.upper->sort(-1, 0);
     }},
    {"tag matches", asItWas, stays,
     [](World& w) {
         w.table->setQuery(query());
         w.view->tagMatches(0);
     }},
    {"tag duplicates", asItWas, stays, [](World& w) { w.view->tagDuplicates(1); }},
    {"tag duplicates of a stacked view", asItWas, stays,
     [](World& w) { w.upper->tagDuplicates(1); }},
    {"tag all different", asItWas, stays, [](World& w) { w.upper->tag_all_different(1); }},
    {"tags into the source", asItWas, stays, [](World& w) { w.upper->tagBaseFromTags(); }},
    {"view of tagged rows", asItWas, stays,
     [](World& w) { const VDBView tagged(w.upper->newTagSubview()); }},
    {"show rows", asItWas, stays, [](World& w) { w.view->displayRecordsAt(0, 9, 4); }},
    {"show a match", asItWas, stays, [](World& w) { w.view->displayMatchAt("Name", "r3", 4); }},
    {"show identities", inPart, stays, showByIdentity},
    {"show tagged rows", asItWas, stays, [](World& w) { w.upper->displayTaggedRecordsAt(2); }},
    {"show all rows", inPart, stays, [](World& w) { w.view->displayAllRecords(); }},
    {"show all rows of a lower view", inPart, stays,
     [](World& w) { w.upper->displayAllRecords(); }},
    {"show all rows with tags", inPart, stays,
     [](World& w) { w.view->displayAllRecordsWithBaseTagStatus(); }},
    {"show all rows with tags above", inPart, stays,
     [](World& w) { w.upper->displayAllRecordsWithBaseTagStatus(); }},
    {"tags from the column", inPart, stays,
     [](World& w) { w.view->setupViewTagsFromVekdbTagField(); }},
    {"tags from the column above", inPart, stays,
     [](World& w) { w.upper->setupViewTagsFromVekdbTagField(); }},
    {"show what another shows", asItWas, stays,
     [](World& w) {
         VDBView v(w.table.get());
         v->displayAllFromAt(w.view.get(), 0);
         w.view->displayAllFromAt(w.bystander.get(), 3);
     }},
    {"insert rows", asItWas, moves, [](World& w) { w.view->insertBlankRecords(2, 30); }},
    {"insert rows above", asItWas, moves, [](World& w) { w.top->insert_records(2, 30); }},
    {"add rows", inPart, stays, [](World& w) { w.view->add_records(40); }},
    {"add rows above", inPart, stays, [](World& w) { w.upper->add_records(40); }},
    {"delete rows", inPart, stays, [](World& w) { w.view->delete_records(2, 20); }},
    {"delete one row", inPart, stays, [](World& w) { w.view->delete_records(2, 1); }},
    {"delete rows of the bystander", inPart, stays,
     [](World& w) { w.bystander->delete_records(2, 20); }},
    {"delete rows above", inPart, stays, [](World& w) { w.top->delete_records(2, 5); }},
    {"delete tagged rows", inPart, stays, [](World& w) { w.view->deleteTagged(); }},
    {"delete tagged rows above", inPart, stays, [](World& w) { w.upper->deleteTagged(); }},
    {"remove rows", inPart, stays, [](World& w) { w.view->remove(0, 18); }},
    {"remove rows above", inPart, stays,
     [](World& w) { w.upper->removeRecordsFromBaseView(1, 19); }},
    {"remove tagged rows", inPart, stays, [](World& w) { w.upper->removeTagged(); }},
    {"remove untagged rows", inPart, stays, [](World& w) { w.top->removeNonTagged(); }},
    {"set a value", asItWas, stays, [](World& w) { w.top->set_field(1, 0u, longText); }},
    {"set an identity", asItWas, stays, [](World& w) { w.top->set_field(1, cookieOf(800)); }},
    {"get values", asItWas, stays,
     [](World& w) {
         for (unsigned i = 0; i < 7; ++i) w.top->getField(1, i);
     }},
    {"find a value", asItWas, stays,
     [](World& w) {
         w.top->findFirst("Name", "r3", 0);
         w.top->get_fieldnum("a name that is longer than short");
     }},
    {"save", asItWas, stays, [](World& w) { w.view->saveAsText(fileNamed("view"), false); }},
    {"save above", asItWas, stays,
     [](World& w) {
         w.top->saveAsText("", false);
         w.top->set_filename(fileNamed("top"));
         w.top->save_text();
     }},
    {"save tagged", asItWas, stays, [](World& w) { w.view->saveOnlyTagged(fileNamed("view")); }},
    {"copy", asItWas, stays, copyViews},
};

const std::vector<Scenario> others = {
    {"cursor walks", inPart, stays, walk},
    {"cursor removes", inPart, stays,
     [](World& w) {
         w.cursor.set_index(2);
         w.cursor.remove();
     }},
    {"field map loads", asItWas, stays, [](World& w) { w.map.setSourceDb(w.upper); }},
    {"field map of a table", asItWas, stays, [](World& w) { const FieldMap map(*w.table); }},
    {"field map appends", asItWas, stays, [](World& w) { w.map.append(longText, true); }},
    {"field map appends many", inPart, stays,
     [](World& w) {
         for (unsigned i = 0; i < 90; ++i) w.map.append(cookieOf(i).asString(false), true);
     }},
    {"field map is copied", asItWas, stays, copyMap},
    {"field map is edited", inPart, stays,
     [](World& w) {
         w.map.set(0, longText, true);
         w.map.swap(0, 1);
         w.map.remove("Scene");
     }},
    {"field map as text", asItWas, stays,
     [](World& w) {
         w.map.asString();
         w.map.getVisibleFieldIndex(1);
     }},
    {"container takes an item", asItWas, stays, [](World& w) { w.writer->addItem(cookieOf(50)); }},
    {"container takes attributes", inPart, stays,
     [](World& w) {
         w.writer->setName(longText);
         w.writer->setPermanent(true);
         w.writer->setAttrib("k", longText);
     }},
    {"container saves", asItWas, stays, [](World& w) { w.writer->save(fileNamed("bin.new")); }},
    {"container reads", asItWas, stays, readContainer},
    {"container's identity", asItWas, stays,
     [](World&) {
         QuorContainerFile::getCookieFromFilename(
             L"/a/folder/0123456789abcdef0123456789abcdef000041.sg");
     }},
    {"identities in a list", inPart, stays,
     [](World& w) {
         for (unsigned i = 20; i < 60; ++i) w.list.add(cookieOf(i));
     }},
    {"identities in a shared list", asItWas, stays,
     [](World& w) {
         CookieVec copy = w.list;
         copy.add(cookieOf(90));
         copy.reserve(300);
     }},
    {"identities in a set", inPart, stays,
     [](World& w) {
         for (unsigned i = 60; i > 20; --i) w.set.add(cookieOf(i));
     }},
    {"identities in a shared set", asItWas, stays,
     [](World& w) {
         CookieSet copy = w.set;
         copy.add(cookieOf(90));
         const CookieSet made(w.list);
         GrowString text;
         made.printOn(text);
     }},
    {"lists of names", inPart, stays,
     [](World& w) {
         AssocList copy = w.params;
         for (unsigned i = 0; i < 20; ++i) copy[cookieOf(i).asString(false)] = longText;
         w.params = copy;
     }},
    {"texts that grow", inPart, stays,
     [](World& w) {
         for (int i = 0; i < 40; ++i) w.text.append(longText);
     }},
    {"S-expressions", asItWas, stays, printLists},
    {"listeners", inPart, stays, listen},
};

}  // namespace

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> every = [] {
        std::vector<Scenario> list = table;
        for (const auto* more : {&records, &views, &others}) {
            list.insert(list.end(), more->begin(), more->end());
        }
        return list;
    }();
    return every;
}

}  // namespace exhaustion
