#include <vekdb/host/cookie.h>
#include <vekdb/host/row_numbers.h>
#include <vekdb/host/wrapped_data.h>
#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

namespace {

// Sets a flag of a table when the scope is left, whichever way, unless the table went meanwhile.
class SetOnLeave {
public:
    SetOnLeave(vekdb& table, bool& flag) noexcept : table_(&table), flag_(flag) {}
    ~SetOnLeave() {
        if (table_.get() != nullptr) flag_ = true;
    }
    SetOnLeave(const SetOnLeave&) = delete;
    SetOnLeave& operator=(const SetOnLeave&) = delete;

private:
    SourceRef<vekdb> table_;
    bool& flag_;
};

int deletion() {
    static const int type = NotifyMsgTypeDictionary::instance().intern(kRecordsDeleted);
    return type;
}

}  // namespace

bool vekdb::isDeletionHeard() const {
    return hasListeners(deletion());
}

// A listener may let go of the table.
void vekdb::tellDeleted(const RowNumbers& rows) {
    SetOnLeave modified(*this, parts().modified);
    issueNotification(NotifyMsg(rows), deletion());
}

unsigned vekdb::beginUpdate() {
    return parts().updates.begin();
}

void vekdb::addToUpdate(const Cookie& cookie) {
    parts().updates.add(cookie);
}

void vekdb::endUpdate() {
    if (!parts().updates.end()) return;
    Quor::Ptr<iObject> changed(new WrappedData<CookieVec>(parts().updates.take()));
    static const int type = NotifyMsgTypeDictionary::instance().intern(kRecordsChanged);
    issueNotification(NotifyMsg(changed), type);
}
