// Opens a log of any format, edits it and writes it in another one.
// usage: any_format LOG OUTPUT

#include <cstdio>

#include <vekdb/formats/log.h>

static int complain(const vek::Reason& reason) {
    std::printf("%s\n", reason.text().c_str());
    return 1;
}

int main(int count, char** arguments) {
    if (count != 3) return 2;
    auto log = vek::open(arguments[1]);
    if (!log) return complain(log.reason());

    auto rows = log->choose(vek::Choice("Take>=2").order("Scene,Take"));
    if (!rows) return complain(rows.reason());
    for (vek::Row row : *rows) {
        auto done = log->set(row, "Notes", "checked");
        if (!done) return complain(done.reason());
    }

    auto saved = rows->saveAs(arguments[2]);
    if (!saved) return complain(saved.reason());
    std::printf("%u rows\n", rows->size());
    for (const vek::Loss& loss : saved->losses) {
        std::printf("not kept: %s, %zu\n", loss.what.c_str(), loss.count);
    }
}
