#include <gtest/gtest.h>

#include <memory>

#include "proof/traffic.h"
#include "support/platform_fakes.h"

namespace {

using imgtune::traffic::Camera;
using imgtune::traffic::Random;
namespace fakes = imgtune::fakes;

/// FNV-1a, 64 bits.
class Digest {
  public:
    void add(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i) value_ = (value_ ^ bytes[i]) * 0x100000001b3U;
    }
    std::uint64_t value() const { return value_; }

  private:
    std::uint64_t value_ = 0xcbf29ce484222325U;
};

constexpr const char* kSwitches[] = {
    "debug.smooth_ccm.enable",        "debug.smooth_color.dump",
    "debug.smooth_color.enable",      "debug.smooth_color.lock",
    "debug.smooth_color.bypass.yeng", "debug.smooth_color.bypass.heng",
    "debug.smooth_color.bypass.seng", "debug.smooth_color.bypass.cm",
    "debug.smooth_color.dump.global", "debug.smooth_color.dump.lum",
    "debug.smooth_color.dump.hue",    "debug.smooth_color.dump.sat",
    "debug.smooth_color.dump.sgy",    "debug.smooth_color.dump.lsp",
    "debug.smooth_color.dump.cm",     "debug.smooth_color.lvdump.global",
    "debug.smooth_color.lvdump.lum",  "debug.smooth_color.lvdump.hue",
    "debug.smooth_color.lvdump.sat",  "debug.smooth_color.lvdump.sgy",
    "debug.smooth_color.lvdump.lsp",
};

/// Makes the inputs of this frame less like a camera's, one more with every level.
void disturb(Camera& camera, NSIspTuning::RAWIspCamInfo& state, Random& random, int level) {
    if (level >= 1) camera.ccm_tuning.i4Method = random.between(0, 3);
    if (level >= 2) camera.ccm_tuning.i4NumCT = random.between(-1, 10);
    if (level >= 3) random.fill(camera.weights);
    if (level >= 4) random.fill(camera.color_tuning[random.below(4)]);
    if (level >= 5) random.fill(state);
    if (level >= 6) random.fill(camera.ccm_tuning.rCTAWBGain);
    if (level >= 7) {
        random.fill(camera.ccm_tuning.rCCMPoly22);
        random.fill(camera.ccm_tuning.rCCMPoly22Flash);
        random.fill(camera.ring);
        random.fill(camera.output);
        random.fill(camera.working);
        camera.int_bits = random.between(-40, 40);
        camera.index = random.below(3);
    }
}

// The same bits on every machine and from every compiler: everything here is wrapping integers,
// IEEE additions, products, quotients and square roots, all of them exact to the last bit. Only the
// matrix toolkit, which neither entry point calls, uses functions that a libm may round its own
// way: acosf, cosf and sinf in solvecubic.
TEST(Digest, LongMixedRunGivesTheRecordedBits) {
    fakes::reset();
    Random random(20);
    Digest digest;
    std::size_t lines = 0;
    for (int run = 0; run < 64; ++run) {
        const auto camera = std::make_unique<Camera>(random);
        for (int frame = 0; frame < 100; ++frame) {
            if (frame == 60) {
                for (const char* name : kSwitches) {
                    fakes::properties[name] = std::to_string(random.between(0, 2));
                }
            }
            NSIspTuning::RAWIspCamInfo state = imgtune::traffic::day_frame(random);
            disturb(*camera, state, random, run % 8);
            camera->run_ccm(state, random.between(0, 1));
            const int capture = random.below(16) == 0;
            if (run % 8 < 5) {
                camera->run_color(state, capture);
            } else {
                // Braced: drawn in this order by every compiler.
                const int index[2] = {random.between(-1, 5), random.between(-1, 5)};
                const unsigned kelvin[2] = {random.below(9000), random.below(9000)};
                camera->run_color(state, capture, index[0], index[1], kelvin[0], kelvin[1]);
            }
            digest.add(&camera->output, sizeof(camera->output));
            digest.add(camera->ring, sizeof(camera->ring));
            digest.add(&camera->index, sizeof(camera->index));
            digest.add(&camera->result, sizeof(camera->result));
            digest.add(&camera->working, sizeof(camera->working));
            digest.add(&camera->boot, sizeof(camera->boot));
            for (const auto& line : fakes::log_lines) {
                digest.add(line.text.data(), line.text.size());
            }
            lines += fakes::log_lines.size();
            fakes::log_lines.clear();
            fakes::property_reads.clear();
        }
        fakes::properties.clear();
    }
    EXPECT_EQ(lines, 156256U);
    EXPECT_EQ(digest.value(), 0xb119e2cee1c931bfU) << std::hex << digest.value();
}

}  // namespace
