#include <sstream>

#include "input.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/yaml_io.h"

using namespace imgtune::fuzz;
using namespace imgtune::workbench;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    Faults faults;
    const Tuning tuning = read_yaml(in, "tuning.yaml", faults);
    if (faults.has_errors()) return 0;

    // What can be read can be written and read again, bit for bit.
    for (const bool comments : {false, true}) {
        std::stringstream text;
        write_yaml(text, tuning, comments);
        Faults none;
        const Tuning again = read_yaml(text, "again.yaml", none);
        require(!none.has_errors(), "a written tuning is readable");
        require(same(again.ccm, tuning.ccm) && same(again.color, tuning.color) &&
                    same(again.pca, tuning.pca) && again.name == tuning.name &&
                    again.has_ccm == tuning.has_ccm && again.has_color == tuning.has_color &&
                    again.caller.weights == tuning.caller.weights &&
                    again.caller.ct_grid == tuning.caller.ct_grid,
                "a tuning comes back as it was written");
    }
    return 0;
}
