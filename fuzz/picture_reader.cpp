// Readers of photographs and of the tables that go with them. The first byte of an input names the
// form, the rest is the file.

#include <string>

#include "input.h"
#include "workbench/capture/capture_tables.h"
#include "workbench/capture/chart_reference.h"
#include "workbench/files/picture_file.h"
#include "workbench/text/bad_input.h"

using namespace imgtune::fuzz;
using namespace imgtune::workbench;

namespace {

void picture(const std::string& bytes, const char* name) {
    const Picture read = decode_picture(bytes, name, {{}, {}, "RGGB"});
    require(read.samples.size() == read.width * read.height * read.channels,
            "a picture has all of its samples");
    require(read.left + read.lit_width <= read.width && read.top + read.lit_height <= read.height,
            "light falls inside the picture");
    require(read.black.levels.size() == read.black.rows * read.black.columns,
            "the pattern of black is whole");
}

void tables(const std::string& text) {
    Faults faults;
    read_corners(text, "corners.csv", faults);
    read_kelvins(text, "kelvins.csv", faults);
    read_reference(text, "reference.csv", faults);
    read_patch_means(text, "means.csv", faults);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        if (*data == 'r') picture(bytes, "fuzz.dng");
        if (*data == 't') picture(bytes, "fuzz.tif");
        if (*data == 'p') picture(bytes, "fuzz.png");
        if (*data == 'c') tables(bytes);
    } catch (const BadInput&) {
    }
    return 0;
}
