#pragma once

#include <cstdint>
#include <ctime>
#include <vector>

#include <vekdb/field_types.h>
#include <vekdb/host/notify.h>
#include <vekdb/host/text_search.h>
#include <vekdb/host/visibility.h>
#include <vekdb/record.h>
#include <vekdb/vdb_base.h>

class Cookie;
class RowChoice;
class RowNumbers;
class TextFile;
class configb;
struct TableParts;

/// A table's error record: four values whose meaning is fixed by what filled them.
/// (3,3,0,0) and (3,4,0,0): the types or names line of a file has another number of values
/// than its widths line. (1,n,0,0): a record line of the wrong length after n good ones.
/// (2,3,0,0): a column was given no known type and became text.
struct VEKDB_PUBLIC dberror {
    std::int32_t values[4];  ///< the first two say what it is about
};

/// The table: an ordered array of records that share one list of typed, named columns, with
/// tags, parameters, sort settings, a query, a file name and an error record.
///
/// Ownership: the table owns its records and parameter strings. A record or parameter text got
/// from it lives until it is deleted or replaced, or the table is freed, reloaded or destroyed.
/// A table should outlive its views; a view whose table went has no source any more.
/// Failure: contents are answered by return values, the valid flag and the error record; only
/// exhausted memory throws. Not locked: a table and its views are used from one thread at a time.
///
/// A new table has no parameters, and a file without parameters cannot be loaded: call
/// `add_param` once before saving a table that is to be read back.
class VEKDB_PUBLIC vekdb : public VDBBase, public Notifier, public RecordOwner {
public:
    /// No columns, no rows, not valid.
    vekdb();
    /// Columns from an array that ends at the first entry without a type. Null is no columns.
    explicit vekdb(const DBFieldDesc* fields);
    /// A column for every entry.
    explicit vekdb(const std::vector<DBFieldDesc>& fields);
    /// Loads a file; see `loadFromFile`.
    vekdb(LightweightString<wchar_t> fileName, int maxRecords, bool requireMagic);
    /// Copies columns and parameters, and the rows shown when `withRecords` is non-zero, without
    /// their tags. The copied rows have no container: changing them does not mark this table
    /// modified.
    vekdb(const vekdb& source, int withRecords);
    /// Copies columns and the rows shown, no parameters and no tags; the pointer is not read. Note
    /// that `vekdb(source, 0)` and `vekdb(source, nullptr)` are opposites.
    vekdb(const vekdb& source, DBFieldDesc* ignored);
    vekdb(const vekdb&) = delete;
    vekdb& operator=(const vekdb&) = delete;
    ~vekdb() override;

    // --- lifetime
    /// Zeroes counts and flags of an empty table; frees nothing.
    void init();
    /// Stamps the creation time, makes room for 500 rows and sorts by the first column.
    void post_init();
    /// Raises the capacity by 500 rows.
    void add_chunk();
    /// Destroys rows, columns and parameters; the table is then empty, not valid, and can be
    /// filled again.
    void free();
    /// Sets the error record, in place of an earlier one.
    void fill_error_info(int a, int b, int c, int d);
    /// False, and `out` untouched, when no error is set. Reading does not clear it.
    bool read_error_info(dberror& out) const;
    /// Whether there are columns: a table that could not be loaded is not valid.
    bool get_valid() const override;
    /// Whether a value, a parameter or the number of rows was changed by a deletion since the
    /// table was made or loaded, or since `clear_changed`. Saving leaves it.
    bool get_modified() const;
    /// Whether the last load from a file made a row of every line behind the column names, those
    /// that a RowChoice did not take included. False where it passed over a line or what a NUL cut
    /// off, stopped before the end, or loaded nothing. Appending text changes nothing of it.
    bool get_loaded_whole() const;
    /// Why the last load could not read its file: the system's number of the error (errno), for
    /// the rest see `TextFile::error`. 0 where the file was read, whatever was in it, and where
    /// nothing was loaded. A table that could not be read is not valid and has no error record.
    int get_read_error() const;
    /// Rows that there is room for; grows in steps of 500 and never shrinks.
    unsigned get_capacity() const;
    /// The format revision that the file says, 1 for a table made in memory.
    int get_revision() const;
    /// How many `beginUpdate` wait for their `endUpdate`.
    unsigned get_update_depth() const;
    /// When the table was made.
    std::time_t get_creation_time() const;
    /// When a line was last read into it, 0 before.
    std::time_t get_modification_time() const;

