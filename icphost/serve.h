// `icphost serve`: the rig's emulated serial modules behind a
// pseudo-terminal, for any DCON client to talk to.
#pragma once

#include <string>

namespace icphost {

// Serves the emulated port (the rig's first one when empty) until SIGINT or
// SIGTERM; keeps a symbolic link at link_path to the device when it is not
// empty. The exit status.
int serve(const std::string& port, const std::string& link_path);

}  // namespace icphost
