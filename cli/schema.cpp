#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/common.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/files/output_guard.h"
#include "workbench/json/judging.h"
#include "workbench/json/tuning_schema.h"

namespace imgtune::cli {

void add_schema(const Verbs& verbs) {
    struct Options {
        std::string of = "tuning";
        std::string output = "-";
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    const Verb verb =
        verbs.add("schema", "Write what an editor needs to complete and check a tuning, or limits");
    verb.option("OF", options->of, "what to describe").shows_default().one_of({"tuning", "limits"});
    verb.option("-o,--output", options->output, "JSON file; - is standard output").shows_default();
    verb.flag("--force", options->force, "replace a file that holds something");
    verb.footer(
        "The schema (JSON Schema 2020-12) knows the keys, units and ranges of single values; what\n"
        "depends on others 'imgtune check' tells. An editor with a YAML language server takes it\n"
        "from a first line such as: # yaml-language-server: $schema=tuning.schema.json\n"
        "\n"
        "Example:\n"
        "  imgtune schema -o tuning.schema.json");
    verb.run([options]() -> int {
        if (!options->force) guard_output(options->output, {}, Replaces::nothing);
        write_file(options->output,
                   dumped(options->of == "limits" ? limits_schema() : tuning_schema()));
        return kFine;
    });
}

}  // namespace imgtune::cli