    // --- rows
    /// The rows shown: all, or the tagged ones alone.
    unsigned get_num_records() const override;
    /// The record of a shown row, or null.
    dbrecord* get_record(unsigned row) const override;
    /// The shown position of a raw row, or 0xFFFFFFFF.
    unsigned get_new_row(unsigned raw) const;
    /// The raw position of a shown row, or 0xFFFFFFFF. While only tagged rows are shown, the
    /// argument equal to their count looks the slot behind them up.
    unsigned get_raw_row(unsigned shown) const;
    /// Appends rows; the raw position of the first, or 0xFFFFFFFF while only tagged are shown.
    /// Where memory ends, the rows that were made stay.
    unsigned add_records(int n) override;
    /// Inserts rows before raw position `at`, at the end for one past it, 0xFFFFFFFF included
    /// (which a view takes for its front); nothing while only tagged rows are shown. All or none
    /// where memory ends.
    void insert_records(unsigned at, int n) override;
    /// Deletes up to `n` rows from raw position `first` and issues "recordsDeleted" with their
    /// former numbers. Listeners see the new row count and the old modified flag. Where memory
    /// ends before that, no row goes; where it ends in whoever is told, the rows are gone and
    /// all views have followed when the exception arrives, some reports of theirs left out.
    void delete_records(unsigned first, int n) override;
    /// Deletes every row whose tag is 1, one notice a run; how many, or 0xFFFFFFFF while only
    /// tagged rows are shown.
    unsigned delete_tagged_records() override;
    /// Overwrites a row's values with another table's row, and leaves its tag; a missing row does
    /// nothing. Where memory ends, the values behind are empty.
    void copy_record(unsigned row, vekdb* source, unsigned sourceRow);
    /// The same from a record; null does nothing.
    void copy_record(unsigned row, const dbrecord* source);
    /// A free-standing record of this table's column count; the caller owns it.
    dbrecord* make_dummy_record() const override;
    /// Clears the changed flag of every record and the modified flag; the record count.
    unsigned clear_changed();

    // --- tags, of shown rows
    /// Keeps the low eight bits; nothing for a row that is not there.
    void set_tag(unsigned row, int value) override;
    /// 0 becomes 1, all else 0.
    void invert_tag(unsigned row) override;
    /// 0xFFFFFFFF for a row that is not there.
    unsigned get_tag(unsigned row) const override;
    /// Reaches the shown rows alone; `invert_all_tags` the hidden ones, too.
    void set_all_tags(int value) override;
    void invert_all_tags() override;
    /// The shown rows whose tag is not 0.
    unsigned get_num_tags() const override;
    /// Shows the rows that are tagged now, or with 0 all again. While tagged rows are shown no
    /// row is added, inserted or deleted.
    void set_show_tags_only(unsigned flag) override;
    unsigned get_show_tags_only() const override;
    /// Lists the tagged rows anew for being shown alone.
    void index_tags();

    // --- parameters: at most 40 pairs, names without regard to case
    /// The slot of a name, or 0xFFFFFFFF.
    unsigned find_param(const char* name) const;
    /// The value, or null. Valid until the parameter is replaced or the table is freed.
    const char* get_param_val(const char* name) override;
    /// Adds or replaces; 0, or 0xFFFFFFFF when refused (no name, no room, "VEKDB" by hand).
    /// Where memory ends the text is empty, and nothing is thrown.
    unsigned add_param(const char* name, const char* value) override;
    /// `add_param`, as both tables and views answer it.
    unsigned set_param_val(const char* name, const char* value) override;
    /// How many slots are in use.
    unsigned get_num_params() const;
    /// Name and value of a slot; "" when the slot is not in use.
    const char* get_param_name(unsigned slot) const;
    const char* get_param_text(unsigned slot) const;

