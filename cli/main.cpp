#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "cli/verbs.h"
#include "workbench/findings/faults.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/shown_text.h"

namespace {

std::string unknown_verb(const CLI::App& app, const std::string& name) {
    std::vector<std::string> verbs;
    for (const CLI::App* verb : app.get_subcommands({})) verbs.push_back(verb->get_name());
    const std::string near = imgtune::workbench::nearest_name(name, verbs);
    return "no verb '" + imgtune::workbench::shown_text(name) + "'" +
           (near.empty() ? "; 'imgtune --help' lists them" : ", did you mean '" + near + "'?");
}

/// What is wrong with the options; it quotes them.
std::string misuse(const CLI::App*, const CLI::Error& error) {
    return imgtune::workbench::shown_text(error.what()) +
           "\nRun with --help for more information.\n";
}

/// 'help VERB' is 'VERB --help'.
void add_help(CLI::App& app, std::string& verb_to_explain, std::function<int()>& chosen) {
    CLI::App* help = app.add_subcommand("help", "Explain a verb");
    help->add_option("VERB", verb_to_explain, "the verb to explain; without one, all of them");
    help->callback([&app, &verb_to_explain, &chosen] {
        chosen = [&app, &verb_to_explain] {
            const CLI::App* verb = &app;
            if (!verb_to_explain.empty()) {
                const auto named = app.get_subcommands(
                    [&](const CLI::App* each) { return each->get_name() == verb_to_explain; });
                if (named.empty())
                    throw imgtune::workbench::BadInput(unknown_verb(app, verb_to_explain));
                verb = named.front();
            }
            std::fputs(verb->help(verb == &app ? "" : app.get_name()).c_str(), stdout);
            return int{imgtune::cli::kFine};
        };
    });
}

}  // namespace

int main(int argc, char** argv) {
    using namespace imgtune::cli;
    CLI::App app{"Tools for tunings of the camera's colour correction and colour engine."};
    app.name("imgtune");
    app.set_version_flag("--version", "imgtune " IMGTUNE_VERSION);
    app.require_subcommand(1);
    app.failure_message(misuse);
    app.footer(
        "A TUNING is a YAML file or a folder of stored images; '-' is standard input or output.\n"
        "Exit status: 0 fine, 1 findings, 2 bad input, 3 errors found by check. 'imgtune VERB "
        "--help' shows an example.");

    std::function<int()> chosen;
    const Verbs verbs(app, chosen);
    add_check(verbs);
    add_convert(verbs);
    add_diff(verbs);
    add_explain(verbs);
    add_export(verbs);
    add_frames(verbs);
    add_import(verbs);
    add_new(verbs);
    add_pack(verbs);
    add_props(verbs);
    add_replay(verbs);
    add_report(verbs);
    add_sweep(verbs);
    add_unpack(verbs);
    add_verify(verbs);
    add_view(verbs);

    std::string verb_to_explain;
    add_help(app, verb_to_explain, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (argc <= 1) {
            std::fputs("imgtune: name a verb; 'imgtune --help' lists them\n", stderr);
            return kBadInput;
        }
        if (app.get_subcommands().empty() && *argv[1] != '-') {
            std::fprintf(stderr, "imgtune: %s\n", unknown_verb(app, argv[1]).c_str());
            return kBadInput;
        }
        return app.exit(error) == 0 ? kFine : kBadInput;
    }
    try {
        return chosen();
    } catch (const BadInput& error) {
        std::fprintf(stderr, "imgtune: %s\n", error.what());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "imgtune: unexpected: %s\n", error.what());
    }
    return kBadInput;
}
