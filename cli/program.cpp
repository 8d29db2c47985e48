#include "cli/program.h"

#include <CLI/CLI.hpp>

#include "cli/verbs.h"

namespace imgtune::cli {

void set_up(CLI::App& app, const std::string& version, std::function<int()>& chosen) {
    app.name("imgtune");
    app.description("Tools for tunings of the camera's colour correction and colour engine");
    app.set_version_flag("--version", "imgtune " + version);
    app.require_subcommand(1);
    app.footer(
        "A TUNING is a YAML file or a folder of stored images; '-' is standard input or output.\n"
        "'imgtune VERB --help' shows an example.\n"
        "Exit status: 0 fine, 1 findings, 2 bad input, 3 errors found by check.");

    const Verbs verbs(app, chosen);
    add_calibrate(verbs);
    add_check(verbs);
    add_convert(verbs);
    add_diff(verbs);
    add_explain(verbs);
    add_export(verbs);
    add_frames(verbs);
    add_import(verbs);
    add_judge(verbs);
    add_new(verbs);
    add_pack(verbs);
    add_props(verbs);
    add_replay(verbs);
    add_report(verbs);
    add_schema(verbs);
    add_smooth(verbs);
    add_sweep(verbs);
    add_unpack(verbs);
    add_verify(verbs);
    add_view(verbs);
    add_watch(verbs);
}

}  // namespace imgtune::cli
