// Control API of the simulated USB I/O SDK: the rig of attached modules,
// inputs, faults and the call log. Used by tests and by icphost.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <icp_platform/sdk_call.h>

#if defined(ICPDAS_USBIO_STATIC)
#  define USBSIM_API
#elif defined(_WIN32)
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
using TraceFn = icp_platform::TraceFn;
USBSIM_API void set_trace(TraceFn fn, void* context);
// Called with every SDK call as it returns (null: none).
USBSIM_API void set_call_hook(icp_platform::CallHook fn, void* context);
// Whether the SDK has a function of that exact name.
USBSIM_API bool has_function(const std::string& name);

// Removes every module and instance, clears faults and the call log.
USBSIM_API void reset();
// reset(), then the built-in rig: at least one module of every I/O group.
USBSIM_API void use_default_rig();
// Checks the "usb" list of a JSON rig text without changing anything; on a
// fault fills *error with "line N: ..." and returns false.
USBSIM_API bool check_rig(const std::string& json_text, std::string* error);
// check_rig(), then reset() and load the rig; nothing is half-loaded.
USBSIM_API bool load_rig(const std::string& json_text, std::string* error);


// The simulator in brief (what a caller of the SDK can rely on):
//  - Before any control call, the default rig is attached:
//      USB2019 board 1, USB2026 board 1, USB2045_32 board 1, USB2051 board 2,
//      USB2055 board 3, USB2084 board 1
//    (every I/O group; a few inputs carry signals). reset() leaves no module.
//  - OpenDevice matches the module's board ID: the rotary switch 1-15, or at
//    0 the user-defined board ID (16 until SetUserDefinedBoardID changes it).
//    Device ID = type code | board ID << 16. Firmware 0x0102 unless a rig
//    says otherwise; serial numbers are made up per module.
//  - Opening sets the communication timeout to 100 ms and switches the
//    automatic watchdog reset on. Everything else is the module's and is
//    kept across close and open. LoadDefault restores the factory settings
//    (software watchdog 1000 ms, DO and DI masks, DI counter edges rising,
//    filter 0, power-on and safety tables cleared, AI/AO/PI configuration)
//    and keeps identity (board IDs, nickname, serial) and the present
//    outputs and counters.
//  - Per-channel setters refuse a channel at or beyond the group's total
//    (0x10105), except DO_SetPowerOnEnable which takes 0-31. Values out of
//    range (type codes not in the module's list, AO values outside the type's
//    range or above 4095, CJC offsets outside -40.96..40.95, filter widths
//    outside 1..32767 us, trigger modes above 2, rejection above 1) are
//    refused the same way, and an array call changes nothing unless every
//    entry passes. DO and DI words and configuration masks are 32-bit;
//    analog and PI channel masks keep only the module's channels.
//  - Call log: an instance prints as #N, a null one as null, an address the
//    SDK never made as #?; a per-channel input array as the entries of the
//    module's channels ([] when no module is open on the instance).

// ---------------------------------------------------------------------------
// The model table.

// What a module of one model has. The table holds the fifteen models; the
// support mask follows from the totals (bit 0 DI, 1 DO, 2 AI, 3 AO, 4 PI,
// 5 PO).
struct Model {
    const char* id;  // "USB2019"
    std::uint16_t type_code;
    std::uint8_t ai, ao, di, do_, pi, po;  // channel totals per group
    std::uint8_t support_mask;
    std::span<const std::uint8_t> ai_types;  // supported type codes
    std::span<const std::uint8_t> ao_types;
    std::span<const std::uint8_t> pi_types;
    std::uint8_t ai_default_type, ao_default_type, pi_default_type;
    std::uint8_t ai_resolution, ao_resolution;  // bits
};
USBSIM_API std::span<const Model> models();
USBSIM_API const Model* find_model(const std::string& id);  // exact, upper case
USBSIM_API const Model* find_model_by_code(std::uint16_t type_code);

// The range of an analog type code, in the range's own unit: mV for the
// millivolt ranges, V, mA, or degrees Celsius for thermocouples.
struct Range {
    double low;
    double high;
};
USBSIM_API std::optional<Range> ai_range(std::uint8_t type_code);
USBSIM_API std::optional<Range> ao_range(std::uint8_t type_code);

