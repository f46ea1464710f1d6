// Uses the formats as an application does that is built without exceptions.

#include <cstdio>
#include <string>

#include <vekdb/formats/comparing.h>
#include <vekdb/formats/keycode.h>
#include <vekdb/formats/log.h>
#include <vekdb/formats/timecode.h>

namespace {

std::string scenesOf(const vek::View& rows) {
    std::string scenes;
    for (vek::Row row : rows) scenes += std::string(row["Scene"]) + " ";
    return scenes;
}

bool hasDayWork(const char* path) {
    auto log = vek::open(path);
    if (!log || !log->problems().empty()) return false;
    auto rows = log->choose(vek::Choice("Description=platform").order("Take").reverse());
    if (!rows || scenesOf(*rows) != "12 12 ") return false;
    std::string text;
    auto saved = rows->write(text, vek::Format::ale);
    return saved && text.starts_with("Heading") && vek::openText(text)->size() == 2;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    if (vek::open("no such file").reason().kind != vek::Reason::unreadable) return 1;
    if (vek::framesOf(*vek::parseTimecode("00:00:01:00"), 25) != 25) return 1;
    return hasDayWork(arguments[1]) ? 0 : 1;
}
