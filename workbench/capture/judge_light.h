#ifndef IMGTUNE_WORKBENCH_CAPTURE_JUDGE_LIGHT_H
#define IMGTUNE_WORKBENCH_CAPTURE_JUDGE_LIGHT_H

#include "workbench/capture/capture_study.h"
#include "workbench/capture/study_captures.h"
#include "workbench/findings/faults.h"

namespace imgtune::workbench {

/// Tells the patches that clipped samples have put out of use.
void tell_clipped(const LightStudy& light, const PatchWeights& wanted, Faults& faults);

/// Measures how far a fitted light is to be trusted, and tells what stands against it: no chart,
/// covered patches, a wrong black level or a gamma curve, glare, greys that disagree, noise, uneven
/// light, a chart of the other edition.
void judge_light(LightStudy& light, const CaptureChoices& choices, Faults& faults);

}  // namespace imgtune::workbench

#endif
