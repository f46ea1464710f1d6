#pragma once

#include <vekdb/host/diagnostics.h>

namespace testing_support {

/// While in scope, the library says nothing, and no memory is taken for it.
class Quiet final : public iDiagnosticSink {
public:
    Quiet() : before_(setDiagnosticSink(this)) {}
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;
    ~Quiet() { setDiagnosticSink(before_); }

    void debug(const char*) noexcept override {}
    void log(const char*) noexcept override {}
    void splat(const char*) noexcept override {}

private:
    iDiagnosticSink* before_;
};

}  // namespace testing_support
