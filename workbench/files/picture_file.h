#ifndef IMGTUNE_WORKBENCH_FILES_PICTURE_FILE_H
#define IMGTUNE_WORKBENCH_FILES_PICTURE_FILE_H

#include <cstddef>
#include <optional>
#include <string>

#include "workbench/capture/picture.h"

// Photographs in files: raw files of cameras (LibRaw), TIFF and PNG with 16 bits a sample.

namespace imgtune::workbench {

/// What a file does not say, or says wrongly.
struct PictureChoices {
    std::optional<double> black;  ///< level of black, in place of the file's
    std::optional<double> white;  ///< level at which samples clip, in place of the file's
    std::string order;            ///< of a mosaic in TIFF or PNG: RGGB, BGGR, GRBG or GBRG
};

/// Limits that hold before anything is allocated for samples.
inline constexpr std::size_t kLargestPictureFile = std::size_t{1} << 30U;  // bytes
inline constexpr std::size_t kMostPictureSamples = std::size_t{1} << 29U;
inline constexpr int kMostReadingSeconds = 60;  ///< of a raw file

/// A photograph. Throws BadInput with the file, the reason and what to do.
Picture read_picture(const std::string& path, const PictureChoices& choices);

/// The same of bytes in memory.
Picture decode_picture(const std::string& bytes, const std::string& name,
                       const PictureChoices& choices);

}  // namespace imgtune::workbench

#endif
