#include "model/plain_model.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace plain {

namespace {

bool blankCharacter(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool digit(char c) {
    return c >= '0' && c <= '9';
}

std::string lower(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    }
    return text;
}

std::string leftTrimmed(const std::string& text) {
    std::size_t start = 0;
    while (start < text.size() && blankCharacter(text[start])) {
        ++start;
    }
    return text.substr(start);
}

bool allBlank(const std::string& text) {
    return leftTrimmed(text).empty();
}

int sign(int n) {
    return (n > 0) - (n < 0);
}

int caseless(const std::string& a, const std::string& b) {
    const std::string x = lower(a);
    const std::string y = lower(b);
    return sign(x.compare(y));
}

std::string from(const std::string& text, std::size_t position) {
    return position < text.size() ? text.substr(position) : std::string();
}

std::string suffix(const std::string& text, std::size_t length) {
    return length <= text.size() ? text.substr(text.size() - length) : std::string();
}

std::string digitRun(const std::string& text, std::size_t& position) {
    std::string run;
    for (; position < text.size() && digit(text[position]); ++position) {
        if (text[position] != '0' || !run.empty()) {
            run += text[position];
        }
    }
    return run;
}

std::string hexOf(const std::string& text) {
    std::string hex = lower(leftTrimmed(text));
    while (!hex.empty() && blankCharacter(hex.back())) {
        hex.pop_back();
    }
    return hex;
}

const char* const labelPairs[][2] = {
    {"Start time", "End time"},         {"snd start", "snd end"},
    {"start 24P code", "end 24P code"}, {"start keycode", "end keycode"},
    {"start camcode", "end camcode"},   {"start inkcode", "end inkcode"},
};

std::string withoutAmpersands(std::string name) {
    std::erase(name, '&');
    return name;
}

// What the tests store in a column of compact timecodes is either that or no timecode at all.
std::string punctuated(const std::string& code) {
    const bool drop = code.size() == 9 && code[8] == ';';
    const bool digits = std::all_of(code.begin(), code.begin() + std::min<long>(8, code.size()),
                                    [](char c) { return digit(c); });
    if (!digits || code.size() < 8 || (code.size() > 8 && !drop)) {
        return code;
    }
    return code.substr(0, 2) + ":" + code.substr(2, 2) + ":" + code.substr(4, 2) +
           (drop ? ";" : ":") + code.substr(6, 2);
}

std::string dateText(const std::string& seconds) {
    const std::time_t time =
        !seconds.empty() && std::all_of(seconds.begin(), seconds.end(), digit)
            ? static_cast<std::time_t>(std::strtoul(seconds.c_str(), nullptr, 10))
            : 0;
    return std::ctime(&time);
}

std::string searchable(const std::string& value, unsigned type) {
    return type == 'T' ? punctuated(value) : type == 'M' ? dateText(value) : value;
}

std::string oneSeparator(std::string text) {
    for (char& c : text) {
        c = c == ';' || c == '.' || c == ',' ? ':' : c;
    }
    return text;
}

}  // namespace

bool Record::is_blank() const {
    return std::all_of(values.begin(), values.end(),
                       [](const std::string& value) { return value.empty(); });
}

Notifier::Guard Notifier::listen(const std::string& type, Listener listener) {
    Guard guard = std::make_shared<Listener>(std::move(listener));
    listeners_.emplace_back(type, guard);
    return guard;
}

void Notifier::leave(Guard& guard) {
    std::erase_if(listeners_, [&](const auto& entry) { return entry.second == guard; });
    if (guard) {
        *guard = nullptr;
    }
    guard = nullptr;
}

void Notifier::issue(const Notice& notice) {
    const auto present = listeners_;
    for (const auto& [type, listener] : present) {
        if (type == notice.type && *listener) {
            (*listener)(notice);
        }
    }
}

