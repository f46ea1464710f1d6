#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

/// How functions of the formats answer: with a value, or with the reason why there is none. They
/// throw nothing, and need no exceptions in the code that calls them.
namespace vek {

/// Why something could not be done. Texts are UTF-8 as far as the file's own are; parts that there
/// is nothing to say about are empty.
struct Reason {
    /// What could not be done.
    enum Kind {
        none,           ///< nothing is wrong
        unreadable,     ///< what should be read cannot be, or is no log
        unwritable,     ///< what should be written cannot be, or a file has no room for it
        wrongUsage,     ///< what was asked for cannot be: a column that is not there, for example
        contradiction,  ///< two logs do not go together
        outOfMemory,    ///< the job did not fit; what was there before is whole
    };
    Kind kind = none;           ///< what could not be done
    std::string file = {};      ///< as it was named
    std::size_t line = 0;       ///< from 1 on; 0 when it is about no line
    std::string column = {};    ///< the name of a column
    std::string found = {};     ///< what is there, or what happened
    std::string expected = {};  ///< what should be there
    std::string advice = {};    ///< what to do, or what was made of it
    /// The name of a column that was asked for and finds none, or several; `found` says it, too.
    std::string noColumn = {};

    /// "FILE:LINE:COLUMN: found, expected ...; advice", as far as there is something to say.
    std::string text() const;
};

/// A value, or the reason why there is none.
template <class T>
class [[nodiscard]] Result {
public:
    /// With a value.
    Result(T value) : value_(std::move(value)) {}
    /// Without one; the reason's kind is not `none`.
    Result(Reason reason) : reason_(std::move(reason)) {}

    /// Whether there is a value.
    explicit operator bool() const noexcept { return value_.has_value(); }
    /// The value; to be asked for only where there is one. It belongs to the result; of a result
    /// that is gone with the statement it is moved out, so that a loop may go over it. What `->`
    /// reaches is not: a reference or a text that comes of it ends with the statement, a handle
    /// lives on.
    T& operator*() & noexcept { return *value_; }
    const T& operator*() const& noexcept { return *value_; }
    T operator*() && { return *std::move(value_); }
    T* operator->() noexcept { return &*value_; }
    const T* operator->() const noexcept { return &*value_; }
    /// Why there is no value; of kind `none` where there is one.
    const Reason& reason() const noexcept { return reason_; }

private:
    std::optional<T> value_;
    Reason reason_;
};

/// Of what has no value: that it was done, or the reason why it was not.
template <>
class [[nodiscard]] Result<void> {
public:
    /// It was done.
    Result() = default;
    /// It was not.
    Result(Reason reason) : reason_(std::move(reason)) {}

    /// Whether it was done.
    explicit operator bool() const noexcept { return reason_.kind == Reason::none; }
    /// Why not; of kind `none` where it was done.
    const Reason& reason() const noexcept { return reason_; }

private:
    Reason reason_;
};

}  // namespace vek
