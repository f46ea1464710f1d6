#include <vekdb/host/grow_string.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/os.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr std::size_t firstCapacity = 256;
constexpr std::size_t longestText = std::numeric_limits<std::size_t>::max() / 4;

}  // namespace

GrowString::~GrowString() {
    letGo(text_);
}

void GrowString::letGo(char* place) noexcept {
    if (place != nullptr && place != short_) {
        OS()->allocator()->free(place);
    }
}

void GrowString::append(const char* text) {
    if (text != nullptr) {
        append(std::string_view(text));
    }
}

void GrowString::append(char c) {
    if (c != 0) {
        append(std::string_view(&c, 1));
    }
}

// The old room is freed last, as the text may stand in it.
void GrowString::append(std::string_view text) {
    if (text.empty()) {
        return;
    }
    if (text.size() > longestText - length_) {
        throw Quor::Exception::BadAlloc();
    }
    const std::size_t total = length_ + text.size();
    char* place = total < capacity_ ? text_ : newPlaceFor(total);
    std::memmove(place + length_, text.data(), text.size());
    place[total] = 0;
    if (place != text_) {
        std::swap(place, text_);
        letGo(place);
    }
    length_ = total;
}

char* GrowString::newPlaceFor(std::size_t length) {
    if (text_ == nullptr && length < sizeof short_) {
        capacity_ = sizeof short_;
        return short_;
    }
    const std::size_t capacity = std::max({firstCapacity, capacity_ * 2, length + 1});
    char* place = static_cast<char*>(OS()->allocator()->allocate(capacity));
    if (length_ != 0) {
        std::memcpy(place, text_, length_);
    }
    capacity_ = capacity;
    return place;
}
