#include "input.h"
#include "workbench/frames/frame_log.h"
#include "workbench/text/bad_input.h"

using namespace imgtune::fuzz;
using namespace imgtune::workbench;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemorySource source({reinterpret_cast<const char*>(data), size});
    try {
        FrameLog log("frames.csv", source);
        Frame frame;
        std::uint64_t last = 0;
        while (log.next(frame)) {
            require(log.line() > last, "lines rise");
            last = log.line();
        }
        require(!log.next(frame), "the end stays the end");
        require(log.bytes_read() == size, "a log without a fault is read to its end");
    } catch (const BadInput& fault) {
        require(std::strstr(fault.what(), "frames.csv") != nullptr, "a fault names its file");
    }
    return 0;
}
