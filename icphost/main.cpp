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
#include "icphost/text.h"

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

std::string read_stdin() {
    std::ostringstream buffer;
    buffer << std::cin.rdbuf();
    return buffer.str();
}

// What the command line asked for.
struct Options {
    std::string plugin_path;
    std::string rig_path;
    bool trace = false;
    std::vector<std::string> statements;
    // functions
    std::string pattern;
    bool json = false;
    bool markdown = false;
    // help
    std::vector<std::string> help_words;
    // run
    std::string script_path;
    // serve
    std::string serve_port;
    std::string serve_link;
};

struct Commands {
    CLI::App* functions = nullptr;
    CLI::App* repl = nullptr;
    CLI::App* help = nullptr;
    CLI::App* run = nullptr;
    CLI::App* serve = nullptr;
};

Commands declare(CLI::App& app, Options& o) {
    app.fallthrough();
    // The same command line everywhere: "/path" is a file, never an option.
    app.allow_windows_style_options(false);
    app.require_subcommand(0, 1);
    app.add_option("--plugin", o.plugin_path, "The plug-in library (default: the one beside icphost)");
    app.add_option("--rig", o.rig_path, "A JSON rig of simulated modules (default: the built-in rig)")
        ->check(CLI::ExistingFile);
    app.add_flag("--trace", o.trace, "Print every SDK call and DCON line as it happens");
    app.add_option("-e", o.statements,
                   "Run a statement; repeat -e for more, they run in order and share variables")
        ->allow_extra_args(false);

    Commands c;
    c.functions = app.add_subcommand("functions", "List the script functions and their help, by group");
    c.functions->add_option("PATTERN", o.pattern, "Only names holding this text, or matching it with * and ?");
    auto* json_flag = c.functions->add_flag("--json", o.json, "One JSON object per function: export, name, help");
    c.functions->add_flag("--markdown", o.markdown, "A Markdown reference (docs/functions.md)")->excludes(json_flag);

    c.repl = app.add_subcommand("repl", "An interactive session");

    c.help = app.add_subcommand("help", "Show the help of one script function");
    c.help->add_option("NAME", o.help_words, "Its script name (blanks allowed) or export name")->required();

    c.run = app.add_subcommand("run", "Run a script file");
    c.run->add_option("FILE", o.script_path, "The script; - for standard input")->required();

    c.serve = app.add_subcommand(
        "serve", "Put the rig's emulated serial modules behind a pseudo-terminal (Linux); prints its path");
    c.serve->add_option("--port", o.serve_port, "The emulated port to serve (default: the rig's first)");
    c.serve->add_option("--link", o.serve_link, "Keep a symbolic link to the device at this path");
    return c;
}

// icphost functions [PATTERN] [--json | --markdown]
int list_functions(const icphost::Plugin& plugin, const Options& o) {
    std::vector<const icphost::ScriptFunction*> chosen;
    for (const auto* f : icphost::catalogue_order(plugin.functions()))
        if (icphost::matches(*f, o.pattern)) chosen.push_back(f);
    if (o.json) {
        icphost::print_functions_json(std::cout, chosen);
    } else if (o.markdown) {
        icphost::print_functions_markdown(std::cout, chosen);
    } else {
        icphost::print_functions(std::cout, chosen);
    }
    if (!chosen.empty() || o.pattern.empty()) return 0;
    std::cerr << "icphost: no function matches " << icphost::quoted(o.pattern) << '\n';
    return kStatementFailed;
}

// icphost help NAME
int show_help(const icphost::Plugin& plugin, const Options& o) {
    const std::string name = join(o.help_words, " ");
    const auto* f = icphost::find_function(plugin.functions(), name);
    if (f == nullptr) {
        std::cerr << "icphost: unknown function " << icphost::quoted(name)
                  << icphost::did_you_mean(icphost::nearest_names(plugin.functions(), name)) << '\n';
        return kStatementFailed;
    }
    icphost::print_help(std::cout, *f);
    return 0;
}

// icphost serve [--port P] [--link L]
int serve_rig(const Options& o) {
    const icphost::Simulation simulation(std::cout, o.trace);
    return icphost::serve(o.serve_port, o.serve_link);
}

