#include "tools/vek/cli/reading_options.h"

#include <map>

#include "formats/formats.h"
#include "tools/vek/cli/say.h"

namespace vek {

namespace {

constexpr ReadingOption readingOptions[] = {
    {"delimiter", "|csv|tsv|", "CSV and TSV"},
    {"encoding", "|vekdb|csv|tsv|plain-csv|json|jsonl|ale|edl|otio|fcpxml|", "files of text"},
    {"skip-lines", "|csv|tsv|xlsx|", "CSV, TSV and workbooks"},
    {"no-header", "|csv|tsv|xlsx|", "CSV, TSV and workbooks"},
    {"sheet", "|xlsx|", "workbooks"},
};

std::size_t countOfLogs(const Args& args) {
    std::size_t count = 0;
    for (const char* name : {"FILE", "OTHER", "IN", "A", "B"}) count += args.all(name).size();
    return count;
}

}  // namespace

bool ReadingOption::isFor(Format format) const {
    return formats.find(concat("|", formatName(format), "|")) != formats.npos;
}

std::string ReadingOption::notFor(Format format) const {
    return concat("--", name, " is for ", what, ", and this is ", formatName(format));
}

std::vector<ReadingOption> readingOptionsOf(const Args& args) {
    std::vector<ReadingOption> options;
    for (const ReadingOption& option : readingOptions) {
        if (args.has(option.name)) options.push_back(option);
    }
    return options;
}

// What would change nothing was meant to do something. Of several logs one may have need of it;
// of the others it is told.
void requireUse(const Log& log, const Args& args, std::size_t logs) {
    static std::map<std::string_view, std::size_t> idle;
    for (const ReadingOption& option : readingOptionsOf(args)) {
        if (option.isFor(log.format)) continue;
        const std::string text = concat(log.name, ": ", option.notFor(log.format));
        if (++idle[option.name] >= logs) throw Failure{wrongUsage, text};
        say(text);
    }
}

void requireUse(const Log& log, const Args& args) {
    requireUse(log, args, countOfLogs(args));
}

void tellSharedOptions(const Log& first, const Log& log, const Args& args) {
    std::string options;
    for (const ReadingOption& option : readingOptionsOf(args)) {
        if (!option.isFor(first.format) || !option.isFor(log.format)) continue;
        options += concat(options.empty() ? "--" : ", --", option.name);
    }
    if (options.empty()) return;
    say(concat(log.name, ": read with ", options,
               ", as the first log is; if it is of another form, make a copy with vek convert "
               "first"));
}

}  // namespace vek
