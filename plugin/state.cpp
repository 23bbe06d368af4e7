// Static state, constructed at load in this order and destroyed at unload in
// the reverse order: the stream initialisation object, the math object, the
// recorded commands. The two plain flags are zero-initialised data.
#include <iostream>

#include "plugin/export.h"
#include "plugin/state.h"

namespace icp {
namespace {
NuvarelMath::nvMath plugin_math(3u, static_cast<NuvarelMath::AngleUnit>(1));
}  // namespace

std::vector<std::string> recorded_commands;
std::int32_t usb_last_error;
bool recording_enabled;

NuvarelMath::nvMath& math_object() { return plugin_math; }

}  // namespace icp

// The plug-in defines no host types of its own.
ICP_EXPORT void definePluginTypes() {}

ICP_EXPORT NuvarelMath::nvMath* math() { return &icp::math_object(); }
