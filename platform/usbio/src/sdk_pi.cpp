// SDK functions of the pulse input group.
//
// In the 4-channel modes (up/down, pulse/direction, A/B phase) channels
// pair up, 0/1, 2/3, ...: the mode is set on the even channel (both take
// it), and the even channel carries the pair's signed count, status and
// frequency; the odd channel reads 0.
#include <cmath>

#include "sim.h"

using namespace usbsim;
using namespace usbsim::detail;

namespace {

constexpr std::uint8_t kFrequency = 0x51;
constexpr std::uint16_t kLpWidthMax = 32767;

bool paired(const Module& m, unsigned ch) { return is_pair_mode(m.pi[ch & ~1u].type_code); }
bool odd_of_pair(const Module& m, unsigned ch) { return (ch & 1u) && paired(m, ch); }

void restart(PiChannel& p) {
    p.count = 0;
    p.status = 0;
    p.pending_pulses = 0.0;
}

// A channel's type code is valid where it is: a 4-channel mode only on an
// even channel with a partner, and the odd channel of a pair cannot leave it.
bool type_ok(const Module& m, unsigned ch, std::uint8_t code) {
    if (!supports(m.model->pi_types, code)) return false;
    if (is_pair_mode(code)) return (ch & 1u) == 0 && ch + 1 < m.model->pi;
    return !odd_of_pair(m, ch);
}

void set_type(Module& m, unsigned ch, std::uint8_t code) {
    bool pair_now = (ch & 1u) == 0 && ch + 1 < m.model->pi && (is_pair_mode(code) || paired(m, ch));
    m.pi[ch].type_code = code;
    restart(m.pi[ch]);
    if (pair_now) {
        m.pi[ch + 1].type_code = code;
        restart(m.pi[ch + 1]);
    }
}

bool mode_ok(const Module&, unsigned, std::uint8_t mode) { return mode <= 2; }
bool width_ok(const Module&, unsigned, std::uint16_t w) { return w >= 1 && w <= kLpWidthMax; }

// Where the value of a channel lives: the even channel of a pair.
unsigned value_channel(const Module& m, unsigned ch) { return paired(m, ch) ? (ch & ~1u) : ch; }

template <class Apply>
std::int32_t apply_mask(const char* name, USBIO_HANDLE h, const std::uint8_t* mask, Apply apply) {
    auto args = [&](const Module*) { return ", " + fmt::list(mask, 2); };
    return device_call(name, h, Group::PI, args, [&](Module& m) {
        if (!mask) return USBIO_ERR_PARAMETER;
        std::uint16_t bitsSet = mask_from_bytes(mask);
        for (unsigned ch = 0; ch < m.model->pi; ++ch) apply(m, ch, (bitsSet >> ch) & 1u);
        return USBIO_OK;
    });
}

void clear_count(PiChannel& p) {
    p.count = 0;
    p.pending_pulses = 0.0;
}

void clear_status(PiChannel& p) { p.status = 0; }

// A clear of one channel, which is its only argument; a channel beyond the
// group's total is refused.
std::int32_t clear_channel(const char* name, USBIO_HANDLE h, std::uint8_t channel, void (*clear)(PiChannel&)) {
    auto args = [&](const Module*) { return ", " + fmt::num(channel); };
    return device_call(name, h, Group::PI, args, [&](Module& m) {
        if (channel >= m.model->pi) return USBIO_ERR_PARAMETER;
        clear(m.pi[value_channel(m, channel)]);
        return USBIO_OK;
    });
}

// A clear of the channels whose bit is set in the mask.
std::int32_t clear_mask(const char* name, USBIO_HANDLE h, const std::uint8_t* mask, void (*clear)(PiChannel&)) {
    return apply_mask(name, h, mask, [clear](Module& m, unsigned ch, bool on) {
        if (on) clear(m.pi[value_channel(m, ch)]);
    });
}

std::int32_t get_flags(const char* name, USBIO_HANDLE h, std::uint8_t* mask, bool PiChannel::*flag) {
    return device_call(name, h, Group::PI, no_args(), [&](Module& m) {
        if (!mask) return USBIO_ERR_PARAMETER;
        std::uint32_t v = 0;
        for (unsigned ch = 0; ch < m.model->pi; ++ch)
            if (m.pi[ch].*flag) v |= 1u << ch;
        mask_to_bytes(v, mask);
        return USBIO_OK;
    });
}

template <class Value, class Get>
std::int32_t read_values(const char* name, USBIO_HANDLE h, Value* values, std::uint8_t* status, Get get) {
    return device_call(name, h, Group::PI, no_args(), [&](Module& m) {
        if (!values || !status) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, Group::PI);
        for (unsigned ch = 0; ch < n; ++ch) {
            if (odd_of_pair(m, ch)) {
                values[ch] = 0;
                status[ch] = 0;
            } else {
                values[ch] = get(m.pi[ch]);
                status[ch] = m.pi[ch].status;
            }
        }
        return USBIO_OK;
    });
}

}  // namespace

