// Module calls: analog and digital I/O, power-on and safe values, and the
// host watchdog, each as DCON commands to the module at the slot's address.
#include <cmath>

#include "sdk_common.h"

using namespace pacsdk;

namespace {

// ---- Arguments ------------------------------------------------------------

// A channel of 0..total-1 that fits the one-digit channel field.
uint32_t check_channel(int channel, int total) {
    return channel < 0 || channel >= total || channel > 15 ? PAC_ERR_IO_CHANNEL_OUT_OF_RANGE : 0;
}
std::string digit(int channel) { return hex(static_cast<uint32_t>(channel), 1); }

// Digital words: a total of at least 1 channel; more than 32 counts as 32.
uint32_t check_total(int total) { return total <= 0 ? PAC_ERR_IO_CHANNEL_OUT_OF_RANGE : 0; }
uint32_t word_mask(int total) { return total >= 32 ? 0xFFFFFFFFu : (1u << total) - 1; }
// Hex digits of an output word, by channel count.
int word_width(int total) { return total <= 4 ? 1 : total <= 8 ? 2 : total <= 16 ? 4 : 8; }

// ---- Replies ----------------------------------------------------------------

// The data of "@AA". Four digits with at most 8 channels: a mixed module,
// outputs in the first byte and inputs in the second; otherwise one word
// that is the outputs or the inputs, whichever the module has.
uint32_t split_io(const std::string& data, int total, uint32_t* outputs, uint32_t* inputs) {
    auto word = parse_hex(data);
    if (!word) return PAC_ERR_UART_RESPONSE;
    bool mixed = data.size() == 4 && total <= 8;
    *outputs = (mixed ? *word >> 8 : *word) & word_mask(total);
    *inputs = (mixed ? *word & 0xFF : *word) & word_mask(total);
    return 0;
}

// A stored output word (~AA4P, ~AA4S): "VV00" from an 8-bit module, "VVVV"
// from a 16-bit one.
uint32_t stored_word(const std::string& data, int total, uint32_t* value) {
    auto word = parse_hex(data);
    if (!word) return PAC_ERR_UART_RESPONSE;
    *value = (data.size() == 4 && total <= 8 ? *word >> 8 : *word) & word_mask(total);
    return 0;
}

uint32_t ask_real(const Target& t, const std::string& command, const std::string& lead, double* value) {
    std::string data;
    uint32_t e = lead == ">" ? ask_gt(t, command, refused_read, &data) : ask_bang(t, command, refused_read, &data);
    if (e != 0) return e;
    auto v = parse_real(data);
    if (!v) return PAC_ERR_UART_RESPONSE;
    *value = *v;
    return 0;
}

// ---- Bodies -----------------------------------------------------------------

uint32_t read_analog(PAC_HANDLE h, int slot, int channel, int total, float* value, char lead,
                     const char* op) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (uint32_t e = check_channel(channel, total)) return e;
    if (!value) return PAC_ERR_UNKNOWN;
    double v;
    std::string command = std::string(1, lead) + t.aa + op + digit(channel);
    if (uint32_t e = ask_real(t, command, lead == '#' ? ">" : "!", &v)) return e;
    *value = static_cast<float>(v);
    return 0;
}

uint32_t write_ao(PAC_HANDLE h, int slot, int channel, int total, float value) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (uint32_t e = check_channel(channel, total)) return e;
    if (!std::isfinite(value)) return PAC_ERR_IO_VALUE_OUT_OF_RANGE;
    std::string data;
    return ask_gt(t, "#" + t.aa + digit(channel) + engineering(value), refused_value, &data);
}

