#pragma once

#include <vekdb/host/visibility.h>

// What the library has to say for the eyes of developers. Messages never change
// behaviour and are the only thing the library prints.

/// Where messages go. Each text is one message exactly as it was worded, its line
/// feed included where it has one, and lives only as long as the call. A sink is
/// owned by the application and must outlive its time in place.
class VEKDB_PUBLIC iDiagnosticSink {
public:
    /// From debug_printf and LogBoth.
    virtual void debug(const char* text) noexcept = 0;

    /// From LogBoth, after debug() was told the same: the application's log.
    virtual void log(const char* text) noexcept = 0;

    /// From vek_splat: something that must not happen.
    virtual void splat(const char* text) noexcept = 0;

protected:
    ~iDiagnosticSink() = default;
};

/// Puts a sink in place and returns the one before. Null is the built-in sink:
/// debug and splat texts go to the standard error stream, log texts nowhere.
VEKDB_PUBLIC iDiagnosticSink* setDiagnosticSink(iDiagnosticSink* sink) noexcept;

/// printf-style message for the debug output. A message that memory is too short
/// for is cut.
[[gnu::format(printf, 1, 2)]] void debug_printf(const char* format, ...) noexcept;

/// printf-style message for the debug output and for the host's log.
[[gnu::format(printf, 1, 2)]] void LogBoth(const char* format, ...) noexcept;

/// Reports a condition that must not happen, and returns. Null counts as "".
VEKDB_PUBLIC void vek_splat(const char* text) noexcept;
