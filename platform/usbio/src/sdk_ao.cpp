// SDK functions of the analog output group.
#include "sim.h"

using namespace usbsim;
using namespace usbsim::detail;

namespace {

constexpr std::uint32_t kAoMaxRaw = 4095;

bool raw_ok(const Module&, unsigned, std::uint32_t v) { return v <= kAoMaxRaw; }

bool analog_ok(const Module& m, unsigned ch, float v) {
    auto r = ao_range(m.ao[ch].type_code);
    double d = static_cast<double>(v);
    return r && d >= r->low && d <= r->high;  // false for NaN
}

bool type_ok(const Module& m, unsigned, std::uint8_t code) { return supports(m.model->ao_types, code); }
bool any(const Module&, unsigned, std::uint8_t) { return true; }

double decode(const AoChannel& o, std::uint32_t raw) { return ao_value_from_raw(o.type_code, raw); }
float zero_value(const AoChannel& o) { return ao_zero_value(o.type_code); }
std::uint32_t zero_raw(const AoChannel& o) { return ao_raw_from_value(o.type_code, 0.0); }

// What a channel drives: the range's zero level (clamped into the range)
// while disabled, its safety value after the watchdog expired, else its
// command. The read-back reports the commanded value itself, not its code
// decoded again.
std::uint32_t current_raw(const Module& m, unsigned ch) {
    const AoChannel& o = m.ao[ch];
    if (!(m.ao_enable & (1u << ch))) return zero_raw(o);
    return o.safe ? o.safety_raw : o.raw;
}

float current_value(const Module& m, unsigned ch) {
    const AoChannel& o = m.ao[ch];
    if (!(m.ao_enable & (1u << ch))) return zero_value(o);
    return o.safe ? o.safety : o.expected;
}

void command_zero(Module& m, unsigned ch) {
    AoChannel& o = m.ao[ch];
    o.raw = zero_raw(o);
    o.expected = zero_value(o);
    o.safe = false;
}

void command_raw(Module& m, unsigned ch, std::uint32_t raw) {
    AoChannel& o = m.ao[ch];
    o.raw = raw;
    o.expected = static_cast<float>(decode(o, raw));
    o.safe = false;
}

void command_analog(Module& m, unsigned ch, float v) {
    AoChannel& o = m.ao[ch];
    o.raw = ao_raw_from_value(o.type_code, static_cast<double>(v));
    o.expected = v;
    o.safe = false;
}

// A new range puts the output, its power-on value and its safety value at
// the range's zero level.
void set_type(Module& m, unsigned ch, std::uint8_t code) {
    AoChannel& o = m.ao[ch];
    o.type_code = code;
    command_zero(m, ch);
    o.power_on_raw = o.safety_raw = o.raw;
    o.power_on = o.safety = o.expected;
}

// Mask setters and getters over the 2-byte array.
template <class Set>
std::int32_t set_mask(const char* name, USBIO_HANDLE h, const std::uint8_t* mask, Set set) {
    auto args = [&](const Module*) { return ", " + fmt::list(mask, 2); };
    return device_call(name, h, Group::AO, args, [&](Module& m) {
        if (!mask) return USBIO_ERR_PARAMETER;
        set(m, static_cast<std::uint16_t>(mask_from_bytes(mask) & bits(m.model->ao)));
        return USBIO_OK;
    });
}

std::int32_t get_mask(const char* name, USBIO_HANDLE h, std::uint8_t* mask, std::uint16_t ModuleState::*field) {
    return device_call(name, h, Group::AO, no_args(), [&](Module& m) {
        if (!mask) return USBIO_ERR_PARAMETER;
        mask_to_bytes(m.*field, mask);
        return USBIO_OK;
    });
}

}  // namespace

