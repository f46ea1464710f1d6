#include "formats/face/guarded.h"
#include "formats/face/inside.h"
#include "formats/reading/input.h"
#include "formats/reading/limits.h"

namespace vek {

namespace {

using formats::Input;

// The limits of one reading; those of before hold again afterwards.
class OwnLimits {
public:
    explicit OwnLimits(const OpenOptions& options) : before_(formats::limits()) {
        formats::limits() = {};
        if (options.maxBytes != 0) formats::limits().bytes = options.maxBytes;
        formats::limits().cells = options.maxCells;
    }
    ~OwnLimits() { formats::limits() = before_; }
    OwnLimits(const OwnLimits&) = delete;
    OwnLimits& operator=(const OwnLimits&) = delete;

private:
    formats::Limits before_;
};

// "-" is a file like others here, and a name ends where the system's names end.
std::string fileOf(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) {
        throw formats::Failure{formats::unreadable,
                               std::string(path.substr(0, path.find('\0'))),
                               {0, "", "a zero byte in the path", "a path of the system", ""}};
    }
    return path == "-" ? "./-" : std::string(path);
}

std::string nameOf(const OpenOptions& options) {
    return options.format ? formats::formatName(*options.format) : "";
}

Log logOf(formats::Log read, bool isToChange) {
    auto inside = std::make_shared<LogInside>();
    inside->log = std::move(read);
    inside->isToChange = isToChange;
    return LogInside::logOf(std::move(inside));
}

Log opened(Input& input, const std::string& path, const OpenOptions& options) {
    return logOf(formats::openLog(input, path, nameOf(options)), false);
}

}  // namespace

Result<Log> open(std::string_view path, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        OwnLimits limits(options);
        const std::string file = fileOf(path);
        Input input(file);
        return opened(input, file, options);
    });
}

Result<Log> openToChange(std::string_view path, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        OwnLimits limits(options);
        return logOf(formats::readLogToChange(fileOf(path), nameOf(options)), true);
    });
}

Result<Log> openDescriptor(int descriptor, std::string_view name, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        OwnLimits limits(options);
        Input input(std::string(name), descriptor);
        return opened(input, input.name(), options);
    });
}

Result<Log> openText(std::string_view text, std::string_view name, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        OwnLimits limits(options);
        Input input(std::string(name), text);
        return opened(input, input.name(), options);
    });
}

}  // namespace vek
