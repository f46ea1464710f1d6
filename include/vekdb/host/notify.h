#pragma once

#include <vekdb/host/critical_section.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/ptr.h>
#include <vekdb/host/row_numbers.h>
#include <vekdb/host/visibility.h>

#include <cstdint>
#include <string_view>

// Notices between objects of one process, delivered synchronously on the thread
// that issues them.

/// The names of notice types and their numbers: one of each in the process, from
/// 1 up, the same for a name for as long as the process lives. Names are told
/// apart by every character. Safe from any thread.
class VEKDB_PUBLIC NotifyMsgTypeDictionary {
public:
    /// Lives from its first use until the process ends.
    static NotifyMsgTypeDictionary& instance();

    /// The number of a name, given out when it is first asked for.
    int intern(const LightweightString<char>& name);

    /// The name with this number; the null string for a number not given out.
    LightweightString<char> name(int type) const;

private:
    struct Names;  // keeps the containers of the standard library out of this header

    explicit NotifyMsgTypeDictionary(Names& names) noexcept : names_(names) {}

    mutable CriticalSection lock_;
    Names& names_;
};

/// What a notice says: a text, and an object that the message shares. Each may be
/// null. The type of a notice is no part of its message.
///
/// A message made of row numbers has their text, and makes it when it is first asked
/// for; the numbers are borrowed and outlive the message. Copies hold the text.
class VEKDB_PUBLIC NotifyMsg {
public:
    /// Of a text, an object, both or neither, or of row numbers.
    NotifyMsg() = default;
    NotifyMsg(const LightweightString<char>& text, const Quor::Ptr<iObject>& object)
        : text_(text), object_(object) {}
    explicit NotifyMsg(const Quor::Ptr<iObject>& object) : object_(object) {}
    explicit NotifyMsg(const RowNumbers& rows) : rows_(&rows) {}
    /// A copy needs the numbers no longer.
    NotifyMsg(const NotifyMsg& other) : text_(other.text()), object_(other.object_) {}
    NotifyMsg& operator=(const NotifyMsg& other) {
        text_ = other.text();
        object_ = other.object_;
        rows_ = nullptr;
        return *this;
    }

    /// What it says, and the object that it shares.
    const LightweightString<char>& text() const {
        if (rows_ != nullptr && text_.empty()) {
            text_ = rows_->text();
        }
        return text_;
    }
    const Quor::Ptr<iObject>& object() const { return object_; }

    /// The numbers of the text where the message was made of them, else null.
    const RowNumbers* rows() const { return rows_; }

private:
    mutable LightweightString<char> text_;
    Quor::Ptr<iObject> object_;
    const RowNumbers* rows_ = nullptr;
};

/// Steps through the tokens of a message's text: runs of characters between
/// blanks. It keeps the text alive by itself.
///
///     for (NotifyMsgTokenIterator token(msg); token; ++token) use(*token);
class VEKDB_PUBLIC NotifyMsgTokenIterator {
public:
    /// Stands on the first token.
    explicit NotifyMsgTokenIterator(const NotifyMsg& message);

    /// Whether it stands on a token.
    explicit operator bool() const { return !token_.empty(); }

    /// The token; the null string behind the last one.
    LightweightString<char> operator*() const { return LightweightString<char>(token_); }

    /// The same without a string; ends with the iterator.
    std::string_view token() const { return token_; }

    /// Goes to the next token. Behind the last one it stays.
    NotifyMsgTokenIterator& operator++();

private:
    LightweightString<char> text_;
    std::string_view rest_;
    std::string_view token_;
};

/// Somebody who is told of notices. Shared: held by the notifier while it is
/// registered, and by a delivery that has begun.
template <class R, class M>
class VEKDB_PUBLIC iCallbackBase : public Quor::InternalRefCount {
public:
    virtual ~iCallbackBase() = default;

    /// What the callback returns has no meaning to the notifier.
    virtual R call(const M& message) = 0;

    /// The object behind the callback, where there is one.
    virtual const void* owner() const { return nullptr; }

    /// Whether this is a view's own handling of its source's notices, which
    /// cannot tell several deletions in one pass from as many single ones, and
    /// must be told also where a callback before it has thrown.
    virtual bool isViewHandler() const { return false; }
};

