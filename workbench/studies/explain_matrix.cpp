#include <fmt/format.h>

#include <algorithm>

#include "ccm/tuned_rows.h"
#include "workbench/studies/explain_parts.h"

namespace imgtune::workbench {

namespace {

constexpr const char* kPassEnd = "rCCM_Output after interpolation = ";
constexpr const char* kAverage = "rCCM_Output after averaging = ";

template <std::size_t count>
std::array<std::int64_t, count> values(const TraceLines& trace, std::string_view beginning) {
    const auto found = trace.integers(beginning);
    std::array<std::int64_t, count> numbers{};
    std::copy_n(found.begin(), std::min(found.size(), count), numbers.begin());
    return numbers;
}

std::optional<CtBlend> find_blend(const TraceLines& pass, std::int64_t position) {
    if (position < 0 || position >= kAboveHighestCt) return std::nullopt;
    CtBlend blend;
    for (std::size_t i = 0; i < blend.distances.size(); ++i) {
        blend.distances[i] = pass.real(fmt::format("range {} = ", i));
    }
    const auto last = [&](std::string_view beginning) {
        const auto found = pass.reals(beginning);
        return found.empty() ? 0.0 : found.back();
    };
    blend.coarse_weight = last("Coarse Blending Ratio");
    blend.fine_weight = last("Finer Blending Ratio");
    return blend;
}

/// One pass of projection and generation.
MatrixPass explain_pass(const TraceLines& pass) {
    MatrixPass told;
    if (pass.has("Proj AWB Gain = ")) told.projected_gain = values<3>(pass, "Proj AWB Gain = ");
    if (pass.has("Estimated CT position = ")) {
        told.ct_position = pass.integer("Estimated CT position = ");
        told.blend = find_blend(pass, *told.ct_position);
    }
    if (pass.has("rCCMPoly22.i4R_AVG = ")) {
        told.polynomial = {pass.real("rCCMPoly22.i4R_AVG = "), pass.real("rCCMPoly22.i4R_STD = "),
                           pass.real("rCCMPoly22.i4B_AVG = "), pass.real("rCCMPoly22.i4B_STD = ")};
    }
    told.matrix = values<9>(pass, kPassEnd);
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

MatrixExplanation explain_matrix(const TraceLines& trace, const TraceLines& unaveraged,
                                 const std::array<std::int32_t, 9>& written) {
    const auto [main_pass, rest] = trace.split_after(kPassEnd);
    MatrixExplanation told;
    told.method = trace.integer("Method = ");
    told.ct_count = trace.integer("Number of CT = ");
    told.full_gain = trace.integer("Fullgain = ") == 1;
    told.gain = values<3>(trace, "Input AWB full Gain = ");
    told.clipped_low = trace.has("Clipped low");
    told.clipped_high = trace.has("Clipped high");
    told.clipped_gain = values<3>(trace, "Clipped AWB full Gain = ");
    told.lv_row = trace.integer("LVpos = ");
    told.pass = explain_pass(main_pass);
    if (trace.has("LV_blend ratio = ")) {
        told.low_light = {explain_pass(rest), trace.real("LV_blend ratio = "),
                          values<9>(unaveraged, kAverage)};
    }
    told.weights = trace.integers("Coef1, Coef2, Coef3 = ");
    told.ring = {values<9>(trace, "Temporal CCM 0 = "), values<9>(trace, "Temporal CCM 1 = ")};
    told.average = values<9>(trace, kAverage);
    told.gamut = trace.integer("PQ type = ");
    std::copy(written.begin(), written.end(), told.written.begin());
    told.wrapped = wrapped_values(told);
    return told;
}

}  // namespace imgtune::workbench
