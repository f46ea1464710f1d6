// Any bytes as a condition: a choice, or a reason with words. What a comparison of bytes chooses is
// worked out beside.

#include <vekdb/formats/log.h>
#include "target.h"

namespace {

constexpr std::string_view rows =
    "Name,Take,Start,End\n"
    "A001,1,01:00:00:00,01:00:10:00\n"
    "a001,02,01:00:10:00,01:00:20:00\n"
    "B 7,2,,\n"
    "\"x,\"\"y\"\"\",10,10:00:00;02,10:00:00;04\n"
    ",,see note,\n"
    "\xC3\x84rger,1.5,00:59:59:24,01:00:00:00\n";

const vek::Log& theLog() {
    static const vek::Log log = *vek::openText(rows, "rows.csv");
    return log;
}

// The columns have no operator in their names, so it is the first one behind a name.
std::string compare(std::string_view condition, const vek::View& chosen, std::string_view name,
                    std::string_view op, bool isEqual) {
    const std::string start = std::string(name).append(op);
    if (!condition.starts_with(start)) return {};
    const std::string_view text = condition.substr(start.size());
    std::size_t expected = 0;
    for (std::string_view cell : *theLog().column(name)) {
        expected += (cell == text) == isEqual ? 1 : 0;
    }
    return chosen.size() == expected ? "" : "another choice than byte by byte";
}

std::string check(std::string_view condition) {
    auto chosen = theLog().choose(vek::Choice(condition));
    if (!chosen) return chosen.reason().text().empty() ? "a reason without words" : "";
    for (const char* name : {"Name", "Take", "Start", "End"}) {
        for (bool isEqual : {true, false}) {
            const std::string wrong =
                compare(condition, *chosen, name, isEqual ? "==" : "!=", isEqual);
            if (!wrong.empty()) return wrong;
        }
    }
    return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::require(check(fuzz::textOf(data, size)));
    return 0;
}
