#include "formats/face/guarded.h"
#include "formats/face/inside.h"
#include "formats/input/input.h"
#include "formats/log/column_names.h"
#include "formats/reading/open_log.h"

namespace vek {

namespace {

using formats::Input;

formats::Opening openingOf(const OpenOptions& options) {
    if (options.delimiter != '\0' && !formats::canDelimit(options.delimiter)) {
        throw formats::Failure{formats::wrongUsage,
                               "",
                               {0, "", "cells cannot be separated by the delimiter",
                                "a character of ASCII other than a quote and a line end", ""}};
    }
    formats::Opening opening;
    opening.format = options.format;
    opening.wishes = {options.encoding, options.delimiter, options.skippedLines,
                      options.hasNoHeading, options.sheet};
    if (options.maxBytes != 0) opening.limits.bytes = options.maxBytes;
    opening.limits.cells = options.maxCells;
    return opening;
}

Log logOf(formats::Log read, bool isToChange) {
    auto inside = std::make_shared<LogInside>();
    inside->log = std::move(read);
    inside->isToChange = isToChange;
    return LogInside::logOf(std::move(inside));
}

Log opened(Input& input, const formats::Opening& opening) {
    return logOf(formats::openLog(input, input.name(), opening), false);
}

}  // namespace

std::string fileOf(std::string_view path, Reason::Kind kind) {
    if (path.find('\0') != std::string_view::npos) {
        throw formats::Failure{kind,
                               std::string(path.substr(0, path.find('\0'))),
                               {0, "", "a zero byte in the path", "a path of the system", ""}};
    }
    return path == "-" ? "./-" : std::string(path);
}

Result<Log> open(std::string_view path, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        return logOf(formats::openLog(fileOf(path, formats::unreadable), openingOf(options)),
                     false);
    });
}

Result<Log> openToChange(std::string_view path, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        return logOf(
            formats::openLogToChange(fileOf(path, formats::unreadable), openingOf(options)), true);
    });
}

Result<Log> openDescriptor(int descriptor, std::string_view name, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        const formats::Opening opening = openingOf(options);
        Input input(std::string(name), descriptor, opening);
        return opened(input, opening);
    });
}

Result<Log> openText(std::string_view text, std::string_view name, const OpenOptions& options) {
    return guarded([&]() -> Result<Log> {
        const formats::Opening opening = openingOf(options);
        Input input(std::string(name), text, opening);
        return opened(input, opening);
    });
}

namespace {

void requireAdoptable(const vekdb* table, std::string_view name) {
    if (table != nullptr && table->get_num_fields() != 0 && table->get_show_tags_only() == 0) {
        return;
    }
    throw formats::Failure{
        formats::wrongUsage,
        std::string(name),
        {0, "", "no such table can be a log", "a table with columns that shows all its rows", ""}};
}

}  // namespace

Result<Log> adopt(std::unique_ptr<vekdb> table, std::string_view name) {
    return guarded([&]() -> Result<Log> {
        requireAdoptable(table.get(), name);
        formats::Log log;
        log.name = name;
        log.table = std::move(table);
        // The parameter by which a file says that it is a table.
        if (log.table->get_num_params() == 0) log.table->set_param_val("VEKDB", "Rev 1");
        formats::noteRepeatedNames(log);
        return logOf(std::move(log), false);
    });
}

}  // namespace vek
