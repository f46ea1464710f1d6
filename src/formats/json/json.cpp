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

// Writes a value of JSON without blanks, its numbers as they stand. What is nested is no deeper
// here than in memory.
class CompactWriter {
public:
    explicit CompactWriter(std::string_view text)
        : begin_(text.data()), text_(text.data(), text.data() + text.size()) {}

    std::optional<CompactJson> write() {
        do {
            if (!takeValue()) return {};
        } while (!isWhole() && endValues());
        if (!isWhole() || isRefused_) return {};
        return CompactJson{std::move(out_), static_cast<std::size_t>(text_.at() - begin_)};
    }

private:
    bool isWhole() const { return closing_.empty(); }

    // A scalar, or the beginnings of what is nested up to one, or to what is empty.
    bool takeValue() {
        for (;;) {
            text_.skipBlanks();
            const char bracket = text_.peek();
            if (bracket != '{' && bracket != '[') return takeScalar();
            text_.take(bracket);
            out_ += bracket;
            closing_ += bracket == '{' ? '}' : ']';
            text_.skipBlanks();
            if (takeClosing()) return true;
            if (!takeName()) return false;
        }
    }

    bool takeScalar() {
        if (text_.peek() == '"') return takeString();
        const std::optional<std::string_view> word = text_.takeWord();
        if (word) out_ += *word;
        return word.has_value();
    }

    bool takeString() {
        const std::optional<JsonText::String> string = text_.takeString();
        if (!string) return false;
        std::string resolved(string->raw);
        if (string->hasEscapes) resolved.resize(resolveEscapes(resolved.data(), resolved.size()));
        out_ += jsonString(resolved);
        return true;
    }

    // In front of a value in an object.
    bool takeName() {
        if (closing_.back() == ']') return true;
        text_.skipBlanks();
        if (!takeString()) return false;
        text_.skipBlanks();
        out_ += ':';
        return text_.take(':');
    }

    bool takeClosing() {
        if (!text_.take(closing_.back())) return false;
        out_ += closing_.back();
        closing_.pop_back();
        return true;
    }

    // Behind a value: all that ends with it. Whether another value comes, or none that may.
    bool endValues() {
        for (;;) {
            text_.skipBlanks();
            if (text_.take(',')) {
                out_ += ',';
                isRefused_ = !takeName();
                return !isRefused_;
            }
            isRefused_ = !takeClosing();
            if (isRefused_ || isWhole()) return false;
        }
    }

    const char* begin_;
    JsonText text_;
    std::string out_;
    std::string closing_;  // the brackets that are still to come, the next one last
    bool isRefused_ = false;
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
    return CompactWriter(text).write();
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

std::string jsonName(std::string_view name, bool& wasChanged) {
    if (name == "OTIO_SCHEMA") return "\"\\u004fTIO_SCHEMA\"";
    return jsonString(name, wasChanged);
}

std::string jsonString(std::string_view text) {
    bool ignored = false;
    return jsonString(text, ignored);
}

}  // namespace vek::formats
