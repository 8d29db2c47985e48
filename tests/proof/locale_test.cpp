#include <android/log.h>
#include <cutils/properties.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "proof/traffic.h"

namespace {

using imgtune::traffic::Camera;
using imgtune::traffic::Random;
using NSIspTuning::RAWIspCamInfo;

std::string log_of_run;

std::string run_traced() {
    log_of_run.clear();
    __android_log_set_logger(
        [](const __android_log_message* message) { log_of_run += message->message; });
    Random random(4);
    Camera camera(random);
    for (int frame = 0; frame < 50; ++frame) {
        camera.ccm_tuning.i4Method = 1 + frame % 2;
        const RAWIspCamInfo state = imgtune::traffic::day_frame(random);
        camera.run_ccm(state, 0);
        camera.run_color(state, 0);
        log_of_run.append(reinterpret_cast<const char*>(&camera.output), sizeof(camera.output));
        log_of_run.append(reinterpret_cast<const char*>(&camera.result), sizeof(camera.result));
    }
    __android_log_set_logger(nullptr);
    return log_of_run;
}

TEST(Locale, CommaDecimalLocaleChangesNothing) {
    property_set("debug.smooth_ccm.enable", "1");
    property_set("debug.smooth_color.dump", "1");
    const std::string plain = run_traced();
    setenv("LOCPATH", IMGTUNE_TEST_LOCALES, 1);
    const char* locale = std::setlocale(LC_ALL, "de_DE.UTF-8");
    unsetenv("LOCPATH");
    if (locale == nullptr) locale = std::setlocale(LC_ALL, "de_DE.UTF-8");
    if (locale == nullptr) {
        GTEST_SKIP() << "no German locale; install the packages locales and libc-bin and rebuild";
    }
    char half[8];
    std::snprintf(half, sizeof(half), "%.1f", 0.5);
    EXPECT_STREQ(half, "0,5");
    const std::string german = run_traced();
    std::setlocale(LC_ALL, "C");
    EXPECT_TRUE(german == plain);
    EXPECT_NE(plain.find("LV_blend ratio = (0."), std::string::npos);
}

}  // namespace
