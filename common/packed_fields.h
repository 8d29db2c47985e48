#ifndef IMGTUNE_COMMON_PACKED_FIELDS_H
#define IMGTUNE_COMMON_PACKED_FIELDS_H

#include <cstddef>
#include <cstdint>

#include "common/arithmetic.h"

namespace imgtune {

/// Four fields of up to 8 bits in one word, below its top bit, in the form in which vectors take
/// them apart.
struct PackedFields {
    constexpr explicit PackedFields(const BitField (&fields)[4]) {
        for (std::size_t j = 0; j < 4; ++j) {
            low[j] = static_cast<std::int32_t>(fields[j].low);
            value_mask[j] = as_signed(fields[j].value_mask());
            word_mask[j] = as_signed(fields[j].word_mask());
            factor[j] = static_cast<float>(1U << fields[j].low);
            inverse_factor[j] = 1.0f / factor[j];
            all |= fields[j].word_mask();
        }
    }

    alignas(16) std::int32_t low[4] = {};
    alignas(16) std::int32_t value_mask[4] = {};
    alignas(16) std::int32_t word_mask[4] = {};
    alignas(16) float factor[4] = {};          ///< 2^low
    alignas(16) float inverse_factor[4] = {};  ///< 2^-low
    std::uint32_t all = 0;                     ///< the word's bits that belong to a field
};

}  // namespace imgtune

#endif
