// SDK functions of the analog input group.
#include <cmath>

#include "sim.h"

using namespace usbsim;
using namespace usbsim::detail;

namespace {

constexpr float kCjcOffsetMin = -40.96f;
constexpr float kCjcOffsetMax = 40.95f;

bool cjc_offset_ok(float v) { return v >= kCjcOffsetMin && v <= kCjcOffsetMax; }  // false for NaN

struct Reading {
    std::uint32_t raw;
    float value;
    std::uint8_t status;
};

// What a channel reads: the signal, compensated for thermocouples, limited
// to the range of its type code and quantised; the real value is the one
// that the raw code stands for.
Reading read_channel(const Module& m, unsigned ch) {
    const AiChannel& a = m.ai[ch];
    if (!(m.ai_enable & (1u << ch))) return {0, 0.0f, kAiNormal};
    Range r = ai_range(a.type_code).value_or(Range{0, 0});
    std::uint8_t status = kAiNormal;
    double v = a.signal;
    if (a.open_wire) {
        // Without detection a broken input drifts to the top of the range.
        status = m.ai_wire_detect ? kAiOpenWire : kAiOverRange;
        v = r.high;
    } else {
        if (is_thermocouple(a.type_code)) {
            // Compensated: the hot junction's temperature, corrected by the
            // offsets. Uncompensated: relative to the cold junction.
            v = m.ai_cjc_enable ? v + m.ai_cjc_offset + a.cjc_offset : v - m.cjc_celsius;
        }
        if (std::isnan(v) || v > r.high) {
            status = kAiOverRange;
            v = r.high;
        } else if (v < r.low) {
            status = kAiUnderRange;
            v = r.low;
        }
    }
    std::uint32_t raw = ai_raw_from_value(a.type_code, v);
    return {raw, static_cast<float>(ai_value_from_raw(a.type_code, raw)), status};
}

template <class T>
auto channel_list(const T* p) {
    return [p](const Module* m) { return ", " + fmt::list(p, entries(m, Group::AI)); };
}

template <class Value>
std::int32_t read_values(const char* name, USBIO_HANDLE h, Value* values, std::uint8_t* status) {
    return device_call(name, h, Group::AI, no_args(), [&](Module& m) {
        if (!values) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, Group::AI);
        for (unsigned ch = 0; ch < n; ++ch) {
            Reading r = read_channel(m, ch);
            if constexpr (std::is_same_v<Value, float>) values[ch] = r.value;
            else values[ch] = r.raw;
            if (status) status[ch] = r.status;
        }
        return USBIO_OK;
    });
}

}  // namespace

