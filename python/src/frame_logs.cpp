#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "binding.h"
#include "workbench/files/file_source.h"
#include "workbench/trace/traced_frames.h"

// Frame logs out of files, as structured arrays.

namespace imgtune::python {

namespace {

using workbench::Frame;
using Row = std::array<std::uint32_t, workbench::kFrameColumns.size()>;
using Rows = std::vector<Row>;

Row row_of(const Frame& frame) {
    const workbench::FrameValues values = workbench::to_values(frame);
    Row row;
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = static_cast<std::uint32_t>(values[i]);
    return row;
}

/// Every frame of a log. Needs no interpreter lock.
Rows rows_of(workbench::FrameLog& log) {
    Rows rows;
    for (Frame frame; log.next(frame);) rows.push_back(row_of(frame));
    return rows;
}

/// The rows themselves as an array of FRAME_DTYPE.
py::array as_array(Rows&& rows) {
    auto* const kept = new Rows(std::move(rows));
    const py::capsule owner(kept, [](void* p) { delete static_cast<Rows*>(p); });
    const py::dtype type = py::cast<py::dtype>(py::module_::import("imgtune").attr("FRAME_DTYPE"));
    return py::array(type, std::vector<py::ssize_t>{static_cast<py::ssize_t>(kept->size())}, {},
                     kept->data(), owner);
}

py::array read_csv(const py::object& path) {
    const std::string text = path_text(path);
    return as_array(work_on_file(text, [&text] {
        workbench::FrameFile file(text);
        return rows_of(file.log());
    }));
}

py::array as_frames(const py::object& frames) {
    const FrameColumns columns(frames);
    Rows rows;
    rows.reserve(columns.size());
    for_each_frame(columns, [&rows](const Frame& frame) { rows.push_back(row_of(frame)); });
    return as_array(std::move(rows));
}

std::optional<workbench::CameraChoice> camera_of(const py::object& camera) {
    if (camera.is_none()) return std::nullopt;
    if (py::isinstance<py::int_>(camera)) return workbench::CameraChoice{camera.cast<int>(), 0};
    const auto [process, thread] = camera.cast<std::pair<int, int>>();
    return workbench::CameraChoice{process, thread};
}

/// Where in the device's log a frame stands.
struct Place {
    std::string time;
    std::int32_t process;
    std::int32_t thread;
    std::uint64_t line;
};

py::dict report_of(const workbench::TracedFrames& frames, std::size_t count) {
    const workbench::TraceTotals& totals = frames.totals();
    py::list others;
    for (const workbench::TracedWriter& other : frames.others()) {
        others.append(py::dict(py::arg("process") = other.writer.process,
                               py::arg("thread") = other.writer.thread,
                               py::arg("calls") = other.calls));
    }
    return py::dict(
        py::arg("frames") = count, py::arg("lines") = totals.lines,
        py::arg("trace_lines") = totals.trace_lines, py::arg("stray_lines") = totals.stray_lines,
        py::arg("lost_lines") = totals.lost_lines,
        py::arg("unusable_calls") = frames.unusable_calls(), py::arg("other_cameras") = others);
}

/// The frames with their places as further columns, which replay skips.
py::array with_places(const py::array& frames, const std::vector<Place>& places) {
    const py::module_ numpy = py::module_::import("numpy");
    std::size_t longest = 1;
    for (const Place& place : places) longest = std::max(longest, place.time.size());
    py::list columns = frames.dtype().attr("descr");
    columns.append(py::make_tuple("x_time", "S" + std::to_string(longest)));
    columns.append(py::make_tuple("x_process", "i4"));
    columns.append(py::make_tuple("x_thread", "i4"));
    columns.append(py::make_tuple("x_line", "u8"));
    py::array all = numpy.attr("zeros")(places.size(), columns);
    char* row = static_cast<char*>(all.mutable_data());
    const char* from = static_cast<const char*>(frames.data());
    for (const Place& place : places) {
        char* at = row;
        const auto put = [&at](const void* bytes, std::size_t size) {
            std::memcpy(at, bytes, size);
            at += size;
        };
        put(from, sizeof(Row));
        put(place.time.data(), place.time.size());
        at = row + sizeof(Row) + longest;
        put(&place.process, sizeof(place.process));
        put(&place.thread, sizeof(place.thread));
        put(&place.line, sizeof(place.line));
        row += all.itemsize();
        from += sizeof(Row);
    }
    return all;
}

py::object frames_from_logcat(const py::object& path, const py::object& camera,
                              bool return_report) {
    const std::string text = path_text(path);
    const auto choice = camera_of(camera);
    std::vector<Place> places;
    std::optional<workbench::TracedFrames> traced;
    Rows rows = work_on_file(text, [&] {
        workbench::FileSource source(text);
        traced.emplace(source, choice);
        workbench::TracedFrameText lines(*traced, [&places](const workbench::TracedFrame& frame) {
            const workbench::TracedCall& call = frame.first();
            places.push_back({call.time, call.writer.process, call.writer.thread, call.line});
        });
        workbench::FrameLog log(source.name(), lines);
        Rows found = rows_of(log);
        if (found.empty()) throw workbench::BadInput(traced->why_none(source.name()));
        return found;
    });
    const py::array frames = with_places(as_array(std::move(rows)), places);
    if (!return_report) return frames;
    return py::make_tuple(frames, report_of(*traced, places.size()));
}

}  // namespace

void bind_frame_logs(py::module_& module) {
    module.def("read_csv", &read_csv, py::arg("path"),
               "The frame log of a CSV file as an array of FRAME_DTYPE; '-' is standard input.");
    module.def("as_frames", &as_frames, py::arg("frames"),
               R"(A copy of frames in the one form that every column has its place in.

Parameters
----------
frames : as for `replay`

Returns
-------
structured array (N,) of FRAME_DTYPE
    A gain that was not given is a copy of the other; flash, scene, profile and capture are 0.

Raises
------
InputError
    With `field` naming the column.
)");
    module.def("frames_from_logcat", &frames_from_logcat, py::arg("path"),
               py::arg("camera") = py::none(), py::kw_only(), py::arg("return_report") = false,
               R"(The light of every frame, from the library's own trace in a device's log.

What the trace does not tell is filled as in a frame log with empty values: flash, scene, profile
and capture are 0, one gain triple serves for both, cct and gains stay those of the frame before.

Parameters
----------
path : path-like
    What `adb logcat` printed, in the form brief, tag, time, threadtime or long.
camera : int or (int, int), optional
    Process, or process and thread, whose calls are one camera's. Default: the first writer that
    traces a whole call.
return_report : bool
    Return (frames, report).

Returns
-------
structured array (N,)
    The columns of FRAME_DTYPE, and where a frame's first line stands: x_time (bytes, as written),
    x_process, x_thread, x_line (from 1).
report : dict
    frames, lines, trace_lines, stray_lines (in no call), lost_lines (as the log reports),
    unusable_calls (their inputs are missing), other_cameras: list of {process, thread, calls}.

Raises
------
InputError
    When the file cannot be read, or holds no frame; it says what is missing.
)");
}

}  // namespace imgtune::python
