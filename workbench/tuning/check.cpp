#include "workbench/tuning/check.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "ccm/codec.h"
#include "workbench/tuning/fields.h"

namespace imgtune::workbench {

namespace {

constexpr std::int64_t kUnityBits = 9;  // the temporal average and the output take 512 as 1.0
constexpr std::int64_t kFieldBits = 12;
constexpr double kLargestJump = 0.5;  // between neighbouring CTs, 1.0 = unity
constexpr int kPolynomial = 1;
constexpr int kBlend = 2;
constexpr std::size_t kNormal = 0;  // slot and row
constexpr std::size_t kLowLightRow = 1;
constexpr std::size_t kFlashRow = 6;
constexpr std::size_t kOutdoor = 3;
constexpr std::uint32_t kLargestSaturation = 1023;

using Matrix = NSIspTuning::ISP_CCM_T;

class Check {
  public:
    Check(const Tuning& tuning, Faults& faults)
        : tuning_(tuning),
          ccm_(tuning.ccm),
          faults_(faults),
          codec_(tuning.caller.int_bits, tuning.caller.frac_bits) {
        for (std::size_t row = 0; row < 8; ++row) {
            row_used_[row] = row == kNormal || (row == kLowLightRow && ccm_.i4NumLV >= 2) ||
                             (row == kFlashRow && ccm_.i4NumFlash != 0);
        }
        rows_matter_ = tuning.has_ccm && counts_cts() &&
                       (ccm_.i4Method == kPolynomial || ccm_.i4Method == kBlend);
        outdoor_ = tuning.pca[kNormal].u4OutdoorEnable != 0;
        for (const Fault& fault : faults.list()) {
            if (!fault.path.empty()) unread_.push_back(fault.path);
        }
    }

    void run() {
        for (const FieldRef& field : fields()) check_range(field);
        check_caller();
        if (tuning_.has_ccm) check_ccm();
        if (tuning_.has_color) check_color();
    }

  private:
    bool counts_cts() const { return ccm_.i4NumCT >= 1 && ccm_.i4NumCT <= 8; }
    std::size_t cts() const { return static_cast<std::size_t>(ccm_.i4NumCT); }

    /// Left out where reading already failed: what is missing is no finding of its own.
    void report(Fault fault) {
        const auto below = [](const std::string& path, const std::string& top) {
            return path.starts_with(top) && (path.size() == top.size() || path[top.size()] == '.' ||
                                             path[top.size()] == '[');
        };
        for (const std::string& path : unread_) {
            if (below(fault.path, path) || below(path, fault.path)) return;
        }
        faults_.add(std::move(fault));
    }

    /// Otherwise the coefficients mean nothing.
    bool codec_fits() const {
        const CallerSettings& c = tuning_.caller;
        return c.int_bits >= 0 && c.frac_bits >= 0 &&
               std::int64_t{c.int_bits} + c.frac_bits <= kFieldBits;
    }

    // ---- ranges

    /// Whether the library gets to see the field.
    bool is_used(const FieldRef& field) const {
        const RecordDefinition* kind = field.record->definition;
        const std::size_t word = field.record->first_word;
        if (kind == &kCallerRecord) {
            const bool for_color = field.definition->name == "ct_grid";
            return for_color ? tuning_.has_color : tuning_.has_ccm;
        }
        if (field.record->part == Part::ccm && !tuning_.has_ccm) return false;
        if (field.record->part != Part::ccm && !tuning_.has_color) return false;
        if (kind == &kGainRecord) {
            const std::size_t row = (word - 425) / 24;
            const std::size_t ct = (word - 425) % 24 / 3;
            return rows_matter_ && row_used_[row] && ct < cts() && !is_missing(row);
        }
        if (kind == &kPolynomialRecord) {
            const bool flash = field.record->path.ends_with("Flash");
            return ccm_.i4Method == kPolynomial && (!flash || row_used_[kFlashRow]);
        }
        if (kind == &kSmoothingRecord) {
            const std::size_t slot = word / 17;
            const bool outdoor = field.definition->name.starts_with("u4Outdoor");
            return slot != kOutdoor && (!outdoor || (slot == kNormal && outdoor_));
        }
        return true;
    }

