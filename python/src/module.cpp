#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "binding.h"
#include "workbench/files/output_file.h"
#include "workbench/json/findings.h"
#include "workbench/text/bad_input.h"

namespace imgtune::python {

namespace {

py::object input_error() {
    return py::module_::import("imgtune._errors").attr("InputError");
}

py::object error_at(const std::string& message, const workbench::InputPlace& place) {
    return input_error()(message, py::arg("file") = place.file, py::arg("line") = place.line,
                         py::arg("field") = place.field);
}

[[noreturn]] void raise(const py::object& error) {
    PyErr_SetObject(error.get_type().ptr(), error.ptr());
    throw py::error_already_set();
}

}  // namespace

void raise_findings(const std::string& message, const py::object& findings) {
    raise(input_error()(message, findings));
}

void raise_findings(const std::string& message, const workbench::Faults& faults) {
    raise_findings(message, findings_of(faults));
}

void raise_about_file(const std::string& message, const std::string& file,
                      const workbench::InputPlace& place) {
    raise(error_at(message, {place.file.empty() ? file : place.file, place.line, place.field}));
}

py::object guarded(const py::array& words) {
    return words.attr("view")(py::module_::import("imgtune._fields").attr("FieldArray"));
}

void require_word(const char* argument, const std::string& value,
                  std::initializer_list<const char*> allowed) {
    std::string words;
    for (const char* word : allowed) {
        if (value == word) return;
        words += fmt::format("{}'{}'", words.empty() ? "" : " and ", word);
    }
    raise_input_error(fmt::format("{} is '{}'; allowed are {}", argument, value, words), argument);
}

void raise_input_error(const std::string& message, const std::string& field) {
    raise(error_at(message, {"", 0, field}));
}

py::object findings_of(const workbench::Faults& faults) {
    return as_python(workbench::to_json(faults))["findings"];
}

std::string path_text(const py::object& path) {
    return py::cast<std::string>(py::module_::import("os").attr("fspath")(path));
}

py::object as_python(const nlohmann::ordered_json& json) {
    const std::string text =
        json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    return py::module_::import("json").attr("loads")(text);
}

}  // namespace imgtune::python

PYBIND11_MODULE(_core, module) {
    using namespace imgtune::python;
    module.doc() = "The compiled half of imgtune: the shipped library and its workbench.";
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const imgtune::workbench::BadInput& error) {
            const py::object raised = error_at(error.what(), error.place());
            PyErr_SetObject(raised.get_type().ptr(), raised.ptr());
        } catch (const imgtune::workbench::ClosedPipe& error) {
            PyErr_SetString(PyExc_BrokenPipeError, error.what());
        }
    });
    bind_tuning(module);
    bind_replay(module);
    bind_frame_logs(module);
    bind_studies(module);
    bind_calibration(module);
    bind_capture(module);
    bind_judging(module);
    bind_library(module);
}
