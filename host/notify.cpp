#include "host/notify.h"

#include <atomic>
#include <cstddef>
#include <utility>
#include <vector>

NotifyMsgTypeDictionary& NotifyMsgTypeDictionary::instance() {
    // Never destroyed: objects of static life may issue notices when they go.
    static NotifyMsgTypeDictionary& dictionary = *new NotifyMsgTypeDictionary;
    return dictionary;
}

int NotifyMsgTypeDictionary::intern(const LightweightString<char>& name) {
    const CriticalSectionHold hold(lock_);
    for (std::size_t i = 0; i < names_.size(); ++i) {
        if (names_[i] == name) {
            return static_cast<int>(i) + 1;
        }
    }
    names_.push_back(name);
    return static_cast<int>(names_.size());
}

LightweightString<char> NotifyMsgTypeDictionary::name(int type) const {
    const CriticalSectionHold hold(lock_);
    const std::size_t i = static_cast<std::size_t>(type) - 1;
    return type > 0 && i < names_.size() ? names_[i] : LightweightString<char>();
}

NotifyMsgTokenIterator::NotifyMsgTokenIterator(const NotifyMsg& message)
    : text_(message.text()), rest_(text_.view()) {
    ++*this;
}

NotifyMsgTokenIterator& NotifyMsgTokenIterator::operator++() {
    const std::size_t start = rest_.find_first_not_of(' ');
    rest_.remove_prefix(start == std::string_view::npos ? rest_.size() : start);
    token_ = rest_.substr(0, rest_.find(' '));
    rest_.remove_prefix(token_.size());
    return *this;
}

IdStamp IdStamp::next() {
    static constinit std::atomic<std::uint64_t> last{0};
    return IdStamp(++last);
}

// The registrations of one notifier, in order. Guards share them, so that a
// guard finds out whether its registration still stands also when the notifier
// has gone.
template <class M>
class Registrations : public Quor::InternalRefCount {
public:
    using Callback = iCallbackBase<int, M>;

    // One registration. A delivery holds it through its own turn.
    struct Entry : Quor::InternalRefCount {
        Entry(const Quor::Ptr<Callback>& toCall, int ofType) : callback(toCall), type(ofType) {}

        const Quor::Ptr<Callback> callback;
        const int type;
        const IdStamp id = IdStamp::next();
        std::atomic<bool> stands = true;
    };
    using Entries = std::vector<Quor::Ptr<Entry>>;

    Quor::Ptr<Entry> add(const Quor::Ptr<Callback>& callback, int type) {
        const Quor::Ptr<Entry> entry(new Entry(callback, type));
        const CriticalSectionHold hold(lock_);
        entries_.push_back(entry);
        return entry;
    }

    bool remove(const IdStamp& id) {
        Quor::Ptr<Entry> removed;  // let go when the lock is no longer held
        const CriticalSectionHold hold(lock_);
        for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
            if ((*entry)->id == id) {
                (*entry)->stands = false;
                removed.swap(*entry);
                entries_.erase(entry);
                return true;
            }
        }
        return false;
    }

    void removeAll() {
        Entries removed;
        const CriticalSectionHold hold(lock_);
        removed.swap(entries_);
        for (const Quor::Ptr<Entry>& entry : removed) {
            entry->stands = false;
        }
    }

    Entries listeners(int type) const {
        Entries found;
        const CriticalSectionHold hold(lock_);
        for (const Quor::Ptr<Entry>& entry : entries_) {
            if (entry->type == type) {
                found.push_back(entry);
            }
        }
        return found;
    }

    bool hasListeners(int type) const {
        const CriticalSectionHold hold(lock_);
        for (const Quor::Ptr<Entry>& entry : entries_) {
            if (entry->type == type) {
                return true;
            }
        }
        return false;
    }

private:
    mutable CriticalSection lock_;
    Entries entries_;
};

namespace {

template <class M>
class RegistrationGuard final : public Quor::Guard {
public:
    RegistrationGuard(const Quor::Ptr<Registrations<M>>& registrations, const IdStamp& id)
        : registrations_(registrations), id_(id) {}
    RegistrationGuard(const RegistrationGuard&) = delete;
    RegistrationGuard& operator=(const RegistrationGuard&) = delete;
    ~RegistrationGuard() override { registrations_->remove(id_); }

    const IdStamp& id() const override { return id_; }
    bool isOf(const Quor::Ptr<Registrations<M>>& registrations) const {
        return registrations_ == registrations;
    }

private:
    const Quor::Ptr<Registrations<M>> registrations_;
    const IdStamp id_;
};

}  // namespace

template <class M>
GenericNotifier<M>::GenericNotifier() : registrations_(new Registrations<M>) {}

template <class M>
GenericNotifier<M>::~GenericNotifier() {
    registrations_->removeAll();
}

template <class M>
Quor::Ptr<Quor::Guard> GenericNotifier<M>::registerNotification(const Quor::Ptr<Callback>& callback,
                                                                int type) {
    if (!callback) {
        return nullptr;
    }
    const auto entry = registrations_->add(callback, type);
    try {
        return Quor::Ptr<Quor::Guard>(new RegistrationGuard<M>(registrations_, entry->id));
    } catch (...) {
        registrations_->remove(entry->id);
        throw;
    }
}

template <class M>
void GenericNotifier<M>::deregisterNotification(const IdStamp& id) {
    registrations_->remove(id);
}

template <class M>
void GenericNotifier<M>::deregisterNotification(Quor::Ptr<Quor::Guard>& guard) {
    const auto* own = dynamic_cast<const RegistrationGuard<M>*>(guard.get());
    if (own != nullptr && own->isOf(registrations_)) {
        registrations_->remove(guard->id());
        guard.reset();
    }
}

template <class M>
void GenericNotifier<M>::issueNotification(const M& message, int type) {
    // The notifier may be gone after any of the calls.
    for (const auto& entry : registrations_->listeners(type)) {
        if (entry->stands) {
            entry->callback->call(message);
        }
    }
}

template <class M>
bool GenericNotifier<M>::hasListeners(int type) const {
    return registrations_->hasListeners(type);
}

template <class M>
void GenericNotifier<M>::visitListeners(int type, Visitor visit, void* context) const {
    for (const auto& entry : registrations_->listeners(type)) {
        visit(*entry->callback, context);
    }
}

template class GenericNotifier<NotifyMsg>;
