// The SDK's functions by name: those a fault can be armed for.
#include "sim.h"

namespace usbsim::detail {

namespace {
constexpr std::string_view names[] = {
    "AI_GetCJCEnable", "AI_GetCJCOffset", "AI_GetChCJCOffset",
    "AI_GetChEnable", "AI_GetChSampleRate", "AI_GetFilterRejection",
    "AI_GetResolution", "AI_GetSupportTypeCode", "AI_GetTotalSupportType",
    "AI_GetTypeCode", "AI_GetWireDetectEnable", "AI_ReadCJCValue",
    "AI_ReadValueAnalog", "AI_ReadValueAnalogWithChSta", "AI_ReadValueDigital",
    "AI_ReadValueDigitalWithChSta", "AI_SetCJCEnable", "AI_SetCJCOffset",
    "AI_SetChCJCOffset", "AI_SetChCJCOffsets", "AI_SetChEnable",
    "AI_SetChSampleRate", "AI_SetFilterRejection", "AI_SetTypeCode",
    "AI_SetTypeCodes", "AI_SetWireDetectEnable", "AO_GetChEnable",
    "AO_GetPowerOnEnable", "AO_GetPowerOnValueAnalog", "AO_GetPowerOnValueDigital",
    "AO_GetResolution", "AO_GetSafetyEnable", "AO_GetSafetyValueAnalog",
    "AO_GetSafetyValueDigital", "AO_GetSupportTypeCode", "AO_GetTotalSupportType",
    "AO_GetTypeCode", "AO_ReadCurValueAnalog", "AO_ReadCurValueDigital",
    "AO_ReadExpValueAnalog", "AO_ReadExpValueDigital", "AO_SetChEnable",
    "AO_SetPowerOnChannelValueAnalog", "AO_SetPowerOnChannelValueDigital", "AO_SetPowerOnEnable",
    "AO_SetPowerOnValueAnalog", "AO_SetPowerOnValueDigital", "AO_SetSafetyChannelValueAnalog",
    "AO_SetSafetyChannelValueDigital", "AO_SetSafetyEnable", "AO_SetSafetyValueAnalog",
    "AO_SetSafetyValueDigital", "AO_SetTypeCode", "AO_SetTypeCodes",
    "AO_WriteChannelValueAnalog", "AO_WriteChannelValueDigital", "AO_WriteValueAnalog",
    "AO_WriteValueDigital", "CloseDevice", "CreateInstance",
    "DI_GetCntEdgeTrigger", "DI_GetDigitalFilterWidth", "DI_GetDigitalValueInverse",
    "DI_ReadCounterValue", "DI_ReadValue", "DI_SetCntEdgeTrigger",
    "DI_SetDigitalFilterWidth", "DI_SetDigitalValueInverse", "DI_WriteClearCounter",
    "DI_WriteClearCounters", "DO_GetDigitalOutputInverse", "DO_GetPowerOnEnable",
    "DO_GetSafetyEnable", "DO_GetSafetyValue", "DO_ReadValue",
    "DO_SetDigitalOutputInverse", "DO_SetPowerOnEnable", "DO_SetSafetyEnable",
    "DO_SetSafetyValue", "DO_WriteChannelValue", "DO_WriteValue",
    "DisposeInstance", "GetAITotal", "GetAOTotal",
    "GetCommTimeout", "GetDITotal", "GetDOTotal",
    "GetDeviceID", "GetDeviceNickName", "GetDeviceSN",
    "GetFwVer", "GetPITotal", "GetPOTotal",
    "GetSoftWDTTimeout", "GetSupportIOMask", "ListDevice",
    "LoadDefault", "OpenDevice", "PI_ClearChCount",
    "PI_ClearChStatus", "PI_ClearSingleChCount", "PI_ClearSingleChStatus",
    "PI_GetChIsolatedFlag", "PI_GetLPFilterEnable", "PI_GetLPFilterWidth",
    "PI_GetSupportTypeCode", "PI_GetTotalSupportType", "PI_GetTriggerMode",
    "PI_GetTypeCode", "PI_ReadCntValue", "PI_ReadFreqValue",
    "PI_ReadValue", "PI_SetChIsolatedFlag", "PI_SetChIsolatedFlags",
    "PI_SetLPFilterEnable", "PI_SetLPFilterEnables", "PI_SetLPFilterWidth",
    "PI_SetLPFilterWidths", "PI_SetTriggerMode", "PI_SetTriggerModes",
    "PI_SetTypeCode", "PI_SetTypeCodes", "RefreshDeviceInfo",
    "SYNCDevice", "ScanDevice", "SetAutoResetWDT",
    "SetCommTimeout", "SetDeviceNickName", "SetSoftWDTTimeout",
    "SetUserDefinedBoardID",
};
}  // namespace

std::span<const std::string_view> sdk_functions() { return names; }

}  // namespace usbsim::detail
