#include "tools/vek/cli/reading_options.h"

#include "tools/vek/cli/say.h"

namespace vek {

namespace {

bool isText(Format format) {
    return format == Format::csv || format == Format::tsv;
}

bool mayBeFor(std::string_view option, Format format) {
    if (isText(format)) return true;
    if (option == "encoding") return format == Format::ale || format == Format::edl;
    return option != "delimiter" && format == Format::xlsx;
}

}  // namespace

void tellSharedOptions(const Log& first, const Log& log, const Args& args) {
    std::string options;
    for (const char* option : {"delimiter", "encoding", "skip-lines", "no-header"}) {
        if (!args.has(option) || !mayBeFor(option, first.format) || !mayBeFor(option, log.format))
            continue;
        options += concat(options.empty() ? "--" : ", --", option);
    }
    if (options.empty()) return;
    say(concat(log.name, ": read with ", options,
               ", as the first log is; if it is of another form, make a copy with vek convert "
               "first"));
}

}  // namespace vek
