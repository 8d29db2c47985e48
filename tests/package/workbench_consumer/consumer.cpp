// A program of one's own on the installed workbench: the first matrix that a log gives.

#include <cstdio>

#include "workbench/camera/camera.h"
#include "workbench/files/file_source.h"
#include "workbench/files/tuning_files.h"

int main(int, char** argv) {
    using namespace imgtune::workbench;
    const Tuning tuning = require_tuning(argv[1]);
    FrameFile file(argv[2]);
    Camera camera(tuning, {});
    Frame frame;
    if (!file.log().next(frame)) return 1;
    camera.run(frame);
    for (const std::int32_t c : decode(camera.ccm(), tuning.caller)) std::printf(" %d", c);
    std::puts("");
    return 0;
}
