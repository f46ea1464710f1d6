#include <vekdb/host/diagnostics.h>

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <new>

namespace {

class StandardErrorSink final : public iDiagnosticSink {
public:
    void debug(const char* text) noexcept override { std::fputs(text, stderr); }
    void log(const char*) noexcept override {}
    void splat(const char* text) noexcept override { std::fputs(text, stderr); }
};

constinit StandardErrorSink standardError;
constinit std::atomic<iDiagnosticSink*> theSink{nullptr};

iDiagnosticSink& sink() {
    iDiagnosticSink* chosen = theSink;
    return chosen != nullptr ? *chosen : standardError;
}

// The text of a message: in place while it is short, else in a block of its own,
// and cut to what fits in place when there is no memory for that.
class Message {
public:
    [[gnu::format(printf, 2, 0)]] Message(const char* format, va_list arguments) {
        va_list again;
        va_copy(again, arguments);
        place(std::vsnprintf(short_, sizeof short_, format, arguments), format, again);
        va_end(again);
    }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    ~Message() { delete[] long_; }

    const char* text() const { return long_ != nullptr ? long_ : short_; }

private:
    [[gnu::format(printf, 3, 0)]] void place(int length, const char* format, va_list arguments) {
        if (length < 0) {
            short_[0] = '\0';
            return;
        }
        const auto size = static_cast<std::size_t>(length) + 1;
        if (size > sizeof short_ && (long_ = new (std::nothrow) char[size]) != nullptr) {
            std::vsnprintf(long_, size, format, arguments);
        }
    }

    char short_[512];
    char* long_ = nullptr;
};

}  // namespace

iDiagnosticSink* setDiagnosticSink(iDiagnosticSink* sink) noexcept {
    return theSink.exchange(sink);
}

void debug_printf(const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    const Message message(format, arguments);
    va_end(arguments);
    sink().debug(message.text());
}

void LogBoth(const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    const Message message(format, arguments);
    va_end(arguments);
    sink().debug(message.text());
    sink().log(message.text());
}

void vek_splat(const char* text) noexcept {
    sink().splat(text != nullptr ? text : "");
}
