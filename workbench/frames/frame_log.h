#ifndef IMGTUNE_WORKBENCH_FRAMES_FRAME_LOG_H
#define IMGTUNE_WORKBENCH_FRAMES_FRAME_LOG_H

#include <imgtune/camera_state.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "workbench/text/bad_input.h"
#include "workbench/text/line_reader.h"

namespace imgtune::workbench {

/// One frame as the camera stack would describe it.
struct Frame {
    NSIspTuning::RAWIspCamInfo state{};
    std::int32_t capture = 0;  ///< 1: still capture
};

/// A column of a frame log and the values that it takes.
struct FrameColumn {
    std::string_view name;
    std::int64_t least;
    std::int64_t most;
};

inline constexpr std::int64_t kInt32Least = -2147483648;
inline constexpr std::int64_t kInt32Most = 2147483647;
inline constexpr std::int64_t kUint32Most = 4294967295;

/// lv and cct are unsigned in the record; a negative one stands for its bit pattern.
inline constexpr std::array<FrameColumn, 12> kFrameColumns = {{
    {"lv", kInt32Least, kUint32Most},
    {"cct", kInt32Least, kUint32Most},
    {"full_r", kInt32Least, kInt32Most},
    {"full_g", kInt32Least, kInt32Most},
    {"full_b", kInt32Least, kInt32Most},
    {"awb_r", kInt32Least, kInt32Most},
    {"awb_g", kInt32Least, kInt32Most},
    {"awb_b", kInt32Least, kInt32Most},
    {"flash", kInt32Least, kInt32Most},
    {"scene", kInt32Least, kInt32Most},
    {"profile", kInt32Least, kInt32Most},
    {"capture", kInt32Least, kInt32Most},
}};

/// Where each stands among kFrameColumns.
enum Column : std::size_t {
    kLv,
    kCct,
    kFullGain,     ///< red; green and blue follow
    kAwbGain = 5,  ///< likewise
    kFlash = 8,
    kScene,
    kProfile,
    kCapture,
};

/// Values in the order of kFrameColumns.
using FrameValues = std::array<std::int64_t, kFrameColumns.size()>;
Frame to_frame(const FrameValues& values);
FrameValues to_values(const Frame& frame);

/// A log that cannot be read on: what is wrong, and in which line.
class BadFrames : public BadInput {
  public:
    BadFrames(const std::string& log, std::uint64_t line, std::string_view column,
              std::string what_is_wrong);

    std::string message;  ///< without log and line
};

/// Whether a text that starts so is a frame log, by its header, and no tuning.
bool begins_frame_log(std::string_view start);

/// Streaming reader of frame logs: CSV, one frame a line, whole numbers.
///
/// The first line that is neither blank nor a comment (#) names the columns, in any order. lv, cct
/// and one whole gain triple are required; the other triple is a copy when it is missing, flash,
/// scene, profile and capture are 0. A single value other than lv may be empty: what is not told in
/// one frame is treated alike, but a cct, or both gains, stay those of the frame before (0 before
/// any). Columns whose name begins with "x_", and "frame", are
/// skipped. Lines end in LF or CRLF. Anything else throws BadFrames with file, line, column, value
/// and what is allowed. Memory does not grow with the log.
class FrameLog {
  public:
    /// `name` stands in messages; the source stays the caller's.
    FrameLog(std::string name, ByteSource& source);

    /// The next frame; false at the end of the log.
    bool next(Frame& frame);

    /// The frame read last, as it stands in the log: in the order of kFrameColumns, with its sign.
    const FrameValues& values() const { return values_; }

    const std::string& name() const { return name_; }
    std::uint64_t line() const { return lines_.line(); }  ///< of the frame read last, from 1
    std::uint64_t bytes_read() const { return lines_.bytes_read(); }
    std::uint64_t size() const { return lines_.size(); }  ///< in bytes; 0 when not known

  private:
    bool next_line(std::string_view& text);
    void read_header();
    void require_columns(const std::array<bool, kFrameColumns.size()>& present);
    void read_values(std::string_view text);
    void read_value(std::string_view text, std::size_t column);
    void fill_empty_gains();
    std::int64_t read_number(std::string_view text, const FrameColumn& column) const;
    [[noreturn]] void fail(std::string_view what, std::string_view column = {}) const;

    std::string name_;
    LineReader lines_;
    std::vector<int> targets_;  ///< per column of the file: index into kFrameColumns, or -1
    bool copy_full_to_awb_ = false;
    bool copy_awb_to_full_ = false;
    FrameValues values_{};
    std::array<bool, kFrameColumns.size()> empty_{};  ///< of the line at hand
    bool any_empty_ = false;
};

}  // namespace imgtune::workbench

#endif
