#include "formats/json/json_tree.h"

#include <algorithm>

#include "formats/failure.h"
#include "formats/json/json.h"

namespace vek::formats {

namespace {

// Lines are counted in steps of so many bytes, and from there on when somebody asks.
constexpr std::size_t lineStep = 1 << 12;

std::uint32_t linesIn(std::string_view text) {
    return static_cast<std::uint32_t>(std::count(text.begin(), text.end(), '\n'));
}

// Whether a string that begins so has an escape.
bool hasEscape(std::string_view rest) {
    return rest.substr(0, rest.find('"')).find('\\') != std::string_view::npos;
}

std::string resolved(std::string_view raw) {
    std::string text(raw);
    text.resize(resolveEscapes(text.data(), text.size()));
    return text;
}

}  // namespace

std::optional<JsonTree::Fault> JsonTree::parse(std::string_view text) {
    text_ = text;
    if (text.size() >= longest) return Fault{1, "more than 4 GB"};
    JsonText json(text.data(), text.data() + text.size());
    json.takeMark();
    json.skipBetween();
    if (!takeValue(json, 0)) return faultAt(json);
    json.skipBetween();
    if (!json.atEnd()) return faultAt(json);
    std::uint32_t lines = 0;
    for (std::size_t at = 0; at < text.size(); at += lineStep) {
        linesBefore_.push_back(lines);
        lines += linesIn(text.substr(at, lineStep));
    }
    return {};
}

JsonTree::Fault JsonTree::faultAt(const JsonText& json) const {
    if (isTooDeep_) return {json.line(), "more than 256 values in one another"};
    if (json.atEnd()) return {json.line(), "the end of the text"};
    const std::string_view rest(json.at(), text_.size() - (json.at() - text_.data()));
    return {json.line(), inQuotes(rest.substr(0, std::min<std::size_t>(20, rest.find('\n'))))};
}

JsonTree::Node JsonTree::add(const char* at) {
    const auto node = static_cast<Node>(places_.size());
    places_.push_back({static_cast<std::uint32_t>(at - text_.data()), node + 1});
    return node;
}

bool JsonTree::takeValue(JsonText& json, std::size_t depth) {
    if (json.peek() != '{' && json.peek() != '[') return takeScalar(json);
    isTooDeep_ = depth >= deepest;
    if (isTooDeep_) return false;
    const Node node = add(json.at());
    const bool isTaken = json.take('{') ? takeMembers(json, depth + 1)
                                        : json.take('[') && takeElements(json, depth + 1);
    places_[node].next = static_cast<std::uint32_t>(places_.size());
    return isTaken;
}

bool JsonTree::takeScalar(JsonText& json) {
    add(json.at());
    return json.peek() == '"' ? json.takeString().has_value() : json.takeWord().has_value();
}

bool JsonTree::takeMembers(JsonText& json, std::size_t depth) {
    json.skipBlanks();
    if (json.take('}')) return true;
    do {
        json.skipBlanks();
        add(json.at());
        if (!json.takeString()) return false;
        json.skipBlanks();
        if (!json.take(':')) return false;
        json.skipBlanks();
        if (!takeValue(json, depth)) return false;
        json.skipBlanks();
    } while (json.take(','));
    return json.take('}');
}

// Of numbers and words side by side only the first is noted.
bool JsonTree::takeElements(JsonText& json, std::size_t depth) {
    json.skipBlanks();
    if (json.take(']')) return true;
    bool isBehindScalar = false;
    do {
        json.skipBlanks();
        const bool isScalar = json.peek() != '{' && json.peek() != '[';
        const std::size_t before = places_.size();
        if (!takeValue(json, depth)) return false;
        if (isScalar && isBehindScalar) places_.resize(before);
        isBehindScalar = isScalar;
        json.skipBlanks();
    } while (json.take(','));
    return json.take(']');
}

bool JsonTree::isEmpty(Node node) const {
    return (isObject(node) || isArray(node)) && places_[node].next == node + 1;
}

std::string JsonTree::nameAt(Node node) const {
    JsonText json(text_.data() + places_[node].at, text_.data() + text_.size());
    const JsonText::String name = *json.takeString();
    return name.hasEscapes ? resolved(name.raw) : std::string(name.raw);
}

JsonTree::Node JsonTree::find(Node object, std::string_view name) const {
    Node found = none;
    if (!isObject(object)) return found;
    for (Node at = object + 1; at < places_[object].next; at = places_[at + 1].next) {
        // Names are compared as they stand; an escape in one is rare.
        const std::string_view rest = text_.substr(places_[at].at + 1);
        // Most that are looked at are other names, which end elsewhere.
        const bool endsThere = name.size() < rest.size() && rest[name.size()] == '"';
        const bool isPlain = endsThere && rest.starts_with(name);
        if (isPlain || (hasEscape(rest) && nameAt(at) == name)) found = at + 1;
    }
    return found;
}

std::vector<JsonTree::Member> JsonTree::members(Node object) const {
    std::vector<Member> out;
    if (!isObject(object)) return out;
    for (Node at = object + 1; at < places_[object].next; at = places_[at + 1].next) {
        out.push_back({nameAt(at), at + 1});
    }
    return out;
}

std::vector<JsonTree::Node> JsonTree::elements(Node array) const {
    std::vector<Node> out;
    if (!isArray(array)) return out;
    for (Node at = array + 1; at < places_[array].next; at = places_[at].next) out.push_back(at);
    return out;
}

std::string JsonTree::text(Node node) const {
    if (node == none || isNull(node)) return {};
    if (isString(node)) return nameAt(node);
    const std::string_view rest = text_.substr(places_[node].at);
    if (isObject(node) || isArray(node)) {
        std::optional<CompactJson> compact = compactJson(rest);
        return compact ? std::move(compact->text) : std::string();
    }
    JsonText json(rest.data(), rest.data() + rest.size());
    return std::string(*json.takeWord());
}

std::size_t JsonTree::line(Node node) const {
    if (node == none) return 0;
    const std::size_t at = places_[node].at;
    const std::size_t step = at / lineStep;
    return 1 + linesBefore_[step] + linesIn(text_.substr(step * lineStep, at - step * lineStep));
}

}  // namespace vek::formats
