#include "formats/reading/open_log.h"

#include "formats/failure.h"
#include "formats/formats.h"
#include "formats/input/held.h"
#include "formats/input/input.h"
#include "formats/log/column_names.h"
#include "formats/log/target.h"
#include "formats/reading/decoding.h"
#include "formats/reading/documents.h"
#include "formats/reading/readers.h"

namespace vek::formats {

namespace {

Failure withAdvice(const Failure& failure, const std::string& advice) {
    Failure made = failure;
    made.text = concat(made.text, "; ", advice);
    made.reason.advice = advice;
    return made;
}

std::string inCapitals(std::string text) {
    for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return text;
}

// A format that every text is one of, or that other texts begin like.
bool isOfCells(Format format) {
    return format == Format::csv || format == Format::tsv || format == Format::json;
}

// Where the name's ending, or a person, said a format that the bytes have not, the reason says
// which one they seem to have.
void readFormat(Input& input, Log& log) {
    const std::string head(input.head());
    log.format = log.opening.format ? *log.opening.format : recognised(log.path, head);
    if (log.held != nullptr) requireWrittenBack(log);
    const bool isGuessed = !log.opening.format && log.opening.wishes.skippedLines == 0;
    if (isGuessed && isOfCells(log.format)) refuseDocument(head, log);
    try {
        readAs(log.format, input, log.opening.wanted, log);
    } catch (const Failure& failure) {
        const std::string other = otherFormat(log.format, head);
        const bool saysWhatToDo = !failure.reason.advice.empty();
        if (failure.kind != unreadable || saysWhatToDo || other.empty()) throw;
        throw withAdvice(failure, concat("if it is ", inCapitals(other), ", say so with ",
                                         log.opening.terms->from, " ", other));
    }
}

Log openLog(Input& input, const std::string& path, const Opening& opening,
            std::shared_ptr<Source> source, Held held) {
    Log log;
    log.source = std::move(source);
    log.held = std::move(held);
    log.opening = opening;
    log.path = path;
    log.name = input.name();
    log.bytesRead = input.bytesRead();
    if (input.head().empty()) {
        throw Failure{unreadable, log.name, {0, "", "is empty", "a log", ""}};
    }
    decode(input, log);
    if (input.head().empty()) {
        throw Failure{unreadable, log.name + ": is empty once unpacked, expected a log"};
    }
    readFormat(input, log);
    noteRepeatedNames(log);
    return log;
}

// What a save in place compares the log with.
void noteWhatCame(Log& log) {
    Source& source = *log.source;
    source.rows = log.rowCount();
    for (unsigned i = 0; i < log.columnCount(); ++i) {
        source.columns.push_back({log.columnName(i), log.table->get_field_type(i)});
        source.cameFrom.push_back(i);
    }
    source.named = source.columns.size() - log.unnamed.size();
    for (unsigned i = 0; i < log.table->get_num_params(); ++i) {
        source.parameters.push_back({log.table->get_param_name(i), log.table->get_param_text(i)});
    }
    notePlacesAsRead(log);
}

}  // namespace

Log openLog(Input& input, const std::string& path, const Opening& opening) {
    return openLog(input, path, opening, nullptr, nullptr);
}

Log openLog(const std::string& named, const Opening& opening) {
    const std::string path = pathOfDocument(named);
    Input input(path, opening);
    return openLog(input, path, opening);
}

namespace {

Log openWithSource(const std::string& named, const Opening& opening, Held held) {
    const std::string path = pathOfDocument(named);
    auto source = std::make_shared<Source>();
    source->input = std::make_shared<Input>(path, opening);
    source->input->keep();
    Log log = openLog(*source->input, path, opening, source, std::move(held));
    noteWhatCame(log);
    return log;
}

}  // namespace

Log openLogToChange(const std::string& path, const Opening& opening) {
    return openWithSource(path, opening, holdFile(path));
}

Log openLogToCopy(const std::string& path, const Opening& opening) {
    return openWithSource(path, opening, nullptr);
}

}  // namespace vek::formats
