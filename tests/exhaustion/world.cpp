#include "exhaustion/world.h"

#include <filesystem>

#include <vekdb/support/sexpr.h>
#include "testing/tables.h"

namespace exhaustion {

namespace {

constexpr unsigned none = 0xFFFFFFFF;
constexpr const char* longText = "a text that is too long to stand anywhere but in its own block";

std::vector<DBFieldDesc> columns() {
    std::vector<DBFieldDesc> fields =
        textColumns({"Name", "Scene", "Start time", "End time", "Notes", "Cookie", "Tag"});
    fields[2].type = fields[3].type = DBFieldTypes::timecode;
    return fields;
}

std::string clock(unsigned seconds) {
    const std::string digits = std::to_string(100 + seconds % 60).substr(1);
    return "01:00:" + digits + ":00";
}

void fillRow(vekdb& table, unsigned row) {
    table.set_field(row, 0u, ("r" + std::to_string(row)).c_str());
    table.set_field(row, 1u, std::to_string(row % 5).c_str());
    table.set_field(row, 2u, clock(row).c_str());
    table.set_field(row, 3u, clock(row + 3).c_str());
    table.set_field(row, 4u, row % 3 == 0 ? longText : "");
    table.set_field(row, cookieOf(row));
    table.set_tag(row, row % 2 == 0);
}

std::unique_ptr<vekdb> madeTable(unsigned rows) {
    auto table = std::make_unique<vekdb>(columns());
    table->add_param("Project", "Night");
    table->add_param("V5_FIELD_MAP", "2 -1 3");
    table->add_records(static_cast<int>(rows));
    for (unsigned row = 0; row < rows; ++row) {
        fillRow(*table, row);
    }
    table->clear_changed();
    return table;
}

// Saved once for each number of rows.
std::unique_ptr<vekdb> loadedTable(unsigned rows) {
    const std::string name = "log" + std::to_string(rows);
    if (!std::filesystem::exists(folder().file(name))) {
        const auto table = madeTable(rows);
        table->set_filename(folder().widePath(name));
        table->save_text();
    }
    auto table = std::make_unique<vekdb>(folder().widePath(name), 1 << 30, true);
    for (unsigned row = 0; row < table->get_num_records(); ++row) {
        table->set_tag(row, row % 2 == 0);
    }
    return table;
}

std::unique_ptr<vekdb> tableOf(Kind kind, unsigned rows) {
    auto table = kind == Kind::loaded ? loadedTable(rows) : madeTable(rows);
    table->set_filename(folder().widePath("saved"));
    return table;
}

VDBView over(vekdb& table, const VDBView& base) {
    VDBView view(&table);
    if (base) {
        view->baseView(base.get());
    }
    return view;
}

VDBView showingAll(VDBView view) {
    view->displayAllRecords();
    return view;
}

VDBView reversed(vekdb& table) {
    VDBView view(&table);
    for (int row = static_cast<int>(table.get_num_records()) - 1; row >= 0; --row) {
        view->append(row);
        view->set_tag(static_cast<unsigned>(view->get_num_records()) - 1, row % 3 == 0);
    }
    view->append(0);
    return view;
}

std::unique_ptr<QuorContainerFile::Writer> madeWriter() {
    std::vector<DBFieldDesc> fields = textColumns({"Cookie", "Place"});
    fields.push_back({"", DBFieldTypes::none});
    auto writer = std::make_unique<QuorContainerFile::Writer>(fields.data());
    writer->setName("Bin");
    for (unsigned i = 0; i < 4; ++i) {
        writer->addItem(cookieOf(i));
    }
    writer->set_filename(folder().widePath("bin"));
    return writer;
}

void saveBinOnce() {
    if (!std::filesystem::exists(folder().file("bin.vek"))) {
        madeWriter()->save(folder().widePath("bin.vek"));
    }
}

}  // namespace

const testing_support::TempDir& folder() {
    static const testing_support::TempDir folder;
    return folder;
}

Cookie cookieOf(unsigned number) {
    const std::string digits = std::to_string(10000 + number).substr(1);
    return Cookie(("0123456789abcdef0123456789ab" + digits + "000041").c_str(), false);
}

World::World(Kind kind, unsigned rows)
    : table(tableOf(kind, rows)),
      other(madeTable(6)),
      bystander(showingAll(over(*table, nullptr))),
      above(showingAll(over(*table, bystander))),
      view(reversed(*table)),
      upper(showingAll(over(*table, view))),
      top(showingAll(over(*table, upper))),
      cursor(view),
      map(bystander),
      record(*table->get_record(0)) {
    text.append(longText);
    saveBinOnce();
    writer = madeWriter();
    reader = std::make_unique<QuorContainerFile::Reader>(folder().widePath("bin.vek"), false);
    for (unsigned i = 0; i < 9; ++i) {
        list.add(cookieOf(i));
        set.add(cookieOf(i));
        params[LightweightString<char>(std::to_string(i).c_str())] = longText;
    }
    for (unsigned row = 1; row < upper->get_num_records(); row += 3) {
        upper->set_tag(row, 1);
        top->set_tag(row, 1);
    }
    if (kind == Kind::taggedShown) {
        table->set_show_tags_only(1);
    }
}

std::vector<const dbrecord*> shownBy(const VDBBase& source) {
    std::vector<const dbrecord*> records;
    for (unsigned row = 0; row < source.get_num_records(); ++row) {
        records.push_back(source.get_record(row));
    }
    return records;
}

namespace {

/// Collects what is wrong, with the name of the object it is wrong with.
class Faults {
public:
    void expect(bool right, const char* what) {
        if (!right) {
            text_ += std::string(text_.empty() ? "" : "; ") + object_ + ": " + what;
        }
    }
    Faults& in(const char* object) {
        object_ = object;
        return *this;
    }
    const std::string& text() const { return text_; }

private:
    const char* object_ = "";
    std::string text_;
};

// Reads every byte of a record's values.
std::string valuesOf(const dbrecord& record) {
    std::string all;
    for (unsigned i = 0; i < record.get_num_fields(); ++i) {
        const char* value = record.get_field(static_cast<unsigned short>(i));
        all += value != nullptr ? value : "(null)";
        all += '|';
    }
    return all;
}

void checkRows(Faults& faults, const vekdb& table) {
    faults.expect(table.get_num_records() <= table.get_capacity(), "more rows than capacity");
    unsigned tagged = 0;
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        const dbrecord* record = table.get_record(row);
        if (record == nullptr) {
            return faults.expect(false, "a row without a record");
        }
        faults.expect(record->get_num_fields() <= table.get_num_fields(), "a row too long");
        faults.expect(valuesOf(*record).size() >= record->get_num_fields(), "values missing");
        tagged += record->get_tag() != 0;
    }
    faults.expect(table.get_record(table.get_num_records()) == nullptr, "a row past the last");
    faults.expect(tagged == table.get_num_tags(), "tags miscounted");
}

void checkColumns(Faults& faults, const vekdb& table) {
    for (unsigned i = 0; i < table.get_num_fields(); ++i) {
        const char* name = table.get_fieldname(i);
        faults.expect(name != nullptr && *name != '\0', "a column without a name");
        faults.expect(table.get_fieldnum(name) < table.get_num_fields(), "a column not found");
        faults.expect(table.get_field_type(i) != DBFieldTypes::none, "a column without a type");
    }
    faults.expect(*table.get_fieldname(table.get_num_fields()) == '\0', "a column past the last");
}

void checkTable(Faults& faults, vekdb& table) {
    checkRows(faults, table);
    checkColumns(faults, table);
    faults.expect(table.get_num_params() <= 40, "too many parameters");
    for (unsigned i = 0; i < 3; ++i) {
        const unsigned row = table.getRowIndexByID(cookieOf(i));
        faults.expect(row == none || row < table.get_capacity(), "an identity out of range");
    }
}

void checkFields(Faults& faults, const VDBViewRep& view) {
    for (const SExpr* cell = view.fieldList(); cell != nullptr; cell = cell->next) {
        faults.expect(cell->element != nullptr, "a cell without a column");
    }
}

void checkView(Faults& faults, const VDBView& view) {
    const VDBBase* source = view->source();
    if (source == nullptr) {
        return faults.expect(false, "no source");
    }
    faults.expect(view->get_num_records() <= view->indexCapacity(), "more rows than room");
    unsigned tagged = 0;
    for (unsigned i = 0; i < view->get_num_records(); ++i) {
        const unsigned row = view->sourceRow(static_cast<int>(i));
        faults.expect(view->get_record(i) == source->get_record(row), "another record");
        faults.expect(view->get_tag(i) <= 1, "a tag that is none");
        tagged += view->get_tag(i);
    }
    faults.expect(tagged == view->countTags(), "tags miscounted");
    checkFields(faults, *view);
}

// Rows in the source's range; a table that shows its tagged rows alone hides some.
void checkRange(Faults& faults, const VDBView& view) {
    for (unsigned i = 0; i < view->get_num_records(); ++i) {
        const bool inRange =
            view->sourceRow(static_cast<int>(i)) < view->source()->get_num_records();
        faults.expect(inRange, "a row that the source does not have");
    }
}

void checkMap(Faults& faults, const FieldMap& map) {
    unsigned visible = 0;
    for (unsigned i = 0; i < map.size(); ++i) {
        faults.expect(!map.getName(static_cast<int>(i)).empty(), "an entry without a name");
        visible += map.isVisible(static_cast<int>(i));
    }
    faults.expect(visible == map.numVisible(), "lists of unequal length");
}

void checkIdentities(Faults& faults, const World& world) {
    for (unsigned i = 0; i < world.list.size(); ++i) {
        faults.expect(world.list[i].type != cookieTypeInvalid, "an identity that is none");
    }
    for (int i = 0; i + 1 < static_cast<int>(world.set.size()); ++i) {
        faults.expect(world.set[i].compare(world.set[i + 1]) < 0, "identities out of order");
    }
    unsigned entries = 0;
    for (AssocListIter it(world.params); it; ++it) {
        ++entries;
    }
    faults.expect(entries == world.params.size(), "entries miscounted");
}

std::string pictureOf(const vekdb& table) {
    std::string picture = std::to_string(table.get_num_records()) + " rows\n";
    for (unsigned i = 0; i < table.get_num_fields(); ++i) {
        picture += std::string(table.get_fieldname(i)) + char(table.get_field_type(i)) + ' ';
    }
    for (unsigned i = 0; i < table.get_num_params(); ++i) {
        picture += std::string(table.get_param_name(i)) + '=' + table.get_param_text(i) + ' ';
    }
    for (const dbrecord* record : shownBy(table)) {
        picture += '\n' + valuesOf(*record) + std::to_string(record->get_tag());
    }
    return picture;
}

std::string pictureOf(const VDBViewRep& view) {
    std::string picture = "\nview";
    for (unsigned i = 0; i < view.get_num_records(); ++i) {
        picture += ' ' + std::to_string(view.sourceRow(static_cast<int>(i))) +
                   (view.get_tag(i) != 0 ? "*" : "");
    }
    GrowString fields;
    view.asString(fields);
    return picture + '\n' + static_cast<const char*>(fields);
}

std::string pictureOf(const FieldMap& map) {
    std::string picture = "\nmap";
    for (unsigned i = 0; i < map.size(); ++i) {
        const int at = static_cast<int>(i);
        picture += std::string(map.isVisible(at) ? " " : " -") + map.getName(at).c_str();
    }
    return picture;
}

}  // namespace