extern "C" {

USBIO_API int32_t AO_SetTypeCode(USBIO_HANDLE h, uint8_t channel, uint8_t typeCode) {
    return write_channel("AO_SetTypeCode", h, Group::AO, channel, typeCode, type_ok, set_type);
}

USBIO_API int32_t AO_SetTypeCodes(USBIO_HANDLE h, const uint8_t typeCodes[16]) {
    return write_channels("AO_SetTypeCodes", h, Group::AO, typeCodes, type_ok, set_type);
}

USBIO_API int32_t AO_GetTypeCode(USBIO_HANDLE h, uint8_t typeCodes[16]) {
    return read_channels("AO_GetTypeCode", h, Group::AO, typeCodes,
                         [](const Module& m, unsigned ch) { return m.ao[ch].type_code; });
}

USBIO_API int32_t AO_SetChEnable(USBIO_HANDLE h, const uint8_t mask[2]) {
    return set_mask("AO_SetChEnable", h, mask, [](Module& m, std::uint16_t v) { m.ao_enable = v; });
}

USBIO_API int32_t AO_GetChEnable(USBIO_HANDLE h, uint8_t mask[2]) {
    return get_mask("AO_GetChEnable", h, mask, &ModuleState::ao_enable);
}

USBIO_API int32_t AO_WriteChannelValueDigital(USBIO_HANDLE h, uint8_t channel, uint32_t value) {
    return write_channel("AO_WriteChannelValueDigital", h, Group::AO, channel, value, raw_ok, command_raw);
}

USBIO_API int32_t AO_WriteValueDigital(USBIO_HANDLE h, const uint32_t values[16]) {
    return write_channels("AO_WriteValueDigital", h, Group::AO, values, raw_ok, command_raw);
}

USBIO_API int32_t AO_WriteChannelValueAnalog(USBIO_HANDLE h, uint8_t channel, float value) {
    return write_channel("AO_WriteChannelValueAnalog", h, Group::AO, channel, value, analog_ok, command_analog);
}

USBIO_API int32_t AO_WriteValueAnalog(USBIO_HANDLE h, const float values[16]) {
    return write_channels("AO_WriteValueAnalog", h, Group::AO, values, analog_ok, command_analog);
}

USBIO_API int32_t AO_SetPowerOnEnable(USBIO_HANDLE h, const uint8_t enables[16]) {
    return write_channels("AO_SetPowerOnEnable", h, Group::AO, enables, any,
                          [](Module& m, unsigned ch, std::uint8_t v) { m.ao[ch].power_on_enable = v ? 1 : 0; });
}

USBIO_API int32_t AO_GetPowerOnEnable(USBIO_HANDLE h, uint8_t enables[16]) {
    return read_channels("AO_GetPowerOnEnable", h, Group::AO, enables,
                         [](const Module& m, unsigned ch) { return m.ao[ch].power_on_enable; });
}

namespace {
void power_on_raw(Module& m, unsigned ch, std::uint32_t v) {
    m.ao[ch].power_on_raw = v;
    m.ao[ch].power_on = static_cast<float>(decode(m.ao[ch], v));
}
void power_on_analog(Module& m, unsigned ch, float v) {
    m.ao[ch].power_on_raw = ao_raw_from_value(m.ao[ch].type_code, static_cast<double>(v));
    m.ao[ch].power_on = v;
}
void safety_raw(Module& m, unsigned ch, std::uint32_t v) {
    m.ao[ch].safety_raw = v;
    m.ao[ch].safety = static_cast<float>(decode(m.ao[ch], v));
}
void safety_analog(Module& m, unsigned ch, float v) {
    m.ao[ch].safety_raw = ao_raw_from_value(m.ao[ch].type_code, static_cast<double>(v));
    m.ao[ch].safety = v;
}
}  // namespace

USBIO_API int32_t AO_SetPowerOnValueDigital(USBIO_HANDLE h, const uint32_t values[16]) {
    return write_channels("AO_SetPowerOnValueDigital", h, Group::AO, values, raw_ok, power_on_raw);
}

USBIO_API int32_t AO_SetPowerOnChannelValueDigital(USBIO_HANDLE h, uint8_t channel, uint32_t value) {
    return write_channel("AO_SetPowerOnChannelValueDigital", h, Group::AO, channel, value, raw_ok, power_on_raw);
}

USBIO_API int32_t AO_SetPowerOnValueAnalog(USBIO_HANDLE h, const float values[16]) {
    return write_channels("AO_SetPowerOnValueAnalog", h, Group::AO, values, analog_ok, power_on_analog);
}

USBIO_API int32_t AO_SetPowerOnChannelValueAnalog(USBIO_HANDLE h, uint8_t channel, float value) {
    return write_channel("AO_SetPowerOnChannelValueAnalog", h, Group::AO, channel, value, analog_ok,
                         power_on_analog);
}

USBIO_API int32_t AO_GetPowerOnValueDigital(USBIO_HANDLE h, uint32_t values[16]) {
    return read_channels("AO_GetPowerOnValueDigital", h, Group::AO, values,
                         [](const Module& m, unsigned ch) { return m.ao[ch].power_on_raw; });
}

USBIO_API int32_t AO_GetPowerOnValueAnalog(USBIO_HANDLE h, float values[16]) {
    return read_channels("AO_GetPowerOnValueAnalog", h, Group::AO, values,
                         [](const Module& m, unsigned ch) { return m.ao[ch].power_on; });
}

USBIO_API int32_t AO_SetSafetyEnable(USBIO_HANDLE h, const uint8_t mask[2]) {
    return set_mask("AO_SetSafetyEnable", h, mask, [](Module& m, std::uint16_t v) { m.ao_safety_enable = v; });
}

USBIO_API int32_t AO_GetSafetyEnable(USBIO_HANDLE h, uint8_t mask[2]) {
    return get_mask("AO_GetSafetyEnable", h, mask, &ModuleState::ao_safety_enable);
}

USBIO_API int32_t AO_SetSafetyValueDigital(USBIO_HANDLE h, const uint32_t values[16]) {
    return write_channels("AO_SetSafetyValueDigital", h, Group::AO, values, raw_ok, safety_raw);
}

USBIO_API int32_t AO_SetSafetyChannelValueDigital(USBIO_HANDLE h, uint8_t channel, uint32_t value) {
    return write_channel("AO_SetSafetyChannelValueDigital", h, Group::AO, channel, value, raw_ok, safety_raw);
}

USBIO_API int32_t AO_SetSafetyValueAnalog(USBIO_HANDLE h, const float values[16]) {
    return write_channels("AO_SetSafetyValueAnalog", h, Group::AO, values, analog_ok, safety_analog);
}

USBIO_API int32_t AO_SetSafetyChannelValueAnalog(USBIO_HANDLE h, uint8_t channel, float value) {
    return write_channel("AO_SetSafetyChannelValueAnalog", h, Group::AO, channel, value, analog_ok, safety_analog);
}

USBIO_API int32_t AO_GetSafetyValueDigital(USBIO_HANDLE h, uint32_t values[16]) {
    return read_channels("AO_GetSafetyValueDigital", h, Group::AO, values,
                         [](const Module& m, unsigned ch) { return m.ao[ch].safety_raw; });
}

USBIO_API int32_t AO_GetSafetyValueAnalog(USBIO_HANDLE h, float values[16]) {
    return read_channels("AO_GetSafetyValueAnalog", h, Group::AO, values,
                         [](const Module& m, unsigned ch) { return m.ao[ch].safety; });
}

USBIO_API int32_t AO_GetTotalSupportType(USBIO_HANDLE h, uint8_t counts[64]) {
    return read_channels("AO_GetTotalSupportType", h, Group::AO, counts,
                         [](const Module& m, unsigned) { return m.model->ao_types.size(); });
}

USBIO_API int32_t AO_GetSupportTypeCode(USBIO_HANDLE h, uint8_t typeCodes[64]) {
    return device_call("AO_GetSupportTypeCode", h, Group::AO, no_args(), [&](Module& m) {
        if (!typeCodes) return USBIO_ERR_PARAMETER;
        auto list = m.model->ao_types;
        for (std::size_t i = 0; i < list.size() && i < USBIO_TYPE_LIST_SIZE; ++i) typeCodes[i] = list[i];
        return USBIO_OK;
    });
}

USBIO_API int32_t AO_GetResolution(USBIO_HANDLE h, uint8_t resolution[16]) {
    return read_channels("AO_GetResolution", h, Group::AO, resolution,
                         [](const Module& m, unsigned) { return m.model->ao_resolution; });
}

USBIO_API int32_t AO_ReadExpValueDigital(USBIO_HANDLE h, uint32_t values[16]) {
    return read_channels("AO_ReadExpValueDigital", h, Group::AO, values,
                         [](const Module& m, unsigned ch) { return m.ao[ch].raw; });
}

USBIO_API int32_t AO_ReadExpValueAnalog(USBIO_HANDLE h, float values[16]) {
    return read_channels("AO_ReadExpValueAnalog", h, Group::AO, values,
                         [](const Module& m, unsigned ch) { return m.ao[ch].expected; });
}

USBIO_API int32_t AO_ReadCurValueDigital(USBIO_HANDLE h, uint32_t values[16]) {
    return read_channels("AO_ReadCurValueDigital", h, Group::AO, values, current_raw);
}

USBIO_API int32_t AO_ReadCurValueAnalog(USBIO_HANDLE h, float values[16]) {
    return read_channels("AO_ReadCurValueAnalog", h, Group::AO, values, current_value);
}

}  // extern "C"
