// Changes one cell of a log in place.
// usage: edit_log LOG ROW COLUMN VALUE

#include <cstdio>
#include <cstdlib>

#include <vekdb/host/text_util.h>
#include <vekdb/table.h>

int main(int count, char** arguments) {
    if (count != 5) {
        return 2;
    }
    vekdb log(fromUTF8(arguments[1]), 1'000'000, true);
    unsigned row = static_cast<unsigned>(std::atoi(arguments[2])) - 1;
    unsigned column = log.get_fieldnum(arguments[3]);
    auto before = log.getField(row, column);
    if (!log.set_field(row, column, arguments[4])) {
        std::printf("no such cell\n");
        return 1;
    }

    // Saving writes the tags of the rows into the column "Tag"; loading does not read them.
    unsigned tag = log.get_fieldnum("Tag");
    for (unsigned i = 0; i < log.get_num_records(); ++i) {
        log.set_tag(i, log.getField(i, tag) == "1" ? 1 : 0);
    }
    std::printf("%s -> %s\n", before.c_str(), log.getField(row, column).c_str());
    return log.save_text() > 0 ? 0 : 4;
}