std::string faultsOf(const World& world) {
    Faults faults;
    checkTable(faults.in("table"), *world.table);
    checkTable(faults.in("other table"), *world.other);
    checkTable(faults.in("container"), *world.writer);
    checkView(faults.in("bystander"), world.bystander);
    checkView(faults.in("view above it"), world.above);
    checkView(faults.in("view"), world.view);
    checkView(faults.in("upper view"), world.upper);
    checkView(faults.in("top view"), world.top);
    if (world.table->get_show_tags_only() == 0) {
        checkRange(faults.in("bystander"), world.bystander);
        checkRange(faults.in("view"), world.view);
        checkRange(faults.in("view above it"), world.above);
        checkRange(faults.in("upper view"), world.upper);
        checkRange(faults.in("top view"), world.top);
    }
    checkMap(faults.in("field map"), world.map);
    checkIdentities(faults.in("identities"), world);
    faults.in("cursor").expect(world.cursor.index() >= -1, "nowhere");
    faults.in("record").expect(valuesOf(world.record).size() >= world.record.get_num_fields(),
                               "values missing");
    return faults.text();
}

std::string pictureOf(World& world) {
    std::string picture = pictureOf(*world.table) + pictureOf(*world.other);
    for (const VDBView* view :
         {&world.bystander, &world.above, &world.view, &world.upper, &world.top}) {
        picture += pictureOf(**view);
    }
    picture += pictureOf(world.map) + '\n' + valuesOf(world.record) + pictureOf(*world.writer);
    for (unsigned i = 0; i < world.list.size(); ++i) {
        picture += world.list[i].asString(false).c_str();
    }
    for (int i = 0; i < static_cast<int>(world.set.size()); ++i) {
        picture += world.set[i].asString(false).c_str();
    }
    for (AssocListIter it(world.params); it; ++it) {
        picture += std::string(it->name.c_str()) + '=' + it->value.c_str() + ' ';
    }
    return picture + static_cast<const char*>(world.text);
}

}  // namespace exhaustion