    void check_range(const FieldRef& field) {
        const RangeRule* rule = field.definition->allowed;
        if (rule == nullptr || !is_used(field)) return;
        const std::int64_t value = field.read(tuning_);
        if (value >= rule->min && value <= rule->max) return;
        const bool zero_deviation = value == 0 && std::string_view(rule->code) == "T109";
        report({.severity = rule->warning && !zero_deviation ? Severity::warning : Severity::error,
                .code = rule->code,
                .path = field.path(),
                .message = fmt::format("{} outside its range", field.definition->meaning),
                .value = std::to_string(value),
                .allowed = fmt::format("{}..{}", rule->min, rule->max),
                .effect = zero_deviation
                              ? "division by zero: coefficients of 0 or beyond all bounds"
                              : rule->effect});
    }

    // ---- what the caller hands over

    void check_caller() {
        const CallerSettings& caller = tuning_.caller;
        if (tuning_.has_ccm) {
            const std::int64_t bits = std::int64_t{caller.int_bits} + caller.frac_bits;
            if (bits > kFieldBits && caller.int_bits <= 12 && caller.frac_bits <= 12) {
                report({.code = "T114",
                        .path = "caller.int_bits",
                        .message = "int_bits + frac_bits + 1 exceeds the 13-bit field",
                        .value = std::to_string(bits + 1),
                        .allowed = "int_bits + frac_bits up to 12",
                        .effect = "the sign is cut off: negative coefficients turn positive",
                        .suggestion = "int_bits: 3 with frac_bits: 9"});
            }
            if (caller.frac_bits != kUnityBits) {
                report({.severity = Severity::warning,
                        .code = "T115",
                        .path = "caller.frac_bits",
                        .message = "the output takes 512 as 1.0",
                        .value = std::to_string(caller.frac_bits),
                        .allowed = "9",
                        .effect = "diagonals of another scale: a picture too dark or too bright",
                        .suggestion = "frac_bits: 9"});
            }
            check_weights();
        }
        if (tuning_.has_color) check_grid();
    }

    void check_weights() {
        const auto& w = tuning_.caller.weights;
        if (w[0] + w[1] + w[2] == 0) {
            report({.code = "T116",
                    .path = "caller.weights",
                    .message = "weights sum to 0",
                    .value = fmt::format("[{}, {}, {}]", w[0], w[1], w[2]),
                    .allowed = "a sum above 0",
                    .effect = "the matrix is always the identity: pale and tinted colours",
                    .suggestion = "[2, 1, 1]; [1, 0, 0] averages nothing"});
        } else if (w[0] == 0) {
            report({.code = "T117",
                    .path = "caller.weights[0]",
                    .message = "the new matrix has no weight",
                    .value = "0",
                    .allowed = "above 0",
                    .effect = "the matrix never follows the light",
                    .suggestion = "[2, 1, 1]"});
        }
    }

    void check_grid() {
        const auto& grid = tuning_.caller.ct_grid;
        bool rises = true;
        bool falls = true;
        std::size_t last_good = 0;
        for (std::size_t i = 1; i < grid.size(); ++i) {
            rises = rises && grid[i] > grid[i - 1];
            falls = falls && grid[i] < grid[i - 1];
            if (rises || falls) last_good = i;
        }
        if (rises || falls) return;
        report({.code = "T209",
                .path = fmt::format("caller.ct_grid[{}]", last_good + 1),
                .message = "CT grid neither rises nor falls throughout",
                .value = fmt::format("{} after {}", grid[last_good + 1], grid[last_good]),
                .allowed = "five different CTs in order",
                .effect = "a wrong pair of images is blended around this CT",
                .suggestion = "sort ct_grid together with the images of every slot"});
    }

    // ---- matrices

    Matrix matrix(std::size_t row, std::size_t ct) const {
        return codec_.decode(ccm_.rCCM_Nvram[row][ct]);
    }

    bool gains_missing(std::size_t row) const {
        return std::all_of(ccm_.rCTAWBGain[row], ccm_.rCTAWBGain[row] + cts(),
                           [](const AWB_GAIN_T& g) { return g.i4R == 0 && g.i4B == 0; });
    }

    bool matrix_missing(std::size_t row, std::size_t ct) const {
        const Matrix m = matrix(row, ct);
        return std::ranges::all_of(m.i4Coef, [](std::int32_t c) { return c == 0; });
    }

