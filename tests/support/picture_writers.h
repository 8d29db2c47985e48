#ifndef IMGTUNE_TESTS_SUPPORT_PICTURE_WRITERS_H
#define IMGTUNE_TESTS_SUPPORT_PICTURE_WRITERS_H

#include <string>
#include <vector>

#include "workbench/capture/picture.h"

namespace imgtune::workbench {

/// What a DNG says of a picture besides its samples.
struct DngTags {
    bool says_white = true;
    std::vector<double> black_cell;  ///< four levels of a 2 x 2 cell of what is lit; empty: one
    int orientation = 1;             ///< for viewers
};

/// Each writes a file.
void write_dng(const std::string& path, const Picture& picture, const DngTags& tags = {});
void write_tiff(const std::string& path, const Picture& picture, bool tiled = false);
void write_png(const std::string& path, const Picture& picture);

}  // namespace imgtune::workbench

#endif
