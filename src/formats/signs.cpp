#include "formats/signs.h"

#include <vekdb/host/text_util.h>
#include "formats/edl/edl_lines.h"
#include "formats/json/json_text.h"
#include "formats/reading/delimiters.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

std::string_view behindFirstFilledLine(std::string_view head) {
    const std::string_view line = firstFilledLine(head);
    if (line.empty()) return {};
    head.remove_prefix(static_cast<std::size_t>(line.data() + line.size() - head.data()));
    return head;
}

// A string that the text ends in, as it is cut there, may be a name.
bool beginsWithName(std::string_view text) {
    JsonText json(text.data(), text.data() + text.size());
    if (!json.takeString()) return json.atEnd();
    json.skipBlanks();
    return json.atEnd() || json.peek() == ':';
}

bool isOfEvents(std::string_view line) {
    EdlEvent event;
    return trimmed(line).starts_with('*') || isEdlMotion(line) || isEdlSplit(line) ||
           edlCounting(line).has_value() || parseEdlEvent(line, event);
}

template <class Is>
bool hasLine(std::string_view text, Is is) {
    LineWalk walk(text);
    std::string_view line;
    while (walk.next(line)) {
        if (is(line)) return true;
    }
    return false;
}

bool hasTitle(std::string_view line) {
    return sameText(line.substr(0, 6), "TITLE:");
}

}  // namespace

std::string_view firstFilledLine(std::string_view head) {
    LineWalk walk(head);
    std::string_view line;
    while (walk.next(line)) {
        if (!trimmed(line).empty()) return trimmed(line);
    }
    return {};
}

bool isJson(std::string_view head) {
    std::string_view text = trimmed(head);
    const bool isList = text.starts_with('[');
    if (!isList && !text.starts_with('{')) return false;
    text = trimmed(text.substr(1));
    if (isList && text.starts_with(']')) return trimmed(text.substr(1)).empty();
    if (isList && !text.starts_with('{')) return false;
    if (isList) text = trimmed(text.substr(1));
    if (!text.starts_with('}')) return text.starts_with('"') && beginsWithName(text);
    const std::string_view behind = text.substr(1);
    return behind.empty() || isAsciiSpace(behind.front()) || (isList && !trimmed(behind).empty());
}

bool isEditList(std::string_view head) {
    const std::string_view line = firstFilledLine(head);
    if (hasTitle(line)) return true;
    EdlEvent event;
    const bool isTabbed = line.find('\t') != line.npos;
    return edlCounting(line).has_value() || (!isTabbed && parseEdlEvent(line, event));
}

bool isTitleOfCells(std::string_view head, bool isWhole, bool isCalledSo) {
    if (!hasTitle(firstFilledLine(head))) return false;
    const std::string_view rest = behindFirstFilledLine(head);
    if (hasLine(rest, isOfEvents)) return false;
    const bool hasMore = isCalledSo && !trimmed(rest).empty();
    return hasMore || isDelimited(rest, isWhole) || isDelimited(head, isWhole);
}

bool isLogExchange(std::string_view head) {
    if (!sameText(firstFilledLine(head), "Heading")) return false;
    const std::string_view next = firstFilledLine(behindFirstFilledLine(head));
    return next.empty() || next.find('\t') != next.npos || sameText(next.substr(0, 5), "FIELD") ||
           hasLine(head, [](std::string_view line) { return sameText(trimmed(line), "Column"); });
}

}  // namespace vek::formats
