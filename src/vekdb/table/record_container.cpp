#include <ctime>

#include <vekdb/record.h>
#include <vekdb/table.h>
#include "vekdb/table/table_parts.h"

void dbrecord::set_container(vekdb* table) {
    owner_ = table;
}

// The table may be gone: nothing of it is looked at.
vekdb* dbrecord::get_container() const {
    return static_cast<vekdb*>(owner_);
}

void vekdb::recordChanged() {
    parts().modified = true;
}

void vekdb::recordRead() {
    parts().modified = true;
    parts().modificationTime = std::time(nullptr);
}
