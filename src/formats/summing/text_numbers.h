#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include <vekdb/host/keyed_hash.h>

namespace vek::formats {

/// Texts that differ, numbered in the order in which they come. None is copied: they must outlive
/// it.
class TextNumbers {
public:
    /// The number of a text with its `keyedHash`, a new one where it has not come yet.
    std::size_t of(std::string_view text, std::uint64_t hash);
    std::size_t of(std::string_view text) { return of(text, Quor::keyedHash(text)); }
    /// The texts of another one come, too.
    void add(const TextNumbers& other);

    std::size_t size() const { return texts_.size(); }
    bool empty() const { return texts_.empty(); }

private:
    // What stands in front of a text is kept beside it, so that short ones are compared without a
    // look at where they come from.
    struct Text {
        std::string_view text;
        std::uint64_t hash;
        std::uint64_t head = 0;

        Text(std::string_view text, std::uint64_t hash);
        bool is(const Text& other) const {
            return hash == other.hash && head == other.head && text.size() == other.text.size() &&
                   (text.size() <= sizeof head || text == other.text);
        }
    };

    std::uint32_t* placeOf(const Text& text);
    std::size_t numberAmongFew(const Text& text);
    void grow();

    std::vector<Text> texts_;
    // Numbers, counted from 1, by hash; as many as a power of two, at most half of them taken.
    // Few texts have none.
    std::vector<std::uint32_t> places_;
};

}  // namespace vek::formats
