#ifndef IMGTUNE_BENCH_SCENES_H
#define IMGTUNE_BENCH_SCENES_H

#include <functional>
#include <string>
#include <vector>

namespace imgtune::bench {

/// One thing to measure; `call` is one call on the frame of that number.
struct Scene {
    std::string name;
    std::function<void(int frame)> call;
};

/// Both entry points and every block function, on light that changes a little from frame to frame.
std::vector<Scene> scenes();

}  // namespace imgtune::bench

#endif
