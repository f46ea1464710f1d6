#pragma once

#include <vekdb/host/array.h>
#include <vekdb/host/cookie.h>
#include <vekdb/host/ptr.h>
#include <vekdb/host/visibility.h>

#include <type_traits>

/// A growable sequence of plain values. Copies share one store until one of them
/// is changed, so it may be passed by value freely. Pointers and references into
/// it live until it is next changed.
template <class T>
class VEKDB_PUBLIC LightweightVector {
    static_assert(std::is_trivially_copyable_v<T>, "items are moved as bytes");

public:
    /// Appends at the end; an item that is there already is kept twice. On
    /// BadAlloc the sequence is as it was.
    void add(const T& item);
    void push_back(const T& item) { add(item); }

    /// Makes room for this many items in all.
    void reserve(unsigned room);

    /// How many items there are, and whether there is none.
    unsigned size() const noexcept { return store_ ? store_->count : 0; }
    bool empty() const noexcept { return size() == 0; }

    /// Requires an index below size().
    const T& operator[](unsigned index) const noexcept { return store_->items[index]; }

    /// The items in their order; null where there never was one.
    const T* begin() const noexcept { return store_ ? store_->items : nullptr; }
    const T* end() const noexcept { return begin() + size(); }

    /// Lets go of all items, and changes places with another sequence.
    void clear() noexcept { store_.reset(); }
    void swap(LightweightVector& other) noexcept { store_.swap(other.store_); }

private:
    struct Store {
        Store() = default;
        Store(const Store&) = delete;
        Store& operator=(const Store&) = delete;
        ~Store() { OS()->allocator()->free(items); }

        T* items = nullptr;
        unsigned count = 0;
        unsigned capacity = 0;
    };
    using Share = Quor::Ptr<Store, Quor::DtorTraits, Quor::ExternalRefCountTraits>;

    void unshare();

    Share store_;
};

extern template class LightweightVector<Cookie>;

/// A sequence of cookies.
using CookieVec = LightweightVector<Cookie>;

/// A copy of one cookie, as it stands in a set.
class VEKDB_PUBLIC CookieSetRec final : public ArrayRec {
public:
    /// Copies the cookie.
    explicit CookieSetRec(const Cookie& cookie) : cookie_(cookie) {}

    /// Lives as long as this record.
    const Cookie& cookie() const noexcept { return cookie_; }

    /// By the cookies' own order, and their text.
    int compare(const ArrayRec& other) const override;
    void printOn(GrowString& out) const override;

private:
    Cookie cookie_;
};

/// The cookies of a set in their order, shared by the handles on it.
class VEKDB_PUBLIC CookieSetRep final : public Set, public Quor::InternalRefCount {
public:
    /// Empty, or with the same cookies as another one.
    CookieSetRep() = default;
    CookieSetRep(const CookieSetRep& other);
    CookieSetRep& operator=(const CookieSetRep&) = delete;

    /// Makes it the set of these cookies: sorted once, equal ones collapsed.
    void init(const CookieVec& cookies = CookieVec());

    /// False when the cookie was there already.
    bool add(const Cookie& cookie);
    bool contains(const Cookie& cookie) const;

    /// The i-th cookie in the order of compare; the default one past the ends.
    const Cookie& operator[](int i) const noexcept;
};

/// A set of cookies. Copies share one representation, which is copied before it is
/// changed. A reference into it lives until the set is changed or gone.
class VEKDB_PUBLIC CookieSet {
public:
    /// Empty.
    CookieSet() noexcept = default;
    /// Of these cookies, equal ones once.
    explicit CookieSet(const CookieVec& cookies);
    /// Shares the representation.
    CookieSet(const CookieSet&) noexcept = default;
    CookieSet& operator=(const CookieSet&) noexcept = default;
    virtual ~CookieSet() = default;

    /// False when the cookie was there already.
    bool add(const Cookie& cookie);
    bool contains(const Cookie& cookie) const { return rep_ && rep_->contains(cookie); }

    /// How many cookies there are, and whether there is none.
    unsigned size() const noexcept { return rep_ ? rep_->size() : 0; }
    bool empty() const noexcept { return size() == 0; }

    /// The i-th cookie in the order of compare; the default one past the ends.
    const Cookie& operator[](int i) const noexcept;

    /// Gives this handle a representation of its own.
    void unshare();

    /// Empties the set; other handles keep what they share.
    void purge() noexcept { rep_.reset(); }

    /// The texts of the cookies in order, a comma and a blank between them.
    virtual void printOn(GrowString& out) const;

private:
    Quor::Ptr<CookieSetRep> rep_;
};
