#ifndef IMGTUNE_WORKBENCH_TRACE_TRACE_GRAMMAR_H
#define IMGTUNE_WORKBENCH_TRACE_TRACE_GRAMMAR_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What the library traces: one table of its lines, one parser of them, and readers that ask by
// name.

namespace imgtune::workbench {

/// The entry point whose call a trace tells.
enum class TracedJob { ccm, color };

/// Why a phone's trace and the desk's may differ first at a value, when all before it agree.
enum class TraceCause {
    tuning,   ///< the phone has another tuning
    caller,   ///< its camera stack passes other settings: weights, which gain
    state,    ///< frames before are not in the log, or its camera started anew
    version,  ///< its library computes otherwise, or traces otherwise
    log,      ///< the log: what is computed from the value agrees, so that its line was damaged
};

/// A line of SmoothCCM. Of its label '#' stands for a number and '*' for the rest; of the field
/// {row} and {ct} stand for the label's two numbers, {rest} for its rest, {value} for the value's
/// index, {Flash} for that word in the flash row, {gains} for the row or rows of gains in use.
struct CcmLine {
    std::string_view label;
    TraceCause cause = TraceCause::version;
    std::string_view field{};  ///< of the tuning or the caller; empty for none
    bool tells_field = true;   ///< its values are the field's, not only computed from it
};

/// The labels that readers ask for.
namespace ccm_label {
inline constexpr std::string_view kFullGain = "Fullgain";  ///< a call's first line
inline constexpr std::string_view kGain = "Input AWB full Gain";
inline constexpr std::string_view kFlash = "Flash mode";
inline constexpr std::string_view kLv = "Real LV";
inline constexpr std::string_view kMethod = "Method";
inline constexpr std::string_view kCtCount = "Number of CT";
inline constexpr std::string_view kGamut = "PQ type";
inline constexpr std::string_view kLvRow = "LVpos";
inline constexpr std::string_view kClippedLow = "Clipped low R B full Gain";
inline constexpr std::string_view kClippedHigh = "Clipped high R B full Gain";
inline constexpr std::string_view kClippedGain = "Clipped AWB full Gain";
inline constexpr std::string_view kProjectedGain = "Proj AWB Gain";
inline constexpr std::string_view kCtPosition = "Estimated CT position";
inline constexpr std::string_view kDistance = "range #";
inline constexpr std::string_view kCoarseWeight = "Coarse Blending Ratio between CT#/CT#";
inline constexpr std::string_view kFineWeight = "Finer Blending Ratio with estimated CT#";
inline constexpr std::string_view kTunedMatrix = "LV_#_CT#_rCCM_Nvram";
inline constexpr std::string_view kPolynomial = "rCCMPoly22.*";
inline constexpr std::string_view kInterpolated = "rCCM_Output after interpolation";
inline constexpr std::string_view kLowLightWeight = "LV_blend ratio";
inline constexpr std::string_view kWeights = "Coef1, Coef2, Coef3";
inline constexpr std::string_view kRing0 = "Temporal CCM 0";
inline constexpr std::string_view kRing1 = "Temporal CCM 1";
inline constexpr std::string_view kAverage = "rCCM_Output after averaging";  ///< its last line
}  // namespace ccm_label

inline constexpr std::string_view kTunedGains = "{gains}";

/// Every line of SmoothCCM, what it says when it is the first that differs, and the rows of kept
/// kinds that another version of the library may have.
inline constexpr CcmLine kCcmLines[] = {
    {ccm_label::kFullGain, TraceCause::caller, "caller.full_gain"},
    {ccm_label::kGain},
    {ccm_label::kFlash},
    {ccm_label::kLv},
    {ccm_label::kMethod, TraceCause::tuning, "ccm.i4Method"},
    {ccm_label::kCtCount, TraceCause::tuning, "ccm.i4NumCT"},
    {"Number of LV", TraceCause::tuning, "ccm.i4NumLV"},
    {"Number of Flash", TraceCause::tuning, "ccm.i4NumFlash"},
    {ccm_label::kGamut, TraceCause::tuning, "ccm.i4PQType"},
    {ccm_label::kLvRow},
    {ccm_label::kClippedLow, TraceCause::tuning, kTunedGains, false},
    {ccm_label::kClippedHigh, TraceCause::tuning, kTunedGains, false},
    {ccm_label::kClippedGain, TraceCause::tuning, kTunedGains, false},
    {ccm_label::kTunedMatrix, TraceCause::tuning, "ccm.rows.{row}.{ct}.matrix[{value}]"},
    {ccm_label::kProjectedGain, TraceCause::tuning, kTunedGains, false},
    {ccm_label::kCtPosition, TraceCause::tuning, kTunedGains, false},
    {"Below lowest CT", TraceCause::tuning, kTunedGains, false},
    {ccm_label::kDistance, TraceCause::tuning, kTunedGains, false},
    {ccm_label::kCoarseWeight, TraceCause::tuning, kTunedGains, false},
    {ccm_label::kFineWeight, TraceCause::tuning, kTunedGains, false},
    {"LV postion in BlendCCM"},
    {"CCM result by lowest CT", TraceCause::tuning, kTunedGains, false},
    {"CCM result by highest CT", TraceCause::tuning, kTunedGains, false},
    {ccm_label::kPolynomial, TraceCause::tuning, "ccm.rCCMPoly22{Flash}.{rest}"},
    {ccm_label::kLowLightWeight},
    {ccm_label::kWeights, TraceCause::caller, "caller.weights"},
    {"Temporal CCM #", TraceCause::state},
    {"rCCM_Output *"},
};

/// Where on its way a colour value stands.
enum class Stage { none, low, high, target, written };

/// A row of values that a colour block traces, and what the field or fields are called in an image
/// that hold them. Values without a name of their own are elements of the field.
struct ColorLine {
    std::string_view block;  ///< the function's name without "InterParam" and "ByLV"
    std::string_view row;    ///< empty: what the block's stages stand before, by name
    std::string_view field;
    bool moves = false;  ///< in steps: where a frame ends the next begins
};

inline constexpr ColorLine kColorLines[] = {
    {"Global", "", "Global", true},
    {"PartialY", "PY", "Luma.PY", true},
    {"PartialH", "PH", "Hue.PH", true},
    {"PartialS", "SP1", "Saturation.SP1"},
    {"PartialS", "SP2", "Saturation.SP2"},
    {"PartialS", "SG1", "Saturation.SG1", true},
    {"PartialS", "SG2", "Saturation.SG2", true},
    {"PartialS", "SG3", "Saturation.SG3", true},
    {"SGainByY", "SGY0", "SGainByY.SGY0"},
    {"SGainByY", "SGY64", "SGainByY.SGY64"},
    {"SGainByY", "SGY128", "SGainByY.SGY128"},
    {"SGainByY", "SGY192", "SGainByY.SGY192"},
    {"SGainByY", "SGY256", "SGainByY.SGY256"},
    {"LSP", "LSP1", "LSP.LSP1"},
    {"LSP", "LSP2", "LSP.LSP2"},
    {"3DLUT", "CTRL", "ColorMap"},
    {"3DLUT", "W1", "ColorMap.W1"},
    {"3DLUT", "W1_Y", "ColorMap.W1.Y"},
    {"3DLUT", "W1_H", "ColorMap.W1.H"},
    {"3DLUT", "W1_S", "ColorMap.W1.S"},
    {"3DLUT", "W2", "ColorMap.W2"},
    {"3DLUT", "W2_Y", "ColorMap.W2.Y"},
    {"3DLUT", "W2_H", "ColorMap.W2.H"},
    {"3DLUT", "W2_S", "ColorMap.W2.S"},
    {"3DLUT", "W3", "ColorMap.W3"},
    {"3DLUT", "W3_Y", "ColorMap.W3.Y"},
    {"3DLUT", "W3_H", "ColorMap.W3.H"},
    {"3DLUT", "W3_S", "ColorMap.W3.S"},
};

/// The lines of SmoothCOLOR itself.
namespace color_label {
inline constexpr std::string_view kBracket = "[SmoothCOLOR()] u4RealCT";  ///< a call's first line
inline constexpr std::string_view kLight = "[SmoothCOLOR()] u4RealLV";
inline constexpr std::string_view kSmoothing = "[SmoothCOLOR()] In Ram";
inline constexpr std::string_view kLsp = "[SmoothCOLOR()] LSP";
inline constexpr std::string_view kOutdoor = "[SmoothCOLOR()] Outdoor mode !!";
inline constexpr std::string_view kLocked = "[SmoothCOLOR()] Force Lock!!";  ///< the last, if there
inline constexpr std::string_view kMapEnd = "[InterParam3DLUT()] W3_S";      ///< else this one
}  // namespace color_label

struct TraceValue {
    std::string_view key;  ///< the word before its '=' or ':'; empty where there is none
    std::string_view text;

