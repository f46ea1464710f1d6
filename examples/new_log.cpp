// Makes a log from nothing: columns, a parameter, rows, and a file.
// usage: new_log OUTPUT

#include <cstdio>
#include <vector>

#include <vekdb/host/text_util.h>
#include <vekdb/table.h>

namespace {

void addTake(vekdb& log, const char* scene, int take, const char* notes) {
    unsigned row = log.add_records(1);
    log.set_field(row, log.get_fieldnum("Scene"), scene);
    log.set_field(row, log.get_fieldnum("Take"), take);
    log.set_field(row, log.get_fieldnum("Notes"), notes);
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    std::vector<DBFieldDesc> columns = {
        {"Scene", vekdb_string_to_fieldtype("text")},
        {"Take", vekdb_string_to_fieldtype("long")},
        {"Notes", vekdb_string_to_fieldtype("text")},
    };
    vekdb log(columns);

    // The first parameter brings the revision line, without which a file cannot be loaded.
    log.add_param("Project", "Night shoot");

    addTake(log, "12", 1, "false start");
    addTake(log, "12", 2, "He said \"cut\"\nthen left");
    log.set_filename(fromUTF8(arguments[1]));
    std::printf("%d rows saved\n", log.save_text());

    vekdb again(log.get_filename(), 100, true);
    std::printf("%u rows read: %s\n", again.get_num_records(), again.getField(1, 2).c_str());
    return again.get_valid() ? 0 : 4;
}