// The module latches only what a channel drives now: remember the channel's
// value, drive the new one, latch it, drive the old one again.
uint32_t write_ao_stored(PAC_HANDLE h, int slot, int channel, int total, float value, bool power_on) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (uint32_t e = check_channel(channel, total)) return e;
    if (!std::isfinite(value)) return PAC_ERR_IO_VALUE_OUT_OF_RANGE;
    std::string ch = digit(channel), data;
    double saved;
    if (uint32_t e = ask_real(t, "$" + t.aa + "6" + ch, "!", &saved)) return e;
    std::string restore = "#" + t.aa + ch + engineering(saved);
    if (uint32_t e = ask_gt(t, "#" + t.aa + ch + engineering(value), refused_value, &data)) {
        // Refused out of range, the module still drives the clamped value.
        if (e == refused_value) ask_gt(t, restore, refused_read, &data);
        return e;
    }
    uint32_t latched = ask_bang(t, (power_on ? "$" + t.aa + "4" : "~" + t.aa + "5") + ch, refused_read, &data);
    uint32_t restored = ask_gt(t, restore, refused_read, &data);
    return latched != 0 ? latched : restored;
}

uint32_t read_digital(PAC_HANDLE h, int slot, int total, uint32_t* value, bool inputs) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (uint32_t e = check_total(total)) return e;
    if (!value) return PAC_ERR_UNKNOWN;
    std::string data;
    if (uint32_t e = ask_gt(t, "@" + t.aa, refused_read, &data)) return e;
    uint32_t out, in;
    if (uint32_t e = split_io(data, total, &out, &in)) return e;
    *value = inputs ? in : out;
    return 0;
}

uint32_t write_do(PAC_HANDLE h, int slot, int total, uint32_t value) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (uint32_t e = check_total(total)) return e;
    std::string data;
    return ask_gt(t, "@" + t.aa + hex(value & word_mask(total), word_width(total)), refused_value, &data);
}

uint32_t read_do_stored(PAC_HANDLE h, int slot, int total, uint32_t* value, bool power_on) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (uint32_t e = check_total(total)) return e;
    if (!value) return PAC_ERR_UNKNOWN;
    std::string data;
    if (uint32_t e = ask_bang(t, "~" + t.aa + (power_on ? "4P" : "4S"), refused_read, &data)) return e;
    return stored_word(data, total, value);
}

// Modules that take both stored words at once (~AA4 / ~AA5PPSS) get the new
// one with the other kept. Older ones refuse ~AA4 and latch only what they
// drive: drive the value, latch it, drive the old outputs again.
uint32_t write_do_stored(PAC_HANDLE h, int slot, int total, uint32_t value, bool power_on) {
    constexpr uint32_t refused = 0xFFFFFFFFu;  // never a real code
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (uint32_t e = check_total(total)) return e;
    value &= word_mask(total);
    std::string data;
    uint32_t e = ask_bang(t, "~" + t.aa + "4", refused, &data);
    if (e == 0) {
        std::size_t half = data.size() / 2;
        auto pp = parse_hex(data.substr(0, half));
        auto ss = parse_hex(data.substr(half));
        if (data.size() % 2 != 0 || !pp || !ss) return PAC_ERR_UART_RESPONSE;
        (power_on ? *pp : *ss) = value;
        auto width = static_cast<int>(half);
        return ask_bang(t, "~" + t.aa + "5" + hex(*pp, width) + hex(*ss, width), refused_value, &data);
    }
    if (e != refused) return e;
    if (uint32_t e2 = ask_gt(t, "@" + t.aa, refused_read, &data)) return e2;
    uint32_t old_outputs, inputs;
    if (uint32_t e2 = split_io(data, total, &old_outputs, &inputs)) return e2;
    int width = word_width(total);
    if (uint32_t e2 = ask_gt(t, "@" + t.aa + hex(value, width), refused_value, &data)) return e2;
    uint32_t latched = ask_bang(t, "~" + t.aa + (power_on ? "5P" : "5S"), refused_read, &data);
    uint32_t restored = ask_gt(t, "@" + t.aa + hex(old_outputs, width), refused_read, &data);
    return latched != 0 ? latched : restored;
}

