#pragma once

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/script.h"
#include "model/worlds.h"

namespace script {

constexpr const char* startOfStep = "\n\nstep";
constexpr unsigned mostRows = 90;
constexpr unsigned mostViews = 6;

/// Runs the steps of a script in one world, and tells what each gave.
template <class World>
class Performer {
public:
    Performer(int rows, bool spelled) : world_(columns(), spelled) {
        world_.table()->add_records(rows);
        for (int row = 0; row < rows; ++row) {
            fill(static_cast<unsigned>(row), row);
        }
    }

    /// Accounts for whom the step told what, what it gave, and everything that can be seen
    /// once it is over.
    void perform(const Step& step) {
        account() << startOfStep;
        const std::string result = isViewOp(step.op)    ? onView(step)
                                   : isWorldOp(step.op) ? onWorld(step)
                                                        : onTable(step);
        account() << "\nresult " << result << "\n";
        state();
    }

    Account& account() { return world_.account(); }

    World& world() { return world_; }

private:
    static bool isViewOp(Op op) { return op >= Op::append; }
    static bool isWorldOp(Op op) { return op >= Op::newView && op < Op::append; }

    void fill(unsigned row, int seed) {
        for (unsigned column = 0; column < world_.table()->get_num_fields(); ++column) {
            world_.table()->set_field(row, column, valueFor(column, seed * 7 + int(column) * 3));
        }
    }

    static std::string num(long long n) { return std::to_string(n); }
    /// A row in or a little out of reach.
    static int near(int choice, unsigned rows) { return choice % (int(rows) + 3) - 1; }
    static int few(int choice) { return choice % 4; }
    int column(int choice) {
        return world_.table() != nullptr ? choice % int(world_.table()->get_num_fields() + 1)
                                         : choice % 7;
    }
    static std::vector<std::string> cookieTexts(const Step& step) {
        std::vector<std::string> texts;
        for (int i = 0; i < step.b % 7; ++i) {
            texts.emplace_back(script::cookie(step.c + i * (1 + step.a % 5)));
        }
        return texts;
    }
    static std::vector<std::string> queryTexts(const Step& step) {
        std::vector<std::string> texts(step.c % 9 == 0 ? 2 : 12);
        texts[static_cast<std::size_t>(step.a) % texts.size()] =
            valueFor(static_cast<unsigned>(step.a) % 6, step.b);
        if (step.c % 3 == 0) {
            texts[0] = value(step.b);
        }
        return texts;
    }
    static int sign(int choice) { return choice % 3 - 1; }

    template <class Source>
    std::string findIn(Source& source, const Step& step) {
        static const char* const names[] = {"Name", "cookie", "COOKIE", "Start time", "none"};
        const int name = step.a % 5;
        const char* text = name == 1 || name == 2 ? script::cookie(step.b) : value(step.b);
        return num(source.findFirst(names[name], text, few(step.c)));
    }

    std::string onTable(const Step& step);
    std::string onColumns(const Step& step);
    std::string onWorld(const Step& step);
    std::string onView(const Step& step);
    std::string editView(const Step& step);
    std::string questions(const Step& step);
    template <class View>
    std::string addThrough(View& view, const Step& step);

    void state();
    void tableState();
    void viewState(unsigned i);
    template <class Table>
    void recordsOf(Table& table);
    template <class View>
    void rowsOf(View& view);

    bool hasRoomForRows() {
        return world_.table() == nullptr || world_.table()->get_num_records() < mostRows;
    }

