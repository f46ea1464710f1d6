#include <vekdb/arrow/arrow.h>

#include <cstring>
#include <utility>
#include <vector>

#include <vekdb/row_copies.h>
#include <vekdb/table.h>
#include "arrow/import_cells.h"
#include "arrow/import_failure.h"
#include "arrow/metadata.h"

namespace {

constexpr std::size_t mostColumns = 0xFFFF;
constexpr std::int64_t mostRows = 0x7FFFFFFF;

// Releases what was filled in.
template <class Structure>
class Held {
public:
    Held() = default;
    explicit Held(Structure& from) : structure_(from) { from.release = nullptr; }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() {
        if (structure_.release != nullptr) structure_.release(&structure_);
    }

    Structure* get() { return &structure_; }
    Structure* operator->() { return &structure_; }
    Structure& operator*() { return structure_; }

private:
    Structure structure_ = {};
};

struct Field {
    std::string name;
    DBFieldTypes::eType type = DBFieldTypes::text;
    ArrowColumnType values;
    bool isTag = false;
};

std::string placeOf(std::size_t column, std::string_view name) {
    return "column " + std::to_string(column + 1) + " \"" + std::string(name) + "\"";
}

ArrowPairs metadataOf(const ArrowSchema& schema) {
    ArrowPairs pairs;
    if (!decodeMetadata(schema.metadata, pairs)) {
        throw ArrowImportFailure{"its metadata has a text of less than no bytes"};
    }
    return pairs;
}

bool mayHoldTags(const ArrowColumnType& column) {
    const auto kind = column.type.kind;
    return column.dictionary == nullptr &&
           (kind == ArrowType::Kind::booleans || kind == ArrowType::Kind::unsignedNumbers);
}

Field fieldOf(const ArrowSchema& schema) {
    const ArrowPairs pairs = metadataOf(schema);
    Field field;
    field.values = columnTypeOf(schema);
    const std::string* const name = findPair(pairs, arrow_key::name);
    field.name = name != nullptr ? *name : schema.name != nullptr ? schema.name : "";
    if (const std::string* type = findPair(pairs, arrow_key::type)) {
        const auto known = vekdb_string_to_fieldtype(type->c_str());
        field.type = known != DBFieldTypes::none ? known : DBFieldTypes::text;
    }
    field.isTag = findPair(pairs, arrow_key::tag) != nullptr && mayHoldTags(field.values);
    return field;
}

// A failure inside of a column says which one it is.
template <class Call>
auto inColumn(std::size_t column, std::string_view name, Call call) {
    try {
        return call();
    } catch (ArrowImportFailure& failure) {
        throw ArrowImportFailure{placeOf(column, name) + ": " + failure.why};
    }
}

std::vector<Field> fieldsOf(const ArrowSchema& schema) {
    if (schema.format == nullptr || std::strcmp(schema.format, "+s") != 0) {
        throw ArrowImportFailure{"its batches are no structures of columns, format \"+s\""};
    }
    if (schema.n_children < 0 || (schema.n_children > 0 && schema.children == nullptr)) {
        throw ArrowImportFailure{"it has no columns where it tells of some"};
    }
    std::vector<Field> fields;
    for (std::int64_t i = 0; i < schema.n_children; ++i) {
        if (schema.children[i] == nullptr) throw ArrowImportFailure{"it has a column that is null"};
        const ArrowSchema& child = *schema.children[i];
        const char* const name = child.name != nullptr ? child.name : "";
        fields.push_back(inColumn(fields.size(), name, [&] { return fieldOf(child); }));
    }
    return fields;
}

// A table's first parameter makes that of the revision, which is refused as a first one itself:
// the second call finds it.
void giveParameters(vekdb& table, const ArrowPairs& pairs) {
    for (const ArrowPair& pair : pairs) {
        if (!pair.key.starts_with(arrow_key::parameter)) continue;
        const char* const name = pair.key.c_str() + arrow_key::parameter.size();
        if (table.add_param(name, pair.value.c_str()) != 0) {
            table.add_param(name, pair.value.c_str());
        }
    }
    if (table.get_num_params() == 0) table.add_param("VEKDB", "Rev 1");
}

class Import {
public:
    explicit Import(ArrowArrayStream& stream) : stream_(stream) {}

    std::unique_ptr<vekdb> table() {
        openTable();
        while (takeBatch()) {
        }
        for (const auto& [row, tag] : tags_) table_->set_tag(row, tag);
        table_->clear_changed();
        return std::move(table_);
    }

private:
    void check(int error);
    void openTable();
    bool takeBatch();
    void checkBatch(const ArrowArray& batch) const;
    std::vector<ArrowCells> columnsOf(const ArrowArray& batch) const;
    void takeRows(const ArrowArray& batch, std::vector<ArrowCells>& columns);
    std::string_view cellOf(std::size_t column, ArrowCells& cells, std::int64_t row) const;

