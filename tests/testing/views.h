#pragma once

#include <memory>
#include <string>
#include <vector>

#include <vekdb/record.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "testing/tables.h"

// Views over small tables, and what they show and say, as short texts.

/// A table of one text column "Name" with the rows r0, r1 and so on.
inline std::unique_ptr<vekdb> numberedTable(int rows) {
    auto table = std::make_unique<vekdb>(textColumns({"Name"}));
    table->add_records(rows);
    for (int i = 0; i < rows; ++i) {
        const std::string name = std::string("r").append(std::to_string(i));
        table->set_field(static_cast<unsigned>(i), 0u, name.c_str());
    }
    return table;
}

/// A table of one text column "Name" with these values.
inline std::unique_ptr<vekdb> namedTable(std::vector<const char*> names) {
    auto table = std::make_unique<vekdb>(textColumns({"Name"}));
    for (const char* name : names) {
        addRow(*table, {name});
    }
    return table;
}

inline void joinWord(std::string& text, const std::string& word) {
    text += (text.empty() ? "" : " ") + word;
}

/// The source rows that a view shows: "0 1 2".
inline std::string rowsOf(const VDBViewRep& view) {
    std::string text;
    for (int i = 0; i < static_cast<int>(view.get_num_records()); ++i) {
        joinWord(text, std::to_string(view.sourceRow(i)));
    }
    return text;
}

/// The first values of the records shown, "null" for a row without a record, "-" for an empty
/// value: "r0 r1 -".
inline std::string namesOf(const VDBBase& source) {
    std::string text;
    for (unsigned i = 0; i < source.get_num_records(); ++i) {
        const dbrecord* record = source.get_record(i);
        const char* name = record != nullptr ? record->get_field(0) : "null";
        joinWord(text, *name != '\0' ? name : "-");
    }
    return text;
}

/// The tags of the rows: "1 0 1".
inline std::string tagsOf(const VDBBase& source) {
    std::string text;
    for (unsigned i = 0; i < source.get_num_records(); ++i) {
        joinWord(text, std::to_string(source.get_tag(i)));
    }
    return text;
}

/// Shows exactly these source rows, in this order; tells nobody and leaves every tag clear.
inline void show(VDBViewRep& view, const std::vector<int>& rows) {
    view.clear();
    for (int row : rows) {
        view.append(row);
    }
}

inline void setTags(VDBBase& source, const std::vector<int>& tags) {
    for (std::size_t i = 0; i < tags.size(); ++i) {
        source.set_tag(static_cast<unsigned>(i), tags[i]);
    }
}

inline void tagRows(VDBBase& source, const std::vector<unsigned>& rows) {
    for (unsigned row : rows) {
        source.set_tag(row, 1);
    }
}

/// A view over a table that shows these rows.
inline VDBView viewOf(vekdb& table, const std::vector<int>& rows) {
    VDBView view(&table);
    show(*view, rows);
    return view;
}

/// A view over a table that shows all of its rows.
inline VDBView viewOfAll(vekdb& table) {
    VDBView view(&table);
    view->displayAllRecords();
    return view;
}

/// A view stacked on another that shows these rows of it.
inline VDBView stackedOn(const VDBView& base, const std::vector<int>& rows) {
    VDBView view(base->table());
    view->baseView(base.get());
    show(*view, rows);
    return view;
}

/// A view stacked on another that shows all of its rows.
inline VDBView stackedOnAll(const VDBView& base) {
    VDBView view(base->table());
    view->baseView(base.get());
    view->displayAllRecords();
    return view;
}

/// Writes down, in order and into one log, the notices of a table or view: "V1 3 4 " for rows
/// deleted, "V1 changed" for records changed.
class NoticeLog {
public:
    void follow(Notifier& notifier, const char* name) {
        ears_.push_back(std::make_unique<Ear>(*this, notifier, name));
    }

    std::vector<std::string> entries;

private:
    class Ear {
    public:
        Ear(NoticeLog& log, Notifier& notifier, const char* name)
            : log_(log), name_(name), deleted_(listen(notifier, "recordsDeleted", &Ear::onDeleted)),
              changed_(listen(notifier, "recordsChanged", &Ear::onChanged)) {}

    private:
        using Method = int (Ear::*)(const NotifyMsg&);

        Quor::Ptr<Quor::Guard> listen(Notifier& notifier, const char* type, Method method) {
            return notifier.registerNotification(
                Quor::Ptr<iCallbackBase<int, NotifyMsg>>(
                    new MethodCallback<Ear, NotifyMsg, int>(this, method)),
                NotifyMsgTypeDictionary::instance().intern(type));
        }

        int onDeleted(const NotifyMsg& message) {
            log_.entries.push_back(name_ + " " + message.text().c_str());
            return 0;
        }

        int onChanged(const NotifyMsg& message) {
            const bool bare = message.text().empty() && message.object() == nullptr;
            log_.entries.push_back(name_ + (bare ? " changed" : " changed with a payload"));
            return 0;
        }

        NoticeLog& log_;
        std::string name_;
        Quor::Ptr<Quor::Guard> deleted_;
        Quor::Ptr<Quor::Guard> changed_;
    };

    std::vector<std::unique_ptr<Ear>> ears_;
};
