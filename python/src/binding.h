#ifndef IMGTUNE_PYTHON_BINDING_H
#define IMGTUNE_PYTHON_BINDING_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "workbench/camera/camera.h"
#include "workbench/findings/faults.h"
#include "workbench/frames/frame_log.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/tuning.h"

// What the binding's files share. Each adds its subject to the module.

namespace imgtune::python {

namespace py = pybind11;

using workbench::Tuning;

void bind_tuning(py::module_& module);
void bind_replay(py::module_& module);
void bind_studies(py::module_& module);
void bind_calibration(py::module_& module);
void bind_capture(py::module_& module);
void bind_judging(py::module_& module);
void bind_frame_logs(py::module_& module);
void bind_library(py::module_& module);

/// Raises imgtune.InputError with these findings.
[[noreturn]] void raise_findings(const std::string& message, const workbench::Faults& faults);

[[noreturn]] void raise_findings(const std::string& message, const py::object& findings);

/// Raises imgtune.InputError where an argument is none of the words that it may be.
void require_word(const char* argument, const std::string& value,
                  std::initializer_list<const char*> allowed);

/// Raises imgtune.InputError about a file, unless the place names another.
[[noreturn]] void raise_about_file(const std::string& message, const std::string& file,
                                   const workbench::InputPlace& place = {});

/// What `work` returns, which needs no interpreter lock; BadInput becomes InputError with `file`.
template <class Work>
auto work_on_file(const std::string& file, const Work& work) {
    try {
        const py::gil_scoped_release unlocked;
        return work();
    } catch (const workbench::BadInput& error) {
        raise_about_file(error.what(), file, error.place());
    }
}

/// A view of stored words that takes whole numbers in their range alone.
py::object guarded(const py::array& words);

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
        void (*load)(const char* from, py::ssize_t stride, std::size_t count,
                     std::int64_t* out) = nullptr;
        std::size_t target = 0;  ///< index into kFrameColumns

        const char* at(std::size_t frame) const {
            return data + static_cast<py::ssize_t>(frame) * stride;
        }
    };
    void add(const py::object& values, std::size_t target);
    void check_gains();
    void check_range(const Column& column) const;

    std::vector<py::array> kept_;
    std::vector<Column> columns_;
    std::size_t size_ = 0;
    bool sized_ = false;
};

/// Hands every frame to `take`, without the interpreter lock; an interrupt ends it.
template <class Take>
void for_each_frame(const FrameColumns& columns, const Take& take) {
    constexpr std::size_t kChunk = 512;
    constexpr std::size_t kBetweenSignals = 64 * kChunk;
    const py::gil_scoped_release unlocked;
    std::vector<workbench::Frame> chunk(kChunk);
    for (std::size_t first = 0; first < columns.size(); first += kChunk) {
        const std::size_t count = std::min(kChunk, columns.size() - first);
        columns.read(first, count, chunk.data());
        for (std::size_t i = 0; i < count; ++i) take(chunk[i]);
        if ((first + kChunk) % kBetweenSignals == 0) {
            const py::gil_scoped_acquire locked;
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        }
    }
}

/// Findings as a list of dicts.
py::object findings_of(const workbench::Faults& faults);

/// JSON as Python values.
py::object as_python(const nlohmann::ordered_json& json);

/// The class that bind_tuning has made, for methods on other subjects.
inline py::class_<Tuning> tuning_class(const py::module_& module) {
    return py::reinterpret_borrow<py::class_<Tuning>>(module.attr("Tuning"));
}

}  // namespace imgtune::python

#endif
