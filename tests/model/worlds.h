#pragma once

#include <memory>
#include <string>
#include <vector>

#include <vekdb/host/cookie_containers.h>
#include <vekdb/host/notify.h>
#include <vekdb/table.h>
#include <vekdb/views/view.h>
#include <vekdb/views/view_rep.h>
#include "model/account.h"
#include "model/plain_model.h"

/// The library and the plain model, each as a world with a table, views that are held one by
/// one, and listeners that write down what they hear. Both answer to the same names.

/// What a listener can read of the world while it is told.
template <class World>
void sight(World& world, Account& account);

class LibraryWorld {
public:
    LibraryWorld(const std::vector<std::pair<std::string, unsigned>>& columns, bool spelled);
    ~LibraryWorld();

    vekdb* table() { return table_.get(); }
    unsigned viewCount() const { return static_cast<unsigned>(views_.size()); }
    VDBViewRep& view(unsigned i) { return *views_[i]; }
    /// Listeners write down what they hear and see here.
    Account& account() { return account_; }

    Cookie cookie(const char* text) const { return Cookie(text, false); }
    CookieVec cookies(const std::vector<std::string>& texts) const;
    CookieSet cookieSet(const std::vector<std::string>& texts) const;
    int* sortList(const std::vector<int>& fields);
    void setQuery(VDBBase& source, const std::vector<std::string>& texts);
    void issue(Notifier& notifier, const char* type, const char* text);
    unsigned addField(const char* name, unsigned type);
    void setType(unsigned field, unsigned type);

    void newView();
    void newStackedView(unsigned on);
    void dropView(unsigned i) { views_.erase(views_.begin() + i); }
    void copyView(unsigned i) { keep(view(i).copy()); }
    void tagSubview(unsigned i) { keep(view(i).newTagSubview()); }
    void listenToTable(bool looking);
    void listenToView(unsigned i, bool looking);
    void stopListening(unsigned i);
    unsigned listenerCount() const { return static_cast<unsigned>(ears_.size()); }
    void tableGoes() { table_.reset(); }

    /// Runs `use` on a copy of the table, the whole of it or its columns only.
    template <class Use>
    void withCopyOfTable(int records, Use use) {
        vekdb copy(*table_, records);
        use(copy);
    }
    template <class Use>
    void withCopyWithNewBase(unsigned i, Use use) {
        VDBView copy = views_[i].copyWithNewBaseView();
        std::unique_ptr<vekdb> table(copy ? copy->table() : nullptr);
        if (copy) {
            use(*copy, *table);
        }
        copy = VDBView();
    }
    template <class Use>
    void withConverted(unsigned i, Use use) {
        std::unique_ptr<vekdb> table(Convert_VDBView_to_vekdb(views_[i]));
        if (table) {
            use(*table);
        }
    }

private:
    class Ear;
    void keep(VDBViewRep* view);
    void listen(Notifier& notifier, const std::string& issuer, bool looking);

    std::unique_ptr<vekdb> table_;
    std::vector<VDBView> views_;
    std::vector<std::unique_ptr<Ear>> ears_;
    std::vector<std::unique_ptr<int[]>> sortLists_;
    Account account_;
};

class ModelWorld {
public:
    ModelWorld(const std::vector<std::pair<std::string, unsigned>>& columns, bool spelled);

    plain::Table* table() { return table_.get(); }
    unsigned viewCount() const { return static_cast<unsigned>(views_.size()); }
    plain::View& view(unsigned i) { return *views_[i]; }
    /// Listeners write down what they hear and see here.
    Account& account() { return account_; }

    std::string cookie(const char* text) const { return plain::cookieText(text); }
    std::vector<std::string> cookies(const std::vector<std::string>& texts) const { return texts; }
    std::vector<std::string> cookieSet(const std::vector<std::string>& texts) const;
    int* sortList(const std::vector<int>& fields);
    void setQuery(plain::Source& source, const std::vector<std::string>& texts);
    void issue(plain::Notifier& notifier, const char* type, const char* text);
    unsigned addField(const char* name, unsigned type) { return table_->addField(name, type); }
    void setType(unsigned field, unsigned type) { table_->set_fieldtype(field, type); }

