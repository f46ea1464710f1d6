// Any bytes as a log of one format, FUZZ_FORMAT: reading answers, and what is written of it without
// a word about losses comes back.

#include "log_round_trip.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::require(fuzz::checkLog(fuzz::textOf(data, size), vek::formatOfName(FUZZ_FORMAT)));
    return 0;
}