    bool is_missing(std::size_t row) const {
        if (gains_missing(row)) return true;
        if (ccm_.i4Method != kBlend) return false;
        for (std::size_t t = 0; t < cts(); ++t) {
            if (!matrix_missing(row, t)) return false;
        }
        return true;
    }

    void check_ccm() {
        if (ccm_.i4Method == kBlend && ccm_.i4NumCT >= 1 && ccm_.i4NumCT < 3) {
            report({.code = "T103",
                    .path = "ccm.i4NumCT",
                    .message = "too few tuned CTs to blend",
                    .value = std::to_string(ccm_.i4NumCT),
                    .allowed = "3..8 for i4Method 2",
                    .effect = "matrices are taken from outside the row between the end points",
                    .suggestion = "tune a third CT, or use i4Method 1"});
        }
        if (!rows_matter_) return;
        for (std::size_t row = 0; row < 8; ++row) {
            if (row_used_[row]) check_row(row);
        }
        if (ccm_.i4Method != kPolynomial) return;
        check_polynomial(ccm_.rCCMPoly22, "ccm.rCCMPoly22", kNormal);
        if (row_used_[kLowLightRow]) {
            check_polynomial(ccm_.rCCMPoly22, "ccm.rCCMPoly22", kLowLightRow);
        }
        if (row_used_[kFlashRow]) {
            check_polynomial(ccm_.rCCMPoly22Flash, "ccm.rCCMPoly22Flash", kFlashRow);
        }
    }

    void check_row(std::size_t row) {
        const std::string path = fmt::format("ccm.rows.{}", kRowNames[row]);
        if (is_missing(row)) {
            const bool gains = gains_missing(row);
            report(
                {.code = row == kLowLightRow ? "T105"
                         : row == kFlashRow  ? "T106"
                                             : "T107",
                 .path = path,
                 .message = fmt::format("{} of the row missing", gains ? "gains" : "matrices"),
                 .allowed = fmt::format("{} entries", cts()),
                 .effect = row == kLowLightRow ? "below LV 50 the matrix turns into a wrong one"
                           : row == kFlashRow  ? "every flash frame gets a wrong matrix"
                                               : "every frame without flash gets a wrong matrix",
                 .suggestion = row == kLowLightRow ? "fill the row, or set i4NumLV: 1"
                               : row == kFlashRow
                                   ? "fill the row, or set i4NumFlash: 0 for a camera without flash"
                                   : "fill the row"});
            return;
        }
        for (std::size_t t = 1; t < cts(); ++t) check_order(row, t, path);
        if (ccm_.i4Method != kBlend || !codec_fits()) return;
        for (std::size_t t = 0; t < cts(); ++t) check_matrix(row, t, path);
    }

    void check_order(std::size_t row, std::size_t t, const std::string& path) {
        const AWB_GAIN_T& before = ccm_.rCTAWBGain[row][t - 1];
        const AWB_GAIN_T& gain = ccm_.rCTAWBGain[row][t];
        const auto out_of_order = [&](const char* name, const char* rule, std::int32_t value,
                                      std::int32_t other) {
            report({.code = "T104",
                    .path = fmt::format("{}.gains.{}.{}", path, t, name),
                    .message = fmt::format("{} gain does not {} with the CT", name, rule),
                    .value = fmt::format("{} after {}", value, other),
                    .allowed = fmt::format("{} {}", *name == 'R' ? "above" : "below", other),
                    .effect = "gains are clipped to a wrong end and placed at a wrong CT: "
                              "colours jump in mixed light",
                    .suggestion = "order gains and matrices from the lowest CT to the highest"});
        };
        if (gain.i4R <= before.i4R) out_of_order("R", "rise", gain.i4R, before.i4R);
        if (gain.i4B >= before.i4B) out_of_order("B", "fall", gain.i4B, before.i4B);
    }

