#include "tools/vek/cli/saving.h"

#include <unistd.h>

#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/writing.h"

namespace vek {

namespace {

// A file that was there before is kept beside the new one.
Held heldForBackup(const std::string& path) {
    const bool isThere = path != "-" && ::access(path.c_str(), F_OK) == 0;
    return isThere ? holdFile(path) : nullptr;
}

WriteStyle styleFor(const Log& log, bool isSameFormat) {
    WriteStyle style{log.lineEnd, log.beganWithMark};
    style.keepsLengths = isSameFormat;
    return style;
}

void saveElsewhere(const Sheet& sheet, const std::string& path, bool backup) {
    const Log& log = sheet.log;
    requireWhole(log);
    const Target target = path == "-" ? targetOf(log) : targetFor(log, path);
    const bool isSameFormat = std::string_view(targetName(target)) == formatName(log.format);
    Held held = log.held || !backup ? log.held : heldForBackup(path);
    Output out(path, held);
    Losses losses;
    writeSheet(sheet, target, styleFor(log, isSameFormat), out, losses);
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
    Log log = readLog(args);
    log.held = held;
    return log;
}

void saveResult(const Sheet& sheet, const Args& args) {
    if (!args.has("output")) return saveInPlace(sheet, args.has("backup"));
    saveElsewhere(sheet, args.text("output"), args.has("backup"));
}

void printSheet(const Sheet& sheet) {
    Output out;
    Losses ignored;
    writeSheet(sheet, Target::csv, {}, out, ignored);
    out.close();
}

Option savingOption() {
    return {"-o,--output", "OUT",
            "write this file, leave the log as it is; its ending gives the format, else it is that "
            "of the log"};
}

}  // namespace vek
