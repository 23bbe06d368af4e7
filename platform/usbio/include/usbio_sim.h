// Control API of the simulated USB I/O SDK: the rig of attached modules,
// inputs, faults and the call log. Used by tests and by icphost.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#if defined(_WIN32)
#  if defined(ICPDAS_USBIO_BUILD)
#    define USBSIM_API __declspec(dllexport)
#  else
#    define USBSIM_API __declspec(dllimport)
#  endif
#else
#  define USBSIM_API __attribute__((visibility("default")))
#endif

namespace usbsim {

// Called with every call-log line as it happens, "sdk: NAME(ARGS) -> RESULT".
using TraceFn = void (*)(const char* line, void* context);
USBSIM_API void set_trace(TraceFn fn, void* context);

// Removes every module and instance, clears faults and the call log.
USBSIM_API void reset();
// reset(), then the built-in rig: at least one module of every I/O group.
USBSIM_API void use_default_rig();
// Checks the "usb" list of a JSON rig text without changing anything; on a
// fault fills *error with "line N: ..." and returns false.
USBSIM_API bool check_rig(const std::string& json_text, std::string* error);
// check_rig(), then reset() and load the rig; nothing is half-loaded.
USBSIM_API bool load_rig(const std::string& json_text, std::string* error);

}  // namespace usbsim
