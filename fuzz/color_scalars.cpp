#include <imgtune/color.h>

#include <algorithm>

#include "input.h"

using namespace imgtune::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    do {
        const int x = in.number(), p = in.number(), q = in.number();
        const int value_p = in.number(), value_q = in.number();
        const int by_ct = InterParamByCT(x, p, q, value_p, value_q);
        const int unguarded = InterParam_PCA(x, p, q, value_p, value_q);
        const bool boundary = IsCCTBoundary(x, p, q) == 1;
        require(boundary || IsCCTBoundary(x, p, q) == 0, "a boundary is 0 or 1");
        require(by_ct == (boundary ? value_q : unguarded), "a boundary gives the lower value");
        require(p != q || unguarded == 0, "an empty bracket gives 0");
        const auto small = [](int v) { return v > -30000 && v < 30000; };
        if (small(p) && small(q) && small(value_p) && small(value_q) && p != q) {
            require(InterParam_PCA(p, p, q, value_p, value_q) == value_p, "p has its value");
            require(InterParam_PCA(q, p, q, value_p, value_q) == value_q, "q has its value");
            require(!small(x) || InterParam_PCA(x, p, q, value_p, value_p) == value_p,
                    "equal values stay");
        }
        require(InterParamByLV(x, 0, value_p, value_q) == 0, "a zero base gives 0");
        InterParamByLV(x, p, value_p, value_q);

        const auto previous = static_cast<unsigned>(x), target = static_cast<unsigned>(p);
        const auto step = static_cast<unsigned>(q);
        const unsigned moved = IIR(previous, target, step);
        if (x >= 0 && p >= 0) {
            const auto distance = [](unsigned a, unsigned b) { return a > b ? a - b : b - a; };
            require(distance(moved, previous) <= step, "a value moves by at most the step");
            require(distance(moved, target) <= distance(previous, target), "and never away");
            require(step == 0 || moved == target || moved != previous, "a step moves");
        }
        const auto [low, high] = std::minmax(target, step);
        const unsigned clipped = Clip(previous, target, step);
        require(clipped >= low && clipped <= high, "clipped values lie between the bounds");
        require(clipped == previous || previous < low || previous > high, "others stay");
    } while (!in.ended());
    return 0;
}
