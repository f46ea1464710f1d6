#pragma once

#include <cstddef>
#include <cstdint>

#include <vekdb/host/cookie_containers.h>
#include <vekdb/host/lightweight_string.h>
#include <vekdb/host/notify.h>
#include <vekdb/host/visibility.h>
#include <vekdb/vdb_base.h>

class AssocList;
class GrowString;
class SExpr;
class TextFile;
class ViewIndex;
class vekdb;
struct ViewParts;

/// A view: an ordered list of rows of a table, or of another view, each with a tag of its own.
/// It owns no records, copies none, and answers the whole record-source interface in its own
/// row numbers. Its source is its base view where it is stacked on one, else its table. It has
/// its own parameters and file name; its columns are those of its source.
///
/// Ownership: views are made by `new` and held by VDBView handles and by the views stacked on
/// them, which share one count; whoever takes the count from 1 to 0 destroys the view. A view
/// that nobody holds has the count 0 and is destroyed as soon as anybody lets go of it, the
/// temporaries of `newTagSubview` and `tagDuplicates` included: hold a view before using these.
/// The count of the iObject base is not used: never put a view into a Quor::Ptr.
/// The table is not owned. It should outlive its views; a view whose table went has no source.
///
/// What ends what: a record got here lives as long as the table keeps it; texts of parameters
/// until the parameter is next set; a field list until the next `fieldSpec`.
///
/// Out-of-range rows give null records, empty strings, 0 and -1; a view without a source lists
/// its rows' numbers, has no records or values and ignores orders. Only memory exhaustion throws.
/// Not locked: one thread at a time.
///
/// Deletions reach a view through notices; docs/notices.md tells in which order, and what a
/// stacked view makes of them. In short: a stacked view hears its table and its base view both,
/// so that a deletion can take more rows out of it than were deleted, and deleting through it
/// can hit other records than the ones shown. Delete through a view that reads the table itself.
class VEKDB_PUBLIC VDBViewRep : public VDBBase, public Notifier {
public:
    /// A question that is asked of each row's number.
    using PositionTest = bool (VDBViewRep::*)(int);

    /// A view without rows and with all columns of the table. Null gives a view without source.
    explicit VDBViewRep(vekdb* table);
    VDBViewRep(vekdb* table, std::nullptr_t);
    /// With the columns of `spec`: names between commas or tabs. Null is all columns. Unknown
    /// names are left out with a warning.
    VDBViewRep(vekdb* table, const char* spec);
    /// With the columns of a null-terminated array of names. Null is all columns.
    VDBViewRep(vekdb* table, const char* const* names);
    ~VDBViewRep() override;

    // --- binding
    /// Lets go of everything and starts afresh, with the count 0. Not for a view in use.
    void init();
    /// Binds to a table: rows, base view and parameters go, the table's file name and parameters
    /// come. The field list stays as it is. Nothing happens for the table bound already.
    void vdb(vekdb* table);
    /// Stacks on another view, or on none: rows and parameters go, the base's parameters come.
    /// The table stays. Nothing happens for the present base, and for a base whose stack this
    /// view is part of, and, as with `vdb`, where memory ends.
    void baseView(VDBViewRep* base);
    /// The table at the bottom of the stack, null for none or one that went.
    vekdb* table() const;
    /// The view it stands on, or null.
    VDBViewRep* base() const;
    /// The base view where there is one, else the table, else null.
    VDBBase* source() const;

    // --- sharing
    /// How many handles and stacked views hold it.
    unsigned handleCount() const { return handleCount_; }
    /// Counts up, as a handle does.
    void retain();
    /// Counts down, as a handle does; the view is destroyed when the count was 1 or 0. A view
    /// in the middle of an operation is destroyed at the operation's end.
    void release() noexcept;

