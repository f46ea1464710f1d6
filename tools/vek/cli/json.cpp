#include "tools/vek/cli/json.h"

#include <iterator>
#include <nlohmann/json.hpp>

#include "tools/vek/cli/width.h"

namespace vek {

namespace {

using nlohmann::json;

// How far the parser has read.
struct Place {
    const char* at;
    std::size_t line;
};

// Feeds the parser and notes its place. Iterators of one place move together: the parser reads
// forward only.
class PlaceIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    PlaceIterator(const char* at, Place* place) : at_(at), place_(place) {}
    reference operator*() const { return *at_; }
    PlaceIterator& operator++() {
        if (*at_ == '\n') ++place_->line;
        place_->at = ++at_;
        return *this;
    }
    bool operator==(const PlaceIterator& other) const { return at_ == other.at_; }
    bool operator!=(const PlaceIterator& other) const { return at_ != other.at_; }

private:
    const char* at_;
    Place* place_;
};

// Collects rows. Values inside a row's values are written out again as compact JSON.
class RowHandler : public json::json_sax_t {
public:
    RowHandler(JsonRows& out, const std::size_t& line) : out_(out), line_(line) {}

    bool null() override { return value("", "null"); }
    bool boolean(bool is) override { return value(is ? "true" : "false"); }
    bool number_integer(number_integer_t n) override { return value(std::to_string(n)); }
    bool number_unsigned(number_unsigned_t n) override { return value(std::to_string(n)); }
    bool number_float(number_float_t, const string_t& text) override { return value(text); }
    bool string(string_t& text) override { return value(text, jsonString(text)); }
    bool binary(binary_t&) override { return refuse("binary data"); }

    bool start_object(std::size_t) override {
        if (rowDepth_ != 0) return open('{');
        out_.rows.push_back({line_, {}, {}});
        rowDepth_ = depth_ + 1;
        ++depth_;
        return true;
    }

    bool key(string_t& name) override {
        if (depth_ == rowDepth_)
            out_.rows.back().names.push_back(name);
        else
            nest(jsonString(name) + ":", false);
        return true;
    }

    bool end_object() override {
        if (depth_ != rowDepth_) return close('}');
        rowDepth_ = 0;
        --depth_;
        return true;
    }

    bool start_array(std::size_t) override {
        if (rowDepth_ != 0) return open('[');
        if (++depth_ > 1) return refuse("an array in an array");
        return true;
    }

    bool end_array() override {
        if (rowDepth_ != 0) return close(']');
        --depth_;
        return true;
    }

    bool parse_error(std::size_t, const std::string& token, const json::exception&) override {
        return refuse("\"" + token + "\"");
    }

private:
    bool refuse(const std::string& found) {
        out_.errorLine = line_;
        out_.error = found;
        return false;
    }

    bool value(const std::string& cell) { return value(cell, cell); }

    bool value(const std::string& cell, const std::string& nested) {
        if (rowDepth_ == 0) return refuse(nested);
        if (depth_ == rowDepth_)
            out_.rows.back().values.push_back(cell);
        else
            nest(nested, true);
        return true;
    }

    bool open(char bracket) {
        nest(std::string(1, bracket), false);
        ++depth_;
        return true;
    }

    bool close(char bracket) {
        if (nested_.ends_with(',')) nested_.pop_back();
        --depth_;
        nest(std::string(1, bracket), depth_ != rowDepth_);
        if (depth_ == rowDepth_) out_.rows.back().values.push_back(std::move(nested_));
        if (depth_ == rowDepth_) nested_.clear();
        return true;
    }

    void nest(const std::string& text, bool endsValue) {
        nested_ += text;
        if (endsValue) nested_ += ',';
    }

    JsonRows& out_;
    const std::size_t& line_;
    std::size_t depth_ = 0;
    std::size_t rowDepth_ = 0;  // the depth inside the row that is open, 0 for none
    std::string nested_;
};

}  // namespace

JsonRows parseJsonRows(std::string_view text) {
    JsonRows out;
    Place place{text.data(), 1};
    const char* end = text.data() + text.size();
    RowHandler handler(out, place.line);
    auto skipBlanks = [&] {
        while (place.at != end && static_cast<unsigned char>(*place.at) <= ' ') {
            if (*place.at++ == '\n') ++place.line;
        }
    };
    for (skipBlanks(); place.at != end && out.errorLine == 0; skipBlanks()) {
        PlaceIterator from(place.at, &place);
        json::sax_parse(from, PlaceIterator(end, &place), &handler, json::input_format_t::json,
                        false);
    }
    return out;
}

std::string jsonString(std::string_view text, bool& wasChanged) {
    wasChanged = wasChanged || !isUtf8(text);
    return json(std::string(text)).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string jsonString(std::string_view text) {
    bool ignored = false;
    return jsonString(text, ignored);
}

}  // namespace vek
