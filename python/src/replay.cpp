#include <fmt/format.h>

#include <array>
#include <cstring>

#include "binding.h"
#include "workbench/text/glob.h"
#include "workbench/tuning/fields.h"

namespace imgtune::python {

namespace {

using workbench::Camera;
using workbench::CameraState;
using workbench::Frame;
using workbench::Registers;

/// A column of the result: where it stands in a row and what fills it.
struct Output {
    enum class Kind { matrix, ccm, color, field } kind;
    std::string name;
    std::size_t offset = 0;
    bool is_list = false;            ///< of a field
    std::vector<BitField> places{};  ///< of a field's values
};

std::size_t bytes_of(const Output& output) {
    switch (output.kind) {
        case Output::Kind::matrix:
            return 9 * 4;
        case Output::Kind::ccm:
            return 6 * 4;
        case Output::Kind::color:
            return 117 * 4;
        default:
            return output.places.size() * 4;
    }
}

std::vector<Output> all_outputs(workbench::Jobs jobs) {
    std::vector<Output> all;
    if (jobs.ccm) {
        all.push_back({Output::Kind::matrix, "matrix"});
        all.push_back({Output::Kind::ccm, "ccm"});
    }
    if (!jobs.color) return all;
    all.push_back({Output::Kind::color, "color"});
    for (const auto& field : workbench::kColorImageRecord.fields) {
        Output& output =
            all.emplace_back(Output{Output::Kind::field, field.name, 0, field.count != 0});
        for (unsigned e = 0; e < field.elements(); ++e) output.places.push_back(field.place(e));
    }
    return all;
}

/// The columns that the patterns choose; without patterns the matrix and the register words.
std::vector<Output> chosen_outputs(workbench::Jobs jobs, const py::object& patterns) {
    const std::vector<Output> all = all_outputs(jobs);
    std::vector<Output> chosen;
    if (patterns.is_none()) {
        for (const Output& output : all) {
            if (output.kind != Output::Kind::field) chosen.push_back(output);
        }
    } else {
        std::vector<bool> used(all.size());
        const py::list list = py::isinstance<py::str>(patterns) ? py::list(py::make_tuple(patterns))
                                                                : py::list(patterns);
        for (const py::handle item : list) {
            const auto pattern = py::cast<std::string>(item);
            bool found = false;
            for (std::size_t i = 0; i < all.size(); ++i) {
                if (!workbench::matches_glob(pattern, all[i].name)) continue;
                found = used[i] = true;
            }
            if (found) continue;
            raise_input_error(
                fmt::format("fields: nothing is called '{}'; imgtune.register_fields() "
                            "names all",
                            pattern),
                "fields");
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (used[i]) chosen.push_back(all[i]);
        }
    }
    std::size_t offset = 0;
    for (Output& output : chosen) {
        output.offset = offset;
        offset += bytes_of(output);
    }
    return chosen;
}

py::dtype dtype_of(const std::vector<Output>& outputs) {
    py::list columns;
    for (const Output& output : outputs) {
        switch (output.kind) {
            case Output::Kind::matrix:
                columns.append(py::make_tuple(output.name, "i4", py::make_tuple(3, 3)));
                break;
            case Output::Kind::ccm:
                columns.append(py::make_tuple(output.name, "u4", py::make_tuple(6)));
                break;
            case Output::Kind::color:
                columns.append(py::make_tuple(output.name, "u4", py::make_tuple(117)));
                break;
            default:
                if (output.is_list) {
                    const auto shape = py::make_tuple(output.places.size());
                    columns.append(py::make_tuple(output.name, "i4", shape));
                } else {
                    columns.append(py::make_tuple(output.name, "i4"));
                }
        }
    }
    return py::dtype::from_args(columns);
}

void put(const Output& output, const Registers& registers, const workbench::CallerSettings& caller,
         char* row) {
    char* const at = row + output.offset;
    switch (output.kind) {
        case Output::Kind::matrix: {
            const std::array<std::int32_t, 9> matrix = workbench::decode(registers.ccm, caller);
            std::memcpy(at, matrix.data(), sizeof(matrix));
            break;
        }
        case Output::Kind::ccm:
            std::memcpy(at, registers.ccm.u4Word, sizeof(registers.ccm));
            break;
        case Output::Kind::color:
            std::memcpy(at, registers.color.u4Word, sizeof(registers.color));
            break;
        default:
            for (std::size_t e = 0; e < output.places.size(); ++e) {
                const std::uint32_t value = output.places[e].read(registers.color.u4Word);
                std::memcpy(at + 4 * e, &value, 4);
            }
    }
}

workbench::Jobs jobs_of(const Tuning& tuning, const py::object& only) {
    const std::string job = only.is_none() ? "" : py::cast<std::string>(only);
    if (!only.is_none()) require_word("only", job, {"ccm", "color"});
    const workbench::Jobs jobs{tuning.has_ccm && job != "color", tuning.has_color && job != "ccm"};
    if (!jobs.ccm && !jobs.color) {
        raise_input_error(fmt::format("the tuning has no part '{}'", job.empty() ? "ccm" : job),
                          "only");
    }
    return jobs;
}

py::array replay(const Tuning& tuning, const py::object& frames, CameraState* state,
                 const py::object& fields, const py::object& only) {
    const workbench::Jobs jobs = jobs_of(tuning, only);
    const std::vector<Output> outputs = chosen_outputs(jobs, fields);
    const FrameColumns columns(frames);
    py::array result(dtype_of(outputs),
                     std::vector<py::ssize_t>{static_cast<py::ssize_t>(columns.size())});
    char* row = static_cast<char*>(result.mutable_data());
    const auto row_size = static_cast<std::size_t>(result.itemsize());
    Camera camera(tuning, jobs);
    if (state != nullptr) camera.set_state(*state);
    for_each_frame(columns, [&](const Frame& frame) {
        camera.run(frame);
        for (const Output& output : outputs) {
            put(output, camera.registers(), camera.tuning().caller, row);
        }
        row += row_size;
    });
    if (state != nullptr) *state = camera.state();
    return result;
}

}  // namespace

void bind_replay(py::module_& module) {
    py::class_<CameraState>(module, "State", R"(What the camera stack carries from frame to frame.

A new one is the state after power-on: ring and working image zero, boot flag 1. `replay` leaves
in it the state after its last frame.
)")
        .def(py::init<>())
        .def(
            "copy", [](const CameraState& state) { return state; }, "An independent copy.");
    module.def("replay", &replay, py::arg("tuning"), py::arg("frames"),
               py::arg("state") = py::none(), py::arg("fields") = py::none(), py::kw_only(),
               py::arg("only") = py::none(),
               R"(Runs frames through the library, one after the other.

Parameters
----------
tuning : Tuning
frames : structured array, DataFrame or dict of arrays, N frames
    Whole-number columns, read in place: lv, cct (kelvin), awb_r, awb_g, awb_b or full_r, full_g,
    full_b (512 = 1.0), and if you like flash, scene, profile, capture. Columns named frame or x_...
    are skipped.
state : State, optional
    Where the camera stands; updated, so that a long log can be fed in pieces. Default: power-on.
fields : str or list of str, optional
    Names or globs of result columns (`register_fields()`). Default: matrix, ccm, color.
only : {'ccm', 'color'}, optional
    Run one job alone.

Returns
-------
structured array (N,)
    matrix (3, 3) int32, coefficients in 1/512; ccm (6,) and color (117,) uint32 register words;
    colour fields by name, int32.

Raises
------
InputError
    With `field` naming the column or argument.

Examples
--------
>>> t = imgtune.Tuning.starter()
>>> r = imgtune.replay(t, {"lv": [100], "cct": [5000], "awb_r": [900], "awb_g": [512],
...                        "awb_b": [700]}, fields=["matrix", "Global.*"])
>>> r.dtype.names
('matrix', 'Global.B', 'Global.C', 'Global.S')
)");
    module.def(
        "register_dtype",
        [](const py::object& fields) { return dtype_of(chosen_outputs({}, fields)); },
        py::arg("fields") = py::none(), "The dtype of what `replay` returns for these fields.");
    module.def(
        "register_fields",
        [] {
            std::vector<std::string> names;
            for (const Output& output : all_outputs({})) names.push_back(output.name);
            return names;
        },
        "Every name that `replay`'s `fields` can choose.");
}

}  // namespace imgtune::python
