#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "binding.h"
#include "field_paths.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/files/tuning_files.h"
#include "workbench/studies/check.h"
#include "workbench/tuning/fields.h"
#include "workbench/tuning/starter.h"
#include "workbench/tuning/yaml_io.h"

namespace imgtune::python {

namespace {

using workbench::Faults;
using workbench::FieldRef;
using workbench::Part;

Tuning load(const py::object& path) {
    Faults faults;
    const std::string from = path_text(path);
    const Tuning tuning = work_on_file(from, [&] { return workbench::load_tuning(from, faults); });
    if (faults.has_errors()) {
        faults.sort();
        raise_findings(faults.text(), faults);
    }
    return tuning;
}

Tuning from_yaml(const std::string& text, const std::string& name) {
    Faults faults;
    Tuning tuning = workbench::read_yaml(text, name, faults);
    if (faults.has_errors()) {
        faults.sort();
        raise_findings(faults.text(), faults);
    }
    return tuning;
}

void save(const Tuning& tuning, const py::object& path, const std::string& form, bool comments,
          bool overwrite) {
    require_word("form", form, {"yaml", "images"});
    const std::string to = path_text(path);
    if (!overwrite && to != "-" && workbench::holds_something(to)) {
        raise_about_file(to + ": already exists; choose another path or pass overwrite=True", to);
    }
    const Tuning copy = tuning;
    work_on_file(to, [&] {
        if (form == "yaml") return workbench::write_file(to, workbench::write_yaml(copy, comments));
        workbench::write_images(to, copy);
    });
}

py::object check(Tuning tuning) {
    Faults faults;
    std::optional<py::gil_scoped_release> unlocked(std::in_place);
    workbench::check_tuning(tuning, faults);
    faults.sort();
    unlocked.reset();
    return findings_of(faults);
}

[[noreturn]] void raise_unknown(const std::string& path) {
    const std::string near = workbench::nearest_name(path, field_paths());
    raise_input_error(
        fmt::format("no field '{}'{}; imgtune.Tuning.paths() names all", path,
                    near.empty() ? std::string() : fmt::format(", did you mean '{}'?", near)),
        path);
}

std::uint32_t* words_of(Tuning& tuning, Part part) {
    switch (part) {
        case Part::ccm:
            return reinterpret_cast<std::uint32_t*>(&tuning.ccm);
        case Part::color:
            return tuning.color[0][0].u4Word;
        case Part::color_tuning:
            return &tuning.pca[0].u4RatioHighLV;
        default:
            return nullptr;
    }
}

/// Where a value is a whole word of a record; null where it is not.
std::uint32_t* place_of(Tuning& tuning, const FieldRef& field) {
    const BitField at = field.definition->place(field.element);
    std::uint32_t* const words = words_of(tuning, field.record->part);
    if (words == nullptr || at.width != 32 || at.low != 0 ||
        field.definition->form != workbench::Form::integer) {
        return nullptr;
    }
    return words + field.record->first_word + at.word;
}

/// A view of the record where its words are the values, else a read-only copy.
py::object array_of(const py::object& self, const Selection& selection) {
    auto& tuning = self.cast<Tuning&>();
    const std::vector<py::ssize_t> shape(selection.shape.begin(), selection.shape.end());
    std::uint32_t* const first = place_of(tuning, *selection.values.front());
    const bool all_signed = std::all_of(selection.values.begin(), selection.values.end(),
                                        [](const FieldRef* f) { return f->definition->is_signed; });
    bool in_order = first != nullptr;
    for (std::size_t i = 0; in_order && i < selection.values.size(); ++i) {
        in_order = place_of(tuning, *selection.values[i]) == first + i;
    }
    if (in_order) {
        const py::dtype type =
            all_signed ? py::dtype::of<std::int32_t>() : py::dtype::of<std::uint32_t>();
        return guarded(py::array(type, shape, {}, first, self));
    }
    py::array_t<std::int64_t> copy(shape);
    for (std::size_t i = 0; i < selection.values.size(); ++i) {
        copy.mutable_data()[i] = selection.values[i]->read(tuning);
    }
    copy.attr("setflags")(py::arg("write") = false);
    return copy;
}

py::object get(const py::object& self, const std::string& path) {
    const Selection selection = select(path);
    switch (selection.kind) {
        case Selection::Kind::value:
            return py::int_(selection.values.front()->read(self.cast<Tuning&>()));
        case Selection::Kind::array:
            return array_of(self, selection);
        case Selection::Kind::group: {
            py::dict members;
            for (const std::string& name : selection.members) {
                members[py::str(name)] = get(self, path.empty() ? name : path + '.' + name);
            }
            return members;
        }
        default:
            raise_unknown(path);
    }
}

/// Exactly these values for the selection of a path, as numpy broadcasts them.
void assign(Tuning& tuning, const std::string& path, const Selection& selection,
            const py::object& value) {
    const py::module_ numpy = py::module_::import("numpy");
    const py::array given = numpy.attr("asarray")(value);
    if (given.dtype().kind() != 'i' && given.dtype().kind() != 'u') {
        raise_input_error(fmt::format("'{}' takes whole numbers as they are stored, not {}", path,
                                      py::cast<std::string>(py::str(given.dtype()))),
                          path);
    }
    const std::vector<py::ssize_t> shape(selection.shape.begin(), selection.shape.end());
    py::array_t<std::int64_t, py::array::c_style> values;
    try {
        values = numpy.attr("ascontiguousarray")(numpy.attr("broadcast_to")(given, py::cast(shape)),
                                                 py::arg("dtype") = "int64");
    } catch (py::error_already_set& error) {
        if (!error.matches(PyExc_ValueError)) throw;
        raise_input_error(fmt::format("'{}' has {} values; {} were given", path,
                                      selection.values.size(), given.size()),
                          path);
    }
    for (std::size_t i = 0; i < selection.values.size(); ++i) {
        const FieldRef& field = *selection.values[i];
        const std::int64_t wanted = values.data()[i];
        field.write_bits(tuning, static_cast<std::uint32_t>(wanted));
        if (field.read(tuning) != wanted) {
            raise_input_error(fmt::format("{} is {}; allowed are {}..{}", field.path(), wanted,
                                          field.definition->lowest(), field.definition->highest()),
                              field.path());
        }
    }
}

/// A value or an array to its path; a dict to the members of a group.
void assign_any(Tuning& tuning, const std::string& path, const py::object& value) {
    const Selection selection = select(path);
    if (selection.kind == Selection::Kind::none) raise_unknown(path);
    if (selection.kind != Selection::Kind::group) return assign(tuning, path, selection, value);
    if (!py::isinstance<py::dict>(value)) {
        raise_input_error(fmt::format("'{}' is a group of fields; it takes a dict of them", path),
                          path);
    }
    for (const auto& [name, member] : value.cast<py::dict>()) {
        const auto below = py::cast<std::string>(py::str(name));
        assign_any(tuning, path.empty() ? below : path + '.' + below,
                   py::reinterpret_borrow<py::object>(member));
    }
}

void set(Tuning& tuning, const std::string& path, const py::object& value) {
    Tuning tried = tuning;  // all of it or none
    assign_any(tried, path, value);
    tuning = tried;
}

py::object words(const py::object& self, const std::string& part) {
    auto& tuning = self.cast<Tuning&>();
    const py::dtype type = py::dtype::of<std::uint32_t>();
    require_word("part", part, {"ccm", "color", "pca"});
    if (part == "ccm") {
        return guarded(py::array(type, std::vector<py::ssize_t>{sizeof(tuning.ccm) / 4}, {},
                                 words_of(tuning, Part::ccm), self));
    }
    if (part == "color") {
        return guarded(py::array(type, {4, 5, 117}, {}, words_of(tuning, Part::color), self));
    }
    return guarded(py::array(type, {4, 17}, {}, words_of(tuning, Part::color_tuning), self));
}

bool same(const Tuning& a, const Tuning& b) {
    return a.name == b.name && a.has_ccm == b.has_ccm && a.has_color == b.has_color &&
           a.caller.full_gain == b.caller.full_gain && a.caller.int_bits == b.caller.int_bits &&
           a.caller.frac_bits == b.caller.frac_bits && a.caller.weights == b.caller.weights &&
           a.caller.ct_grid == b.caller.ct_grid &&
           std::memcmp(&a.ccm, &b.ccm, sizeof(a.ccm)) == 0 &&
           std::memcmp(a.color, b.color, sizeof(a.color)) == 0 &&
           std::memcmp(a.pca, b.pca, sizeof(a.pca)) == 0 &&
           std::memcmp(a.kelvin, b.kelvin, sizeof(a.kelvin)) == 0;
}

}  // namespace

void bind_tuning(py::module_& module) {
    py::class_<Tuning>(
        module, "Tuning",
        R"(One tuning: the stored records bit for bit, and what the camera stack adds.

Indexed by field path. A value is an int; a list of values is an array. Arrays of whole 32-bit
words (gains, polynomials, smoothing parameters) are views of the record: writing to them changes
the tuning. Others (matrices, packed colour fields) are read-only copies: assign to the path.
A group of fields is a dict, and takes one. All values are whole numbers as they are stored, a gain
of 1.0 as 512; what is not whole, or does not fit, is refused.

Examples
--------
>>> t = imgtune.Tuning.starter()
>>> t["ccm.i4NumCT"]
4
>>> t["ccm.rows.normal.gains"].shape
(8, 3)
>>> t["color.tuning.normal.hue_speed"] = 2
)")
        .def(py::init<>(), "An empty tuning: no part present, all words zero.")
        .def_static(
            "load", &load, py::arg("path"),
            "Reads a YAML file or a folder of stored images.\n\nRaises\n------\nInputError\n"
            "    With every finding, when it cannot be read.")
        .def_static("from_yaml", &from_yaml, py::arg("text"), py::arg("name") = "text",
                    "Reads the YAML form; `name` stands for the file in findings.")
        .def_static("starter", &workbench::starter_tuning,
                    "A plausible tuning with every part, to start from; no sensor's own figures.")
        .def("save", &save, py::arg("path"), py::kw_only(), py::arg("form") = "yaml",
             py::arg("comments") = false, py::arg("overwrite") = false,
             "Writes the tuning whole or not at all: form 'yaml' is a file, 'images' a folder of\n"
             "stored images. comments: explain each field where it stands first. overwrite: "
             "replace\n"
             "what stands there, which else raises InputError.")
        .def("to_yaml", &workbench::write_yaml, py::kw_only(), py::arg("comments") = false,
             "The YAML form as text.")
        .def("check", &check,
             "What the tuning would do wrong on the camera.\n\nReturns\n-------\nlist of dict\n"
             "    severity, code, file, line, path, message, value, allowed, effect, suggestion.")
        .def(
            "copy", [](const Tuning& tuning) { return tuning; }, "An independent copy.")
        .def("words", &words, py::arg("part"),
             "The record itself as a uint32 view: 'ccm' (1102,), 'color' (4, 5, 117) by slot and\n"
             "CT index, 'pca' (4, 17) by slot.")
        .def_static("paths", &field_paths, "Every field path, in the order of the YAML form.")
        .def("__getitem__", &get, py::arg("path"))
        .def("__setitem__", &set, py::arg("path"), py::arg("value"))
        .def("_ipython_key_completions_", [](const Tuning&) { return field_paths(); })
        .def("__eq__", &same, py::is_operator())
        .def("__copy__", [](const Tuning& tuning) { return tuning; })
        .def("__deepcopy__", [](const Tuning& tuning, const py::dict&) { return tuning; })
        .def("__repr__",
             [](const Tuning& tuning) {
                 return fmt::format("<imgtune.Tuning '{}'{}{}>", tuning.name,
                                    tuning.has_ccm ? " ccm" : "", tuning.has_color ? " color" : "");
             })
        .def(py::pickle(
            [](const Tuning& tuning) { return py::make_tuple(workbench::write_yaml(tuning)); },
            [](const py::tuple& state) {
                return from_yaml(state[0].cast<std::string>(), "pickle");
            }))
        .def_property_readonly(
            "kelvin",
            [](const py::object& self) {
                auto& tuning = self.cast<Tuning&>();
                return guarded(py::array(py::dtype::of<std::uint32_t>(),
                                         std::vector<py::ssize_t>{8, 8}, {}, tuning.kelvin, self));
            },
            "CT of each tuned point (LV row, CT index), 0 where unknown: a (8, 8) uint32 view.")
        .def_readwrite("name", &Tuning::name)
        .def_readwrite("has_ccm", &Tuning::has_ccm, "Whether SmoothCCM has a tuning.")
        .def_readwrite("has_color", &Tuning::has_color, "Whether SmoothCOLOR has one.")
        .attr("__hash__") = py::none();
}

}  // namespace imgtune::python