uint32_t get_wdt_config(PAC_HANDLE h, int slot, short* enabled, uint32_t* timeout, int* overwrite) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (!enabled || !timeout || !overwrite) return PAC_ERR_UNKNOWN;
    std::string data;
    if (uint32_t e = ask_bang(t, "~" + t.aa + "2", refused_read, &data)) return e;
    // "ETT", or "TT" from older modules, which do not report the enable.
    if (data.size() != 2 && (data.size() != 3 || (data[0] != '0' && data[0] != '1')))
        return PAC_ERR_UART_RESPONSE;
    auto tenths = parse_hex(data.substr(data.size() - 2));
    if (!tenths) return PAC_ERR_UART_RESPONSE;
    *enabled = static_cast<short>(data.size() == 3 ? data[0] == '1' : *tenths != 0);
    *timeout = *tenths;
    *overwrite = 0;
    return 0;
}

uint32_t set_wdt_config(PAC_HANDLE h, int slot, short enabled, uint32_t timeout) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    if (timeout > 255 || (enabled != 0 && timeout == 0)) return PAC_ERR_IO_VALUE_OUT_OF_RANGE;
    std::string data;
    return ask_bang(t, "~" + t.aa + "3" + (enabled != 0 ? "1" : "0") + hex(timeout, 2), refused_value, &data);
}

uint32_t simple_command(PAC_HANDLE h, int slot, const char* body) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    std::string data;
    return ask_bang(t, body[0] + t.aa + (body + 1), refused_read, &data);
}

}  // namespace

extern "C" {

PACSDK_API PAC_BOOL pac_ReadAI(PAC_HANDLE port, int slot, int channel, int total, float* value) {
    return status_call(
        "pac_ReadAI", [&] { return read_analog(port, slot, channel, total, value, '#', ""); }, port, slot,
        channel, total);
}

PACSDK_API PAC_BOOL pac_ReadAO(PAC_HANDLE port, int slot, int channel, int total, float* value) {
    return status_call(
        "pac_ReadAO", [&] { return read_analog(port, slot, channel, total, value, '$', "6"); }, port, slot,
        channel, total);
}

PACSDK_API PAC_BOOL pac_WriteAO(PAC_HANDLE port, int slot, int channel, int total, float value) {
    return status_call(
        "pac_WriteAO", [&] { return write_ao(port, slot, channel, total, value); }, port, slot, channel, total,
        value);
}

PACSDK_API PAC_BOOL pac_ReadDI_MF(PAC_HANDLE port, int slot, int total, PAC_DWORD* value) {
    return status_call(
        "pac_ReadDI_MF", [&] { return read_digital(port, slot, total, value, true); }, port, slot, total);
}

PACSDK_API PAC_BOOL pac_ReadDO_MF(PAC_HANDLE port, int slot, int total, PAC_DWORD* value) {
    return status_call(
        "pac_ReadDO_MF", [&] { return read_digital(port, slot, total, value, false); }, port, slot, total);
}

PACSDK_API PAC_BOOL pac_WriteDO_MF(PAC_HANDLE port, int slot, int total, PAC_DWORD value) {
    return status_call(
        "pac_WriteDO_MF", [&] { return write_do(port, slot, total, value); }, port, slot, total, value);
}

PACSDK_API PAC_BOOL pac_ReadModulePowerOnValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t* value) {
    return status_call(
        "pac_ReadModulePowerOnValueDO_MF", [&] { return read_do_stored(port, slot, total, value, true); }, port,
        slot, total);
}

PACSDK_API PAC_BOOL pac_WriteModulePowerOnValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t value) {
    return status_call(
        "pac_WriteModulePowerOnValueDO_MF", [&] { return write_do_stored(port, slot, total, value, true); },
        port, slot, total, value);
}

PACSDK_API PAC_BOOL pac_ReadModuleSafeValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t* value) {
    return status_call(
        "pac_ReadModuleSafeValueDO_MF", [&] { return read_do_stored(port, slot, total, value, false); }, port,
        slot, total);
}

PACSDK_API PAC_BOOL pac_WriteModuleSafeValueDO_MF(PAC_HANDLE port, int slot, int total, uint32_t value) {
    return status_call(
        "pac_WriteModuleSafeValueDO_MF", [&] { return write_do_stored(port, slot, total, value, false); }, port,
        slot, total, value);
}