// Raw codes. AI: 16-bit two's complement reported zero-extended in a word;
// the end of the range with the larger magnitude is full scale (0x7FFF, or
// 0x8000 when that end is negative), 0 is 0. AO: 12-bit, 0 at the low end
// of the range and 4095 at the high end.
USBSIM_API std::uint32_t ai_raw_from_value(std::uint8_t type_code, double value);
USBSIM_API double ai_value_from_raw(std::uint8_t type_code, std::uint32_t raw);
USBSIM_API std::uint32_t ao_raw_from_value(std::uint8_t type_code, double value);
USBSIM_API double ao_value_from_raw(std::uint8_t type_code, std::uint32_t raw);

// AI channel status bytes; PI status bits.
constexpr std::uint8_t kAiNormal = 0, kAiOverRange = 1, kAiUnderRange = 2, kAiOpenWire = 3;
constexpr std::uint8_t kPiOverflow = 0x01, kPiUnderflow = 0x02;

// ---------------------------------------------------------------------------
// The state of one module, as module_state() reports it.

// The bits of channels 0 .. n-1 of a 32-bit word.
constexpr std::uint32_t channel_bits(unsigned n) { return n >= 32 ? 0xFFFFFFFFu : (1u << n) - 1u; }

struct AiChannel {
    std::uint8_t type_code = 0;
    float cjc_offset = 0.0f;
    std::uint32_t sample_rate = 0;
    double signal = 0.0;  // at the terminals, in the unit of the type code
    bool open_wire = false;
};

// An output keeps what was commanded (code and value) apart from what it
// drives: while enabled it follows the command, until the software watchdog
// expires with its safety enable set; it then drives its safety value until
// the next command. Power-on and safety values are kept as written, code and
// value alike; a new type code puts all three at its range's zero level.
struct AoChannel {
    std::uint8_t type_code = 0;
    std::uint32_t raw = 0;    // the output code (expected digital value)
    float expected = 0.0f;    // the value last commanded
    bool safe = false;        // driving the safety value
    std::uint8_t power_on_enable = 0;
    std::uint32_t power_on_raw = 0;
    float power_on = 0.0f;
    std::uint32_t safety_raw = 0;
    float safety = 0.0f;
};

struct PiChannel {
    std::uint8_t type_code = 0;
    std::uint8_t trigger_mode = 0;  // 0 rising, 1 falling, 2 both edges
    bool isolated = false;
    bool lp_filter_enable = false;
    std::uint16_t lp_filter_width_us = 1;
    std::uint32_t count = 0;  // signed in the 4-channel modes
    std::uint8_t status = 0;
    double frequency_hz = 0.0;  // of the signal at the input
    double pending_pulses = 0.0;  // fraction of a pulse not yet counted
};

struct ModuleState {
    const Model* model = nullptr;
    // Board ID: the rotary switch 1-15 (a rig may also give 128-255); at 0
    // the user-defined board ID (16-127) is the module's board ID.
    std::uint8_t rotary_board = 0;
    std::uint8_t user_board = 16;
    std::uint8_t board() const { return rotary_board != 0 ? rotary_board : user_board; }
    bool plugged = true;
    bool open = false;
    std::string nickname;
    std::string serial;
    std::uint16_t firmware = 0x0102;

    std::uint32_t comm_timeout_ms = 100;
    std::uint32_t soft_wdt_timeout_ms = 1000;
    bool auto_reset_wdt = true;
    bool wdt_expired = false;

    // DO: the output word as written (ReadValue) and the terminals.
    std::uint32_t do_word = 0;
    std::uint32_t do_inverse = 0;
    std::uint32_t do_safety_enable = 0;
    std::uint32_t do_safety_value = 0;
    std::array<std::uint8_t, 32> do_power_on{};
    // (word XOR inverse), outputs only.
    std::uint32_t do_outputs() const { return (do_word ^ do_inverse) & channel_bits(model ? model->do_ : 0); }

