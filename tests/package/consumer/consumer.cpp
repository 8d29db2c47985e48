// A camera stack in small. Answers property reads and takes log lines itself, calls both entry
// points with a base state and with each member of the state changed alone, and prints a digest of
// results and traces a row: the same whatever else the record holds. Fails when a member that an
// entry point reads does not show in its digest, or one that it does not read does.

#include <imgtune/imgtune.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace {

std::uint64_t digest;  // FNV-1a

void add(const void* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        digest = (digest ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001B3U;
    }
}

std::uint32_t next_random() {
    static std::uint32_t state = 1;
    state = state * 1664525U + 1013904223U;
    return state >> 8U;
}

template <class Record>
void fill(Record& record) {
    static_assert(sizeof(Record) % 4 == 0, "records are words");
    for (std::size_t at = 0; at < sizeof(Record); at += 4) {
        const std::uint32_t word = next_random() & 0x007F007FU;
        std::memcpy(reinterpret_cast<unsigned char*>(&record) + at, &word, 4);
    }
}

ISP_NVRAM_MULTI_CCM_STRUCT ccm;
NSIspTuning::ISP_NVRAM_COLOR_T color[4][5];
ISP_NVRAM_PCA_PARAM_T parameters[4];

std::uint64_t ccm_digest(const NSIspTuning::RAWIspCamInfo& state) {
    digest = 0xCBF29CE484222325U;
    for (int full_gain = 0; full_gain < 2; ++full_gain) {
        NSIspTuning::ISP_NVRAM_CCM_T output = {}, ring[2] = {};
        unsigned short version = 0;
        unsigned int index = 0, weights[3] = {2, 1, 1};
        SmoothCCM(full_gain, 3, 9, ccm, output, version, state, ring, index, weights);
        add(&output, sizeof(output));
        add(ring, sizeof(ring));
        add(&version, sizeof(version));
    }
    return digest;
}

std::uint64_t color_digest(const NSIspTuning::RAWIspCamInfo& state) {
    digest = 0xCBF29CE484222325U;
    NSIspTuning::ISP_NVRAM_COLOR_T result, working = {};
    unsigned short version = 0;
    int boot = 0;
    SmoothCOLOR(0, 6500, 2850, NSIspTuning::EIndex_PCA_LUT_CT_3, NSIspTuning::EIndex_PCA_LUT_CT_1,
                color, parameters, state, result, version, boot, working);
    add(&result, sizeof(result));
    add(&version, sizeof(version));
    return digest;
}

}  // namespace

extern "C" int property_get(const char* name, char* value, const char* default_value);
extern "C" int property_get(const char* name, char* value, const char* default_value) {
    const bool traced = std::strcmp(name, "debug.smooth_ccm.enable") == 0 ||
                        std::strcmp(name, "debug.smooth_color.dump") == 0;
    std::strcpy(value, traced ? "1" : default_value);
    return static_cast<int>(std::strlen(value));
}

extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...);
extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    char text[2048];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(text, sizeof(text), format, values);
    va_end(values);
    add(&priority, sizeof(priority));
    add(tag, std::strlen(tag));
    add(text, static_cast<std::size_t>(length));
    return 1;
}

int main() {
    fill(ccm);
    fill(color);
    fill(parameters);
    ccm.i4Method = 2;
    ccm.i4PQType = 0;
    ccm.i4NumLV = 2;
    ccm.i4NumCT = 4;
    for (int row = 0; row < 8; ++row) {
        for (int ct = 0; ct < 8; ++ct) {
            ccm.rCTAWBGain[row][ct] = {400 + 10 * row + 200 * ct, 512, 1500 - 200 * ct};
        }
    }
    parameters[0].u4OutdoorEnable = 1;
    parameters[0].u4OutdoorLV_Start = 40;
    parameters[0].u4OutdoorLV_End = 100;
    parameters[0].u4OutdoorBase = 16;

    static NSIspTuning::RAWIspCamInfo state;
    std::memset(static_cast<void*>(&state), 0xA5, sizeof(state));  // members that are not ours
    state.profile = 3;
    state.rAWBFullGain = {700, 512, 1000};
    state.rAWBGain = {900, 512, 850};
    state.u4CCT = 4000;
    state.u4RealLV = 70;
    state.u4FlashMode = 0;
    state.u4SceneFlag = 0;

    struct Change {
        const char* member;
        void (*apply)(NSIspTuning::RAWIspCamInfo&);
        bool ccm_reads, color_reads;
    };
    using State = NSIspTuning::RAWIspCamInfo;
    const Change changes[] = {
        {"none", [](State&) {}, false, false},
        {"profile", [](State& s) { s.profile = 4; }, false, true},
        {"rAWBFullGain.i4R", [](State& s) { s.rAWBFullGain.i4R = 750; }, true, false},
        {"rAWBFullGain.i4B", [](State& s) { s.rAWBFullGain.i4B = 1100; }, true, false},
        {"rAWBGain.i4R", [](State& s) { s.rAWBGain.i4R = 950; }, true, false},
        {"rAWBGain.i4B", [](State& s) { s.rAWBGain.i4B = 800; }, true, false},
        {"u4CCT", [](State& s) { s.u4CCT = 5000; }, false, true},
        {"u4RealLV", [](State& s) { s.u4RealLV = 45; }, true, true},
        {"u4FlashMode", [](State& s) { s.u4FlashMode = 1; }, true, true},
        {"u4SceneFlag", [](State& s) { s.u4SceneFlag = 1; }, false, true},
    };
    const std::uint64_t ccm_base = ccm_digest(state);
    const std::uint64_t color_base = color_digest(state);
    int failures = 0;
    for (const Change& change : changes) {
        State changed = state;
        change.apply(changed);
        const std::uint64_t ccm_now = ccm_digest(changed);
        const std::uint64_t color_now = color_digest(changed);
        std::printf("%-16s %016llx %016llx\n", change.member,
                    static_cast<unsigned long long>(ccm_now),
                    static_cast<unsigned long long>(color_now));
        if ((ccm_now != ccm_base) != change.ccm_reads ||
            (color_now != color_base) != change.color_reads) {
            std::fprintf(stderr, "%s: not read, or read by the wrong entry point\n", change.member);
            ++failures;
        }
    }
    return failures == 0 && g_Smooth_CCM_Ver == 200 && g_Smooth_Color_Ver == 100 ? 0 : 1;
}
