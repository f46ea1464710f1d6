// Loads a log and prints some of its cells.
// usage: first_rows LOG

#include <cstdio>

#include <vekdb/host/text_util.h>
#include <vekdb/table.h>

int main(int count, char** arguments) {
    if (count != 2) return 2;
    vekdb log(fromUTF8(arguments[1]), 1'000'000, true);
    if (!log.get_valid()) {
        std::printf("%s is no log\n", arguments[1]);
        return 1;
    }

    std::printf("%s: %u rows\n", log.get_param_val("Project"), log.get_num_records());
    const unsigned scene = log.get_fieldnum("Scene");
    const unsigned take = log.get_fieldnum("Take");
    for (unsigned row = 0; row < log.get_num_records(); ++row) {
        std::printf("%s/%s\n", log.getField(row, scene).c_str(), log.getField(row, take).c_str());
    }
}