    // --- columns
    /// Rebuilds the field list from names between commas or tabs; a second call puts the new
    /// columns behind the reversed old ones. Null drops the text and keeps the list. Returns
    /// the list, which stays the view's. Where memory ends, text and list are the old ones.
    SExpr* fieldSpec(const char* spec);
    /// The text the field list was built from, or null.
    const char* fieldSpecText() const;
    /// The columns chosen, as references into the source that there was then.
    const SExpr* fieldList() const;
    /// Appends all columns of the source, with commas between them.
    void identityFieldSpec(GrowString& out) const;
    /// The first column of exactly this name, or -1.
    int dbFieldIndex(const char* name) const;
    /// Appends the text and the list of the columns, a line each.
    void asString(GrowString& out) const;

    // --- parameters and file name
    /// `set_filename` by another name.
    void fileName(LightweightString<wchar_t> name);
    /// Sets each parameter of the table, or of the view, in this view.
    void addParamsFrom(vekdb* table);
    void addParamsFrom(VDBViewRep* other);
    /// The view's own parameters, in the order in which they are saved.
    const AssocList& params() const;
    /// Gives the parameter "VEKDB" the text "Rev 1" where it has no text at all.
    void internRevision();

    // --- rows
    /// Drops all rows and their room; tells nobody.
    void clear();
    /// Adjusts the room for rows: at least 20 entries, halved when more than twice what is
    /// wanted, doubled or more when less. 0 frees it. The row count stays.
    void sizeIndexFor(int n);
    /// Shows one more source row at the end; as all new rows it keeps the tag byte of its slot.
    void append(int row);
    /// Shows every source row in source order, and tells nobody. Where memory ends, the first
    /// rows are shown.
    void buildIndex();
    /// The record of a row, or null.
    dbrecord* operator[](int row) const;
    /// True for every record; where a condition is set, says that there are none yet.
    bool satisfiesCondition(dbrecord* record);
    /// Sorts nothing; where an order is set, says so.
    void sortIndex();
    /// The first row that shows this source row, or -1.
    int findViewIndexForBaseRow(unsigned long row) const;
    /// The first row that shows this record, or -1.
    int find(const dbrecord* record) const;
    /// The source row behind a row, 0xFFFFFFFF out of range.
    unsigned sourceRow(int row) const;
    /// Rows that there is room for.
    unsigned indexCapacity() const;
    /// The tag byte of a slot, those behind the last row included; 0 out of range. The next
    /// row to stand in such a slot starts out with this tag.
    unsigned slotTag(unsigned slot) const;

    // --- tags of the view, none of the table's
    /// Gives each row the tag 1 or 0, or turns the lowest bit of each tag round.
    void tagAll(bool value);
    void invertAllTags();
    /// How many rows are tagged.
    unsigned countTags() const;
    /// Tags the rows that match the source's query and counts them; untags the others unless
    /// `keep` is non-zero. Without a query every row matches.
    unsigned tagMatches(int keep);
    /// In a view sorted by the field, tags the rows that repeat the text before them.
    unsigned tagDuplicatesOrdered(int field);
    /// Tags every row that repeats the field's text of another one, ignoring case, and untags
    /// the rest. Changes the table's sort field.
    unsigned tagDuplicates(int field);
    /// Writes the view's tags into its source.
    void tagBaseFromTags();
    /// A view stacked on this one that shows its tagged rows, or null without a table. Its count
    /// is 0, so hand it to a handle at once: `VDBView tagged(view->newTagSubview());`. It keeps
    /// this view, which must itself be held by somebody by then.
    VDBViewRep* newTagSubview();
    /// Tests for `removeSome`: rows that are tagged, and all others, those out of range included.
    bool tag(int row);
    bool notTagged(int row);

    // --- display. `at` is cut to the rows there are. New rows keep the tag byte of the slot
    // they come to stand in. Nothing checks that a row exists or is shown already.
    /// Shows n source rows from `first` on; n.
    int displayRecordsAt(int first, int n, int at);
    /// Shows the first source row whose field has the value; 1, or 0 when there is none.
    int displayMatchAt(const char* field, const char* value, int at);
    /// Shows the rows of these identities, one behind the other; how many were found.
    int displayRecordsAt(const CookieSet& set, int at);
    int displayRecordsAt(const CookieVec& list, int at);
    /// Shows the rows that are tagged in the source.
    void displayTaggedRecordsAt(int at);
    /// Takes all rows out, which views stacked on this one are told, and shows every source row.
    /// Where memory ends the rows are the old ones, or, once somebody was told, none.
    void displayAllRecords();
    /// The same, then takes over the source's tags where it has a column "Tag".
    void displayAllRecordsWithBaseTagStatus();
    /// The same, then tags the rows by the numbers in the column "Tag".
    void setupViewTagsFromVekdbTagField();
    /// Shows the records of another view over the same table that are not shown yet.
    int displayAllFromAt(VDBViewRep* other, int at);

