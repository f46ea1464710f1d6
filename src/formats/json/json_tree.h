#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "formats/json/json_text.h"

namespace vek::formats {

/// A JSON text whose values can be looked at in any order. It holds eight bytes for each value
/// beside the text, which must outlive it; numbers and words side by side in an array count as
/// one value.
class JsonTree {
public:
    using Node = std::uint32_t;
    static constexpr Node none = 0xFFFFFFFF;
    static constexpr std::size_t deepest = 256;
    static constexpr std::size_t longest = 0xFFFFFFFF;

    /// Where the text is no JSON, or nested too deep. The text ends at a byte that can be read.
    struct Fault {
        std::size_t line = 0;
        std::string found;
    };
    /// Nothing where all is well.
    std::optional<Fault> parse(std::string_view text);

    Node root() const { return 0; }
    bool isObject(Node node) const { return first(node) == '{'; }
    bool isArray(Node node) const { return first(node) == '['; }
    bool isString(Node node) const { return first(node) == '"'; }
    bool isNull(Node node) const { return first(node) == 'n'; }
    /// Whether an object or array has nothing in it.
    bool isEmpty(Node node) const;

    /// The value of the last member of the name, or none; also for a node that is no object.
    Node find(Node object, std::string_view name) const;

    struct Member {
        std::string name;
        Node value;
    };
    std::vector<Member> members(Node object) const;
    std::vector<Node> elements(Node array) const;

    /// A string without its quotes and escapes, a number or word as it stands, nothing for null,
    /// an object or array as compact JSON.
    std::string text(Node node) const;
    std::size_t line(Node node) const;

private:
    struct Place {
        std::uint32_t at;    // in the text
        std::uint32_t next;  // the node behind this one and all it holds
    };

    char first(Node node) const { return node == none ? '\0' : text_[places_[node].at]; }
    bool takeValue(JsonText& json, std::size_t depth);
    bool takeMembers(JsonText& json, std::size_t depth);
    bool takeElements(JsonText& json, std::size_t depth);
    bool takeScalar(JsonText& json);
    Node add(const char* at);
    std::string nameAt(Node node) const;
    Fault faultAt(const JsonText& json) const;

    std::string_view text_;
    std::deque<Place> places_;  // grows without a copy
    std::vector<std::uint32_t> linesBefore_;
    bool isTooDeep_ = false;
};

}  // namespace vek::formats