PACSDK_API PAC_BOOL pac_ReadModulePowerOnValueAO_MF(PAC_HANDLE port, int slot, int channel, int total,
                                                    float* value) {
    return status_call(
        "pac_ReadModulePowerOnValueAO_MF",
        [&] { return read_analog(port, slot, channel, total, value, '$', "7"); }, port, slot, channel, total);
}

PACSDK_API PAC_BOOL pac_WriteModulePowerOnValueAO_MF(PAC_HANDLE port, int slot, int channel, int total,
                                                     float value) {
    return status_call(
        "pac_WriteModulePowerOnValueAO_MF",
        [&] { return write_ao_stored(port, slot, channel, total, value, true); }, port, slot, channel, total,
        value);
}

PACSDK_API PAC_BOOL pac_ReadModuleSafeValueAO_MF(PAC_HANDLE port, int slot, int channel, int total,
                                                 float* value) {
    return status_call(
        "pac_ReadModuleSafeValueAO_MF", [&] { return read_analog(port, slot, channel, total, value, '~', "4"); },
        port, slot, channel, total);
}

PACSDK_API PAC_BOOL pac_WriteModuleSafeValueAO_MF(PAC_HANDLE port, int slot, int channel, int total,
                                                  float value) {
    return status_call(
        "pac_WriteModuleSafeValueAO_MF",
        [&] { return write_ao_stored(port, slot, channel, total, value, false); }, port, slot, channel, total,
        value);
}

// The status is the answer, so this call logs and returns the flag.
PACSDK_API PAC_BOOL pac_GetModuleWDTStatus(PAC_HANDLE port, int slot) {
    Library& lib = library();
    std::lock_guard lock(lib.mutex);
    const std::string call = call_args(port, slot);
    bool timed_out = false;
    uint32_t error = 0;
    if (!lib.take_fault("pac_GetModuleWDTStatus", &error)) error = [&]() -> uint32_t {
        Target t;
        if (uint32_t e = resolve(port, slot, &t)) return e;
        std::string data;
        if (uint32_t e = ask_bang(t, "~" + t.aa + "0", refused_read, &data)) return e;
        auto status = data.size() == 2 ? parse_hex(data) : std::nullopt;
        if (!status) return PAC_ERR_UART_RESPONSE;
        timed_out = (*status & 0x04) != 0;
        return 0;
    }();
    if (error != 0) set_last_error(error);
    lib.log.call("pac_GetModuleWDTStatus", call, timed_out ? "1" : "0");
    return timed_out ? 1 : 0;
}

PACSDK_API PAC_BOOL pac_GetModuleWDTConfig(PAC_HANDLE port, int slot, short* enabled, uint32_t* timeout,
                                           int* overwrite) {
    return status_call(
        "pac_GetModuleWDTConfig", [&] { return get_wdt_config(port, slot, enabled, timeout, overwrite); }, port,
        slot);
}

PACSDK_API PAC_BOOL pac_SetModuleWDTConfig(PAC_HANDLE port, int slot, short enabled, uint32_t timeout,
                                           int overwrite) {
    return status_call(
        "pac_SetModuleWDTConfig", [&] { return set_wdt_config(port, slot, enabled, timeout); }, port, slot,
        enabled, timeout, overwrite);
}

PACSDK_API PAC_BOOL pac_ResetModuleWDT(PAC_HANDLE port, int slot) {
    return status_call("pac_ResetModuleWDT", [&] { return simple_command(port, slot, "~1"); }, port, slot);
}

PACSDK_API PAC_BOOL pac_RefreshModuleWDT(PAC_HANDLE port, int slot) {
    return status_call(
        "pac_RefreshModuleWDT",
        [&]() -> uint32_t {
            Target t;
            if (uint32_t e = resolve(port, slot, &t)) return e;
            broadcast(*t.session, "~**");
            return 0;
        },
        port, slot);
}

}  // extern "C"
