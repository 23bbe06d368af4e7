// The plug-in's module-wide state. It is shared by every call without
// locks: the host calls into the plug-in from one thread at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "NvMathLib.h"

namespace icp {

// Result code of the last USB script function: 0, -1 for a missing handle,
// otherwise the USB SDK's code.
extern std::int32_t usb_last_error;
// The serial command recorder.
extern bool recording_enabled;
extern std::vector<std::string> recorded_commands;

// The plug-in's math object, on which help records are built.
NuvarelMath::nvMath& math_object();

}  // namespace icp
