#pragma once

#include <memory>

#include <vekdb/host/assoc_list.h>
#include <vekdb/support/sexpr.h>
#include <vekdb/table.h>
#include <vekdb/views/view_rep.h>
#include "views/view_index.h"

/// What a view is made of. The source references turn null when their source is destroyed.
struct ViewParts {
    ViewIndex index;
    AssocList params;
    LightweightString<wchar_t> fileName;
    LightweightString<char> spec;
    bool hasSpec = false;
    std::unique_ptr<SExpr> fields;
    SourceRef<vekdb> table;
    SourceRef<VDBViewRep> base;
    Quor::Ptr<Quor::Guard> tableRegistration;
    Quor::Ptr<Quor::Guard> baseRegistration;
};

/// Keeps a view whole while it calls out: destruction by the last holder waits until the last
/// pin goes. A view deleted outright does not wait, so after every call out `gone` is asked
/// first, and when it is true no member is touched.
class VDBViewRep::Pin {
public:
    explicit Pin(VDBViewRep& view) noexcept : view_(&view) { ++view.pins_; }
    Pin(const Pin&) = delete;
    Pin& operator=(const Pin&) = delete;
    ~Pin() { letGo(view_.get()); }

    bool gone() const noexcept {
        const VDBViewRep* view = view_.get();
        return view == nullptr || view->doomed_;
    }

private:
    static void letGo(VDBViewRep* view) noexcept {
        if (view != nullptr && --view->pins_ == 0 && view->doomed_) {
            delete view;
        }
    }

    SourceRef<VDBViewRep> view_;
};

inline ViewIndex& VDBViewRep::index() const {
    return parts_->index;
}

inline int VDBViewRep::rowCount() const {
    return parts_->index.count();
}

int recordsDeletedType();
int recordsChangedType();
