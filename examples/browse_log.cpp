// Loads a log, chooses and sorts some of its rows in a view, and saves the choice.
// usage: browse_log LOG TEXT OUTPUT

#include <cstdio>
#include <memory>

#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>

int main(int count, char** arguments) {
    if (count != 4) {
        return 2;
    }
    vekdb log(fromUTF8(arguments[1]), 1'000'000, true);
    if (!log.get_valid()) {
        std::printf("%s is not a log\n", arguments[1]);
        return 3;
    }

    // A query is a record with a text in the columns to look at; case is ignored.
    std::unique_ptr<dbrecord> query(log.make_dummy_record());
    query->set_field(log.get_fieldnum("Description"), arguments[2]);
    log.set_query(query.get());

    // A view shows rows of the table without copying a record.
    VDBView view(&log);
    view->displayAllRecords();
    view->tagMatches(0);
    view->removeNonTagged();
    log.set_sortfield(log.get_fieldnum("Start time"));
    view->sort(1, 0);

    unsigned reel = view->get_fieldnum("Reel");
    unsigned start = view->get_fieldnum("Start time");
    unsigned description = view->get_fieldnum("Description");
    for (unsigned row = 0; row < view->get_num_records(); ++row) {
        std::printf("%s  %s  %s\n", view->getField(row, reel).c_str(),
                    view->getField(row, start).c_str(), view->getField(row, description).c_str());
    }
    // The view's tags are written with it: every row of the choice is a tagged one.
    return view->saveAsText(arguments[3], false) > 0 ? 0 : 4;
}