    // --- editing. Deleting removes records from the table; removing only takes rows out.
    /// Inserts blank records into the source before the source row of row `at`, or at its end,
    /// and shows them. Other views are not told. Where memory ends this view is as it was; the
    /// source is, too, or has more rows at its end.
    void insertBlankRecords(int at, int n);
    /// Deletes the records of n rows from `at` on, a notice for each run of neighbours. Where
    /// memory ends, the runs that were deleted are gone from the table and from all views.
    void deleteRecords(int at, int n);
    /// The number of rows in the runs it passed on for deletion.
    int deleteTagged();
    /// Takes rows out of this view and issues "recordsDeleted" with their numbers.
    void remove(int at, int n);
    /// Takes the rows that pass the test out of the lowest view of the stack, and so out of
    /// every view above it.
    int removeSome(PositionTest test);
    int removeTagged();     ///< `removeSome` of the tagged rows
    int removeNonTagged();  ///< `removeSome` of the others
    /// Takes n rows from `at` on out of the lowest view of the stack.
    void removeRecordsFromBaseView(int at, int n);
    /// What a deletion notice of the source does here. Whatever fails on the way, the rows
    /// follow; the first failure is thrown afterwards.
    int recordsDeletedNotify(const NotifyMsg& msg);

    // --- saving and copies
    /// Writes parameters, the table's column header and the rows in view order, with the view's
    /// tags in a column "Tag". The number of rows written, 0 when saving failed.
    int saveAsText(LightweightString<wchar_t> name, bool headerOnly);
    int saveAsText(const char* name, bool headerOnly);
    /// Writes the rows whose records carry the table's tag. The number of rows looked at, 0
    /// when saving failed.
    int saveOnlyTagged(LightweightString<wchar_t> name);
    int saveOnlyTagged(const char* name);
    /// A view of the same rows and tags over the table; of a stacked view, a view that shows
    /// the whole base view. Its parameters and file name are the table's, so saving it under
    /// its own name overwrites the table's file. Null without a table. Its count is 0: hand it to
    /// a handle at once, or use `VDBView::copy`.
    VDBViewRep* copy();
    /// A view of the same rows and tags over a copy of the table, which has no tags. Hold the view
    /// by a handle, and delete its `table()` after the last handle went: nobody else owns that
    /// table.
    VDBViewRep* copyWithNewBaseView();

