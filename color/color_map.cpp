#include <array>

#include "color/block.h"
#include "color/control.h"

namespace imgtune {

namespace {

constexpr std::size_t kFirstWord = 71;
constexpr std::size_t kWords = 46;
constexpr unsigned kLineWords = 5;
constexpr unsigned kLines = 9;

constexpr BitField kInkDelta{71, 10, 1};
constexpr BitField kInkChannel{71, 12, 2};

/// Enable bits of set 0..2 (W1..W3): EN, WGR_EN, INK_EN.
constexpr FieldRun<3> enables_of(unsigned set) {
    return {{{71, 3 * set + 1, 1}, {71, 3 * set + 2, 1}, {71, 3 * set + 3, 1}}};
}

/// Fields of the line that starts at word k, in the order in which a trace line shows them:
/// PL, P0..P4, PU, S0..S5, WGTL, WGTU.
constexpr FieldRun<15> line_at(unsigned k) {
    return {{{k, 0, 10},
             {k, 20, 10},
             {k + 1, 0, 10},
             {k + 1, 10, 10},
             {k + 1, 20, 10},
             {k + 2, 0, 10},
             {k, 10, 10},
             {k + 2, 10, 8},
             {k + 2, 20, 8},
             {k + 3, 0, 8},
             {k + 3, 8, 8},
             {k + 3, 16, 8},
             {k + 3, 24, 8},
             {k + 4, 0, 10},
             {k + 4, 16, 10}}};
}

/// The bits of each word that belong to the block.
constexpr std::array<std::uint32_t, kWords> block_masks() {
    std::array<std::uint32_t, kWords> masks{};
    const auto add = [&masks](const BitField& field) {
        masks[field.word - kFirstWord] |= field.word_mask();
    };
    add(kColorMapBypass);
    add(kInkDelta);
    add(kInkChannel);
    for (unsigned set = 0; set < 3; ++set) {
        for (const BitField& field : enables_of(set).field) add(field);
    }
    for (unsigned line = 0; line < kLines; ++line) {
        for (const BitField& field : line_at(72 + kLineWords * line).field) add(field);
    }
    return masks;
}

constexpr std::array<std::uint32_t, kWords> kMasks = block_masks();
static_assert(kMasks[0] == 0x37ff && kMasks[1] == 0x3fffffff && kMasks[3] == 0x0ff3ffff &&
              kMasks[4] == 0xffffffff && kMasks[45] == 0x03ff03ff);

#define IMGTUNE_LINE_VALUES                                                               \
    ": PL=%04d, P0=%04d, P1=%04d, P2=%04d, P3=%04d, P4=%04d, PU=%04d, S0=%04d, S1=%04d, " \
    "S2=%04d, S3=%04d, S4=%04d, S5=%04d, WGTL=%04d, WGTU=%04d\n"

struct SetTrace {
    const char* enables;
    struct {
        unsigned word;
        const char* format;
    } lines[3];
};

// Y before H before S; in memory H comes first.
constexpr SetTrace kSets[3] = {
    {"[%s()] W1  : EN=%d, WGR_EN=%d, INK_EN=%d\n",
     {{77, "[%s()] W1_Y" IMGTUNE_LINE_VALUES},
      {72, "[%s()] W1_H" IMGTUNE_LINE_VALUES},
      {82, "[%s()] W1_S" IMGTUNE_LINE_VALUES}}},
    {"[%s()] W2  : EN=%d, WGR_EN=%d, INK_EN=%d\n",
     {{92, "[%s()] W2_Y" IMGTUNE_LINE_VALUES},
      {87, "[%s()] W2_H" IMGTUNE_LINE_VALUES},
      {97, "[%s()] W2_S" IMGTUNE_LINE_VALUES}}},
    {"[%s()] W3  : EN=%d, WGR_EN=%d, INK_EN=%d\n",
     {{107, "[%s()] W3_Y" IMGTUNE_LINE_VALUES},
      {102, "[%s()] W3_H" IMGTUNE_LINE_VALUES},
      {112, "[%s()] W3_S" IMGTUNE_LINE_VALUES}}},
};

void trace_details(const BlockTrace& trace, const ColorImage& image) {
    if (!trace.details()) return;
    trace.line("[%s()] CTRL: BYPASS=%d, INK_DELTA=%d, INK_CH=%d\n",
               as_signed(kColorMapBypass.read(image.u4Word)),
               as_signed(kInkDelta.read(image.u4Word)), as_signed(kInkChannel.read(image.u4Word)));
    for (unsigned set = 0; set < 3; ++set) {
        trace_row<3>(trace, kSets[set].enables, enables_of(set).read(image));
        for (const auto& line : kSets[set].lines) {
            trace_row<15>(trace, line.format, line_at(line.word).read(image));
        }
    }
}

}  // namespace

}  // namespace imgtune

void InterParam3DLUT(ISP_SMOOTH_COLOR_PARAM_T& param, NSIspTuning::ISP_NVRAM_COLOR_T const& upper,
                     NSIspTuning::ISP_NVRAM_COLOR_T const& lower,
                     NSIspTuning::ISP_NVRAM_COLOR_T& working) {
    using namespace imgtune;
    const BlockTrace trace("InterParam3DLUT", "debug.smooth_color.dump.cm");
    trace.header("[%s()] u4RealCT = %d, u4LowerCT = %d, u4UpperCT = %d\n",
                 as_signed(param.u4RealCT), as_signed(param.u4LowerCT), as_signed(param.u4UpperCT));
    const std::uint32_t midpoint = (param.u4LowerCT + param.u4UpperCT) >> 1;
    const ColorImage& source = param.u4RealCT >= midpoint ? upper : lower;
    const std::uint32_t* from = source.u4Word + kFirstWord;
    std::uint32_t* to = working.u4Word + kFirstWord;
    for (std::size_t i = 0; i < kWords; ++i) to[i] = (to[i] & ~kMasks[i]) | (from[i] & kMasks[i]);
    trace_details(trace, working);
}
