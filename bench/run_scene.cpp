// Calls scenes for those who count instructions. Without arguments: names the scenes.
//   run_scene NAME COUNT   this scene for so many frames
//   run_scene --all        every scene: ten frames, then fifty between two calls that a trace shows

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "scenes.h"

extern "C" {
[[gnu::noinline]] void counting_begins() {
    __asm__ volatile("");
}
[[gnu::noinline]] void counting_ends() {
    __asm__ volatile("");
}
}

int main(int argc, char** argv) {
    const bool all = argc == 2 && std::strcmp(argv[1], "--all") == 0;
    for (const auto& scene : imgtune::bench::scenes()) {
        if (all) {
            for (int frame = 0; frame < 10; ++frame) scene.call(frame);
            counting_begins();
            for (int frame = 10; frame < 60; ++frame) scene.call(frame);
            counting_ends();
        } else if (argc != 3) {
            std::puts(scene.name.c_str());
        } else if (scene.name == argv[1]) {
            const int count = std::atoi(argv[2]);
            for (int frame = 0; frame < count; ++frame) scene.call(frame);
            return 0;
        }
    }
    return all || argc == 1 ? 0 : 2;
}