int peopleOrder(const std::string& a, const std::string& b) {
    std::size_t i = 0;
    std::size_t j = 0;
    const std::string x = lower(a);
    const std::string y = lower(b);
    while (i < x.size() && j < y.size()) {
        if (digit(x[i]) && digit(y[j])) {
            const std::string m = digitRun(x, i);
            const std::string n = digitRun(y, j);
            if (m != n) {
                return m.size() != n.size() ? (m.size() < n.size() ? -1 : 1) : sign(m.compare(n));
            }
        } else if (x[i] != y[j]) {
            return static_cast<unsigned char>(x[i]) < static_cast<unsigned char>(y[j]) ? -1 : 1;
        } else {
            ++i;
            ++j;
        }
    }
    if (i < x.size() || j < y.size()) {
        return i < x.size() ? 1 : -1;
    }
    return caseless(a, b);
}

std::string cookieText(const std::string& text) {
    const std::string hex = hexOf(text);
    const bool good = hex.size() == 38 && hex.find_first_not_of("0123456789abcdef") == hex.npos;
    return good ? hex : std::string(36, '0') + "49";
}

bool isSpecialLabel(const std::string& name) {
    for (const auto& pair : labelPairs) {
        if (name == pair[0] || name == pair[1]) {
            return true;
        }
    }
    return false;
}

bool textMatches(const std::string& value, const std::string& query, unsigned type) {
    if (allBlank(query)) {
        return true;
    }
    std::string where = lower(searchable(value, type));
    std::string what = lower(query);
    if (type == 't' || type == 'T') {
        where = oneSeparator(where);
        what = oneSeparator(what);
    }
    return where.find(what) != where.npos;
}

int SortOrder::ascending(const Record& a, const Record& b) const {
    if (a.is_blank() || b.is_blank()) {
        return int(a.is_blank()) - int(b.is_blank());
    }
    for (int field : fields) {
        const std::string x = leftTrimmed(a.value(static_cast<unsigned>(field)));
        const std::string y = leftTrimmed(b.value(static_cast<unsigned>(field)));
        if (x.empty() && y.empty()) {
            return 0;
        }
        if (x.empty() || y.empty()) {
            return x.empty() ? 1 : -1;
        }
        int order = 0;
        if (field == timecodeField) {
            order = caseless(x.substr(0, 8), y.substr(0, 8));
            order = order != 0 ? order : caseless(from(x, 9), from(y, 9));
        } else if (offset > 0 || forceNormal) {
            const auto skipped = static_cast<std::size_t>(std::max(offset, 0));
            order = caseless(from(x, skipped), from(y, skipped));
        } else if (offset < 0) {
            const auto length = static_cast<std::size_t>(-static_cast<long>(offset));
            order = caseless(suffix(x, length), suffix(y, length));
        } else {
            order = peopleOrder(x, y);
        }
        if (order != 0) {
            return order;
        }
    }
    return 0;
}

int SortOrder::descending(const Record& a, const Record& b) const {
    for (int field : fields) {
        const int order =
            caseless(a.value(static_cast<unsigned>(field)), b.value(static_cast<unsigned>(field)));
        if (order != 0) {
            return -order;
        }
    }
    return 0;
}

Table::Table(const std::vector<std::pair<std::string, unsigned>>& columns)
    : names_(columns.size()), types_(columns.size()) {
    for (unsigned i = 0; i < columns.size(); ++i) {
        set_fieldname(i, columns[i].first.c_str());
        set_fieldtype(i, columns[i].second);
    }
    post_init();
}

Table::Table(const Table& source, int withRecords)
    : names_(source.names_), types_(source.types_), nameIndex_(source.nameIndex_) {
    for (const auto& [name, value] : source.params_) {
        if (add_param(name.c_str(), value.c_str()) == nothing) {
            add_param(name.c_str(), value.c_str());
        }
    }
    post_init();
    for (unsigned row = 0; withRecords != 0 && row < source.get_num_records(); ++row) {
        while (rows_.size() >= capacity_) {
            grow(capacity_ + 1);
        }
        rows_.push_back(newRecord(0));
        rows_.back()->values = source.get_record(row)->values;
        rows_.back()->contained = false;
    }
}

void Table::post_init() {
    capacity_ = 500;
    tagged_.assign(capacity_, nullptr);
    set_sortfield(0);
    set_sort_offset(0);
    for (const std::string& name : names_) {
        special_.push_back(isSpecialLabel(name));
    }
}

void Table::grow(std::size_t rows) {
    while (capacity_ < rows) {
        capacity_ += 500;
    }
    tagged_.resize(capacity_);
}

