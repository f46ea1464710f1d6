#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A plain model of a table and of the views over it: every rule is written out in the shortest
/// way that can be checked by reading, nothing is fast, and nothing is shared with the library.
/// Operations carry the library's names, so that one script can be run against both.
namespace plain {

constexpr unsigned nothing = 0xFFFFFFFF;

struct Record {
    std::vector<std::string> values;
    unsigned tag = 0;
    bool changed = false;
    bool contained = true;

    explicit Record(std::size_t count) : values(count) {}
    std::string value(unsigned field) const {
        return field < values.size() ? values[field] : std::string();
    }
    bool is_blank() const;
};

struct Notice {
    std::string type;
    std::string text;
    std::vector<std::string> cookies;
};

/// Delivers to its listeners in the order they came. Who leaves during a delivery hears no more
/// of it; who comes during one waits for the next.
class Notifier {
public:
    using Listener = std::function<void(const Notice&)>;
    using Guard = std::shared_ptr<Listener>;

    Guard listen(const std::string& type, Listener listener);
    void leave(Guard& guard);
    void issue(const Notice& notice);

private:
    std::vector<std::pair<std::string, Guard>> listeners_;
};

/// What tables and views both answer.
class Source {
public:
    virtual ~Source() = default;
    virtual void insert_records(unsigned at, int n) = 0;
    virtual void delete_records(unsigned first, int n) = 0;
    virtual unsigned delete_tagged_records() = 0;
    virtual unsigned get_num_records() const = 0;
    virtual unsigned get_num_fields() const = 0;
    virtual Record* get_record(unsigned row) const = 0;
    virtual std::string getField(unsigned row, unsigned field) const = 0;
    virtual std::string get_fieldname(unsigned field) const = 0;
    virtual unsigned get_fieldsize(unsigned field) const = 0;
    virtual unsigned get_fieldnum(const std::string& name) const = 0;
    virtual void set_sortfield(int field) = 0;
    virtual void set_sortfields(int* fields) = 0;
    virtual void set_sort_offset(int offset) = 0;
    virtual void sortPrepare(int direction, int forceNormal) = 0;
    virtual void sort(int direction, int forceNormal) = 0;
    virtual void set_tag(unsigned row, int value) = 0;
    virtual void invert_tag(unsigned row) = 0;
    virtual void set_all_tags(int value) = 0;
    virtual void invert_all_tags() = 0;
    virtual void set_show_tags_only(unsigned flag) = 0;
    virtual unsigned get_show_tags_only() const = 0;
    virtual unsigned get_tag(unsigned row) const = 0;
    virtual unsigned get_num_tags() const = 0;
    virtual void set_query(const std::vector<std::string>& texts) = 0;
    virtual unsigned tag_matching_records(int keepTags) = 0;
    virtual unsigned tag_all_different(int field) = 0;
    virtual bool set_field(unsigned row, const std::string& cookie) = 0;
    virtual bool set_field(unsigned row, unsigned field, const char* text) = 0;
    virtual unsigned add_records(int n) = 0;
    virtual unsigned add_param(const char* name, const char* value) = 0;
    virtual unsigned findFirst(const char* field, const char* value, int prefixLength) = 0;
    virtual unsigned match_record(int row) const = 0;
    virtual unsigned baseIndex(unsigned row) const = 0;
    virtual bool get_valid() const = 0;
};

/// What a comparison of records reads: the table's sort settings at the last sortPrepare.
struct SortOrder {
    std::vector<int> fields;
    int offset = 0;
    bool forceNormal = false;
    int timecodeField = -1;

    int ascending(const Record& a, const Record& b) const;
    int descending(const Record& a, const Record& b) const;
};

/// One order for values: letters without case, runs of digits by what they count.
int peopleOrder(const std::string& a, const std::string& b);
/// The canonical text of a cookie; whatever is no cookie gives the invalid one.
std::string cookieText(const std::string& text);
bool isSpecialLabel(const std::string& name);
/// A column's own test, its type being one whose stored text is matched: the query text is
/// found in it without regard to case; a blank query text matches everything.
bool textMatches(const std::string& value, const std::string& query, unsigned type);

class Table : public Source, public Notifier {
public:
    Table(const std::vector<std::pair<std::string, unsigned>>& columns);
    Table(const Table& source, int withRecords);

