// Any bytes as one record line: parse, write, parse is equal.

#include <vekdb/host/text_file.h>
#include <vekdb/record.h>
#include "round_trip.h"
#include "target.h"

namespace {

constexpr std::size_t longestSafeText = 4000;

dbrecord parse(std::string_view line) {
    TextFile file;
    file.appendLine(line);
    dbrecord record(0);
    record.read(file);
    return record;
}

std::string write(const dbrecord& record) {
    TextFile file;
    record.write(file);
    return std::string(file.line(0));
}

bool isShort(const dbrecord& record) {
    for (unsigned i = 0; i < record.get_num_fields(); ++i) {
        if (record.fieldView(i).size() > longestSafeText) {
            return false;
        }
    }
    return true;
}

std::string compare(const dbrecord& before, const dbrecord& after) {
    if (before.get_num_fields() != after.get_num_fields()) {
        return "another number of values";
    }
    for (unsigned i = 0; i < before.get_num_fields(); ++i) {
        if (fuzz::afterRoundTrip(std::string(before.fieldView(i))) != after.fieldView(i)) {
            return "another value: " + std::to_string(i);
        }
    }
    return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view line = fuzz::textOf(data, size);
    line = line.substr(0, line.find_first_of(std::string_view("\n\0", 2)));
    dbrecord first = parse(line);
    if (!isShort(first)) {
        return 0;
    }
    std::string written = write(first);
    dbrecord second = parse(written);
    fuzz::require(compare(first, second));

    // Once more changes nothing but what a second pass must change again.
    fuzz::require(compare(second, parse(write(second))));
    return 0;
}