    // --- values, of shown rows. Storing one that is not there gives false. An edit tells nobody;
    // `addToUpdate` inside a bracket does.
    /// Stores the identity in the column "cookie", where there is one, and enters the row under
    /// it for `getRowIndexByID`.
    bool set_field(unsigned row, const Cookie& cookie) override;
    /// As the record's `set_field`, leading white space dropped.
    bool set_field(unsigned row, unsigned field, const char* text) override;
    bool set_field(unsigned row, unsigned field, int value) override;
    bool set_field(unsigned row, unsigned field, double value) override;
    bool set_field(unsigned row, unsigned field, bool value) override;
    using VDBBase::set_field;
    /// Stores a value as it is, and only where it differs.
    bool setField(unsigned row, unsigned field, LightweightString<char> value);
    /// The null string for a row or column that is not there.
    LightweightString<char> getField(unsigned row, unsigned field) const override;
    /// Unlike the record's: false, and nothing written, for an empty value.
    bool in_field(unsigned row, unsigned field, char* buffer, int length) const override;
    bool in_field(unsigned row, unsigned field, int& value) const override;
    bool in_field(unsigned row, unsigned field, double& value) const override;
    bool in_field(unsigned row, unsigned field, bool& value) const override;

    // --- columns
    /// How many there are.
    unsigned get_num_fields() const override;
    /// "" for a column that is not there. Valid until columns are named, added or removed.
    const char* get_fieldname(unsigned field) const override;
    /// The longest value of a column in bytes, over all rows.
    unsigned get_fieldsize(unsigned field) const override;
    /// `none` for a column that is not there.
    DBFieldTypes::eType get_field_type(unsigned field) const override;
    /// False for a column that is not there. `none` makes a text column and sets the error record.
    bool set_fieldtype(unsigned field, DBFieldTypes::eType type) override;
    /// A column by name, without regard to case; 0xFFFFFFFF for none.
    unsigned get_fieldnum(LightweightString<char> name) const override;
    /// A column's former name still finds it; only `removeField` forgets old names.
    bool set_fieldname(unsigned field, const char* name) override;
    /// Does nothing: columns have no width.
    void setFieldWidth(unsigned field, int width);
    /// The new column's position, or that of the column which has the name already;
    /// 0xFFFFFFFF when there are 65,535 columns.
    unsigned addField(const DBFieldDesc& field);
    /// The same for several at once, which costs one pass over the rows; the positions.
    std::vector<unsigned> addFields(const std::vector<DBFieldDesc>& fields);
    /// Takes a column out with its values; nothing for an unknown name. Only while all rows are
    /// shown.
    void removeField(const LightweightString<char>& name);
    /// Whether both have the same column names, with regard to case, in the same order.
    bool sameColumns(const vekdb* other) const;
    /// Whether the column is the start or the end of a range of labels by its name: "Start time",
    /// "snd start", "start 24P code", "start keycode", "start camcode", "start inkcode" and the
    /// same with "End" or "end", written just so.
    bool isSpecialLabelField(unsigned long field) const;
    /// The minimum display width of a column of this name, 4 for unknown names.
    static std::int32_t getMinFieldSize(const char* name);

    // --- update batches: the only way in which anybody is told of changed values
    /// Opens a bracket; the depth. The outermost one forgets what was collected before.
    unsigned beginUpdate();
    /// Collects the identity of a record that was changed.
    void addToUpdate(const Cookie& cookie);
    /// The outermost call issues "recordsChanged" with the cookies collected, if any. Where
    /// memory ends the bracket is closed, and the cookies are lost.
    void endUpdate();
    /// Copies a row's values into a clip's settings, and collects its identity; false where the
    /// row or what the settings need is not there.
    bool update(configb* settings, int row);

