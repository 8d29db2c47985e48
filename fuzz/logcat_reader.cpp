// A device's log, and the library held against what it claims to have traced.

#include <optional>
#include <string>

#include "input.h"
#include "workbench/studies/verify.h"
#include "workbench/trace/traced_frames.h"

using namespace imgtune::fuzz;
using namespace imgtune::workbench;

namespace {

const Tuning tuning = [] {
    Tuning both;
    both.has_ccm = both.has_color = true;
    return both;
}();

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    MemorySource source(text);
    TracedFrames frames(source, std::nullopt);
    std::optional<Verifier> verifier;  // most inputs have no frame
    std::string csv = traced_frame_header();
    std::uint64_t count = 0;
    for (TracedFrame frame; frames.next(frame); verifier->add(frame)) {
        if (!verifier) verifier.emplace(tuning);
        csv += traced_frame_line(++count, frame);
    }
    if (count == 0) return 0;
    MemorySource written(csv);
    FrameLog log("frames.csv", written);
    std::uint64_t read = 0;
    for (Frame frame; log.next(frame);) ++read;
    require(read == count, "a frame log made of a trace is readable");
    return 0;
}
