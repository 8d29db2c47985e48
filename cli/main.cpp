#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "cli/verbs.h"
#include "workbench/text/bad_input.h"
#include "workbench/tuning/faults.h"

namespace {

std::string unknown_verb(const CLI::App& app, const std::string& name) {
    std::vector<std::string> verbs;
    for (const CLI::App* verb : app.get_subcommands({})) verbs.push_back(verb->get_name());
    const std::string near = imgtune::workbench::nearest_name(name, verbs);
    return "no verb '" + name + "'" +
           (near.empty() ? "; 'imgtune --help' lists them" : ", did you mean '" + near + "'?");
}

}  // namespace

int main(int argc, char** argv) {
    using namespace imgtune::cli;
    CLI::App app{"Tools for tunings of the camera's colour correction and colour engine."};
    app.name("imgtune");
    app.set_version_flag("--version", "imgtune " IMGTUNE_VERSION);
    app.require_subcommand(1);
    app.footer(
        "A TUNING is a YAML file or a folder of stored images; '-' is standard input or output.\n"
        "Exit status: 0 fine, 1 findings, 2 bad input, 3 errors found by check. 'imgtune VERB "
        "--help' shows an example.");

    Context context;
    add_check(app, context);
    add_convert(app, context);
    add_diff(app, context);
    add_explain(app, context);
    add_export(app, context);
    add_frames(app, context);
    add_import(app, context);
    add_new(app, context);
    add_pack(app, context);
    add_props(app, context);
    add_replay(app, context);
    add_sweep(app, context);
    add_unpack(app, context);
    add_verify(app, context);

    // 'help VERB' is 'VERB --help'.
    std::string verb_to_explain;
    CLI::App* help = app.add_subcommand("help", "Explain a verb");
    help->add_option("VERB", verb_to_explain, "the verb to explain; without one, all of them");
    help->callback([&] {
        context.run = [&] {
            const CLI::App* verb = &app;
            if (!verb_to_explain.empty()) {
                const auto verbs = app.get_subcommands(
                    [&](const CLI::App* each) { return each->get_name() == verb_to_explain; });
                if (verbs.empty()) throw BadInput(unknown_verb(app, verb_to_explain));
                verb = verbs.front();
            }
            std::fputs(verb->help(verb == &app ? "" : app.get_name()).c_str(), stdout);
            return int{kFine};
        };
    });

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (argc > 1 && app.get_subcommands().empty() && *argv[1] != '-') {
            std::fprintf(stderr, "imgtune: %s\n", unknown_verb(app, argv[1]).c_str());
            return kBadInput;
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
