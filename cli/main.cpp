#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "cli/common.h"
#include "cli/program.h"
#include "cli/verbs.h"
#include "workbench/files/output_file.h"
#include "workbench/findings/faults.h"
#include "workbench/text/bad_input.h"
#include "workbench/text/shown_text.h"

namespace {

constexpr const char* kFirstSteps =
    "imgtune: a verb is missing. First steps:\n"
    "  imgtune new -o phone.yaml                      a commented tuning to start from\n"
    "  imgtune check phone.yaml                       every fault of it\n"
    "  imgtune replay phone.yaml walk.csv --summary   what it does with the light of a log\n"
    "  imgtune explain phone.yaml --lv 35 --cct 4200 --gain 780,512,1010\n"
    "                                                 why a frame gets its registers\n"
    "  imgtune view phone.yaml walk.csv               the same as pictures\n"
    "'imgtune --help' lists all verbs, 'imgtune VERB --help' explains one.\n";

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
    CLI::App app;
    std::function<int()> chosen;
    set_up(app, IMGTUNE_VERSION, chosen);
    app.failure_message(misuse);

    std::string verb_to_explain;
    add_help(app, verb_to_explain, chosen);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (argc <= 1) {
            std::fputs(kFirstSteps, stderr);
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
    } catch (const ClosedPipe&) {
        _exit(kFine);  // as 'head' wants it; what is buffered has no reader
    } catch (const BadInput& error) {
        say(std::string("imgtune: ") + error.what() + "\n");
    } catch (const std::exception& error) {
        say(std::string("imgtune: unexpected: ") + error.what() + "\n");
    }
    return kBadInput;
}
