#include <memory>

#include <vekdb/record.h>
#include <vekdb/views/view.h>
#include "views/view_parts.h"

VDBViewRep* VDBViewRep::copy() {
    if (table() == nullptr) {
        return nullptr;
    }
    auto copied = std::make_unique<VDBViewRep>(table(), fieldSpecText());
    if (base() != nullptr) {
        copied->baseView(base());
        copied->displayAllRecords();
    } else {
        copied->displayAllFromAt(this, 0);
        copied->addParamsFrom(table());
    }
    copied->tagLike(*this);
    return copied.release();
}

VDBViewRep* VDBViewRep::copyWithNewBaseView() {
    if (table() == nullptr) {
        return nullptr;
    }
    auto newTable = std::make_unique<vekdb>(*table(), 1);
    auto copied = std::make_unique<VDBViewRep>(newTable.get());
    copied->showAgain(*this);
    copied->addParamsFrom(this);
    copied->tagLike(*this);
    newTable.release();
    return copied.release();
}

// Rows without a record are left out, and those behind them move up.
void VDBViewRep::showAgain(VDBViewRep& original) {
    for (int i = 0; i < original.rowCount(); ++i) {
        if (original[i] != nullptr) {
            const unsigned row = original.baseIndex(static_cast<unsigned>(i));
            displayRecordsAt(static_cast<int>(row), 1, i);
        }
    }
}

// By position; a tag for a row that is not there is lost.
void VDBViewRep::tagLike(const VDBViewRep& other) {
    for (int i = 0; i < other.rowCount(); ++i) {
        set_tag(static_cast<unsigned>(i), static_cast<int>(other.index().tag(i)));
    }
}

vekdb* Convert_VDBView_to_vekdb(VDBView view) {
    const vekdb* table = view ? view->table() : nullptr;
    if (table == nullptr) {
        return nullptr;
    }
    auto converted = std::make_unique<vekdb>(*table, 0);
    const unsigned rows = view->get_num_records();
    if (static_cast<int>(converted->add_records(static_cast<int>(rows))) < 0) {
        return nullptr;
    }
    for (unsigned i = 0; i < rows; ++i) {
        if (const dbrecord* record = view->get_record(i)) {
            converted->copy_record(i, record);
        }
    }
    return converted.release();
}
