#ifndef IMGTUNE_WORKBENCH_TUNING_CHECKED_H
#define IMGTUNE_WORKBENCH_TUNING_CHECKED_H

#include <cstddef>
#include <string>

#include "ccm/codec.h"
#include "workbench/tuning/check.h"
#include "workbench/tuning/fields.h"

// What the checks of a tuning share, and the checks themselves, one file a subject.

namespace imgtune::workbench {

inline constexpr std::int32_t kPolynomialMethod = 1;
inline constexpr std::int32_t kBlendMethod = 2;

/// A tuning under check: what of it the library will use, and the way to report findings.
class Checked {
  public:
    Checked(const Tuning& tuning, Faults& faults);

    const Tuning& tuning() const { return tuning_; }
    const ISP_NVRAM_MULTI_CCM_STRUCT& ccm() const { return tuning_.ccm; }

    /// Left out where the path, or what stands below or above it, was not read.
    void report(Fault fault);
    /// Nothing that follows from the value at `path` is a finding from here on.
    void suppress(const std::string& path) { faults_.suppress(path); }
    bool is_suppressed(const std::string& path) const { return faults_.is_suppressed(path); }

    /// The library takes matrices from the rows: method and number of CTs make sense.
    bool rows_matter() const { return rows_matter_; }
    /// The library takes gains and matrices from this row.
    bool is_row_used(std::size_t row) const;
    /// The points that a row holds, up to the last that is not zero.
    std::size_t filled_points(std::size_t row) const;
    /// Those of them that i4NumCT counts.
    std::size_t points(std::size_t row) const;
    /// A used row without any gain, or when blending without any matrix.
    bool is_row_missing(std::size_t row) const;
    bool has_gains(std::size_t row) const;
    bool has_matrices(std::size_t row) const;
    bool has_matrix(std::size_t row, std::size_t ct) const;
    /// Decoded as the library decodes it.
    NSIspTuning::ISP_CCM_T matrix(std::size_t row, std::size_t ct) const;

    /// The caller's bits fit a coefficient's field; otherwise coefficients mean nothing.
    bool codec_fits() const;
    const CoefficientCodec& codec() const { return codec_; }
    /// A coefficient of 1.0.
    std::int32_t unity() const;

    bool uses_outdoor() const { return tuning_.pca[kSlotNormal].u4OutdoorEnable != 0; }

  private:
    const Tuning& tuning_;
    Faults& faults_;
    CoefficientCodec codec_;
    bool rows_matter_;
};

std::string row_path(std::size_t row);                    ///< "ccm.rows.normal"
std::string point_path(std::size_t row, std::size_t ct);  ///< "ccm.rows.normal.2"
std::string slot_path(std::size_t slot, const char* field);
std::string image_path(std::size_t slot, std::size_t ct);

void check_caller(Checked& checked);
void check_ranges(Checked& checked);
void check_rows(Checked& checked);
void check_polynomials(Checked& checked);
void check_smoothing(Checked& checked);
void check_images(Checked& checked);

}  // namespace imgtune::workbench

#endif
