// Internals of the simulated USB I/O SDK: modules, instances, the call log
// and the frame every SDK function runs in.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <type_traits>
#include <string>
#include <utility>
#include <vector>

#include <icp_platform/sdk_core.h>

#include "ICPDAS_USBIO.h"
#include "usbio_sim.h"

namespace usbsim::detail {
struct Module;
}

// The object behind a USBIO_HANDLE.
struct usbio_instance {
    unsigned id = 0;                          // N of "#N"
    usbsim::detail::Module* module = nullptr; // while open
    bool disposed = false;
};

namespace usbsim::detail {

enum class Group { None, DI, DO, AI, AO, PI };

constexpr std::uint32_t bits(unsigned n) { return channel_bits(n); }

bool is_thermocouple(std::uint8_t ai_type_code);
bool is_pair_mode(std::uint8_t pi_type_code);  // the 4-channel PI modes
bool supports(std::span<const std::uint8_t> list, std::uint8_t code);

struct Module : ModuleState {
    unsigned holder = 0;            // id of the instance holding it open
    std::uint64_t last_contact = 0; // simulated time of the last call
};

unsigned total(const Module& m, Group g);

// Factory settings (LoadDefault): everything but identity and board ID.
void load_defaults(Module& m);
// Power-on: outputs to their power-on state, counters and statuses to 0.
void power_up(Module& m);
// An AO range's zero level, clamped into the range (4 mA for 4-20 mA).
float ao_zero_value(std::uint8_t type_code);
// Applies the safety values of DO and AO.
void apply_safety(Module& m);
// Counts pulses on a PI channel according to its mode and trigger.
void count_pi(Module& m, unsigned ch, std::int64_t pulses);
// Sets the DI signal word, counting the configured edges.
void drive_di(Module& m, std::uint32_t word);

using Instance = ::usbio_instance;

// The SDK's function names, those faults are armed for.
std::span<const std::string_view> sdk_functions();

struct Sim {
    std::vector<std::unique_ptr<Module>> modules;
    // Instances live until reset(), so that the address of a disposed
    // instance is never handed out again and is recognised as stale.
    std::vector<std::unique_ptr<Instance>> instances;
    // Armed faults, the call log, the trace.
    icp_platform::SdkCore core{sdk_functions()};
    std::uint64_t now = 0;