    // DI: the signal at the terminals and what DI_ReadValue reports.
    std::uint32_t di_signal = 0;
    std::uint32_t di_inverse = 0;
    std::uint32_t di_edges = 0;  // bit 1: count rising edges, 0: falling
    std::uint16_t di_filter_width = 0;  // 0.1 ms
    std::array<std::uint32_t, 32> di_counters{};
    // (signal XOR inverse), inputs only.
    std::uint32_t di_value() const { return (di_signal ^ di_inverse) & channel_bits(model ? model->di : 0); }

    std::array<AiChannel, 16> ai{};
    std::uint16_t ai_enable = 0;
    std::uint8_t ai_filter_rejection = 0;  // 0: 60 Hz, 1: 50 Hz
    float ai_cjc_offset = 0.0f;
    bool ai_cjc_enable = true;
    bool ai_wire_detect = false;
    double cjc_celsius = 25.0;  // temperature of the cold junction

    std::array<AoChannel, 16> ao{};
    std::uint16_t ao_enable = 0;
    std::uint16_t ao_safety_enable = 0;

    std::array<PiChannel, 16> pi{};
};

// A copy of a module's state; nothing when no module has that type code and
// board ID.
USBSIM_API std::optional<ModuleState> module_state(std::uint16_t type_code, std::uint8_t board);

// ---------------------------------------------------------------------------
// Controls. Those naming a module return false when there is none with that
// type code and board ID (or the channel is beyond the group's total).

// Attaches a module of a model of the table; false for an unknown model or
// when a module with that type code and board ID is already attached.
// Board 0 sets the rotary switch to 0 (user-defined board ID 16); 16-127
// does the same with that user-defined board ID.
USBSIM_API bool add_module(const std::string& model, std::uint8_t board);

// Unplugging makes every call on an instance holding the module time out
// (0x10100) and hides it from scan, list and open. Replugging is a power
// cycle: outputs take their power-on state and counters restart at 0; the
// settings are kept.
USBSIM_API bool unplug(std::uint16_t type_code, std::uint8_t board);
USBSIM_API bool replug(std::uint16_t type_code, std::uint8_t board);

// DI signal word; changed bits count as edges for the counters.
USBSIM_API bool set_di(std::uint16_t type_code, std::uint8_t board, std::uint32_t word);
// Full pulses (away from the current level and back) on one DI channel.
USBSIM_API bool pulse_di(std::uint16_t type_code, std::uint8_t board, unsigned channel,
                         std::uint32_t pulses);

// AI signal in the unit of the channel's type code (mV, V, mA or degrees C).
USBSIM_API bool set_ai(std::uint16_t type_code, std::uint8_t board, unsigned channel,
                       double value);
USBSIM_API bool set_ai_open_wire(std::uint16_t type_code, std::uint8_t board, unsigned channel,
                                 bool open);
USBSIM_API bool set_cjc_temperature(std::uint16_t type_code, std::uint8_t board, double celsius);

// PI: pulses at one input (negative: the other direction, in the 4-channel
// modes), and the frequency of the signal at an input, which also counts
// pulses as the simulated clock advances.
USBSIM_API bool pulse(std::uint16_t type_code, std::uint8_t board, unsigned channel,
                      std::int64_t pulses);
USBSIM_API bool set_frequency(std::uint16_t type_code, std::uint8_t board, unsigned channel,
                              double hz);

// The next `count` calls of the SDK function `function` (its exact name)
// return `code` without any effect, after `skip` calls that go through.
// CreateInstance so failed returns null. A count or a code of 0 disarms the
// function; a name the SDK does not have arms nothing.
USBSIM_API void fail_next(const std::string& function, std::int32_t code, unsigned count = 1,
                          unsigned skip = 0);

// The simulated clock, in milliseconds from reset(). The software watchdog
// of an open module whose automatic reset is off expires when no call
// reached it for longer than its timeout: its safety values are applied.
USBSIM_API void advance_ms(std::uint32_t ms);
USBSIM_API std::uint64_t now_ms();

// The call log, "NAME(ARGS) -> RESULT" per SDK call, oldest first: the
// latest 4096 calls at least (older ones are dropped in blocks).
USBSIM_API std::vector<std::string> calls();
USBSIM_API void clear_calls();

}  // namespace usbsim
