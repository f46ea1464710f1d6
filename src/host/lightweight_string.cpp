#include <vekdb/host/lightweight_string.h>

#include <vekdb/host/exceptions.h>
#include <vekdb/host/ptr.h>
#include <vekdb/host/text_util.h>

#include <charconv>
#include <string>

namespace {

// The capacity of the longest text is 2^31, the greatest power of two that the
// record's 32 bits hold.
constexpr std::uint64_t longestText = 0x7FFFFFFF;

std::uint64_t powerOfTwoAbove(std::uint64_t n) {
    std::uint64_t power = 1;
    while (power <= n) {
        power *= 2;
    }
    return power;
}

template <class C>
std::size_t textLength(const C* text) {
    return text == nullptr ? 0 : std::char_traits<C>::length(text);
}

// Null and the empty text are one and the same to every comparison.
template <class C, class Fold>
int compareTexts(const C* a, const C* b, Fold fold) noexcept {
    static constexpr C nothing = 0;
    if (a == b) {
        return 0;
    }
    a = a == nullptr ? &nothing : a;
    b = b == nullptr ? &nothing : b;
    while (*a != 0 && fold(*a) == fold(*b)) {
        ++a;
        ++b;
    }
    if (fold(*a) == fold(*b)) {
        return 0;
    }
    return std::char_traits<C>::lt(fold(*a), fold(*b)) ? -1 : 1;
}

constexpr auto asItStands = [](auto c) { return c; };
constexpr auto lowered = [](auto c) { return asciiLower(c); };

// std::char_traits' move and copy require real pointers even for no characters.
template <class C>
void copyCharacters(C* to, const C* from, std::size_t count) {
    if (count == 0) {
        return;
    }
    if (from == nullptr) {
        std::char_traits<C>::assign(to, count, C(0));
    } else {
        std::char_traits<C>::move(to, from, count);
    }
}

}  // namespace

template <class C>
bool LightweightString<C>::isUnshared() const noexcept {
    return impl_ != nullptr && Quor::currentCount(impl_->count) == 1;
}

// One character more than the text is kept for the terminator.
template <class C>
bool LightweightString<C>::hasRoomFor(std::uint64_t n) const noexcept {
    return isUnshared() && n < impl_->capacity;
}

template <class C>
void LightweightString<C>::setLength(std::size_t n) noexcept {
    impl_->data[n] = 0;
    impl_->length = static_cast<std::uint32_t>(n);
}

template <class C>
LightweightString<C> LightweightString<C>::createImpl(std::size_t n, bool growToPowerOfTwo) {
    LightweightString result;
    if (n == 0) {
        return result;
    }
    if (n > longestText) {
        throw Quor::Exception::BadAlloc();
    }
    const std::uint64_t capacity = growToPowerOfTwo ? powerOfTwoAbove(n) : n + 1;
    void* block = OS()->allocator()->allocate(sizeof(Impl) + capacity * sizeof(C));
    C* characters = reinterpret_cast<C*>(static_cast<char*>(block) + sizeof(Impl));
    result.impl_ = new (block) Impl{characters, 0, static_cast<std::uint32_t>(capacity), 1};
    result.setLength(n);
    return result;
}

template <class C>
void LightweightString<C>::resizeFor(std::size_t n) {
    if (n != 0 && hasRoomFor(n)) {
        setLength(n);
    } else {
        createImpl(n, true).swap(*this);
    }
}

template <class C>
void LightweightString<C>::assign(const C* text) {
    assign(text, textLength(text));
}

// The old record goes only after the copy, as the text may stand in it.
template <class C>
void LightweightString<C>::assign(const C* text, std::size_t count) {
    if (text == nullptr || count == 0) {
        clear();
        return;
    }
    LightweightString target;
    if (hasRoomFor(count)) {
        target.swap(*this);
    } else {
        target = createImpl(count, true);
    }
    copyCharacters(target.impl_->data, text, count);
    target.setLength(count);
    swap(target);
}

template <class C>
C* LightweightString<C>::mutableData() {
    if (impl_ != nullptr && !isUnshared()) {
        join(impl_->data, impl_->length, nullptr, 0).swap(*this);
    }
    return impl_ != nullptr ? impl_->data : nullptr;
}

template <class C>
void LightweightString<C>::append(const C* text, std::size_t count) {
    if (text == nullptr || count == 0) {
        return;
    }
    const std::uint64_t total = std::uint64_t(length()) + count;
    if (total >= count && hasRoomFor(total)) {
        copyCharacters(impl_->data + impl_->length, text, count);
        setLength(total);
    } else {
        join(c_str(), length(), text, count).swap(*this);
    }
}

template <class C>
void LightweightString<C>::push_back(C c) {
    if (c == 0) {
        return;
    }
    const std::uint64_t total = std::uint64_t(length()) + 1;
    if (hasRoomFor(total)) {
        setLength(total);
    } else {
        join(c_str(), length(), nullptr, 1).swap(*this);
    }
    impl_->data[total - 1] = c;
}

template <class C>
LightweightString<C>& LightweightString<C>::operator+=(const C* text) {
    append(text, textLength(text));
    return *this;
}

template <class C>
LightweightString<C>& LightweightString<C>::operator+=(const LightweightString& text) {
    append(text.c_str(), text.length());
    return *this;
}

template <class C>
LightweightString<C> LightweightString<C>::join(const C* a, std::size_t lenA, const C* b,
                                                std::size_t lenB) {
    if (lenA > longestText || lenB > longestText) {
        throw Quor::Exception::BadAlloc();
    }
    LightweightString result;
    result.resizeFor(lenA + lenB);
    if (result.impl_ != nullptr) {
        copyCharacters(result.impl_->data, a, lenA);
        copyCharacters(result.impl_->data + lenA, b, lenB);
    }
    return result;
}

template <class C>
LightweightString<C> LightweightString<C>::substr(unsigned pos, unsigned len) const {
    if (pos >= length()) {
        return {};
    }
    const unsigned left = length() - pos;
    return LightweightString(impl_->data + pos, len < left ? len : left);
}

template <class C>
int LightweightString<C>::compare(const C* a, const C* b) noexcept {
    return compareTexts(a, b, asItStands);
}

template <class C>
int LightweightString<C>::icompare(const C* a, const C* b) noexcept {
    return compareTexts(a, b, lowered);
}

template <class C>
bool LightweightString<C>::endsWith(const C* suffix, bool caseSensitive) const noexcept {
    if (suffix == nullptr || impl_ == nullptr || textLength(suffix) > impl_->length) {
        return false;
    }
    const C* tail = impl_->data + (impl_->length - textLength(suffix));
    return (caseSensitive ? compare(tail, suffix) : icompare(tail, suffix)) == 0;
}

template class LightweightString<char>;
template class LightweightString<wchar_t>;

LightweightString<wchar_t> operator+(const LightweightString<wchar_t>& a, const wchar_t* b) {
    return LightweightString<wchar_t>::join(a.c_str(), a.length(), b, textLength(b));
}

namespace {

template <class Number>
LightweightString<char>& appendNumber(LightweightString<char>& text, Number number) {
    char digits[16];
    const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    text.append(digits, static_cast<std::size_t>(end - digits));
    return text;
}

}  // namespace

LightweightString<char>& operator+=(LightweightString<char>& text, int number) {
    return appendNumber(text, number);
}

LightweightString<char>& operator+=(LightweightString<char>& text, unsigned number) {
    return appendNumber(text, number);
}
