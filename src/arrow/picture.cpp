#include "arrow/picture.h"

#include <vekdb/host/assoc_list.h>
#include <vekdb/table.h>
#include <vekdb/views/view_rep.h>

namespace {

std::string typeText(DBFieldTypes::eType type) {
    if (const char* name = vekdb_fieldtype_to_string(type)) return name;
    const char letter = static_cast<char>(type);
    return letter == '\0' ? std::string() : std::string(1, letter);
}

std::vector<ArrowColumn> columnsOf(const VDBBase& source) {
    std::vector<ArrowColumn> columns;
    const unsigned count = source.get_num_fields();
    columns.reserve(count);
    for (unsigned i = 0; i < count; ++i) {
        columns.push_back({source.get_fieldname(i), typeText(source.get_field_type(i))});
    }
    return columns;
}

ArrowPairs parametersOf(const vekdb& table) {
    ArrowPairs pairs;
    for (unsigned i = 0; i < table.get_num_params(); ++i) {
        pairs.push_back({table.get_param_name(i), table.get_param_text(i)});
    }
    return pairs;
}

ArrowPairs parametersOf(const VDBViewRep& view) {
    ArrowPairs pairs;
    for (AssocListIter at(view.params()); at; ++at) {
        pairs.push_back({at->name.c_str(), at->value.c_str()});
    }
    return pairs;
}

ArrowPairs parametersOf(const VDBBase& source) {
    if (const auto* view = dynamic_cast<const VDBViewRep*>(&source)) return parametersOf(*view);
    if (const auto* table = dynamic_cast<const vekdb*>(&source)) return parametersOf(*table);
    return {};
}

void takeRows(const VDBBase& source, bool withTags, ArrowPicture& picture) {
    const unsigned count = source.get_num_records();
    picture.rows.reserve(count);
    picture.tags.reserve(withTags ? count : 0);
    for (unsigned i = 0; i < count; ++i) {
        const dbrecord* record = source.get_record(i);
        if (record == nullptr) continue;
        picture.rows.emplace_back(*record);
        if (withTags) picture.tags.push_back(static_cast<std::uint8_t>(source.get_tag(i)));
    }
}

}  // namespace

ArrowPicture pictureOf(const VDBBase& source, bool withTags) {
    ArrowPicture picture;
    picture.parameters = parametersOf(source);
    picture.columns = columnsOf(source);
    takeRows(source, withTags, picture);
    return picture;
}
