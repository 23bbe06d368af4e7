// Control API of the PAC SDK stand-in: the rig of serial ports and the
// emulated DCON modules on them, module controls and the call log. Used by
// tests and by icphost.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#if defined(_WIN32)
#  if defined(PACSDK_BUILD)
#    define PACSIM_API __declspec(dllexport)
#  else
#    define PACSIM_API __declspec(dllimport)
#  endif
#else
#  define PACSIM_API __attribute__((visibility("default")))
#endif

namespace pacsim {

// Called with every call-log line as it happens: "sdk: NAME(ARGS) -> RESULT",
// "dcon> TEXT", "dcon< TEXT".
using TraceFn = void (*)(const char* line, void* context);
PACSIM_API void set_trace(TraceFn fn, void* context);

// Closes every port, removes every module, clears the call log.
PACSIM_API void reset();
// reset(), then the built-in rig: COM1 with an ai, ao, dio and pwm module at
// addresses 1 to 4.
PACSIM_API void use_default_rig();
// Checks the "serial" list of a JSON rig text without changing anything; on
// a fault fills *error with "line N: ..." and returns false.
PACSIM_API bool check_rig(const std::string& json_text, std::string* error);
// check_rig(), then reset() and load the rig; nothing is half-loaded.
PACSIM_API bool load_rig(const std::string& json_text, std::string* error);

}  // namespace pacsim