    std::optional<std::int64_t> integer() const;  ///< none: it is no whole number of 64 bits
    double real() const;                          ///< NaN: it is no number
};

/// A line cut into its parts; views into the text.
struct TraceLine {
    std::string_view text;
    std::string_view label;     ///< before the first value: "Temporal CCM 0"
    std::string_view function;  ///< of the colour engine: "InterParamGlobal"; empty for SmoothCCM
    const ColorLine* color = nullptr;
    Stage stage = Stage::none;
    bool by_lv = false;  ///< a block's blend of outdoor and indoor images
    std::vector<TraceValue> values;

    TracedJob job() const { return function.empty() ? TracedJob::ccm : TracedJob::color; }
    bool has_keys() const { return values.size() > 1 && !values[1].key.empty(); }
    /// "Temporal CCM 0[4]", "InterParamGlobal (Out) C"; for no value, what the line tells of.
    std::string name_of(std::size_t value) const;
    /// The image's field that holds a value of `color`.
    std::string field_of(std::size_t value) const;
    std::vector<std::int64_t> integers() const;
    /// Of that key; none: the line has no such number.
    std::optional<std::int64_t> integer(std::string_view key) const;
};

TraceLine parse_trace_line(std::string_view text);

/// What a line tells of, without its values.
std::string_view trace_label(std::string_view text);

/// Whether a label is of a kind; what stands for the kind's '#' and '*' comes into `parts`.
bool is_label(std::string_view label, std::string_view kind,
              std::array<std::string_view, 2>* parts = nullptr);

/// The row of kCcmLines; null: no line of SmoothCCM.
const CcmLine* find_ccm_line(std::string_view label,
                             std::array<std::string_view, 2>* parts = nullptr);

/// The lines of a call, asked by name. The lines stay the caller's.
class Trace {
  public:
    explicit Trace(std::span<const std::string> lines) : lines_(lines) {}

