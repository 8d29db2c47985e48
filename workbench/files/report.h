#ifndef IMGTUNE_WORKBENCH_FILES_REPORT_H
#define IMGTUNE_WORKBENCH_FILES_REPORT_H

#include <optional>
#include <string>
#include <vector>

// The page with a tuning and a log inside.

namespace imgtune::workbench {

/// A file as the page takes it.
struct ReportFile {
    std::string name;
    std::string text;
};

/// A tuning: its YAML text as it stands, or that of its stored images. Throws BadInput when it
/// cannot be read.
ReportFile tuning_for_report(const std::string& path);

/// A frame log. Throws BadInput where it cannot be read, or has no frames. `ahead`: what of its
/// text was read before.
ReportFile frames_for_report(const std::string& path, const std::string& ahead = {});

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
