#include "tools/vek/report/page.h"

#include <algorithm>

#include "formats/failure.h"
#include "tools/vek/report/data.h"
#include "tools/vek/report/facts.h"
#include "tools/vek/report/markup.h"
#include "tools/vek/report/parts.h"
#include "tools/vek/report/pictures.h"
#include "tools/vek/report/table.h"

namespace vek::page {

namespace {

// Whatever would get into the page all the same could do nothing.
std::string policy() {
    return "default-src 'none'; script-src " + policySource(pageScript) + "; style-src " +
           policySource(pageStyle) + "; base-uri 'none'; form-action 'none'";
}

// What all logs say of it, or else nothing.
std::string commonParameter(const LogsOnPage& logs, const char* name) {
    const std::string first = logs.front()->log().parameter(name);
    const bool isCommon = std::all_of(logs.begin(), logs.end(), [&](const auto& each) {
        return each->log().parameter(name) == first;
    });
    return isCommon ? first : std::string();
}

std::string titleOf(const LogsOnPage& logs) {
    const std::string project = commonParameter(logs, "Project");
    if (!project.empty()) return project;
    return logs.size() == 1 ? logs.front()->log().name : counted(logs.size(), "log");
}

std::string subtitleOf(const LogsOnPage& logs) {
    const std::string day = commonParameter(logs, "Day");
    return day.empty() ? day : "Day " + day;
}

// Where the page is called as its only log, the log's heading is for who cannot see that.
bool isNamedAsItsLog(const LogsOnPage& logs) {
    return logs.size() == 1 && logs.front()->log().name == titleOf(logs);
}

// What a window or a list of files calls the page.
std::string windowTitleOf(const LogsOnPage& logs) {
    const std::string day = subtitleOf(logs);
    std::string title = titleOf(logs) + (day.empty() ? "" : ", " + day);
    if (logs.size() > 1 || isNamedAsItsLog(logs)) return title;
    return title + " \xC2\xB7 " + logs.front()->log().name;
}

void writeHead(const LogsOnPage& logs, Output& out) {
    const std::string title = titleOf(logs);
    const std::string subtitle = subtitleOf(logs);
    out.write(
        concat("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
               "<meta http-equiv=\"Content-Security-Policy\" content=\"",
               policy(), "\">\n"));
    out.write(
        concat("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
               "<meta name=\"color-scheme\" content=\"light dark\">\n<title>",
               asText(windowTitleOf(logs)), "</title>\n<style>"));
    out.write(pageStyle.text);
    out.write(
        concat("</style>\n</head>\n<body>\n<a class=\"skip\" href=\"#table-1\">To the rows</a>\n"
               "<header>\n<h1><bdi>",
               asText(title), "</bdi></h1>\n"));
    if (!subtitle.empty()) {
        out.write(concat("<p class=\"subtitle\"><bdi>", asText(subtitle), "</bdi></p>\n"));
    }
    out.write("</header>\n");
}

void writeSwitch(const LogsOnPage& logs, Output& out) {
    out.write("<nav class=\"logs\" aria-label=\"Logs\"><ul>\n<li><a href=\"#all\">All</a></li>\n");
    for (const auto& each : logs) {
        out.write(concat("<li><a href=\"#", each->anchor(), "\"><bdi>", asText(each->log().name),
                         "</bdi></a></li>\n"));
    }
    out.write("</ul></nav>\n");
}

void writeLog(const LogOnPage& log, const char* look, Output& out) {
    out.write(concat("<section class=\"log\" id=\"", log.anchor(), "\" aria-labelledby=\"name-",
                     log.anchor(), "\">\n<h2 id=\"name-", log.anchor(), look, "\"><bdi>",
                     asText(log.log().name), "</bdi></h2>\n"));
    out.write(numbersOf(log));
    out.write(parametersOf(log));
    out.write(findingsOf(log));
    out.write(timelineOf(log));
    out.write(coverageOf(log));
    out.write(runningTimeOf(log));
    writeTable(log, out);
    writeData(log, out);
    out.write("</section>\n");
}

}  // namespace

void writePage(const LogsOnPage& logs, Output& out) {
    writeHead(logs, out);
    if (logs.size() > 1) writeSwitch(logs, out);
    out.write("<main>\n");
    if (logs.size() > 1) out.write(totalsOf(logs));
    const char* look = isNamedAsItsLog(logs) ? "\" class=\"unseen" : "";
    for (const auto& each : logs) writeLog(*each, look, out);
    out.write("</main>\n<script>");
    out.write(pageScript.text);
    out.write("</script>\n</body>\n</html>\n");
}

}  // namespace vek::page
