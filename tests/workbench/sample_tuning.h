#ifndef IMGTUNE_TESTS_WORKBENCH_SAMPLE_TUNING_H
#define IMGTUNE_TESTS_WORKBENCH_SAMPLE_TUNING_H

#include "ccm/codec.h"
#include "workbench/frames/frame_log.h"
#include "workbench/tuning/tuning.h"

namespace imgtune::workbench {

/// Two tuned CTs that matter (2500 K = 400 mired, 5000 K = 200 mired) and plain images.
inline Tuning make_tuning() {
    Tuning tuning;
    tuning.has_ccm = tuning.has_color = true;
    tuning.caller.ct_grid = {2500, 5000, 6000, 7000, 8000};
    tuning.ccm.i4Method = 2;
    tuning.ccm.i4NumCT = 4;
    tuning.ccm.i4NumLV = 2;
    for (int row = 0; row < 8; ++row) {
        for (int ct = 0; ct < 4; ++ct) {
            tuning.ccm.rCTAWBGain[row][ct] = {600 + 200 * ct, 512, 1400 - 200 * ct};
            CoefficientCodec(3, 9).encode(
                {{700, -100 - 20 * ct, -88 + 20 * ct, -100, 700, -88, 0, -300, 812}},
                tuning.ccm.rCCM_Nvram[row][ct]);
        }
    }
    for (auto& record : tuning.pca) {
        record.u4RatioHighLV = record.u4RatioMidLV = record.u4RatioLowLV = 16;
        record.lum_speed = record.hue_speed = record.sat_speed = 10;
    }
    for (auto& image : tuning.color[0]) image.u4Word[6] = 100;  // Luma.PY[0]
    for (auto& image : tuning.color[1]) image.u4Word[6] = 160;
    return tuning;
}

inline Frame make_frame(std::uint32_t lv, std::uint32_t cct, AWB_GAIN_T gain) {
    Frame frame;
    frame.state.u4RealLV = lv;
    frame.state.u4CCT = cct;
    frame.state.rAWBGain = frame.state.rAWBFullGain = gain;
    return frame;
}

}  // namespace imgtune::workbench

#endif
