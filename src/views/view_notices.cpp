#include <vekdb/host/row_numbers.h>
#include <vekdb/host/text_util.h>
#include "views/view_parts.h"

// What a view hears and says. docs/notices.md tells the order to those who listen.

namespace {

class ViewCallback final : public MethodCallback<VDBViewRep, NotifyMsg, int> {
public:
    using MethodCallback::MethodCallback;
    bool isViewHandler() const override { return true; }
};

// The rows that a notice tells of: its numbers, or the numbers that its text is read as.
class ToldRows {
public:
    explicit ToldRows(const NotifyMsg& message) : rows_(message.rows()) {
        if (rows_ == nullptr) {
            read(message);
        }
    }
    std::size_t size() const { return rows_->size(); }
    int operator[](std::size_t i) const { return (*rows_)[i]; }

private:
    void read(const NotifyMsg& message) {
        for (NotifyMsgTokenIterator token(message); token; ++token) {
            read_.append(parseInt(token.token()));
        }
        rows_ = &read_;
    }

    const RowNumbers* rows_;
    RowNumbers read_;
};

}  // namespace

int recordsDeletedType() {
    static const int type = NotifyMsgTypeDictionary::instance().intern("recordsDeleted");
    return type;
}

int recordsChangedType() {
    static const int type = NotifyMsgTypeDictionary::instance().intern("recordsChanged");
    return type;
}

Quor::Ptr<Quor::Guard> VDBViewRep::listenTo(Notifier& notifier) {
    const Quor::Ptr<Notifier::Callback> callback(
        new ViewCallback(this, &VDBViewRep::recordsDeletedNotify));
    return notifier.registerNotification(callback, recordsDeletedType());
}

void VDBViewRep::tell(const NotifyMsg& message, int type) {
    if (!hasListeners(type)) {
        return;
    }
    const Pin pin(*this);
    issueNotification(message, type);
}

void VDBViewRep::tellRemoved(int at, int n) {
    if (!hasListeners(recordsDeletedType())) {
        return;
    }
    RowNumbers rows;
    rows.reserve(static_cast<std::size_t>(n));
    for (int row = at; row < at + n; ++row) {
        rows.append(row);
    }
    tell(NotifyMsg(rows), recordsDeletedType());
}

// Each number of the notice is taken as the row has it after the deletions before it, and rows
// go one at a time with a notice each. Whatever is told may change this view, so nothing about
// its rows is kept over a call.
int VDBViewRep::recordsDeletedNotify(const NotifyMsg& msg) {
    const Pin pin(*this);
    const ToldRows told(msg);
    RowNumbers report;
    for (std::size_t i = 0; i < told.size(); ++i) {
        const auto earlier = static_cast<unsigned>(i);
        dropSourceRow(static_cast<unsigned>(told[i]) - earlier, earlier, report, pin);
        if (pin.gone()) {
            return 0;
        }
    }
    if (report.size() > 0) {
        tell(NotifyMsg(report), recordsDeletedType());
    }
    if (report.size() > 0 && !pin.gone()) {
        tell(NotifyMsg(), recordsChangedType());
    }
    return 0;
}

// Lowers the source rows above the target and takes out each row that shows it. The report
// counts one less than the row's place among the rows before this notice: listeners have been
// given these numbers from the beginning.
void VDBViewRep::dropSourceRow(unsigned target, unsigned earlier, RowNumbers& report,
                               const Pin& pin) {
    int row = index().lowerAbove(target, 0);
    while (row < rowCount()) {
        remove(row, 1);
        if (pin.gone()) {
            return;
        }
        report.append(static_cast<int>(earlier) + row - 1);
        row = index().lowerAbove(target, row);
    }
}
