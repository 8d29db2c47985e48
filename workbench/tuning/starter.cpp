#include "workbench/tuning/starter.h"

#include <algorithm>
#include <string_view>

#include "ccm/codec.h"
#include "ccm/matrix_rows.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::size_t kCts = 4;

// Gains and off-diagonals (places 1, 2, 3, 5, 6, 7) from tungsten light to daylight. The blend
// reaches the last matrix without a visible step: over gains so close to each other it mixes the
// first three.
constexpr std::uint32_t kPointKelvin[kCts] = {2850, 4000, 5000, 6500};
constexpr AWB_GAIN_T kGains[kCts] = {
    {700, 512, 1250}, {860, 512, 980}, {960, 512, 840}, {1080, 512, 720}};
constexpr std::int32_t kOffDiagonalValues[kCts][6] = {{-230, -90, -190, -60, -40, -330},
                                                      {-250, -70, -170, -80, -30, -290},
                                                      {-260, -60, -150, -100, -20, -260},
                                                      {-258, -63, -154, -97, -22, -266}};

/// Strength in sixteenths: 16 corrects in full, 0 not at all.
void fill_points(Tuning& t, std::size_t row, std::int32_t strength) {
    const CoefficientCodec codec(t.caller.int_bits, t.caller.frac_bits);
    for (std::size_t ct = 0; ct < kCts; ++ct) {
        t.kelvin[row][ct] = kPointKelvin[ct];
        t.ccm.rCTAWBGain[row][ct] = kGains[ct];
        NSIspTuning::ISP_CCM_T matrix{};
        for (std::size_t i = 0; i < 6; ++i) {
            matrix.i4Coef[kOffDiagonals[i]] = kOffDiagonalValues[ct][i] * strength / 16;
        }
        close_rows(matrix, kUnity);
        codec.encode(matrix, t.ccm.rCCM_Nvram[row][ct]);
    }
}

/// The middle of the tuned matrices at the mean gains; red shifts it as the tuned ones do.
ISP_CCM_POLY22_T polynomial(std::int32_t strength) {
    ISP_CCM_POLY22_T p{};
    p.i4R_AVG = 90000;
    p.i4R_STD = 14000;
    p.i4B_AVG = 95000;
    p.i4B_STD = 20000;
    for (std::size_t i = 0; i < 6; ++i) {
        const std::int32_t middle = (kOffDiagonalValues[1][i] + kOffDiagonalValues[2][i]) / 2;
        const std::int32_t span = kOffDiagonalValues[3][i] - kOffDiagonalValues[0][i];
        p.i4P00[kOffDiagonals[i]] = middle * strength / 16 * 10000;
        p.i4P10[kOffDiagonals[i]] = span * strength / 16 * 2000;
        p.i4P01[kOffDiagonals[i]] = span * strength / 16 * -1500;
    }
    return p;
}

class ImageFiller {
  public:
    explicit ImageFiller(NSIspTuning::ISP_NVRAM_COLOR_T& image) : image_(image) {}

    /// Every element whose name starts like this.
    void set(std::string_view name, std::uint32_t value, std::uint32_t step = 0) {
        for (const ColorField& f : color_fields()) {
            if (!f.name.starts_with(name)) continue;
            BitField{f.word, f.lsb, f.width}.write(image_.u4Word, value);
            value += step;
        }
    }

    void set_color_map_lines() {
        static constexpr std::pair<const char*, std::uint32_t> kStraight[] = {
            {"PU", 1023}, {"P1", 256},   {"P2", 512},  {"P3", 768}, {"P4", 1023},
            {"S0", 64},   {"S1", 64},    {"S2", 64},   {"S3", 64},  {"S4", 64},
            {"S5", 64},   {"WGTL", 512}, {"WGTU", 512}};
        for (const ColorField& f : color_fields()) {
            if (!f.name.starts_with("ColorMap.W")) continue;
            for (const auto& [name, value] : kStraight) {
                if (f.name.ends_with(std::string(".") + name)) {
                    BitField{f.word, f.lsb, f.width}.write(image_.u4Word, value);
                }
            }
        }
    }

  private:
    NSIspTuning::ISP_NVRAM_COLOR_T& image_;
};

/// What sets a slot's images apart.
struct Mood {
    std::uint32_t contrast;
    std::uint32_t saturation;
    std::uint32_t luma;
    std::uint32_t gain;
};
constexpr Mood kMoods[4] = {
    {256, 400, 8, 40},   // normal
    {256, 440, 8, 44},   // scene
    {248, 380, 12, 36},  // flash
    {272, 430, 4, 42},   // outdoor
};

void fill_image(NSIspTuning::ISP_NVRAM_COLOR_T& image, const Mood& mood, std::uint32_t ct) {
    ImageFiller fill(image);
    fill.set("control.LSP_enable", 1);
    fill.set("Global.B", 1024);
    fill.set("Global.C", mood.contrast);
    fill.set("Global.S", mood.saturation + 4 * ct);
    fill.set("Luma.PY", mood.luma, 15);
    fill.set("Hue.PH", 126 + ct);
    fill.set("Saturation.SG1", mood.gain + 8);
    fill.set("Saturation.SG2", mood.gain);
    fill.set("Saturation.SG3", mood.gain - 12);
    fill.set("Saturation.SP1", 60 + 2 * ct);
    fill.set("Saturation.SP2", 124 + 2 * ct);
    fill.set("SGainByY.SGY0", 40 + ct);
    fill.set("SGainByY.SGY64", 56 + ct);
    fill.set("SGainByY.SGY128", 64);
    fill.set("SGainByY.SGY192", 60);
    fill.set("SGainByY.SGY256", 44);
    fill.set("LSP.LSP1", 16, 16);
    fill.set("LSP.LSP2", 32, 16);
    fill.set("ColorMap.BYPASS", 1);
    fill.set_color_map_lines();
}

}  // namespace

Tuning starter_tuning() {
    Tuning t;
    t.name = "starter";
    t.has_ccm = true;
    t.ccm.i4Method = 2;
    t.ccm.i4NumLV = 2;
    t.ccm.i4NumFlash = 1;
    t.ccm.i4NumCT = kCts;
    fill_points(t, 0, 16);
    fill_points(t, 1, 10);
    fill_points(t, 6, 14);
    t.ccm.rCCMPoly22 = polynomial(16);
    t.ccm.rCCMPoly22Flash = polynomial(14);

    t.has_color = true;
    for (std::size_t slot = 0; slot < 4; ++slot) {
        ISP_NVRAM_PCA_PARAM_T& p = t.pca[slot];
        p.u4RatioHighLV = 18;
        p.u4RatioMidLV = 16;
        p.u4RatioLowLV = 12;
        p.u4RatioLV_Th0 = 20;
        p.u4RatioLV_Th1 = 50;
        p.u4RatioLV_Th2 = 90;
        p.u4RatioLV_Th3 = 120;
        p.lum_speed = 4;
        p.hue_speed = 2;
        p.sat_speed = 4;
        p.u4LSPMaxLV = 80;
        p.u4OutdoorEnable = slot == 0 ? 1 : 0;
        p.u4OutdoorLV_Start = 100;
        p.u4OutdoorLV_End = 130;
        p.u4OutdoorBase = 16;
        for (std::uint32_t ct = 0; ct < 5; ++ct) fill_image(t.color[slot][ct], kMoods[slot], ct);
    }
    return t;
}

}  // namespace imgtune::workbench