/// Calls a member function. It does not own the object: whoever registers it
/// removes the registration before the object goes.
template <class Obj, class M, class R>
class VEKDB_PUBLIC MethodCallback : public iCallbackBase<R, M> {
public:
    /// The member function: what it returns has no meaning.
    using Method = R (Obj::*)(const M&);

    /// The object is borrowed.
    MethodCallback(Obj* object, Method method) : object_(object), method_(method) {}

    /// Calls the function, and tells the object.
    R call(const M& message) override { return (object_->*method_)(message); }
    const void* owner() const override { return object_; }

private:
    Obj* object_;
    Method method_;
};

/// Identifies one registration among all that the process ever made.
class VEKDB_PUBLIC IdStamp {
public:
    /// Identifies nothing.
    IdStamp() = default;
    /// Of a number that `next` gave.
    explicit IdStamp(std::uint64_t number) : number_(number) {}

    /// A stamp that no other has.
    static IdStamp next();

    friend bool operator==(const IdStamp&, const IdStamp&) = default;

private:
    std::uint64_t number_ = 0;  // 0 identifies nothing
};

namespace Quor {

/// Holds a registration: with the last Ptr to its guard a registration ends. A
/// guard may outlive its notifier.
class VEKDB_PUBLIC Guard : public InternalRefCount {
public:
    virtual ~Guard() = default;
    /// The registration; lives as long as the guard.
    virtual const IdStamp& id() const = 0;
};

}  // namespace Quor

template <class M>
class Registrations;  // shared by a notifier and the guards of its registrations

/// Keeps who wants to be told of which type of notice, and tells them.
///
/// Delivery: callbacks are called one after the other in the order in which they
/// were registered. Who is to be called is settled when delivery begins; whoever
/// is deregistered before his turn is not called, whoever is registered meanwhile
/// is called from the next notice on. A callback may register, deregister (itself
/// too), issue further notices, and destroy the notifier, which ends the delivery.
/// No lock is held while a callback runs. An exception from a callback ends the
/// delivery for all but the views' own handlers, which must follow their source, and
/// goes on to the issuer.
template <class M>
class VEKDB_PUBLIC GenericNotifier {
public:
    /// Who can be told.
    using Callback = iCallbackBase<int, M>;

    /// Nobody is registered.
    GenericNotifier();
    GenericNotifier(const GenericNotifier&) = delete;
    GenericNotifier& operator=(const GenericNotifier&) = delete;
    virtual ~GenericNotifier();

    /// Registers a callback for a type, once more if it is registered already.
    /// The registration ends with the last Ptr to the guard, with
    /// deregisterNotification, and with the notifier. A null callback is not
    /// registered: the guard is then null.
    Quor::Ptr<Quor::Guard> registerNotification(const Quor::Ptr<Callback>& callback, int type);

    /// Ends a registration with this notifier; nothing happens for one that has
    /// ended, or that is another notifier's. The second form also lets go of the
    /// guard, and accepts null.
    void deregisterNotification(const IdStamp& id);
    void deregisterNotification(Quor::Ptr<Quor::Guard>& guard);

    /// Tells everybody who is registered for the type, and returns when all were told.
    void issueNotification(const M& message, int type);

    /// Whether a notice of this type would be heard by anybody.
    bool hasListeners(int type) const;

    /// Calls visit(const Callback&) for each registration of a type, in order. For
    /// looking only: it must not register or deregister.
    template <class Visit>
    void forEachListener(int type, Visit visit) const {
        const auto visitOne = [](const Callback& callback, void* context) {
            (*static_cast<Visit*>(context))(callback);
        };
        visitListeners(type, visitOne, &visit);
    }

private:
    using Visitor = void (*)(const Callback& callback, void* context);
    void visitListeners(int type, Visitor visit, void* context) const;

    Quor::Ptr<Registrations<M>> registrations_;
};

extern template class GenericNotifier<NotifyMsg>;

/// The notifier of tables and views. Its registration list has a lock of its own,
/// a CriticalSection.
class VEKDB_PUBLIC Notifier : public GenericNotifier<NotifyMsg> {
public:
    ~Notifier() override = default;
};