    void clear();  // everything but the trace
    // The live instance at that address; with disposed, also one already
    // disposed (for the log, which names it).
    Instance* find(const void* handle, bool disposed = false);
    Module* find_module(std::uint16_t type_code, std::uint8_t board);
    Module* add(const Model& model, std::uint8_t board);
    bool take_fault(std::string_view name, std::int32_t& code);
};

// The one simulator, created with the default rig at first use. Every
// access holds the lock.
std::unique_lock<std::mutex> lock();
Sim& sim();
void build_default_rig(Sim& s);

// Releases the lock (so a trace that prints may take its time), then
// reports the call to the log, the trace and the hook: "NAME(ARGS) -> RESULT",
// or "NAME(ARGS)" for an empty result.
void record(std::string_view name, const std::string& args, const std::string& result,
            std::unique_lock<std::mutex>& held);

// Argument text for the call log.
namespace fmt {
std::string num(std::uint64_t v);
std::string num(std::int64_t v);
inline std::string num(std::uint32_t v) { return num(std::uint64_t{v}); }
inline std::string num(std::uint16_t v) { return num(std::uint64_t{v}); }
inline std::string num(std::uint8_t v) { return num(std::uint64_t{v}); }
inline std::string num(std::int32_t v) { return num(std::int64_t{v}); }
std::string real(float v);
std::string instance(const void* handle, const Instance* in);
std::string text(const char* p);  // at most 32 bytes read
template <class T>
std::string list(const T* p, unsigned n) {
    if (!p) return "null";
    std::string s = "[";
    for (unsigned i = 0; i < n; ++i) {
        if (i) s += ", ";
        if constexpr (std::is_same_v<T, float>) s += real(p[i]);
        else s += num(p[i]);
    }
    return s + "]";
}
}  // namespace fmt

// Entries of a per-channel input array that the module reads.
inline unsigned entries(const Module* m, Group g) {
    unsigned n = m ? total(*m, g) : 0;
    return n > 16 ? 16 : n;
}

// The frame of every function that takes an instance:
//   log line "NAME(#N<args>) -> CODE";
//   an injected fault wins; then an unknown instance, an instance not open,
//   an unplugged module, a group the module lacks; then body(module).
// args(module or null) gives the text after the instance, ", a, b".
template <class Args, class Body>
std::int32_t device_call(const char* name, USBIO_HANDLE h, Group g, Args&& args, Body&& body) {
    auto held = lock();
    Sim& s = sim();
    Instance* in = s.find(h);
    Module* m = in ? in->module : nullptr;
    const std::string arguments = fmt::instance(h, s.find(h, true)) + args(static_cast<const Module*>(m));
    std::int32_t code = USBIO_OK;
    if (s.take_fault(name, code)) {
    } else if (!in) {
        code = USBIO_ERR_HANDLE_INVALID;
    } else if (!m) {
        code = USBIO_ERR_NOT_OPEN;
    } else if (!m->plugged) {
        code = USBIO_ERR_TIMEOUT;
    } else {
        m->last_contact = s.now;
        m->wdt_expired = false;
        if (g != Group::None && total(*m, g) == 0) code = USBIO_ERR_NOT_SUPPORTED;
        else code = body(*m);
    }
    record(name, arguments, fmt::num(code), held);
    return code;
}

inline auto no_args() {
    return [](const Module*) { return std::string(); };
}

// A function with one scalar output: *out = get(module).
template <class T, class Get>
std::int32_t read_scalar(const char* name, USBIO_HANDLE h, Group g, T* out, Get get) {
    return device_call(name, h, g, no_args(), [&](Module& m) -> std::int32_t {
        if (!out) return USBIO_ERR_PARAMETER;
        *out = static_cast<T>(get(static_cast<const Module&>(m)));
        return USBIO_OK;
    });
}

// A function filling the group's channel entries of an output array:
// out[ch] = get(module, ch) for each channel (at most 16).
template <class T, class Get>
std::int32_t read_channels(const char* name, USBIO_HANDLE h, Group g, T* out, Get get) {
    return device_call(name, h, g, no_args(), [&](Module& m) -> std::int32_t {
        if (!out) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, g);
        for (unsigned ch = 0; ch < n; ++ch) out[ch] = static_cast<T>(get(static_cast<const Module&>(m), ch));
        return USBIO_OK;
    });
}

// A per-channel input array, the group's channel entries of it (at most
// 16): nothing changes unless ok(module, ch, value) holds for every one,
// then apply(module, ch, value) for each.
template <class T, class Ok, class Apply>
std::int32_t write_channels(const char* name, USBIO_HANDLE h, Group g, const T* in, Ok ok, Apply apply) {
    auto args = [&](const Module* m) { return ", " + fmt::list(in, entries(m, g)); };
    return device_call(name, h, g, args, [&](Module& m) -> std::int32_t {
        if (!in) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, g);
        for (unsigned ch = 0; ch < n; ++ch)
            if (!ok(static_cast<const Module&>(m), ch, in[ch])) return USBIO_ERR_PARAMETER;
        for (unsigned ch = 0; ch < n; ++ch) apply(m, ch, in[ch]);
        return USBIO_OK;
    });
}

// One channel's value: a channel beyond the group's total, or a value that
// fails ok(module, ch, value), gives USBIO_ERR_PARAMETER.
template <class T, class Ok, class Apply>
std::int32_t write_channel(const char* name, USBIO_HANDLE h, Group g, std::uint8_t channel, T value, Ok ok,
                           Apply apply) {
    auto args = [&](const Module*) {
        if constexpr (std::is_same_v<T, float>) return ", " + fmt::num(channel) + ", " + fmt::real(value);
        else return ", " + fmt::num(channel) + ", " + fmt::num(value);
    };
    return device_call(name, h, g, args, [&](Module& m) -> std::int32_t {
        if (channel >= total(m, g) || !ok(static_cast<const Module&>(m), unsigned{channel}, value))
            return USBIO_ERR_PARAMETER;
        apply(m, unsigned{channel}, value);
        return USBIO_OK;
    });
}

// A 16-channel mask as the 2-byte little-endian array.
inline std::uint16_t mask_from_bytes(const std::uint8_t* b) {
    return static_cast<std::uint16_t>(b[0] | (b[1] << 8));
}
inline void mask_to_bytes(std::uint32_t mask, std::uint8_t* b) {
    b[0] = static_cast<std::uint8_t>(mask & 0xFFu);
    b[1] = static_cast<std::uint8_t>((mask >> 8) & 0xFFu);
}

}  // namespace usbsim::detail
