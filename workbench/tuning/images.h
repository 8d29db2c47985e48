#ifndef IMGTUNE_WORKBENCH_TUNING_IMAGES_H
#define IMGTUNE_WORKBENCH_TUNING_IMAGES_H

#include <string>
#include <vector>

#include "workbench/findings/faults.h"
#include "workbench/tuning/tuning.h"

// A tuning as stored: a folder with little-endian images of the records.
//   ccm.bin      1102 words, ISP_NVRAM_MULTI_CCM_STRUCT
//   color.bin    4 slots x 5 CT indices x 117 words, slot-major
//   pca.bin      4 slots x 17 words
//   caller.yaml  name, caller settings, kelvin of the tuned points; defaults without it
// ccm.bin may be missing, and color.bin together with pca.bin.

namespace imgtune::workbench {

/// A file of such a folder.
struct StoredImage {
    std::string name;
    std::string bytes;
};

/// The names that files of such a folder have.
std::vector<std::string> stored_image_names();

/// The tuning that these files hold; every fault is added to `faults`, under `folder`.
Tuning from_images(const std::vector<StoredImage>& images, const std::string& folder,
                   Faults& faults);

/// One of these files by itself, told by its size: its fields, one a line, with their paths. Empty
/// for bytes that are none of them.
std::string stored_fields(const std::string& bytes);

/// The files of a tuning: its parts, and caller.yaml.
std::vector<StoredImage> to_images(const Tuning& tuning);

}  // namespace imgtune::workbench

#endif
