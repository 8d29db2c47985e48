#ifndef IMGTUNE_TOOLS_TUNING_IMAGES_H
#define IMGTUNE_TOOLS_TUNING_IMAGES_H

#include <string>

#include "tuning/faults.h"
#include "tuning/tuning.h"

// A tuning as stored: a folder with little-endian images of the records.
//   ccm.bin      1102 words, ISP_NVRAM_MULTI_CCM_STRUCT
//   color.bin    4 slots x 5 CT indices x 117 words, slot-major
//   pca.bin      4 slots x 17 words
//   caller.yaml  name and caller settings; defaults without it
// ccm.bin may be missing, and color.bin together with pca.bin.

namespace imgtune::tool {

/// Reads what the folder holds; every fault is added to `faults`.
Tuning read_images(const std::string& folder, Faults& faults);

/// Writes every file beside its place first and renames them last. Throws BadInput; a file that
/// stood there before is then still whole.
void write_images(const std::string& folder, const Tuning& tuning);

}  // namespace imgtune::tool

#endif