    std::span<const std::string> lines() const { return lines_; }
    bool has(std::string_view kind) const { return index_of(kind) < lines_.size(); }
    /// The first line of a kind.
    std::optional<TraceLine> find(std::string_view kind) const;
    /// The first line of a colour row at a stage, in its blend by CT.
    std::optional<TraceLine> find(const ColorLine& row, Stage stage) const;
    /// The lines up to and with the first of a kind; all without it.
    Trace before(std::string_view kind) const;
    /// The lines after it.
    Trace after(std::string_view kind) const;

    /// All whole numbers of the first line of a kind.
    std::vector<std::int64_t> integers(std::string_view kind) const;
    /// The first number of that line; 0 without one.
    std::int64_t integer(std::string_view kind) const;
    double real(std::string_view kind) const;
    /// The number of that key in the first line of a function that has it; else 0.
    std::int64_t named(std::string_view function, std::string_view key) const;

    /// The first numbers of that line; what is missing is 0.
    template <std::size_t count>
    std::array<std::int64_t, count> array(std::string_view kind) const {
        std::array<std::int64_t, count> numbers{};
        const std::vector<std::int64_t> found = integers(kind);
        for (std::size_t i = 0; i < count && i < found.size(); ++i) numbers[i] = found[i];
        return numbers;
    }

  private:
    std::size_t index_of(std::string_view kind) const;

    std::span<const std::string> lines_;
};

}  // namespace imgtune::workbench

#endif
