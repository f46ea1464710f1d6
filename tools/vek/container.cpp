#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <numeric>
#include <set>
#include <thread>
#include <unordered_set>

#include <vekdb/container/container_file.h>
#include <vekdb/host/open_file.h>

#include <vekdb/host/paths.h>
#include <vekdb/host/text_util.h>
#include "formats/formats.h"
#include "formats/text/width.h"
#include "formats/writing/writers.h"
#include "tools/vek/cli/outputs.h"
#include "tools/vek/cli/printout.h"
#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/saving.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"
#include "tools/vek/cli/writing.h"
#include "tools/vek/commands.h"

namespace vek {

namespace {

LightweightString<wchar_t> wide(const std::string& path) {
    return pathFromBytes(cellText(path));
}

// A container is called as its file is, byte for byte.
LightweightString<char> nameOf(const std::string& path) {
    LightweightString<char> name;
    pathToUTF8(stripPathAndExt(wide(path)), name);
    return name;
}

// An item is named by the text of its identity.
Cookie cookieNamed(const std::string& word) {
    Cookie cookie(word.c_str(), false);
    if (cookie.compare(Cookie()) != 0) return cookie;
    throw Failure{wrongUsage, "container: " + inQuotes(word) +
                                  " is no identity, expected 38 "
                                  "hexadecimal digits"};
}

std::string textOf(const Cookie& cookie) {
    return std::string(cookie.asString(true).view());
}

// An object is in a container once; one that stands there several times is told once.
void tellRepeated(const Log& log) {
    const unsigned column = log.findColumn("Cookie");
    std::unordered_set<std::string_view> known;
    std::size_t count = 0;
    unsigned first = 0;
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        if (!known.insert(log.cell(row, column)).second && count++ == 0) first = row;
    }
    if (count == 0) return;
    say(worded(log.name, {log.lineOf(first), "Cookie", inQuotes(log.cell(first, column)),
                          "each identity once",
                          concat(counted(count, "item"), count == 1 ? " is" : " are",
                                 " there a further time; remove takes all of one out")}));
}

Log requireContainer(Log log) {
    if (log.findColumn("Cookie") == noColumn) {
        throw Failure{unreadable, log.name + ": no column \"Cookie\", expected a container file"};
    }
    tellRepeated(log);
    return log;
}

// Each of these words once, in their order.
std::vector<std::string> onceEach(const std::vector<std::string>& words) {
    std::vector<std::string> once;
    std::unordered_set<std::string> known;
    for (const std::string& word : words) {
        if (known.insert(textOf(cookieNamed(word))).second) once.push_back(word);
    }
    return once;
}

// A container is a table file, whatever it is called.
Args argsOfContainer(Args args) {
    args.set("from", {formatName(Format::table)});
    return args;
}

Log readContainer(const Args& args) {
    return requireContainer(readLog(argsOfContainer(args)));
}

Log readContainerToChange(const Args& args) {
    return requireContainer(readLogToSave(argsOfContainer(args)));
}

std::vector<unsigned> allRows(const Log& log) {
    std::vector<unsigned> rows(log.rowCount());
    std::iota(rows.begin(), rows.end(), 0u);
    return rows;
}

// Of the rows, in their order.
std::vector<Cookie> itemsOf(const Log& log) {
    const unsigned column = log.findColumn("Cookie");
    std::vector<Cookie> items;
    items.reserve(log.rowCount());
    for (unsigned row = 0; row < log.rowCount(); ++row) {
        items.push_back(Cookie::fromText(log.cell(row, column)));
    }
    return items;
}

std::set<Cookie> setOf(const std::vector<Cookie>& items) {
    return {items.begin(), items.end()};
}

int listAsJson(const Log& log) {
    Printout out;
    JsonWriter json(out);
    json.beginObject();
    json.text("file", log.name);
    json.text("name", log.parameter("Name"));
    json.flag("permanent", log.parameter("Permanent") == "true");
    json.beginArray("items");
    const unsigned column = log.findColumn("Cookie");
    for (unsigned row = 0; row < log.rowCount(); ++row) json.element(log.cell(row, column));
    json.end();
    json.end();
    out.close();
    return readingResult(log);
}

int list(const Args& args) {
    Log log = readContainer(args);
    if (tellsJson(args)) return listAsJson(log);
    Printout out;
    std::string name = log.parameter("Name");
    if (!name.empty()) out.line("# " + escaped(name));
    unsigned column = log.findColumn("Cookie");
    for (unsigned row = 0; row < log.rowCount(); ++row) out.line(escaped(log.cell(row, column)));
    out.close();
    return readingResult(log);
}

void refuseExisting(const std::string& path) {
    if (!fileExists(wide(path))) return;
    throw Failure{unwritable, path + ": is there already; add items with vek container add"};
}

// Of two that make one container the second one sees that of the first. Who holds the folder for
// long is not waited for.
OpenFile holdFolderOf(const std::string& path) {
    constexpr int mostTries = 500;
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    OpenFile held = OpenFile::at(folder.empty() ? "." : folder.c_str());
    for (int i = 0; held.error() == 0 && i < mostTries && held.lock() == EWOULDBLOCK; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return held;
}

// The library writes it between quotes as it is, and reads a backslash in front of an n as the end
// of a line.
void requireName(const std::string& path, std::string_view name) {
    if (canBeParameter("Name", name) && name.find("\\n") == name.npos) return;
    throw Failure{wrongUsage, concat(path, ": ", inQuotes(name),
                                     " is no name for a container, expected one without quotes, "
                                     "tabs, line ends, \\n or blanks at its ends; say it with "
                                     "--name")};
}

int create(const std::string& path, const std::vector<std::string>& items, const Args& args) {
    std::vector<Cookie> cookies;
    for (const std::string& item : items) cookies.push_back(cookieNamed(item));
    refuseExisting(path);
    const LightweightString<char> name =
        args.has("name") ? cellText(args.text("name")) : nameOf(path);
    requireName(path, name.view());
    DBFieldDesc schema[] = {{"Cookie", DBFieldTypes::text}, {}};
    QuorContainerFile::Writer writer(schema);
    writer.setName(name);
    writer.setPermanent(args.has("permanent"));
    for (const Cookie& cookie : cookies) writer.addItem(cookie);
    if (args.has("dry-run")) {
        requireWritable(path);
        say(concat(path, ": ", counted(cookies.size(), "item"), " would be in it"));
        return done;
    }
    const OpenFile folder = holdFolderOf(path);
    refuseExisting(path);
    // Why a file may not stand there is said here; the writer of containers says nothing.
    holdFile(path);
    writer.save(wide(path));
    QuorContainerFile::Reader written(wide(path), false);
    if (written.valid() && written.getNumItems() == cookies.size()) return done;
    throw Failure{unwritable, path + ": could not be written; check its folder"};
}

int finish(const Log& log, const std::vector<unsigned>& rows, std::size_t changed, const char* done,
           const Args& args) {
    if (changed > 0) saveInPlace(log, rows, args);
    if (args.has("dry-run"))
        say(concat(log.name, ": ", counted(changed, "item"), " would be ", done));
    return vek::done;
}

// Existing files are replaced whole or not at all, which the library's own writer of containers
// does not promise.
int add(const std::string& path, const std::vector<std::string>& items, const Args& args) {
    Log log = readContainerToChange(args);
    auto column = static_cast<unsigned short>(log.findColumn("Cookie"));
    std::set<Cookie> known = setOf(itemsOf(log));
    std::size_t added = 0;
    for (const std::string& item : items) {
        const Cookie cookie = cookieNamed(item);
        if (!known.insert(cookie).second) {
            say(path + ": " + item + " is in it already");
            continue;
        }
        unsigned row = log.table->add_records(1);
        log.table->get_record(row)->setField(column, cellText(textOf(cookie)));
        ++added;
    }
    return finish(log, allRows(log), added, "added", args);
}

int remove(const std::string& path, const std::vector<std::string>& items, const Args& args) {
    Log log = readContainerToChange(args);
    const std::vector<Cookie> there = itemsOf(log);
    const std::set<Cookie> known = setOf(there);
    std::set<Cookie> gone;
    std::size_t missing = 0;
    for (const std::string& item : items) {
        const Cookie cookie = cookieNamed(item);
        if (known.contains(cookie) && gone.insert(cookie).second) continue;
        ++missing;
        say(path + ": " + item + " is not in it");
    }
    std::vector<unsigned> rows = allRows(log);
    std::erase_if(rows, [&](unsigned row) { return gone.contains(there[row]); });
    finish(log, rows, items.size() - missing, "removed", args);
    return missing > 0 ? found : done;
}

int contains(const std::string& path, const std::vector<std::string>& items, const Args& args) {
    readContainer(args);
    QuorContainerFile::Reader reader(wide(path), false);
    for (const std::string& item : items) {
        if (!reader.contains(cookieNamed(item))) return found;
    }
    return done;
}

int run(const Args& args) {
    std::string action = args.text("ACTION");
    std::string path = args.text("FILE");
    const std::vector<std::string> items = onceEach(args.all("ITEM"));
    bool needsItems = action == "add" || action == "remove" || action == "contains";
    if (needsItems && items.empty()) {
        throw Failure{wrongUsage, "container " + action + ": expected one ITEM or more"};
    }
    if (path == "-") throw Failure{wrongUsage, "container: works on files, not standard input"};
    if (args.has("format") && action != "list") {
        throw Failure{wrongUsage, "container: --format is for list"};
    }
    for (const char* name : {"name", "permanent"}) {
        if (!args.has(name) || action == "create") continue;
        throw Failure{wrongUsage, concat("container: --", name, " is for create")};
    }
    if (action == "list") return list(args);
    if (action == "create") return create(path, items, args);
    if (action == "add") return add(path, items, args);
    if (action == "remove") return remove(path, items, args);
    return contains(path, items, args);
}

}  // namespace

Command containerCommand() {
    return {
        "container",
        "list, make and change container files",
        "A container file lists objects by their identities, each 38 hexadecimal digits. contains "
        "ends with 0 when all of them are in it, else with 1; remove with 1 when one was not.",
        {{"vek container create bin.vek --name Bin 910a2debbeeb8da0f893a2ed71c1868f00004d",
          "a container of one item"},
         {"vek container add bin.vek 975835ddbfc8460f987bbcbec3f2827900004d", "one more"},
         {"vek container list bin.vek", "its name and items"},
         {"vek container contains bin.vek 975835ddbfc8460f987bbcbec3f2827900004d",
          "for scripts: the exit code answers"},
         {"vek container remove bin.vek 975835ddbfc8460f987bbcbec3f2827900004d", "and out again"}},
        {{"ACTION", "what to do", false, false, "list|create|add|remove|contains"},
         {"FILE", "the container file"},
         {"ITEM", "identities", true, true}},
        {{"--name", "NAME", "with create: its name; that of the file as a rule"},
         {"--permanent", "", "with create: mark it as permanent"},
         {"-f,--format", "FORMAT", "with list: text (as a rule), or json for programs", false,
          tellings},
         {"-n,--dry-run", "", "with create, add, remove: say what would be done, change nothing"},
         backupOption()},
        run,
    };
}

}  // namespace vek
