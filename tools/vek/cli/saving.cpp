#include "tools/vek/cli/saving.h"

#include <unistd.h>

#include <numeric>

#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/writing.h"

namespace vek {

namespace {

// A file that was there before is kept beside the new one.
Held heldForBackup(const std::string& path) {
    const bool isThere = path != "-" && ::access(path.c_str(), F_OK) == 0;
    return isThere ? holdFile(path) : nullptr;
}

void saveElsewhere(const Log& log, const std::vector<unsigned>& rows, const std::string& path,
                   bool backup) {
    requireWhole(log);
    const Target target = path == "-" ? targetOf(log) : targetFor(log, path);
    Held held = log.held || !backup ? log.held : heldForBackup(path);
    const bool keepsLines = target == log.format && isChangedInPlace(log.format);
    if (keepsLines) {
        saveCopy(log, rows, path, held, backup);
        return;
    }
    Output out(path, held);
    Losses losses;
    WriteStyle style{log.lineEnd, log.beganWithMark};
    writeSheet({log, viewOf(log, rows), allColumns(log)}, target, style, out, losses);
    if (backup && held) backUp(path, *held);
    out.close();
    losses.tell(out.name());
}

}  // namespace

Target targetFor(const Log& log, const std::string& path) {
    if (hasTargetEnding(path)) return targetOfPath(path);
    try {
        return targetOf(log);
    } catch (const Failure&) {
        return targetOfPath(path);
    }
}

Log readLogToSave(const Args& args) {
    if (args.has("dry-run")) return readLog(args);
    if (!args.has("output")) return readLogToChange(args);
    Held held = holdInput({args.text("FILE")}, args.text("output"));
    Log log = readLogToCopy(args.text("FILE"), args.text("from"));
    log.held = held;
    return log;
}

void saveResult(const Log& log, const std::vector<unsigned>& rows, const Args& args) {
    if (!args.has("output")) {
        saveInPlace(log, rows, args.has("backup"));
        return;
    }
    saveElsewhere(log, rows, args.text("output"), args.has("backup"));
}

void saveResult(const Log& log, const Args& args) {
    std::vector<unsigned> rows(log.rowCount());
    std::iota(rows.begin(), rows.end(), 0u);
    saveResult(log, rows, args);
}

void printRows(const Log& log, const std::vector<unsigned>& rows) {
    Output out;
    Losses ignored;
    writeSheet({log, viewOf(log, rows), allColumns(log)}, Target::csv, {}, out, ignored);
    out.close();
}

Option savingOption() {
    return {"-o,--output", "OUT",
            "write this file, leave the log as it is; its ending gives the format, else it is that "
            "of the log"};
}

}  // namespace vek
