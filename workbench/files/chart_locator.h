#ifndef IMGTUNE_WORKBENCH_FILES_CHART_LOCATOR_H
#define IMGTUNE_WORKBENCH_FILES_CHART_LOCATOR_H

#include <optional>

#include "workbench/capture/capture_study.h"
#include "workbench/capture/picture.h"

namespace imgtune::workbench {

/// Whether this build has what finds charts.
bool can_find_charts();

/// The outer corners of four patches at the chart's ends, in turn round it, where OpenCV sees a
/// chart in the picture. It fills a fifth of the width or more then. None: no chart is seen, or the
/// build cannot find any.
std::optional<Quad> find_chart(const Picture& picture);

}  // namespace imgtune::workbench

#endif
