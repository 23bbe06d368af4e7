// The simulator inside a plug-in library that carries the stand-ins
// (icpdas_plugin_sim): the host gives a plug-in no configuration, so it
// comes from the environment and the library's folder, and the rig runs on
// the computer's steady clock.
#pragma once

#include <filesystem>
#include <string>

namespace icp_control {

// What the library runs with.
struct StandaloneSettings {
    std::string rig;    // ICPDAS_RIG: a rig file, else the one beside the library
    std::string trace;  // ICPDAS_TRACE: the file the trace is appended to
};
// The settings from the environment; `library_folder` holds the library,
// where "icpdas_rig.json" is looked for when ICPDAS_RIG is not set.
StandaloneSettings standalone_settings(const std::filesystem::path& library_folder);

// Loads the rig (a rig that cannot be loaded leaves an empty rig, its one
// line error on standard error and in the trace), opens the trace (a file
// that cannot be opened is said once on standard error) and starts the
// real-time clock: from now on the rig's clocks follow the steady clock and
// its events fire as real time passes. `who` leads the messages. Once per
// process; later calls do nothing.
void start_standalone(const StandaloneSettings& settings, const std::string& who);

// The folder of the library (or program) this code is linked into.
std::filesystem::path this_library_folder();

}  // namespace icp_control
