// Module calls for PWM modules (8 channels, 8 inputs): "$AACn..." channel
// settings, "@AADO" / "$AAY" starts, "$AAW" save, "@AADI" status.
#include <cmath>

#include "sdk_common.h"

using namespace pacsdk;

namespace {

constexpr int pwm_channels = 8;

// A setting of one PWM channel: handle, slot, then the channel.
uint32_t channel_target(PAC_HANDLE h, int slot, short channel, Target* t) {
    if (uint32_t e = resolve(h, slot, t)) return e;
    if (channel < 0 || channel >= pwm_channels) return PAC_ERR_IO_CHANNEL_OUT_OF_RANGE;
    return 0;
}

std::string channel_command(const Target& t, short channel, char op) {
    return "$" + t.aa + "C" + std::to_string(channel) + op;
}

// Sets channel setting op to field (already formatted).
uint32_t set_setting(PAC_HANDLE h, int slot, short channel, char op, const std::optional<std::string>& field) {
    Target t;
    if (uint32_t e = channel_target(h, slot, channel, &t)) return e;
    if (!field) return PAC_ERR_IO_VALUE_OUT_OF_RANGE;
    std::string data;
    return ask_bang(t, channel_command(t, channel, op) + *field, refused_value, &data);
}

// Reads channel setting op: the data after "!AA".
uint32_t get_setting(PAC_HANDLE h, int slot, short channel, char op, const void* out, std::string* data) {
    Target t;
    if (uint32_t e = channel_target(h, slot, channel, &t)) return e;
    if (!out) return PAC_ERR_UNKNOWN;
    return ask_bang(t, channel_command(t, channel, op), refused_read, data);
}

// One-digit fields (mode, trigger, sync flag, sync start).
std::optional<std::string> digit_field(long long value) {
    if (value < 0 || value > 9) return std::nullopt;
    return std::to_string(value);
}

std::optional<std::string> duty_field(float duty) {
    if (!std::isfinite(duty)) return std::nullopt;
    long tenths = std::lround(static_cast<double>(duty) * 10.0);
    if (tenths < 0 || tenths > 999) return std::nullopt;
    return fixed(static_cast<double>(tenths) / 10.0, 1, 4, false);
}

uint32_t get_digit(PAC_HANDLE h, int slot, short channel, char op, const void* out, uint32_t* value) {
    std::string data;
    if (uint32_t e = get_setting(h, slot, channel, op, out, &data)) return e;
    auto v = data.size() == 1 ? parse_decimal(data) : std::nullopt;
    if (!v) return PAC_ERR_UART_RESPONSE;
    *value = *v;
    return 0;
}

uint32_t module_command(PAC_HANDLE h, int slot, const std::string& body, uint32_t refusal) {
    Target t;
    if (uint32_t e = resolve(h, slot, &t)) return e;
    std::string data;
    return ask_bang(t, body.substr(0, 1) + t.aa + body.substr(1), refusal, &data);
}

}  // namespace

