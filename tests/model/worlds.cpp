#include "model/worlds.h"

#include <algorithm>

#include <vekdb/host/wrapped_data.h>

namespace {

std::vector<DBFieldDesc> descriptors(const std::vector<std::pair<std::string, unsigned>>& columns) {
    std::vector<DBFieldDesc> fields;
    for (const auto& [name, type] : columns) {
        fields.push_back({name.c_str(), static_cast<DBFieldTypes::eType>(type)});
    }
    return fields;
}

std::unique_ptr<int[]> endedList(const std::vector<int>& fields) {
    auto list = std::make_unique<int[]>(fields.size() + 1);
    std::copy(fields.begin(), fields.end(), list.get());
    list[fields.size()] = -1;
    return list;
}

void writeDown(const std::string& issuer, const std::string& type, const std::string& text,
               const std::vector<std::string>& cookies, Account& account) {
    account << "\n" << issuer << " " << type << " \"" << text << "\"";
    for (const std::string& cookie : cookies) {
        account << " " << cookie;
    }
}

std::vector<std::string> cookieTexts(const NotifyMsg& message) {
    std::vector<std::string> texts;
    if (const auto* data = dynamic_cast<WrappedData<CookieVec>*>(message.object().get())) {
        for (const Cookie& cookie : data->data()) {
            texts.emplace_back(cookie.asString(false).c_str());
        }
    }
    return texts;
}

const char* const types[] = {"recordsDeleted", "recordsChanged"};

}  // namespace

// --- the library

class LibraryWorld::Ear {
public:
    Ear(LibraryWorld& world, Notifier& notifier, std::string issuer, bool looking)
        : world_(world), issuer_(std::move(issuer)), looking_(looking) {
        for (int i = 0; i < 2; ++i) {
            Quor::Ptr<iCallbackBase<int, NotifyMsg>> callback(new Voice(*this, types[i]));
            const int type = NotifyMsgTypeDictionary::instance().intern(types[i]);
            guards_[i] = notifier.registerNotification(callback, type);
        }
    }

private:
    class Voice : public iCallbackBase<int, NotifyMsg> {
    public:
        Voice(Ear& ear, const char* type) : ear_(ear), type_(type) {}
        int call(const NotifyMsg& message) override {
            ear_.hear(type_, message);
            return 0;
        }

    private:
        Ear& ear_;
        const char* type_;
    };

    void hear(const char* type, const NotifyMsg& message) {
        writeDown(issuer_, type, message.text().c_str(), cookieTexts(message), world_.account_);
        if (looking_) {
            sight(world_, world_.account_);
        }
    }

    LibraryWorld& world_;
    std::string issuer_;
    bool looking_;
    Quor::Ptr<Quor::Guard> guards_[2];
};

LibraryWorld::LibraryWorld(const std::vector<std::pair<std::string, unsigned>>& columns,
                           bool spelled)
    : table_(std::make_unique<vekdb>(descriptors(columns))), account_(spelled) {}

LibraryWorld::~LibraryWorld() = default;

CookieVec LibraryWorld::cookies(const std::vector<std::string>& texts) const {
    CookieVec list;
    for (const std::string& text : texts) {
        list.add(cookie(text.c_str()));
    }
    return list;
}

CookieSet LibraryWorld::cookieSet(const std::vector<std::string>& texts) const {
    return CookieSet(cookies(texts));
}

int* LibraryWorld::sortList(const std::vector<int>& fields) {
    sortLists_.push_back(endedList(fields));
    return sortLists_.back().get();
}

void LibraryWorld::setQuery(VDBBase& source, const std::vector<std::string>& texts) {
    dbrecord query(static_cast<unsigned short>(texts.size()));
    for (unsigned i = 0; i < texts.size(); ++i) {
        query.set_field(static_cast<int>(i), texts[i].c_str(), false);
    }
    source.set_query(&query);
}

void LibraryWorld::issue(Notifier& notifier, const char* type, const char* text) {
    const NotifyMsg message(LightweightString<char>(text), nullptr);
    notifier.issueNotification(message, NotifyMsgTypeDictionary::instance().intern(type));
}

unsigned LibraryWorld::addField(const char* name, unsigned type) {
    return table_->addField({name, static_cast<DBFieldTypes::eType>(type)});
}

