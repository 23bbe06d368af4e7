// SDK functions of the digital output and input groups.
#include "sim.h"

using namespace usbsim;
using namespace usbsim::detail;

namespace {

auto one_word(const std::uint32_t* p) {
    return [p](const Module*) { return ", " + fmt::list(p, 1); };
}

template <class T>
auto scalar(T v) {
    return [v](const Module*) { return ", " + fmt::num(v); };
}

// Stores a word passed by address.
template <class Set>
std::int32_t write_word(const char* name, USBIO_HANDLE h, const std::uint32_t* word, Set set) {
    return device_call(name, h, Group::DO, one_word(word), [&](Module& m) {
        if (!word) return USBIO_ERR_PARAMETER;
        set(m, *word);
        return USBIO_OK;
    });
}

}  // namespace

extern "C" {

USBIO_API int32_t DO_SetPowerOnEnable(USBIO_HANDLE h, uint8_t channel, uint8_t enable) {
    auto args = [&](const Module*) { return ", " + fmt::num(channel) + ", " + fmt::num(enable); };
    return device_call("DO_SetPowerOnEnable", h, Group::DO, args, [&](Module& m) {
        // The table has 32 entries on every module; those beyond the
        // outputs are kept and have no effect.
        if (channel >= USBIO_DO_POWER_ON_SIZE) return USBIO_ERR_PARAMETER;
        m.do_power_on[channel] = enable ? 1 : 0;
        return USBIO_OK;
    });
}

USBIO_API int32_t DO_GetPowerOnEnable(USBIO_HANDLE h, uint8_t enables[32]) {
    return device_call("DO_GetPowerOnEnable", h, Group::DO, no_args(), [&](Module& m) {
        if (!enables) return USBIO_ERR_PARAMETER;
        for (unsigned ch = 0; ch < USBIO_DO_POWER_ON_SIZE; ++ch) enables[ch] = m.do_power_on[ch];
        return USBIO_OK;
    });
}

USBIO_API int32_t DO_SetSafetyEnable(USBIO_HANDLE h, const uint32_t* mask) {
    return write_word("DO_SetSafetyEnable", h, mask, [](Module& m, std::uint32_t v) { m.do_safety_enable = v; });
}

USBIO_API int32_t DO_GetSafetyEnable(USBIO_HANDLE h, uint32_t* mask) {
    return read_scalar("DO_GetSafetyEnable", h, Group::DO, mask, [](const Module& m) { return m.do_safety_enable; });
}

USBIO_API int32_t DO_SetSafetyValue(USBIO_HANDLE h, const uint32_t* value) {
    return write_word("DO_SetSafetyValue", h, value, [](Module& m, std::uint32_t v) { m.do_safety_value = v; });
}

USBIO_API int32_t DO_GetSafetyValue(USBIO_HANDLE h, uint32_t* value) {
    return read_scalar("DO_GetSafetyValue", h, Group::DO, value, [](const Module& m) { return m.do_safety_value; });
}

USBIO_API int32_t DO_SetDigitalOutputInverse(USBIO_HANDLE h, uint32_t inverse) {
    return device_call("DO_SetDigitalOutputInverse", h, Group::DO, scalar(inverse), [&](Module& m) {
        m.do_inverse = inverse;
        return USBIO_OK;
    });
}

USBIO_API int32_t DO_GetDigitalOutputInverse(USBIO_HANDLE h, uint32_t* inverse) {
    return read_scalar("DO_GetDigitalOutputInverse", h, Group::DO, inverse, [](const Module& m) { return m.do_inverse; });
}

USBIO_API int32_t DO_WriteValue(USBIO_HANDLE h, const uint32_t* value) {
    return write_word("DO_WriteValue", h, value,
                      [](Module& m, std::uint32_t v) { m.do_word = v & bits(m.model->do_); });
}

USBIO_API int32_t DO_WriteChannelValue(USBIO_HANDLE h, uint8_t channel, uint8_t value) {
    auto args = [&](const Module*) { return ", " + fmt::num(channel) + ", " + fmt::num(value); };
    return device_call("DO_WriteChannelValue", h, Group::DO, args, [&](Module& m) {
        if (channel >= m.model->do_) return USBIO_ERR_PARAMETER;
        std::uint32_t bit = 1u << channel;
        m.do_word = value ? (m.do_word | bit) : (m.do_word & ~bit);
        return USBIO_OK;
    });
}

USBIO_API int32_t DO_ReadValue(USBIO_HANDLE h, uint32_t* value) {
    return read_scalar("DO_ReadValue", h, Group::DO, value, [](const Module& m) { return m.do_word; });
}

USBIO_API int32_t DI_SetDigitalFilterWidth(USBIO_HANDLE h, uint16_t width) {
    return device_call("DI_SetDigitalFilterWidth", h, Group::DI, scalar(width), [&](Module& m) {
        m.di_filter_width = width;
        return USBIO_OK;
    });
}

USBIO_API int32_t DI_GetDigitalFilterWidth(USBIO_HANDLE h, uint16_t* width) {
    return read_scalar("DI_GetDigitalFilterWidth", h, Group::DI, width, [](const Module& m) { return m.di_filter_width; });
}

USBIO_API int32_t DI_SetDigitalValueInverse(USBIO_HANDLE h, uint32_t inverse) {
    return device_call("DI_SetDigitalValueInverse", h, Group::DI, scalar(inverse), [&](Module& m) {
        m.di_inverse = inverse;
        return USBIO_OK;
    });
}

USBIO_API int32_t DI_GetDigitalValueInverse(USBIO_HANDLE h, uint32_t* inverse) {
    return read_scalar("DI_GetDigitalValueInverse", h, Group::DI, inverse, [](const Module& m) { return m.di_inverse; });
}

USBIO_API int32_t DI_SetCntEdgeTrigger(USBIO_HANDLE h, uint32_t edges) {
    return device_call("DI_SetCntEdgeTrigger", h, Group::DI, scalar(edges), [&](Module& m) {
        m.di_edges = edges;
        return USBIO_OK;
    });
}

USBIO_API int32_t DI_GetCntEdgeTrigger(USBIO_HANDLE h, uint32_t* edges) {
    return read_scalar("DI_GetCntEdgeTrigger", h, Group::DI, edges, [](const Module& m) { return m.di_edges; });
}

USBIO_API int32_t DI_WriteClearCounter(USBIO_HANDLE h, uint8_t channel) {
    return device_call("DI_WriteClearCounter", h, Group::DI, scalar(channel), [&](Module& m) {
        if (channel >= m.model->di) return USBIO_ERR_PARAMETER;
        m.di_counters[channel] = 0;
        return USBIO_OK;
    });
}

USBIO_API int32_t DI_WriteClearCounters(USBIO_HANDLE h, uint32_t mask) {
    return device_call("DI_WriteClearCounters", h, Group::DI, scalar(mask), [&](Module& m) {
        for (unsigned ch = 0; ch < m.model->di; ++ch)
            if (mask & (1u << ch)) m.di_counters[ch] = 0;
        return USBIO_OK;
    });
}

USBIO_API int32_t DI_ReadValue(USBIO_HANDLE h, uint32_t* value) {
    return read_scalar("DI_ReadValue", h, Group::DI, value, [](const Module& m) { return m.di_value(); });
}

USBIO_API int32_t DI_ReadCounterValue(USBIO_HANDLE h, uint32_t* counter) {
    return read_scalar("DI_ReadCounterValue", h, Group::DI, counter, [](const Module& m) { return m.di_counters[0]; });
}

}  // extern "C"
