#include "tools/vek/cli/telling.h"

namespace vek {

Option tellingOption() {
    return {"-f,--format", "FORMAT", "text for people (as a rule), or json for programs", false,
            "text|json"};
}

bool tellsJson(const Args& args) {
    return args.text("format") == "json";
}

}  // namespace vek
