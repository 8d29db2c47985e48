// A device's log, and the library held against what it claims to have traced.

#include <string>

#include "input.h"
#include "workbench/frames/traced_frames.h"
#include "workbench/studies/verify.h"

using namespace imgtune::fuzz;
using namespace imgtune::workbench;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    MemorySource source(text);
    TracedFrames frames(source, std::nullopt);
    Tuning tuning;
    tuning.has_ccm = tuning.has_color = true;
    Verifier verifier(tuning);
    std::string csv = traced_frame_header();
    std::uint64_t count = 0;
    for (TracedFrame frame; frames.next(frame); verifier.add(frame)) {
        csv += traced_frame_line(++count, frame);
    }
    MemorySource written(csv);
    FrameLog log("frames.csv", written);
    std::uint64_t read = 0;
    for (Frame frame; log.next(frame);) ++read;
    require(read == count, "a frame log made of a trace is readable");
    return 0;
}
