#pragma once

#include <vekdb/host/cookie.h>
#include <vekdb/host/cookie_containers.h>

/// Changes that are collected into one notice: the depth of the brackets and the cookies that
/// wait for the outermost one to close.
class UpdateBatch {
public:
    unsigned depth() const { return depth_; }

    unsigned begin() {
        if (depth_ == 0) pending_.clear();
        return ++depth_;
    }
    void add(const Cookie& cookie) { pending_.add(cookie); }
    /// True when the outermost bracket closed with something to tell.
    bool end() {
        if (depth_ == 0) return false;
        --depth_;
        return depth_ == 0 && !pending_.empty();
    }
    /// The cookies collected; none are left here.
    CookieVec take() {
        CookieVec taken;
        taken.swap(pending_);
        return taken;
    }
    void reset() {
        depth_ = 0;
        pending_.clear();
    }

private:
    CookieVec pending_;
    unsigned depth_ = 0;
};
