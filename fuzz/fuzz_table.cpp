// Any bytes as a table file: loading answers, and what loads comes back after saving.

#include "round_trip.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::require(fuzz::checkTableFile(fuzz::fileWith("log.vek", fuzz::textOf(data, size))));
    return 0;
}
