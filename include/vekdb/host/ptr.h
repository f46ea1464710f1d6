#pragma once

#include <vekdb/host/os.h>
#include <vekdb/host/visibility.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace Quor {

/// What a count word stands at. Only the answer 1, given to a holder, stays true.
VEKDB_PUBLIC std::uint32_t currentCount(std::uint32_t& count) noexcept;

/// Carries the reference count of an object that is shared through Ptr. The
/// count belongs to the object's place, not to its value: copying or assigning
/// the object never copies it.
class VEKDB_PUBLIC InternalRefCount {
public:
    /// Each object begins with a count of 0.
    InternalRefCount() noexcept = default;
    /// Copies nothing.
    InternalRefCount(const InternalRefCount&) noexcept {}
    InternalRefCount& operator=(const InternalRefCount&) noexcept { return *this; }

    /// Where the count stands; for Ptr.
    std::uint32_t* refCountWord() const noexcept { return &count_; }

protected:
    ~InternalRefCount() = default;

private:
    mutable std::uint32_t count_ = 0;
};

/// How the last Ptr destroys its object: by delete, which reaches the whole
/// object through its virtual destructor.
struct VEKDB_PUBLIC DtorTraits {
    /// Deletes it.
    template <class T>
    static void destroy(T* object) {
        delete object;
    }
};

/// The count word lives inside the object (see InternalRefCount).
struct VEKDB_PUBLIC InternalRefCountTraits {
    /// The count of an object.
    template <class T>
    static std::uint32_t* countFor(T* object) noexcept {
        return object->refCountWord();
    }
    /// It goes with its object.
    static void dispose(std::uint32_t*) noexcept {}
};

/// The count word is a block of its own, so any object can be shared. Only one
/// Ptr may be made from a given object pointer; the others are copies of it.
struct VEKDB_PUBLIC ExternalRefCountTraits {
    /// A new count of 0.
    template <class T>
    static std::uint32_t* countFor(T*) {
        return new std::uint32_t(0);
    }
    /// Deletes a count.
    static void dispose(std::uint32_t* count) noexcept { delete count; }
};

/// Shares an object: two words, the place of its count and the object. The last
/// Ptr destroys the object. Counting is safe between threads; a Ptr itself is
/// used by one thread at a time.
template <class T, class Destruction = DtorTraits, class Counting = InternalRefCountTraits>
class VEKDB_PUBLIC Ptr {
public:
    /// Null.
    Ptr() noexcept = default;
    Ptr(std::nullptr_t) noexcept {}

    /// Takes a share in the object. Should the count word not be had, the object
    /// is destroyed before BadAlloc leaves.
    explicit Ptr(T* object) : object_(object) {
        if (object != nullptr) {
            bindCount();
            incRef();
        }
    }

    /// Takes a further share, or takes the other's over.
    Ptr(const Ptr& other) noexcept : count_(other.count_), object_(other.object_) { incRef(); }
    Ptr(Ptr&& other) noexcept
        : count_(std::exchange(other.count_, nullptr)),
          object_(std::exchange(other.object_, nullptr)) {}

    /// From a Ptr to a derived object.
    template <class U>
    Ptr(const Ptr<U, Destruction, Counting>& other) noexcept
        : count_(other.count_), object_(other.object_) {
        incRef();
    }

    ~Ptr() { decRef(); }

    /// The new object is held before the old one is let go, so assigning what
    /// the old object owned is safe.
    Ptr& operator=(const Ptr& other) noexcept {
        Ptr held(other);
        swap(held);
        return *this;
    }

    /// The same with the other's share taken over.
    Ptr& operator=(Ptr&& other) noexcept {
        Ptr held(std::move(other));
        swap(held);
        return *this;
    }

    /// Lets go of the object, and takes a share in another one where it is given.
    void reset() noexcept { Ptr().swap(*this); }
    void reset(T* object) { Ptr(object).swap(*this); }

    /// Exchanges the shares.
    void swap(Ptr& other) noexcept {
        std::swap(count_, other.count_);
        std::swap(object_, other.object_);
    }

    /// The object, null for none; the last two of these need one.
    T* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }

    /// True for an object that nobody else shares.
    bool isUnshared() const noexcept { return object_ != nullptr && currentCount(*count_) == 1; }

    /// Adds one count for a holder outside any Ptr.
    void incRef() const noexcept {
        if (object_ != nullptr) {
            OS()->refCounts()->increment(*count_);
        }
    }

    /// Takes one count away. With the last one the object goes and this Ptr is
    /// null; otherwise it keeps pointing at an object it no longer holds.
    void decRef() noexcept {
        if (object_ != nullptr && OS()->refCounts()->decrement(*count_) == 0) {
            destroy();
        }
    }

    /// Whether both point at one object.
    template <class U>
    friend bool operator==(const Ptr& a, const Ptr<U, Destruction, Counting>& b) noexcept {
        return a.get() == b.get();
    }
    /// Whether it is null.
    friend bool operator==(const Ptr& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

private:
    template <class, class, class>
    friend class Ptr;

    // Destroys an object that no count could be had for, as the scope is left by whatever was
    // thrown: so this compiles where there are no exceptions.
    struct Uncounted {
        T* object;
        ~Uncounted() {
            if (object != nullptr) {
                Destruction::destroy(object);
            }
        }
    };

    void bindCount() {
        Uncounted uncounted{object_};
        count_ = Counting::countFor(object_);
        uncounted.object = nullptr;
    }

    // The words are cleared first: a destructor that comes back to this Ptr
    // finds it null.
    void destroy() noexcept {
        std::uint32_t* count = std::exchange(count_, nullptr);
        T* object = std::exchange(object_, nullptr);
        Counting::dispose(count);
        Destruction::destroy(object);
    }

    std::uint32_t* count_ = nullptr;
    T* object_ = nullptr;
};

}  // namespace Quor

/// Root of what is destroyed through a base of it.
class VEKDB_PUBLIC iVirtual {
public:
    /// A base has nothing that could be copied.
    iVirtual() = default;
    iVirtual(const iVirtual&) = default;
    iVirtual& operator=(const iVirtual&) = default;
    virtual ~iVirtual() = default;
};

/// A shared object: tables, views and the payloads of notices. Held through
/// Quor::Ptr<T>. An object on the stack is never handed to a Ptr.
class VEKDB_PUBLIC iObject : public virtual Quor::InternalRefCount, public virtual iVirtual {};