    void check_matrix(std::size_t row, std::size_t t, const std::string& row_path) {
        const std::string path = fmt::format("{}.matrices.{}", row_path, t);
        const std::int64_t unity = std::int64_t{1} << std::clamp(tuning_.caller.frac_bits, 0, 12);
        if (matrix_missing(row, t)) {
            report({.code = "T107",
                    .path = path,
                    .message = "matrix missing: all coefficients are 0",
                    .allowed = fmt::format("a matrix for each of the {} CTs", cts()),
                    .effect = "uncorrected colours at this CT",
                    .suggestion = "add the matrix, or lower i4NumCT"});
            return;
        }
        const Matrix m = matrix(row, t);
        for (std::size_t i = 0; i < 3; ++i) {
            const std::int32_t* c = m.i4Coef + 3 * i;
            const std::int64_t sum = std::int64_t{c[0]} + c[1] + c[2];
            if (sum == unity) continue;
            report({.severity = Severity::warning,
                    .code = "T108",
                    .path = fmt::format("{}[{}]", path, 3 * i),
                    .message = fmt::format("row {} does not sum to the unity", i),
                    .value = std::to_string(sum),
                    .allowed = std::to_string(unity),
                    .effect =
                        fmt::format("the diagonal {} is replaced by {}", c[i], unity - sum + c[i]),
                    .suggestion = fmt::format("set the diagonal to {}", unity - sum + c[i])});
        }
        if (t == 0 || matrix_missing(row, t - 1)) return;
        const Matrix before = matrix(row, t - 1);
        std::size_t worst = 0;
        std::int64_t jump = 0;
        for (std::size_t k = 0; k < 9; ++k) {
            const std::int64_t difference = std::abs(std::int64_t{m.i4Coef[k]} - before.i4Coef[k]);
            if (difference > jump) {
                jump = difference;
                worst = k;
            }
        }
        const double size = static_cast<double>(jump) / static_cast<double>(unity);
        if (size <= kLargestJump) return;
        report({.severity = Severity::warning,
                .code = "T112",
                .path = fmt::format("{}[{}]", path, worst),
                .message =
                    fmt::format("matrix jumps by {:.2f} between CT {} and CT {}", size, t - 1, t),
                .value = fmt::format("{} after {}", m.i4Coef[worst], before.i4Coef[worst]),
                .allowed = fmt::format("steps up to {:.2f} of the unity", kLargestJump),
                .effect = "small changes of the light shift the colours visibly",
                .suggestion = "tune a CT between the two, or check both matrices"});
    }

    /// The coefficients at both ends of the row; between them they are linear.
    void check_polynomial(const ISP_CCM_POLY22_T& poly, const char* path, std::size_t row) {
        if (poly.i4R_STD == 0 || poly.i4B_STD == 0 || is_missing(row)) return;
        std::array<float, 9> p00{}, p10{}, p01{}, zero{};
        for (std::size_t k = 0; k < 9; ++k) {
            p00[k] = static_cast<float>(poly.i4P00[k]) / 10000.0f;
            p10[k] = static_cast<float>(poly.i4P10[k]) / 10000.0f;
            p01[k] = static_cast<float>(poly.i4P01[k]) / 10000.0f;
        }
        for (const std::size_t t : {std::size_t{0}, cts() - 1}) {
            const AWB_GAIN_T gain{ccm_.rCTAWBGain[row][t].i4R, 512, ccm_.rCTAWBGain[row][t].i4B};
            Matrix m{};
            GenCCM(gain, 0, 0, unity_of_codec(), static_cast<float>(poly.i4R_AVG) / 100.0f,
                   static_cast<float>(poly.i4B_AVG) / 100.0f,
                   static_cast<float>(poly.i4R_STD) / 100.0f,
                   static_cast<float>(poly.i4B_STD) / 100.0f, p00.data(), p10.data(), p01.data(),
                   zero.data(), zero.data(), zero.data(), m);
            for (std::size_t k = 0; k < 9; ++k) {
                if (codec_.decode(codec_.encode(m.i4Coef[k]) & 0x1fffU) == m.i4Coef[k]) continue;
                report({.code = "T111",
                        .path = path,
                        .message = fmt::format("coefficient {} leaves its 13-bit field at CT "
                                               "{} of row {}",
                                               k, t, kRowNames[row]),
                        .value = std::to_string(m.i4Coef[k]),
                        .allowed = "what the stored field holds",
                        .effect = "the coefficient wraps: inverted colours",
                        .suggestion = "check the terms and their scale (1/10000)"});
                break;
            }
        }
    }

    int unity_of_codec() const { return as_signed(shift_left(1, tuning_.caller.frac_bits)); }

    // ---- colour

