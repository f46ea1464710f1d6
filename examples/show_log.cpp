// Reads a log of any format, prints some of its rows, and writes them as CSV.
// usage: show_log LOG CONDITION OUTPUT

#include <cstdio>

#include <vekdb/formats/log.h>

static int complain(const vek::Reason& reason) {
    std::printf("%s\n", reason.text().c_str());
    return 1;
}

static void print(std::string_view text) {
    std::printf("%-10.*s ", static_cast<int>(text.size()), text.data());
}

int main(int count, char** arguments) {
    if (count != 4) return 2;
    auto log = vek::open(arguments[1]);
    if (!log) return complain(log.reason());
    for (const vek::Problem& problem : log->problems()) {
        std::printf("%s\n", problem.text(log->name()).c_str());
    }

    // The view keeps the log alive.
    auto rows = log->choose(vek::Choice(arguments[2]).order("Start time"));
    if (!rows) return complain(rows.reason());
    for (vek::Row row : *rows) {
        print(row["Reel"]);
        print(row["Start time"]);
        std::printf("line %zu\n", row.line());
    }

    auto saved = rows->saveAs(arguments[3]);
    if (!saved) return complain(saved.reason());
    for (const vek::Loss& loss : saved->losses) {
        std::printf("%s: %zu\n", loss.what.c_str(), loss.count);
    }
}
