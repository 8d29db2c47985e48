#include "workbench/tuning/stall.h"

#include "ccm/codec.h"
#include "common/arithmetic.h"

namespace imgtune::workbench {

namespace {

constexpr std::int32_t kLargestCoefficient = 4095;

}  // namespace

std::int32_t worst_stall(const std::array<std::uint32_t, 3>& weights) {
    constexpr CoefficientCodec kCodec(3, 9);
    const std::int32_t newest = as_signed(weights[0]);
    const std::int32_t sum =
        wrap_add(wrap_add(newest, as_signed(weights[1])), as_signed(weights[2]));
    // An average that stands at 0 stays there while the share of the target is cut off.
    const auto stays = [&](std::int32_t target) {
        const std::int32_t average = divide_or_zero(wrap_mul(newest, target), sum);
        return (kCodec.encode(average) & as_unsigned(RowFields::kFieldBits)) == 0;
    };
    std::int32_t distance = 0;
    while (distance < kLargestCoefficient && stays(distance + 1)) ++distance;
    return distance;
}

}  // namespace imgtune::workbench