std::unique_ptr<Record> Table::newRecord(std::size_t count) const {
    return std::make_unique<Record>(count);
}

unsigned Table::get_num_records() const {
    return tagsOnly_ != 0 ? taggedCount_ : static_cast<unsigned>(rows_.size());
}

Record* Table::get_record(unsigned row) const {
    if (row >= get_num_records()) {
        return nullptr;
    }
    return tagsOnly_ != 0 ? tagged_[row] : rows_[row].get();
}

unsigned Table::get_new_row(unsigned raw) const {
    if (tagsOnly_ == 0) {
        return raw;
    }
    for (unsigned i = 0; i < taggedCount_ && raw < rows_.size(); ++i) {
        if (tagged_[i] == rows_[raw].get()) {
            return i;
        }
    }
    return nothing;
}

unsigned Table::get_raw_row(unsigned shown) const {
    if (tagsOnly_ == 0) {
        return shown;
    }
    if (shown > taggedCount_ || rows_.empty() || shown >= capacity_) {
        return nothing;
    }
    for (unsigned raw = 0; raw < rows_.size(); ++raw) {
        if (rows_[raw].get() == tagged_[shown]) {
            return raw;
        }
    }
    return nothing;
}

unsigned Table::add_records(int n) {
    if (tagsOnly_ != 0) {
        return nothing;
    }
    const auto first = static_cast<unsigned>(rows_.size());
    for (int i = 0; i < n; ++i) {
        grow(rows_.size() + 1);
        rows_.push_back(newRecord(names_.size()));
    }
    return first;
}

void Table::insert_records(unsigned at, int n) {
    if (tagsOnly_ != 0) {
        return;
    }
    const std::size_t place = std::min<std::size_t>(at, rows_.size());
    for (int i = 0; i < n; ++i) {
        rows_.insert(rows_.begin() + static_cast<long>(place), newRecord(names_.size()));
    }
    grow(rows_.size());
    rowByIdentity_.clear();
}

void Table::delete_records(unsigned first, int n) {
    if (first >= rows_.size() || tagsOnly_ != 0) {
        return;
    }
    const auto count = static_cast<unsigned>(
        std::min<std::size_t>(static_cast<std::size_t>(std::max(n, 0)), rows_.size() - first));
    std::string text;
    for (unsigned row = first; row < first + count; ++row) {
        text += std::to_string(row) + " ";
        // Nobody may find a row that is gone.
        std::replace(tagged_.begin(), tagged_.end(), rows_[row].get(),
                     static_cast<Record*>(nullptr));
    }
    rows_.erase(rows_.begin() + first, rows_.begin() + first + count);
    rowByIdentity_.clear();
    if (count == 0) {
        return;
    }
    issue({"recordsDeleted", text, {}});
    modified_ = true;
}

unsigned Table::delete_tagged_records() {
    if (tagsOnly_ != 0) {
        return nothing;
    }
    unsigned total = 0;
    for (unsigned row = 0; row < rows_.size(); ++row) {
        unsigned length = 0;
        while (row + length < rows_.size() && get_tag(row + length) == 1) {
            ++length;
        }
        if (length > 0) {
            delete_records(row, static_cast<int>(length));
            total += length;
        }
    }
    return total;
}

void Table::assign(Record& target, const Record& source) {
    target.values.resize(source.values.size());
    for (unsigned i = 0; i < source.values.size(); ++i) {
        store(target, i, leftTrimmed(source.values[i]));
    }
}

void Table::copy_record(unsigned row, Table* source, unsigned sourceRow) {
    const Record* from = source->get_record(sourceRow);
    Record* target = get_record(row);
    if (from != nullptr && target != nullptr) {
        assign(*target, Record(*from));
    }
}

void Table::copy_record(unsigned row, const Record* source) {
    Record* target = get_record(row);
    if (source != nullptr && target != nullptr) {
        assign(*target, Record(*source));
    }
}

unsigned Table::clear_changed() {
    for (const auto& record : rows_) {
        record->changed = false;
    }
    modified_ = false;
    return static_cast<unsigned>(rows_.size());
}

