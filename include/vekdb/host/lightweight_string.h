#pragma once

#include <vekdb/host/os.h>
#include <vekdb/host/visibility.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

/// A string value of one pointer, cheap to pass by value: copies share one
/// reference-counted record, and a record is written in place only while it has
/// a single holder. The null string (no record) is the only empty string; no
/// operation ever makes an empty record.
///
/// Strings are used by one thread at a time; strings that share a record may be
/// used by different threads, as the host's counts are atomic. Sizes are limited
/// to 2^31 - 1 characters; past that, and when memory is exhausted,
/// Quor::Exception::BadAlloc is thrown and the string is as it was.
///
/// Pointers and views into the text live until the string is next changed,
/// assigned or destroyed. Any operation may be given the string's own text.
template <class C>
class VEKDB_PUBLIC LightweightString {
public:
    /// Its text, borrowed.
    using View = std::basic_string_view<C>;

    /// A length that substr reads as "all that is left".
    static constexpr unsigned toEnd = 0xFFFFFFFF;

    /// The null string.
    LightweightString() noexcept = default;

    /// Copies a text, up to its 0 character or so many characters. A null pointer gives the null
    /// string.
    LightweightString(const C* text) { assign(text); }
    LightweightString(const C* text, std::size_t count) { assign(text, count); }
    explicit LightweightString(View text) { assign(text.data(), text.size()); }

    /// Shares the other's record, or takes it over.
    LightweightString(const LightweightString& other) noexcept : impl_(other.impl_) { hold(); }
    LightweightString(LightweightString&& other) noexcept
        : impl_(std::exchange(other.impl_, nullptr)) {}

    ~LightweightString() { release(); }

    /// The same, and lets go of its own record afterwards.
    LightweightString& operator=(const LightweightString& other) noexcept {
        LightweightString held(other);
        swap(held);
        return *this;
    }

    /// The same from one that is not needed any more.
    LightweightString& operator=(LightweightString&& other) noexcept {
        LightweightString held(std::move(other));
        swap(held);
        return *this;
    }

    /// Exchanges the records.
    void swap(LightweightString& other) noexcept { std::swap(impl_, other.impl_); }

    /// Never null; the empty text for the null string. Ends in a 0 character.
    const C* c_str() const noexcept { return impl_ != nullptr ? impl_->data : &nothing_; }
    unsigned length() const noexcept { return impl_ != nullptr ? impl_->length : 0; }
    bool empty() const noexcept { return impl_ == nullptr; }

    /// Characters of storage, the terminator's included; 0 for the null string.
    unsigned capacity() const noexcept { return impl_ != nullptr ? impl_->capacity : 0; }

    /// The text; never a null pointer.
    View view() const noexcept { return View(c_str(), length()); }

    /// A null pointer assigns the null string whatever the count says.
    void assign(const C* text);
    void assign(const C* text, std::size_t count);
    void clear() noexcept { LightweightString().swap(*this); }

    /// Makes the length n. The first n characters stay when the record has one
    /// holder and room for n and the terminator; otherwise a new record takes its
    /// place whose characters the caller must write.
    void resizeFor(std::size_t n);

    /// A string of n characters, for the caller to write. Its capacity is n + 1,
    /// or the smallest power of two above n.
    static LightweightString createImpl(std::size_t n, bool growToPowerOfTwo);

    /// The characters for writing, in a record of this string's own (shared text
    /// is copied first); null for the null string.
    C* mutableData();

    /// A null pointer appends nothing, as does a 0 character.
    void append(const C* text, std::size_t count);
    void push_back(C c);

    /// Appends a text; a null pointer appends nothing.
    LightweightString& operator+=(const C* text);
    LightweightString& operator+=(const LightweightString& text);

    /// A character would quietly become its number; push_back takes characters.
    LightweightString& operator+=(C) = delete;

    /// lenA characters of a, then lenB of b. The characters of a null part are 0.
    static LightweightString join(const C* a, std::size_t lenA, const C* b, std::size_t lenB);

    /// The null string when pos is not inside the text; a len past the end, or
    /// toEnd, takes what is left.
    LightweightString substr(unsigned pos, unsigned len = toEnd) const;

    /// -1, 0 or 1. A null pointer equals the empty text. icompare ignores the case
    /// of the letters A to Z, whatever the locale.
    static int compare(const C* a, const C* b) noexcept;
    static int icompare(const C* a, const C* b) noexcept;

    /// False for a null suffix and for a null string.
    bool endsWith(const C* suffix, bool caseSensitive) const noexcept;

    /// By every character, with regard to case. A null pointer equals the null string.
    friend bool operator==(const LightweightString& a, const LightweightString& b) noexcept {
        return a.impl_ == b.impl_ || a.view() == b.view();
    }
    friend bool operator==(const LightweightString& a, const C* b) noexcept {
        return b == nullptr ? a.empty() : a.view() == View(b);
    }
    friend bool operator<(const LightweightString& a, const LightweightString& b) noexcept {
        return a.view() < b.view();
    }

private:
    // The characters follow the record in the same block.
    struct Impl {
        C* data;
        std::uint32_t length;
        std::uint32_t capacity;
        std::uint32_t count;
    };

    void hold() const noexcept {
        if (impl_ != nullptr) {
            OS()->refCounts()->increment(impl_->count);
        }
    }

    void release() noexcept {
        if (impl_ != nullptr && OS()->refCounts()->decrement(impl_->count) == 0) {
            OS()->allocator()->free(impl_);
        }
    }

    bool isUnshared() const noexcept;
    bool hasRoomFor(std::uint64_t n) const noexcept;
    void setLength(std::size_t n) noexcept;

    static constexpr C nothing_ = 0;

    Impl* impl_ = nullptr;
};

extern template class LightweightString<char>;
extern template class LightweightString<wchar_t>;

/// A string of both texts, one behind the other.
VEKDB_PUBLIC LightweightString<wchar_t> operator+(const LightweightString<wchar_t>& a,
                                                  const wchar_t* b);

/// Appends the decimal text of the number.
VEKDB_PUBLIC LightweightString<char>& operator+=(LightweightString<char>& text, int number);
VEKDB_PUBLIC LightweightString<char>& operator+=(LightweightString<char>& text, unsigned number);
