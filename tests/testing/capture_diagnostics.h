#pragma once

#include <vekdb/host/diagnostics.h>

#include <string>
#include <vector>

namespace testing_support {

// Catches what the library says while it lives; the sink before is back
// afterwards. One text a message, in order.
class CaptureDiagnostics final : public iDiagnosticSink {
public:
    CaptureDiagnostics() : before_(setDiagnosticSink(this)) {}
    CaptureDiagnostics(const CaptureDiagnostics&) = delete;
    CaptureDiagnostics& operator=(const CaptureDiagnostics&) = delete;
    ~CaptureDiagnostics() { setDiagnosticSink(before_); }

    void debug(const char* text) noexcept override { keep(debugged, text); }
    void log(const char* text) noexcept override { logged.emplace_back(text); }
    void splat(const char* text) noexcept override { keep(splatted, text); }

    std::vector<std::string> debugged;  // from debug_printf, and from LogBoth too
    std::vector<std::string> logged;    // from LogBoth alone
    std::vector<std::string> splatted;  // from vek_splat
    std::vector<std::string> messages;  // all of them, each message once

private:
    void keep(std::vector<std::string>& channel, const char* text) {
        channel.emplace_back(text);
        messages.emplace_back(text);
    }

    iDiagnosticSink* before_;
};

}  // namespace testing_support