    void check_color() {
        for (std::size_t slot = 0; slot < 4; ++slot) {
            if (slot != kOutdoor) {
                check_ratio_thresholds(slot);
                check_saturation_target(slot);
            }
            if (slot != kOutdoor || outdoor_) check_images(slot);
        }
        if (outdoor_) check_outdoor();
        check_copies();
    }

    static std::string tuning_path(std::size_t slot, const char* field) {
        return fmt::format("color.tuning.{}.{}", kSlotNames[slot], field);
    }

    static std::string image_path(std::size_t slot, std::size_t ct) {
        return fmt::format("color.images.{}.{}", kSlotNames[slot], ct);
    }

    void check_ratio_thresholds(std::size_t slot) {
        const ISP_NVRAM_PCA_PARAM_T& p = tuning_.pca[slot];
        const std::uint32_t th[4] = {p.u4RatioLV_Th0 & 0xff, p.u4RatioLV_Th1 & 0xff,
                                     p.u4RatioLV_Th2 & 0xff, p.u4RatioLV_Th3 & 0xff};
        static constexpr const char* kNames[4] = {"u4RatioLV_Th0", "u4RatioLV_Th1", "u4RatioLV_Th2",
                                                  "u4RatioLV_Th3"};
        const std::uint32_t plateau[3] = {p.u4RatioLowLV & 0xff, p.u4RatioMidLV & 0xff,
                                          p.u4RatioHighLV & 0xff};
        for (std::size_t i = 1; i < 4; ++i) {
            // A ramp without length is a jump, unless it joins equal ratios.
            const bool ramp = i != 2;
            const bool jumps = ramp && th[i] == th[i - 1] && plateau[i / 2] != plateau[i / 2 + 1];
            if (th[i] >= th[i - 1] && !jumps) continue;
            report({.severity = jumps ? Severity::warning : Severity::error,
                    .code = "T201",
                    .path = tuning_path(slot, kNames[i]),
                    .message = "ratio thresholds do not ascend",
                    .value = fmt::format("{} after {}", th[i], th[i - 1]),
                    .allowed = fmt::format("{} {}", ramp ? "above" : "from", th[i - 1]),
                    .effect = "the saturation jumps at this light value instead of ramping",
                    .suggestion = "Th0 < Th1 <= Th2 < Th3"});
        }
    }

    /// Largest saturation of the slot's images under each ratio, as the global block computes it.
    void check_saturation_target(std::size_t slot) {
        const ISP_NVRAM_PCA_PARAM_T& p = tuning_.pca[slot];
        constexpr BitField kSaturation{5, 0, 10};
        for (const std::size_t source : {slot, kOutdoor}) {
            if (source == kOutdoor && (slot != kNormal || !outdoor_)) continue;
            for (std::size_t ct = 0; ct < 5; ++ct) {
                const std::uint32_t s = kSaturation.read(tuning_.color[source][ct].u4Word);
                for (const std::uint32_t word : {p.u4RatioHighLV, p.u4RatioMidLV, p.u4RatioLowLV}) {
                    const std::uint32_t target = p.u4SatOffset + ((s * (word & 0xff)) >> 4U);
                    if (target <= kLargestSaturation) continue;
                    report({.code = "T213",
                            .path = image_path(source, ct) + ".Global.S",
                            .message = fmt::format(
                                "saturation {} with ratio {} / 16 and offset {} of "
                                "slot {} leaves its field",
                                s, word & 0xff, as_signed(p.u4SatOffset), kSlotNames[slot]),
                            .value = std::to_string(as_signed(target)),
                            .allowed = fmt::format("0..{}", kLargestSaturation),
                            .effect = "the saturation wraps: pale or wild colours",
                            .suggestion = "lower S, the ratio or the offset"});
                    break;
                }
            }
        }
    }

