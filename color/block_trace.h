#ifndef IMGTUNE_COLOR_BLOCK_TRACE_H
#define IMGTUNE_COLOR_BLOCK_TRACE_H

#include <imgtune/color.h>

#include <array>
#include <cstddef>
#include <utility>

#include "color/lanes.h"
#include "common/arithmetic.h"
#include "common/debug_switch.h"
#include "common/log.h"

namespace imgtune {

using ColorImage = NSIspTuning::ISP_NVRAM_COLOR_T;
using ColorParam = ISP_SMOOTH_COLOR_PARAM_T;

/// The trace of one call of a block function. The switch is read on construction, once.
class BlockTrace {
  public:
    BlockTrace(const char* function, const char* switch_name)
        : function_(function), level_(read_debug_switch(switch_name)) {}

    /// Header line: logged before the computation for any nonzero switch.
    template <class... Values>
    void header(const char* format, Values... values) const {
        if (on()) log_line(format, function_, values...);
    }

    void lv_header(const ColorParam& param) const {
        header("[%s()] u4OutdoorRatio = %d, u4OutdoorBase = %d\n", as_signed(param.u4OutdoorRatio),
               as_signed(param.u4OutdoorBase));
    }

    bool on() const { return level_ != 0; }

    /// Detail lines are logged for the switch value 1 only.
    bool details() const { return level_ == 1; }

    template <class... Values>
    void line(const char* format, Values... values) const {
        log_line(format, function_, values...);
    }

  private:
    const char* function_;
    std::int32_t level_;
};

/// A trace that is off, without a look at its switch: what is written over a trace becomes nothing.
struct SilentTrace {
    template <class... Values>
    void header(const char*, Values...) const {}
    void lv_header(const ColorParam&) const {}
    static constexpr bool details() { return false; }
};

template <std::size_t... J>
[[gnu::noinline]] void trace_values(const BlockTrace& trace, const char* format,
                                    const std::int32_t* values, std::index_sequence<J...>) {
    trace.line(format, values[J]...);
}

/// A line of Shown values of a block's fields, from `first` on.
template <std::size_t Shown, class Fields>
void trace_row(const BlockTrace& trace, const char* format, const Fields& fields,
               std::size_t first = 0) {
    std::int32_t values[Shown];
    for (std::size_t j = 0; j < Shown; ++j) values[j] = fields[first + j];
    trace_values(trace, format, values, std::make_index_sequence<Shown>());
}
template <std::size_t Shown, class Fields>
void trace_row(const SilentTrace&, const char*, const Fields&, std::size_t = 0) {}

/// The inputs of a block as they were before its results were written, kept where detail lines show
/// them: the image that is written may be one of those that are read.
template <std::size_t N>
class KeptInputs {
  public:
    template <class Trace, class Fields>
    KeptInputs(const Trace& trace, const Fields& high_fields, const Fields& low_fields) {
        if (!trace.details()) return;
        for (std::size_t j = 0; j < N; ++j) {
            high[j] = high_fields[j];
            low[j] = low_fields[j];
        }
    }

    std::array<std::uint8_t, N> high;
    std::array<std::uint8_t, N> low;
};
template <class Trace, class Fields>
KeptInputs(const Trace&, const Fields&, const Fields&) -> KeptInputs<Fields::kFields>;

// Value lists of the detail lines.
#define IMGTUNE_4_VALUES "%03d,%03d,%03d,%03d"
#define IMGTUNE_16_VALUES \
    IMGTUNE_4_VALUES "," IMGTUNE_4_VALUES "," IMGTUNE_4_VALUES "," IMGTUNE_4_VALUES
#define IMGTUNE_20_VALUES IMGTUNE_16_VALUES "," IMGTUNE_4_VALUES

}  // namespace imgtune

#endif
