// Every boundary of every division that the narrow blend makes by multiplying, or in single
// precision: where a quotient first reaches a value and the sum just before. Prints what it has
// seen; a difference from integer division ends it. Takes some seconds.

#include <cstdio>
#include <cstdlib>

#include "common/vector_plain.h"

namespace {

using namespace imgtune;

long long seen = 0;

void check(std::int32_t found, std::int32_t expected, std::int32_t dividend, std::int32_t divisor) {
    ++seen;
    if (found == expected) return;
    std::printf("%d / %d gives %d\n", dividend, divisor, found);
    std::exit(1);
}

void report(const char* what) {
    std::printf("%-52s %lld quotients exact\n", what, seen);
    seen = 0;
}

/// `divide` of the sums at the boundaries of quotients 0..highest, every narrow divisor.
template <class Divide>
void prove(const char* what, std::int32_t highest, const Divide& divide) {
    for (std::int32_t divisor = 1; divisor <= kNarrowDivisor; ++divisor) {
        const NarrowScale scale(divisor, 0);
        const std::int32_t scaled = scale.weight_high;
        for (std::int32_t quotient = 0; quotient <= highest; ++quotient) {
            const std::int32_t first = quotient * scaled;
            check(divide(scale, first), quotient, first, scaled);
            const std::int32_t last = first + scaled - scaled / divisor;
            if (quotient < highest) check(divide(scale, last), quotient, last, scaled);
        }
    }
    report(what);
}

}  // namespace

int main() {
    prove("blended bytes, by a reciprocal in single precision", 255,
          [](const NarrowScale& scale, std::int32_t sum) {
              return plain::divide_bytes(scale, {{sum, 0, 0, 0}}).v[0];
          });
    prove("blended levels, by multiplying and shifting", kHighestLevel,
          [](const NarrowScale& scale, std::int32_t sum) { return scale.divide(sum); });
    for (std::int32_t run = 1; run <= 255; ++run) {
        for (std::int32_t rise = 0; rise <= 65535; ++rise) {
            const float slope = static_cast<float>(rise) / static_cast<float>(run);
            check(static_cast<std::int32_t>(slope), rise / run, rise, run);
        }
    }
    report("slopes, in single precision");
    return 0;
}