void Table::set_tag(unsigned row, int value) {
    if (Record* record = get_record(row)) {
        record->tag = static_cast<unsigned>(value) & 0xFF;
    }
}

void Table::invert_tag(unsigned row) {
    if (Record* record = get_record(row)) {
        record->tag = record->tag == 0 ? 1 : 0;
    }
}

unsigned Table::get_tag(unsigned row) const {
    const Record* record = get_record(row);
    return record != nullptr ? record->tag : nothing;
}

void Table::set_all_tags(int value) {
    for (unsigned row = 0; row < rows_.size(); ++row) {
        set_tag(row, value);
    }
}

void Table::invert_all_tags() {
    for (const auto& record : rows_) {
        record->tag = record->tag == 0 ? 1 : 0;
    }
}

unsigned Table::get_num_tags() const {
    unsigned tags = 0;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        tags += get_tag(row) != 0;
    }
    return tags;
}

void Table::set_show_tags_only(unsigned flag) {
    tagsOnly_ = flag;
    if (flag != 0) {
        index_tags();
    }
}

void Table::index_tags() {
    taggedCount_ = 0;
    for (const auto& record : rows_) {
        if (record->tag != 0) {
            tagged_[taggedCount_++] = record.get();
        }
    }
}

std::string Table::get_param_val(const char* name) const {
    for (const auto& [known, value] : params_) {
        if (caseless(known, name) == 0) {
            return value;
        }
    }
    return {};
}

unsigned Table::add_param(const char* name, const char* value) {
    if (name == nullptr || value == nullptr || *name == 0) {
        return nothing;
    }
    for (auto& [known, stored] : params_) {
        if (caseless(known, name) == 0) {
            modified_ = modified_ || stored != value;
            stored = value;
            return 0;
        }
    }
    if (params_.empty()) {
        params_.emplace_back("VEKDB", "Rev 1");
    }
    if (std::strcmp(name, "VEKDB") == 0 || params_.size() > 39) {
        return nothing;
    }
    params_.emplace_back(name, value);
    modified_ = true;
    return 0;
}

void Table::store(Record& record, unsigned field, const std::string& value) {
    record.values[field] = value;
    record.changed = true;
    modified_ = modified_ || record.contained;
}

bool Table::set_field(unsigned row, const std::string& cookie) {
    Record* record = get_record(row);
    const unsigned field = get_fieldnum("cookie");
    if (record == nullptr || field == nothing) {
        return false;
    }
    const bool stored = setField(row, field, cookieText(cookie).c_str());
    rowByIdentity_[cookieText(cookie).substr(0, 32)] = row;
    return stored;
}

bool Table::set_field(unsigned row, unsigned field, const char* text) {
    Record* record = get_record(row);
    if (record == nullptr || field >= record->values.size()) {
        return false;
    }
    store(*record, field, leftTrimmed(text != nullptr ? text : ""));
    return true;
}

bool Table::setField(unsigned row, unsigned field, const char* text) {
    Record* record = get_record(row);
    if (record == nullptr || field >= record->values.size()) {
        return false;
    }
    if (record->values[field] != text) {
        store(*record, field, text);
    }
    return true;
}

std::string Table::getField(unsigned row, unsigned field) const {
    const Record* record = get_record(row);
    return record != nullptr ? record->value(field) : std::string();
}

std::string Table::get_fieldname(unsigned field) const {
    return field < names_.size() ? names_[field] : std::string();
}

unsigned Table::get_fieldsize(unsigned field) const {
    std::size_t size = 0;
    for (const auto& record : rows_) {
        size = std::max(size, field < record->values.size() ? record->values[field].size() : 0);
    }
    return static_cast<unsigned>(size);
}

unsigned Table::get_fieldnum(const std::string& name) const {
    if (names_.empty() || name.empty()) {
        return nothing;
    }
    if (!nameIndex_.empty()) {
        const auto found = nameIndex_.find(lower(name));
        return found != nameIndex_.end() ? found->second : nothing;
    }
    for (unsigned i = 0; i < names_.size(); ++i) {
        if (caseless(names_[i], name) == 0) {
            return i;
        }
    }
    return nothing;
}