void LibraryWorld::setType(unsigned field, unsigned type) {
    table_->set_fieldtype(field, static_cast<DBFieldTypes::eType>(type));
}

void LibraryWorld::keep(VDBViewRep* view) {
    if (view != nullptr) {
        views_.push_back(VDBView(view));
    }
}

void LibraryWorld::newView() {
    views_.push_back(VDBView(table_.get()));
}

void LibraryWorld::newStackedView(unsigned on) {
    VDBView fresh(view(on).table());
    fresh->baseView(views_[on].get());
    views_.push_back(fresh);
}

void LibraryWorld::listen(Notifier& notifier, const std::string& issuer, bool looking) {
    ears_.push_back(std::make_unique<Ear>(*this, notifier, issuer, looking));
}

void LibraryWorld::listenToTable(bool looking) {
    listen(*table_, "T", looking);
}

void LibraryWorld::listenToView(unsigned i, bool looking) {
    listen(view(i), std::string("V").append(std::to_string(i)), looking);
}

void LibraryWorld::stopListening(unsigned i) {
    ears_.erase(ears_.begin() + i);
}

// --- the model

ModelWorld::ModelWorld(const std::vector<std::pair<std::string, unsigned>>& columns, bool spelled)
    : table_(std::make_unique<plain::Table>(columns)), account_(spelled) {}

std::vector<std::string> ModelWorld::cookieSet(const std::vector<std::string>& texts) const {
    std::vector<std::string> sorted;
    for (const std::string& text : texts) {
        sorted.push_back(plain::cookieText(text));
    }
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    return sorted;
}

int* ModelWorld::sortList(const std::vector<int>& fields) {
    sortLists_.push_back(endedList(fields));
    return sortLists_.back().get();
}

void ModelWorld::setQuery(plain::Source& source, const std::vector<std::string>& texts) {
    source.set_query(texts);
}

void ModelWorld::issue(plain::Notifier& notifier, const char* type, const char* text) {
    notifier.issue({type, text, {}});
}

plain::View* ModelWorld::make(plain::Table* table) {
    made_.push_back(std::make_unique<plain::View>(table));
    return made_.back().get();
}

void ModelWorld::keep(plain::View* view) {
    view->hold();
    views_.push_back(view);
}

void ModelWorld::newStackedView(unsigned on) {
    plain::View* fresh = make(view(on).table());
    keep(fresh);
    fresh->baseView(&view(on));
}

void ModelWorld::dropView(unsigned i) {
    plain::View* dropped = views_[i];
    views_.erase(views_.begin() + i);
    dropped->release();
}

void ModelWorld::copyView(unsigned i) {
    if (view(i).table() == nullptr) {
        return;
    }
    plain::View* fresh = make(view(i).table());
    view(i).copyInto(*fresh);
    keep(fresh);
}

void ModelWorld::tagSubview(unsigned i) {
    if (view(i).table() == nullptr) {
        return;
    }
    plain::View* fresh = make(view(i).table());
    view(i).tagSubviewInto(*fresh);
    keep(fresh);
}

void ModelWorld::listen(plain::Notifier& notifier, const std::string& issuer, bool looking) {
    Ear ear{&notifier, {}};
    for (int i = 0; i < 2; ++i) {
        ear.guards[i] = notifier.listen(types[i], [=, this](const plain::Notice& notice) {
            writeDown(issuer, notice.type, notice.text, notice.cookies, account_);
            if (looking) {
                sight(*this, account_);
            }
        });
    }
    ears_.push_back(ear);
}

void ModelWorld::listenToTable(bool looking) {
    listen(*table_, "T", looking);
}

void ModelWorld::listenToView(unsigned i, bool looking) {
    listen(view(i), std::string("V").append(std::to_string(i)), looking);
}

void ModelWorld::stopListening(unsigned i) {
    for (plain::Notifier::Guard& guard : ears_[i].guards) {
        if (ears_[i].notifier != nullptr) {
            ears_[i].notifier->leave(guard);
        }
    }
    ears_.erase(ears_.begin() + i);
}

void ModelWorld::tableGoes() {
    for (const auto& view : made_) {
        view->forgetTable();
    }
    for (Ear& ear : ears_) {
        if (ear.notifier == table_.get()) {
            ear.notifier = nullptr;
        }
    }
    table_.reset();
}
