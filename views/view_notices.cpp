#include <charconv>

#include "host/grow_string.h"
#include "host/text_util.h"
#include "views/view_parts_impl.h"

// What a view hears and says. docs/notices.md tells the order to those who listen.

namespace {

class ViewCallback final : public MethodCallback<VDBViewRep, NotifyMsg, int> {
public:
    using MethodCallback::MethodCallback;
    bool isViewHandler() const override { return true; }
};

void appendRow(GrowString& text, int row) {
    char digits[16];
    char* end = std::to_chars(digits, digits + sizeof digits - 1, row).ptr;
    *end++ = ' ';
    text.append(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

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

void VDBViewRep::tell(const char* text, int type) {
    if (!hasListeners(type)) {
        return;
    }
    const Pin pin(*this);
    issueNotification(NotifyMsg(LightweightString<char>(text), nullptr), type);
}

void VDBViewRep::tellRemoved(int at, int n) {
    if (!hasListeners(recordsDeletedType())) {
        return;
    }
    GrowString rows;
    for (int row = at; row < at + n; ++row) {
        appendRow(rows, row);
    }
    tell(rows, recordsDeletedType());
}

// Each number of the notice is taken as the row has it after the deletions before it, and rows
// go one at a time with a notice each. Whatever is told may change this view, so nothing about
// its rows is kept over a call.
int VDBViewRep::recordsDeletedNotify(const NotifyMsg& msg) {
    const Pin pin(*this);
    GrowString report;
    unsigned deleted = 0;
    int removed = 0;
    for (NotifyMsgTokenIterator token(msg); token; ++token) {
        const unsigned target = static_cast<unsigned>(parseInt(token.token())) - deleted;
        removed += dropSourceRow(target, deleted, report, pin);
        if (pin.gone()) {
            return 0;
        }
        ++deleted;
    }
    if (removed > 0) {
        tell(report, recordsDeletedType());
    }
    if (removed > 0 && !pin.gone()) {
        tell(nullptr, recordsChangedType());
    }
    return 0;
}

// Lowers the source rows above the target and takes out each row that shows it. The report
// counts one less than the row's place among the rows before this notice: listeners have been
// given these numbers from the beginning.
int VDBViewRep::dropSourceRow(unsigned target, unsigned earlier, GrowString& report,
                              const Pin& pin) {
    int removed = 0;
    int row = index().lowerAbove(target, 0);
    while (row < rowCount()) {
        remove(row, 1);
        if (pin.gone()) {
            return removed;
        }
        appendRow(report, static_cast<int>(earlier) + row - 1);
        ++removed;
        row = index().lowerAbove(target, row);
    }
    return removed;
}
