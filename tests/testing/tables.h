#pragma once

#include <string>
#include <utility>
#include <vector>

#include <vekdb/host/notify.h>
#include <vekdb/table.h>

// Small tables for tests, and the notices that they issue.

/// Descriptors of text columns of these names.
inline std::vector<DBFieldDesc> textColumns(std::vector<const char*> names) {
    std::vector<DBFieldDesc> fields;
    for (const char* name : names) fields.push_back({name, DBFieldTypes::text});
    return fields;
}

/// Appends a row of these values; its position.
inline unsigned addRow(VDBBase& table, std::vector<const char*> values) {
    unsigned row = table.add_records(1);
    for (unsigned i = 0; i < values.size(); ++i) {
        table.get_record(row)->setField(static_cast<unsigned short>(i), values[i]);
    }
    return row;
}

/// The shown rows' values of one column.
inline std::vector<std::string> columnOf(const VDBBase& source, unsigned field) {
    std::vector<std::string> values;
    for (unsigned row = 0; row < source.get_num_records(); ++row) {
        values.push_back(source.getField(row, field).c_str());
    }
    return values;
}

/// Collects the texts of the notices of one type that a notifier issues.
class NoticeTexts {
public:
    NoticeTexts(Notifier& notifier, const char* type)
        : guard_(notifier.registerNotification(
              Quor::Ptr<iCallbackBase<int, NotifyMsg>>(
                  new MethodCallback<NoticeTexts, NotifyMsg, int>(this, &NoticeTexts::take)),
              NotifyMsgTypeDictionary::instance().intern(type))) {}

    std::vector<std::string> texts;
    std::vector<Quor::Ptr<iObject>> objects;

private:
    int take(const NotifyMsg& message) {
        texts.push_back(message.text().c_str());
        objects.push_back(message.object());
        return 0;
    }

    Quor::Ptr<Quor::Guard> guard_;
};

/// Calls a function whenever a notifier issues notices of a type, for as long as it lives.
template <class Function>
class WhenTold {
public:
    WhenTold(Notifier& notifier, const char* type, Function function)
        : function_(std::move(function)),
          guard_(notifier.registerNotification(
              Quor::Ptr<iCallbackBase<int, NotifyMsg>>(
                  new MethodCallback<WhenTold, NotifyMsg, int>(this, &WhenTold::told)),
              NotifyMsgTypeDictionary::instance().intern(type))) {}
    WhenTold(const WhenTold&) = delete;
    WhenTold& operator=(const WhenTold&) = delete;

private:
    int told(const NotifyMsg& message) {
        function_(message);
        return 0;
    }

    Function function_;
    Quor::Ptr<Quor::Guard> guard_;
};
