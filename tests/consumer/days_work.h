#pragma once

#include <memory>

#include <vekdb/host/text_util.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>

/// Loads a log and does a bit of everything with it: false where something went wrong.
inline bool daysWork(const char* path) {
    vekdb log(fromUTF8(LightweightString<char>(path)), 1000, true);
    if (!log.get_valid() || log.get_num_records() != 6) return false;
    std::unique_ptr<dbrecord> query(log.make_dummy_record());
    const unsigned description = log.get_fieldnum("Description");
    query->set_field(static_cast<int>(description), "platform");
    log.set_query(query.get());

    VDBView view(&log);
    view->displayAllRecords();
    view->tagMatches(0);
    view->removeNonTagged();
    if (view->get_num_records() != 2) return false;
    log.set_sortfield(0);
    log.sort(1, 0);
    log.add_records(300);
    log.set_field(305, description, "added");
    log.delete_records(0, 200);
    view->displayAllRecords();
    return log.get_num_records() == 106 && view->getField(105, description) == "added";
}
