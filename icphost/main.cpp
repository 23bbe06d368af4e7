// icphost: loads the plug-in as the host application does, offers its script
// functions, and runs scripts against the simulated USB and serial rig.
//
//   icphost                             a session on a terminal, else the
//                                       script on standard input
//   icphost repl                        an interactive session
//   icphost functions [PATTERN] [--json | --markdown]
//                                       the script functions and their help
//   icphost help NAME                   one function's help
//   icphost run FILE                    run a script ("-": standard input)
//   icphost -e STATEMENT [-e ...]       run statements
//   icphost serve [--port P] [--link L] the emulated modules on a pseudo-terminal
//
// Options: --plugin PATH, --rig FILE (JSON), --trace.
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <icp_platform/format.h>

#if defined(_WIN32)
#  include <io.h>
#else
#  include <unistd.h>
#endif

#include "icphost/listing.h"
#include "icphost/plugin.h"
#include "icphost/script.h"
#include "icphost/serve.h"
#include "icphost/session.h"
#include "icphost/simulation.h"

namespace {

// Exit statuses besides 0 (success) and CLI11's own for a bad command line.
constexpr int kStatementFailed = 1;
constexpr int kSetupFailed = 2;

bool stdin_is_terminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stdin)) != 0;
#else
    return isatty(STDIN_FILENO) != 0;
#endif
}

