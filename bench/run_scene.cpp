// run_scene NAME COUNT: calls one scene that many times. Without arguments: names the scenes.

#include <cstdio>
#include <cstdlib>

#include "scenes.h"

int main(int argc, char** argv) {
    for (const auto& scene : imgtune::bench::scenes()) {
        if (argc != 3) {
            std::puts(scene.name.c_str());
        } else if (scene.name == argv[1]) {
            const int count = std::atoi(argv[2]);
            for (int frame = 0; frame < count; ++frame) scene.call(frame);
            return 0;
        }
    }
    return argc == 1 ? 0 : 2;
}