extern "C" {

USBIO_API int32_t PI_SetTypeCode(USBIO_HANDLE h, uint8_t channel, uint8_t typeCode) {
    return write_channel("PI_SetTypeCode", h, Group::PI, channel, typeCode, type_ok, set_type);
}

USBIO_API int32_t PI_SetTypeCodes(USBIO_HANDLE h, const uint8_t typeCodes[16]) {
    auto args = [&](const Module* m) { return ", " + fmt::list(typeCodes, entries(m, Group::PI)); };
    return device_call("PI_SetTypeCodes", h, Group::PI, args, [&](Module& m) {
        if (!typeCodes) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, Group::PI);
        for (unsigned ch = 0; ch < n; ++ch) {
            std::uint8_t code = typeCodes[ch];
            if (!supports(m.model->pi_types, code)) return USBIO_ERR_PARAMETER;
            bool lead_pair = is_pair_mode(typeCodes[ch & ~1u]);
            if (ch & 1u) {
                if (lead_pair ? code != typeCodes[ch - 1] : is_pair_mode(code)) return USBIO_ERR_PARAMETER;
            } else if (lead_pair && ch + 1 >= n) {
                return USBIO_ERR_PARAMETER;
            }
        }
        for (unsigned ch = 0; ch < n; ++ch) {
            if (m.pi[ch].type_code != typeCodes[ch]) restart(m.pi[ch]);
            m.pi[ch].type_code = typeCodes[ch];
        }
        return USBIO_OK;
    });
}

USBIO_API int32_t PI_GetTypeCode(USBIO_HANDLE h, uint8_t typeCodes[16]) {
    return read_channels("PI_GetTypeCode", h, Group::PI, typeCodes,
                         [](const Module& m, unsigned ch) { return m.pi[ch].type_code; });
}

USBIO_API int32_t PI_SetTriggerMode(USBIO_HANDLE h, uint8_t channel, uint8_t mode) {
    return write_channel("PI_SetTriggerMode", h, Group::PI, channel, mode, mode_ok,
                         [](Module& m, unsigned ch, std::uint8_t v) { m.pi[ch].trigger_mode = v; });
}

USBIO_API int32_t PI_SetTriggerModes(USBIO_HANDLE h, const uint8_t modes[16]) {
    return write_channels("PI_SetTriggerModes", h, Group::PI, modes, mode_ok,
                          [](Module& m, unsigned ch, std::uint8_t v) { m.pi[ch].trigger_mode = v; });
}

USBIO_API int32_t PI_GetTriggerMode(USBIO_HANDLE h, uint8_t modes[16]) {
    return read_channels("PI_GetTriggerMode", h, Group::PI, modes,
                         [](const Module& m, unsigned ch) { return m.pi[ch].trigger_mode; });
}

USBIO_API int32_t PI_SetChIsolatedFlag(USBIO_HANDLE h, uint8_t channel, uint8_t isolated) {
    return write_channel("PI_SetChIsolatedFlag", h, Group::PI, channel, isolated,
                         [](const Module&, unsigned, std::uint8_t) { return true; },
                         [](Module& m, unsigned ch, std::uint8_t v) { m.pi[ch].isolated = v != 0; });
}

USBIO_API int32_t PI_SetChIsolatedFlags(USBIO_HANDLE h, const uint8_t mask[2]) {
    return apply_mask("PI_SetChIsolatedFlags", h, mask,
                      [](Module& m, unsigned ch, bool on) { m.pi[ch].isolated = on; });
}

USBIO_API int32_t PI_GetChIsolatedFlag(USBIO_HANDLE h, uint8_t mask[2]) {
    return get_flags("PI_GetChIsolatedFlag", h, mask, &PiChannel::isolated);
}

USBIO_API int32_t PI_SetLPFilterEnable(USBIO_HANDLE h, uint8_t channel, uint8_t enable) {
    return write_channel("PI_SetLPFilterEnable", h, Group::PI, channel, enable,
                         [](const Module&, unsigned, std::uint8_t) { return true; },
                         [](Module& m, unsigned ch, std::uint8_t v) { m.pi[ch].lp_filter_enable = v != 0; });
}