extern "C" {

PACSDK_API PAC_BOOL pac_SetPWMDuty(PAC_HANDLE port, int slot, short channel, float duty) {
    return status_call(
        "pac_SetPWMDuty", [&] { return set_setting(port, slot, channel, 'D', duty_field(duty)); }, port, slot,
        channel, duty);
}

PACSDK_API PAC_BOOL pac_GetPWMDuty(PAC_HANDLE port, int slot, short channel, float* duty) {
    return status_call(
        "pac_GetPWMDuty",
        [&]() -> uint32_t {
            std::string data;
            if (uint32_t e = get_setting(port, slot, channel, 'D', duty, &data)) return e;
            auto v = data.size() == 4 ? parse_real(data) : std::nullopt;
            if (!v) return PAC_ERR_UART_RESPONSE;
            *duty = static_cast<float>(*v);
            return 0;
        },
        port, slot, channel);
}

PACSDK_API PAC_BOOL pac_SetPWMFrequency(PAC_HANDLE port, int slot, short channel, PAC_DWORD hertz) {
    auto field = hertz <= 999999 ? std::optional(fixed(hertz, 0, 6, false)) : std::nullopt;
    return status_call(
        "pac_SetPWMFrequency", [&] { return set_setting(port, slot, channel, 'F', field); }, port, slot, channel,
        hertz);
}

PACSDK_API PAC_BOOL pac_GetPWMFrequency(PAC_HANDLE port, int slot, short channel, PAC_DWORD* hertz) {
    return status_call(
        "pac_GetPWMFrequency",
        [&]() -> uint32_t {
            std::string data;
            if (uint32_t e = get_setting(port, slot, channel, 'F', hertz, &data)) return e;
            auto v = data.size() == 6 ? parse_decimal(data) : std::nullopt;
            if (!v) return PAC_ERR_UART_RESPONSE;
            *hertz = *v;
            return 0;
        },
        port, slot, channel);
}

PACSDK_API PAC_BOOL pac_SetPWMMode(PAC_HANDLE port, int slot, short channel, PAC_DWORD mode) {
    return status_call(
        "pac_SetPWMMode", [&] { return set_setting(port, slot, channel, 'M', digit_field(mode)); }, port, slot,
        channel, mode);
}

PACSDK_API PAC_BOOL pac_GetPWMMode(PAC_HANDLE port, int slot, short channel, PAC_DWORD* mode) {
    return status_call(
        "pac_GetPWMMode", [&] { return get_digit(port, slot, channel, 'M', mode, mode); }, port, slot, channel);
}

PACSDK_API PAC_BOOL pac_SetPWMDITriggerConfig(PAC_HANDLE port, int slot, short channel, short config) {
    return status_call(
        "pac_SetPWMDITriggerConfig", [&] { return set_setting(port, slot, channel, 'T', digit_field(config)); },
        port, slot, channel, config);
}

PACSDK_API PAC_BOOL pac_GetPWMDITriggerConfig(PAC_HANDLE port, int slot, short channel, short* config) {
    return status_call(
        "pac_GetPWMDITriggerConfig",
        [&]() -> uint32_t {
            uint32_t v;
            if (uint32_t e = get_digit(port, slot, channel, 'T', config, &v)) return e;
            *config = static_cast<short>(v);
            return 0;
        },
        port, slot, channel);
}

PACSDK_API PAC_BOOL pac_SetPWMStart(PAC_HANDLE port, int slot, short mask) {
    return status_call(
        "pac_SetPWMStart",
        [&] { return module_command(port, slot, "@DO" + hex(static_cast<uint32_t>(mask) & 0xFF, 2), refused_value); },
        port, slot, mask);
}

PACSDK_API PAC_BOOL pac_SetPWMSynChannel(PAC_HANDLE port, int slot, short channel, short config) {
    return status_call(
        "pac_SetPWMSynChannel", [&] { return set_setting(port, slot, channel, 'N', digit_field(config)); }, port,
        slot, channel, config);
}

PACSDK_API PAC_BOOL pac_SyncPWMStart(PAC_HANDLE port, int slot, short config) {
    return status_call(
        "pac_SyncPWMStart",
        [&]() -> uint32_t {
            Target t;
            if (uint32_t e = resolve(port, slot, &t)) return e;
            auto field = digit_field(config);
            if (!field) return PAC_ERR_IO_VALUE_OUT_OF_RANGE;
            std::string data;
            return ask_bang(t, "$" + t.aa + "Y" + *field, refused_value, &data);
        },
        port, slot, config);
}

PACSDK_API PAC_BOOL pac_SavePWMConfig(PAC_HANDLE port, int slot) {
    return status_call(
        "pac_SavePWMConfig", [&] { return module_command(port, slot, "$W", refused_read); }, port, slot);
}

PACSDK_API PAC_BOOL pac_GetPWMDIOStatus(PAC_HANDLE port, int slot, unsigned char* pwm_status,
                                        unsigned char* di_status) {
    return status_call(
        "pac_GetPWMDIOStatus",
        [&]() -> uint32_t {
            Target t;
            if (uint32_t e = resolve(port, slot, &t)) return e;
            if (!pwm_status || !di_status) return PAC_ERR_UNKNOWN;
            std::string data;
            if (uint32_t e = ask_bang(t, "@" + t.aa + "DI", refused_read, &data)) return e;
            auto both = data.size() == 4 ? parse_hex(data) : std::nullopt;
            if (!both) return PAC_ERR_UART_RESPONSE;
            for (int c = 0; c < pwm_channels; ++c) {
                pwm_status[c] = static_cast<unsigned char>((*both >> (8 + c)) & 1);
                di_status[c] = static_cast<unsigned char>((*both >> c) & 1);
            }
            return 0;
        },
        port, slot);
}

PACSDK_API PAC_BOOL pac_SetPWMPulseCount(PAC_HANDLE port, int slot, short channel, PAC_DWORD count) {
    auto field = count <= 0xFFFF ? std::optional(hex(count, 4)) : std::nullopt;
    return status_call(
        "pac_SetPWMPulseCount", [&] { return set_setting(port, slot, channel, 'P', field); }, port, slot, channel,
        count);
}

PACSDK_API PAC_BOOL pac_GetPWMPulseCount(PAC_HANDLE port, int slot, short channel, PAC_DWORD* count) {
    return status_call(
        "pac_GetPWMPulseCount",
        [&]() -> uint32_t {
            std::string data;
            if (uint32_t e = get_setting(port, slot, channel, 'P', count, &data)) return e;
            auto v = data.size() == 4 ? parse_hex(data) : std::nullopt;
            if (!v) return PAC_ERR_UART_RESPONSE;
            *count = *v;
            return 0;
        },
        port, slot, channel);
}

}  // extern "C"
