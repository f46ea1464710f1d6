#include <exception>
#include <new>

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
    static const int type = NotifyMsgTypeDictionary::instance().intern(kRecordsDeleted);
    return type;
}

int recordsChangedType() {
    static const int type = NotifyMsgTypeDictionary::instance().intern(kRecordsChanged);
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

// What a view loses by one notice of its source. The rows are gone there, so the view follows to
// the end whatever fails on the way; the first failure goes on to the source when it has.
struct VDBViewRep::Removals {
    explicit Removals(VDBViewRep& view)
        : pin(view), heard(view.hasListeners(recordsDeletedType())) {}

    template <class Step>
    void attempt(Step step) {
        try {
            step();
        } catch (...) {
            failure = failure != nullptr ? failure : std::current_exception();
        }
    }
    // A report that is not whole would be read as one that is, so there is none then.
    void note(int number) {
        any = true;
        if (!heard) {
            return;
        }
        try {
            report.append(number);
        } catch (const std::bad_alloc&) {
            heard = false;
            failure = failure != nullptr ? failure : std::current_exception();
        }
    }

    const Pin pin;
    bool heard;
    bool any = false;
    RowNumbers report;
    std::exception_ptr failure;
};

// Each number of the notice is taken as the row has it after the deletions before it, and rows
// go one at a time with a notice each. Whatever is told may change this view, so nothing about
// its rows is kept over a call.
int VDBViewRep::recordsDeletedNotify(const NotifyMsg& msg) {
    const ToldRows told(msg);
    Removals removals(*this);
    for (std::size_t i = 0; i < told.size() && !removals.pin.gone(); ++i) {
        const auto earlier = static_cast<unsigned>(i);
        dropSourceRow(static_cast<unsigned>(told[i]) - earlier, earlier, removals);
    }
    if (removals.report.size() > 0 && removals.heard && !removals.pin.gone()) {
        removals.attempt([&] { tell(NotifyMsg(removals.report), recordsDeletedType()); });
    }
    if (removals.any && !removals.pin.gone()) {
        removals.attempt([&] { tell(NotifyMsg(), recordsChangedType()); });
    }
    if (removals.failure != nullptr) {
        std::rethrow_exception(removals.failure);
    }
    return 0;
}

// Lowers the source rows above the target and takes out each row that shows it. The report
// counts one less than the row's place among the rows before this notice: listeners have been
// given these numbers from the beginning.
void VDBViewRep::dropSourceRow(unsigned target, unsigned earlier, Removals& removals) {
    int row = index().lowerAbove(target, 0);
    while (row < rowCount()) {
        removals.attempt([&] { remove(row, 1); });
        if (removals.pin.gone()) {
            return;
        }
        removals.note(static_cast<int>(earlier) + row - 1);
        row = index().lowerAbove(target, row);
    }
}