    unsigned get_num_records() const override;
    Record* get_record(unsigned row) const override;
    unsigned get_new_row(unsigned raw) const;
    unsigned get_raw_row(unsigned shown) const;
    unsigned add_records(int n) override;
    void insert_records(unsigned at, int n) override;
    void delete_records(unsigned first, int n) override;
    unsigned delete_tagged_records() override;
    void copy_record(unsigned row, Table* source, unsigned sourceRow);
    void copy_record(unsigned row, const Record* source);
    unsigned clear_changed();

    void set_tag(unsigned row, int value) override;
    void invert_tag(unsigned row) override;
    unsigned get_tag(unsigned row) const override;
    void set_all_tags(int value) override;
    void invert_all_tags() override;
    unsigned get_num_tags() const override;
    void set_show_tags_only(unsigned flag) override;
    unsigned get_show_tags_only() const override { return tagsOnly_; }
    void index_tags();

    std::string get_param_val(const char* name) const;
    unsigned add_param(const char* name, const char* value) override;
    unsigned get_num_params() const { return static_cast<unsigned>(params_.size()); }
    std::string get_param_name(unsigned slot) const { return params_[slot].first; }
    std::string get_param_text(unsigned slot) const { return params_[slot].second; }

    bool set_field(unsigned row, const std::string& cookie) override;
    bool set_field(unsigned row, unsigned field, const char* text) override;
    bool setField(unsigned row, unsigned field, const char* text);
    std::string getField(unsigned row, unsigned field) const override;

    unsigned get_num_fields() const override { return static_cast<unsigned>(names_.size()); }
    std::string get_fieldname(unsigned field) const override;
    unsigned get_fieldsize(unsigned field) const override;
    unsigned get_fieldnum(const std::string& name) const override;
    bool set_fieldname(unsigned field, const char* name);
    bool set_fieldtype(unsigned field, unsigned type);
    unsigned get_field_type(unsigned field) const;
    unsigned addField(const char* name, unsigned type);
    void removeField(const char* name);

    unsigned beginUpdate();
    void addToUpdate(const std::string& cookie);
    void endUpdate();

    void set_sortfield(int field) override;
    void set_sortfields(int* fields) override { sortList_ = fields; }
    void set_sort_offset(int offset) override { sortOffset_ = offset; }
    void sortPrepare(int direction, int forceNormal) override;
    void sort(int direction, int forceNormal) override;
    unsigned findFirst(const char* field, const char* value, int prefixLength) override;
    unsigned getRowIndexByID(const std::string& cookie);

    void set_query(const std::vector<std::string>& texts) override;
    unsigned tag_matching_records(int keepTags) override;
    unsigned match_record(int row) const override;
    unsigned tag_all_different(int field) override;
    int merge_all_matching(Table* source);
    unsigned add_vekdb(Table* source);

    unsigned baseIndex(unsigned row) const override { return row; }
    bool get_valid() const override { return true; }
    bool get_modified() const { return modified_; }
    unsigned get_capacity() const { return capacity_; }
    unsigned get_update_depth() const { return updateDepth_; }
    const SortOrder& order() const { return order_; }

private:
    void post_init();
    void grow(std::size_t rows);
    std::unique_ptr<Record> newRecord(std::size_t count) const;
    void store(Record& record, unsigned field, const std::string& value);
    void assign(Record& target, const Record& source);
    bool matchesField(const Record& record, unsigned field) const;
    bool matchesRange(const Record& record, unsigned field) const;

    std::vector<std::string> names_;
    std::vector<unsigned> types_;
    std::vector<bool> special_;
    std::map<std::string, unsigned> nameIndex_;
    std::vector<std::unique_ptr<Record>> rows_;
    std::vector<Record*> tagged_;
    unsigned taggedCount_ = 0;
    unsigned tagsOnly_ = 0;
    unsigned capacity_ = 0;
    std::vector<std::pair<std::string, std::string>> params_;
    bool modified_ = false;
    int inlineSort_[2] = {-1, -1};
    int* sortList_ = inlineSort_;
    int sortOffset_ = 0;
    SortOrder order_;
    std::vector<std::string> query_;
    std::map<std::string, unsigned> rowByIdentity_;
    std::vector<std::string> pending_;
    unsigned updateDepth_ = 0;
};

/// A view's index is its slots: the first `count` of them are its rows, the rest keep the tags
/// that happened to stand there.
class View : public Source, public Notifier {
public:
    struct Slot {
        unsigned row = 0;
        unsigned tag = 0;
    };

    explicit View(Table* table);

