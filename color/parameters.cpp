#include "color/parameters.h"

#include "common/arithmetic.h"

namespace imgtune {

namespace {

constexpr std::uint32_t kMiredKelvin = 1000000;

constexpr std::int32_t low_byte(std::uint32_t v) {
    return static_cast<std::int32_t>(v & 0xff);
}

/// Value at x on the ramp from (x0, y0) to (x1, y1), rounded toward y0.
constexpr std::int32_t ramp(std::int32_t x, std::int32_t x0, std::int32_t y0, std::int32_t x1,
                            std::int32_t y1) {
    return y0 + divide_or_zero((y1 - y0) * (x - x0), x1 - x0);
}

}  // namespace

std::uint32_t to_mired(std::uint32_t kelvin) {
    return divide_or_zero(kMiredKelvin, kelvin);
}

std::uint32_t saturation_ratio(const ISP_NVRAM_PCA_PARAM_T& tuning, std::uint32_t lv) {
    const std::int32_t x = low_byte(lv);
    const std::int32_t high = low_byte(tuning.u4RatioHighLV);
    const std::int32_t middle = low_byte(tuning.u4RatioMidLV);
    const std::int32_t low = low_byte(tuning.u4RatioLowLV);
    const std::int32_t th0 = low_byte(tuning.u4RatioLV_Th0);
    const std::int32_t th1 = low_byte(tuning.u4RatioLV_Th1);
    const std::int32_t th2 = low_byte(tuning.u4RatioLV_Th2);
    const std::int32_t th3 = low_byte(tuning.u4RatioLV_Th3);
    if (x < th0) return as_unsigned(low);
    if (x < th1) return as_unsigned(ramp(x, th0, low, th1, middle));
    if (x < th2) return as_unsigned(middle);
    if (x < th3) return as_unsigned(ramp(x, th2, middle, th3, high));
    return as_unsigned(high);
}

std::uint32_t outdoor_ratio(const ISP_NVRAM_PCA_PARAM_T& tuning, std::uint32_t lv) {
    const std::uint32_t x = as_unsigned(low_byte(lv));
    const std::uint32_t start = tuning.u4OutdoorLV_Start;
    const std::uint32_t end = tuning.u4OutdoorLV_End;
    if (x < start) return 0;
    if (x >= end) return tuning.u4OutdoorBase;
    return divide_or_zero(tuning.u4OutdoorBase * (x - start), end - start);
}

bool takes_outdoor_map(const ISP_NVRAM_PCA_PARAM_T& tuning, std::uint32_t lv) {
    const std::uint32_t x = as_unsigned(low_byte(lv));
    const std::uint32_t start = tuning.u4OutdoorLV_Start;
    const std::uint32_t end = tuning.u4OutdoorLV_End;
    return x >= start && (x >= end || x >= (start + end) >> 1);
}

ISP_SMOOTH_COLOR_PARAM_T derive_parameters(const ISP_NVRAM_PCA_PARAM_T& tuning,
                                           const FrameLight& light, bool lsp_tuned) {
    ISP_SMOOTH_COLOR_PARAM_T param{};
    param.IsBoot = light.boot;
    param.IsCapture = light.capture;
    param.LSPEnable = lsp_tuned && lsp_allowed(tuning, light.lv) ? 1 : 0;
    param.u4Ratio = saturation_ratio(tuning, light.lv);
    param.u4SatOffset = tuning.u4SatOffset;
    param.u4RealCT = to_mired(light.real_kelvin);
    param.u4UpperCT = to_mired(light.upper_kelvin);
    param.u4LowerCT = to_mired(light.lower_kelvin);
    param.lum_speed = tuning.lum_speed;
    param.sat_speed = tuning.sat_speed;
    param.hue_speed = tuning.hue_speed;
    param.u4OutdoorBase = tuning.u4OutdoorBase;
    param.u4OutdoorRatio = outdoor_ratio(tuning, light.lv);
    param.u4PcaWord15 = tuning.u4PcaWord15;
    return param;
}

}  // namespace imgtune
