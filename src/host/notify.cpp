#include <vekdb/host/notify.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <new>
#include <utility>
#include <vector>

struct NotifyMsgTypeDictionary::Names : std::vector<LightweightString<char>> {};

NotifyMsgTypeDictionary& NotifyMsgTypeDictionary::instance() {
    // Never destroyed: objects of static life may issue notices when they go.
    static Names& names = *new Names;
    static NotifyMsgTypeDictionary& dictionary = *new NotifyMsgTypeDictionary(names);
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
    // Never changed once it is in place: a delivery goes through the list that stood when it
    // began. Made of what still stands in the list before, which may be null.
    struct List : Quor::InternalRefCount {
        explicit List(const List* former) {
            if (former == nullptr) {
                return;
            }
            for (const Quor::Ptr<Entry>& entry : former->entries) {
                if (entry->stands) {
                    entries.push_back(entry);
                }
            }
        }
        List(const List&) = delete;
        List& operator=(const List&) = delete;

        std::vector<Quor::Ptr<Entry>> entries;
    };

    Quor::Ptr<Entry> add(const Quor::Ptr<Callback>& callback, int type) {
        const Quor::Ptr<Entry> entry(new Entry(callback, type));
        Quor::Ptr<List> former;  // let go when the lock is no longer held
        const CriticalSectionHold hold(lock_);
        Quor::Ptr<List> longer(new List(list_.get()));
        longer->entries.push_back(entry);
        former = list_;
        replace(longer);
        return entry;
    }

    bool remove(const IdStamp& id) {
        Quor::Ptr<List> former;
        const CriticalSectionHold hold(lock_);
        former = list_;
        if (!former) {
            return false;
        }
        for (const Quor::Ptr<Entry>& entry : former->entries) {
            if (entry->id == id) {
                entry->stands = false;
                leaveOutEnded();
                return true;
            }
        }
        return false;
    }

    void removeAll() {
        Quor::Ptr<List> former;
        const CriticalSectionHold hold(lock_);
        former = list_;
        replace(nullptr);
        for (std::size_t i = 0; former && i < former->entries.size(); ++i) {
            former->entries[i]->stands = false;
        }
    }

    // Null while nobody is registered.
    Quor::Ptr<List> list() const {
        if (!anybody_) {
            return nullptr;
        }
        const CriticalSectionHold hold(lock_);
        return list_;
    }

    bool hasListeners(int type) const {
        if (!anybody_) {
            return false;
        }
        const CriticalSectionHold hold(lock_);
        return list_ && std::any_of(list_->entries.begin(), list_->entries.end(),
                                    [type](const Quor::Ptr<Entry>& entry) {
                                        return entry->type == type && entry->stands;
                                    });
    }

private:
    void replace(const Quor::Ptr<List>& list) {
        list_ = list;
        anybody_ = static_cast<bool>(list);
    }

    // Where there is no memory for a shorter list, the one there is stays until the next change.
    void leaveOutEnded() {
        const auto stands = [](const Quor::Ptr<Entry>& entry) { return entry->stands.load(); };
        if (std::none_of(list_->entries.begin(), list_->entries.end(), stands)) {
            replace(nullptr);
            return;
        }
        try {
            replace(Quor::Ptr<List>(new List(list_.get())));
        } catch (const std::bad_alloc&) {
            return;
        }
    }

    mutable CriticalSection lock_;
    Quor::Ptr<List> list_;
    std::atomic<bool> anybody_ = false;
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
        // The callback may take with it what the guard stands in, so that is left first.
        const Quor::Ptr<Quor::Guard> held = std::move(guard);
        registrations_->remove(held->id());
    }
}

template <class M>
void GenericNotifier<M>::issueNotification(const M& message, int type) {
    // The notifier may be gone after any of the calls; the list is not.
    const auto listed = registrations_->list();
    if (!listed) {
        return;
    }
    std::exception_ptr failure;
    for (const auto& entry : listed->entries) {
        if (entry->type != type || !entry->stands) {
            continue;
        }
        if (failure != nullptr && !entry->callback->isViewHandler()) {
            continue;
        }
        try {
            entry->callback->call(message);
        } catch (...) {
            failure = failure != nullptr ? failure : std::current_exception();
        }
    }
    if (failure != nullptr) {
        std::rethrow_exception(failure);
    }
}

template <class M>
bool GenericNotifier<M>::hasListeners(int type) const {
    return registrations_->hasListeners(type);
}

template <class M>
void GenericNotifier<M>::visitListeners(int type, Visitor visit, void* context) const {
    const auto listed = registrations_->list();
    if (!listed) {
        return;
    }
    for (const auto& entry : listed->entries) {
        if (entry->type == type && entry->stands) {
            visit(*entry->callback, context);
        }
    }
}

template class GenericNotifier<NotifyMsg>;
