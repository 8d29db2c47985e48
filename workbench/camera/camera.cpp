#include "workbench/camera/camera.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "ccm/codec.h"

namespace imgtune::workbench {

CtGrid::CtGrid(const std::array<std::uint32_t, 5>& kelvin) {
    std::array<std::size_t, 5> order{0, 1, 2, 3, 4};
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return kelvin[a] < kelvin[b]; });
    for (std::size_t i = 0; i < order.size(); ++i) {
        kelvin_[i] = kelvin[order[i]];
        ct_index_[i] = static_cast<NSIspTuning::EIndex_PCA_LUT_CT>(order[i]);
    }
}

CtBracket CtGrid::bracket(std::uint32_t cct) const {
    const auto above = std::upper_bound(kelvin_.begin(), kelvin_.end(), cct);
    const auto last = kelvin_.size() - 1;
    const auto upper = std::min(static_cast<std::size_t>(above - kelvin_.begin()), last);
    const auto lower = above == kelvin_.end() ? last : (upper == 0 ? 0 : upper - 1);
    return {kelvin_[upper], kelvin_[lower], ct_index_[upper], ct_index_[lower]};
}

bool operator==(const CameraState& a, const CameraState& b) {
    static_assert(std::has_unique_object_representations_v<CameraState>);
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

Camera::Camera(const Tuning& tuning, Jobs jobs)
    : tuning_(std::make_shared<Tuning>(tuning)), grid_(tuning.caller.ct_grid), jobs_(jobs) {
    set_weights(tuning.caller.weights);
}

void Camera::set_weights(const std::array<std::uint32_t, 3>& weights) {
    std::copy(weights.begin(), weights.end(), weights_.begin());
}

void Camera::run(const Frame& frame) {
    run(frame, grid_.bracket(frame.state.u4CCT));
}

void Camera::run(const Frame& frame, const CtBracket& ct) {
    unsigned short version = 0;
    if (jobs_.ccm) {
        const CallerSettings& caller = tuning_->caller;
        SmoothCCM(caller.full_gain, caller.int_bits, caller.frac_bits, tuning_->ccm, registers_.ccm,
                  version, frame.state, state_.ring.data(), state_.ring_index, weights_.data());
    }
    if (jobs_.color) {
        SmoothCOLOR(frame.capture, ct.upper_kelvin, ct.lower_kelvin, ct.upper, ct.lower,
                    tuning_->color, tuning_->pca, frame.state, registers_.color, version,
                    state_.boot, state_.working);
    }
}

void replay(Camera& camera, std::span<const Frame> frames, std::span<Registers> registers) {
    for (std::size_t i = 0; i < frames.size(); ++i) {
        camera.run(frames[i]);
        registers[i] = camera.registers();
    }
}

std::array<std::int32_t, 9> decode(const NSIspTuning::ISP_NVRAM_CCM_T& image,
                                   const CallerSettings& caller) {
    const CoefficientCodec codec(caller.int_bits, caller.frac_bits);
    std::array<std::int32_t, 9> values{};
    for (std::size_t k = 0; k < values.size(); ++k) {
        values[k] = codec.decode(kCoefficientFields[k].read(image.u4Word));
    }
    return values;
}

}  // namespace imgtune::workbench
