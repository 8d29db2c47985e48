#include <fmt/format.h>

#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>

#include "binding.h"
#include "workbench/json/diff.h"
#include "workbench/json/explanation.h"
#include "workbench/json/steepness.h"
#include "workbench/json/summary.h"
#include "workbench/studies/diff.h"
#include "workbench/studies/explanation.h"
#include "workbench/studies/resting.h"
#include "workbench/studies/steepness.h"
#include "workbench/studies/summary.h"
#include "workbench/studies/sweep.h"

namespace imgtune::python {

namespace {

using workbench::Camera;
using workbench::Frame;
using workbench::Jobs;

Jobs all_jobs(const Tuning& tuning) {
    const Jobs jobs{tuning.has_ccm, tuning.has_color};
    if (!jobs.ccm && !jobs.color) {
        raise_input_error("the tuning has neither part 'ccm' nor part 'color'", "tuning");
    }
    return jobs;
}

/// One frame given as a mapping of numbers.
Frame frame_of(const py::dict& values) {
    py::dict columns;
    for (const auto& [name, value] : values) columns[name] = py::make_tuple(value);
    Frame frame;
    FrameColumns(columns).read(0, 1, &frame);
    return frame;
}

py::object explain(const Tuning& tuning, const py::dict& frame, const py::object& after) {
    Camera camera(tuning, all_jobs(tuning));
    const Frame asked = frame_of(frame);
    std::optional<Frame> before;
    if (!after.is_none()) before = frame_of(py::dict(after));
    nlohmann::ordered_json told;
    {
        const py::gil_scoped_release unlocked;
        if (before) workbench::run_to_rest(camera, *before);
        told = to_json(workbench::explain_at_rest(camera, asked));
    }
    return as_python(told);
}

/// The keyword arguments of the summary.
struct SummaryArguments {
    double fps;
    double noise;
    double flicker_mean;
    double flicker_patch;
    double settled;
    std::string patch;
};

workbench::SummaryRecord summarized(const Tuning& tuning, const py::object& frames,
                                    const SummaryArguments& given) {
    const auto require = [](const char* argument, double value, double least, double most) {
        if (value >= least && value <= most) return;  // NaN is neither
        raise_input_error(
            fmt::format("{} is {}; allowed are {} to {}", argument, value, least, most), argument);
    };
    using Options = workbench::SummaryOptions;
    using Limits = workbench::VisibleLimits;
    require("fps", given.fps, Options::kLeastFramesPerSecond, Options::kMostFramesPerSecond);
    require("noise", given.noise, 0.0, Options::kMostNoisePercent);
    require("flicker_mean", given.flicker_mean, Limits::kLeast, Limits::kMost);
    require("flicker_patch", given.flicker_patch, Limits::kLeast, Limits::kMost);
    require("settled", given.settled, Limits::kLeast, Limits::kMost);
    const auto patch = workbench::find_patch(given.patch);
    if (!patch) {
        std::string allowed;
        for (const workbench::Patch& each : workbench::chart_patches()) {
            allowed += fmt::format("{}'{}'", allowed.empty() ? "" : ", ", each.name);
        }
        raise_input_error(fmt::format("patch is '{}'; allowed are {}", given.patch, allowed),
                          "patch");
    }
    const FrameColumns columns(frames);
    Camera camera(tuning, all_jobs(tuning));
    workbench::Summary gathered(
        camera,
        {given.fps, given.noise, {given.flicker_mean, given.flicker_patch, given.settled, *patch}});
    std::uint64_t number = 0;
    for_each_frame(columns, [&](const Frame& frame) {
        camera.run(frame);
        gathered.add(++number, frame, camera);
    });
    return gathered.finish();
}

py::object summary(const Tuning& tuning, const py::object& frames, double fps, double noise,
                   double flicker_mean, double flicker_patch, double settled,
                   const std::string& patch) {
    return as_python(to_json(
        summarized(tuning, frames, {fps, noise, flicker_mean, flicker_patch, settled, patch})));
}

py::object summary_row(const Tuning& tuning, const py::object& frames, double fps, double noise,
                       double flicker_mean, double flicker_patch, double settled,
                       const std::string& patch) {
    return as_python(row_to_json(
        summarized(tuning, frames, {fps, noise, flicker_mean, flicker_patch, settled, patch})));
}

py::object diff(const Tuning& a, const Tuning& b, const py::object& frames) {
    nlohmann::ordered_json out = {{"differences", to_json(workbench::diff_tunings(a, b))}};
    if (!frames.is_none()) {
        const FrameColumns columns(frames);
        workbench::FrameComparer comparer(a, b);
        for_each_frame(columns, [&](const Frame& frame) { comparer.add(frame); });
        out["frames"] = to_json(comparer.result());
    }
    return as_python(out);
}

/// Whole numbers 0 to 2^32 - 1 from any sequence or array.
std::vector<std::uint32_t> light_values(const char* argument, const py::object& values) {
    try {
        return values.cast<std::vector<std::uint32_t>>();
    } catch (const py::cast_error&) {
        raise_input_error(
            fmt::format("{}: a sequence of whole numbers 0 to 4294967295 is needed", argument),
            argument);
    }
}

py::object steepest(Tuning tuning) {
    if (!tuning.has_ccm) raise_input_error("the tuning has no part 'ccm'", "ccm");
    nlohmann::ordered_json told;
    {
        const py::gil_scoped_release unlocked;
        told = workbench::to_json(workbench::find_steepest(tuning));
        told["tried"] = workbench::to_json(workbench::try_remedies(tuning));
    }
    return as_python(told);
}

py::dict sweep(const Tuning& tuning, const py::object& cct, const py::object& lv,
               std::int32_t flash, std::int32_t scene) {
    const workbench::SweepGrid grid{
        cct.is_none() ? workbench::tuned_range(tuning) : light_values("cct", cct),
        light_values("lv", lv), flash, scene};
    const Jobs jobs = all_jobs(tuning);
    const std::string assumed = workbench::assumed_locus(tuning);
    if (!assumed.empty() && PyErr_WarnEx(PyExc_UserWarning, assumed.c_str(), 1) != 0)
        throw py::error_already_set();
    workbench::Sweep result;
    {
        const Tuning copy = tuning;
        const py::gil_scoped_release unlocked;
        result = workbench::run_sweep(copy, jobs, grid, workbench::tuned_locus(copy));
    }
    const auto rows = static_cast<py::ssize_t>(grid.lv.size());
    const auto columns = static_cast<py::ssize_t>(grid.cct.size());
    py::dict out;
    out["cct"] = py::array_t<std::uint32_t>(columns, grid.cct.data());
    out["lv"] = py::array_t<std::uint32_t>(rows, grid.lv.data());
    if (jobs.ccm) {
        py::array_t<std::int32_t> matrix(std::vector<py::ssize_t>{rows, columns, 3, 3});
        std::int32_t* at = matrix.mutable_data();
        for (const auto& point : result.points) {
            const auto coefficients = workbench::decode(point.registers.ccm, tuning.caller);
            at = std::copy(coefficients.begin(), coefficients.end(), at);
        }
        out["matrix"] = matrix;
    }
    if (jobs.color) {
        py::array_t<std::uint32_t> words(std::vector<py::ssize_t>{rows, columns, 117});
        std::uint32_t* at = words.mutable_data();
        for (const auto& point : result.points) {
            at = std::copy(std::begin(point.registers.color.u4Word),
                           std::end(point.registers.color.u4Word), at);
        }
        out["color"] = words;
    }
    return out;
}

py::object compare(const Tuning& a, const Tuning& b) {
    return as_python(to_json(workbench::diff_tunings(a, b)));
}

void bind_comparisons(py::module_& module) {
    tuning_class(module).def("compare", &compare, py::arg("other"),
                             R"(The fields in which another tuning differs.

Returns
-------
list of dict
    field (a path, or name, ccm, color for the tuning itself), a (here), b (there).

Examples
--------
>>> a = imgtune.Tuning.starter()
>>> b = a.copy()
>>> b["ccm.i4NumLV"] = 1
>>> a.compare(b)
[{'field': 'ccm.i4NumLV', 'a': 2, 'b': 1}]
)");
    module.def("diff", &diff, py::arg("a"), py::arg("b"), py::arg("frames") = py::none(),
               R"(What differs between two tunings, and with frames, between their registers.

Parameters
----------
a, b : Tuning
frames : as for `replay`, optional

Returns
-------
dict
    differences: list of {field, a, b}; frames: counts, worst frames and largest differences.

Raises
------
InputError
    With `field` naming the column or argument.
)");
}

void bind_explanation(py::module_& module) {
    module.def("explain", &explain, py::arg("tuning"), py::arg("frame"), py::kw_only(),
               py::arg("after") = py::none(),
               R"(What the library does with one frame, once the camera has come to rest in it.

Parameters
----------
tuning : Tuning
frame : dict
    The columns of a frame, one number each.
after : dict, optional
    Light that the camera had come to rest in before; default: just switched on.

Returns
-------
dict
    As `imgtune explain --json` prints it.

Raises
------
InputError
    With `field` naming the column or argument.

Examples
--------
>>> light = {"lv": 80, "cct": 4000, "awb_r": 800, "awb_g": 512, "awb_b": 1000}
>>> sorted(imgtune.explain(imgtune.Tuning.starter(), light))
['at_rest', 'ccm', 'color', 'frame', 'registers', 'resting']
)");
}

void bind_summary(py::module_& module) {
    const workbench::VisibleLimits limits;
    module.def("summary", &summary, py::arg("tuning"), py::arg("frames"), py::kw_only(),
               py::arg("fps") = 30.0, py::arg("noise") = 5.0,
               py::arg("flicker_mean") = limits.flicker_mean,
               py::arg("flicker_patch") = limits.flicker_patch, py::arg("settled") = limits.settled,
               py::arg("patch") = workbench::chart_patches()[limits.patch].name,
               R"(What a viewer sees over a log, and how the registers move.

Parameters
----------
tuning : Tuning
frames : as for `replay`
fps : float
    Frames per second of the log.
noise : float
    Noise that is no change of light: percent of gains and CT, tenths of an EV of the light value.
flicker_mean, flicker_patch : float
    Least recurring swing of the chart's mean, or of its worst patch, that is flicker; CIEDE2000.
settled : float
    The worst patch stays below this difference from rest; CIEDE2000.
patch : str
    The chart's patch that is told by itself.

Returns
-------
dict
    As `imgtune replay --summary --json` prints it; None for what could not be measured.

Raises
------
InputError
    With `field` naming the column or argument.
)");
    module.def("summary_row", &summary_row, py::arg("tuning"), py::arg("frames"), py::kw_only(),
               py::arg("fps") = 30.0, py::arg("noise") = 5.0,
               py::arg("flicker_mean") = limits.flicker_mean,
               py::arg("flicker_patch") = limits.flicker_patch, py::arg("settled") = limits.settled,
               py::arg("patch") = workbench::chart_patches()[limits.patch].name,
               "The numbers of `summary` alone, with the fields that step and turn most.");
}

void bind_sweep(py::module_& module) {
    module.def("sweep", &sweep, py::arg("tuning"), py::kw_only(), py::arg("cct") = py::none(),
               py::arg("lv") = std::vector<std::uint32_t>{0, 20, 40, 60, 80, 100, 120, 140},
               py::arg("flash") = 0, py::arg("scene") = 0,
               R"(The result over a grid of light, without average and temporal step.

Parameters
----------
cct, lv : sequence of int
    Kelvin (default: the tuning's grid, 100 K apart) and light values.
flash, scene : int
    Flash mode and scene flag of every point.

Returns
-------
dict
    cct (C,), lv (L,), matrix (L, C, 3, 3) int32 in 1/512, color (L, C, 117) uint32. Gains follow
    the tuned locus.

Raises
------
InputError
    When the tuning has no part to run.
)");
}

void bind_steepest(py::module_& module) {
    module.def("steepest", &steepest, py::arg("tuning"),
               R"(Where a small change of the light changes the colours most.

Parameters
----------
tuning : Tuning
    One with matrices.

Returns
-------
dict
    seen_from; rows: per LV row in use the steepest step on_locus and beside it; over_lv: from low
    light to normal light; tried: what could be changed, the tuning as it is first. Steps are in
    CIEDE2000 of the chart's patches, between lights at most one mired or one light value apart.

Raises
------
InputError
    When the tuning has no matrices.

Examples
--------
>>> imgtune.steepest(imgtune.Tuning.starter())["rows"]["normal"]["on_locus"]["seen"]
False
)");
}

}  // namespace

void bind_studies(py::module_& module) {
    bind_comparisons(module);
    bind_explanation(module);
    bind_summary(module);
    bind_sweep(module);
    bind_steepest(module);
}

}  // namespace imgtune::python
