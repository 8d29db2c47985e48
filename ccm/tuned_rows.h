#ifndef IMGTUNE_CCM_TUNED_ROWS_H
#define IMGTUNE_CCM_TUNED_ROWS_H

#include <algorithm>
#include <cstdint>

namespace imgtune {

inline constexpr std::int32_t kLvRows = 8;
inline constexpr std::int32_t kCtIndices = 8;

inline constexpr std::int32_t kNormalRow = 0;
inline constexpr std::int32_t kLowLightRow = 1;
inline constexpr std::int32_t kFlashRow = 6;

// Whatever a tuning or a caller says, an access stays inside the record.
constexpr std::int32_t lv_row_in_record(std::int32_t row) {
    return std::clamp(row, 0, kLvRows - 1);
}
constexpr std::int32_t ct_index_in_record(std::int32_t ct) {
    return std::clamp(ct, 0, kCtIndices - 1);
}
constexpr std::int32_t tuned_ct_count(std::int32_t count) {
    return std::clamp(count, 1, kCtIndices);
}

// CT positions, beside the CT indices 1..N - 2.
inline constexpr std::int32_t kBelowLowestCt = -1;
inline constexpr std::int32_t kAboveHighestCt = 10;  ///< this or more; GainProjection adds N

}  // namespace imgtune

#endif
