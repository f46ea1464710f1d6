#include "formats/json/json_writer.h"

#include "formats/failure.h"
#include "formats/json/json.h"

namespace vek::formats {

void JsonWriter::newLine() {
    pending_ += '\n';
    pending_.append(2 * levels_.size(), ' ');
}

// What stands in front of a value: a comma, and a line of its own or a blank.
void JsonWriter::beginValue() {
    if (levels_.empty()) return;
    Level& level = levels_.back();
    if (!level.isEmpty) pending_ += level.isOnOneLine ? ", " : ",";
    if (!level.isOnOneLine) newLine();
    level.isEmpty = false;
    if (pending_.size() < 4096) return;
    out_.write(pending_);
    pending_.clear();
}

void JsonWriter::beginField(std::string_view name) {
    beginValue();
    pending_ += concat(jsonString(name), ": ");
}

void JsonWriter::begin(char opening, char closing, bool isOnOneLine) {
    const bool isWithinLine = !levels_.empty() && levels_.back().isOnOneLine;
    pending_ += opening;
    levels_.push_back({closing, isOnOneLine || isWithinLine});
}

void JsonWriter::text(std::string_view name, std::string_view value) {
    beginField(name);
    pending_ += jsonString(value);
}

void JsonWriter::number(std::string_view name, std::size_t value) {
    beginField(name);
    pending_ += std::to_string(value);
}

void JsonWriter::flag(std::string_view name, bool value) {
    beginField(name);
    pending_ += value ? "true" : "false";
}

void JsonWriter::nothing(std::string_view name) {
    beginField(name);
    pending_ += "null";
}

void JsonWriter::textOrNothing(std::string_view name, std::string_view value) {
    value.empty() ? nothing(name) : text(name, value);
}

void JsonWriter::numberOrNothing(std::string_view name, std::size_t value) {
    value == 0 ? nothing(name) : number(name, value);
}

void JsonWriter::beginArray(std::string_view name) {
    beginField(name);
    begin('[', ']');
}

void JsonWriter::beginObject(std::string_view name) {
    beginField(name);
    begin('{', '}');
}

void JsonWriter::beginObject() {
    beginValue();
    begin('{', '}');
}

void JsonWriter::beginRow() {
    beginValue();
    begin('{', '}', true);
}

void JsonWriter::element(std::string_view text) {
    beginValue();
    pending_ += jsonString(text);
}

void JsonWriter::readyElement(std::string_view json) {
    beginValue();
    pending_ += json;
}

void JsonWriter::end() {
    const Level level = levels_.back();
    levels_.pop_back();
    if (!level.isOnOneLine && !level.isEmpty) newLine();
    pending_ += level.closing;
    if (!levels_.empty()) return;
    out_.write(pending_ + "\n");
    pending_.clear();
}

}  // namespace vek::formats
