// Control API of the PAC SDK stand-in: the rig of serial ports and the
// emulated DCON modules on them, module controls and the call log. Used by
// tests and by icphost.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <icp_platform/sdk_call.h>

#if defined(PACSDK_STATIC)
#  define PACSIM_API
#elif defined(_WIN32)
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
using TraceFn = icp_platform::TraceFn;
PACSIM_API void set_trace(TraceFn fn, void* context);
// Called with every SDK call as it returns (null: none).
PACSIM_API void set_call_hook(icp_platform::CallHook fn, void* context);
// Whether the SDK has a function of that exact name.
PACSIM_API bool has_function(const std::string& name);

// Closes every port, removes every module, clears the call log, sets the
// clock to 0 and the calling thread's last error to 0. Handles are numbered
// from port#1 again; handles from before are unknown from now on.
PACSIM_API void reset();
// reset(), then the built-in rig: COM1 with an ai, ao, dio and pwm module at
// addresses 1 to 4.
PACSIM_API void use_default_rig();
// Checks the "serial" list of a JSON rig text without changing anything; on
// a fault fills *error with "line N: ..." and returns false.
PACSIM_API bool check_rig(const std::string& json_text, std::string* error);
// check_rig(), then reset() and load the rig; nothing is half-loaded.
PACSIM_API bool load_rig(const std::string& json_text, std::string* error);

// Rig JSON: {"serial": [{"port": "COM1", "modules": [{"address": 1,
// "kind": "ai"}, ...]}, ...]}; other top-level keys ("usb") are not looked
// at. Ports are COM1..COM255; a module has a DCON address 0..255, unique on
// its port, and a kind: "ai" (8 inputs, +-10 V), "ao" (4 outputs, +-10 V),
// "dio" (7 outputs, 8 inputs) or "pwm" (8 PWM outputs, 8 inputs). Optional
// module keys: "checksum" (bool, default false: the module then expects and
// sends DCON checksums), "inputs" (ai: up to 8 volts; dio, pwm: the input
// word), "power_on" and "safe" (ao: up to 4 volts; dio: the output word).
// The library starts with the default rig.
//
// Simulated time moves on with advance_ms() and with every exchange on an
// emulated line, never by real waiting: each character takes its time at the
// port's baud rate and data format (a command and a reply of 6 characters
// each take about 1 ms at 115200 bps, 12.5 ms at 9600), the module acts when
// the whole command has arrived, and a command nobody answers takes the
// port's read timeout (300 ms unless uart_SetTimeOut changed it).

// A port entry with "device" in place of "modules" ({"port": "COM3",
// "device": "/dev/ttyUSB0"}) maps the name to a real serial device, so that
// uart_Open("COM3,...") opens the device (Linux; a Windows build refuses
// real devices). uart_Open also takes a device path in place of the name
// ("/dev/ttyUSB0,9600,N,8,1").

// ---- Building a rig in code ------------------------------------------------

// Adds a port without modules; false when the name is not COM1..COM255 or
// the port is already in the rig.
PACSIM_API bool add_port(const std::string& port);
// Adds a module to a port of the rig (kind as in a rig file); false for an
// unknown port or kind, an address outside 0..255 or one already taken.
PACSIM_API bool add_module(const std::string& port, int address, const std::string& kind,
                           bool checksum = false);

// ---- Inputs, faults, power -------------------------------------------------
// Each returns false, changing nothing, when the module or channel is not
// there.

PACSIM_API bool set_ai(const std::string& port, int address, int channel, double volts);
// Input word of a dio or pwm module (8 inputs; higher bits are dropped). A
// rising input counts on a pwm module's counter and fires its DI triggers.
PACSIM_API bool set_di(const std::string& port, int address, uint32_t word);
// A silent module takes no commands and sends no reply (its watchdog still
// runs), as if its line were cut.
PACSIM_API bool silence(const std::string& port, int address, bool silent);
// The module's next reply arrives with its first character replaced by '*'
// (after the checksum was computed).
PACSIM_API bool corrupt_next_reply(const std::string& port, int address);
// The module's next reply keeps only its first keep_chars characters, still
// terminated.
PACSIM_API bool cut_next_reply(const std::string& port, int address, std::size_t keep_chars);
// The next `count` calls of the SDK function `function` (its exact name, one
// that returns a status, or uart_Open) fail with `code` as the last error and
// no effect, after `skip` calls that go through. A count or a code of 0
// disarms the function; a name the SDK does not have arms nothing. reset()
// disarms them all.
PACSIM_API void fail_next(const std::string& function, uint32_t code, unsigned count = 1, unsigned skip = 0);
// Power off and on: outputs take their power-on values (the safe values when
// the watchdog flag is set, which survives), PWM outputs stop and the PWM
// configuration returns to what was last saved.
PACSIM_API bool power_cycle(const std::string& port, int address);

