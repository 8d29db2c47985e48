#ifndef IMGTUNE_WORKBENCH_FILES_REPORT_H
#define IMGTUNE_WORKBENCH_FILES_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The page with a tuning and a log inside.

namespace imgtune::workbench {

/// A file as the page takes it.
struct ReportFile {
    std::string name;
    std::string text;
    std::uint64_t frame = 1;  ///< of a log, that the page begins with
};

/// A tuning: its YAML text as it stands, or that of its stored images. Throws BadInput when it
/// cannot be read.
ReportFile tuning_for_report(const std::string& path);

/// A frame log, shown from `frame` on. Throws BadInput where it cannot be read, has no frames, or
/// not so many. `ahead`: what of its text was read before.
ReportFile frames_for_report(const std::string& path, const std::string& ahead = {},
                             std::uint64_t frame = 1);

/// Where the page stands that belongs to this program: installed, or in the build's folder. Throws
/// BadInput when it is nowhere.
std::string find_page();

/// The page of that file, with these inside; without frames, it follows the live log of the server
/// that hands it out. Throws BadInput when it is no such page.
std::string make_report(const std::string& page, const ReportFile& tuning,
                        const std::optional<ReportFile>& against,
                        const std::optional<ReportFile>& frames);

}  // namespace imgtune::workbench

#endif
