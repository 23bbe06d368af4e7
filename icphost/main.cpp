// icphost: loads the plug-in as the host application does, offers its script
// functions, and runs scripts against the simulated USB and serial rig.
//
//   icphost functions [--json]          the script functions and their help
//   icphost help NAME                   one function's help
//   icphost run FILE                    run a script
//   icphost -e STATEMENT [-e ...]       run statements
//   icphost serve [--port P] [--link L] the emulated modules on a pseudo-terminal
//
// Options: --plugin PATH, --rig FILE (JSON), --trace.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <icp_platform/format.h>

#include "icphost/listing.h"
#include "icphost/plugin.h"
#include "icphost/script.h"
#include "icphost/serve.h"
#include "pacsdk_sim.h"
#include "usbio_sim.h"

namespace {

// Exit statuses besides 0 (success) and CLI11's own for a bad command line.
constexpr int kStatementFailed = 1;
constexpr int kSetupFailed = 2;

bool read_file(const std::string& path, std::string* text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream buffer;
    buffer << in.rdbuf();
    *text = buffer.str();
    return !in.bad();
}

// A trace line arrives while a script line runs: it goes out at once, on the
// same stream as the script's values, so that both keep their order.
void print_trace(const char* line, void*) { std::cout << line << '\n' << std::flush; }

// Both simulators check the whole text before either loads anything, so a
// faulty rig leaves nothing half-loaded.
bool set_up_rig(const std::string& rig_path) {
    if (rig_path.empty()) {
        usbsim::use_default_rig();
        pacsim::use_default_rig();
        return true;
    }
    std::string text;
    if (!read_file(rig_path, &text)) {
        std::cerr << "icphost: cannot read the rig " << rig_path << '\n';
        return false;
    }
    std::string error;
    if (!usbsim::check_rig(text, &error) || !pacsim::check_rig(text, &error) ||
        !usbsim::load_rig(text, &error) || !pacsim::load_rig(text, &error)) {
        std::cerr << rig_path << ": " << error << '\n';
        return false;
    }
    return true;
}

struct TraceGuard {
    explicit TraceGuard(bool on) : on_(on) {
        if (!on_) return;
        usbsim::set_trace(&print_trace, nullptr);
        pacsim::set_trace(&print_trace, nullptr);
    }
    ~TraceGuard() {
        if (!on_) return;
        usbsim::set_trace(nullptr, nullptr);
        pacsim::set_trace(nullptr, nullptr);
    }
    TraceGuard(const TraceGuard&) = delete;
    TraceGuard& operator=(const TraceGuard&) = delete;

private:
    bool on_;
};

// "SIM_Wait(ms)": scripts let simulated time pass (software watchdogs expire,
// pulse inputs count at their frequency). It is the host's, not the
// plug-in's, so it is offered to scripts only.
using icphost::nvValue;

nvValue sim_wait(const nvValue& ms) {
    if (!ms.isUnsignedInteger()) return nvValue();
    usbsim::advance_ms(ms.toUnsignedInt());
    pacsim::advance_ms(ms.toUnsignedInt());
    return nvValue(NuvarelMath::ValueTypes::nvBoolean(true));
}

icphost::ScriptFunction sim_wait_function() {
    icphost::ScriptFunction f;
    f.export_name = "icphost_sim_wait";
    f.name = "SIM_Wait";
    f.help = {"Let the simulated clock of the USB and serial modules run on", "Boolean",
              "Integer. Milliseconds"};
    f.entry = reinterpret_cast<icphost::ScriptFunction::Entry>(&sim_wait);
    return f;
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

    auto* functions_cmd = app.add_subcommand("functions", "List the script functions and their help");
    bool json = false;
    functions_cmd->add_flag("--json", json, "One JSON object per function: export, name, help");

    auto* help_cmd = app.add_subcommand("help", "Show the help of one script function");
    std::vector<std::string> help_words;
    help_cmd->add_option("NAME", help_words, "Its script name (blanks allowed) or export name")
        ->required();

    auto* run_cmd = app.add_subcommand("run", "Run a script file");
    std::string script_path;
    run_cmd->add_option("FILE", script_path, "The script")->required();

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
    if (statements.empty() && !any_command) {
        std::cerr << app.help();
        return kSetupFailed;
    }

    std::string script;
    if (run_cmd->parsed() && !read_file(script_path, &script)) {
        std::cerr << "icphost: cannot read " << script_path << '\n';
        return kSetupFailed;
    }
    if (!set_up_rig(rig_path)) return kSetupFailed;
    if (serve_cmd->parsed()) {
        const TraceGuard guard(trace);
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
    for (const auto& problem : plugin->problems())
        std::cerr << "icphost: warning: " << problem << '\n';
    if (plugin->functions().empty())
        std::cerr << "icphost: warning: " << plugin->file().string() << " offers no script functions\n";
    const auto& functions = plugin->functions();

    if (functions_cmd->parsed()) {
        if (json) {
            icphost::print_functions_json(std::cout, functions);
        } else {
            icphost::print_functions(std::cout, functions);
        }
        return 0;
    }
    if (help_cmd->parsed()) {
        const std::string name = join(help_words, " ");
        const auto* f = icphost::find_function(functions, name);
        if (f == nullptr) {
            std::cerr << "icphost: unknown function '" << icp_platform::clip(name) << "'\n";
            return kStatementFailed;
        }
        icphost::print_help(std::cout, *f);
        return 0;
    }

    const TraceGuard guard(trace);
    std::vector<icphost::ScriptFunction> offered(functions.begin(), functions.end());
    offered.push_back(sim_wait_function());
    icphost::Interpreter interpreter(offered, std::cout, std::cerr);
    if (run_cmd->parsed()) {
        interpreter.run(script_path, script);
    } else {
        interpreter.run("-e", join(statements, "\n"));
    }
    return interpreter.failed() ? kStatementFailed : 0;
}