bool Table::set_fieldname(unsigned field, const char* name) {
    if (field >= names_.size()) {
        return false;
    }
    names_[field] = withoutAmpersands(name != nullptr ? name : "");
    if (name != nullptr && *name != 0) {
        nameIndex_[lower(names_[field])] = field;
    }
    return true;
}

bool Table::set_fieldtype(unsigned field, unsigned type) {
    if (field >= types_.size()) {
        return false;
    }
    types_[field] = type != 0 ? type : 'a';
    return true;
}

unsigned Table::get_field_type(unsigned field) const {
    return field < types_.size() ? types_[field] : 0;
}

unsigned Table::addField(const char* name, unsigned type) {
    const unsigned known = get_fieldnum(name);
    if (known != nothing) {
        return known;
    }
    const unsigned field = get_num_fields();
    names_.push_back(name);
    types_.push_back(type);
    special_.push_back(isSpecialLabel(name));
    nameIndex_[lower(name)] = field;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        get_record(row)->values.resize(names_.size());
    }
    return field;
}

void Table::removeField(const char* name) {
    const unsigned field = get_fieldnum(name);
    if (field == nothing) {
        return;
    }
    names_.erase(names_.begin() + field);
    types_.erase(types_.begin() + field);
    nameIndex_.clear();
    for (unsigned i = 0; i < names_.size(); ++i) {
        nameIndex_.emplace(lower(names_[i]), i);
    }
    for (unsigned row = 0; row < rows_.size(); ++row) {
        Record* record = get_record(row);
        if (record != nullptr && field < record->values.size()) {
            record->values.erase(record->values.begin() + field);
        }
    }
}

unsigned Table::beginUpdate() {
    if (updateDepth_ == 0) {
        pending_.clear();
    }
    return ++updateDepth_;
}

void Table::addToUpdate(const std::string& cookie) {
    pending_.push_back(cookieText(cookie));
}

void Table::endUpdate() {
    if (updateDepth_ == 0 || --updateDepth_ > 0 || pending_.empty()) {
        return;
    }
    Notice notice{"recordsChanged", "", {}};
    notice.cookies.swap(pending_);
    issue(notice);
}

void Table::set_sortfield(int field) {
    inlineSort_[0] = field;
    inlineSort_[1] = -1;
    sortList_ = inlineSort_;
}

void Table::sortPrepare(int, int forceNormal) {
    order_ = SortOrder{{}, sortOffset_, forceNormal != 0, -1};
    for (int* entry = sortList_; *entry >= 0; ++entry) {
        if (static_cast<unsigned>(*entry) >= names_.size()) {
            *entry = -1;
        } else if (types_[static_cast<unsigned>(*entry)] == 't') {
            order_.timecodeField = *entry;
        }
    }
    for (int* entry = sortList_; *entry >= 0; ++entry) {
        order_.fields.push_back(*entry);
    }
}

void Table::sort(int direction, int forceNormal) {
    sortPrepare(direction, forceNormal);
    std::stable_sort(rows_.begin(), rows_.end(), [&](const auto& a, const auto& b) {
        return (direction < 0 ? order_.descending(*a, *b) : order_.ascending(*a, *b)) < 0;
    });
    if (tagsOnly_ != 0) {
        index_tags();
    }
}

unsigned Table::findFirst(const char* field, const char* value, int prefixLength) {
    if (caseless(field, "cookie") == 0) {
        const unsigned row = getRowIndexByID(value);
        if (row != nothing) {
            return row;
        }
    }
    const unsigned column = get_fieldnum(field);
    for (unsigned row = 0; column != nothing && row < get_num_records(); ++row) {
        const std::string text = getField(row, column);
        const auto length = static_cast<std::size_t>(prefixLength);
        if (prefixLength != 0 ? std::strncmp(text.c_str(), value, length) == 0 : text == value) {
            return row;
        }
    }
    return nothing;
}

unsigned Table::getRowIndexByID(const std::string& cookie) {
    const unsigned field = get_fieldnum("cookie");
    if (rowByIdentity_.empty() && field != nothing) {
        for (unsigned row = 0; row < get_num_records(); ++row) {
            rowByIdentity_.emplace(cookieText(getField(row, field)).substr(0, 32), row);
        }
    }
    const auto found = rowByIdentity_.find(cookieText(cookie).substr(0, 32));
    return found != rowByIdentity_.end() ? found->second : nothing;
}

