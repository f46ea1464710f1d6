// Any bytes as a script of operations over a table and views that are stacked on it, run beside the
// plain model: both do the same at every step.

#include "model/side_by_side.h"
#include "target.h"
#include "testing/deferral.h"

namespace {

constexpr std::size_t mostSteps = 60;
constexpr std::size_t bytesOfStep = 8;

script::Step stepOf(const std::uint8_t* bytes) {
    const int op = bytes[0] % static_cast<int>(script::Op::count);
    return {static_cast<script::Op>(op), bytes[1] % 100, bytes[2] + 256 * (bytes[3] % 39),
            bytes[4] + 256 * (bytes[5] % 39), bytes[6] + 256 * (bytes[7] % 39)};
}

script::Script scriptOf(const std::uint8_t* data, std::size_t size) {
    script::Script script{data[0] % 64, {}};
    for (std::size_t at = 1; at + bytesOfStep <= size && script.steps.size() < mostSteps;
         at += bytesOfStep) {
        script.steps.push_back(stepOf(data + at));
    }
    return script;
}

void check(const script::Script& script) {
    if (const auto difference = script::runBoth(script)) {
        fuzz::require("VEKDB_MODEL_SCRIPT='" + script::asText(script) + "' differs at step " +
                      std::to_string(difference->step));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const script::Script script = scriptOf(data, size);
    if (data[0] < 128) {
        check(script);
        return 0;
    }
    const DeferralFrom atOnce(1, 0);
    const SmallBlocks small;
    check(script);
    return 0;
}