USBIO_API int32_t PI_SetLPFilterEnables(USBIO_HANDLE h, const uint8_t mask[2]) {
    return apply_mask("PI_SetLPFilterEnables", h, mask,
                      [](Module& m, unsigned ch, bool on) { m.pi[ch].lp_filter_enable = on; });
}

USBIO_API int32_t PI_GetLPFilterEnable(USBIO_HANDLE h, uint8_t mask[2]) {
    return get_flags("PI_GetLPFilterEnable", h, mask, &PiChannel::lp_filter_enable);
}

USBIO_API int32_t PI_SetLPFilterWidth(USBIO_HANDLE h, uint8_t channel, uint16_t widthUs) {
    return write_channel("PI_SetLPFilterWidth", h, Group::PI, channel, widthUs, width_ok,
                         [](Module& m, unsigned ch, std::uint16_t v) { m.pi[ch].lp_filter_width_us = v; });
}

USBIO_API int32_t PI_SetLPFilterWidths(USBIO_HANDLE h, const uint16_t widthsUs[16]) {
    return write_channels("PI_SetLPFilterWidths", h, Group::PI, widthsUs, width_ok,
                          [](Module& m, unsigned ch, std::uint16_t v) { m.pi[ch].lp_filter_width_us = v; });
}

USBIO_API int32_t PI_GetLPFilterWidth(USBIO_HANDLE h, uint16_t widthsUs[16]) {
    return read_channels("PI_GetLPFilterWidth", h, Group::PI, widthsUs,
                         [](const Module& m, unsigned ch) { return m.pi[ch].lp_filter_width_us; });
}

USBIO_API int32_t PI_ClearSingleChCount(USBIO_HANDLE h, uint8_t channel) {
    return clear_channel("PI_ClearSingleChCount", h, channel, clear_count);
}

USBIO_API int32_t PI_ClearChCount(USBIO_HANDLE h, const uint8_t mask[2]) {
    return clear_mask("PI_ClearChCount", h, mask, clear_count);
}

USBIO_API int32_t PI_ClearSingleChStatus(USBIO_HANDLE h, uint8_t channel) {
    return clear_channel("PI_ClearSingleChStatus", h, channel, clear_status);
}

USBIO_API int32_t PI_ClearChStatus(USBIO_HANDLE h, const uint8_t mask[2]) {
    return clear_mask("PI_ClearChStatus", h, mask, clear_status);
}

USBIO_API int32_t PI_GetTotalSupportType(USBIO_HANDLE h, uint8_t* count) {
    return read_scalar("PI_GetTotalSupportType", h, Group::PI, count,
                       [](const Module& m) { return m.model->pi_types.size(); });
}

USBIO_API int32_t PI_GetSupportTypeCode(USBIO_HANDLE h, uint8_t typeCodes[64]) {
    return device_call("PI_GetSupportTypeCode", h, Group::PI, no_args(), [&](Module& m) {
        if (!typeCodes) return USBIO_ERR_PARAMETER;
        auto list = m.model->pi_types;
        for (std::size_t i = 0; i < list.size() && i < USBIO_TYPE_LIST_SIZE; ++i) typeCodes[i] = list[i];
        return USBIO_OK;
    });
}

// The value of each channel in its mode: the count, or in frequency mode the
// frequency in whole Hz.
USBIO_API int32_t PI_ReadValue(USBIO_HANDLE h, uint32_t values[16], uint8_t status[16]) {
    return read_values("PI_ReadValue", h, values, status, [](const PiChannel& p) -> std::uint32_t {
        if (p.type_code != kFrequency) return p.count;
        double hz = std::round(p.frequency_hz);
        return hz >= 4294967295.0 ? 0xFFFFFFFFu : static_cast<std::uint32_t>(hz);
    });
}

USBIO_API int32_t PI_ReadCntValue(USBIO_HANDLE h, uint32_t counts[16], uint8_t status[16]) {
    return read_values("PI_ReadCntValue", h, counts, status, [](const PiChannel& p) { return p.count; });
}

USBIO_API int32_t PI_ReadFreqValue(USBIO_HANDLE h, float frequencies[16], uint8_t status[16]) {
    return read_values("PI_ReadFreqValue", h, frequencies, status,
                       [](const PiChannel& p) { return static_cast<float>(p.frequency_hz); });
}

}  // extern "C"