    // --- the record-source interface, in view rows
    /// `saveAsText` under the view's own file name, which is the table's unless set.
    int save_text() override;
    /// `saveOnlyTagged` under it.
    int save_tags() override;
    /// `insertBlankRecords`: `at` is read as a signed number, so that 0xFFFFFFFF is the front (of
    /// a table it is the end).
    void insert_records(unsigned at, int n) override;
    /// `deleteRecords`.
    void delete_records(unsigned first, int n) override;
    /// Deletes nothing: takes the tagged rows out of the views of the stack. Returns 0.
    unsigned delete_tagged_records() override;
    unsigned get_num_records() const override;
    unsigned get_num_fields() const override;
    dbrecord* get_record(unsigned row) const override;
    dbrecord* make_dummy_record() const override;
    LightweightString<char> getField(unsigned row, unsigned field) const override;
    const char* get_fieldname(unsigned field) const override;
    unsigned get_fieldsize(unsigned field) const override;
    DBFieldTypes::eType get_field_type(unsigned field) const override;
    bool set_fieldtype(unsigned field, DBFieldTypes::eType type) override;
    unsigned get_fieldnum(LightweightString<char> name) const override;
    bool set_fieldname(unsigned field, const char* name) override;
    void set_filename(LightweightString<wchar_t> name) override;
    LightweightString<wchar_t> get_filename() const override;
    void set_sortfield(int field) override;
    void set_sortfields(int* fields) override;
    void set_sort_offset(int offset) override;
    /// Reorders the view's rows, with their tags; the table stays as it is.
    void sort(int direction, int forceNormal) override;
    void set_tag(unsigned row, int value) override;
    void invert_tag(unsigned row) override;
    void set_all_tags(int value) override;
    void invert_all_tags() override;
    /// Whatever the flag says, takes every untagged row out of the views of the stack.
    void set_show_tags_only(unsigned flag) override;
    unsigned get_show_tags_only() const override;
    unsigned get_tag(unsigned row) const override;
    unsigned get_num_tags() const override;
    void set_query(dbrecord* query) override;
    /// Untags the rows that do not match, whatever the argument says.
    unsigned tag_matching_records(int keepTags) override;
    unsigned tag_all_different(int field) override;
    bool set_field(unsigned row, const Cookie& cookie) override;
    bool set_field(unsigned row, unsigned field, const char* text) override;
    bool set_field(unsigned row, unsigned field, int value) override;
    bool set_field(unsigned row, unsigned field, double value) override;
    bool set_field(unsigned row, unsigned field, bool value) override;
    using VDBBase::set_field;
    bool in_field(unsigned row, unsigned field, char* buffer, int length) const override;
    bool in_field(unsigned row, unsigned field, int& value) const override;
    bool in_field(unsigned row, unsigned field, double& value) const override;
    bool in_field(unsigned row, unsigned field, bool& value) const override;
    /// Adds blank records at the end of the source and shows them; the row count before.
    unsigned add_records(int n) override;
    unsigned add_param(const char* name, const char* value) override;
    unsigned set_param_val(const char* name, const char* value) override;
    /// Never null. Asking for a name enters it, with an empty value, among the parameters.
    const char* get_param_val(const char* name) override;
    /// As the source answers: the row is the table's, not the view's.
    unsigned findFirst(const char* field, const char* value, int prefixLength) override;
    int* sortPrepare(int direction, int forceNormal) override;
    /// As the source answers: the row is the table's, not the view's.
    unsigned match_record(int row) const override;
    /// The table row at the bottom of the stack, 0 out of range.
    unsigned baseIndex(unsigned row) const override;
    bool get_valid() const override;

protected:
    /// Reserved for a row filter and an index sort: non-zero only makes `buildIndex` warn.
    std::uint64_t condition_ = 0;
    std::uint64_t sortOrder_ = 0;

private:
    class Pin;

    VDBViewRep();

    ViewIndex& index() const;
    int rowCount() const;
    VDBBase* sourceOfRow(unsigned row) const;
    vekdb* plainTable() const;
    bool standsOn(const VDBViewRep* view) const;

    void useSpec(const char* spec);
    struct Binding;
    void dropRows(AssocList& params);
    Quor::Ptr<Quor::Guard> listenTo(Notifier& notifier);

    int showMatches(vekdb& bottom, const CookieVec& list, int at);
    int showMatchesSingly(const CookieVec& list, int at);
    int showOneByOne(const unsigned* sourceRows, int n, int at);

    int eachRun(PositionTest test, void (VDBViewRep::*edit)(int at, int n));
    struct Removals;
    void dropSourceRow(unsigned target, unsigned earlier, Removals& removals);
    void tell(const NotifyMsg& message, int type);

    bool othersMayRun() const;
    bool appendHead(TextFile& file, const LightweightString<wchar_t>& name) const;
    int writeRows(TextFile& file) const;
    int writeTaggedRecords(TextFile& file) const;
    void tagLike(const VDBViewRep& other);
    void showAgain(VDBViewRep& original);

    ViewParts* parts_;
    unsigned handleCount_ = 0;
    unsigned pins_ = 0;
    bool doomed_ = false;
};
