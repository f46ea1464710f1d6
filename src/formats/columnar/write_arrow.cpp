#include "arrow/metadata.h"
#include "formats/columnar/arrow_engine.h"
#include "formats/columnar/column_batches.h"
#include "formats/columnar/engine_names.h"
#include "formats/json/json.h"
#include "formats/text/width.h"
#include "formats/writing/sheet_facts.h"
#include "formats/writing/write_formats.h"

// What a log says besides its cells stands in the metadata, under the names under which a stream
// of Arrow has it.

namespace vek::formats {

namespace {

std::string pairOf(std::string_view key, std::string_view value) {
    return concat("[", jsonString(key), ",", jsonString(value), "]");
}

std::string typeText(DBFieldTypes::eType type) {
    if (const char* name = vekdb_fieldtype_to_string(type)) return name;
    const char letter = static_cast<char>(type);
    return letter == '\0' ? std::string() : std::string(1, letter);
}

std::string fieldOf(const std::string& name, const std::string& type) {
    return concat("{\"name\":", jsonString(name), ",\"metadata\":[",
                  type.empty() ? "" : pairOf(arrow_key::type, type), "]}");
}

std::string fieldsOf(const Sheet& sheet, Losses& losses) {
    std::string fields;
    const std::vector<std::string> names = namesForEngines(sheet, losses);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto type = sheet.log.table->get_field_type(sheet.columns[i]);
        fields += concat(i == 0 ? "" : ",", fieldOf(names[i], typeText(type)));
    }
    return fields;
}

std::string metadataOf(const Log& log, Losses& losses) {
    std::string pairs;
    for (const ParameterText& parameter : ownParameters(log)) {
        const std::string key = concat(arrow_key::parameter, parameter.name);
        if (!isUtf8(key) || !isUtf8(parameter.value)) {
            losses.add("parameters that are no UTF-8", inQuotes(parameter.name));
        }
        pairs += concat(pairs.empty() ? "" : ",", pairOf(key, parameter.value));
    }
    return pairs;
}

std::string listOf(const std::vector<ColumnBatch>& batches) {
    std::string list;
    for (const ColumnBatch& batch : batches) {
        list += concat(list.empty() ? "[" : ",[", std::to_string(batch.rows));
        for (const std::size_t bytes : batch.bytes) list += concat(",", std::to_string(bytes));
        list += ']';
    }
    return list;
}

}  // namespace

void writeArrow(const Sheet& sheet, Output& out, Losses& losses) {
    requireColumns(sheet, out.name());
    EngineFiles files;
    files.require(out.name());
    const std::string fields = fieldsOf(sheet, losses);
    const std::string metadata = metadataOf(sheet.log, losses);
    const auto batches = writeBatches(sheet, files.rows, out.name(), losses);
    files.require(out.name());
    runArrow(concat("{\"fields\":[", fields, "],\"metadata\":[", metadata, "],\"batches\":[",
                    listOf(batches), "]}"),
             files, out.name());
    handOn(files.made, "ARROW1", "the library for Arrow", out);
}

}  // namespace vek::formats
