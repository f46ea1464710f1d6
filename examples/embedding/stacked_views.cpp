// A view of a log's chosen rows, another one on top of it, and what edits do to both.
// usage: stacked_views LOG

#include <cstdio>
#include <memory>

#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>

namespace {

// Tables and views answer the same questions, so one function prints either.
void print(const char* title, const VDBBase& rows) {
    std::printf("%s:", title);
    const unsigned scene = rows.get_fieldnum("Scene");
    const unsigned take = rows.get_fieldnum("Take");
    for (unsigned row = 0; row < rows.get_num_records(); ++row) {
        std::printf(" %s/%s%s", rows.getField(row, scene).c_str(), rows.getField(row, take).c_str(),
                    rows.get_tag(row) != 0 ? "*" : "");
    }
    std::printf("\n");
}

// Shows the table's rows whose column contains a text.
VDBView viewOf(vekdb& log, const char* column, const char* text) {
    std::unique_ptr<dbrecord> query(log.make_dummy_record());
    query->set_field(log.get_fieldnum(column), text);
    log.set_query(query.get());

    VDBView view(&log);
    view->displayAllRecords();
    view->tagMatches(0);
    view->removeNonTagged();
    view->tagAll(false);
    return view;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    vekdb log(fromUTF8(arguments[1]), 1'000'000, true);
    if (!log.get_valid()) return 1;
    print("log  ", log);

    VDBView reelA = viewOf(log, "Reel", "A00");
    log.set_sortfield(static_cast<int>(log.get_fieldnum("Scene")));
    reelA->sort(-1, 0);
    print("lower", *reelA);

    // The upper view stands on the lower one: its rows are numbers of rows there.
    reelA->set_tag(1, 1);
    reelA->set_tag(2, 1);
    VDBView chosen(reelA->newTagSubview());
    print("upper", *chosen);

    // A cell has one place. Whoever changes it, all see it.
    chosen->set_field(0, chosen->get_fieldnum("Take"), 9);
    print("upper", *chosen);
    print("lower", *reelA);
    std::printf("row %u of the log\n", chosen->baseIndex(0) + 1);

    // Rows that are deleted leave every view. The lower view's tags follow its rows; the upper
    // one is made anew of them.
    log.delete_records(0, 1);
    chosen->clear();
    chosen->displayTaggedRecordsAt(0);
    print("lower", *reelA);
    print("upper", *chosen);

    // Rows that are added are in no view until it shows them.
    log.add_records(1);
    log.set_field(log.get_num_records() - 1, log.get_fieldnum("Scene"), "99");
    reelA->append(static_cast<int>(log.get_num_records()) - 1);
    print("lower", *reelA);
}
