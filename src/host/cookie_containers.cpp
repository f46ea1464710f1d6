#include <vekdb/host/cookie_containers.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/grow_string.h>

#include <algorithm>
#include <cstring>
#include <vector>

template <class T>
void LightweightVector<T>::unshare() {
    if (store_.isUnshared()) {
        return;
    }
    LightweightVector copy;
    copy.store_ = Share(new Store);
    copy.reserve(size());
    if (!empty()) {
        std::memcpy(copy.store_->items, store_->items, sizeof(T) * size());
        copy.store_->count = size();
    }
    swap(copy);
}

template <class T>
void LightweightVector<T>::reserve(unsigned room) {
    unshare();
    if (room <= store_->capacity) {
        return;
    }
    std::size_t bytes = sizeof(T) * std::size_t(room);
    store_->items = static_cast<T*>(OS()->allocator()->reallocate(store_->items, bytes));
    store_->capacity = room;
}

// The item may be one of the sequence's own, which moves as it grows.
template <class T>
void LightweightVector<T>::add(const T& item) {
    const T copy = item;
    unshare();
    if (store_->count == store_->capacity) {
        const std::uint64_t room = std::max<std::uint64_t>(8, std::uint64_t(store_->capacity) * 2);
        if (room > UINT32_MAX) {
            throw Quor::Exception::BadAlloc();
        }
        reserve(static_cast<unsigned>(room));
    }
    store_->items[store_->count++] = copy;
}

template class LightweightVector<Cookie>;

namespace {

constinit const Cookie noCookie;

}  // namespace

int CookieSetRec::compare(const ArrayRec& other) const {
    return cookie_.compare(static_cast<const CookieSetRec&>(other).cookie_);
}

void CookieSetRec::printOn(GrowString& out) const {
    out.append(cookie_.asString(false).view());
}

CookieSetRep::CookieSetRep(const CookieSetRep& other) : Set(), Quor::InternalRefCount(other) {
    Set::init(other.size());
    for (unsigned i = 0; i < other.size(); ++i) {
        appendGreatest(new CookieSetRec(other[static_cast<int>(i)]));
    }
}

void CookieSetRep::init(const CookieVec& cookies) {
    std::vector<Cookie> sorted(cookies.begin(), cookies.end());
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    Set::init(static_cast<unsigned>(sorted.size()));
    for (const Cookie& cookie : sorted) {
        appendGreatest(new CookieSetRec(cookie));
    }
}

bool CookieSetRep::add(const Cookie& cookie) {
    unsigned index = 0;
    return intern(new CookieSetRec(cookie), index);
}

bool CookieSetRep::contains(const Cookie& cookie) const {
    unsigned index = 0;
    return find(CookieSetRec(cookie), index);
}

const Cookie& CookieSetRep::operator[](int i) const noexcept {
    const ArrayRec* record = i < 0 ? nullptr : datum(static_cast<unsigned>(i));
    return record == nullptr ? noCookie : static_cast<const CookieSetRec*>(record)->cookie();
}

CookieSet::CookieSet(const CookieVec& cookies) : rep_(new CookieSetRep) {
    rep_->init(cookies);
}

bool CookieSet::add(const Cookie& cookie) {
    unshare();
    return rep_->add(cookie);
}

const Cookie& CookieSet::operator[](int i) const noexcept {
    return rep_ ? (*rep_)[i] : noCookie;
}

void CookieSet::unshare() {
    if (!rep_) {
        rep_ = Quor::Ptr<CookieSetRep>(new CookieSetRep);
    } else if (!rep_.isUnshared()) {
        rep_ = Quor::Ptr<CookieSetRep>(new CookieSetRep(*rep_));
    }
}

void CookieSet::printOn(GrowString& out) const {
    if (rep_) {
        rep_->printOn(out);
    }
}
