#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <vekdb/host/cookie_containers.h>
#include <vekdb/host/keyed_hash.h>
#include <vekdb/host/text_util.h>
#include <vekdb/host/watchdog.h>
#include <vekdb/record.h>
#include "views/view_parts.h"

namespace {

constexpr char kIdentityColumn[] = "Cookie";
constexpr char kTagColumn[] = "Tag";

bool isFound(unsigned row) {
    return static_cast<int>(row) >= 0;
}

/// Finds the rows of many identities as `findFirst` finds each: by identity, else by the exact
/// text in the column. The texts are looked through once, not once for each identity missed.
class IdentityFinder {
public:
    explicit IdentityFinder(vekdb& table) : table_(table) {}

    unsigned find(const Cookie& identity) {
        const unsigned row = table_.getRowIndexByID(identity);
        return isFound(row) ? row : findText(identity.asString(false).view());
    }

private:
    unsigned findText(std::string_view text) {
        if (!read_) {
            readTexts();
            read_ = true;
        }
        const auto found = rowOfText_.find(text);
        return found != rowOfText_.end() ? found->second : ViewIndex::noRow;
    }

    void readTexts() {
        const unsigned column = table_.get_fieldnum(kIdentityColumn);
        const unsigned rows = isFound(column) ? table_.get_num_records() : 0;
        for (unsigned i = 0; i < rows; ++i) {
            if (const dbrecord* record = table_.get_record(i)) {
                rowOfText_.emplace(record->fieldView(column), i);
            }
        }
    }

    vekdb& table_;
    bool read_ = false;
    std::unordered_map<std::string_view, unsigned, Quor::KeyedHash> rowOfText_;
};

}  // namespace

int VDBViewRep::displayRecordsAt(int first, int n, int at) {
    if (source() == nullptr) {
        return 0;
    }
    if (n < 0) {
        return n;
    }
    index().insertRun(at, n, static_cast<unsigned>(first), index().roomForMore(at, n));
    return n;
}

int VDBViewRep::displayMatchAt(const char* field, const char* value, int at) {
    VDBBase* from = source();
    const unsigned row = from != nullptr ? from->findFirst(field, value, 0) : ViewIndex::noRow;
    return isFound(row) ? displayRecordsAt(static_cast<int>(row), 1, at) : 0;
}

int VDBViewRep::displayRecordsAt(const CookieSet& set, int at) {
    CookieVec list;
    const int members = static_cast<int>(set.size());
    for (int i = 0; i < members; ++i) {
        list.add(set[i]);
    }
    return displayRecordsAt(list, at);
}

int VDBViewRep::displayRecordsAt(const CookieVec& list, int at) {
    if (list.empty() || source() == nullptr) {
        return 0;
    }
    const LifeSupport alive;
    if (vekdb* bottom = plainTable()) {
        return showMatches(*bottom, list, at);
    }
    return showMatchesSingly(list, std::min(at, rowCount()));
}

int VDBViewRep::showMatchesSingly(const CookieVec& list, int at) {
    int shown = 0;
    for (const Cookie& identity : list) {
        shown += displayMatchAt(kIdentityColumn, identity.asString(false).c_str(), at + shown);
    }
    return shown;
}

// Nothing is called on the way that could change the table, so the rows can be found first and
// inserted together, as inserting them singly would.
int VDBViewRep::showMatches(vekdb& bottom, const CookieVec& list, int at) {
    IdentityFinder finder(bottom);
    std::vector<unsigned> found;
    for (const Cookie& identity : list) {
        const unsigned row = finder.find(identity);
        if (isFound(row)) {
            found.push_back(row);
        }
    }
    return showOneByOne(found.data(), static_cast<int>(found.size()), at);
}

int VDBViewRep::showOneByOne(const unsigned* sourceRows, int n, int at) {
    index().insertOneByOne(sourceRows, n, at);
    return n;
}

void VDBViewRep::displayTaggedRecordsAt(int at) {
    const VDBBase* from = source();
    if (from == nullptr) {
        return;
    }
    const int tagged = static_cast<int>(from->get_num_tags());
    const int rows = static_cast<int>(from->get_num_records());
    int place = index().openGap(at, tagged);
    const int end = place + tagged;
    for (int i = 0; i < rows && place < end; ++i) {
        if (from->get_tag(static_cast<unsigned>(i)) != 0) {
            index().setSourceRow(place++, static_cast<unsigned>(i));
        }
    }
}

void VDBViewRep::displayAllRecords() {
    if (source() == nullptr) {
        return;
    }
    const Pin pin(*this);
    ViewIndex::Room room = ViewIndex::roomForFirst(static_cast<int>(source()->get_num_records()));
    remove(0, rowCount());
    const VDBBase* from = pin.gone() ? nullptr : source();
    if (from != nullptr) {
        index().insertRun(0, static_cast<int>(from->get_num_records()), 0, std::move(room));
    }
}

void VDBViewRep::displayAllRecordsWithBaseTagStatus() {
    const Pin pin(*this);
    displayAllRecords();
    const VDBBase* from = pin.gone() ? nullptr : source();
    if (from == nullptr || !isFound(from->get_fieldnum(kTagColumn))) {
        return;
    }
    for (unsigned i = 0; i < get_num_records(); ++i) {
        set_tag(i, static_cast<int>(from->get_tag(i)));
    }
}

namespace {

int numberIn(const dbrecord* record, unsigned column) {
    return record == nullptr ? 0 : parseInt(record->fieldView(column));
}

}  // namespace

void VDBViewRep::setupViewTagsFromVekdbTagField() {
    const Pin pin(*this);
    displayAllRecords();
    const VDBBase* from = pin.gone() ? nullptr : source();
    const unsigned column = from != nullptr ? from->get_fieldnum(kTagColumn) : ViewIndex::noRow;
    if (!isFound(column)) {
        return;
    }
    // Where nobody overrides the reading of a value, it is read without making a string of it.
    const bool plain = plainTable() != nullptr;
    for (unsigned i = 0; i < get_num_records(); ++i) {
        set_tag(i, plain ? numberIn(from->get_record(i), column)
                         : parseInt(from->getField(i, column).view()));
    }
}

// A record counts as shown from the moment its row is chosen; no record is never shown.
int VDBViewRep::displayAllFromAt(VDBViewRep* other, int at) {
    const vekdb* shared = table();
    if (base() != nullptr || shared == nullptr || other == nullptr || other->base() != nullptr ||
        other->table() != shared) {
        return 0;
    }
    std::unordered_set<const dbrecord*> shown;
    for (int i = 0; i < rowCount(); ++i) {
        shown.insert((*this)[i]);
    }
    std::vector<unsigned> chosen;
    for (int i = 0; i < other->rowCount(); ++i) {
        const dbrecord* record = (*other)[i];
        if (record != nullptr && shown.count(record) > 0) {
            continue;
        }
        chosen.push_back(other->baseIndex(static_cast<unsigned>(i)));
        shown.insert(shared->get_record(chosen.back()));
    }
    return showOneByOne(chosen.data(), static_cast<int>(chosen.size()), at);
}
