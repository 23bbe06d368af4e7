// Loading the plug-in the way the host application does: open the shared
// library, read its export table, and take every export X that has the
// companions XName and XDescription as a script function.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "icphost/function.h"

namespace icphost {

struct LoadError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Plugin {
public:
    // Throws LoadError when the library cannot be opened or its export
    // table cannot be read.
    explicit Plugin(const std::filesystem::path& file);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    const std::filesystem::path& file() const { return file_; }
    // Every exported function name, in export-table order.
    const std::vector<std::string_view>& exports() const { return exports_; }
    // The script functions, in the export-table order of their bodies.
    const std::vector<ScriptFunction>& functions() const { return functions_; }
    // Triples that could not be taken as script functions, one line each.
    const std::vector<std::string>& problems() const { return problems_; }
    // Reads every help record now (a listing needs them all), dropping the
    // functions whose record is unusable and saying why in problems().
    void describe_all();

    // The address of an exported name; null when there is none.
    ScriptFunction::Entry symbol(const std::string& name) const;

    // Whether the library calls `function` of the shared library `library`
    // ("PACSDK") that icphost calls too: false for a library that carries an
    // SDK of its own, or uses another one.
    bool shares(const char* library, const char* function) const;

private:
    void discover();

    std::filesystem::path file_;
    void* handle_ = nullptr;
    std::vector<char> names_;  // ELF: the symbol names the exports point into
    std::vector<std::string_view> exports_;
    // Where each export lies once loaded, as its table says (ELF only).
    std::vector<ScriptFunction::Entry> addresses_;
    std::vector<ScriptFunction> functions_;
    std::vector<std::string> problems_;
};

// The defined, exported function names of an ELF shared object, in the order
// of its dynamic symbol table. Throws LoadError for a file that is not one.
std::vector<std::string> elf_exported_functions(const std::filesystem::path& file);

// The folder of the running executable.
std::filesystem::path executable_directory();

// The plug-in built beside the host: libicpdas_plugin.so, icpdas_plugin.dll.
std::filesystem::path default_plugin_path();

}  // namespace icphost
