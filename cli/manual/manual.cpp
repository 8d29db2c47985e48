// Writes the manual pages from what --help is made of: imgtune.1 and one a verb.
// Usage: imgtune-manual FOLDER VERSION DATE

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/program.h"

namespace {

constexpr const char* kEnvironment =
    ".TP\n.B IMGTUNE_PROPERTIES\nA file of NAME=VALUE lines, the debug properties that the library "
    "reads; see\n.BR imgtune\\-props (1).\n"
    ".TP\n.B NO_COLOR\nWhen set, nothing is coloured on a terminal.\n";

constexpr const char* kPageFile =
    ".TP\n.I share/imgtune/imgtune.html\nThe page, looked for beside the program's folder; "
    ".B \\-\\-page\nnames another.\n";

/// Text as roff prints it: no line of it is a request.
std::string plain(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (escaped.empty() || escaped.back() == '\n') {
            if (c == '.' || c == '\'') escaped += "\\&";
        }
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else if (c == '\'')
            escaped += "\\(aq";
        else
            escaped += c;
    }
    return escaped;
}

/// A help's closing words, by where they stand in a manual.
struct ClosingWords {
    std::string description, examples, exit_status;
};

/// Paragraphs of text, an example's lines under "Example:" with two blanks before them, and a
/// sentence that begins with "Exit status".
ClosingWords part(const std::string& footer) {
    ClosingWords words;
    std::string* into = &words.description;
    bool new_paragraph = false;
    const auto add = [&](std::string& to, const std::string& text) {
        if (new_paragraph && !to.empty()) to += ".PP\n";
        to += plain(text) + "\n";
        new_paragraph = false;
    };
    std::istringstream lines(footer);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t status = line.find("Exit status");
        if (line.empty()) {
            new_paragraph = true;
            into = &words.description;
        } else if (line == "Example:") {
            into = &words.examples;
            new_paragraph = false;
        } else if (into == &words.examples && line.compare(0, 2, "  ") == 0) {
            add(*into, line.substr(2));
        } else {
            if (into == &words.examples) into = &words.description;
            const std::string before = line.substr(0, status);
            if (!before.empty()) add(*into, before);
            if (status == std::string::npos) continue;
            into = &words.exit_status;
            add(*into, line.substr(status + std::string("Exit status ").size() +
                                   (line[status + std::string("Exit status").size()] == ':')));
        }
    }
    return words;
}

std::string options_of(const CLI::App& verb) {
    CLI::Formatter formatter;
    std::string positionals, options;
    for (const CLI::Option* option : verb.get_options()) {
        const bool positional = option->get_positional();
        std::string names = formatter.make_option_name(option, positional);
        if (const std::size_t comma = names.find(','); comma != std::string::npos)
            names.insert(comma + 1, " ");
        const std::string takes = formatter.make_option_opts(option);
        (positional ? positionals : options) += ".TP\n\\fB" + plain(names) + "\\fR" + plain(takes) +
                                                "\n" + plain(formatter.make_option_desc(option)) +
                                                "\n";
    }
    return positionals + options;
}

std::string see_also(const CLI::App& app, const CLI::App& page) {
    std::string text;
    const auto add = [&](const std::string& name) {
        text += (text.empty() ? "" : ",\n") + fmt::format(".BR {} (1)", plain(name));
    };
    if (&app != &page) {
        add("imgtune");
        return text + "\n";
    }
    for (const CLI::App* verb : app.get_subcommands({})) add("imgtune-" + verb->get_name());
    return text + "\n";
}

std::string verbs_of(const CLI::App& app) {
    std::string text;
    for (const CLI::App* verb : app.get_subcommands({})) {
        text += fmt::format(".TP\n.B {}\n{}\n", plain(verb->get_name()),
                            plain(verb->get_description()));
    }
    return text;
}

std::string usage_of(const CLI::App& app, const CLI::App& page) {
    std::string usage = CLI::Formatter().make_usage(
        &page, &app == &page ? app.get_name() : app.get_name() + " " + page.get_name());
    usage = usage.substr(usage.find(' ') + 1);
    return ".B " + plain(usage.substr(0, usage.find('\n'))) + "\n";
}

std::string manual_page(const CLI::App& app, const CLI::App& page, const std::string& version,
                        const std::string& date) {
    const std::string name =
        &app == &page ? app.get_name() : app.get_name() + "-" + page.get_name();
    std::string title = name;
    for (char& c : title) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const ClosingWords program = part(app.get_footer());
    ClosingWords own = part(page.get_footer());
    if (own.exit_status.empty()) own.exit_status = program.exit_status;

    std::string text = fmt::format(".TH {} 1 {} \"imgtune {}\"\n", plain(title), date, version);
    const auto heading = [&text](const char* words, const std::string& body) {
        if (!body.empty()) text += fmt::format(".SH {}\n{}", words, body);
    };
    heading("NAME", fmt::format("{} \\- {}\n", plain(name), plain(page.get_description())));
    heading("SYNOPSIS", usage_of(app, page));
    heading("DESCRIPTION", plain(page.get_description()) +
                               (page.get_description().back() == '.' ? "\n" : ".\n") +
                               (own.description.empty() ? "" : ".PP\n" + own.description));
    if (&app == &page) heading("COMMANDS", verbs_of(app));
    heading("OPTIONS", options_of(page));
    heading("EXIT STATUS", own.exit_status);
    heading("ENVIRONMENT", kEnvironment);
    heading("FILES", page.get_option_no_throw("--page") == nullptr ? "" : kPageFile);
    heading("EXAMPLES", own.examples.empty() ? "" : ".nf\n" + own.examples + ".fi\n");
    heading("SEE ALSO", see_also(app, page));
    return text;
}

void write(const std::string& folder, const std::string& name, const std::string& text) {
    std::ofstream file(folder + "/" + name + ".1", std::ios::binary);
    if (!(file << text).flush()) throw std::runtime_error(folder + "/" + name + ".1: not written");
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 4) throw std::runtime_error("usage: imgtune-manual FOLDER VERSION DATE");
    const std::string folder = argv[1], version = argv[2], date = argv[3];
    CLI::App app;
    std::function<int()> chosen;
    imgtune::cli::set_up(app, version, chosen);
    write(folder, "imgtune", manual_page(app, app, version, date));
    for (const CLI::App* verb : app.get_subcommands({}))
        write(folder, "imgtune-" + verb->get_name(), manual_page(app, *verb, version, date));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "imgtune-manual: %s\n", error.what());
    return 2;
}
