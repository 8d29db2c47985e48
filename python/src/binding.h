#ifndef IMGTUNE_PYTHON_BINDING_H
#define IMGTUNE_PYTHON_BINDING_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <string>

#include "workbench/camera/camera.h"
#include "workbench/frames/frame_log.h"
#include "workbench/tuning/faults.h"
#include "workbench/tuning/tuning.h"

// What the binding's files share. Each adds its subject to the module.

namespace imgtune::python {

namespace py = pybind11;

using workbench::Tuning;

void bind_tuning(py::module_& module);
void bind_replay(py::module_& module);
void bind_studies(py::module_& module);
void bind_library(py::module_& module);

/// Raises imgtune.InputError with these findings.
[[noreturn]] void raise_findings(const std::string& message, const workbench::Faults& faults);

/// Raises imgtune.InputError about one field or argument.
[[noreturn]] void raise_input_error(const std::string& message, const std::string& field);

/// The text of a path-like object.
std::string path_text(const py::object& path);

/// Frames given as a structured array, a DataFrame or a mapping of columns, read in place.
class FrameColumns {
  public:
    explicit FrameColumns(const py::object& frames);

    std::size_t size() const { return size_; }
    /// Takes frames `first`.. into `out`. Needs no interpreter lock.
    void read(std::size_t first, std::size_t count, workbench::Frame* out) const;

  private:
    /// One column as it lies in memory.
    struct Column {
        const char* data = nullptr;  ///< null: missing
        py::ssize_t stride = 0;
        std::int64_t (*load)(const char*) = nullptr;
        std::size_t target = 0;  ///< index into kFrameColumns
    };
    void add(const py::object& values, std::size_t target);
    void check_gains();
    void check_range(const Column& column) const;

    std::vector<py::array> kept_;
    std::vector<Column> columns_;
    std::size_t size_ = 0;
    bool sized_ = false;
};

/// Findings as a list of dicts.
py::object findings_of(const workbench::Faults& faults);

/// JSON text as Python values.
py::object from_json(const std::string& text);

}  // namespace imgtune::python

#endif
