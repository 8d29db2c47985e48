#include "workbench/json/judging.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "binding.h"
#include "workbench/files/judge_files.h"
#include "workbench/files/smooth_files.h"
#include "workbench/json/smoothing.h"
#include "workbench/judging/log_measures.h"

namespace imgtune::python {

namespace {

using workbench::Frame;

void require_parts(const Tuning& tuning) {
    if (tuning.has_ccm || tuning.has_color) return;
    raise_input_error("the tuning has neither part 'ccm' nor part 'color'", "tuning");
}

workbench::Limits limits_at(const std::string& path, const Tuning* against) {
    workbench::Limits limits = work_on_file(path, [&] { return workbench::require_limits(path); });
    if (limits.needs_old() && against == nullptr) {
        raise_input_error(path + ": no_worse_by compares with an old tuning; name it as `against`",
                          "against");
    }
    return limits;
}

py::object judge(const Tuning& tuning, const py::object& frames, const py::object& limits_path,
                 const std::string& log, const Tuning* against) {
    const workbench::Limits limits = limits_at(path_text(limits_path), against);
    const FrameColumns columns(frames);
    if (columns.size() == 0) raise_input_error("the log has no frames", "frames");
    require_parts(tuning);
    workbench::LogMeasures now(tuning, limits.jobs_of(tuning), limits.options);
    std::optional<workbench::LogMeasures> old;
    if (against != nullptr) old.emplace(*against, limits.jobs_of(*against), limits.options);
    for_each_frame(columns, [&](const Frame& frame) {
        now.add(frame);
        if (old) old->add(frame);
    });
    const std::optional<workbench::Measures> before =
        old ? std::optional(measures_of(old->finish())) : std::nullopt;
    workbench::Verdict verdict =
        workbench::judge(limits.for_log(log), workbench::LimitScope::log, measures_of(now.finish()),
                         before ? &*before : nullptr);
    verdict.log = log;
    verdict.frames = columns.size();
    return as_python(to_json(verdict));
}

py::object judge_tuning(const Tuning& tuning, const py::object& limits_path,
                        const Tuning* against) {
    const std::string path = path_text(limits_path);
    const workbench::Limits limits = limits_at(path, against);
    return as_python(to_json(work_on_file(
        path, [&] { return workbench::judge_tuning(tuning, against, limits, path); })));
}

std::vector<std::vector<Frame>> frames_of_logs(const py::list& logs) {
    std::vector<std::vector<Frame>> all;
    for (const py::handle log : logs) {
        const FrameColumns columns(py::reinterpret_borrow<py::object>(log));
        if (columns.size() == 0) raise_input_error("a log has no frames", "logs");
        all.emplace_back(columns.size());
        columns.read(0, columns.size(), all.back().data());
    }
    if (all.empty()) raise_input_error("no logs", "logs");
    return all;
}

py::tuple smooth(const Tuning& tuning, const py::list& logs, double settle, double step,
                 double at_rest, double fps, double noise, unsigned workers) {
    workbench::SmoothRequest request;
    request.wish.settle = settle;
    request.wish.step = step;
    request.wish.at_rest = at_rest;
    request.options.frames_per_second = fps;
    request.options.noise_percent = noise;
    require_parts(tuning);
    request.jobs = {tuning.has_ccm, tuning.has_color};
    request.workers = workers;
    const std::vector<std::vector<Frame>> frames = frames_of_logs(logs);
    std::optional<workbench::Smoothing> answer;
    {
        const py::gil_scoped_release unlocked;
        answer = workbench::find_smoothing(tuning, frames, request, [](std::size_t, std::size_t) {
            const py::gil_scoped_acquire locked;
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        });
    }
    return py::make_tuple(workbench::with_smoothing(tuning, *answer), as_python(to_json(*answer)));
}

}  // namespace

void bind_judging(py::module_& module) {
    module.def("judge", &judge, py::arg("tuning"), py::arg("frames"), py::arg("limits"),
               py::kw_only(), py::arg("log") = "", py::arg("against") = py::none(),
               R"(Holds what a tuning does with a log against limits.

Parameters
----------
tuning : Tuning
frames : as for `replay`
limits : path
    Limits as `imgtune judge --starter` writes them.
log : str
    The log's name, which the limits' overrides go by.
against : Tuning, optional
    The old tuning, for limits with no_worse_by.

Returns
-------
dict
    accepted, log, frames, error, and limits: a dict a limit, with limit, value (None: not
    measured), unit, allowed, before, broken, frame, where. As `imgtune judge --json` tells a log.
)");
    module.def("judge_tuning", &judge_tuning, py::arg("tuning"), py::arg("limits"), py::kw_only(),
               py::arg("against") = py::none(),
               "Holds the tuning itself against the limits that need no log; as `judge`.");
    module.def("smooth", &smooth, py::arg("tuning"), py::arg("logs"), py::kw_only(),
               py::arg("settle") = 25.0, py::arg("step") = 1.2, py::arg("at_rest") = 1.0,
               py::arg("fps") = 30.0, py::arg("noise") = 5.0, py::arg("workers") = 0U,
               R"(Finds the smoothing that meets a wish over logs.

Parameters
----------
tuning : Tuning
logs : list of frames, each as for `replay`
settle : float
    Frames in which the picture is at rest after a change of light.
step, at_rest : float
    CIEDE2000: largest step from one frame to the next; what the average may leave for ever.
fps, noise : float
    As for `imgtune.summary`.
workers : int
    Choices that run at the same time; 0: one a core. The answer does not depend on it.

Returns
-------
(Tuning, dict)
    The tuning with what was chosen, and what `imgtune smooth --json` prints.
)");
}

}  // namespace imgtune::python
