#include "tools/vek/cli/each_log.h"

#include <algorithm>

#include "tools/vek/cli/reading.h"
#include "tools/vek/cli/say.h"

namespace vek {

bool hasSeveral(const Args& args) {
    return args.all("FILE").size() > 1;
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
            if (failure.kind != unreadable) throw;
            sayFailure(failure.text);
            failed(path, failure.text);
            result = std::max(result, exitCodeOf(unreadable));
        }
    }
    return result;
}

int jsonOfEach(const Args& args, Printout& out,
               const std::function<int(const Log& log, const Args& one, JsonWriter& json)>& add) {
    JsonWriter json(out);
    json.beginObject();
    json.beginArray("files");
    const int result = forEachLog(
        args,
        [&](const Args& one) {
            const Log log = readLog(one);
            out.renewLimit();
            return add(log, one, json);
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

}  // namespace vek