extern "C" {

USBIO_API int32_t AI_SetTypeCode(USBIO_HANDLE h, uint8_t channel, uint8_t typeCode) {
    auto args = [&](const Module*) { return ", " + fmt::num(channel) + ", " + fmt::num(typeCode); };
    return device_call("AI_SetTypeCode", h, Group::AI, args, [&](Module& m) {
        if (channel >= m.model->ai || !supports(m.model->ai_types, typeCode)) return USBIO_ERR_PARAMETER;
        m.ai[channel].type_code = typeCode;
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_SetTypeCodes(USBIO_HANDLE h, const uint8_t typeCodes[16]) {
    return device_call("AI_SetTypeCodes", h, Group::AI, channel_list(typeCodes), [&](Module& m) {
        if (!typeCodes) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, Group::AI);
        for (unsigned ch = 0; ch < n; ++ch)
            if (!supports(m.model->ai_types, typeCodes[ch])) return USBIO_ERR_PARAMETER;
        for (unsigned ch = 0; ch < n; ++ch) m.ai[ch].type_code = typeCodes[ch];
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetTypeCode(USBIO_HANDLE h, uint8_t typeCodes[16]) {
    return read_channels("AI_GetTypeCode", h, Group::AI, typeCodes,
                         [](const Module& m, unsigned ch) { return m.ai[ch].type_code; });
}

USBIO_API int32_t AI_SetChCJCOffset(USBIO_HANDLE h, uint8_t channel, float offset) {
    auto args = [&](const Module*) { return ", " + fmt::num(channel) + ", " + fmt::real(offset); };
    return device_call("AI_SetChCJCOffset", h, Group::AI, args, [&](Module& m) {
        if (channel >= m.model->ai || !cjc_offset_ok(offset)) return USBIO_ERR_PARAMETER;
        m.ai[channel].cjc_offset = offset;
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_SetChCJCOffsets(USBIO_HANDLE h, const float offsets[16]) {
    return device_call("AI_SetChCJCOffsets", h, Group::AI, channel_list(offsets), [&](Module& m) {
        if (!offsets) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, Group::AI);
        for (unsigned ch = 0; ch < n; ++ch)
            if (!cjc_offset_ok(offsets[ch])) return USBIO_ERR_PARAMETER;
        for (unsigned ch = 0; ch < n; ++ch) m.ai[ch].cjc_offset = offsets[ch];
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetChCJCOffset(USBIO_HANDLE h, float offsets[16]) {
    return read_channels("AI_GetChCJCOffset", h, Group::AI, offsets,
                         [](const Module& m, unsigned ch) { return m.ai[ch].cjc_offset; });
}

USBIO_API int32_t AI_SetChEnable(USBIO_HANDLE h, const uint16_t* mask) {
    auto args = [&](const Module*) { return ", " + fmt::list(mask, 1); };
    return device_call("AI_SetChEnable", h, Group::AI, args, [&](Module& m) {
        if (!mask) return USBIO_ERR_PARAMETER;
        m.ai_enable = static_cast<std::uint16_t>(*mask & bits(m.model->ai));
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetChEnable(USBIO_HANDLE h, uint16_t* mask) {
    return read_scalar("AI_GetChEnable", h, Group::AI, mask, [](const Module& m) { return m.ai_enable; });
}

USBIO_API int32_t AI_SetFilterRejection(USBIO_HANDLE h, uint8_t rejection) {
    auto args = [&](const Module*) { return ", " + fmt::num(rejection); };
    return device_call("AI_SetFilterRejection", h, Group::AI, args, [&](Module& m) {
        if (rejection > 1) return USBIO_ERR_PARAMETER;  // 0: 60 Hz, 1: 50 Hz
        m.ai_filter_rejection = rejection;
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetFilterRejection(USBIO_HANDLE h, uint8_t* rejection) {
    return read_scalar("AI_GetFilterRejection", h, Group::AI, rejection,
                       [](const Module& m) { return m.ai_filter_rejection; });
}

USBIO_API int32_t AI_SetCJCOffset(USBIO_HANDLE h, float offset) {
    auto args = [&](const Module*) { return ", " + fmt::real(offset); };
    return device_call("AI_SetCJCOffset", h, Group::AI, args, [&](Module& m) {
        if (!cjc_offset_ok(offset)) return USBIO_ERR_PARAMETER;
        m.ai_cjc_offset = offset;
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetCJCOffset(USBIO_HANDLE h, float* offset) {
    return read_scalar("AI_GetCJCOffset", h, Group::AI, offset, [](const Module& m) { return m.ai_cjc_offset; });
}

USBIO_API int32_t AI_SetCJCEnable(USBIO_HANDLE h, uint8_t enable) {
    auto args = [&](const Module*) { return ", " + fmt::num(enable); };
    return device_call("AI_SetCJCEnable", h, Group::AI, args, [&](Module& m) {
        m.ai_cjc_enable = enable != 0;
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetCJCEnable(USBIO_HANDLE h, uint8_t* enable) {
    return read_scalar("AI_GetCJCEnable", h, Group::AI, enable, [](const Module& m) { return m.ai_cjc_enable ? 1 : 0; });
}

USBIO_API int32_t AI_SetWireDetectEnable(USBIO_HANDLE h, uint8_t enable) {
    auto args = [&](const Module*) { return ", " + fmt::num(enable); };
    return device_call("AI_SetWireDetectEnable", h, Group::AI, args, [&](Module& m) {
        m.ai_wire_detect = enable != 0;
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetWireDetectEnable(USBIO_HANDLE h, uint8_t* enable) {
    return read_scalar("AI_GetWireDetectEnable", h, Group::AI, enable,
                       [](const Module& m) { return m.ai_wire_detect ? 1 : 0; });
}

USBIO_API int32_t AI_GetTotalSupportType(USBIO_HANDLE h, uint8_t* count) {
    return read_scalar("AI_GetTotalSupportType", h, Group::AI, count,
                       [](const Module& m) { return m.model->ai_types.size(); });
}

USBIO_API int32_t AI_GetSupportTypeCode(USBIO_HANDLE h, uint8_t typeCodes[64]) {
    return device_call("AI_GetSupportTypeCode", h, Group::AI, no_args(), [&](Module& m) {
        if (!typeCodes) return USBIO_ERR_PARAMETER;
        auto list = m.model->ai_types;
        for (std::size_t i = 0; i < list.size() && i < USBIO_TYPE_LIST_SIZE; ++i) typeCodes[i] = list[i];
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetResolution(USBIO_HANDLE h, uint8_t bitsOut[16]) {
    return read_channels("AI_GetResolution", h, Group::AI, bitsOut,
                         [](const Module& m, unsigned) { return m.model->ai_resolution; });
}

USBIO_API int32_t AI_ReadCJCValue(USBIO_HANDLE h, float* celsius) {
    return read_scalar("AI_ReadCJCValue", h, Group::AI, celsius,
                       [](const Module& m) { return m.cjc_celsius + static_cast<double>(m.ai_cjc_offset); });
}

USBIO_API int32_t AI_SetChSampleRate(USBIO_HANDLE h, const uint32_t rates[16]) {
    return device_call("AI_SetChSampleRate", h, Group::AI, channel_list(rates), [&](Module& m) {
        if (!rates) return USBIO_ERR_PARAMETER;
        unsigned n = entries(&m, Group::AI);
        for (unsigned ch = 0; ch < n; ++ch) m.ai[ch].sample_rate = rates[ch];
        return USBIO_OK;
    });
}

USBIO_API int32_t AI_GetChSampleRate(USBIO_HANDLE h, uint32_t rates[16]) {
    return read_channels("AI_GetChSampleRate", h, Group::AI, rates,
                         [](const Module& m, unsigned ch) { return m.ai[ch].sample_rate; });
}

USBIO_API int32_t AI_ReadValueDigital(USBIO_HANDLE h, uint32_t values[16]) {
    return read_values("AI_ReadValueDigital", h, values, nullptr);
}

USBIO_API int32_t AI_ReadValueAnalog(USBIO_HANDLE h, float values[16]) {
    return read_values("AI_ReadValueAnalog", h, values, nullptr);
}

USBIO_API int32_t AI_ReadValueDigitalWithChSta(USBIO_HANDLE h, uint32_t values[16], uint8_t status[16]) {
    if (!status) values = nullptr;  // both outputs are required
    return read_values("AI_ReadValueDigitalWithChSta", h, values, status);
}

USBIO_API int32_t AI_ReadValueAnalogWithChSta(USBIO_HANDLE h, float values[16], uint8_t status[16]) {
    if (!status) values = nullptr;
    return read_values("AI_ReadValueAnalogWithChSta", h, values, status);
}

}  // extern "C"