    void newView() { keep(make(table_.get())); }
    void newStackedView(unsigned on);
    void dropView(unsigned i);
    void copyView(unsigned i);
    void tagSubview(unsigned i);
    void listenToTable(bool looking);
    void listenToView(unsigned i, bool looking);
    void stopListening(unsigned i);
    unsigned listenerCount() const { return static_cast<unsigned>(ears_.size()); }
    void tableGoes();

    template <class Use>
    void withCopyOfTable(int records, Use use) {
        plain::Table copy(*table_, records);
        use(copy);
    }
    template <class Use>
    void withCopyWithNewBase(unsigned i, Use use) {
        if (view(i).table() == nullptr) {
            return;
        }
        plain::Table table(*view(i).table(), 1);
        plain::View copy(&table);
        view(i).copyOverNewTableInto(copy);
        copy.hold();
        use(copy, table);
        copy.release();
    }
    template <class Use>
    void withConverted(unsigned i, Use use) {
        if (view(i).table() == nullptr) {
            return;
        }
        plain::Table table(*view(i).table(), 0);
        view(i).convertInto(table);
        use(table);
    }

private:
    struct Ear {
        plain::Notifier* notifier;
        plain::Notifier::Guard guards[2];
    };
    plain::View* make(plain::Table* table);
    void keep(plain::View* view);
    void listen(plain::Notifier& notifier, const std::string& issuer, bool looking);

    std::unique_ptr<plain::Table> table_;
    std::vector<std::unique_ptr<plain::View>> made_;
    std::vector<plain::View*> views_;
    std::vector<Ear> ears_;
    std::vector<std::unique_ptr<int[]>> sortLists_;
    Account account_;
};

// --- one way to read either

inline std::string plainText(const std::string& text) {
    return text;
}
inline std::string plainText(const char* text) {
    return text != nullptr ? text : "";
}
inline std::string plainText(const LightweightString<char>& text) {
    return text.c_str();
}

inline unsigned indexCapacity(const VDBViewRep& view) {
    return view.indexCapacity();
}
inline unsigned indexCapacity(const plain::View& view) {
    return static_cast<unsigned>(view.slots().size());
}
inline unsigned slotTag(const VDBViewRep& view, unsigned i) {
    return view.slotTag(i);
}
inline unsigned slotTag(const plain::View& view, unsigned i) {
    return view.slots()[i].tag;
}
inline unsigned sourceRow(const VDBViewRep& view, unsigned i) {
    return view.sourceRow(static_cast<int>(i));
}
inline unsigned sourceRow(const plain::View& view, unsigned i) {
    return view.slots()[i].row;
}
inline unsigned holders(const VDBViewRep& view) {
    return view.handleCount();
}
inline unsigned holders(const plain::View& view) {
    return view.holders();
}

inline void describe(const dbrecord& record, Account& account) {
    account << " tag " << record.get_tag() << (record.get_changed() ? " changed" : "");
    for (unsigned i = 0; i < record.get_num_fields(); ++i) {
        (account.mark(" [") << record.fieldView(i)).mark("]");
    }
}
inline void describe(const plain::Record& record, Account& account) {
    account << " tag " << record.tag << (record.changed ? " changed" : "");
    for (const std::string& value : record.values) {
        (account.mark(" [") << value).mark("]");
    }
}

template <class World>
void sight(World& world, Account& account) {
    for (unsigned i = 0; i < world.viewCount(); ++i) {
        auto& view = world.view(i);
        account << " |";
        for (unsigned row = 0; row < view.get_num_records(); ++row) {
            account << " " << view.baseIndex(row) << plainText(view.getField(row, 0))
                    << (view.get_tag(row) != 0 ? "*" : "")
                    << (view.get_record(row) != nullptr ? "" : "-");
        }
    }
    if (world.table() != nullptr) {
        account << " T" << world.table()->get_num_records()
                << (world.table()->get_modified() ? "m" : "");
    }
}
