#include "formats/reading/documents.h"

#include <filesystem>

#include <vekdb/host/text_util.h>
#include "formats/log/log.h"
#include "formats/text/text_lines.h"

namespace vek::formats {

namespace {

constexpr const char* asSheet = "save it as .xlsx or as CSV in the program that made it";
constexpr const char* asTimeline = "export it as FCPXML, OpenTimelineIO, ALE or EDL";
constexpr const char* asText = "save it as plain text in the program that made it";

// What a text begins with, and what else such a one has near its beginning.
struct Document {
    std::string_view start;
    std::string_view within;
    const char* name;
    const char* advice;
};

constexpr Document documents[] = {
    {"<html", "", "a web page (HTML)", asSheet},
    {"<!doctype html", "", "a web page (HTML)", asSheet},
    {"<table", "", "a web page (HTML)", asSheet},
    {"<?xml", "urn:schemas-microsoft-com:office:spreadsheet", "an XML spreadsheet", asSheet},
    {"<?xml", "<html", "a web page (HTML)", asSheet},
    {"<?xml", "<xmeml", "a timeline in XML of another kind (xmeml)", asTimeline},
    {"<xmeml", "", "a timeline in XML of another kind (xmeml)", asTimeline},
    {"<?xml", "", "an XML document", asSheet},
    {"{\\rtf", "", "a rich text document (RTF)", asText},
    {"%PDF-", "", "a PDF document", asText},
};

bool isIt(const Document& document, std::string_view text) {
    return sameText(text.substr(0, document.start.size()), document.start) &&
           (document.within.empty() || text.find(document.within) != text.npos);
}

std::string_view withoutSlashes(std::string_view path) {
    while (path.ends_with('/')) path.remove_suffix(1);
    return path;
}

}  // namespace

void refuseDocument(std::string_view head, const Log& log) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (head.starts_with(mark)) head.remove_prefix(mark.size());
    head = trimmed(head);
    for (const Document& document : documents) {
        if (!isIt(document, head)) continue;
        throw Failure{unreadable, log.name, {1, "", document.name, "a log", document.advice}};
    }
}

bool isDocumentFolder(std::string_view path) {
    constexpr std::string_view ending = ".fcpxmld";
    const std::string_view folder = withoutSlashes(path);
    if (folder.size() <= ending.size()) return false;
    std::error_code ignored;
    return sameText(folder.substr(folder.size() - ending.size()), ending) &&
           std::filesystem::is_directory(folder, ignored);
}

std::string pathOfDocument(const std::string& path) {
    return isDocumentFolder(path) ? concat(withoutSlashes(path), "/Info.fcpxml") : path;
}

}  // namespace vek::formats
