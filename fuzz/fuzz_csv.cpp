// Any bytes as plain comma-separated text: what loads comes back from a table file.

#include "round_trip.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::require(fuzz::checkTableFile(fuzz::fileWith("log.csv", fuzz::textOf(data, size))));
    return 0;
}
