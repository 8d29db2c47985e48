#include <imgtune/ccm.h>

#include <cstddef>

#include "ccm/blend.h"
#include "ccm/codec.h"
#include "ccm/gain_clip.h"
#include "ccm/gain_projection.h"
#include "ccm/gamut.h"
#include "ccm/interpolation.h"
#include "ccm/low_light.h"
#include "ccm/temporal_average.h"
#include "ccm/trace.h"
#include "ccm/tuned_matrices.h"
#include "ccm/tuned_rows.h"
#include "common/arithmetic.h"
#include "common/debug_switch.h"

const unsigned short g_Smooth_CCM_Ver = 200;

namespace imgtune {

constinit RelaxedWord g_Smooth_CCM_Debug{1};

namespace {

static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, i4PQType) == 37 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCCM_Nvram) == 41 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCTAWBGain) == 425 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCCMPoly22) == 681 * 4);
static_assert(offsetof(ISP_NVRAM_MULTI_CCM_STRUCT, rCCMPoly22Flash) == 1065 * 4);
static_assert(sizeof(ISP_NVRAM_MULTI_CCM_STRUCT) == 1102 * 4);
static_assert(offsetof(ISP_CCM_POLY22_T, i4P00) == 10 * 4);
static_assert(sizeof(ISP_CCM_POLY22_T) == 37 * 4);

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

/// The matrix that one LV row of the tuning gives at a gain, its diagonals open. Tuned matrices are
/// decoded when the blend asks for them: it reads three of the sixty-four at most.
CoefficientRows generate(const AWB_GAIN_T& gain, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                         const CoefficientCodec& codec, std::int32_t unity, std::int32_t flash,
                         std::int32_t lv_row) {
    const Locus locus(tuning.rCTAWBGain[lv_row], tuning.i4NumCT);
    const std::int32_t method = tuning.i4Method;
    AWB_GAIN_T projected{};
    CtPlace place{};
    if (method == 1) projected = project_on_chord(gain, locus);
    if (method == 2) place = place_on_locus(gain, locus);
    CoefficientRows matrix{};
    interpolate(projected, unity, tuning, flash, matrix, method, lv_row, [&] {
        const auto matrix_at = [&](std::int32_t ct) {
            return codec.decode_rows(tuning.rCCM_Nvram[lv_row][ct]);
        };
        return blend_by_place(place, matrix_at, tuning.i4NumCT);
    });
    return matrix;
}

/// The matrix of the frame's light. That of normal light is left out where it counts for nothing
/// and no line shows it.
CoefficientRows generate_for_light(const AWB_GAIN_T& gain, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
                                   const CoefficientCodec& codec, std::int32_t unity,
                                   std::int32_t flash, std::uint32_t lv) {
    if (flash != 0) return generate(gain, tuning, codec, unity, flash, kFlashRow);
    if (lv >= kLowLightEnd || tuning.i4NumLV < 2) {
        return generate(gain, tuning, codec, unity, flash, kNormalRow);
    }
    const float share = normal_light_share(lv);
    CoefficientRows normal{};
    if (share > 0.0f || ccm_trace_on()) {
        normal = generate(gain, tuning, codec, unity, flash, kNormalRow);
    }
    return blend_low_light(normal, share,
                           generate(gain, tuning, codec, unity, flash, kLowLightRow));
}

/// Puts the frame's fields into its ring slot; the other is encoded anew, as far as that changes
/// it.
void update_ring(NSIspTuning::ISP_NVRAM_CCM_T* images, const CoefficientRows (&ring)[2],
                 const RowFields& fields, const CoefficientCodec& codec, unsigned int& index) {
    for (unsigned int slot = 0; slot < 2; ++slot) {
        if (slot == index) {
            fields.write(images[slot]);
        } else if (!codec.keeps_fields()) {
            codec.encode_rows(ring[slot]).write(images[slot]);
        }
    }
    if (index < 2) index = 1 - index;
}

}  // namespace

}  // namespace imgtune

void SmoothCCM(int Fullgain, int i4IntBits, int i4FracBits, ISP_NVRAM_MULTI_CCM_STRUCT& tuning,
               NSIspTuning::ISP_NVRAM_CCM_T& output, unsigned short& version,
               NSIspTuning::RAWIspCamInfo const& state, NSIspTuning::ISP_NVRAM_CCM_T* rTemporalCCM,
               unsigned int& u4TemporalIdx, unsigned int* u4Coef) {
    using namespace imgtune;
    version = g_Smooth_CCM_Ver;
    g_Smooth_CCM_Debug.store(as_unsigned(read_debug_switch("debug.smooth_ccm.enable")));

    AWB_GAIN_T gain = Fullgain == 1 ? state.rAWBFullGain : state.rAWBGain;
    const auto flash = static_cast<std::int32_t>(state.u4FlashMode);
    const auto lv = static_cast<std::uint32_t>(state.u4RealLV);
    const std::int32_t lv_row = flash != 0 ? kFlashRow : kNormalRow;
    if (ccm_trace_on()) trace_inputs(Fullgain, gain, flash, lv, tuning, lv_row);
    clip_gain(gain, tuning.rCTAWBGain[lv_row], tuning.i4NumCT);

    const CoefficientCodec codec(i4IntBits, i4FracBits);
    const CoefficientRows ring[2] = {codec.decode_rows(rTemporalCCM[0]),
                                     codec.decode_rows(rTemporalCCM[1])};
    if (ccm_trace_on()) trace_tuned_matrices(tuning, codec);

    const std::int32_t unity = as_signed(shift_left(1, i4FracBits));
    const CoefficientRows frame = generate_for_light(gain, tuning, codec, unity, flash, lv);
    const CoefficientRows average = average_with_ring(frame, ring, u4Coef).closed(kUnity);
    const RowFields fields = codec.encode_rows(average);
    update_ring(rTemporalCCM, ring, fields, codec, u4TemporalIdx);

    if (has_gamut(tuning.i4PQType)) {
        NSIspTuning::ISP_CCM_T in_gamut = apply_gamut(average.record(), tuning.i4PQType);
        close_rows(in_gamut, kUnity);
        codec.encode(in_gamut, output);
    } else {
        fields.write(output);
    }
}
