#include <fmt/format.h>

#include <algorithm>

#include "ccm/tuned_rows.h"
#include "workbench/studies/explain_parts.h"

namespace imgtune::workbench {

namespace {

std::optional<CtBlend> find_blend(const Trace& pass, std::int64_t position) {
    if (position < 0 || position >= kAboveHighestCt) return std::nullopt;
    CtBlend blend;
    for (std::size_t i = 0; i < blend.distances.size(); ++i) {
        blend.distances[i] = pass.real(fmt::format("range {}", i));
    }
    blend.coarse_weight = pass.real(ccm_label::kCoarseWeight);
    blend.fine_weight = pass.real(ccm_label::kFineWeight);
    return blend;
}

/// One pass of projection and generation.
MatrixPass explain_pass(const Trace& pass) {
    MatrixPass told;
    if (pass.has(ccm_label::kProjectedGain)) {
        told.projected_gain = pass.array<3>(ccm_label::kProjectedGain);
    }
    if (pass.has(ccm_label::kCtPosition)) {
        told.ct_position = pass.integer(ccm_label::kCtPosition);
        told.blend = find_blend(pass, *told.ct_position);
    }
    if (pass.has(ccm_label::kPolynomial)) {
        told.polynomial = {pass.real("rCCMPoly22.i4R_AVG"), pass.real("rCCMPoly22.i4R_STD"),
                           pass.real("rCCMPoly22.i4B_AVG"), pass.real("rCCMPoly22.i4B_STD")};
    }
    told.matrix = pass.array<9>(ccm_label::kInterpolated);
    return told;
}

/// Without a gamut matrix the average is what was written; with one only the rows tell, which
/// summed to the unity before.
std::vector<WrappedValue> wrapped_values(const MatrixExplanation& told) {
    std::vector<WrappedValue> wrapped;
    const bool has_gamut = told.gamut == 1 || told.gamut == 2;
    const MatrixValues& written = told.written;
    for (std::size_t k = 0; k < written.size(); ++k) {
        if (!has_gamut && told.average[k] != written[k]) {
            wrapped.push_back({fmt::format("c{}", k), told.average[k], written[k]});
        }
        if (!has_gamut || k % 3 != 0) continue;
        const std::int64_t sum = written[k] + written[k + 1] + written[k + 2];
        if (sum != 512) wrapped.push_back({fmt::format("sum of row {}", k / 3), 512, sum});
    }
    return wrapped;
}

}  // namespace

MatrixExplanation explain_matrix(const Trace& trace, const Trace& unaveraged,
                                 const std::array<std::int32_t, 9>& written) {
    MatrixExplanation told;
    told.method = trace.integer(ccm_label::kMethod);
    told.ct_count = trace.integer(ccm_label::kCtCount);
    told.full_gain = trace.integer(ccm_label::kFullGain) == 1;
    told.gain = trace.array<3>(ccm_label::kGain);
    told.clipped_low = trace.has(ccm_label::kClippedLow);
    told.clipped_high = trace.has(ccm_label::kClippedHigh);
    told.clipped_gain = trace.array<3>(ccm_label::kClippedGain);
    told.lv_row = trace.integer(ccm_label::kLvRow);
    told.pass = explain_pass(trace.before(ccm_label::kInterpolated));
    if (trace.has(ccm_label::kLowLightWeight)) {
        told.low_light = {explain_pass(trace.after(ccm_label::kInterpolated)),
                          trace.real(ccm_label::kLowLightWeight),
                          unaveraged.array<9>(ccm_label::kAverage)};
    }
    told.weights = trace.integers(ccm_label::kWeights);
    told.ring = {trace.array<9>(ccm_label::kRing0), trace.array<9>(ccm_label::kRing1)};
    told.average = trace.array<9>(ccm_label::kAverage);
    told.gamut = trace.integer(ccm_label::kGamut);
    std::copy(written.begin(), written.end(), told.written.begin());
    told.wrapped = wrapped_values(told);
    return told;
}

}  // namespace imgtune::workbench