    void check_outdoor() {
        const ISP_NVRAM_PCA_PARAM_T& p = tuning_.pca[kNormal];
        if (p.u4OutdoorLV_Start >= p.u4OutdoorLV_End) {
            const bool equal = p.u4OutdoorLV_Start == p.u4OutdoorLV_End;
            report({.severity = equal ? Severity::warning : Severity::error,
                    .code = "T203",
                    .path = tuning_path(kNormal, "u4OutdoorLV_Start"),
                    .message =
                        equal ? "outdoor ramp has no length" : "outdoor ramp starts after its end",
                    .value = fmt::format("{}, end {}", p.u4OutdoorLV_Start, p.u4OutdoorLV_End),
                    .allowed = fmt::format("below {}", p.u4OutdoorLV_End),
                    .effect = "the picture jumps between indoor and outdoor colours",
                    .suggestion = "u4OutdoorLV_Start < u4OutdoorLV_End"});
        }
        if (p.u4OutdoorBase == 0) {
            report({.code = "T204",
                    .path = tuning_path(kNormal, "u4OutdoorBase"),
                    .message = "outdoor blend without a full scale",
                    .value = "0",
                    .allowed = "above 0 while u4OutdoorEnable is set",
                    .effect = "every blended field becomes 0: a black picture",
                    .suggestion = "u4OutdoorBase: 16, or u4OutdoorEnable: 0"});
        }
    }

    void check_images(std::size_t slot) {
        for (std::size_t ct = 0; ct < 5; ++ct) {
            const NSIspTuning::ISP_NVRAM_COLOR_T& image = tuning_.color[slot][ct];
            if (std::ranges::all_of(color_fields(),
                                    [&](const ColorField& f) { return f.read(image) == 0; })) {
                report({.code = "T211",
                        .path = image_path(slot, ct),
                        .message = "image missing: all fields are 0",
                        .effect = "a black or grey picture around this CT",
                        .suggestion = "fill the image, or copy a neighbour's"});
                continue;
            }
            check_knots(slot, ct);
            const auto& first = tuning_.color[slot][0].u4Word;
            const bool same = std::equal(first, first + 4, image.u4Word);
            if (!same && slot != kOutdoor) {
                report({.severity = Severity::warning,
                        .code = "T212",
                        .path = image_path(slot, ct) + ".control",
                        .message = "control words differ from those of CT index 0",
                        .allowed = "the same in all five images",
                        .effect = "not used: control words and LSP_enable come from CT index 0",
                        .suggestion = "make them alike"});
            }
        }
    }

    static const FieldDefinition& image_field(std::string_view name) {
        return *std::ranges::find(kColorImageRecord.fields, name, &FieldDefinition::name);
    }

    void check_knots(std::size_t slot, std::size_t ct) {
        const FieldDefinition& first = image_field("Saturation.SP1");
        const FieldDefinition& second = image_field("Saturation.SP2");
        const std::uint32_t* words = tuning_.color[slot][ct].u4Word;
        for (unsigned i = 0; i < first.count; ++i) {
            const std::uint32_t sp1 = first.place(i).read(words);
            const std::uint32_t sp2 = second.place(i).read(words);
            if (sp1 <= sp2) continue;
            report({.code = "T207",
                    .path = fmt::format("{}.Saturation.SP1[{}]", image_path(slot, ct), i),
                    .message = "saturation knots out of order",
                    .value = fmt::format("{}, SP2 {}", sp1, sp2),
                    .allowed = fmt::format("0..{}", sp2),
                    .effect = "the slopes between the knots wrap: colour casts",
                    .suggestion = "SP1 <= SP2"});
        }
    }

    void check_copies() {
        for (std::size_t a = 0; a < 4; ++a) {
            for (std::size_t b = a + 1; b < 4; ++b) {
                if (b == kOutdoor && !outdoor_) continue;
                if (std::memcmp(tuning_.color[a], tuning_.color[b], sizeof(tuning_.color[a])) !=
                    0) {
                    continue;
                }
                report({.severity = Severity::warning,
                        .code = "T210",
                        .path = fmt::format("color.images.{}", kSlotNames[b]),
                        .message =
                            fmt::format("the images are copies of those of slot {}", kSlotNames[a]),
                        .effect = "switching the slot changes no colours",
                        .suggestion = "tune the slot, or leave it if that is meant"});
            }
        }
    }

    const Tuning& tuning_;
    const ISP_NVRAM_MULTI_CCM_STRUCT& ccm_;
    Faults& faults_;
    CoefficientCodec codec_;
    std::vector<std::string> unread_;  ///< paths of earlier findings
    std::array<bool, 8> row_used_{};
    bool rows_matter_ = false;
    bool outdoor_ = false;
};

}  // namespace

void check_tuning(const Tuning& tuning, Faults& faults) {
    Check(tuning, faults).run();
}

}  // namespace imgtune::workbench
