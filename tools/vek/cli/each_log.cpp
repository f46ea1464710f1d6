#include "tools/vek/cli/each_log.h"

#include <algorithm>
#include <utility>

#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"
#include "tools/vek/cli/telling.h"

namespace vek {

bool hasSeveral(const Args& args) {
    return args.all("FILE").size() > 1;
}

bool isOfOneLog(const Failure& failure) {
    return failure.kind == unreadable ||
           (failure.kind == wrongUsage && !failure.reason.file.empty());
}

int forEachLog(const Args& args, const std::function<int(const Args& one)>& tell,
               const std::function<void(const std::string& path, const std::string& why)>& failed) {
    int result = done;
    for (const std::string& path : args.all("FILE")) {
        Args one = args;
        one.set("FILE", {path});
        try {
            result = std::max(result, tell(one));
        } catch (const Failure& failure) {
            if (!isOfOneLog(failure)) throw;
            sayFailure(failure.text);
            failed(path, failure.text);
            result = std::max(result, exitCodeOf(failure.kind));
        }
    }
    return result;
}

namespace {

int jsonOfEach(const Args& args, Printout& out, const TellLog& tell) {
    JsonWriter json(out);
    json.beginObject();
    json.beginArray("files");
    const int result = forEachLog(
        args,
        [&](const Args& one) {
            const Log log = readLog(one);
            out.renewLimit();
            return tell(log, one, out, &json);
        },
        [&](const std::string& path, const std::string& why) {
            json.beginObject();
            json.text("file", path);
            json.text("failure", why);
            json.end();
        });
    json.end();
    json.end();
    return result;
}

int textOfEach(const Args& args, Printout& out, const TellLog& tell) {
    bool isFirst = true;
    return forEachLog(
        args,
        [&](const Args& one) {
            const Log log = readLog(one);
            out.renewLimit();
            if (!std::exchange(isFirst, false)) out.line("");
            return tell(log, one, out, nullptr);
        },
        [](const std::string&, const std::string&) {});
}

}  // namespace

int tellEach(const Args& args, const TellLog& tell) {
    Printout out;
    const int result = tellsJson(args) ? jsonOfEach(args, out, tell) : textOfEach(args, out, tell);
    out.close();
    return result;
}

}  // namespace vek
