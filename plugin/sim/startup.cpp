// The simulated plug-in library: the plug-in with the USB simulator and the
// PAC SDK stand-in linked in. When the host loads it, the rig is loaded
// (ICPDAS_RIG, else icpdas_rig.json beside the library, else the built-in
// rig), the trace opened (ICPDAS_TRACE) and the rig's clocks start to
// follow real time.
#include "icp_control/standalone.h"

namespace {

const bool started = [] {
    icp_control::start_standalone(icp_control::standalone_settings(icp_control::this_library_folder()),
                                  "icpdas_plugin_sim");
    return true;
}();

}  // namespace
