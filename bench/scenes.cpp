#include "scenes.h"

#include <imgtune/imgtune.h>

#include <memory>
#include <random>

namespace imgtune::bench {

namespace {

using NSIspTuning::EIndex_PCA_LUT_CT;
using NSIspTuning::ISP_NVRAM_CCM_T;
using NSIspTuning::ISP_NVRAM_COLOR_T;
using NSIspTuning::RAWIspCamInfo;

struct CcmCaller {
    ISP_NVRAM_MULTI_CCM_STRUCT tuning{};
    RAWIspCamInfo state{};
    ISP_NVRAM_CCM_T output{};
    ISP_NVRAM_CCM_T ring[2] = {};
    unsigned index = 0;
    unsigned weights[3] = {2, 1, 1};
    unsigned short version = 0;

    CcmCaller(int method, std::uint32_t lv) {
        std::mt19937 random(1);
        tuning.i4Method = method;
        tuning.i4NumLV = 2;
        tuning.i4NumCT = 8;
        for (int row = 0; row < 8; ++row) {
            for (int ct = 0; ct < 8; ++ct) {
                for (auto& w : tuning.rCCM_Nvram[row][ct].u4Word) w = random() & 0x01ff01ffU;
                tuning.rCTAWBGain[row][ct] = {800 + ct * 170, 512, 1800 - ct * 170};
            }
        }
        tuning.rCCMPoly22 = {140000, 30000, 110000, 30000, {}, {}, {}, {}};
        for (int k = 0; k < 9; ++k) {
            tuning.rCCMPoly22.i4P00[k] = -1000000 + 200000 * k;
            tuning.rCCMPoly22.i4P10[k] = 300000 - 50000 * k;
            tuning.rCCMPoly22.i4P01[k] = -200000 + 40000 * k;
        }
        state.u4RealLV = lv;
    }

    void run(int frame) {
        state.rAWBGain = {900 + frame % 1000, 512, 1700 - frame % 1000};
        SmoothCCM(0, 3, 9, tuning, output, version, state, ring, index, weights);
    }
};

struct ColorCaller {
    ISP_NVRAM_COLOR_T table[4][5];
    ISP_NVRAM_PCA_PARAM_T tuning[4];
    RAWIspCamInfo state{};
    ISP_NVRAM_COLOR_T result{};
    ISP_NVRAM_COLOR_T working{};
    unsigned short version = 0;
    int boot = 1;
    int capture = 0;

    ColorCaller(bool outdoor, int is_capture, std::uint32_t lv = 90) : capture(is_capture) {
        std::mt19937 random(2);
        for (auto& slot : table) {
            for (auto& image : slot) {
                for (auto& w : image.u4Word) w = static_cast<std::uint32_t>(random());
                // 0 < SP1 < SP2
                for (unsigned w = 34; w < 39; ++w) {
                    image.u4Word[w] = (image.u4Word[w] & 0x3f3f3f3fU) | 0x01010101U;
                }
                for (unsigned w = 39; w < 44; ++w) image.u4Word[w] |= 0x40404040U;
            }
        }
        for (auto& t : tuning) {
            t = {16, 16, 12, 20, 40, 80, 120, 0, 3, 4, 5, 60, outdoor, 70, 110, 0, 64};
        }
        state.u4RealLV = lv;
    }

    void run(int frame) {
        state.u4CCT = 4100 + static_cast<unsigned>(frame % 800);
        SmoothCOLOR(capture, 5000, 4000, static_cast<EIndex_PCA_LUT_CT>(3),
                    static_cast<EIndex_PCA_LUT_CT>(2), table, tuning, state, result, version, boot,
                    working);
    }
};

template <class Caller, class... Settings>
Scene scene(const char* name, Settings... settings) {
    auto caller = std::make_shared<Caller>(settings...);
    return {name, [caller](int frame) { caller->run(frame); }};
}

using BlockFunction = void (*)(ISP_SMOOTH_COLOR_PARAM_T&, const ISP_NVRAM_COLOR_T&,
                               const ISP_NVRAM_COLOR_T&, ISP_NVRAM_COLOR_T&);

Scene block(const char* name, BlockFunction function) {
    auto images = std::make_shared<ColorCaller>(true, 0);
    auto param = std::make_shared<ISP_SMOOTH_COLOR_PARAM_T>();
    param->u4Ratio = 16;
    param->u4UpperCT = 200;
    param->u4LowerCT = 250;
    param->lum_speed = param->sat_speed = param->hue_speed = 3;
    param->u4OutdoorBase = 64;
    param->u4OutdoorRatio = 20;
    return {name, [images, param, function](int frame) {
                param->u4RealCT = 201 + static_cast<unsigned>(frame % 48);
                function(*param, images->table[0][0], images->table[0][1], images->working);
            }};
}

}  // namespace

std::vector<Scene> scenes() {
    return {
        scene<CcmCaller>("SmoothCCM/polynomial", 1, 100U),
        scene<CcmCaller>("SmoothCCM/polynomial-low-light", 1, 30U),
        scene<CcmCaller>("SmoothCCM/blend", 2, 100U),
        scene<CcmCaller>("SmoothCCM/blend-low-light", 2, 30U),
        scene<CcmCaller>("SmoothCCM/blend-full-low-light", 2, 20U),
        scene<ColorCaller>("SmoothCOLOR/indoor", false, 0),
        scene<ColorCaller>("SmoothCOLOR/indoor-capture", false, 1),
        scene<ColorCaller>("SmoothCOLOR/outdoor", true, 0),
        scene<ColorCaller>("SmoothCOLOR/outdoor-capture", true, 1),
        scene<ColorCaller>("SmoothCOLOR/outdoor-above-ramp", true, 0, 120U),
        scene<ColorCaller>("SmoothCOLOR/outdoor-below-ramp", true, 0, 60U),
        block("InterParamByLVGlobal", InterParamByLVGlobal),
        block("InterParamGlobal", InterParamGlobal),
        block("InterParamByLVPartialY", InterParamByLVPartialY),
        block("InterParamPartialY", InterParamPartialY),
        block("InterParamByLVPartialH", InterParamByLVPartialH),
        block("InterParamPartialH", InterParamPartialH),
        block("InterParamByLVPartialS", InterParamByLVPartialS),
        block("InterParamPartialS", InterParamPartialS),
        block("InterParamByLVSGainByY", InterParamByLVSGainByY),
        block("InterParamSGainByY", InterParamSGainByY),
        block("InterParamByLVLSP", InterParamByLVLSP),
        block("InterParamLSP", InterParamLSP),
        block("InterParam3DLUT", InterParam3DLUT),
    };
}

}  // namespace imgtune::bench
