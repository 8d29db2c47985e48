#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "cli/verbs.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/faults.h"

int main(int argc, char** argv) {
    using namespace imgtune::cli;
    CLI::App app{"Tools for tunings of the camera's colour correction and colour engine."};
    app.name("imgtune");
    app.set_version_flag("--version", "imgtune " IMGTUNE_VERSION);
    app.require_subcommand(1);
    app.footer(
        "A TUNING is a YAML file or a folder of stored images; '-' is standard input or output.\n"
        "Exit status: 0 fine, 1 findings, 2 bad input. 'imgtune VERB --help' shows an example.");

    Context context;
    add_check(app, context);
    add_diff(app, context);
    add_explain(app, context);
    add_new(app, context);
    add_pack(app, context);
    add_replay(app, context);
    add_sweep(app, context);
    add_unpack(app, context);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (argc > 1 && app.get_subcommands().empty() && *argv[1] != '-') {
            std::vector<std::string> verbs;
            for (const CLI::App* verb : app.get_subcommands(nullptr)) {
                verbs.push_back(verb->get_name());
            }
            const std::string near = nearest_name(argv[1], verbs);
            std::fprintf(stderr, "imgtune: no verb '%s'%s\n", argv[1],
                         near.empty() ? "" : (", did you mean '" + near + "'?").c_str());
        }
        return app.exit(error) == 0 ? kFine : kBadInput;
    }
    try {
        return context.run();
    } catch (const BadInput& error) {
        std::fprintf(stderr, "imgtune: %s\n", error.what());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "imgtune: unexpected: %s\n", error.what());
    }
    return kBadInput;
}