    // --- files
    /// The file that loading and saving without a name use.
    void set_filename(LightweightString<wchar_t> name) override;
    LightweightString<wchar_t> get_filename() const override;
    /// Loads the table's own file; the result is the valid flag. At most `maxRecords` rows are
    /// read, none for 0 or less; `requireMagic` refuses files without a column header. Where
    /// memory ends the table is freed before the exception leaves. A file that is written to
    /// while it is read is read again, and after some attempts refused.
    void loadFromFile(int maxRecords, bool requireMagic);
    /// The same, with the rows that the choice takes. Saved over its file, the table leaves no
    /// others there.
    void loadFromFile(RowChoice& choice, bool requireMagic);
    /// The same from a file that the caller has opened, and closes: from its first byte on, where
    /// it has one to go back to. The table's file name then only tells the variant of the format.
    void loadFromDescriptor(int descriptor, int maxRecords, bool requireMagic);
    void loadFromDescriptor(int descriptor, RowChoice& choice, bool requireMagic);
    /// Reads the parameter block from the file's current line on; `header` holds the line behind
    /// it afterwards. 1 when that is the magic line, 2 when it is a line without a colon and no
    /// magic line follows, 0 when the file does not begin with parameters, 3 when it ends inside
    /// them or is malformed.
    int read_params(TextFile& file, dbrecord& header);
    /// Appends records from the file's current line on, up to an essentially empty line or one
    /// with another number of values than there are columns, which sets the error record. How
    /// many; none while the rows fill the capacity. `skipFirst` passes over the first line. The
    /// file's text stays as it is.
    unsigned add_text(TextFile& file, int skipFirst, int maxRecords);
    /// The same from the table's own file, whose first line is passed over; 0 when it cannot be
    /// read. A file with a header stops at it, unless the table has one column.
    unsigned load_text(int maxRecords);
    /// Writes all rows, also those not shown, and stores each one's tag in a column named "Tag".
    /// The number of records written, 0 when saving failed. Saving clears the changed flags, also
    /// when it fails, and leaves the modified flag as it is.
    ///
    /// What is written is not always what loads again. A table without parameters, as one that
    /// came from a plain .csv, makes a file that does not load: `add_param` once. A value is
    /// saved up to its first NUL, and loses white space at both ends when it is read. A column's
    /// name is cut at about 250 bytes. A parameter's name ends at its first colon, and its value
    /// must not hold a line end.
    ///
    /// Values of up to 4,094 bytes load as they were saved; longer ones can be set and are saved
    /// whole, but loading takes 4,095 bytes of a value, drops the byte of the line behind these
    /// and begins another value with what follows. The last value of a line may so have 4,095
    /// bytes. Any other of 4,095, and mostly a longer one, gives its line a value too many, at
    /// which loading ends as at every line of the wrong length; but one of 4,096 bytes that is not
    /// the last loses a byte and runs into the value behind it, and no error is set.
    int save_text() override;
    /// Writes the tagged records only; 1, or 0 when saving failed.
    int save_tags() override;
    /// As `save_text`, with parameters and names alone before the records. Such a file loads
    /// only where no header is required.
    int save_text_without_header();
    /// Appends a line for each parameter.
    void save_params(TextFile& file) const;
    /// Appends the lines of the column header, or only the one of the names.
    void save_column_header(TextFile& file, bool namesOnly) const;

    // --- sorting and lookup
    /// Sorts by one column, and no more by a list set before.
    void set_sortfield(int field) override;
    /// `fields` ends at its first negative entry, stays the caller's, must outlive the sorts,
    /// and must be writable: entries past the last column are overwritten with -1. Null sorts
    /// by nothing.
    void set_sortfields(int* fields) override;
    /// Compares values from so many characters behind their front on, or, when negative, the
    /// last so many characters.
    void set_sort_offset(int offset) override;
    /// Sets the process-wide state of `vekdb/sort.h` up for this table; its sort list.
    int* sortPrepare(int direction, int forceNormal) override;
    /// Sorts all rows in place, also hidden ones, descending when `direction` is negative. Rows
    /// that compare equal keep their order. One sort at a time in a process. When memory is
    /// exhausted the rows stand as they did.
    void sort(int direction, int forceNormal) override;
    /// The first shown row whose value in a column is `value`, with regard to case, or begins
    /// with its first `prefixLength` characters when that is not 0; 0xFFFFFFFF for none. A
    /// cookie is looked up by its identity first, as `getRowIndexByID` does, and so as stale.
    unsigned findFirst(const char* field, const char* value, int prefixLength) override;
    /// The row whose "cookie" column holds an identity, or 0xFFFFFFFF; what else the cookie
    /// carries does not count. The rows are entered on first use, from those shown then, and
    /// forgotten by `insert_records` and `delete_records`, also of no rows. In between nothing is
    /// noticed: after a sort, after appending, loading or merging rows, after a change of a
    /// "cookie" value as text and while other rows are shown the answer may be another row's
    /// number, or none for a row that is there. `insert_records(0, 0)` makes it right again.
    unsigned getRowIndexByID(const Cookie& id);

