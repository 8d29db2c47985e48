#include <sys/mman.h>
#include <unistd.h>

#include "frames/frame_log.h"
#include "input.h"
#include "support/bad_input.h"

using namespace imgtune::fuzz;
using namespace imgtune::tool;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int file = memfd_create("frames", 0);
    require(file >= 0 && write(file, data, size) == static_cast<ssize_t>(size) &&
                lseek(file, 0, SEEK_SET) == 0,
            "the log is in memory");
    try {
        FrameLog log("frames.csv", file);
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
    close(file);
    return 0;
}
