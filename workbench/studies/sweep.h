#ifndef IMGTUNE_WORKBENCH_STUDIES_SWEEP_H
#define IMGTUNE_WORKBENCH_STUDIES_SWEEP_H

#include <cstdint>
#include <string>
#include <vector>

#include "workbench/appearance/chart_view.h"
#include "workbench/camera/camera.h"
#include "workbench/camera/locus.h"
#include "workbench/camera/register_values.h"

namespace imgtune::workbench {

/// The light that a sweep covers: every colour temperature at every light value.
struct SweepGrid {
    std::vector<std::uint32_t> cct;  ///< kelvin
    std::vector<std::uint32_t> lv;
    std::int32_t flash = 0;
    std::int32_t scene = 0;
};

inline constexpr std::size_t kMostSweepPoints = 100000;

/// FROM:TO:STEP, or one value. `option` stands in the message of the BadInput that it throws.
std::vector<std::uint32_t> read_range(const std::string& option, const std::string& text);

/// The CTs of a tuning's grid from the lowest to the highest, 100 K apart.
std::vector<std::uint32_t> tuned_range(const Tuning& tuning);

/// One point of a sweep.
struct SweepPoint {
    Frame frame;
    Registers registers;
};

/// The largest change of one job's values between a point and its neighbours in CT and in LV.
struct SweepSlopes {
    Job job;
    std::vector<std::string> names;  ///< of the values
    std::vector<Difference> points;  ///< one a point
    std::int64_t largest = 0;        ///< of all points
};

/// What a tuning gives over a grid of light, without average and temporal step.
struct Sweep {
    SweepGrid grid;
    Jobs jobs;
    std::vector<SweepPoint> points;  ///< light value by light value, each over all CTs
};

/// The gains follow the locus. Throws BadInput for more than kMostSweepPoints points.
Sweep run_sweep(const Tuning& tuning, Jobs jobs, const SweepGrid& grid, const LightLocus& locus);

/// The slopes of each job that was run.
std::vector<SweepSlopes> slopes_of(const Sweep& sweep, const CallerSettings& caller);

/// The largest change of the chart's colours, by the patch that changes most, between a point and
/// its neighbours in CT and in LV; one a point, none without matrices.
std::vector<ChartDifference> chart_slopes_of(const Sweep& sweep, const CallerSettings& caller);

}  // namespace imgtune::workbench

#endif
