#include <utility>

#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>

VDBView::VDBView(vekdb* table) : view_(new VDBViewRep(table)) {
    view_->retain();
}

VDBView::VDBView(VDBViewRep* view) noexcept : view_(view) {
    if (view_ != nullptr) {
        view_->retain();
    }
}

VDBView::VDBView(const VDBView& other) noexcept : VDBView(other.view_) {}

VDBView::VDBView(VDBView&& other) noexcept : view_(std::exchange(other.view_, nullptr)) {}

VDBView::~VDBView() {
    if (view_ != nullptr) {
        view_->release();
    }
}

VDBView& VDBView::operator=(const VDBView& other) noexcept {
    VDBView held(other);
    std::swap(view_, held.view_);
    return *this;
}

VDBView VDBView::copy() const {
    return VDBView(view_ != nullptr ? view_->copy() : nullptr);
}

VDBView VDBView::copyWithNewBaseView() const {
    return VDBView(view_ != nullptr ? view_->copyWithNewBaseView() : nullptr);
}