std::string join(const std::vector<std::string>& parts, const char* separator) {
    std::string out;
    for (std::size_t i = 0; i < parts.size(); ++i) out += (i ? separator : "") + parts[i];
    return out;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Loads the ICP DAS plug-in as the host application does and runs scripts "
                 "against simulated USB and serial modules.",
                 "icphost"};
    app.fallthrough();
    // The same command line everywhere: "/path" is a file, never an option.
    app.allow_windows_style_options(false);
    app.require_subcommand(0, 1);

    std::string plugin_path;
    std::string rig_path;
    bool trace = false;
    std::vector<std::string> statements;
    app.add_option("--plugin", plugin_path, "The plug-in library (default: the one beside icphost)");
    app.add_option("--rig", rig_path, "A JSON rig of simulated modules (default: the built-in rig)")
        ->check(CLI::ExistingFile);
    app.add_flag("--trace", trace, "Print every SDK call and DCON line as it happens");
    app.add_option("-e", statements,
                   "Run a statement; repeat -e for more, they run in order and share variables")
        ->allow_extra_args(false);

    auto* functions_cmd = app.add_subcommand("functions", "List the script functions and their help, by group");
    bool json = false;
    bool markdown = false;
    std::string pattern;
    functions_cmd->add_option("PATTERN", pattern,
                              "Only names holding this text, or matching it with * and ?");
    auto* json_flag = functions_cmd->add_flag("--json", json, "One JSON object per function: export, name, help");
    functions_cmd->add_flag("--markdown", markdown, "A Markdown reference (docs/functions.md)")->excludes(json_flag);

    auto* repl_cmd = app.add_subcommand("repl", "An interactive session");

    auto* help_cmd = app.add_subcommand("help", "Show the help of one script function");
    std::vector<std::string> help_words;
    help_cmd->add_option("NAME", help_words, "Its script name (blanks allowed) or export name")
        ->required();

    auto* run_cmd = app.add_subcommand("run", "Run a script file");
    std::string script_path;
    run_cmd->add_option("FILE", script_path, "The script; - for standard input")->required();

    auto* serve_cmd = app.add_subcommand(
        "serve", "Put the rig's emulated serial modules behind a pseudo-terminal (Linux); prints its path");
    std::string serve_port;
    std::string serve_link;
    serve_cmd->add_option("--port", serve_port, "The emulated port to serve (default: the rig's first)");
    serve_cmd->add_option("--link", serve_link, "Keep a symbolic link to the device at this path");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }
    const bool any_command = !app.get_subcommands().empty();
    if (!statements.empty() && any_command) {
        std::cerr << "icphost: -e cannot be combined with a command\n";
        return kSetupFailed;
    }
    // Without a command: a session on a terminal, else a script piped in.
    const bool session = repl_cmd->parsed() || (statements.empty() && !any_command && stdin_is_terminal());
    const bool from_stdin = (run_cmd->parsed() && script_path == "-") ||
                            (statements.empty() && !any_command && !session);

    std::string script;
    if (from_stdin) {
        std::ostringstream buffer;
        buffer << std::cin.rdbuf();
        script = buffer.str();
        script_path = "-";
    } else if (run_cmd->parsed() && !icphost::read_file(script_path, &script)) {
        std::cerr << "icphost: cannot read " << script_path << '\n';
        return kSetupFailed;
    }
    if (std::string error; !icphost::load_rig(rig_path, &error)) {
        std::cerr << error << '\n';
        return kSetupFailed;
    }
    if (serve_cmd->parsed()) {
        const icphost::Simulation simulation(std::cout, trace);
        return icphost::serve(serve_port, serve_link);
    }

    std::unique_ptr<icphost::Plugin> plugin;
    try {
        plugin = std::make_unique<icphost::Plugin>(
            plugin_path.empty() ? icphost::default_plugin_path() : std::filesystem::path(plugin_path));
    } catch (const std::exception& e) {
        std::cerr << "icphost: " << e.what() << '\n';
        return kSetupFailed;
    }
    // Listings and the session show help records; a script reads only those
    // of the functions it calls.
    if (functions_cmd->parsed() || help_cmd->parsed() || session) plugin->describe_all();
    for (const auto& problem : plugin->problems())
        std::cerr << "icphost: warning: " << problem << '\n';
    if (plugin->functions().empty())
        std::cerr << "icphost: warning: " << plugin->file().string() << " offers no script functions\n";
    const auto& functions = plugin->functions();

    if (functions_cmd->parsed()) {
        std::vector<const icphost::ScriptFunction*> chosen;
        for (const auto* f : icphost::catalogue_order(functions))
            if (icphost::matches(*f, pattern)) chosen.push_back(f);
        if (json) {
            icphost::print_functions_json(std::cout, chosen);
        } else if (markdown) {
            icphost::print_functions_markdown(std::cout, chosen);
        } else {
            icphost::print_functions(std::cout, chosen);
        }
        if (!chosen.empty() || pattern.empty()) return 0;
        std::cerr << "icphost: no function matches '" << icp_platform::clip(pattern) << "'\n";
        return kStatementFailed;
    }
    if (help_cmd->parsed()) {
        const std::string name = join(help_words, " ");
        const auto* f = icphost::find_function(functions, name);
        if (f == nullptr) {
            std::cerr << "icphost: unknown function '" << icp_platform::clip(name) << "'"
                      << icphost::did_you_mean(icphost::nearest_names(functions, name)) << '\n';
            return kStatementFailed;
        }
        icphost::print_help(std::cout, *f);
        return 0;
    }

    icphost::Simulation simulation(std::cout, trace);
    // A plug-in that carries its own simulator (icpdas_plugin_sim) is out of
    // the directives' reach.
    if (!plugin->shares("ICPDAS_USBIO", "OpenDevice") && !plugin->shares("PACSDK", "uart_Open")) {
        const std::string name = plugin->file().filename().string();
        simulation.set_unreachable("cannot reach the rig of " + name +
                                   ", which carries its own simulator (its rig's \"events\" can)");
        if (trace) std::cerr << "icphost: warning: --trace cannot see inside " << name << "; ICPDAS_TRACE=FILE can\n";
    }
    icphost::Interpreter interpreter(functions, std::cout, std::cerr);
    interpreter.set_directive_handler([&](std::string_view directive) { simulation.run(directive); });
    if (session) {
        icphost::SessionSettings settings;
        settings.terminal = stdin_is_terminal();
        settings.history = icphost::default_history_path();
        settings.directives_help = icphost::Simulation::usage();
        settings.directives = icphost::Simulation::names();
        return icphost::run_session(functions, interpreter, settings, std::cout, std::cerr);
    }
    if (run_cmd->parsed() || from_stdin) {
        interpreter.run(script_path, script);
    } else {
        interpreter.run("-e", join(statements, "\n"));
    }
    return interpreter.failed() ? kStatementFailed : 0;
}
