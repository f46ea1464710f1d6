#include "tools/vek/cli/saving.h"

#include "formats/formats.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/terminal.h"
#include "tools/vek/cli/writing.h"

namespace vek {

namespace {

// A file that was there before is kept beside the new one.
Held heldForBackup(const std::string& path) {
    return path != "-" && isThere(path) ? holdFile(path) : nullptr;
}

void requireInputsKept(const std::string& path, const Args& args) {
    std::vector<std::string> inputs = args.all("FILE");
    inputs.insert(inputs.end(), args.all("OTHER").begin(), args.all("OTHER").end());
    requireNoBackupOver(inputs, path);
}

Printout outputTo(const std::string& path, const Log& log, const Args& args) {
    const bool backup = args.has("backup");
    if (backup) requireInputsKept(path, args);
    if (args.has("dry-run")) {
        requireWritable(path);
        if (backup) requireBackup(path);
        return Printout::trial(path);
    }
    const bool isOther = args.has("output");
    Held held = log.held || !backup || !isOther ? log.held : heldForBackup(path);
    return Printout(path, held, backup);
}

void saveElsewhere(const InPlace& now, const Args& args) {
    const Log& log = now.log;
    requireWhole(log);
    const std::string path = args.text("output");
    const Format target = path == "-" ? targetOf(log) : targetFor(log, path);
    Printout out = outputTo(path, log, args);
    Losses losses;
    if (target == log.format && isChangedInPlace(target)) {
        writeInPlace(now, false, out, losses);
    } else {
        const WriteStyle style{log.lineEnd, log.beganWithMark};
        writeSheet({log, viewOf(log, now.rows), now.columns}, target, style, out, losses);
    }
    out.close();
    tellLosses(losses, out.name());
}

WriteStyle styleOfCopy(const Log& log, Format target, const Args& args) {
    WriteStyle style = styleFrom(args, target);
    if (!args.has("crlf")) style.lineEnd = log.lineEnd;
    style.byteOrderMark = log.beganWithMark;
    const bool hasForm = target == Format::csv || target == Format::tsv;
    if (hasForm && target == log.format) style.form = log.form;
    return style;
}

}  // namespace

void writeCopy(const InPlace& now, Format target, const Args& args, Output& out, Losses& losses) {
    const Log& log = now.log;
    // The events of an edit list belong together with what stands between them.
    const bool isWhole = !now.isPiece || target != Format::edl;
    if (target == log.format && isChangedInPlace(target) && isWhole && !asksForStyle(args)) {
        writeInPlace(now, false, out, losses);
        return;
    }
    const WriteStyle style = styleOfCopy(log, target, args);
    writeSheet({log, viewOf(log, now.rows), now.columns}, target, style, out, losses);
}

Format targetFor(const Log& log, const std::string& path) {
    if (hasTargetEnding(path)) return targetOfPath(path, programTerms());
    try {
        return targetOf(log);
    } catch (const Failure&) {
        return targetOfPath(path, programTerms());
    }
}

Log readLogToSave(const Args& args) {
    if (!args.has("output")) requireChangeable(args.text("FILE"));
    if (args.has("dry-run")) return readLogToCopy(args);
    if (!args.has("output")) return readLogToChange(args);
    Held held = holdInput({args.text("FILE")}, args.text("output"));
    Log log = readLogToCopy(args);
    log.held = held;
    return log;
}

void saveInPlace(const InPlace& now, const Args& args) {
    Printout out = outputTo(now.log.path, now.log, args);
    Losses losses;
    if (!writeInPlace(now, !out.isStandardOutput(), out, losses)) return;
    out.close();
    tellLosses(losses, out.name());
}

void saveInPlace(const Log& log, const Args& args) {
    saveInPlace(InPlace(log), args);
}

void saveInPlace(const Log& log, const std::vector<unsigned>& rows, const Args& args) {
    saveInPlace(InPlace(log, rows), args);
}

void saveResult(const InPlace& now, const Args& args) {
    args.has("output") ? saveElsewhere(now, args) : saveInPlace(now, args);
}

void JointSaving::add(const Log& log, const std::vector<unsigned>& rows) {
    if (args_.has("dry-run")) return saveInPlace(log, rows, args_);
    InPlace now(log);
    now.rows = rows;
    File file{Printout::prepared(log.path, log.held, args_.has("backup"))};
    if (!writeInPlace(now, true, file.out, file.losses)) return;
    file.out.close();
    files_.push_back(std::move(file));
}

void JointSaving::commit() {
    std::string saved;
    for (File& file : files_) {
        try {
            file.out.commit();
        } catch (const Failure& failure) {
            if (saved.empty()) throw;
            throw Failure{failure.kind, concat(failure.text, "; saved before: ", saved)};
        }
        tellLosses(file.losses, file.out.name());
        saved += saved.empty() ? file.out.name() : concat(", ", file.out.name());
    }
}

void saveResult(const Log& log, const std::vector<unsigned>& rows, const Args& args) {
    saveResult(InPlace(log, rows), args);
}

void saveResult(const Log& log, const Args& args) {
    saveResult(InPlace(log), args);
}

bool goesToStandardOutput(const Args& args) {
    return args.text(args.has("output") ? "output" : "FILE") == "-";
}

int tellUnmatched(const Log& log, const char* outcome) {
    say(concat(log.name, ": no row matches, ", outcome));
    return found;
}

int finishUnmatched(const Log& log, const char* outcome, const Args& args) {
    if (goesToStandardOutput(args)) saveResult(log, args);
    return tellUnmatched(log, outcome);
}

void printRows(const Log& log, const std::vector<unsigned>& rows) {
    Printout out;
    Losses ignored;
    writeSheet({log, viewOf(log, rows), allColumns(log)}, Format::csv, {}, out, ignored);
    out.close();
}

Option savingOption() {
    return {"-o,--output", "OUT",
            "write this file, leave the log as it is; its ending gives the format, else it is that "
            "of the log"};
}

}  // namespace vek
