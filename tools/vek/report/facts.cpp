#include "tools/vek/report/facts.h"

#include <algorithm>

#include "formats/failure.h"
#include "formats/formats.h"
#include "formats/writing/sheet_facts.h"
#include "tools/vek/report/markup.h"

namespace vek::page {

namespace {

constexpr std::size_t mostFindings = 200;
constexpr std::size_t fewFindings = 8;  // that are shown without being asked for
constexpr std::size_t longestFact = 400;

std::string shortText(std::string_view text) {
    std::string out;
    addShortText(out, text, longestFact);
    return out;
}

// One of the large numbers; nothing where the log has none.
std::string numberTile(const std::string& name, const std::string& value) {
    if (value.empty()) return {};
    return concat("<div><dt>", name, "</dt><dd>", asText(value), "</dd></div>\n");
}

std::string scenesOf(const LogOnPage& log) {
    return log.places().scene == noColumn ? "" : std::to_string(log.sums().scenes.size());
}

std::string takesOf(const LogOnPage& log) {
    return log.places().take == noColumn ? "" : std::to_string(log.sums().takes);
}

std::string timeOf(const LogOnPage& log) {
    return log.hasTime() ? log.timeText(log.sums()) : "";
}

std::string filmOf(const LogOnPage& log) {
    return log.hasFilm() ? log.filmText(log.sums()) : "";
}

// Why a number is not that of all rows, or of all clips.
std::string missingOf(const LogOnPage& log) {
    std::string out;
    if (const std::size_t others = log.rowCount() - log.sums().clips; others > 0) {
        out += concat("<p class=\"note\">",
                      counted(others, "row that is no clip", "rows that are no clips"),
                      ", by its Kind, not counted and not in the pictures.</p>\n");
    }
    const auto note = [&](std::size_t clips, const char* why) {
        if (clips == 0) return;
        out += concat("<p class=\"note\">", counted(clips, "clip"), " ", why, "</p>\n");
    };
    if (log.hasTime()) {
        const std::size_t noFrames = log.sums().noFrames;
        note(log.sums().untimed - noFrames,
             "without a start and an end behind it, not in the running time.");
        note(noFrames, "with a time that is no frame at the rate, not in the running time.");
    }
    note(log.sums().unfilmed, "without two keycodes of one roll, not in the footage.");
    if (log.places().time.start != noColumn && !log.hasTime()) {
        out +=
            "<p class=\"note\">The log says no frame rate, so running times are not told; "
            "--fps gives one.</p>\n";
    }
    return out;
}

std::string fact(const std::string& name, std::string_view value) {
    return concat("<div><dt><bdi>", shortText(name), "</bdi></dt><dd><bdi>", shortText(value),
                  "</bdi></dd></div>\n");
}

// Without the full stop of a sentence: what was found, what was expected, what was made of it.
std::string sentenceOf(const Problem& problem) {
    std::string text = problem.found;
    if (!problem.expected.empty()) text += ", expected " + problem.expected;
    if (!problem.outcome.empty()) text += "; " + problem.outcome;
    return text;
}

std::string placeOf(const LogOnPage& log, const Problem& problem) {
    const unsigned row = log.rowOfLine(problem.line);
    std::string out;
    if (row != LogOnPage::noRow) {
        out = concat("<a href=\"#", log.anchorOfRow(row), "\">row ",
                     std::to_string(log.log().numberOf(row)), "</a>");
    }
    if (problem.line != 0) {
        out += concat(out.empty() ? "" : ", ", "line ", std::to_string(problem.line));
    }
    if (!problem.column.empty()) {
        out += concat(out.empty() ? "" : ", ", "<bdi>", shortText(problem.column), "</bdi>");
    }
    return out.empty() ? "the log" : out;
}

std::string finding(const LogOnPage& log, const Problem& problem) {
    const char* look = isRemark(problem) ? "<li class=\"remark\">" : "<li>";
    return concat(look, placeOf(log, problem), ": <bdi>", shortText(sentenceOf(problem)),
                  "</bdi></li>\n");
}

std::string summaryOf(const Findings& findings) {
    const std::size_t problems = findings.problemCount();
    std::string text = problems == 0 ? "no problem" : counted(problems, "problem");
    if (findings.remarks > 0) text += ", " + counted(findings.remarks, "remark");
    return text;
}

std::string restOf(const Findings& findings, std::size_t shown) {
    const std::size_t rest = findings.problems.size() + findings.more - shown;
    std::string out;
    if (!findings.notRead.empty()) out += "<li>" + shortText(findings.notRead) + "</li>\n";
    if (rest > 0)
        out += concat("<li>and ", std::to_string(rest), " more; vek check lists them</li>\n");
    return out;
}

struct Totals {
    ClipSums sums;
    std::size_t tagged = 0;
    double seconds = 0;
    std::optional<FrameRate> rate;  // of the first log that has one
    bool hasSeveralRates = false;
    bool hasFilm = false;