    ArrowArrayStream& stream_;
    std::vector<Field> fields_;
    std::unique_ptr<vekdb> table_;
    std::unique_ptr<RowCopies> rows_;
    std::vector<std::pair<unsigned, int>> tags_;
};

void Import::check(int error) {
    if (error == 0) return;
    const char* const told =
        stream_.get_last_error != nullptr ? stream_.get_last_error(&stream_) : nullptr;
    throw ArrowImportFailure{std::string("the stream failed: ") +
                             (told != nullptr ? told : std::strerror(error))};
}

void Import::openTable() {
    Held<ArrowSchema> schema;
    check(stream_.get_schema(&stream_, schema.get()));
    if (schema->release == nullptr) throw ArrowImportFailure{"the stream has no schema"};
    fields_ = fieldsOf(*schema);
    std::vector<DBFieldDesc> columns;
    for (const Field& field : fields_) {
        if (!field.isTag) columns.push_back({field.name.c_str(), field.type});
    }
    if (columns.size() > mostColumns) {
        throw ArrowImportFailure{"it has " + std::to_string(columns.size()) +
                                 " columns, and a table at most 65535"};
    }
    table_ = std::make_unique<vekdb>(columns);
    giveParameters(*table_, metadataOf(*schema));
    rows_ = std::make_unique<RowCopies>(*table_);
}

void Import::checkBatch(const ArrowArray& batch) const {
    if (batch.n_children != static_cast<std::int64_t>(fields_.size()) ||
        (batch.n_children > 0 && batch.children == nullptr)) {
        throw ArrowImportFailure{"a batch has " + std::to_string(batch.n_children) +
                                 " columns, and the stream " + std::to_string(fields_.size())};
    }
    if (batch.length < 0 || batch.offset < 0 || batch.offset > mostRows * 4096) {
        throw ArrowImportFailure{"a batch has " + std::to_string(batch.length) + " rows from row " +
                                 std::to_string(batch.offset)};
    }
    if (batch.length > mostRows - std::int64_t{table_->get_num_records()}) {
        throw ArrowImportFailure{"it has more rows than a table, which has at most 2147483647"};
    }
}

std::vector<ArrowCells> Import::columnsOf(const ArrowArray& batch) const {
    std::vector<ArrowCells> columns;
    columns.reserve(fields_.size());
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        inColumn(i, fields_[i].name, [&] {
            if (batch.children[i] == nullptr) throw ArrowImportFailure{"its array is null"};
            columns.emplace_back(fields_[i].values, *batch.children[i]);
            if (columns.back().length() - batch.length < batch.offset) {
                throw ArrowImportFailure{"it has fewer values than its batch has rows"};
            }
        });
    }
    return columns;
}

std::string_view Import::cellOf(std::size_t column, ArrowCells& cells, std::int64_t row) const {
    return inColumn(column, fields_[column].name, [&] {
        const std::string_view text = cells.at(row);
        if (text.find('\0') != std::string_view::npos) {
            throw ArrowImportFailure{"a value has a zero byte, which no cell of a log holds"};
        }
        return text;
    });
}

void Import::takeRows(const ArrowArray& batch, std::vector<ArrowCells>& columns) {
    const bool mayMiss = batch.null_count != 0 && batch.n_buffers > 0 && batch.buffers != nullptr &&
                         batch.buffers[0] != nullptr;
    const auto* const there =
        mayMiss ? static_cast<const std::uint8_t*>(batch.buffers[0]) : nullptr;
    std::vector<std::string_view> values;
    for (std::int64_t row = batch.offset; row < batch.offset + batch.length; ++row) {
        const bool isMissing = there != nullptr && (there[row / 8] >> (row % 8) & 1) == 0;
        values.clear();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (!fields_[i].isTag) {
                values.push_back(isMissing ? "" : cellOf(i, columns[i], row));
            } else if (!isMissing && !columns[i].isNull(row) && columns[i].number(row) != 0) {
                tags_.emplace_back(table_->get_num_records(),
                                   static_cast<int>(columns[i].number(row)));
            }
        }
        if (!values.empty()) rows_->append(values.data(), values.size());
    }
}

bool Import::takeBatch() {
    Held<ArrowArray> batch;
    check(stream_.get_next(&stream_, batch.get()));
    if (batch->release == nullptr) return false;
    checkBatch(*batch);
    std::vector<ArrowCells> columns = columnsOf(*batch);
    takeRows(*batch, columns);
    return true;
}

}  // namespace

std::unique_ptr<vekdb> importArrow(ArrowArrayStream& stream, LightweightString<char>* why) {
    Held<ArrowArrayStream> held(stream);
    try {
        if (held->release == nullptr) throw ArrowImportFailure{"the stream was released already"};
        return Import(*held).table();
    } catch (const ArrowImportFailure& failure) {
        if (why != nullptr) *why = LightweightString<char>(std::string_view(failure.why));
        return nullptr;
    }
}
