#include <gtest/gtest.h>

#include <atomic>
#include <cstdarg>
#include <cstdlib>
#include <memory>
#include <utility>

#include "proof/traffic.h"

// This program's allocator counts while a call is under way, whoever calls it.

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

bool counting = false;
int calls_seen = 0;

void count() {
    calls_seen += counting;
}

const char* switch_value = "0";
std::atomic<int> lines_seen{0};

}  // namespace

extern "C" {
void* malloc(std::size_t size) {
    count();
    return __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
    count();
    return __libc_calloc(number, size);
}
void* realloc(void* old, std::size_t size) {
    count();
    return __libc_realloc(old, size);
}
void* memalign(std::size_t alignment, std::size_t size) {
    count();
    return __libc_memalign(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = memalign(alignment, size);
    return *block == nullptr;
}
void free(void* block) {
    count();
    __libc_free(block);
}

int property_get(const char*, char* value, const char*) {
    std::strcpy(value, switch_value);
    return static_cast<int>(std::strlen(value));
}
int __android_log_print(int, const char*, const char*, ...) {
    ++lines_seen;
    return 1;
}
}

namespace {

using imgtune::traffic::Camera;
using imgtune::traffic::Random;

template <class Call>
int allocations_in(const Call& call) {
    calls_seen = 0;
    counting = true;
    call();
    counting = false;
    return calls_seen;
}

void* volatile kept;  // an optimiser drops a pair whose pointer nobody sees

TEST(NoAllocation, TheCounterCounts) {
    EXPECT_EQ(allocations_in([] {
                  kept = std::malloc(3);
                  std::free(kept);
              }),
              2);
    EXPECT_EQ(allocations_in([] {
                  kept = ::operator new(99);
                  ::operator delete(kept);
              }),
              2);
}

TEST(NoAllocation, NoExportedCallUsesTheHeap) {
    Random random(6);
    const auto camera = std::make_unique<Camera>(random);
    const auto table = std::make_unique<NSIspTuning::ISP_CCM_T_2D>();
    random.fill(*table);
    for (const char* value : {"0", "1", "2"}) {
        switch_value = value;
        lines_seen = 0;
        for (int frame = 0; frame < 200; ++frame) {
            const auto state = imgtune::traffic::day_frame(random);
            camera->ccm_tuning.i4Method = random.between(0, 3);
            const int found = allocations_in([&] {
                camera->run_ccm(state, 0);
                camera->run_color(state, 0);
            });
            ASSERT_EQ(found, 0);
        }
        EXPECT_EQ(lines_seen == 0, *value == '0');

        auto& tuning = camera->ccm_tuning;
        auto& upper = camera->table[0][3];
        auto& lower = camera->table[0][2];
        ISP_SMOOTH_COLOR_PARAM_T param;
        random.fill(param);
        AWB_GAIN_T gain = {900, 512, 1000}, projected{};
        NSIspTuning::ISP_CCM_T matrix;
        float ratios[2], zeros[9] = {};
        int position = 0;
        const int ccm = allocations_in([&] {
            GainProjection(gain, tuning, projected, 1, ratios, 5, 0, &position);
            GainProjection(gain, tuning, projected, 2, ratios, 5, 0, &position);
            for (const int method : {0, 1, 2}) {
                Interpolation(projected, 3, 9, tuning, *table, 0, matrix, ratios, method, 0,
                              position, 5);
            }
            GenCCM(gain, 0, 0, 512, 1, 1, 1, 1, zeros, zeros, zeros, zeros, zeros, zeros, matrix);
            BlendCCM(ratios, *table, matrix, position, 0, 5);
            seperate_RWB_CCM_by_ratio(&camera->output, 1.5f, 3, 9);
        });
        EXPECT_EQ(ccm, 0);

        const int color = allocations_in([&] {
            for (const auto block :
                 {InterParamByLVGlobal, InterParamGlobal, InterParamByLVLSP, InterParamLSP,
                  InterParamByLVPartialY, InterParamPartialY, InterParamByLVPartialH,
                  InterParamPartialH, InterParamByLVPartialS, InterParamPartialS,
                  InterParamByLVSGainByY, InterParamSGainByY, InterParam3DLUT}) {
                block(param, upper, lower, camera->working);
            }
            position = InterParamByCT(1, 2, 3, 4, 5) + IsCCTBoundary(1, 2, 3) +
                       InterParamByLV(1, 2, 3, 4) + InterParam_PCA(1, 2, 3, 4, 5) +
                       static_cast<int>(IIR(1, 2, 3) + Clip(1, 2, 3));
        });
        EXPECT_EQ(color, 0);

        float a[9] = {2, 1, 0, 1, 3, 1, 0, 1, 4}, b[9], c[9], v[3] = {1, 2, 3}, w[3];
        const int toolkit = allocations_in([&] {
            matmul3(b, a, aat3(c, a));
            trans3(b);
            cross(w, v, matvec3(c, a, v));
            unit3(v);
            position = sign(*v) + sign_extension(5, 19) + round_stats(*v) +
                       CLIP(static_cast<unsigned char>(1), static_cast<unsigned char>(2),
                            static_cast<unsigned char>(3)) +
                       static_cast<int>(CLIP(1U, 2U, 3U) + (cbrt_stats(8.0f) > 1.0f));
            solvecubic(v);
            sort3(v);
            find_eigenvector(a, w);
            pseudo_inverse(c, b, v, a);
        });
        EXPECT_EQ(toolkit, 0);
    }
}

}  // namespace