// The plug-in named by --plugin, or the one beside icphost; null (said on
// standard error) when it cannot be loaded. Problems it has are warnings.
std::unique_ptr<icphost::Plugin> load_plugin(const Options& o, bool describe_all) {
    std::unique_ptr<icphost::Plugin> plugin;
    try {
        plugin = std::make_unique<icphost::Plugin>(
            o.plugin_path.empty() ? icphost::default_plugin_path() : std::filesystem::path(o.plugin_path));
    } catch (const std::exception& e) {
        std::cerr << "icphost: " << e.what() << '\n';
        return nullptr;
    }
    // Listings and the session show help records; a script reads only those
    // of the functions it calls.
    if (describe_all) plugin->describe_all();
    for (const auto& problem : plugin->problems())
        std::cerr << "icphost: warning: " << problem << '\n';
    if (plugin->functions().empty())
        std::cerr << "icphost: warning: " << plugin->file().string() << " offers no script functions\n";
    return plugin;
}

// The rig's directives, out of reach when the plug-in carries its own
// simulator (icpdas_plugin_sim).
void reach_rig(const icphost::Plugin& plugin, icphost::Simulation& simulation, bool trace) {
    if (plugin.shares("ICPDAS_USBIO", "OpenDevice") || plugin.shares("PACSDK", "uart_Open")) return;
    const std::string name = plugin.file().filename().string();
    simulation.set_unreachable("cannot reach the rig of " + name +
                               ", which carries its own simulator (its rig's \"events\" can)");
    if (trace) std::cerr << "icphost: warning: --trace cannot see inside " << name << "; ICPDAS_TRACE=FILE can\n";
}

// icphost repl, or no command on a terminal
int run_repl(const icphost::Plugin& plugin, icphost::Interpreter& interpreter) {
    icphost::SessionSettings settings;
    settings.terminal = stdin_is_terminal();
    settings.history = icphost::default_history_path();
    settings.directives_help = icphost::Simulation::usage();
    settings.directives = icphost::Simulation::names();
    return icphost::run_session(plugin.functions(), interpreter, settings, std::cout, std::cerr);
}

// icphost run FILE, a script piped in, or -e STATEMENT...
int run_script(icphost::Interpreter& interpreter, const std::string& source, const std::string& script) {
    interpreter.run(source, script);
    return interpreter.failed() ? kStatementFailed : 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{"Loads the ICP DAS plug-in as the host application does and runs scripts "
                 "against simulated USB and serial modules.",
                 "icphost"};
    Options o;
    const Commands command = declare(app, o);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    }
    const bool any_command = !app.get_subcommands().empty();
    if (!o.statements.empty() && any_command) {
        std::cerr << "icphost: -e cannot be combined with a command\n";
        return kSetupFailed;
    }
    // Without a command: a session on a terminal, else a script piped in.
    const bool session = command.repl->parsed() || (o.statements.empty() && !any_command && stdin_is_terminal());
    const bool from_stdin = (command.run->parsed() && o.script_path == "-") ||
                            (o.statements.empty() && !any_command && !session);

    std::string script;
    if (from_stdin) {
        script = read_stdin();
        o.script_path = "-";
    } else if (command.run->parsed() && !icphost::read_file(o.script_path, &script)) {
        std::cerr << "icphost: cannot read " << o.script_path << '\n';
        return kSetupFailed;
    }
    if (std::string error; !icphost::load_rig(o.rig_path, &error)) {
        std::cerr << error << '\n';
        return kSetupFailed;
    }
    if (command.serve->parsed()) return serve_rig(o);

    const auto plugin = load_plugin(o, command.functions->parsed() || command.help->parsed() || session);
    if (!plugin) return kSetupFailed;
    if (command.functions->parsed()) return list_functions(*plugin, o);
    if (command.help->parsed()) return show_help(*plugin, o);

    icphost::Simulation simulation(std::cout, o.trace);
    reach_rig(*plugin, simulation, o.trace);
    icphost::Interpreter interpreter(plugin->functions(), std::cout, std::cerr);
    interpreter.set_directive_handler([&](std::string_view directive) { simulation.run(directive); });
    if (session) return run_repl(*plugin, interpreter);
    if (command.run->parsed() || from_stdin) return run_script(interpreter, o.script_path, script);
    return run_script(interpreter, "-e", join(o.statements, "\n"));
}
