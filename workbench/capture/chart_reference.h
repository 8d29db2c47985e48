#ifndef IMGTUNE_WORKBENCH_CAPTURE_CHART_REFERENCE_H
#define IMGTUNE_WORKBENCH_CAPTURE_CHART_REFERENCE_H

#include <string>

#include "workbench/capture/capture_study.h"
#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// The chart changed its pigments in November 2014; the colours differ by a mean CIEDE2000 of 0.85.
enum class ChartEdition { before_2014, after_2014 };

/// The maker's colours of an edition.
ChartReference chart_reference(ChartEdition edition);

/// The longest table that is read, in bytes.
inline constexpr std::size_t kLargestPatchTable = 1U << 16U;

/// The colours of a chart of one's own, a patch a line in the chart's order: a header of patch
/// (optional) and r,g,b (linear sRGB, 1.0 = white) or L,a,b (CIE L*a*b* under D50). Faults are
/// told.
ChartReference read_reference(const std::string& text, const std::string& file, Faults& faults);

/// Means of the patches above black, a patch a line in the chart's order: a header of patch
/// (optional) and r,g,b. Faults are told.
std::array<PatchMeasure, kChartPatches> read_patch_means(const std::string& text,
                                                         const std::string& file, Faults& faults);

/// The index of a patch by its name or its number from 1; kChartPatches: there is none.
std::size_t patch_index(const std::string& name);

/// "patch 7, orange".
std::string patch_name(std::size_t index);

}  // namespace imgtune::workbench

#endif
