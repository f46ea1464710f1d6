#include <vekdb/host/cookie.h>
#include <vekdb/host/wrapped_data.h>
#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

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

bool vekdb::update(configb* settings, int row) {
    const dbrecord* record = get_record(static_cast<unsigned>(row));
    if (record == nullptr || record->update(settings) == 0) return false;
    unsigned field = get_fieldnum("cookie");
    if (field == Columns::none) return true;
    const char* text = record->get_field(static_cast<unsigned short>(field));
    if (text == nullptr) return true;
    Cookie cookie(text, false);
    if (cookie.type != cookieTypeInvalid) addToUpdate(cookie);
    return true;
}