void Table::set_query(const std::vector<std::string>& texts) {
    if (texts.size() >= names_.size()) {
        query_ = texts;
    }
}

unsigned Table::tag_matching_records(int keepTags) {
    if (query_.empty()) {
        return 0;
    }
    unsigned count = 0;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        if (match_record(static_cast<int>(row)) != 0) {
            set_tag(row, 1);
            ++count;
        } else if (keepTags == 0) {
            set_tag(row, 0);
        }
    }
    return count;
}

unsigned Table::match_record(int row) const {
    const Record* record = get_record(static_cast<unsigned>(row));
    if (record == nullptr || query_.empty()) {
        return nothing;
    }
    for (unsigned field = 0; field < names_.size(); ++field) {
        if (!matchesField(*record, field)) {
            return 0;
        }
    }
    return 1;
}

bool Table::matchesField(const Record& record, unsigned field) const {
    if (field >= query_.size() || allBlank(query_[field])) {
        return true;
    }
    if (field < special_.size() && special_[field]) {
        return matchesRange(record, field);
    }
    return textMatches(record.value(field), query_[field], types_[field]);
}

bool Table::matchesRange(const Record& record, unsigned field) const {
    const std::string& query = query_[field];
    for (const auto& pair : labelPairs) {
        if (names_[field] != pair[0] && names_[field] != pair[1]) {
            continue;
        }
        const unsigned start = get_fieldnum(pair[0]);
        const unsigned end = get_fieldnum(pair[1]);
        const std::string s = start != nothing ? record.value(start) : std::string();
        if (s.empty()) {
            return false;
        }
        if (s.substr(0, query.size()) == query) {
            return true;
        }
        const std::string e = end != nothing ? record.value(end) : std::string();
        return !e.empty() && std::strncmp(query.c_str(), s.c_str(), query.size()) >= 0 &&
               std::strncmp(query.c_str(), e.c_str(), query.size()) <= 0;
    }
    return true;
}

unsigned Table::tag_all_different(int field) {
    set_all_tags(0);
    set_show_tags_only(0);
    set_sortfield(field);
    sort(1, 0);
    std::string previous;
    for (unsigned row = 0; row < get_num_records(); ++row) {
        const std::string value = getField(row, static_cast<unsigned>(field));
        if (caseless(value, previous) != 0) {
            set_tag(row, 1);
            previous = value.substr(0, 255);
        }
    }
    return get_num_tags();
}

int Table::merge_all_matching(Table* source) {
    std::vector<unsigned> map;
    for (const std::string& name : names_) {
        map.push_back(source->get_fieldnum(name));
    }
    if (std::all_of(map.begin(), map.end(), [](unsigned m) { return m == nothing; })) {
        return 0;
    }
    for (unsigned row = 0, rows = source->get_num_records(); row < rows; ++row) {
        const unsigned fresh = add_records(1);
        if (fresh == nothing) {
            break;
        }
        for (unsigned field = 0; field < map.size(); ++field) {
            if (map[field] != nothing) {
                std::string value = source->getField(row, map[field]);
                const unsigned sourceType = source->get_field_type(map[field]);
                if (types_[field] == 't' && sourceType == 'T') {
                    value = punctuated(value);
                } else if (types_[field] == 'T' && sourceType == 't' && value.size() == 11) {
                    const bool drop = value[8] == ';';
                    std::erase_if(value, [](char c) { return !digit(c); });
                    value += drop ? ";" : "";
                }
                set_field(fresh, field, value.c_str());
            }
        }
    }
    return 1;
}

unsigned Table::add_vekdb(Table* source) {
    if (tagsOnly_ != 0 || names_ != source->names_ || types_ != source->types_) {
        return nothing;
    }
    const std::size_t count = source->rows_.size();
    for (std::size_t i = 0; i < count; ++i) {
        rows_.push_back(newRecord(0));
        rows_.back()->values = source->rows_[i]->values;
    }
    grow(rows_.size());
    return static_cast<unsigned>(count);
}

}  // namespace plain
