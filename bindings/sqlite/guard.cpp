#include "guard.h"

namespace vek::sql {

namespace {

int codeOf(Reason::Kind kind) {
    if (kind == Reason::outOfMemory) return SQLITE_NOMEM;
    return kind == Reason::unwritable ? SQLITE_IOERR : SQLITE_ERROR;
}

}  // namespace

Refusal::Refusal(const Reason& reason) : code(codeOf(reason.kind)), text(reason.text()) {}

void putMessage(char*& message, const std::string& text) noexcept {
    if (text.empty()) return;
    sqlite3_free(message);
    message = sqlite3_mprintf("%s", text.c_str());
}

void refuse(sqlite3_context* context, const Refusal& refusal) noexcept {
    if (refusal.code == SQLITE_NOMEM) return sqlite3_result_error_nomem(context);
    sqlite3_result_error(context, refusal.text.c_str(), -1);
    sqlite3_result_error_code(context, refusal.code);
}

std::string quoted(std::string_view text) {
    constexpr std::size_t most = 60;
    std::string out = "\"";
    for (char c : text.substr(0, most)) {
        const bool isShown = static_cast<unsigned char>(c) >= ' ' && c != '\x7f';
        out += isShown ? c : ' ';
    }
    return out + (text.size() > most ? "...\"" : "\"");
}

std::string_view textOf(sqlite3_value* value) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
    if (text == nullptr) {
        if (sqlite3_value_type(value) != SQLITE_NULL) throw std::bad_alloc();
        return {};
    }
    return {text, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// A cell may change or go while a statement still holds what it was given, as an aggregate does.
void answerText(sqlite3_context* context, std::string_view text) noexcept {
    const char* const bytes = text.empty() ? "" : text.data();
    sqlite3_result_text64(context, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

}  // namespace vek::sql
