#include <imgtune/ccm.h>

#include <algorithm>
#include <cstddef>

#include "ccm/blend.h"
#include "ccm/codec.h"
#include "ccm/interpolation.h"
#include "ccm/matrix_rows.h"
#include "ccm/trace.h"
#include "ccm/tuned_rows.h"
#include "common/arithmetic.h"
#include "common/debug_switch.h"

const unsigned short g_Smooth_CCM_Ver = 200;

namespace imgtune {

constinit std::atomic<std::uint32_t> g_Smooth_CCM_Debug{1};

namespace {

using NSIspTuning::ISP_CCM_T;

static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, i4PQType) == 37 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCCM_Nvram) == 41 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCTAWBGain) == 425 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCCMPoly22) == 681 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCCMPoly22Flash) == 1065 * 4);
static_assert(sizeof(ISP_NVRAM_MULTI_CCM_STRUCT) == 1102 * 4);
static_assert(offsetof(ISP_CCM_POLY22_T, i4P00) == 10 * 4);
static_assert(sizeof(ISP_CCM_POLY22_T) == 37 * 4);

// The low-light matrix takes part below kLowLightEnd and alone rules up to kLowLightFull.
constexpr std::uint32_t kLowLightEnd = 50;
constexpr std::uint32_t kLowLightFull = 20;
constexpr float kLowLightSpan = 30.0f;

/// Output gamut matrices, row-major, for i4PQType 1 and 2.
constexpr float kGamut[2][3][3] = {
    {{0.8225f, 0.1775f, 0.0f}, {0.0331f, 0.9669f, 0.0f}, {0.017f, 0.0724f, 0.9106f}},
    {{0.7312f, 0.2688f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0995f, 0.9005f}},
};

void trace_inputs(int full_gain, const AWB_GAIN_T& gain, std::int32_t flash, std::uint32_t lv,
                  const ISP_NVRAM_MULTI_CCM_STRUCT& tuning, std::int32_t lv_row) {
    ccm_trace("Fullgain = %d\n", full_gain);
    ccm_trace("Input AWB full Gain = (%d, %d, %d)\n", gain.i4R, gain.i4G, gain.i4B);
    ccm_trace("Flash mode = %d\n", flash);
    ccm_trace("Real LV = %d\n", as_signed(lv));
    ccm_trace("Method = %d\n", tuning.i4Method);
    ccm_trace("Number of CT = %d\n", tuning.i4NumCT);
    ccm_trace("Number of LV = %d\n", tuning.i4NumLV);
    ccm_trace("Number of Flash = %d\n", tuning.i4NumFlash);
    ccm_trace("PQ type = %d\n", tuning.i4PQType);
    ccm_trace("LVpos = %d\n", lv_row);
}

void trace_tuned_matrices(const ISP_NVRAM_MULTI_CCM_STRUCT& tuning, const CoefficientCodec& codec) {
    if (!ccm_trace_on()) return;
    for (const std::int32_t row : {kNormalRow, kLowLightRow, kFlashRow}) {
        for (std::int32_t ct = 0; ct < kCtIndices; ++ct) {
            ccm_trace_nine("LV_%02d_CT%d_rCCM_Nvram = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n",
                           codec.decode(tuning.rCCM_Nvram[row][ct]).i4Coef, row, ct);
        }
    }
}

/// Limits a gain to the tuned range of a row; each test sees what the previous one left.
void clip_gain(AWB_GAIN_T& gain, const AWB_GAIN_T (&row)[kCtIndices], std::int32_t count) {
    const AWB_GAIN_T& lowest = row[0];
    const AWB_GAIN_T& highest = row[tuned_ct_count(count) - 1];
    if (gain.i4B > lowest.i4B) {
        gain.i4R = lowest.i4R;
        gain.i4B = lowest.i4B;
        ccm_trace("Clipped low R B full Gain \n");
    }
    if (gain.i4R < lowest.i4R) {
        gain.i4R = lowest.i4R;
        ccm_trace("Clipped low R B full Gain \n");
    }
    if (gain.i4B < highest.i4B) {
        gain.i4R = highest.i4R;
        gain.i4B = highest.i4B;
        ccm_trace("Clipped high R B full Gain \n");
    }
    if (gain.i4R > highest.i4R) {
        gain.i4R = highest.i4R;
        gain.i4B = highest.i4B;
        ccm_trace("Clipped high R B full Gain \n");
    }
    ccm_trace("Clipped AWB full Gain = (%d, %d, %d)\n", gain.i4R, gain.i4G, gain.i4B);
}

/// The matrix that one LV row of the tuning gives at a gain. Tuned matrices are decoded when the
/// blend asks for them: it reads three of the sixty-four at most.
ISP_CCM_T generate(const AWB_GAIN_T& gain, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                   const CoefficientCodec& codec, std::int32_t frac_bits, std::int32_t flash,
                   std::int32_t lv_row) {
    ISP_CCM_T matrix = kIdentity;
    AWB_GAIN_T projected{};
    float ratios[2] = {};
    std::int32_t position = 0;
    GainProjection(gain, tuning, projected, tuning.i4Method, ratios, tuning.i4NumCT, lv_row,
                   &position);
    interpolate(projected, frac_bits, tuning, flash, matrix, tuning.i4Method, lv_row, [&] {
        const auto matrix_at = [&](std::int32_t ct) {
            return codec.decode(tuning.rCCM_Nvram[lv_row][ct]);
        };
        matrix = blend_by_position(ratios, matrix_at, position, tuning.i4NumCT);
    });
    return matrix;
}

