#ifndef IMGTUNE_WORKBENCH_STUDIES_EXPLAIN_PARTS_H
#define IMGTUNE_WORKBENCH_STUDIES_EXPLAIN_PARTS_H

#include "workbench/studies/explanation.h"
#include "workbench/trace/trace_grammar.h"

namespace imgtune::workbench {

/// From the traces of SmoothCCM, as it ran and with the average switched off.
MatrixExplanation explain_matrix(const Trace& trace, const Trace& unaveraged,
                                 const std::array<std::int32_t, 9>& written);

/// From the traces of SmoothCOLOR and the image that it wrote.
ColorExplanation explain_color(const Trace& trace, const Tuning& tuning,
                               const NSIspTuning::ISP_NVRAM_COLOR_T& image);

}  // namespace imgtune::workbench

#endif