    /// One holder less. A view without holders is gone: it has left every notifier and holds
    /// nothing. The object itself stays with whoever made it.
    void hold() { ++holders_; }
    void release();
    bool alive() const { return alive_; }
    unsigned holders() const { return holders_; }
    Table* table() const { return table_; }
    View* base() const { return base_; }
    Source* source() const;
    const std::vector<Slot>& slots() const { return slots_; }
    int count() const { return count_; }
    bool showsOnlyRecords() const;
    const std::vector<std::pair<std::string, std::string>>& params() const { return params_; }

    void vdb(Table* table);
    void baseView(View* base);
    void forgetTable();
    void clear();
    void sizeIndexFor(int n);
    void append(int row);
    void buildIndex();
    void addParamsFrom(const Table* table);
    void addParamsFrom(const View* other);
    std::string get_param_val(const char* name);
    int findViewIndexForBaseRow(unsigned long row) const;
    int find(const Record* record) const;
    int dbFieldIndex(const char* name) const;

    void insert_records(unsigned at, int n) override;
    void delete_records(unsigned at, int n) override;
    unsigned delete_tagged_records() override;
    unsigned get_num_records() const override { return static_cast<unsigned>(count_); }
    unsigned get_num_fields() const override;
    Record* get_record(unsigned row) const override;
    std::string getField(unsigned row, unsigned field) const override;
    std::string get_fieldname(unsigned field) const override;
    unsigned get_fieldsize(unsigned field) const override;
    unsigned get_fieldnum(const std::string& name) const override;
    void set_sortfield(int field) override;
    void set_sortfields(int* fields) override;
    void set_sort_offset(int offset) override;
    void sortPrepare(int direction, int forceNormal) override;
    void sort(int direction, int forceNormal) override;
    void set_tag(unsigned row, int value) override;
    void invert_tag(unsigned row) override;
    void set_all_tags(int value) override { tagAll(value != 0); }
    void invert_all_tags() override { invertAllTags(); }
    void set_show_tags_only(unsigned flag) override;
    unsigned get_show_tags_only() const override { return 0; }
    unsigned get_tag(unsigned row) const override;
    unsigned get_num_tags() const override { return countTags(); }
    void set_query(const std::vector<std::string>& texts) override;
    unsigned tag_matching_records(int keepTags) override;
    unsigned tag_all_different(int field) override;
    bool set_field(unsigned row, const std::string& cookie) override;
    bool set_field(unsigned row, unsigned field, const char* text) override;
    unsigned add_records(int n) override;
    unsigned add_param(const char* name, const char* value) override;
    unsigned findFirst(const char* field, const char* value, int prefixLength) override;
    unsigned match_record(int row) const override;
    unsigned baseIndex(unsigned row) const override;
    bool get_valid() const override;

    void tagAll(bool value);
    void invertAllTags();
    unsigned countTags() const;
    unsigned tagMatches(int keep);
    unsigned tagDuplicatesOrdered(int field);
    unsigned tagDuplicates(int field);
    void tagBaseFromTags();
    int displayRecordsAt(int first, int n, int at);
    int displayMatchAt(const char* field, const char* value, int at);
    int displayRecordsAt(const std::vector<std::string>& cookies, int at);
    void displayTaggedRecordsAt(int at);
    void displayAllRecords();
    void displayAllRecordsWithBaseTagStatus();
    void setupViewTagsFromVekdbTagField();
    int displayAllFromAt(View* other, int at);

    void insertBlankRecords(int at, int n);
    void deleteRecords(int at, int n);
    int deleteTagged();
    void remove(int at, int n);
    int removeTagged() { return removeSome(1); }
    int removeNonTagged() { return removeSome(0); }
    void removeRecordsFromBaseView(int at, int n);
    void recordsDeletedNotify(const Notice& notice);

    /// Shows in `fresh`, a new view on the same table, what a copy of this view shows.
    void copyInto(View& fresh);
    /// The same for a view of this view's tagged rows.
    void tagSubviewInto(View& fresh);
    /// The same for a view on a copy of the table.
    void copyOverNewTableInto(View& fresh);
    /// Fills an empty copy of the table with this view's rows.
    void convertInto(Table& fresh);

private:
    bool has(int row) const { return row >= 0 && row < count_; }
    int openGap(int at, int n);
    int removeSome(unsigned tag);
    int consecutiveFrom(int at, int most) const;
    void setParam(const std::string& name, const std::string& value);
    void internRevision();

    bool alive_ = true;
    unsigned holders_ = 0;
    Table* table_ = nullptr;
    View* base_ = nullptr;
    std::vector<Slot> slots_;
    int count_ = 0;
    std::vector<std::pair<std::string, std::string>> params_;
    Notifier::Guard onTable_;
    Notifier::Guard onBase_;
};

}  // namespace plain
