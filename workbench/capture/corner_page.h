#ifndef IMGTUNE_WORKBENCH_CAPTURE_CORNER_PAGE_H
#define IMGTUNE_WORKBENCH_CAPTURE_CORNER_PAGE_H

#include <string>
#include <vector>

#include "workbench/capture/capture_study.h"

namespace imgtune::workbench {

/// A photograph to be clicked on.
struct ShownPicture {
    std::string name;  ///< as the table of corners shall call it
    Thumbnail picture;
};

/// A page of one file on which the corners of the chart are clicked; it writes the table that
/// read_corners takes, in pixels of the full picture.
std::string corner_page(const std::vector<ShownPicture>& pictures);

}  // namespace imgtune::workbench

#endif
