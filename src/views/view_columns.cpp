#include <cstring>
#include <string_view>
#include <unordered_map>

#include <vekdb/host/diagnostics.h>
#include <vekdb/host/grow_string.h>
#include <vekdb/host/keyed_hash.h>
#include "views/view_parts.h"

namespace {

constexpr std::string_view kSeparators = "\t,";

/// Finds columns by exact name; the first of a name counts. Made for one pass over a spec, so
/// that selecting all of many columns takes no search for each.
class ColumnFinder {
public:
    explicit ColumnFinder(const VDBBase* source) {
        const unsigned columns = source != nullptr ? source->get_num_fields() : 0;
        for (unsigned i = 0; i < columns; ++i) {
            if (const char* name = source->get_fieldname(i)) {
                columns_.emplace(name, i);
            }
        }
    }

    const unsigned* find(std::string_view name) const {
        const auto found = columns_.find(name);
        return found != columns_.end() ? &found->second : nullptr;
    }

private:
    std::unordered_map<std::string_view, unsigned, Quor::KeyedHash> columns_;
};

/// Takes the next piece off a spec; empty when none is left.
std::string_view nextPiece(std::string_view& spec) {
    spec.remove_prefix(std::min(spec.find_first_not_of(kSeparators), spec.size()));
    const std::string_view piece = spec.substr(0, spec.find_first_of(kSeparators));
    spec.remove_prefix(piece.size());
    return piece;
}

void pushFront(std::unique_ptr<SExpr>& list, VDBBase* source, unsigned column) {
    auto element = std::make_unique<SExprRef>(source, column);
    auto cell = std::make_unique<SExpr>();
    cell->element = element.release();
    cell->next = list.release();
    list = std::move(cell);
}

void selectColumn(std::unique_ptr<SExpr>& list, VDBBase* source, const ColumnFinder& columns,
                  std::string_view name) {
    if (const unsigned* column = columns.find(name)) {
        pushFront(list, source, *column);
        return;
    }
    debug_printf("Warning: VDBView::fieldSpec, non-existant fieldname \"%.*s\".\n",
                 static_cast<int>(name.size()), name.data());
}

// The columns of a spec, the last one in front.
std::unique_ptr<SExpr> selectColumns(VDBBase* source, std::string_view spec) {
    std::unique_ptr<SExpr> list;
    std::string_view piece = nextPiece(spec);
    if (piece.empty()) {
        return list;
    }
    const ColumnFinder columns(source);
    for (; !piece.empty(); piece = nextPiece(spec)) {
        selectColumn(list, source, columns, piece);
    }
    return list;
}

}  // namespace

// The text is copied before the old one goes: it may be the old one itself. The new columns are
// all had before the list changes.
SExpr* VDBViewRep::fieldSpec(const char* spec) {
    const LightweightString<char> text(spec);
    std::unique_ptr<SExpr> added = selectColumns(source(), text.view());
    parts_->spec = text;
    parts_->hasSpec = spec != nullptr;
    if (spec == nullptr) {
        return parts_->fields.get();
    }
    SExpr* end = added.get();
    while (end != nullptr && end->next != nullptr) {
        end = end->next;
    }
    if (end != nullptr) {
        end->next = parts_->fields.release();
        parts_->fields = std::move(added);
    }
    parts_->fields.reset(SExpr::reverse(parts_->fields.release()));
    return parts_->fields.get();
}

void VDBViewRep::useSpec(const char* spec) {
    GrowString all;
    if (spec == nullptr) {
        identityFieldSpec(all);
    }
    fieldSpec(spec != nullptr ? spec : all);
}

const char* VDBViewRep::fieldSpecText() const {
    return parts_->hasSpec ? parts_->spec.c_str() : nullptr;
}

const SExpr* VDBViewRep::fieldList() const {
    return parts_->fields.get();
}

void VDBViewRep::identityFieldSpec(GrowString& out) const {
    const VDBBase* from = source();
    const unsigned columns = from != nullptr ? from->get_num_fields() : 0;
    for (unsigned i = 0; i < columns; ++i) {
        if (i > 0) {
            out.append(',');
        }
        out.append(from->get_fieldname(i));
    }
}

int VDBViewRep::dbFieldIndex(const char* name) const {
    const VDBBase* from = source();
    const unsigned columns = from != nullptr && name != nullptr ? from->get_num_fields() : 0;
    for (unsigned i = 0; i < columns; ++i) {
        const char* column = from->get_fieldname(i);
        if (column != nullptr && std::strcmp(column, name) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void VDBViewRep::asString(GrowString& out) const {
    out.append("fieldSpec: ");
    out.append(fieldSpecText());
    out.append("\n");
    if (fieldList() != nullptr) {
        out.append("fields: ");
        fieldList()->asString(out);
        out.append("\n");
    }
}
