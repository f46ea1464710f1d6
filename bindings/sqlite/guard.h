#pragma once

#include <exception>
#include <new>
#include <string>

#include <vekdb/formats/reason.h>
#include "sqlite_api.h"

/// Between SQLite, which knows numbers for what went wrong, and this library, which knows reasons
/// and exceptions. No exception leaves a function that SQLite calls.
namespace vek::sql {

/// Thrown where a function that SQLite calls cannot go on.
struct Refusal {
    int code = SQLITE_ERROR;
    std::string text = {};

    explicit Refusal(const std::string& text) : text(text) {}
    Refusal(int code, const std::string& text) : code(code), text(text) {}
    explicit Refusal(const Reason& reason);
};

/// Puts a text in the place of a message that SQLite frees.
void putMessage(char*& message, const std::string& text) noexcept;

/// Does the work of a virtual table or of one of its cursors; SQLite's number of how it ended.
template <class Work>
int guarded(char*& message, Work work) noexcept {
    try {
        work();
        return SQLITE_OK;
    } catch (const Refusal& refusal) {
        putMessage(message, refusal.text);
        return refusal.code;
    } catch (const std::bad_alloc&) {
        return SQLITE_NOMEM;
    } catch (const std::exception& error) {
        putMessage(message, error.what());
        return SQLITE_ERROR;
    } catch (...) {
        return SQLITE_ERROR;
    }
}

/// Answers a call of a function or of a column.
void refuse(sqlite3_context* context, const Refusal& refusal) noexcept;
template <class Work>
void answering(sqlite3_context* context, Work work) noexcept {
    try {
        work();
    } catch (const Refusal& refusal) {
        refuse(context, refusal);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    } catch (...) {
        sqlite3_result_error_code(context, SQLITE_ERROR);
    }
}

/// A text between quotes for a message, cut where it is very long.
std::string quoted(std::string_view text);

/// The bytes of a value as a text; empty for NULL. They last until the value is asked for again.
std::string_view textOf(sqlite3_value* value);

/// Gives a text as an answer; SQLite copies it into room that it keeps from row to row.
void answerText(sqlite3_context* context, std::string_view text) noexcept;

}  // namespace vek::sql
