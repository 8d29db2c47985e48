// Every reader of foreign text. The first byte of an input names the reader, the rest is its text.

#include <string>

#include "input.h"
#include "workbench/calibration/import.h"
#include "workbench/calibration/reader.h"
#include "workbench/frames/frame_log.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/yaml_io.h"

using namespace imgtune::fuzz;
using namespace imgtune::workbench;

namespace {

void tuning(const std::string& text) {
    Faults faults;
    read_yaml(text, "tuning.yaml", faults);
}

void frames(const std::string& text) {
    MemorySource source(text);
    FrameLog log("frames.csv", source);
    for (Frame frame; log.next(frame);) continue;
    require(log.bytes_read() == text.size(), "a log without a fault is read to its end");
}

void calibration(const std::string& text) {
    Faults faults;
    ImportChoices choices;
    choices.most_cts = 3;
    choices.fit = CcmFit::points;
    const Import import = import_calibration(read_calibration(text, "calibration", faults), choices,
                                             Tuning{}, faults);
    require(faults.has_errors() == import.kept.empty(), "a tuning comes out, or an error is told");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    try {
        if (*data == 't') tuning(text);
        if (*data == 'f') frames(text);
        if (*data == 'c') calibration(text);
    } catch (const BadInput&) {
    }
    return 0;
}