void blend_low_light(ISP_CCM_T& matrix, const ISP_CCM_T& low_light, std::uint32_t lv) {
    const float share =
        static_cast<float>(std::max(lv, kLowLightFull) - kLowLightFull) / kLowLightSpan;
    for (int k = 0; k < 9; ++k) {
        matrix.i4Coef[k] = mix(matrix.i4Coef[k], share, low_light.i4Coef[k], 1.0f - share);
    }
    close_rows(matrix, kUnity);
    ccm_trace("LV_blend ratio = (%f)\n", double{1.0f - share});
}

void average_with_ring(ISP_CCM_T& matrix, const ISP_CCM_T (&ring)[2], const unsigned int* weights) {
    const std::uint32_t w[3] = {weights[0], weights[1], weights[2]};
    ccm_trace("Coef1, Coef2, Coef3 = %d, %d, %d\n", as_signed(w[0]), as_signed(w[1]),
              as_signed(w[2]));
    const FrameDivisor sum(as_signed(w[0] + w[1] + w[2]));
    for (int k = 0; k < 9; ++k) {
        matrix.i4Coef[k] = sum.divide(as_signed(as_unsigned(matrix.i4Coef[k]) * w[0] +
                                                as_unsigned(ring[0].i4Coef[k]) * w[1] +
                                                as_unsigned(ring[1].i4Coef[k]) * w[2]));
    }
    close_rows(matrix, kUnity);
    constexpr const char* kRing0 = "Temporal CCM 0 = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n";
    constexpr const char* kRing1 = "Temporal CCM 1 = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n";
    constexpr const char* kAverage =
        "rCCM_Output after averaging = (%d, %d, %d, %d, %d, %d, %d, %d, %d)\n";
    ccm_trace_nine(kRing0, ring[0].i4Coef);
    ccm_trace_nine(kRing1, ring[1].i4Coef);
    ccm_trace_nine(kAverage, matrix.i4Coef);
}

/// Multiplies each row by the gamut matrix; a coefficient just computed serves the next one.
void apply_gamut(ISP_CCM_T& matrix, const float (&m)[3][3]) {
    for (int row = 0; row < 3; ++row) {
        std::int32_t* x = &matrix.i4Coef[3 * row];
        const auto x1 = static_cast<float>(x[1]);
        const auto x2 = static_cast<float>(x[2]);
        x[0] =
            truncate_to_int32((static_cast<float>(x[0]) * m[0][0] + x1 * m[1][0]) + x2 * m[2][0]);
        const auto new_x0 = static_cast<float>(x[0]);
        x[1] = truncate_to_int32(x2 * m[2][1] + (x1 * m[1][1] + new_x0 * m[0][1]));
        x[2] = truncate_to_int32(x2 * m[2][2] +
                                 (new_x0 * m[0][2] + static_cast<float>(x[1]) * m[1][2]));
    }
    close_rows(matrix, kUnity);
}

}  // namespace

}  // namespace imgtune

void SmoothCCM(int Fullgain, int i4IntBits, int i4FracBits, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
               NSIspTuning::ISP_NVRAM_CCM_T& output, unsigned short& version,
               NSIspTuning::RAWIspCamInfo const& state, NSIspTuning::ISP_NVRAM_CCM_T* rTemporalCCM,
               unsigned int& u4TemporalIdx, unsigned int* u4Coef) {
    using namespace imgtune;
    version = g_Smooth_CCM_Ver;
    g_Smooth_CCM_Debug.store(as_unsigned(read_debug_switch("debug.smooth_ccm.enable")),
                             std::memory_order_relaxed);

    AWB_GAIN_T gain = Fullgain == 1 ? state.rAWBFullGain : state.rAWBGain;
    const auto flash = static_cast<std::int32_t>(state.u4FlashMode);
    const auto lv = static_cast<std::uint32_t>(state.u4RealLV);
    const std::int32_t lv_row = flash != 0 ? kFlashRow : kNormalRow;
    trace_inputs(Fullgain, gain, flash, lv, tuning, lv_row);
    clip_gain(gain, tuning.rCTAWBGain[lv_row], tuning.i4NumCT);

    const CoefficientCodec codec(i4IntBits, i4FracBits);
    ISP_CCM_T ring[2] = {codec.decode(rTemporalCCM[0]), codec.decode(rTemporalCCM[1])};
    trace_tuned_matrices(tuning, codec);

    ISP_CCM_T matrix = generate(gain, tuning, codec, i4FracBits, flash, lv_row);
    if (lv < kLowLightEnd && tuning.i4NumLV >= 2 && flash == 0) {
        blend_low_light(matrix, generate(gain, tuning, codec, i4FracBits, 0, kLowLightRow), lv);
    }
    average_with_ring(matrix, ring, u4Coef);

    if (u4TemporalIdx < 2) {
        ring[u4TemporalIdx] = matrix;
        u4TemporalIdx = 1 - u4TemporalIdx;
    }
    codec.encode(ring[0], rTemporalCCM[0]);
    codec.encode(ring[1], rTemporalCCM[1]);

    if (tuning.i4PQType == 1 || tuning.i4PQType == 2) {
        apply_gamut(matrix, kGamut[tuning.i4PQType - 1]);
    }
    codec.encode(matrix, output);
}
