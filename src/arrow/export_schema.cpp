#include "arrow/export_schema.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "arrow/utf8_text.h"

namespace {

// What a schema points to. The children stand in the parent, and what each points to is its own.
struct SchemaParts {
    std::string format;
    std::string name;
    std::string metadata;
    std::vector<ArrowSchema> children;
    std::vector<ArrowSchema*> places;

    explicit SchemaParts(std::size_t count = 0) : children(count), places(count) {
        for (std::size_t i = 0; i < count; ++i) places[i] = &children[i];
    }
    SchemaParts(const SchemaParts&) = delete;
    SchemaParts& operator=(const SchemaParts&) = delete;
    ~SchemaParts() {
        for (ArrowSchema& child : children) {
            if (child.release != nullptr) child.release(&child);
        }
    }
};

void releaseSchema(ArrowSchema* schema) {
    delete static_cast<SchemaParts*>(schema->private_data);
    schema->release = nullptr;
}

void fillIn(std::unique_ptr<SchemaParts> parts, ArrowSchema& out) {
    out = {};
    out.format = parts->format.c_str();
    out.name = parts->name.c_str();
    out.metadata = parts->metadata.empty() ? nullptr : parts->metadata.data();
    out.n_children = static_cast<std::int64_t>(parts->children.size());
    out.children = parts->places.empty() ? nullptr : parts->places.data();
    out.release = releaseSchema;
    out.private_data = parts.release();
}

const char* formatOf(const ArrowExport& how) {
    if (how.bytes == ArrowBytes::binary) return hasLargeTexts(how) ? "Z" : "z";
    return hasLargeTexts(how) ? "U" : "u";
}

// Names and texts of metadata are read as UTF-8.
ArrowPairs parameterPairs(const ArrowPairs& parameters) {
    ArrowPairs pairs;
    for (const ArrowPair& parameter : parameters) {
        std::string key(arrow_key::parameter);
        key += parameter.key;
        pairs.push_back({std::move(key), parameter.value});
    }
    return pairs;
}

void makeColumn(const ArrowColumn& column, const ArrowExport& how, ArrowSchema& out) {
    auto parts = std::make_unique<SchemaParts>();
    parts->format = formatOf(how);
    ArrowPairs pairs;
    if (!column.type.empty()) pairs.push_back({std::string(arrow_key::type), column.type});
    if (wellFormedFront(column.name) == column.name.size()) {
        parts->name = column.name;
    } else {
        parts->name = withReplacements(column.name);
        pairs.push_back({std::string(arrow_key::name), column.name});
    }
    parts->metadata = encodedMetadata(pairs);
    fillIn(std::move(parts), out);
}

std::string nameOfTags(const std::vector<ArrowColumn>& columns) {
    const std::string first = "Tag";
    std::string name = first;
    const auto isTaken = [&](const ArrowColumn& column) { return column.name == name; };
    for (unsigned n = 2; std::any_of(columns.begin(), columns.end(), isTaken); ++n) {
        name = first + std::to_string(n);
    }
    return name;
}

void makeTags(const std::vector<ArrowColumn>& columns, ArrowTags tags, ArrowSchema& out) {
    auto parts = std::make_unique<SchemaParts>();
    const bool areFlags = tags == ArrowTags::flags;
    parts->format = areFlags ? "b" : "C";
    parts->name = nameOfTags(columns);
    parts->metadata =
        encodedMetadata({{std::string(arrow_key::tag), areFlags ? "flags" : "numbers"}});
    fillIn(std::move(parts), out);
}

}  // namespace

bool hasLargeTexts(const ArrowExport& how) {
    return how.bytesPerBatch > std::numeric_limits<std::int32_t>::max();
}

void makeSchema(const ArrowPicture& picture, const ArrowExport& how, ArrowSchema& out) {
    const std::size_t columns = picture.columns.size();
    const bool withTags = how.tags != ArrowTags::none;
    auto parts = std::make_unique<SchemaParts>(columns + (withTags ? 1 : 0));
    parts->format = "+s";
    parts->metadata = encodedMetadata(parameterPairs(picture.parameters));
    for (std::size_t i = 0; i < columns; ++i) {
        makeColumn(picture.columns[i], how, parts->children[i]);
    }
    if (withTags) makeTags(picture.columns, how.tags, parts->children[columns]);
    fillIn(std::move(parts), out);
}