    void add(const LogOnPage& log) {
        addTo(sums, log.sums());
        tagged += log.tagCount();
        hasFilm = hasFilm || log.hasFilm();
        if (!log.hasTime()) return;
        const FrameRate& own = *log.rates().counting.rate();
        seconds += static_cast<double>(log.sums().frames) * static_cast<double>(own.seconds()) /
                   static_cast<double>(own.frames());
        if (!rate) rate = own;
        hasSeveralRates = hasSeveralRates || !own.isAsFastAs(*rate);
    }

    std::string time() const {
        if (!rate) return {};
        if (!hasSeveralRates) return timecodeText(sums.frames, rate->nominal, sums.dropFrame);
        constexpr int second = 1;  // logs of several rates have no frames in common
        return timecodeText(static_cast<std::int64_t>(seconds + 0.5), second, false).substr(0, 8);
    }
};

std::string totalsRow(const std::string& head, const std::vector<std::string>& cells) {
    std::string out = "<tr><th scope=\"row\">" + head + "</th>";
    for (const std::string& cell : cells) out += "<td>" + asText(cell) + "</td>";
    return out + "</tr>\n";
}

std::vector<std::string> cellsOf(const LogOnPage& log) {
    return {std::to_string(log.sums().clips), scenesOf(log), takesOf(log), timeOf(log), filmOf(log),
            std::to_string(log.tagCount())};
}

}  // namespace

std::string numbersOf(const LogOnPage& log) {
    return concat("<dl class=\"numbers\">\n", numberTile("Clips", std::to_string(log.sums().clips)),
                  numberTile("Scenes", scenesOf(log)), numberTile("Takes", takesOf(log)),
                  numberTile("Running time", timeOf(log)), numberTile("Footage", filmOf(log)),
                  numberTile("Tagged", std::to_string(log.tagCount())), "</dl>\n", missingOf(log));
}

std::string parametersOf(const LogOnPage& log) {
    std::string out = "<dl class=\"facts\">\n";
    for (const ParameterText& parameter : ownParameters(log.log())) {
        out += fact(parameter.name, parameter.value);
    }
    out += fact("File", log.log().name);
    if (!log.log().sheet.empty()) out += fact("Sheet", log.log().sheet);
    return out + fact("Format", formatName(log.log().format)) +
           fact("Columns", std::to_string(log.log().columnCount())) + "</dl>\n";
}

std::string findingsOf(const LogOnPage& log) {
    const Findings& findings = log.findings();
    const std::size_t count = findings.problems.size();
    const std::size_t shown = std::min(count, mostFindings);
    const std::string summary = summaryOf(findings);
    if (count + findings.more == 0 && findings.notRead.empty()) {
        return concat("<p class=\"check\">What a check finds: ", summary, ".</p>\n");
    }
    std::string out = concat("<details class=\"check\"", count <= fewFindings ? " open" : "",
                             "><summary>What a check finds: ", summary, "</summary>\n<ul>\n");
    for (std::size_t i = 0; i < shown; ++i) out += finding(log, findings.problems[i]);
    return out + restOf(findings, shown) + "</ul></details>\n";
}

std::string totalsOf(const LogsOnPage& logs) {
    std::string out =
        "<section class=\"log\" id=\"all\" aria-labelledby=\"name-all\">\n"
        "<h2 id=\"name-all\">All logs</h2>\n<div class=\"picture\" tabindex=\"0\" role=\"region\" "
        "aria-label=\"Totals\"><table class=\"totals\">\n<thead><tr>";
    for (const char* head :
         {"Log", "Clips", "Scenes", "Takes", "Running time", "Footage", "Tagged"}) {
        out += concat("<th scope=\"col\">", head, "</th>");
    }
    out += "</tr></thead>\n<tbody>\n";
    Totals totals;
    for (const auto& each : logs) {
        totals.add(*each);
        out += totalsRow(concat("<a href=\"#", each->anchor(), "\"><bdi>",
                                shortText(each->log().name), "</bdi></a>"),
                         cellsOf(*each));
    }
    out += "</tbody>\n<tfoot>\n";
    out += totalsRow(
        "All",
        {std::to_string(totals.sums.clips), std::to_string(totals.sums.scenes.size()),
         std::to_string(totals.sums.takes), totals.time(),
         totals.hasFilm ? footageText(totals.sums.perforations, logs.front()->rates().gauge) : "",
         std::to_string(totals.tagged)});
    out += "</tfoot></table></div>\n";
    if (totals.hasSeveralRates) {
        out +=
            "<p class=\"note\">The logs have several frame rates: the running time of all is "
            "told in hours, minutes and seconds.</p>\n";
    }
    return out + "</section>\n";
}

}  // namespace vek::page