    World world_;
};

// --- what can be seen

template <class World>
template <class Table>
void Performer<World>::recordsOf(Table& table) {
    for (unsigned row = 0; row < table.get_num_records(); ++row) {
        account().mark("\n  ") << row;
        describe(*table.get_record(row), account());
    }
}

template <class World>
template <class View>
void Performer<World>::rowsOf(View& view) {
    account() << " rows";
    for (unsigned row = 0; row < view.get_num_records(); ++row) {
        (account().mark(" ") << sourceRow(view, row)).mark("/") << slotTag(view, row);
    }
    account() << " behind ";
    for (unsigned slot = view.get_num_records(); slot < indexCapacity(view); ++slot) {
        account() << slotTag(view, slot);
    }
}

template <class World>
void Performer<World>::tableState() {
    auto& table = *world_.table();
    account() << "table rows " << table.get_num_records() << " room " << table.get_capacity()
              << " only " << table.get_show_tags_only() << " tags " << table.get_num_tags()
              << (table.get_modified() ? " modified" : "") << " depth " << table.get_update_depth()
              << " columns";
    for (unsigned i = 0; i < table.get_num_fields(); ++i) {
        account() << " " << plainText(table.get_fieldname(i)) << "/"
                  << static_cast<unsigned>(table.get_field_type(i)) << "/"
                  << table.get_fieldsize(i);
    }
    account() << " parameters";
    for (unsigned i = 0; i < table.get_num_params(); ++i) {
        account() << " " << plainText(table.get_param_name(i)) << "="
                  << plainText(table.get_param_text(i));
    }
    recordsOf(table);
}

template <class World>
void Performer<World>::viewState(unsigned i) {
    auto& view = world_.view(i);
    account() << "\nview " << i << " held " << holders(view) << " tags " << view.get_num_tags()
              << (view.get_valid() ? "" : " invalid");
    rowsOf(view);
}

template <class World>
void Performer<World>::state() {
    std::unordered_map<const void*, unsigned> rowOf;
    if (world_.table() != nullptr) {
        tableState();
        for (unsigned row = 0; row < world_.table()->get_num_records(); ++row) {
            rowOf[world_.table()->get_record(row)] = row;
        }
    }
    for (unsigned i = 0; i < world_.viewCount(); ++i) {
        viewState(i);
        account() << " records";
        for (unsigned row = 0; row < world_.view(i).get_num_records(); ++row) {
            const void* record = world_.view(i).get_record(row);
            const auto known = rowOf.find(record);
            account().mark(" ") << (record == nullptr      ? -1L
                                    : known == rowOf.end() ? -2L
                                                           : static_cast<long>(known->second));
            account().mark("/") << world_.view(i).baseIndex(row);
        }
    }
}

// --- the table

template <class World>
std::string Performer<World>::onTable(const Step& step) {
    if (world_.table() == nullptr) {
        return "no table";
    }
    auto& table = *world_.table();
    const unsigned rows = table.get_num_records();
    const int row = near(step.a, rows);
    const auto at = static_cast<unsigned>(row);
    switch (step.op) {
        case Op::addRows:
            if (!hasRoomForRows()) {
                return "full";
            }
            return num(table.add_records(few(step.b) - (step.c % 10 == 0)));
        case Op::insertRows:
            if (hasRoomForRows()) {
                table.insert_records(at, few(step.b) - (step.c % 10 == 0));
            }
            return "";
        case Op::deleteRows:
            table.delete_records(at, step.b % 6 - (step.c % 20 == 0));
            return "";
        case Op::deleteTaggedRows:
            return num(table.delete_tagged_records());
        case Op::setRowTag:
            table.set_tag(at, step.b % 7 == 0 ? step.c - 300 : step.b % 2);
            return num(table.get_tag(at));
        case Op::invertRowTag:
            table.invert_tag(at);
            return num(table.get_tag(at));
        case Op::setAllRowTags:
            table.set_all_tags(step.b % 3);
            return "";
        case Op::invertAllRowTags:
            table.invert_all_tags();
            return "";
        case Op::showTagsOnly:
            table.set_show_tags_only(static_cast<unsigned>(step.b % 3));
            return "";
        case Op::setValue: {
            const auto field = static_cast<unsigned>(column(step.b));
            return num(table.set_field(at, field, valueFor(field, step.c)));
        }
        case Op::setEqualValue: {
            const auto field = static_cast<unsigned>(column(step.b));
            return num(table.setField(at, field, valueFor(field, step.c)));
        }
        case Op::setCookie:
            return num(table.set_field(at, world_.cookie(cookie(step.b))));
        case Op::copyRow:
            table.copy_record(at, &table, static_cast<unsigned>(near(step.b, rows)));
            return "";
        case Op::sortTable:
            table.sort(sign(step.a), step.b % 3 == 0);
            return "";
        case Op::sortField:
            table.set_sortfield(column(step.b) - (step.c % 20 == 0));
            return "";
        case Op::sortFields:
            table.set_sortfields(world_.sortList(
                {column(step.a), column(step.b), step.c % 3 == 0 ? column(step.c) : -1}));
            return "";
        case Op::sortOffset:
            table.set_sort_offset(step.a % 3 == 0 ? step.b % 7 - 3 : 0);
            return "";
        case Op::query:
            world_.setQuery(table, queryTexts(step));
            return "";
        case Op::tagMatchingRows:
            return num(table.tag_matching_records(step.a % 2));
        case Op::tagAllDifferent:
            return num(table.tag_all_different(column(step.b)));
        case Op::findFirst:
            return findIn(table, step);
        case Op::rowByIdentity:
            return num(table.getRowIndexByID(world_.cookie(cookie(step.b))));
        case Op::rowNumbers:
            return num(table.get_new_row(at)) + " " + num(table.get_raw_row(at)) + " " +
                   num(table.match_record(row)) + " " + num(table.get_tag(at)) + " " +
                   num(table.get_raw_row(rows));
        case Op::foreignNotice:
            world_.issue(table, "recordsDeleted", deletionText(step.b));
            return "";
        default:
            return onColumns(step);
    }
}

template <class World>
std::string Performer<World>::onColumns(const Step& step) {
    static const char* const names[] = {"Name",   "name",     "Reel", "R&D",       "scene", "Tag",
                                        "cookie", "End time", "Reel", "snd start", ""};
    static const char* const params[] = {"Project", "PROJECT", "VEKDB", "vekdb", "Director", ""};
    auto& table = *world_.table();
    const char* name = names[step.a % 11];
    switch (step.op) {
        case Op::beginUpdate:
            return num(table.beginUpdate());
        case Op::addToUpdate:
            table.addToUpdate(world_.cookie(cookie(step.b)));
            return "";
        case Op::endUpdate:
            table.endUpdate();
            return "";
        case Op::addColumn:
            return table.get_num_fields() < 9 ? num(world_.addField(name, 'a')) : "";
        case Op::removeColumn:
            if (table.get_num_fields() > 3) {
                table.removeField(name);
            }
            return "";
        case Op::renameColumn:
            return num(table.set_fieldname(static_cast<unsigned>(column(step.b)), name)) + " " +
                   num(table.get_fieldnum(name));
        case Op::setType:
            world_.setType(static_cast<unsigned>(column(step.b)), step.c % 2 ? 'a' : 't');
            return "";
        case Op::parameter:
            return num(table.add_param(params[step.a % 6], value(step.b)));
        case Op::clearChanged:
            return num(table.clear_changed());
        case Op::copyTable: {
            std::string text;
            world_.withCopyOfTable(step.a % 2, [&](auto& copy) {
                recordsOf(copy);
                text = hasRoomForRows() ? num(table.add_vekdb(&copy)) : "full";
            });
            return text;
        }
        case Op::mergeTables: {
            std::string text;
            if (hasRoomForRows()) {
                world_.withCopyOfTable(1, [&](auto& copy) {
                    copy.removeField(name);
                    text = num(table.merge_all_matching(&copy));
                });
            }
            return text;
        }
        default:
            return "?";
    }
}

// --- views and listeners

template <class World>
std::string Performer<World>::onWorld(const Step& step) {
    const unsigned views = world_.viewCount();
    const auto who = views > 0 ? static_cast<unsigned>(step.who) % views : 0;
    const auto other = views > 0 ? static_cast<unsigned>(step.a) % views : 0;
    const bool mayAdd = views < mostViews;
    if (step.op == Op::newView) {
        if (mayAdd && world_.table() != nullptr) {
            world_.newView();
        }
        return "";
    }
    if (step.op == Op::tableGoes) {
        world_.tableGoes();
        return "";
    }
    if (step.op == Op::listen && (views == 0 || step.a % 3 == 0)) {
        if (world_.table() != nullptr && world_.listenerCount() < 4) {
            world_.listenToTable(step.b % 2 == 0);
        }
        return "";
    }
    if (step.op == Op::stopListening) {
        if (world_.listenerCount() > 0) {
            world_.stopListening(static_cast<unsigned>(step.who) % world_.listenerCount());
        }
        return "";
    }
    if (views == 0) {
        return "no view";
    }
    switch (step.op) {
        case Op::newStackedView:
            if (mayAdd) {
                world_.newStackedView(who);
            }
            break;
        case Op::restack:
            world_.view(who).baseView(step.b % 4 == 0 ? nullptr : &world_.view(other));
            break;
        case Op::rebind:
            world_.view(who).vdb(step.b % 2 == 0 ? nullptr : world_.table());
            break;
        case Op::dropView:
            world_.dropView(who);
            break;
        case Op::copyView:
            if (mayAdd) {
                world_.copyView(who);
            }
            break;
        case Op::tagSubview:
            if (mayAdd) {
                world_.tagSubview(who);
            }
            break;
        case Op::copyWithNewBase:
            world_.withCopyWithNewBase(who, [&](auto& view, auto& table) {
                rowsOf(view);
                recordsOf(table);
            });
            break;
        case Op::convert:
            world_.withConverted(who, [&](auto& table) { recordsOf(table); });
            break;
        case Op::listen:
            if (world_.listenerCount() < 4) {
                world_.listenToView(who, step.b % 2 == 0);
            }
            break;
        default:
            return "?";
    }
    return "";
}

// --- a view

template <class World>
std::string Performer<World>::onView(const Step& step) {
    if (world_.viewCount() == 0) {
        return "no view";
    }
    auto& view = world_.view(static_cast<unsigned>(step.who) % world_.viewCount());
    auto& other = world_.view(static_cast<unsigned>(step.c) % world_.viewCount());
    const unsigned rows = view.get_num_records();
    const unsigned sourceRows = view.source() != nullptr ? view.source()->get_num_records() : 2;
    const int at = near(step.a, rows);
    const auto row = static_cast<unsigned>(at);
    const int sourceAt = near(step.b, sourceRows);
    const bool mayShow = rows < mostRows;
    switch (step.op) {
        case Op::append:
            if (mayShow) {
                view.append(sourceAt);
            }
            return "";
        case Op::buildIndex:
            view.buildIndex();
            return "";
        case Op::clearView:
            view.clear();
            return "";
        case Op::sizeIndex:
            view.sizeIndexFor(static_cast<int>(rows) + step.a % 60);
            return "";
        case Op::viewParameter:
            return num(view.add_param("Project", value(step.b))) +
                   plainText(view.get_param_val(step.a % 2 == 0 ? "PROJECT" : "VEKDB"));
        case Op::parametersFrom:
            view.addParamsFrom(&other);
            return "";
        case Op::viewSetTag:
            view.set_tag(row, step.b % 3);
            return num(view.get_tag(row));
        case Op::viewInvertTag:
            view.invert_tag(row);
            return num(view.get_tag(row));
        case Op::tagAll:
            view.set_all_tags(step.a % 3);
            return "";
        case Op::invertAllTags:
            view.invert_all_tags();
            return "";
        case Op::tagMatches:
            return num(step.b % 3 == 0 ? view.tag_matching_records(1)
                                       : view.tagMatches(step.a % 2));
        case Op::tagDuplicatesOrdered:
            return num(view.tagDuplicatesOrdered(column(step.a)));
        case Op::tagDuplicates:
            return num(view.tagDuplicates(column(step.a)));
        case Op::viewTagAllDifferent:
            return num(view.tag_all_different(column(step.a)));
        case Op::tagBase:
            view.tagBaseFromTags();
            return "";
        case Op::displayAt:
            return mayShow ? num(view.displayRecordsAt(sourceAt, step.c % 6, at - step.c % 2)) : "";
        case Op::displayMatch:
            return mayShow ? num(view.displayMatchAt(
                                 step.c % 2 == 0 ? "Name" : "Cookie",
                                 step.c % 2 == 0 ? value(step.b) : cookie(step.b), at))
                           : "";
        case Op::displayCookies:
            return mayShow ? num(view.displayRecordsAt(world_.cookies(cookieTexts(step)), at)) : "";
        case Op::displayCookieSet:
            return mayShow ? num(view.displayRecordsAt(world_.cookieSet(cookieTexts(step)), at))
                           : "";
        case Op::displayTagged:
            if (mayShow) {
                view.displayTaggedRecordsAt(at);
            }
            return "";
        case Op::displayAll:
            view.displayAllRecords();
            return "";
        case Op::displayAllWithBaseTags:
            view.displayAllRecordsWithBaseTagStatus();
            return "";
        case Op::displayAllWithTagField:
            view.setupViewTagsFromVekdbTagField();
            return "";
        case Op::displayAllFrom:
            return mayShow && &view != &other ? num(view.displayAllFromAt(&other, at - step.b % 3))
                                              : "";
        default:
            return editView(step);
    }
}

template <class World>
template <class View>
std::string Performer<World>::addThrough(View& view, const Step& step) {
    if (!hasRoomForRows() || view.get_num_records() >= mostRows) {
        return "full";
    }
    if (step.op == Op::viewAddRecords) {
        return num(view.add_records(few(step.b)));
    }
    view.insertBlankRecords(near(step.a, view.get_num_records()), few(step.b) - (step.c % 20 == 0));
    return "";
}

template <class World>
std::string Performer<World>::editView(const Step& step) {
    auto& view = world_.view(static_cast<unsigned>(step.who) % world_.viewCount());
    const unsigned rows = view.get_num_records();
    const int at = near(step.a, rows);
    const auto row = static_cast<unsigned>(at);
    const int some = step.c % 4 == 0 ? step.b % (int(rows) + 2) : few(step.b);
    switch (step.op) {
        case Op::insertBlank:
        case Op::viewAddRecords:
            return addThrough(view, step);
        case Op::viewDelete:
            view.deleteRecords(at, some);
            return "";
        case Op::viewDeleteTagged:
            return num(view.deleteTagged());
        case Op::viewRemove:
            view.remove(at, some);
            return "";
        case Op::removeTagged:
            return num(view.removeTagged());
        case Op::removeNonTagged:
            return num(view.removeNonTagged());
        case Op::removeFromBase:
            view.removeRecordsFromBaseView(at, some);
            return "";
        case Op::viewDeleteTaggedRecords:
            return num(view.delete_tagged_records());
        case Op::viewShowTagsOnly:
            view.set_show_tags_only(static_cast<unsigned>(step.b % 2));
            return num(view.get_show_tags_only());
        case Op::viewSort:
            view.sort(sign(step.a), step.b % 3 == 0);
            return "";
        case Op::viewSortField:
            view.set_sortfield(column(step.b));
            return "";
        case Op::viewQuery:
            world_.setQuery(view, queryTexts(step));
            return "";
        case Op::viewSetValue: {
            const auto field = static_cast<unsigned>(column(step.b));
            return num(view.set_field(row, field, valueFor(field, step.c)));
        }
        case Op::viewSetCookie:
            return num(view.set_field(row, world_.cookie(cookie(step.b))));
        case Op::viewQuestions:
            return questions(step);
        default:
            return "?";
    }
}

template <class World>
std::string Performer<World>::questions(const Step& step) {
    auto& view = world_.view(static_cast<unsigned>(step.who) % world_.viewCount());
    const int at = near(step.a, view.get_num_records());
    const auto row = static_cast<unsigned>(at);
    const auto field = static_cast<unsigned>(column(step.c));
    return findIn(view, step) + " " + num(view.match_record(at)) + " " +
           num(view.findViewIndexForBaseRow(static_cast<unsigned long>(step.b % 12))) + " " +
           num(view.find(view.get_record(row))) + " " + num(view.baseIndex(row)) + " " +
           num(view.get_tag(row)) + " " + plainText(view.getField(row, field)) + " " +
           num(view.get_num_fields()) + " " + plainText(view.get_fieldname(field)) + " " +
           num(view.get_fieldsize(field)) + " " + num(view.get_fieldnum("scene")) + " " +
           num(view.dbFieldIndex("Scene"));
}

}  // namespace script
