#include "workbench/capture/reported_captures.h"

#include <algorithm>

#include "workbench/capture/matrix_fit.h"

namespace imgtune::workbench {

namespace {

/// Of the white patch's noisiest channel: the standard deviation over the mean.
std::optional<double> white_noise(const PatchMeasure& white) {
    if (!white.noise) return std::nullopt;
    double worst = 0.0;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        if (!(white.mean[channel] > 0.0)) return std::nullopt;
        worst = std::max(worst, (*white.noise)[channel] / white.mean[channel]);
    }
    return worst;
}

ReportedCapture reported_capture(const LightStudy& light, const CapturedPicture& picture) {
    ReportedCapture capture;
    capture.file = picture.file;
    capture.kelvin = light.kelvin;
    capture.residual = {light.mean_residual, light.worst_residual, light.worst_patch, 0.0};
    for (const PatchMeasure& patch : picture.patches) capture.clipped += patch.clipped.value_or(0);
    capture.noise = white_noise(picture.patches[kFirstGrey]);
    capture.grey_slope = light.grey_slope;
    capture.glare = light.glare;
    capture.unevenness = light.unevenness;
    const Thumbnail& crop = picture.crop;
    if (crop.rgb.empty()) return capture;
    capture.width = crop.width;
    capture.height = crop.height;
    capture.rgb = crop.rgb;
    for (const Quad& sampled : picture.sampled) {
        auto& outline = capture.outlines.emplace_back();
        for (std::size_t corner = 0; corner < sampled.size(); ++corner) {
            outline[corner] = {(sampled[corner].x - crop.left) / crop.scale,
                               (sampled[corner].y - crop.top) / crop.scale};
        }
    }
    return capture;
}

}  // namespace

std::vector<ReportedCapture> reported_captures(const CaptureStudy& study) {
    std::vector<ReportedCapture> captures;
    for (const LightStudy& light : study.lights) {
        for (const CapturedPicture& picture : light.pictures) {
            captures.push_back(reported_capture(light, picture));
        }
    }
    return captures;
}

}  // namespace imgtune::workbench
