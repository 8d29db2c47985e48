#ifndef IMGTUNE_WORKBENCH_FILES_CAPTURE_FILES_H
#define IMGTUNE_WORKBENCH_FILES_CAPTURE_FILES_H

#include <string>
#include <vector>

#include "workbench/capture/study_captures.h"
#include "workbench/files/picture_file.h"

namespace imgtune::workbench {

/// Photographs of a chart and what goes with them, by their files.
struct CaptureFiles {
    std::vector<std::string> captures;  ///< pictures, or CSV of 24 means; one kelvin is one light
    std::vector<std::string> flats;     ///< by the kelvin in the name; one alone: for every light
    std::string dark;
    std::string corners;         ///< table, see read_corners
    std::string kelvins;         ///< table, see read_kelvins; goes before names
    std::vector<double> kelvin;  ///< one a capture; goes before both
    PictureChoices pictures;
};

/// All files that are read, for the guard of the output.
std::vector<std::string> files_of(const CaptureFiles& files);

/// Reads one photograph after the other and studies them. Throws BadInput for a file that cannot be
/// read; what is wrong with what it shows is told in `faults`.
CaptureStudy study_capture_files(const CaptureFiles& files, const CaptureChoices& choices,
                                 Faults& faults);

/// A page on which the corners in the captures are clicked. Throws BadInput.
std::string corner_page_of(const CaptureFiles& files);

/// A reference from a file. Throws BadInput, or tells its faults.
ChartReference read_reference_file(const std::string& path, Faults& faults);

}  // namespace imgtune::workbench

#endif