// ---- Simulated time --------------------------------------------------------

// Moves the clock on (see "Simulated time" above). A module whose host watchdog is enabled and was not
// refreshed for its timeout sets its timeout flag, drives its safe values
// (pwm: stops every output) and refuses output writes until "~AA1". PWM
// bursts end when their pulses are out.
PACSIM_API void advance_ms(uint32_t ms);
PACSIM_API uint64_t now_ms();
// A real-time clock: advance_ms() is called as real time passes, so an
// exchange adds no time of its own, and a command nobody answers really
// waits for the port's read timeout (holding the library meanwhile).
PACSIM_API void set_real_time(bool on);

// ---- Serving the emulated modules to another program ----------------------

// The rig's emulated ports, in name order.
PACSIM_API std::vector<std::string> emulated_ports();
// Bytes that reach an emulated port from outside, as over a wire: each line
// a CR completes goes to the port's modules, and their replies come back,
// CR included. Bytes after the last CR wait for the rest of their line. The
// call log gets "dcon> LINE" and "dcon< REPLY" for each. Empty for a port
// that is not there.
PACSIM_API std::string wire_input(const std::string& port, const std::string& bytes);

// ---- State -----------------------------------------------------------------

struct PwmChannelState {
    double duty = 0;         // percent, as applied
    uint32_t frequency = 0;  // Hz, as applied
    bool continuous = false;
    uint32_t pulse_count = 0;
    int trigger = 0;         // 0 none, 1 start, 2 stop
    bool sync = false;
    bool running = false;
};

// Vectors are empty for a kind without that I/O.
struct ModuleState {
    std::string kind;
    bool checksum = false;
    bool silent = false;
    bool wdt_enabled = false;
    uint32_t wdt_timeout = 0;  // 0.1 s units
    bool wdt_timed_out = false;
    std::vector<double> ai;           // volts
    std::vector<double> ao_command;   // last value written
    std::vector<double> ao_output;    // what the output drives
    std::vector<double> ao_power_on;
    std::vector<double> ao_safe;
    uint32_t do_word = 0;
    uint32_t do_power_on = 0;
    uint32_t do_safe = 0;
    uint32_t di_word = 0;
    std::vector<PwmChannelState> pwm;
    std::vector<uint32_t> counters;  // pwm: rising inputs counted per channel
};

PACSIM_API bool module_state(const std::string& port, int address, ModuleState* out);
// Shortcuts: 0, NaN or false when the module or channel is not there.
PACSIM_API uint32_t do_word(const std::string& port, int address);
PACSIM_API uint32_t do_power_on(const std::string& port, int address);
PACSIM_API uint32_t do_safe(const std::string& port, int address);
PACSIM_API double ao_output(const std::string& port, int address, int channel);
PACSIM_API double ao_power_on(const std::string& port, int address, int channel);
PACSIM_API double ao_safe(const std::string& port, int address, int channel);
PACSIM_API bool wdt_timed_out(const std::string& port, int address);
PACSIM_API double pwm_duty(const std::string& port, int address, int channel);
PACSIM_API uint32_t pwm_frequency(const std::string& port, int address, int channel);
// Bit n = PWM channel n running.
PACSIM_API uint32_t pwm_running(const std::string& port, int address);
// Whether a handle to the port is open.
PACSIM_API bool port_open(const std::string& port);

// ---- Call log --------------------------------------------------------------

// The lines since the last reset() or clear_calls(), in order (the latest
// 4096 at least; older ones are dropped in blocks): SDK calls as
// "NAME(ARGS) -> RESULT" (void calls without " -> RESULT"), DCON traffic as
// "dcon> TEXT" and "dcon< TEXT" (checksum included, CR left out). An SDK
// call's line follows the DCON lines it caused.
PACSIM_API std::vector<std::string> calls();
PACSIM_API void clear_calls();

}  // namespace pacsim