    // --- query
    /// Asks for rows whose values contain those of `query`, column by column and without regard
    /// to case; blank ones ask for nothing. The record is not kept. One that is null or has
    /// fewer values than there are columns leaves the old query in force.
    ///
    /// A start or an end column of labels asks for its range, whichever of the two the text stands
    /// in: a row matches whose start begins with the text, or lies before it while the end is not
    /// before it. Values are compared from their first byte, as many as the text has, with regard
    /// to case and whatever the column's type. A row without a start does not match, one without
    /// an end only by its start. Texts in both columns must both lie in the range. What counts is
    /// the name that a column had when the table was made or loaded, not from a plain .csv, or the
    /// column added: renamed later, one of these matches whatever is asked.
    void set_query(dbrecord* query) override;
    /// Sets the criteria of each column, of the columns of a range the first one's text alone; too
    /// few of them leave the old query in force.
    void setQuery(const std::vector<TextSearch::Criteria>& criteria);
    /// Tags the shown rows that match with 1 and, unless `keepTags`, the others with 0; how many
    /// match, 0 without a query.
    unsigned tag_matching_records(int keepTags) override;
    /// 1 or 0; 0xFFFFFFFF for a row that does not exist and without a query.
    unsigned match_record(int row) const override;
    /// Whether a record answers what the query asks of one column.
    int match_field(dbrecord* record, int field) const;
    /// Whether a value satisfies the criteria, as its column's type is read: timecodes by their
    /// digits, compact ones in their punctuated form, dates as the C library prints them.
    int matchField(const dbrecord* record, unsigned short field,
                   const TextSearch::Criteria& criteria) const;
    /// Whether the range from start to end that a start or end label column belongs to holds
    /// the text of the column's first criterion.
    int found_in_special_label_field(dbrecord* record, int field) const;

    // --- merging
    /// Appends every row of a table or view with the columns that both have by name; timecodes
    /// are converted where one holds them punctuated and the other compact. 1, or 0 when no
    /// column is shared. A table may be merged into itself. When memory is exhausted, rows that
    /// were appended already stay, the last ones perhaps empty.
    int merge_all_matching(VDBBase* source);
    /// Appends copies of all rows of a table of the same revision, column types and names (with
    /// regard to case), hidden rows included; how many, or 0xFFFFFFFF when refused. Tags are not
    /// copied, no notice is sent, and the modified flag stays. Where memory ends, the rows that
    /// were appended stay.
    unsigned add_vekdb(vekdb* source);
    /// Sorts by the column and tags the first row of each value, without regard to case; the
    /// number of tags. The column stays the sort field and all rows are shown afterwards, also
    /// where memory ends; the rows stand as they did then, and none is tagged.
    unsigned tag_all_different(int field) override;

    /// The row itself: there is nothing below a table.
    unsigned baseIndex(unsigned row) const override { return row; }

private:
    friend class RowCopies;
    friend class TextRows;
    friend struct TableInside;
    void recordChanged() override;
    void recordRead() override;
    bool isDeletionHeard() const;
    void tellDeleted(const RowNumbers& rows);
    void buildColumns(const DBFieldDesc* fields, std::size_t count);
    void copyColumns(const vekdb& source);
    void copyParameters(const vekdb& source);
    void copyRows(const vekdb& source);
    dbrecord* newRow();
    struct Load;
    void load(const Load& load);
    void fillFromFile(const Load& load);
    bool fillWhileReading(const Load& load);
    void fillFrom(TextFile& file, const Load& load);
    bool mayBeOverridden() const;
    void enterCookieRows();
    unsigned tagPlainRows(bool keepTags);
    struct ColumnCopy;
    class RecordMerger;
    void appendCopies(VDBBase& source, const std::vector<ColumnCopy>& columns);
    void appendRecords(const vekdb& source, const std::vector<ColumnCopy>& columns);
    unsigned placeOfField(const DBFieldDesc& field);
    void resizeRecords();
    bool fits(const vekdb& source) const;

    TableParts& parts() { return *parts_; }
    const TableParts& parts() const { return *parts_; }

    TableParts* parts_;
};
