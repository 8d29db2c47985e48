#include <imgtune/ccm.h>

#include "ccm/codec.h"
#include "ccm/matrix_rows.h"

void seperate_RWB_CCM_by_ratio(NSIspTuning::ISP_NVRAM_CCM_T* image, float ratio, int i4IntBits,
                               int i4FracBits) {
    using imgtune::kCoefficientFields;
    NSIspTuning::ISP_CCM_T scaled;
    for (std::size_t k = 0; k < 9; ++k) {
        const auto field = static_cast<float>(kCoefficientFields[k].read(image->u4Word));
        scaled.i4Coef[k] = imgtune::as_signed(imgtune::truncate_to_uint32(field * ratio));
    }
    imgtune::close_rows(scaled, imgtune::as_signed(imgtune::shift_left(1, i4FracBits)));

    const std::uint32_t limit = imgtune::shift_left(1, imgtune::wrap_add(i4IntBits, i4FracBits));
    for (std::size_t k = 0; k < 9; ++k) {
        const imgtune::BitField& field = kCoefficientFields[k];
        const std::uint32_t value = imgtune::as_unsigned(scaled.i4Coef[k]) & field.value_mask();
        field.write(image->u4Word, value >= limit ? limit - 1 : value);
    }
}
