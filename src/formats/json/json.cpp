#include "formats/json/json.h"

#include <iterator>
#include <nlohmann/json.hpp>

#include "formats/json/json_text.h"
#include "formats/text/width.h"

namespace vek::formats {

namespace {

using nlohmann::json;

// How far the parser has read, in a text with another one in front.
struct Place {
    const char* at;
    const char* endBefore;
    const char* text;
    std::size_t line;
};

// Feeds the parser and notes its place. Iterators of one place move together: the parser reads
// forward only.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* at, Place* place) : at_(at), place_(place) {}
    reference operator*() const { return *at_; }
    CountingIterator& operator++() {
        if (*at_ == '\n') ++place_->line;
        if (++at_ == place_->endBefore) at_ = place_->text;
        place_->at = at_;
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return at_ == other.at_; }
    bool operator!=(const CountingIterator& other) const { return at_ != other.at_; }

private:
    const char* at_;
    Place* place_;
};

// Writes what is parsed as compact JSON.
class CompactWriter : public json::json_sax_t {
public:
    explicit CompactWriter(std::string& out) : out_(out) {}

    bool null() override { return value("null"); }
    bool boolean(bool is) override { return value(is ? "true" : "false"); }
    bool number_integer(number_integer_t n) override { return value(std::to_string(n)); }
    bool number_unsigned(number_unsigned_t n) override { return value(std::to_string(n)); }
    bool number_float(number_float_t, const string_t& text) override { return value(text); }
    bool string(string_t& text) override { return value(jsonString(text)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open('{'); }
    bool end_object() override { return close('}'); }
    bool start_array(std::size_t) override { return open('['); }
    bool end_array() override { return close(']'); }
    bool key(string_t& name) override {
        out_ += jsonString(name) + ":";
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const json::exception&) override {
        return false;
    }

private:
    bool value(const std::string& text) {
        out_ += text + ",";
        return true;
    }
    bool open(char bracket) {
        out_ += bracket;
        return true;
    }
    bool close(char bracket) {
        if (out_.ends_with(',')) out_.pop_back();
        return value(std::string(1, bracket));
    }

    std::string& out_;
};

// Accepts rows of values, alone or in an array, and notes what is anything else.
class RowJudge : public json::json_sax_t {
public:
    RowJudge(JsonFault& fault, const std::size_t& line) : fault_(fault), line_(line) {}

    bool null() override { return value("null"); }
    bool boolean(bool is) override { return value(is ? "true" : "false"); }
    bool number_integer(number_integer_t n) override { return value(std::to_string(n)); }
    bool number_unsigned(number_unsigned_t n) override { return value(std::to_string(n)); }
    bool number_float(number_float_t, const string_t& text) override { return value(text); }
    bool string(string_t& text) override { return isInRow() || refuse(jsonString(text)); }
    bool binary(binary_t&) override { return refuse("binary data"); }
    bool key(string_t&) override { return true; }

    bool start_object(std::size_t) override {
        ++depth_;
        if (!isInRow()) rowDepth_ = depth_;
        return true;
    }
    bool end_object() override {
        if (depth_-- == rowDepth_) rowDepth_ = 0;
        return true;
    }
    bool start_array(std::size_t) override {
        return ++depth_ == 1 || isInRow() || refuse("an array in an array");
    }
    bool end_array() override {
        --depth_;
        return true;
    }

    bool parse_error(std::size_t, const std::string& token, const json::exception&) override {
        return refuse("\"" + token + "\"");
    }

private:
    bool isInRow() const { return rowDepth_ != 0; }
    bool value(const std::string& text) { return isInRow() || refuse(text); }
    bool refuse(const std::string& found) {
        fault_ = {line_, found};
        return false;
    }

    JsonFault& fault_;
    const std::size_t& line_;
    std::size_t depth_ = 0;
    std::size_t rowDepth_ = 0;  // the depth of the row that is open, 0 for none
};

}  // namespace

JsonFault faultOfJsonRows(std::string_view before, std::string_view text, std::size_t line) {
    JsonFault fault;
    const char* const start = before.empty() ? text.data() : before.data();
    const char* const end = text.data() + text.size();
    Place place{start, before.data() + before.size(), text.data(), line};
    if (before.empty()) place.endBefore = nullptr;
    RowJudge judge(fault, place.line);
    auto skipBlanks = [&] {
        while (place.at != end && static_cast<unsigned char>(*place.at) <= ' ') {
            if (*place.at++ == '\n') ++place.line;
        }
    };
    for (skipBlanks(); place.at != end && fault.line == 0; skipBlanks()) {
        CountingIterator from(place.at, &place);
        json::sax_parse(from, CountingIterator(end, &place), &judge, json::input_format_t::json,
                        false);
    }
    return fault;
}

std::optional<CompactJson> compactJson(std::string_view text) {
    CompactJson found;
    CompactWriter writer(found.text);
    const char* const end = text.data() + text.size();
    Place place{text.data(), nullptr, nullptr, 0};
    CountingIterator from(place.at, &place);
    if (!json::sax_parse(from, CountingIterator(end, &place), &writer, json::input_format_t::json,
                         false)) {
        return {};
    }
    found.text.pop_back();  // the comma behind the value
    found.size = static_cast<std::size_t>(place.at - text.data());
    return found;
}

std::string jsonString(std::string_view text, bool& wasChanged) {
    wasChanged = wasChanged || !isUtf8(text);
    return json(std::string(text)).dump(-1, ' ', false, json::error_handler_t::replace);
}

// Nearly every text stands in a string as it is.
void addJsonString(std::string& out, std::string_view text, bool& wasChanged) {
    if (!standsAsItIs(text)) {
        out += jsonString(text, wasChanged);
        return;
    }
    out += '"';
    out += text;
    out += '"';
}

std::string jsonString(std::string_view text) {
    bool ignored = false;
    return jsonString(text, ignored);
}

}  // namespace vek::formats
