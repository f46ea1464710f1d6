#include "times.h"

#include <vekdb/formats/keycode.h>
#include <vekdb/formats/timecode.h>
#include "texts.h"

namespace vekpy {

namespace {

using namespace py::literals;

py::object timecodeParts(py::handle text) {
    const auto code = vek::parseTimecode(Text(text, "a timecode").view());
    if (!code) return py::none();
    return py::make_tuple(code->hours, code->minutes, code->seconds, code->frames, code->dropFrame);
}

vek::Timecode timecodeOf(const py::tuple& parts) {
    vek::Timecode code;
    code.hours = py::cast<int>(parts[0]);
    code.minutes = py::cast<int>(parts[1]);
    code.seconds = py::cast<int>(parts[2]);
    code.frames = py::cast<int>(parts[3]);
    code.dropFrame = py::cast<bool>(parts[4]);
    return code;
}

py::object rateParts(py::handle text) {
    const auto rate = vek::parseFrameRate(Text(text, "a frame rate").view());
    if (!rate) return py::none();
    const bool drops = rate->counting == vek::Counting::dropFrame;
    const bool isSaid = rate->counting != vek::Counting::unsaid;
    return py::make_tuple(rate->nominal, rate->isSlowed,
                          isSaid ? py::object(py::bool_(drops)) : py::none(), vek::rateText(*rate));
}

const vek::Gauge& gaugeOf(py::handle name) {
    const Text text(name, "a gauge");
    if (const vek::Gauge* gauge = vek::gaugeNamed(text.view())) return *gauge;
    throw py::value_error("no gauge is named '" + text.string() +
                          "': 35, 35-4, 35-3, 35-2, 16 or 65");
}

py::object keycodeParts(py::handle text) {
    const Text given(text, "a keycode");
    const auto code = vek::parseKeycode(given.view());
    if (!code) return py::none();
    return py::make_tuple(strOf(code->roll), code->feet, code->frames);
}

py::object perforationsBetween(py::handle start, py::handle end, py::handle gauge) {
    const Text first(start, "a keycode");
    const Text last(end, "a keycode");
    const auto from = vek::parseKeycode(first.view());
    const auto to = vek::parseKeycode(last.view());
    if (!from || !to) return py::none();
    const auto count = vek::perforationsBetween(*from, *to, gaugeOf(gauge));
    return count ? py::object(py::int_(*count)) : py::none();
}

}  // namespace

void bindTimes(py::module_& module) {
    module.def("timecode_parts", &timecodeParts);
    module.def("rate_parts", &rateParts);
    module.def("is_counted", [](const py::tuple& parts, int nominal) {
        return vek::isCounted(timecodeOf(parts), nominal);
    });
    module.def("frames_of", [](const py::tuple& parts, int nominal) {
        return vek::framesOf(timecodeOf(parts), nominal);
    });
    module.def("frames_between", [](const py::tuple& a, const py::tuple& b, int nominal) {
        return vek::framesBetween(timecodeOf(a), timecodeOf(b), nominal).value_or(-1);
    });
    module.def("timecode_text", &vek::timecodeText);
    module.def("frames_in_day", &vek::framesInDay);
    module.def("can_drop_frames", &vek::canDropFrames);
    module.def("keycode_parts", &keycodeParts);
    module.def("perforations_between", &perforationsBetween);
    module.def("gauge_parts", [](py::handle name) {
        const vek::Gauge& gauge = gaugeOf(name);
        return py::make_tuple(gauge.name, gauge.title, gauge.perforationsPerFoot,
                              gauge.perforationsPerFrame);
    });
    module.def("footage_text", [](std::int64_t perforations, py::handle gauge) {
        return vek::footageText(perforations, gaugeOf(gauge));
    });
}

}  // namespace vekpy
